// Escapes by vectors that hold all bytes that may be wanted, of which those that are not are squeezed out.
#include "Text/Url.Vector.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace qb::text::avx512 {

namespace {

constexpr std::uint64_t kAll = ~std::uint64_t{0};
constexpr std::uint64_t kFirsts = 0x1249249249249249; // every third bit

// For each place of a vector, a place of another one.
struct Places {
    alignas(64) std::uint8_t places[64] = {};

    constexpr Places(int perPlace, int distance) {
        for (int i = 0; i < 64; ++i)
            places[i] = static_cast<std::uint8_t>((i / perPlace + distance) % 64);
    }
};

constexpr Places kThrice(3, 0);
constexpr Places kNext(1, 1);
constexpr Places kNextButOne(1, 2);

inline std::uint64_t lowBits(std::size_t count) {
    return count < 64 ? (std::uint64_t{1} << count) - 1 : kAll;
}

// The form without a mask makes g++ 12 warn of its own header, here and below.
[[gnu::target("avx512vbmi2,avx512vbmi,avx512bw"), gnu::always_inline]] inline __m512i
permuted(__m512i bytes, const Places &places) {
    return _mm512_maskz_permutexvar_epi8(kAll, _mm512_load_si512(places.places), bytes);
}

// Stores those bytes that `kept` has, and nothing behind them. Returns their end.
[[gnu::target("avx512vbmi2,avx512vbmi,avx512bw,popcnt"), gnu::always_inline]] inline char *
store(char *target, __m512i bytes, std::uint64_t kept) {
    const auto count = static_cast<std::size_t>(std::popcount(kept));
    _mm512_mask_storeu_epi8(target, lowBits(count), _mm512_maskz_compress_epi8(kept, bytes));
    return target + count;
}

[[gnu::target("avx512vbmi2,avx512vbmi,avx512bw"), gnu::always_inline]] inline __mmask64
areBetween(__m512i bytes, char first, char last) {
    return _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(first)),
                                  _mm512_set1_epi8(static_cast<char>(last - first)));
}

// The number that each byte is as a digit.
[[gnu::target("avx512vbmi2,avx512vbmi,avx512bw"), gnu::always_inline]] inline __m512i digits(__m512i text) {
    __m512i values = _mm512_sub_epi8(text, _mm512_set1_epi8(87));
    values = _mm512_mask_sub_epi8(values, areBetween(text, '0', '9'), text, _mm512_set1_epi8('0'));
    return _mm512_mask_sub_epi8(values, areBetween(text, 'A', 'F'), text, _mm512_set1_epi8('A' - 10));
}

} // namespace

[[gnu::target("avx512vbmi2,avx512vbmi,avx512bw,popcnt")]] char *
escapeUrl(const char *position, std::size_t length, std::uint64_t escaped, char *target) {
    const __m512i low = _mm512_set1_epi8(15);
    const __m512i zero = _mm512_set1_epi8('0');
    for (std::size_t left = length; left != 0;) {
        const std::size_t taken = std::min<std::size_t>(left, 21);
        const __m512i text = permuted(_mm512_maskz_loadu_epi8(lowBits(taken), position), kThrice);
        const std::uint64_t isEscaped = _mm512_movepi8_mask(permuted(_mm512_movm_epi8(escaped), kThrice));
        const __m512i high = _mm512_and_si512(_mm512_srli_epi16(text, 4), low);
        __m512i bytes = _mm512_mask_blend_epi8(kFirsts << 2, high, _mm512_and_si512(text, low));
        bytes = _mm512_mask_mov_epi8(_mm512_add_epi8(bytes, zero), kFirsts, text);
        bytes = _mm512_mask_mov_epi8(bytes, isEscaped & kFirsts, _mm512_set1_epi8('%'));
        target = store(target, bytes, (isEscaped | kFirsts) & lowBits(taken * 3));
        position += taken;
        left -= taken;
        escaped >>= 21;
    }
    return target;
}

[[gnu::target("avx512vbmi2,avx512vbmi,avx512bw,popcnt")]] UrlResult
unescapeUrl(const char *position, const char *end, char *target) {
    std::uint64_t done = 0; // of the block: those that belong to marks in the last one
    while (position != end) {
        // A block ends two bytes early, so that it has what stands behind its marks.
        const auto left = static_cast<std::size_t>(end - position);
        const std::size_t taken = left <= 64 ? left : 62;
        const __m512i text = _mm512_maskz_loadu_epi8(lowBits(left), position);
        const std::uint64_t marks = _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('%')) & lowBits(taken);
        const std::uint64_t behind = marks << 1 | marks << 2 | done;
        const bool isCut = left <= 64 && marks >> (left - std::min<std::size_t>(left, 2)) != 0;
        if (isCut || (marks & behind) != 0)
            break;
        const __m512i values = digits(text);
        const __m512i upper =
            _mm512_and_si512(_mm512_slli_epi16(permuted(values, kNext), 4), _mm512_set1_epi8(-16));
        const __m512i decoded = _mm512_add_epi8(upper, permuted(values, kNextButOne));
        const std::uint64_t blanks = _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('+'));
        __m512i bytes = _mm512_mask_mov_epi8(text, blanks, _mm512_set1_epi8(' '));
        bytes = _mm512_mask_mov_epi8(bytes, marks, decoded);
        target = store(target, bytes, ~behind & lowBits(taken));
        done = left <= 64 ? 0 : behind >> 62;
        position += taken;
    }
    return {position + std::popcount(done), target};
}

} // namespace qb::text::avx512
