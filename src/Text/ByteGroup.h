// Sixteen bytes at a multiple of sixteen that are looked at all at once.
#ifndef QB_TEXT_BYTEGROUP_H
#define QB_TEXT_BYTEGROUP_H

#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace qb::text {

namespace plain {

/// Returns a bit for each byte that is `wanted`, the first one's lowest.
inline std::uint32_t bytesThatAre(const std::uint8_t *bytes, std::uint8_t wanted) {
    std::uint32_t mask = 0;
    for (std::uint32_t i = 0; i < 16; ++i)
        mask |= static_cast<std::uint32_t>(bytes[i] == wanted) << i;
    return mask;
}

/// Sets a byte that is 0.
inline void setByte(std::uint8_t *bytes, int place, std::uint8_t value) {
    bytes[place] = value;
}

} // namespace plain

#ifdef __SSE2__

namespace sse2 {

inline __m128i copiesOf(std::uint8_t byte) {
    return _mm_set1_epi32(static_cast<int>(byte * 0x01010101U));
}

inline std::uint32_t bytesThatAre(const std::uint8_t *bytes, std::uint8_t wanted) {
    const __m128i group = _mm_load_si128(reinterpret_cast<const __m128i *>(bytes));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(group, copiesOf(wanted))));
}

// The bytes are written as a whole, as they are read: the processor makes a read of many bytes wait when a
// part of them was written just before.
inline void setByte(std::uint8_t *bytes, int place, std::uint8_t value) {
    static constexpr std::uint8_t kOneByte[2 * 16 - 1] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff};
    auto *const group = reinterpret_cast<__m128i *>(bytes);
    const __m128i at = _mm_loadu_si128(reinterpret_cast<const __m128i *>(kOneByte + 15 - place));
    _mm_store_si128(group, _mm_or_si128(_mm_load_si128(group), _mm_and_si128(at, copiesOf(value))));
}

} // namespace sse2

using sse2::bytesThatAre;
using sse2::setByte;

#else

using plain::bytesThatAre;
using plain::setByte;

#endif

} // namespace qb::text

#endif
