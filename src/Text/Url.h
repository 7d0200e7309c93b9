// Percent escapes in the library's own manner, on plain bytes.
#ifndef QB_TEXT_URL_H
#define QB_TEXT_URL_H

#include "Text/Scan.h"

#include <cstddef>

namespace qb::text {

/// Writes the text with each byte of `escaped` as "%" and its two halves, each added to "0", to `target`,
/// which has room for two bytes more for each of them.
///
/// Returns the end of what was written.
char *escapeUrl(const char *position, const char *end, const ByteSet &escaped, char *target);

/// What `unescapeUrl` changes.
inline constexpr ByteSet kUrlMarks = ByteSet("%+");

/// Writes the text with "+" as a blank and "%" and two digits as their byte to `target`, which has room for
/// as many bytes as the text.
///
/// A digit alone counts as the upper half; "%" at the end is dropped. What is no digit counts as its code
/// less 87. Returns the end of what was written.
char *unescapeUrl(const char *position, const char *end, char *target);

} // namespace qb::text

#endif
