// Hashing of bytes.
#ifndef QB_TEXT_HASH_H
#define QB_TEXT_HASH_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Returns a hash of the `length` bytes, the same on every machine and in every run.
///
/// Every bit of the text reaches every bit of the result. It is made for tables of strings and gives no
/// protection against keys that are chosen to collide.
std::uint32_t hashBytes(const char *bytes, std::size_t length);

} // namespace qb::text

#endif
