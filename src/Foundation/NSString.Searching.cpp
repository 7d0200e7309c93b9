// Finding texts and characters in strings.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSCharacterSet.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Search.h"
#include "Text/Utf8.h"

namespace {

// Options go to searches as they are.
static_assert(static_cast<unsigned>(NSCaseInsensitiveSearch) == qb::text::Search::kIgnoreCase &&
              static_cast<unsigned>(NSBackwardsSearch) == qb::text::Search::kBackwards);

constexpr NSRange kNowhere = {NSNotFound, 0};

// Returns the bytes of the first character of the set, in the direction that the options give; nothing of the
// text when there is none.
std::string_view characterFromSet(std::string_view text, const NSCharacterSet &set, std::uint32_t options) {
    const char *position = text.data();
    const char *end = position + text.size();
    while (position != end) {
        std::size_t used = 0;
        std::uint32_t character = 0;
        const bool isBackwards = options & NSBackwardsSearch;
        const char *const at =
            isBackwards ? end - qb::text::decodeLenientBefore(position, end, &character) : position;
        if (set.holdsCharacterAt(at, end, used))
            return {at, used};
        if (options & NSAnchoredSearch)
            break;
        if (isBackwards)
            end = at;
        else
            position += used;
    }
    return {};
}

} // namespace

std::span<const qb::Method> qb::tables::stringSearching() {
    using Options = std::uint32_t;
    static const qb::Method methods[] = {
        qb::method<"rangeOfString:", NSRange(NSString *)>(&NSString::rangeOfString),
        qb::method<"rangeOfString:options:", NSRange(NSString *, Options)>(&NSString::rangeOfString),
        qb::method<"rangeOfString:options:range:", NSRange(NSString *, Options, NSRange)>(
            &NSString::rangeOfString),
        qb::method<"hasPrefix:">(&NSString::hasPrefix),
        qb::method<"hasSuffix:">(&NSString::hasSuffix),
        qb::method<"containsString:">(&NSString::containsString),
        qb::method<"rangeOfCharacterFromSet:", NSRange(NSCharacterSet *)>(&NSString::rangeOfCharacterFromSet),
        qb::method<"rangeOfCharacterFromSet:options:", NSRange(NSCharacterSet *, Options)>(
            &NSString::rangeOfCharacterFromSet),
        qb::method<"rangeOfCharacterFromSet:options:range:", NSRange(NSCharacterSet *, Options, NSRange)>(
            &NSString::rangeOfCharacterFromSet),
    };
    return methods;
}

NSRange NSString::rangeOfString(NSString *string, std::uint32_t options) const {
    return rangeOfString(string, options, {0, length()});
}

NSRange NSString::rangeOfString(NSString *string, std::uint32_t options, NSRange range) const {
    const std::string_view needle = qb::required(string, "NSString rangeOfString:options:range:")->view();
    const std::string_view text = viewOfRange(range, "rangeOfString:options:range:");
    if (needle.empty())
        return kNowhere;
    qb::text::Search search(needle, options);
    const auto match = options & NSAnchoredSearch ? search.findAtEdge(text) : search.find(text);
    return match ? rangeOfView(text.substr(match->from, match->end - match->from)) : kNowhere;
}

BOOL NSString::hasPrefix(NSString *prefix) const {
    const qb::text::Search search(qb::required(prefix, "NSString hasPrefix:")->view());
    return search.findAtEdge(view()).has_value();
}

BOOL NSString::hasSuffix(NSString *suffix) const {
    const qb::text::Search search(qb::required(suffix, "NSString hasSuffix:")->view(),
                                  qb::text::Search::kBackwards);
    return search.findAtEdge(view()).has_value();
}

BOOL NSString::containsString(NSString *string) const {
    qb::text::Search search(qb::required(string, "NSString containsString:")->view());
    return string->byteLength_ == 0 || search.find(view()).has_value();
}

NSRange NSString::rangeOfCharacterFromSet(NSCharacterSet *set, std::uint32_t options) const {
    return rangeOfCharacterFromSet(set, options, {0, length()});
}

NSRange NSString::rangeOfCharacterFromSet(NSCharacterSet *set, std::uint32_t options, NSRange range) const {
    const std::string_view text = viewOfRange(range, "rangeOfCharacterFromSet:options:range:");
    const std::string_view found = characterFromSet(
        text, *qb::required(set, "NSString rangeOfCharacterFromSet:options:range:"), options);
    return found.empty() ? kNowhere : rangeOfView(found);
}
