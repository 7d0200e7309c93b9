// Strings as property lists write them.
#ifndef QB_TEXT_PLISTTEXT_H
#define QB_TEXT_PLISTTEXT_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Returns the length of the text in the property-list manner: bare where it may stand so (`isPlistBare`), or
/// in double quotes with escapes.
std::uint64_t plistTextLength(const char *bytes, std::size_t length);

/// Writes the text in that manner to `target`, which has room for the `plistTextLength` bytes.
///
/// `\"`, `\\`, `\n`, `\t`, `\r`, `\a`, `\b`, `\f`, `\v`; other control bytes and bytes that are no valid
/// UTF-8 as three octal digits; valid UTF-8 stands as it is. Returns the end of what was written.
char *writePlistText(const char *bytes, std::size_t length, char *target);

} // namespace qb::text

#endif
