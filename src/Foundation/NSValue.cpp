#include <QBFoundation/Foundation/NSValue.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/TypeCodes.h"
#include "Text/Hash.h"

#include <cinttypes>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

namespace {

constexpr const char *kRangeType = "{_NSRange=II}";
constexpr const char *kPointerType = "^v";
constexpr const char *kObjectType = "@";

// Returns nil for a code that is no number's.
NSNumber *numberAt(const void *place, char code) {
    NSNumber *number = nullptr;
    if (code == 'B')
        return NSNumber::numberWithBool(qb::load<std::uint8_t>(place) != 0);
    if (code == 'f')
        return NSNumber::numberWithFloat(qb::load<float>(place));
    if (code == 'd')
        return NSNumber::numberWithDouble(qb::load<double>(place));
    qb::visitInteger(code, [&](auto zero) {
        using Integer = decltype(zero);
        const auto value = qb::load<Integer>(place);
        constexpr bool kIsSmall = sizeof(Integer) < sizeof(std::int32_t);
        if constexpr (kIsSmall || (std::is_signed_v<Integer> && sizeof(Integer) == sizeof(std::int32_t)))
            number = NSNumber::numberWithInt(static_cast<std::int32_t>(value));
        else if constexpr (sizeof(Integer) == sizeof(std::int32_t))
            number = NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(value));
        else
            number = std::is_signed_v<Integer>
                         ? NSNumber::numberWithLongLong(static_cast<std::int64_t>(value))
                         : NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(value));
    });
    return number;
}

} // namespace

Class *NSValue::cls() {
    // The value as an object of the class that was asked. Numbers' classes have none of values of other
    // types.
    static constexpr auto ofClass = [](Class *asked, NSValue *value) {
        if (asked == cls() || asked->isSubclassOfClass(NSNumber::cls()) || value->type_ < Type::range)
            return value;
        const Ref<NSValue> made = static_cast<NSValue *>(asked->construct().get());
        made->type_ = value->type_;
        made->integer_ = value->integer_;
        return Ref<NSValue>(made).autorelease();
    };
    static constexpr auto withBytes = [](Class *asked, const void *value, const char *objCType) {
        return ofClass(asked, valueWithBytes(value, objCType));
    };
    static const qb::Method methods[] = {
        qb::classMethod<"valueWithBytes:objCType:">(+withBytes),
        qb::classMethod<"value:withObjCType:">(+withBytes),
        qb::classMethod<"valueWithRange:">(
            +[](Class *asked, NSRange range) { return ofClass(asked, valueWithRange(range)); }),
        qb::classMethod<"valueWithPointer:">(
            +[](Class *asked, const void *pointer) { return ofClass(asked, valueWithPointer(pointer)); }),
        qb::classMethod<"valueWithNonretainedObject:">(
            +[](Class *asked, id object) { return ofClass(asked, valueWithNonretainedObject(object)); }),
        qb::method<"objCType">(&NSValue::objCType),
        qb::method<"getValue:">(&NSValue::getValue),
        qb::method<"rangeValue">(&NSValue::rangeValue),
        qb::method<"pointerValue">(&NSValue::pointerValue),
        qb::method<"nonretainedObjectValue">(&NSValue::nonretainedObjectValue),
        qb::method<"isEqualToValue:">(&NSValue::isEqualToValue),
        qb::initialiser<"initWithCoder:">(&NSValue::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSValue::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSValue", NSObject::cls(), methods, qb::construct<NSValue>, {"NSCopying", "NSCoding"});
    return self;
}

NSValue *NSValue::make(Type type) {
    auto value = Ref<NSValue>::adopt(new NSValue);
    value->type_ = type;
    return value.autorelease();
}

NSValue *NSValue::valueWithBytes(const void *value, const char *objCType) {
    const std::string_view type = objCType ? objCType : "";
    if (!value)
        throw InvalidArgumentException(
            "NSValue valueWithBytes:objCType: must have a value that is not NULL.");
    if (type == kRangeType)
        return valueWithRange(qb::load<NSRange>(value));
    if (type == kPointerType)
        return valueWithPointer(qb::load<void *>(value));
    if (type == kObjectType)
        return valueWithNonretainedObject(qb::load<id>(value));
    if (NSNumber *const number = type.size() == 1 ? numberAt(value, type.front()) : nullptr)
        return number;
    throw InvalidArgumentException("NSValue valueWithBytes:objCType: must have a type that it knows, not '" +
                                   std::string(type) + "'.");
}

void NSValue::getValue(void *variable) const {
    if (!variable)
        throw InvalidArgumentException("NSValue getValue: must have a variable that is not NULL.");
    switch (type_) {
    case Type::boolean:
        return qb::store(variable, static_cast<BOOL>(integer_));
    case Type::int32:
    case Type::uint32:
        return qb::store(variable, static_cast<std::int32_t>(integer_));
    case Type::int64:
    case Type::uint64:
        return qb::store(variable, integer_);
    case Type::real32:
        return qb::store(variable, static_cast<float>(real_));
    case Type::real64:
        return qb::store(variable, real_);
    case Type::range:
        return qb::store(variable, range_);
    case Type::pointer:
    case Type::nonretainedObject:
        return qb::store(variable, pointer_);
    }
}

NSValue *NSValue::valueWithRange(NSRange range) {
    NSValue *const value = make(Type::range);
    value->range_ = range;
    return value;
}

NSValue *NSValue::valueWithPointer(const void *pointer) {
    NSValue *const value = make(Type::pointer);
    value->pointer_ = const_cast<void *>(pointer);
    return value;
}

NSValue *NSValue::valueWithNonretainedObject(id object) {
    NSValue *const value = make(Type::nonretainedObject);
    value->pointer_ = object;
    return value;
}

const char *NSValue::objCType() const {
    switch (type_) {
    case Type::boolean:
        return "c";
    case Type::int32:
        return "i";
    case Type::uint32:
        return "I";
    case Type::int64:
        return "q";
    case Type::uint64:
        return "Q";
    case Type::real32:
        return "f";
    case Type::real64:
        return "d";
    case Type::range:
        return kRangeType;
    case Type::pointer:
        return kPointerType;
    case Type::nonretainedObject:
        return kObjectType;
    }
    return "";
}

void NSValue::requireType(Type type, const char *selector) const {
    if (type_ != type)
        throw InvalidUseOfMethodException(std::string(classObject()->nameView()) + " " + selector +
                                          " must have a receiver that holds such a value.");
}

NSRange NSValue::rangeValue() const {
    requireType(Type::range, "rangeValue");
    return range_;
}

void *NSValue::pointerValue() const {
    requireType(Type::pointer, "pointerValue");
    return pointer_;
}

id NSValue::nonretainedObjectValue() const {
    requireType(Type::nonretainedObject, "nonretainedObjectValue");
    return static_cast<id>(pointer_);
}

BOOL NSValue::isEqual(id other) const {
    return isEqualToValue(qb::castOrNil<NSValue>(other));
}

BOOL NSValue::isEqualToValue(NSValue *other) const {
    if (!other || other->type_ != type_)
        return NO;
    return type_ == Type::range ? range_ == other->range_ : pointer_ == other->pointer_;
}

std::uint32_t NSValue::hash() const {
    const auto *const bytes = reinterpret_cast<const char *>(&range_);
    return qb::text::hashBytes(bytes, type_ == Type::range ? sizeof range_ : sizeof pointer_);
}

NSString *NSValue::description() const {
    if (type_ == Type::range)
        return NSStringFromRange(range_);
    char address[2 + 2 * sizeof(void *) + 1];
    std::snprintf(address, sizeof address, "0x%08" PRIxPTR, reinterpret_cast<std::uintptr_t>(pointer_));
    return NSString::stringWith(address);
}
