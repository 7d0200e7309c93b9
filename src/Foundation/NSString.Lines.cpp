// Lines of a text, and texts made as long as is wanted.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Room.h"

#include <cstddef>
#include <string>

namespace {

// Beside the ASCII ones: U+0085, U+2028 and U+2029.
constexpr std::string_view kLongLineEnds[] = {"\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};

// The bytes of the line end that stands at the beginning of the text; 0 when there is none.
std::size_t lineEndAt(std::string_view text) {
    if (text.starts_with("\r\n"))
        return 2;
    if (text.starts_with('\n') || text.starts_with('\r'))
        return 1;
    for (const std::string_view lineEnd : kLongLineEnds)
        if (text.starts_with(lineEnd))
            return lineEnd.size();
    return 0;
}

// The bytes of the line end that stands in front of `place`. A line end of two characters is not cut.
std::size_t lineEndBefore(std::string_view text, std::size_t place) {
    const std::string_view before = text.substr(0, place);
    if (before.ends_with("\r\n"))
        return 2;
    if (before.ends_with('\n'))
        return 1;
    if (before.ends_with('\r'))
        return text.substr(place).starts_with('\n') ? 0 : 1;
    for (const std::string_view lineEnd : kLongLineEnds)
        if (before.ends_with(lineEnd))
            return lineEnd.size();
    return 0;
}

struct Lines {
    std::size_t start, contentsEnd, end;
};

// The lines that the bytes from `from` to `to` lie in.
Lines linesAround(std::string_view text, std::size_t from, std::size_t to) {
    Lines lines{from, to, to};
    while (lines.start != 0 && lineEndBefore(text, lines.start) == 0)
        --lines.start;
    std::size_t lineEnd = from == to ? 0 : lineEndBefore(text, to);
    if (lineEnd == 0) {
        if (to != 0 && text.substr(to - 1).starts_with("\r\n")) // the range cuts the line end
            --lines.end;
        while (lines.end != text.size() && (lineEnd = lineEndAt(text.substr(lines.end))) == 0)
            ++lines.end;
        lines.end += lineEnd;
    }
    lines.contentsEnd = lines.end - lineEnd;
    return lines;
}

} // namespace

std::span<const qb::Method> qb::tables::stringLines() {
    static const qb::Method methods[] = {
        qb::method<"getLineStart:end:contentsEnd:forRange:">(&NSString::getLineStart),
        qb::method<"lineRangeForRange:">(&NSString::lineRangeForRange),
        qb::method<"stringByPaddingToLength:withString:startingAtIndex:">(&NSString::stringByPaddingToLength),
    };
    return methods;
}

void NSString::getLineStart(std::uint32_t *start, std::uint32_t *end, std::uint32_t *contentsEnd,
                            NSRange forRange) const {
    const std::string_view piece = viewOfRange(forRange, "getLineStart:end:contentsEnd:forRange:");
    const auto from = static_cast<std::size_t>(piece.data() - bytes_);
    const Lines lines = linesAround(view(), from, from + piece.size());
    const auto unitAt = [this](std::size_t byte) {
        return placeOfByte(static_cast<std::uint32_t>(byte)).unit;
    };
    if (start)
        *start = unitAt(lines.start);
    if (end)
        *end = unitAt(lines.end);
    if (contentsEnd)
        *contentsEnd = unitAt(lines.contentsEnd);
}

NSRange NSString::lineRangeForRange(NSRange range) const {
    std::uint32_t start = 0, end = 0;
    getLineStart(&start, &end, nullptr, range);
    return {start, end - start};
}

NSString *NSString::stringByPaddingToLength(std::uint32_t newLength, NSString *withString,
                                            std::uint32_t startingAtIndex) const {
    constexpr const char *kOperation = "NSString stringByPaddingToLength:withString:startingAtIndex:";
    if (newLength <= length())
        return substringToIndex(newLength);
    const std::uint32_t padLength = qb::required(withString, kOperation, "a string")->length();
    if (startingAtIndex >= padLength)
        throw NSRangeException(std::string(kOperation) + " must have an index below " +
                               std::to_string(padLength) + ".");
    // Whole pads, and of the last one as much as is wanted, with the character that may be cut there.
    const std::string_view pad = withString->view();
    const std::uint64_t end = startingAtIndex + std::uint64_t{newLength - length()};
    const std::uint64_t repeats = end / padLength;
    const auto last = static_cast<std::uint32_t>(end % padLength);
    const std::size_t lastEnd = std::min<std::size_t>(withString->placeOfUnit(last).byte + 4, pad.size());
    std::size_t from = withString->placeOfUnit(startingAtIndex).byte;
    const std::uint64_t bytes = byteLength_ + repeats * pad.size() + lastEnd - from;
    qb::requireLength(bytes, kOperation);
    std::string text;
    qb::text::requireRoom(text, bytes);
    text.reserve(static_cast<std::size_t>(bytes));
    text = view();
    for (std::uint64_t i = 0; i < repeats; ++i)
        text += pad.substr(std::exchange(from, 0));
    text += pad.substr(from, lastEnd - from);
    return stringWith(text)->substringToIndex(newLength);
}
