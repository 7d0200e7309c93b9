// The block function of MD5 (RFC 1321).
#ifndef QB_TEXT_MD5_H
#define QB_TEXT_MD5_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Bytes that `addMd5Blocks` takes at a time.
constexpr std::size_t kMd5Block = 64;

/// Adds the whole blocks among `length` bytes to the four words of the state.
void addMd5Blocks(std::uint32_t *state, const unsigned char *bytes, std::size_t length);

} // namespace qb::text

#endif
