// Pieces of strings.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Search.h"

std::span<const qb::Method> qb::tables::stringSubstrings() {
    static const qb::Method methods[] = {
        qb::method<"substringFromIndex:">(&NSString::substringFromIndex),
        qb::method<"substringToIndex:">(&NSString::substringToIndex),
        qb::method<"substringWithRange:">(&NSString::substringWithRange),
        qb::method<"commonPrefixWithString:", NSString *(NSString *)>(&NSString::commonPrefixWithString),
        qb::method<"commonPrefixWithString:options:", NSString *(NSString *, std::uint32_t)>(
            &NSString::commonPrefixWithString),
    };
    return methods;
}

NSString *NSString::substringFromIndex(std::uint32_t index) const {
    if (index == 0)
        return unchanged();
    const Place place = placeOfUnit(index);
    if (place.byte == byteLength_ && index > length())
        viewOfRange({index, 0}, "substringFromIndex:"); // throws
    return stringWith(view().substr(place.byte));
}

NSString *NSString::substringToIndex(std::uint32_t index) const {
    const Place place = placeOfUnit(index);
    if (place.byte < byteLength_)
        return stringWith(view().substr(0, place.byte));
    viewOfRange({0, index}, "substringToIndex:"); // throws beyond the end
    return unchanged();
}

NSString *NSString::substringWithRange(NSRange range) const {
    const std::string_view piece = viewOfRange(range, "substringWithRange:");
    return piece.size() == byteLength_ ? unchanged() : stringWith(piece);
}

NSString *NSString::commonPrefixWithString(NSString *other, std::uint32_t options) const {
    qb::required(other, "NSString commonPrefixWithString:options:", "a string");
    const bool ignoresCase = options & NSCaseInsensitiveSearch;
    const char *common = bytes_;
    const char *const end = bytes_ + byteLength_;
    const char *otherPosition = other->bytes_;
    const char *const otherEnd = otherPosition + other->byteLength_;
    for (const char *position = common; position != end && otherPosition != otherEnd; common = position) {
        const std::uint32_t symbol = qb::text::takeSymbol(position, end, ignoresCase);
        if (symbol != qb::text::takeSymbol(otherPosition, otherEnd, ignoresCase))
            break;
    }
    return common == end ? unchanged() : stringWith({bytes_, static_cast<std::size_t>(common - bytes_)});
}
