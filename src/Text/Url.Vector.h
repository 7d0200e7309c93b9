// The vector versions of escapes in URLs.
#ifndef QB_TEXT_URL_VECTOR_H
#define QB_TEXT_URL_VECTOR_H

#include <cstddef>
#include <cstdint>

namespace qb::text::avx512 {

/// Writes up to 64 bytes, escaped where `escaped` has their bit, as `escapeUrl` of Text/Url.h does, and
/// touches nothing behind them. Returns their end.
char *escapeUrl(const char *position, std::size_t length, std::uint64_t escaped, char *target);

/// Where unescaping stopped, in the text and in the target.
struct UrlResult {
    const char *next;
    char *end;
};

/// Does as `unescapeUrl` of Text/Url.h, but stops in front of marks that stand as digits of other ones, or
/// have less than two behind them.
UrlResult unescapeUrl(const char *position, const char *end, char *target);

} // namespace qb::text::avx512

#endif
