// Base64 (RFC 4648, section 4) on plain bytes.
#ifndef QB_TEXT_BASE64_H
#define QB_TEXT_BASE64_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Writes groups of three bytes, `count` of them, as four characters each to `target`.
///
/// Returns the end of what was written; nothing behind it is touched.
char *encodeBase64Groups(const char *bytes, std::size_t count, char *target);

/// Writes the last one or two bytes as four characters with "=" at the end; returns their end.
char *encodeBase64Rest(const char *bytes, std::size_t length, char *target);

/// Where decoding stopped, in the text and in the target.
struct Base64Result {
    const char *next;
    char *end;
};

/// Decodes whole groups of four characters of the alphabet, and stops at the first one that holds anything
/// else.
///
/// `target` takes three bytes for each whole group of the text; bytes behind those decoded, up to there, may
/// be written over.
Base64Result decodeBase64Groups(const char *position, const char *end, char *target);

/// Decodes a group of four characters that may end with "=" or "==" to as many bytes as it stands for.
///
/// Returns the end of what was written; null when the group is none, and then nothing was.
char *decodeBase64Last(const char *group, char *target);

/// What `base64Value` tells of a byte that is not in the alphabet.
constexpr unsigned kNoBase64Value = 0xFF;

/// Returns the number, 0 to 63, that a character of the alphabet stands for.
unsigned base64Value(char character);

namespace plain {
char *encodeBase64Groups(const char *bytes, std::size_t count, char *target);
Base64Result decodeBase64Groups(const char *position, const char *end, char *target);
} // namespace plain

} // namespace qb::text

#endif
