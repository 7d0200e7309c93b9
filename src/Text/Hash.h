// Hashing of bytes.
#ifndef QB_TEXT_HASH_H
#define QB_TEXT_HASH_H

#include "Text/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace qb::text {

namespace detail {

// Odd numbers with an even mix of ones and zeros; the fractions of the square roots of 2, 3 and 5.
constexpr std::uint64_t kFirst = 0x6A09E667F3BCC909u;
constexpr std::uint64_t kSecond = 0xBB67AE8584CAA73Bu;
constexpr std::uint64_t kThird = 0x3C6EF372FE94F82Bu;

// Each step can be undone for a given word, so no state is lost: what collides, collides by chance. The
// product's upper bits know all of the word; the shift brings them down for the next step.
inline std::uint64_t mixed(std::uint64_t state, std::uint64_t word) {
    state = (state ^ word) * kFirst;
    return state ^ state >> 32;
}

inline std::uint32_t finished(std::uint64_t state) {
    state *= kSecond;
    state ^= state >> 29;
    state *= kThird;
    return static_cast<std::uint32_t>(state >> 32);
}

std::uint32_t hashLongBytes(const char *bytes, std::size_t length);

} // namespace detail

/// Returns the hash of at most 8 bytes, given as `loadShort` makes a word of them.
inline std::uint32_t hashWord(std::uint64_t word, std::size_t length) {
    return detail::finished(detail::mixed(length * detail::kThird, word));
}

/// Returns the hash of a pair of values that have those hashes.
inline std::uint32_t hashPair(std::uint32_t first, std::uint32_t second) {
    return hashWord(std::uint64_t{first} << 32 | second, sizeof(std::uint64_t));
}

/// Returns a hash of the `length` bytes, the same on every machine and in every run.
///
/// Every bit of the text reaches every bit of the result. It is made for tables of strings and gives no
/// protection against keys that are chosen to collide. Names, which are short, need no call.
inline std::uint32_t hashBytes(const char *bytes, std::size_t length) {
    if (length > 8)
        return detail::hashLongBytes(bytes, length);
    return hashWord(loadShort(bytes, length), length);
}

} // namespace qb::text

#endif
