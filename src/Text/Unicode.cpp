#include "Text/Unicode.h"

#include "Text/UnicodeTables.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <iterator>

namespace qb::text {

namespace {

// The last entry that begins at or before the character; null when there is none.
template <class Range, std::size_t count>
const Range *entryFor(const Range (&table)[count], std::uint32_t codePoint) {
    const Range *const behind =
        std::upper_bound(std::begin(table), std::end(table), codePoint,
                         [](std::uint32_t code, const Range &range) { return code < range.first; });
    return behind == std::begin(table) ? nullptr : behind - 1;
}

template <std::size_t count>
bool isIn(const CodeRange (&table)[count], std::uint32_t codePoint) {
    const CodeRange *const range = entryFor(table, codePoint);
    return range && codePoint <= range->last;
}

template <std::size_t count>
std::uint32_t converted(const CaseRange (&table)[count], std::uint32_t codePoint) {
    const CaseRange *const range = entryFor(table, codePoint);
    if (!range || codePoint > range->last || (codePoint - range->first) % range->step != 0)
        return codePoint;
    return codePoint + static_cast<std::uint32_t>(range->distance);
}

constexpr bool isAsciiIn(std::uint32_t codePoint, char first, char last) {
    return codePoint >= static_cast<std::uint32_t>(first) && codePoint <= static_cast<std::uint32_t>(last);
}

// What conversions see in place of a malformed byte, which stays: a character without case.
constexpr std::uint32_t kReplacement = 0xFFFD;

// Appends the character at `position` as `convert` wants it; returns the bytes used.
template <class Convert>
std::size_t appendConverted(std::string &target, const char *position, const char *end, Convert convert) {
    std::uint32_t codePoint = 0;
    const std::size_t used = decodeLenient(position, end, &codePoint);
    const bool isMalformed = used == 1 && codePoint >= 0x80;
    const std::uint32_t other = convert(isMalformed ? kReplacement : codePoint);
    if (isMalformed || other == codePoint) {
        target.append(position, used);
        return used;
    }
    char bytes[kLongestSequence];
    target.append(bytes, encode(other, bytes));
    return used;
}

// `first` and `last`: the ASCII letters that change.
template <class Convert>
std::string allConverted(std::string_view text, char first, char last, Convert convert) {
    std::string target(text);
    const auto ascii = std::find_if(text.begin(), text.end(), [](char byte) { return byte < 0; });
    const auto asciiLength = static_cast<std::size_t>(ascii - text.begin());
    for (std::size_t i = 0; i < asciiLength; ++i) {
        const bool changes = target[i] >= first && target[i] <= last;
        target[i] = static_cast<char>(target[i] ^ (changes ? 0x20 : 0));
    }
    if (asciiLength == text.size())
        return target;
    target.resize(asciiLength);
    const char *const end = text.data() + text.size();
    for (const char *position = text.data() + asciiLength; position != end;)
        position += appendConverted(target, position, end, convert);
    return target;
}

} // namespace

std::uint32_t toUpper(std::uint32_t codePoint) {
    if (codePoint < 0x80)
        return isAsciiIn(codePoint, 'a', 'z') ? codePoint - 0x20 : codePoint;
    return converted(kToUpper, codePoint);
}

std::uint32_t toLower(std::uint32_t codePoint) {
    if (codePoint < 0x80)
        return isAsciiIn(codePoint, 'A', 'Z') ? codePoint + 0x20 : codePoint;
    return converted(kToLower, codePoint);
}

std::uint32_t foldCase(std::uint32_t codePoint) {
    return codePoint < 0x80 ? toLower(codePoint) : toLower(toUpper(codePoint));
}

bool isLetter(std::uint32_t codePoint) {
    return isIn(kLetters, codePoint);
}

bool isUppercaseLetter(std::uint32_t codePoint) {
    return toLower(codePoint) != codePoint;
}

bool isLowercaseLetter(std::uint32_t codePoint) {
    return codePoint == 0xDF || toUpper(codePoint) != codePoint;
}

bool isDecimalDigit(std::uint32_t codePoint) {
    return isIn(kDigits, codePoint);
}

bool isLetterOrNumber(std::uint32_t codePoint) {
    return isIn(kLetters, codePoint) || isIn(kNumbers, codePoint);
}

bool isPunctuation(std::uint32_t codePoint) {
    return isIn(kPunctuation, codePoint);
}

bool isSymbol(std::uint32_t codePoint) {
    return isIn(kSymbols, codePoint);
}

bool isControl(std::uint32_t codePoint) {
    return isIn(kControls, codePoint);
}

bool isMark(std::uint32_t codePoint) {
    return isIn(kMarks, codePoint);
}

bool isTitleCaseLetter(std::uint32_t codePoint) {
    return isIn(kTitleCase, codePoint);
}

bool isWhitespace(std::uint32_t codePoint) {
    return codePoint == ' ' || codePoint == '\t' || codePoint == 0xA0 || codePoint == 0x1680 ||
           (codePoint >= 0x2000 && codePoint <= 0x200A) || codePoint == 0x202F || codePoint == 0x205F ||
           codePoint == 0x3000;
}

bool isNewline(std::uint32_t codePoint) {
    return (codePoint >= 0x0A && codePoint <= 0x0D) || codePoint == 0x85 || codePoint == 0x2028 ||
           codePoint == 0x2029;
}

bool isWhitespaceOrNewline(std::uint32_t codePoint) {
    return isWhitespace(codePoint) || isNewline(codePoint);
}

std::string uppercased(std::string_view text) {
    return allConverted(text, 'a', 'z', toUpper);
}

std::string lowercased(std::string_view text) {
    return allConverted(text, 'A', 'Z', toLower);
}

std::string capitalized(std::string_view text) {
    std::string target;
    target.reserve(text.size());
    bool isInWord = false;
    const char *const end = text.data() + text.size();
    for (const char *position = text.data(); position != end;)
        position += appendConverted(target, position, end, [&isInWord](std::uint32_t codePoint) {
            const bool isFirst = !isInWord;
            isInWord = !isWhitespaceOrNewline(codePoint);
            return isFirst ? toUpper(codePoint) : toLower(codePoint);
        });
    return target;
}

} // namespace qb::text
