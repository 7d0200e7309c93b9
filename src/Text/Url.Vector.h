// The vector versions of escapes in URLs.
#ifndef QB_TEXT_URL_VECTOR_H
#define QB_TEXT_URL_VECTOR_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Where unescaping stopped, in the text and in the target.
struct UrlResult {
    const char *next;
    char *end;
};

namespace avx512 {

/// Writes up to 64 bytes, escaped where `escaped` has their bit, as `escapeUrl` of Text/Url.h does, and
/// touches nothing behind them. Returns their end.
char *escapeUrl(const char *position, std::size_t length, std::uint64_t escaped, char *target);

/// Does as `unescapeUrl` of Text/Url.h, but stops in front of marks that stand as digits of other ones, or
/// have less than two behind them.
UrlResult unescapeUrl(const char *position, const char *end, char *target);

} // namespace avx512

namespace avx2 {

/// As above, but behind these bytes the text goes on for 16 bytes at least; what is behind them may be
/// read, and the room for what it becomes written.
char *escapeUrl(const char *position, std::size_t length, std::uint64_t escaped, char *target);

/// As above, but leaves up to 33 bytes at the end.
UrlResult unescapeUrl(const char *position, const char *end, char *target);

} // namespace avx2

} // namespace qb::text

#endif
