#include <QBFoundation/Foundation/NSNumber.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSNumber.Tables.h"
#include "Text/Hash.h"
#include "Text/Numbers.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

// Counts, flags and error numbers: the numbers that programs make over and over.
constexpr std::int32_t kLeastShared = -128;
constexpr std::int32_t kGreatestShared = 1023;

template <class Integer>
Integer cutToInteger(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (value >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(value);
}

// Orders an integer against a floating-point number without rounding the integer.
NSComparisonResult compareIntegerToReal(std::int64_t low, bool isUnsigned, double real) {
    if (std::isnan(real))
        return NSOrderedDescending; // not-a-number comes first, so that sorting has an order
    const double whole = std::floor(real);
    if (whole < (isUnsigned ? 0.0 : -0x1p63))
        return NSOrderedDescending;
    if (whole >= (isUnsigned ? 0x1p64 : 0x1p63))
        return NSOrderedAscending;
    const int order =
        isUnsigned ? (static_cast<std::uint64_t>(low) > static_cast<std::uint64_t>(whole)) -
                         (static_cast<std::uint64_t>(low) < static_cast<std::uint64_t>(whole))
                   : (low > static_cast<std::int64_t>(whole)) - (low < static_cast<std::int64_t>(whole));
    if (order != 0)
        return static_cast<NSComparisonResult>(order);
    return real > whole ? NSOrderedAscending : NSOrderedSame;
}

} // namespace

Class *NSNumber::cls() {
    // Integers of 64 bits are of a class of their own, unless a subclass is asked.
    static constexpr auto init = [](Class *asked, auto setUp, auto value) {
        const Ref<NSObject> object = (asked == cls() ? NSLongLongNumber::cls() : asked)->construct();
        auto *const number = static_cast<NSNumber *>(object.get());
        return (number->*setUp)(value) ? Ref<NSNumber>(number) : Ref<NSNumber>();
    };
    static constexpr auto initSigned = [](Class *asked, std::int64_t value) {
        return init(asked, &NSNumber::setUpWithLongLong, value);
    };
    static constexpr auto initUnsigned = [](Class *asked, std::uint64_t value) {
        return init(asked, &NSNumber::setUpWithUnsignedLongLong, value);
    };
    static constexpr auto makeSigned = [](Class *asked, std::int64_t value) {
        return initSigned(asked, value).autorelease();
    };
    static constexpr auto makeUnsigned = [](Class *asked, std::uint64_t value) {
        return initUnsigned(asked, value).autorelease();
    };
    static const qb::Method methods[] = {
        qb::maker<"numberWithBool:">(&NSNumber::setUpWithBool),
        qb::maker<"numberWithChar:">(&NSNumber::setUpWithChar),
        qb::maker<"numberWithUnsignedChar:">(&NSNumber::setUpWithUnsignedChar),
        qb::maker<"numberWithShort:">(&NSNumber::setUpWithShort),
        qb::maker<"numberWithUnsignedShort:">(&NSNumber::setUpWithUnsignedShort),
        qb::maker<"numberWithInt:">(&NSNumber::setUpWithInt),
        qb::maker<"numberWithUnsignedInt:">(&NSNumber::setUpWithUnsignedInt),
        qb::maker<"numberWithFloat:">(&NSNumber::setUpWithFloat),
        qb::maker<"numberWithDouble:">(&NSNumber::setUpWithDouble),
        qb::classMethod<"numberWithLong:">(+makeSigned),
        qb::classMethod<"numberWithUnsignedLong:">(+makeUnsigned),
        qb::classMethod<"numberWithLongLong:">(+makeSigned),
        qb::classMethod<"numberWithUnsignedLongLong:">(+makeUnsigned),
        qb::initialiser<"initWithBool:">(&NSNumber::setUpWithBool),
        qb::initialiser<"initWithChar:">(&NSNumber::setUpWithChar),
        qb::initialiser<"initWithUnsignedChar:">(&NSNumber::setUpWithUnsignedChar),
        qb::initialiser<"initWithShort:">(&NSNumber::setUpWithShort),
        qb::initialiser<"initWithUnsignedShort:">(&NSNumber::setUpWithUnsignedShort),
        qb::initialiser<"initWithInt:">(&NSNumber::setUpWithInt),
        qb::initialiser<"initWithUnsignedInt:">(&NSNumber::setUpWithUnsignedInt),
        qb::initialiser<"initWithFloat:">(&NSNumber::setUpWithFloat),
        qb::initialiser<"initWithDouble:">(&NSNumber::setUpWithDouble),
        qb::classMethod<"initWithLong:">(+initSigned),
        qb::classMethod<"initWithUnsignedLong:">(+initUnsigned),
        qb::classMethod<"initWithLongLong:">(+initSigned),
        qb::classMethod<"initWithUnsignedLongLong:">(+initUnsigned),
        qb::method<"boolValue">(&NSNumber::boolValue),
        qb::method<"charValue">(&NSNumber::charValue),
        qb::method<"unsignedCharValue">(&NSNumber::unsignedCharValue),
        qb::method<"shortValue">(&NSNumber::shortValue),
        qb::method<"unsignedShortValue">(&NSNumber::unsignedShortValue),
        qb::method<"intValue">(&NSNumber::intValue),
        qb::method<"unsignedIntValue">(&NSNumber::unsignedIntValue),
        qb::method<"longValue">(&NSNumber::longValue),
        qb::method<"unsignedLongValue">(&NSNumber::unsignedLongValue),
        qb::method<"longLongValue">(&NSNumber::longLongValue),
        qb::method<"unsignedLongLongValue">(&NSNumber::unsignedLongLongValue),
        qb::method<"floatValue">(&NSNumber::floatValue),
        qb::method<"doubleValue">(&NSNumber::doubleValue),
        qb::method<"isEqualToNumber:">(&NSNumber::isEqualToNumber),
        qb::method<"compare:">(&NSNumber::compare),
        qb::method<"asNumber">(&NSNumber::asNumber),
        qb::initialiser<"initWithCoder:">(&NSNumber::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSNumber::encodeWithCoder),
    };
    static Class *const self = new Class("NSNumber", NSValue::cls(), {methods, qb::tables::numberPath()},
                                         qb::construct<NSNumber>, {"NSCopying", "NSCoding"});
    return self;
}

NSNumber *NSNumber::numberWithBool(BOOL value) {
    static NSNumber *const yes = qb::init<NSNumber>(&NSNumber::setUpWithBool, YES).detach();
    static NSNumber *const no = qb::init<NSNumber>(&NSNumber::setUpWithBool, NO).detach();
    return value ? yes : no;
}

NSNumber *NSNumber::numberWithInt(std::int32_t value) {
    static constinit std::array<NSNumber *, kGreatestShared - kLeastShared + 1> shared{};
    if (value < kLeastShared || value > kGreatestShared)
        return qb::init<NSNumber>(&NSNumber::setUpWithInt, value).autorelease();
    NSNumber *&number = shared[static_cast<std::size_t>(value - kLeastShared)];
    if (!number)
        number = qb::init<NSNumber>(&NSNumber::setUpWithInt, value).detach();
    return number;
}

NSNumber *NSNumber::numberWithUnsignedInt(std::uint32_t value) {
    if (value <= static_cast<std::uint32_t>(kGreatestShared))
        return numberWithInt(static_cast<std::int32_t>(value));
    return qb::init<NSNumber>(&NSNumber::setUpWithUnsignedInt, value).autorelease();
}

NSNumber *NSNumber::numberWithLongLong(std::int64_t value) {
    return qb::init<NSLongLongNumber>(&NSLongLongNumber::setUpWithLongLong, value).autorelease();
}

NSNumber *NSNumber::numberWithUnsignedLongLong(std::uint64_t value) {
    return qb::init<NSLongLongNumber>(&NSLongLongNumber::setUpWithUnsignedLongLong, value).autorelease();
}

NSNumber *NSNumber::numberWithFloat(float value) {
    return qb::init<NSNumber>(&NSNumber::setUpWithFloat, value).autorelease();
}

NSNumber *NSNumber::numberWithDouble(double value) {
    return qb::init<NSNumber>(&NSNumber::setUpWithDouble, value).autorelease();
}

BOOL NSNumber::setUpWithBool(BOOL value) {
    setUpInteger(Type::boolean, value ? 1 : 0);
    return YES;
}

BOOL NSNumber::setUpWithInt(std::int32_t value) {
    setUpInteger(Type::int32, value);
    return YES;
}

BOOL NSNumber::setUpWithUnsignedInt(std::uint32_t value) {
    setUpInteger(Type::uint32, value);
    return YES;
}

BOOL NSNumber::setUpWithLongLong(std::int64_t value) {
    setUpInteger(Type::int64, value);
    return YES;
}

BOOL NSNumber::setUpWithUnsignedLongLong(std::uint64_t value) {
    setUpInteger(Type::uint64, static_cast<std::int64_t>(value));
    return YES;
}

BOOL NSNumber::setUpWithFloat(float value) {
    type_ = Type::real32;
    real_ = value;
    return YES;
}

BOOL NSNumber::setUpWithDouble(double value) {
    type_ = Type::real64;
    real_ = value;
    return YES;
}

template <class Integer>
Integer NSNumber::integerValue() const {
    return isReal() ? cutToInteger<Integer>(real_) : static_cast<Integer>(integer_);
}

char NSNumber::charValue() const {
    return integerValue<char>();
}

std::uint8_t NSNumber::unsignedCharValue() const {
    return integerValue<std::uint8_t>();
}

std::int16_t NSNumber::shortValue() const {
    return integerValue<std::int16_t>();
}

std::uint16_t NSNumber::unsignedShortValue() const {
    return integerValue<std::uint16_t>();
}

std::int32_t NSNumber::intValue() const {
    return integerValue<std::int32_t>();
}

std::uint32_t NSNumber::unsignedIntValue() const {
    return integerValue<std::uint32_t>();
}

std::int64_t NSNumber::longLongValue() const {
    return integerValue<std::int64_t>();
}

std::uint64_t NSNumber::unsignedLongLongValue() const {
    return integerValue<std::uint64_t>();
}

BOOL NSNumber::boolValue() const {
    return isReal() ? real_ != 0 : integer_ != 0;
}

double NSNumber::doubleValue() const {
    if (isReal())
        return real_;
    return type_ == Type::uint64 ? static_cast<double>(static_cast<std::uint64_t>(integer_))
                                 : static_cast<double>(integer_);
}

BOOL NSNumber::isEqual(id other) const {
    return isEqualToNumber(qb::castOrNil<NSNumber>(other));
}

BOOL NSNumber::isEqualToNumber(NSNumber *other) const {
    return other && (other == this || compare(other) == NSOrderedSame);
}

// Equal numbers of different types have one hash: a whole floating-point number that of its integer.
std::uint32_t NSNumber::hash() const {
    std::int64_t bits = integer_;
    if (isReal() && std::isnan(real_))
        bits = 0; // whatever the bits of it, all are equal
    else if (isReal() && std::floor(real_) == real_ && real_ >= -0x1p63 && real_ < 0x1p63)
        bits = static_cast<std::int64_t>(real_);
    else if (isReal() && real_ >= 0x1p63 && real_ < 0x1p64)
        bits = static_cast<std::int64_t>(static_cast<std::uint64_t>(real_));
    return qb::text::hashBytes(reinterpret_cast<const char *>(&bits), sizeof bits);
}

NSComparisonResult NSNumber::compare(id other) const {
    auto *number = qb::castOrNil<NSNumber>(other);
    if (!number)
        throw InvalidArgumentException("NSNumber compare: must have an argument that is a number.");
    if (isReal() && number->isReal()) {
        if (std::isnan(real_) || std::isnan(number->real_))
            return static_cast<NSComparisonResult>(std::isnan(number->real_) - std::isnan(real_));
        return static_cast<NSComparisonResult>((real_ > number->real_) - (real_ < number->real_));
    }
    const bool isUnsigned = type_ == Type::uint64;
    const bool otherIsUnsigned = number->type_ == Type::uint64;
    if (number->isReal())
        return compareIntegerToReal(integer_, isUnsigned, number->real_);
    if (isReal())
        return static_cast<NSComparisonResult>(
            -compareIntegerToReal(number->integer_, otherIsUnsigned, real_));
    // A 64-bit unsigned number with the top bit set is above every signed one.
    const bool isHuge = isUnsigned && integer_ < 0;
    const bool otherIsHuge = otherIsUnsigned && number->integer_ < 0;
    if (isHuge != otherIsHuge)
        return isHuge ? NSOrderedDescending : NSOrderedAscending;
    return static_cast<NSComparisonResult>((integer_ > number->integer_) - (integer_ < number->integer_));
}

NSString *NSNumber::stringValue() const {
    char text[qb::text::kLongestDouble + 1];
    std::size_t length = 0;
    if (type_ == Type::real64)
        length = qb::text::formatDouble(real_, text);
    else if (type_ == Type::real32)
        length = qb::text::formatFloat(static_cast<float>(real_), text);
    else if (type_ == Type::uint64)
        length = qb::text::formatInteger(static_cast<std::uint64_t>(integer_), text);
    else
        length = qb::text::formatInteger(integer_, text);
    return NSString::stringWith({text, length});
}

NSString *NSNumber::descriptionWithLocale(NSDictionary *) const {
    return stringValue();
}

Class *NSLongLongNumber::cls() {
    static const qb::Method methods[] = {
        qb::maker<"numberWithLong:">(&NSLongLongNumber::setUpWithLongLong),
        qb::maker<"numberWithUnsignedLong:">(&NSLongLongNumber::setUpWithUnsignedLongLong),
        qb::initialiser<"initWithLong:">(&NSLongLongNumber::setUpWithLongLong),
        qb::initialiser<"initWithUnsignedLong:">(&NSLongLongNumber::setUpWithUnsignedLongLong),
        qb::maker<"numberWithLongLong:">(&NSLongLongNumber::setUpWithLongLong),
        qb::maker<"numberWithUnsignedLongLong:">(&NSLongLongNumber::setUpWithUnsignedLongLong),
        qb::initialiser<"initWithLongLong:">(&NSLongLongNumber::setUpWithLongLong),
        qb::initialiser<"initWithUnsignedLongLong:">(&NSLongLongNumber::setUpWithUnsignedLongLong),
        qb::method<"descriptionWithLocale:">(&NSLongLongNumber::descriptionWithLocale),
    };
    static Class *const self =
        new Class("NSLongLongNumber", NSNumber::cls(), methods, qb::construct<NSLongLongNumber>);
    return self;
}

NSString *NSLongLongNumber::descriptionWithLocale(NSDictionary *) const {
    return stringValue();
}
