// Strings as numbers.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Text/Bytes.h"
#include "Text/Numbers.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace {

qb::text::ParsedInteger parsedInteger(std::string_view text) {
    return qb::text::parseInteger(text.data(), text.data() + text.size());
}

// The integer at the beginning of the text, in the other half of the unsigned range too.
std::uint64_t parsedUnsigned(std::string_view text, bool &isOutOfRange) {
    const qb::text::ParsedInteger parsed = parsedInteger(text);
    isOutOfRange = parsed.isOutOfRange || parsed.value < 0;
    if (!isOutOfRange || parsed.value < 0)
        return static_cast<std::uint64_t>(std::max<std::int64_t>(parsed.value, 0));
    // The digits are out of the signed range, so that they are there, behind blanks and a plus.
    const char *const digits =
        std::find_if(text.data(), parsed.next, [](char c) { return c >= '0' && c <= '9'; });
    std::uint64_t value = 0;
    isOutOfRange = std::from_chars(digits, parsed.next, value).ec != std::errc();
    return isOutOfRange ? UINT64_MAX : value;
}

template <class T>
T saturated(std::int64_t value) {
    return static_cast<T>(
        std::clamp<std::int64_t>(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && qb::text::isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && qb::text::isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

std::span<const qb::Method> qb::tables::stringNumbers() {
    static const qb::Method methods[] = {
        qb::method<"intValue">(&NSString::intValue),
        qb::method<"unsignedIntValue">(&NSString::unsignedIntValue),
        qb::method<"longLongValue">(&NSString::longLongValue),
        qb::method<"unsignedLongLongValue">(&NSString::unsignedLongLongValue),
        qb::method<"floatValue">(&NSString::floatValue),
        qb::method<"doubleValue">(&NSString::doubleValue),
        qb::method<"boolValue">(&NSString::boolValue),
        qb::method<"asNumber">(&NSString::asNumber),
    };
    return methods;
}

std::int32_t NSString::intValue() const {
    return saturated<std::int32_t>(longLongValue());
}

std::uint32_t NSString::unsignedIntValue() const {
    return saturated<std::uint32_t>(longLongValue());
}

std::int64_t NSString::longLongValue() const {
    return parsedInteger(view()).value;
}

std::uint64_t NSString::unsignedLongLongValue() const {
    bool isOutOfRange = false;
    return parsedUnsigned(view(), isOutOfRange);
}

float NSString::floatValue() const {
    return static_cast<float>(doubleValue());
}

double NSString::doubleValue() const {
    return qb::text::parseDouble(bytes_, bytes_ + byteLength_).value;
}

BOOL NSString::boolValue() const {
    const char *position = bytes_;
    while (qb::text::isBlank(*position))
        ++position;
    if (*position == '-' || *position == '+')
        ++position;
    while (*position == '0')
        ++position;
    return (*position >= '1' && *position <= '9') || *position == 'Y' || *position == 'y' ||
           *position == 'T' || *position == 't';
}

NSNumber *NSString::asNumber() const {
    const std::string_view text = withoutBlanks(view());
    if (text.find_first_of("0123456789") == std::string_view::npos) // "nan" and "infinity" are words
        return nullptr;
    const char *const end = text.data() + text.size();
    const qb::text::ParsedInteger integer = parsedInteger(text);
    if (integer.next == end && !integer.isOutOfRange) {
        if (integer.value == saturated<std::int32_t>(integer.value))
            return NSNumber::numberWithInt(static_cast<std::int32_t>(integer.value));
        return NSNumber::numberWithLongLong(integer.value);
    }
    bool isOutOfRange = false;
    const std::uint64_t large = parsedUnsigned(text, isOutOfRange);
    if (integer.next == end && !isOutOfRange)
        return NSNumber::numberWithUnsignedLongLong(large);
    const qb::text::ParsedDouble real = qb::text::parseDouble(text.data(), end);
    return real.next == end ? NSNumber::numberWithDouble(real.value) : nullptr;
}
