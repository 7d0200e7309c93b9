// Strings as property lists write them.
#ifndef QB_TEXT_PLISTTEXT_H
#define QB_TEXT_PLISTTEXT_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Returns the length of the text in the property-list manner: bare where it may stand so, else in
/// double quotes with escapes.
///
/// A bare text is not empty, has letters, digits and `_ $ . : / -` only, and no beginning of a comment, "//"
/// or "/*".
std::uint64_t plistTextLength(const char *bytes, std::size_t length);

/// So many bytes behind its text may `writePlistText` overwrite.
constexpr std::size_t kPlistTextSlack = 16;

/// Returns a room that is large enough for any text of that length, slack included.
constexpr std::uint64_t plistTextRoom(std::size_t length) {
    constexpr std::uint64_t kLongestEscape = 4;
    return length * kLongestEscape + 2 + kPlistTextSlack;
}

/// Writes the text in that manner to `target`, which has room for the `plistTextLength` bytes and the slack.
///
/// `\"`, `\\`, `\n`, `\t`, `\r`, `\a`, `\b`, `\f`, `\v`; other control bytes and bytes that are no valid
/// UTF-8 as three octal digits; valid UTF-8 stands as it is. Returns the end of what was written.
char *writePlistText(const char *bytes, std::size_t length, char *target);

namespace plain {
char *writePlistText(const char *bytes, std::size_t length, char *target);
} // namespace plain

} // namespace qb::text

#endif
