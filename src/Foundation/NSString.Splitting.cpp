// Strings taken apart and put together.
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCharacterSet.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Room.h"
#include "Text/Search.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using qb::text::append;
using qb::text::Match;
using qb::text::Search;

std::string_view viewOrEmpty(NSString *string) {
    return string ? string->view() : std::string_view();
}

// The matches that the options find, in the text's order.
std::vector<Match> matchesIn(std::string_view text, Search &search, std::uint32_t options) {
    std::vector<Match> matches;
    if (options & NSAnchoredSearch) {
        if (const auto match = search.findAtEdge(text))
            matches.push_back(*match);
        return matches;
    }
    while (const auto match = search.find(text)) {
        matches.push_back(*match);
        text = text.substr(0, match->from);
    }
    std::reverse(matches.begin(), matches.end());
    return matches;
}

// Appends the text with each match replaced to `result`. Returns how many there were.
std::size_t replaceMatches(std::string_view text, std::string_view target, std::uint32_t options,
                           std::string_view by, std::string &result) {
    if (target.empty())
        return 0;
    Search search(target, options);
    std::size_t done = 0;
    const auto replace = [&](Match match) {
        append(result, text.substr(done, match.from - done));
        append(result, by);
        done = match.end;
    };
    std::size_t count = 0;
    if (options & (NSAnchoredSearch | NSBackwardsSearch)) {
        const std::vector<Match> matches = matchesIn(text, search, options);
        std::for_each(matches.begin(), matches.end(), replace);
        count = matches.size();
    } else {
        count = qb::text::forEachMatch(text, search, replace);
    }
    append(result, text.substr(done));
    return count;
}

} // namespace

std::span<const qb::Method> qb::tables::stringSplitting() {
    static const qb::Method methods[] = {
        qb::method<"componentsSeparatedByString:", NSArray *(NSString *)>(
            &NSString::componentsSeparatedByString),
        qb::method<"componentsSeparatedByString:count:", NSArray *(NSString *, std::uint32_t)>(
            &NSString::componentsSeparatedByString),
        qb::method<"componentsSeparatedByCharactersInSet:">(&NSString::componentsSeparatedByCharactersInSet),
        qb::method<"stringByTrimmingCharactersInSet:">(&NSString::stringByTrimmingCharactersInSet),
        qb::method<"stringByAppendingString:">(&NSString::stringByAppendingString),
        qb::method<"stringByReplacingOccurrencesOfString:withString:">(
            &NSString::stringByReplacingOccurrencesOfString),
        qb::method<"stringByReplacingSubstring:withString:">(&NSString::stringByReplacingSubstring),
        qb::method<"stringByReplacingCharactersInRange:withString:">(
            &NSString::stringByReplacingCharactersInRange),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableStringReplacing() {
    static const qb::Method methods[] = {
        qb::method<"replaceOccurrencesOfString:withString:options:range:">(
            &NSMutableString::replaceOccurrencesOfString),
    };
    return methods;
}

NSArray *NSString::componentsSeparatedByString(NSString *separator) const {
    return componentsSeparatedByString(qb::required(separator, "NSString componentsSeparatedByString:"),
                                       UINT32_MAX);
}

NSArray *NSString::componentsSeparatedByString(NSString *separator, std::uint32_t count) const {
    Search search(qb::required(separator, "NSString componentsSeparatedByString:count:")->view());
    const Ref<NSMutableArray> pieces = NSMutableArray::init();
    std::string_view rest = view();
    for (; count != 0; --count) {
        const auto match = search.find(rest);
        if (!match)
            break;
        pieces->addObject(initWith(rest.substr(0, match->from)).get());
        rest.remove_prefix(match->end);
    }
    pieces->addObject(initWith(rest).get());
    return NSArray::arrayWith(pieces->view());
}

NSArray *NSString::componentsSeparatedByCharactersInSet(NSCharacterSet *set) const {
    qb::required(set, "NSString componentsSeparatedByCharactersInSet:");
    const Ref<NSMutableArray> pieces = NSMutableArray::init();
    const char *const end = bytes_ + byteLength_;
    const char *pieceStart = bytes_;
    std::size_t used = 0;
    for (const char *position = bytes_; position != end; position += used) {
        if (!set->holdsCharacterAt(position, end, used))
            continue;
        pieces->addObject(initWith({pieceStart, static_cast<std::size_t>(position - pieceStart)}).get());
        pieceStart = position + used;
    }
    pieces->addObject(initWith({pieceStart, static_cast<std::size_t>(end - pieceStart)}).get());
    return NSArray::arrayWith(pieces->view());
}

NSString *NSString::stringByTrimmingCharactersInSet(NSCharacterSet *set) const {
    qb::required(set, "NSString stringByTrimmingCharactersInSet:");
    const char *position = bytes_;
    const char *end = bytes_ + byteLength_;
    std::size_t used = 0;
    while (position != end && set->holdsCharacterAt(position, end, used))
        position += used;
    while (position != end) {
        std::uint32_t character = 0;
        const char *const last = end - qb::text::decodeLenientBefore(position, end, &character);
        if (!set->holdsCharacterAt(last, end, used))
            break;
        end = last;
    }
    const auto length = static_cast<std::size_t>(end - position);
    return length == byteLength_ ? unchanged() : stringWith({position, length});
}

NSString *NSString::stringByAppendingString(NSString *string) const {
    if (!string || string->byteLength_ == 0)
        return unchanged();
    std::string result;
    qb::text::requireRoom(result, std::uint64_t{byteLength_} + string->byteLength_);
    result.reserve(std::size_t{byteLength_} + string->byteLength_);
    return stringWith(result.append(view()).append(string->view()));
}

NSString *NSString::replacing(NSString *target, NSString *withString, const char *selector) const {
    std::string result;
    const std::string_view wanted = qb::required(target, selector)->view();
    const bool isChanged = replaceMatches(view(), wanted, 0, viewOrEmpty(withString), result) != 0;
    return isChanged ? stringWith(result) : unchanged();
}

NSString *NSString::stringByReplacingOccurrencesOfString(NSString *target, NSString *withString) const {
    return replacing(target, withString, "NSString stringByReplacingOccurrencesOfString:withString:");
}

NSString *NSString::stringByReplacingSubstring(NSString *substring, NSString *withString) const {
    return replacing(substring, withString, "NSString stringByReplacingSubstring:withString:");
}

NSString *NSString::stringByReplacingCharactersInRange(NSRange range, NSString *withString) const {
    const std::string_view piece = viewOfRange(range, "stringByReplacingCharactersInRange:withString:");
    const std::string_view replacement = viewOrEmpty(withString);
    if (piece == replacement)
        return unchanged();
    const auto from = static_cast<std::size_t>(piece.data() - bytes_);
    std::string result(view().substr(0, from));
    qb::text::append(result, replacement);
    qb::text::append(result, view().substr(from + piece.size()));
    return stringWith(result);
}

std::uint32_t NSMutableString::replaceOccurrencesOfString(NSString *target, NSString *withString,
                                                          std::uint32_t options, NSRange range) {
    const std::string_view wanted =
        qb::required(target, "NSString replaceOccurrencesOfString:withString:options:range:")->view();
    const std::string_view piece = viewOfRange(range, "replaceOccurrencesOfString:withString:options:range:");
    std::string result;
    const std::size_t count = replaceMatches(piece, wanted, options, viewOrEmpty(withString), result);
    if (count != 0)
        replaceBytes(static_cast<std::uint32_t>(piece.data() - bytes_),
                     static_cast<std::uint32_t>(piece.size()), result);
    return static_cast<std::uint32_t>(count);
}
