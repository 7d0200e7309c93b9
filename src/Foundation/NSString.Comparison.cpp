// The order of strings, with and without their case.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Search.h"

#include <string_view>

namespace {

template <class T>
NSComparisonResult orderOf(const T &left, const T &right) {
    return left < right ? NSOrderedAscending : left > right ? NSOrderedDescending : NSOrderedSame;
}

NSComparisonResult comparedWithoutCase(std::string_view left, std::string_view right) {
    const char *position = left.data();
    const char *const end = position + left.size();
    const char *otherPosition = right.data();
    const char *const otherEnd = otherPosition + right.size();
    while (position != end && otherPosition != otherEnd) {
        const std::uint32_t symbol = qb::text::takeSymbol(position, end, /*ignoresCase=*/true);
        const std::uint32_t otherSymbol = qb::text::takeSymbol(otherPosition, otherEnd, /*ignoresCase=*/true);
        if (symbol != otherSymbol)
            return orderOf(symbol, otherSymbol);
    }
    return orderOf(position != end, otherPosition != otherEnd);
}

} // namespace

std::span<const qb::Method> qb::tables::stringComparison() {
    static const qb::Method methods[] = {
        qb::method<"compare:options:", NSComparisonResult(NSString *, std::uint32_t)>(&NSString::compare),
        qb::method<"compare:options:range:", NSComparisonResult(NSString *, std::uint32_t, NSRange)>(
            &NSString::compare),
        qb::method<"caseInsensitiveCompare:">(&NSString::caseInsensitiveCompare),
        qb::method<"isCaseEqualTo:">(&NSString::isCaseEqualTo),
    };
    return methods;
}

NSComparisonResult NSString::compare(NSString *other, std::uint32_t options) const {
    return compare(other, options, {0, length()});
}

NSComparisonResult NSString::compare(NSString *other, std::uint32_t options, NSRange range) const {
    qb::required(other, "NSString compare:options:range:", "a string");
    const std::string_view text = viewOfRange(range, "compare:options:range:");
    return options & NSCaseInsensitiveSearch ? comparedWithoutCase(text, other->view())
                                             : orderOf(text, other->view());
}

NSComparisonResult NSString::caseInsensitiveCompare(NSString *other) const {
    return compare(other, NSCaseInsensitiveSearch);
}

BOOL NSString::isCaseEqualTo(NSString *other) const {
    return other && comparedWithoutCase(view(), other->view()) == NSOrderedSame;
}
