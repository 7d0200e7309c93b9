// HTML entities on plain bytes.
#ifndef QB_TEXT_HTML_H
#define QB_TEXT_HTML_H

#include "Text/Scan.h"

#include <cstddef>

namespace qb::text {

/// Which characters a conversion handles; values are or-ed together.
enum HtmlFlags : unsigned {
    kHtmlLt = 1,   // < as &lt;
    kHtmlGt = 2,   // > as &gt;
    kHtmlAmp = 4,  // & as &amp;
    kHtmlQuot = 8, // " as &quot;
    kHtmlAll = 15,
};

/// Returns the characters that `flags` names.
constexpr ByteSet htmlCharacters(unsigned flags) {
    ByteSet set;
    for (unsigned i = 0; i < 4; ++i)
        if (flags >> i & 1)
            set = set.with(static_cast<unsigned char>("<>&\""[i]), static_cast<unsigned char>("<>&\""[i]));
    return set;
}

/// Returns the length of the text with its characters escaped, which is `length` exactly when there are none.
///
/// Saturates at SIZE_MAX, where it could pass it.
std::size_t escapedHtmlLength(const char *bytes, std::size_t length, unsigned flags);

/// Writes the escaped text to `target`, which must have room for the `escapedHtmlLength` bytes and may not
/// overlap the text.
///
/// Returns the end of what was written; nothing behind it is touched.
char *escapeHtml(const char *bytes, std::size_t length, unsigned flags, char *target);

/// Writes the text with its entities decoded to `target`, which takes `length` bytes and may be `bytes`
/// itself.
///
/// Of an entity only the "&" is replaced, by the decoded character; the rest of it stays: "&lt;" gives
/// "<lt;". Returns the number of entities.
std::size_t unescapeHtml(const char *bytes, std::size_t length, unsigned flags, char *target);

namespace plain {
std::size_t escapedHtmlLength(const char *bytes, std::size_t length, unsigned flags);
char *escapeHtml(const char *bytes, std::size_t length, unsigned flags, char *target);
} // namespace plain

} // namespace qb::text

#endif
