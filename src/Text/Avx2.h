// Loads for vector code. Only functions with the same target attribute may call these.
#ifndef QB_TEXT_AVX2_H
#define QB_TEXT_AVX2_H

#include "Text/Bytes.h"

#include <immintrin.h>

namespace qb::text::avx2 {

/// Returns the 32 bytes at `position`.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i load(const char *position) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(position));
}

/// Returns the 16 bytes of `table` in both halves, as byte shuffles want them.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i loadTable(const void *table) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i *>(table)));
}

/// Returns one bit a byte: those whose top bit is set, the first byte's lowest.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline std::uint32_t topBits(__m256i vector) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(vector));
}

/// Returns the `length` bytes (less than 16) at `position`, filled up with zero bytes; reads no other byte.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m128i loadPart16(const char *position,
                                                                             std::size_t length) {
    if (length < 8)
        return _mm_set_epi64x(0, static_cast<long long>(loadShort(position, length)));
    const std::size_t rest = length - 8;
    const std::uint64_t high = rest ? loadWord<std::uint64_t>(position + rest) >> (64 - 8 * rest) : 0;
    return _mm_set_epi64x(static_cast<long long>(high), loadWord<long long>(position));
}

/// Returns the `length` bytes (less than 32) at `position`, filled up with zero bytes; reads no other byte.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i loadPart(const char *position,
                                                                           std::size_t length) {
    if (length < 16)
        return _mm256_zextsi128_si256(loadPart16(position, length));
    // The upper half overlaps the lower one; a window on this table moves it into place.
    alignas(32) static constexpr signed char kWindow[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                                            11, 12, 13, 14, 15, -1, -1, -1, -1, -1, -1,
                                                            -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    const auto *low = reinterpret_cast<const __m128i *>(position);
    const auto *last = reinterpret_cast<const __m128i *>(position + length - 16);
    const auto *window = reinterpret_cast<const __m128i *>(kWindow + (32 - length));
    const __m128i high = _mm_shuffle_epi8(_mm_loadu_si128(last), _mm_loadu_si128(window));
    return _mm256_set_m128i(high, _mm_loadu_si128(low));
}

} // namespace qb::text::avx2

#endif
