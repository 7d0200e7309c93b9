// Case and classes of characters, whatever the locale.
#ifndef QB_TEXT_UNICODE_H
#define QB_TEXT_UNICODE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace qb::text {

/// Returns the one character that is the upper-case or lower-case form; the character itself when there is
/// none, or none of a single character (U+00DF).
std::uint32_t toUpper(std::uint32_t codePoint);
std::uint32_t toLower(std::uint32_t codePoint);

/// Returns the same character for all that differ in case only: the final sigma for the other one, "k" for
/// the sign of the kelvin.
std::uint32_t foldCase(std::uint32_t codePoint);

/// Classes of characters. A letter is upper-case when it has a lower-case form, and lower-case when it has an
/// upper-case form or is U+00DF.
bool isLetter(std::uint32_t codePoint); // marks on letters too
bool isUppercaseLetter(std::uint32_t codePoint);
bool isLowercaseLetter(std::uint32_t codePoint);
bool isDecimalDigit(std::uint32_t codePoint);
bool isLetterOrNumber(std::uint32_t codePoint);
bool isPunctuation(std::uint32_t codePoint);
bool isSymbol(std::uint32_t codePoint);
bool isControl(std::uint32_t codePoint); // invisible format characters too
bool isMark(std::uint32_t codePoint);
bool isTitleCaseLetter(std::uint32_t codePoint);
bool isWhitespace(std::uint32_t codePoint); // blanks and tab
bool isNewline(std::uint32_t codePoint);    // U+000A to U+000D, U+0085, U+2028, U+2029
bool isWhitespaceOrNewline(std::uint32_t codePoint);

/// Returns the text with its characters changed; bytes that are no valid UTF-8 stay as they are.
std::string uppercased(std::string_view text);
std::string lowercased(std::string_view text);
/// The first character of each word (what stands between blanks and newlines) in upper case, the others in
/// lower case.
std::string capitalized(std::string_view text);

} // namespace qb::text

#endif
