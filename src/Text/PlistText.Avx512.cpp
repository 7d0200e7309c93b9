// The same steps as in PlistText.cpp on vectors of 64 bytes, with masked loads and stores for the ends.
#include "Text/PlistText.h"

#include "Text/PlistEscapes.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <bit>
#include <immintrin.h>

namespace qb::text::avx512 {

namespace {

constexpr std::size_t kBytes = 64;

// A bit for each byte, the first one's lowest.
using Mask = std::uint64_t;

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Mask firstBits(std::size_t count) {
    return count < kBytes ? (Mask{1} << count) - 1 : ~Mask{0};
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i load(const char *position, Mask part) {
    return _mm512_maskz_loadu_epi8(part, position);
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Mask equal(__m512i bytes, char byte) {
    return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(byte));
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Mask between(__m512i bytes, char first,
                                                                           char last) {
    const __m512i distance = _mm512_sub_epi8(bytes, _mm512_set1_epi8(first));
    return _mm512_cmple_epu8_mask(distance, _mm512_set1_epi8(static_cast<char>(last - first)));
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Mask bare(__m512i bytes) {
    const __m512i small = _mm512_or_si512(bytes, _mm512_set1_epi8(0x20)); // letters as small ones
    return between(small, 'a', 'z') | between(bytes, '-', ':') | equal(bytes, '_') | equal(bytes, '$');
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Mask escaped(__m512i bytes) {
    return between(bytes, 0x00, 0x1F) | equal(bytes, 0x7F) | equal(bytes, '"') | equal(bytes, '\\');
}

// The bytes that are no ASCII and not seen to be valid at once, as whole characters of two bytes are.
[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Mask doubtful(__m512i bytes) {
    const Mask high = _mm512_movepi8_mask(bytes);
    if (high == 0)
        return 0;
    const Mask pairs = between(bytes, '\xC2', '\xDF') << 1 & between(bytes, '\x80', '\xBF');
    return high & ~(pairs | pairs >> 1);
}

// Writes the text as it stands. Returns null when it has to be quoted.
[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline char *
writeBare(const char *position, std::size_t rest, char *target) {
    if (rest == 0)
        return nullptr;
    for (Mask slashBefore = 0; rest != 0;) {
        const std::size_t length = std::min(rest, kBytes);
        const Mask part = firstBits(length);
        const __m512i bytes = load(position, part);
        const Mask slashes = equal(bytes, '/');
        if ((~bare(bytes) & part) | (slashes & (slashes << 1 | slashBefore)))
            return nullptr;
        slashBefore = slashes >> (kBytes - 1);
        _mm512_mask_storeu_epi8(target, part, bytes);
        position += length;
        target += length;
        rest -= length;
    }
    return target;
}

// Writes between quotes. Behind each escape the rest of the block is stored once more in its place.
[[gnu::target("avx512bw,popcnt")]] char *writeQuoted(const char *position, std::size_t rest, char *target) {
    std::size_t valid = 0; // so much of the rest is known to be valid UTF-8
    *target++ = '"';
    while (rest != 0) {
        const std::size_t length = std::min(rest, kBytes);
        const Mask part = firstBits(length);
        const __m512i bytes = load(position, part);
        const Mask high = doubtful(bytes) & ~firstBits(valid);
        _mm512_mask_storeu_epi8(target, part, bytes);
        std::size_t from = 0;
        for (Mask stops = (escaped(bytes) & part) | high; stops != 0; stops &= stops - 1) {
            const auto stop = static_cast<std::size_t>(std::countr_zero(stops));
            if (high >> stop & 1) {
                if (stop < valid)
                    continue;
                valid = stop + validPrefix(position + stop, rest - stop);
                if (stop < valid)
                    continue;
            }
            target = plistEscape(position[stop]).put(target + (stop - from));
            from = stop + 1;
            const Mask behind = firstBits(length - from);
            _mm512_mask_storeu_epi8(target, behind, load(position + from, behind));
        }
        target += length - from;
        position += length;
        rest -= length;
        valid -= std::min(valid, length);
    }
    *target++ = '"';
    return target;
}

} // namespace

[[gnu::target("avx512bw,popcnt")]] char *writePlistText(const char *bytes, std::size_t length, char *target) {
    char *const end = writeBare(bytes, length, target);
    return end ? end : writeQuoted(bytes, length, target);
}

} // namespace qb::text::avx512
