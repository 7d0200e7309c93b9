#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/QBStringAdditions.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "OSAdaptor/StandardError.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <span>
#include <string>

namespace {

constexpr const char *kFile = "src/QBStringAdditions";
constexpr int kLineOfMalformed = 1353;
constexpr int kLineOfForbidden = 1539;

// How many bytes around an error are shown.
constexpr std::size_t kShownBefore = 10;
constexpr std::size_t kShownAfter = 10; // with the bad one

const unsigned char *unsignedBytes(const char *bytes) {
    return reinterpret_cast<const unsigned char *>(bytes);
}

// Reports the invalid sequence at `offset`.
void raiseMalformed(std::string_view text, std::size_t offset) {
    const std::size_t before = std::min(offset, kShownBefore);
    const std::string shown(text.substr(offset - before, before + kShownAfter)); // a handler may change it
    const auto shownOffset = static_cast<std::uint32_t>(std::min<std::uint64_t>(offset, UINT32_MAX));
    qb::raiseError(kFile, kLineOfMalformed, qb::kErrorMalformedUtf8, shownOffset);
    if (debug <= 0)
        return;
    const std::string mark = std::string(before, ' ') + "^";
    qb::writeStandardError(qb::printed("Error in UTF-8 string:\n%s\n%s\n", shown.c_str(), mark.c_str()));
}

std::int32_t asInt(std::size_t offset) {
    return static_cast<std::int32_t>(std::min<std::size_t>(offset, INT_MAX));
}

// Returns the length of the character at `offset`, -1 when it is invalid. A NUL inside a text is a character.
int characterLength(std::string_view text, std::size_t offset, std::uint32_t *codePoint = nullptr) {
    const unsigned char *const start = unsignedBytes(text.data());
    const int length = qb::text::sequenceLength(start + offset, start + text.size(), codePoint);
    return length == 0 ? 1 : length;
}

// Where a walk over a text ended.
struct Walk {
    std::size_t offset = 0;
    bool isMalformed = false;
};

// Walks over `count` characters from `offset` on, or to the end of the text, or to an invalid sequence, which
// is reported.
Walk walkOver(std::string_view text, std::size_t offset, std::int32_t count) {
    for (; count > 0 && offset < text.size(); --count) {
        const int length = characterLength(text, offset);
        if (length < 0) {
            raiseMalformed(text, offset);
            return {offset, true};
        }
        offset += static_cast<std::size_t>(length);
    }
    return {offset, false};
}

void checkForbidden(std::uint32_t codePoint, std::span<const NSRange> ranges) {
    const bool isForbidden = std::any_of(ranges.begin(), ranges.end(), [codePoint](NSRange range) {
        return codePoint >= range.location && codePoint <= NSMaxRange(range); // both ends count
    });
    if (isForbidden)
        qb::raiseError(kFile, kLineOfForbidden, qb::kErrorForbiddenCharacter, codePoint);
}

void checkRanges(std::string_view text, std::span<const NSRange> ranges) {
    for (std::size_t offset = 0; offset < text.size();) {
        std::uint32_t codePoint = 0;
        const int length = characterLength(text, offset, &codePoint);
        if (length < 0)
            return raiseMalformed(text, offset);
        checkForbidden(codePoint, ranges);
        offset += static_cast<std::size_t>(length);
    }
}

} // namespace

int _getUtf8CharacterByteLength(const unsigned char *position, unsigned *codePoint) {
    // Nothing is read behind the last byte that belongs to the character, or the first one that doesn't.
    const auto wanted = static_cast<std::size_t>(qb::text::structuralLength(*position));
    std::size_t length = *position ? 1 : 0;
    while (length != 0 && length < wanted && (position[length] & 0xC0) == 0x80)
        ++length;
    std::uint32_t decoded = 0;
    const int result = qb::text::sequenceLength(position, position + length, &decoded);
    if (codePoint && result >= 0)
        *codePoint = decoded;
    return result;
}

void _raiseUtf8ErrorInString(const char *start, const char *bad) {
    const auto offset = static_cast<std::size_t>(bad - start);
    raiseMalformed({start, offset + ::strnlen(bad, kShownAfter)}, offset);
}

std::span<const qb::Method> qb::tables::stringUtf8Conversion() {
    static const qb::Method methods[] = {
        qb::classMethod<"_indexOfUtf8Index:in:">(&NSString::_indexOfUtf8Index),
        qb::classMethod<"verifyUTF8:withInvalidRanges::", void(const char *, const NSRange *, std::uint32_t)>(
            &NSString::verifyUTF8),
        qb::classMethod<"writeUtf8CharForUnicodePos:to:">(&NSString::writeUtf8CharForUnicodePos),
        qb::method<"utf8CharCount">(&NSString::utf8CharCount),
        qb::method<"verifyUTF8", void()>(&NSString::verifyUTF8),
        qb::method<"utf8SubstringFromIndex:length:">(&NSString::utf8SubstringFromIndex),
        qb::method<"indexOfFirstCorruptUtf8Character">(&NSString::indexOfFirstCorruptUtf8Character),
        qb::method<"indexOfFirstCorrectUtf8Character">(&NSString::indexOfFirstCorrectUtf8Character),
        qb::method<"verifyUTF8WithInvalidRanges::">(&NSString::verifyUTF8WithInvalidRanges),
    };
    return methods;
}

std::int32_t NSString::_indexOfUtf8Index(std::int32_t count, const char *in) {
    if (!in || count <= 0)
        return 0;
    const std::uint64_t most =
        qb::text::kLongestSequence * std::uint64_t{static_cast<std::uint32_t>(count)} + kShownAfter;
    const std::size_t length =
        ::strnlen(in, static_cast<std::size_t>(std::min<std::uint64_t>(most, PTRDIFF_MAX)));
    return asInt(walkOver({in, length}, 0, count).offset);
}

std::int32_t NSString::utf8CharCount() const {
    std::size_t characters = 0;
    const std::size_t valid = qb::text::structuralPrefix(view().data(), view().size(), &characters);
    if (valid != view().size())
        raiseMalformed(view(), valid);
    return asInt(characters);
}

NSString *NSString::utf8SubstringFromIndex(std::int32_t index, std::int32_t length) const {
    if (length == 0)
        return string();
    Ref<NSString> found; // kept while the earlier errors come back to their handler
    {
        const qb::SavedErrors earlier;
        const Walk start = walkOver(view(), 0, index);
        const Walk end = start.isMalformed ? start : walkOver(view(), start.offset, length);
        const std::size_t bytes = end.offset - start.offset;
        if (!end.isMalformed)
            found = bytes == view().size() ? copy() : initWith(view().substr(start.offset, bytes));
    }
    return found ? found.autorelease() : string();
}

std::int32_t NSString::indexOfFirstCorruptUtf8Character() const {
    const qb::SavedErrors earlier(qb::SavedErrors::kDiscard);
    std::size_t characters = 0;
    const std::size_t valid = qb::text::structuralPrefix(view().data(), view().size(), &characters);
    if (valid == view().size())
        return -1;
    raiseMalformed(view(), valid);
    return asInt(valid);
}

std::int32_t NSString::indexOfFirstCorrectUtf8Character() const {
    std::size_t offset = 0;
    while (offset < view().size() && characterLength(view(), offset) < 0)
        ++offset;
    return asInt(offset);
}

void NSString::verifyUTF8(const char *text, const NSRange *withInvalidRanges, std::uint32_t count) {
    if (text)
        checkRanges(text, {withInvalidRanges, withInvalidRanges ? count : 0});
}

void NSString::verifyUTF8WithInvalidRanges(const NSRange *ranges, std::uint32_t count) const {
    const Ref<NSString> unchanged = copy(); // whatever an error handler does to this string
    checkRanges(unchanged->view(), {ranges, ranges ? count : 0});
}

void NSString::writeUtf8CharForUnicodePos(std::int32_t codePoint, QBOutputStream *to) {
    char bytes[qb::text::kLongestSequence];
    if (codePoint < 0 || !to)
        return;
    to->writeBuffer(
        bytes, static_cast<std::uint32_t>(qb::text::encode(static_cast<std::uint32_t>(codePoint), bytes)));
}
