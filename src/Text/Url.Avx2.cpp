// Escapes by 16-byte shuffles, whose places stand in tables: one entry for each pattern of escaped or of kept
// bytes.
#include "Text/Avx2.h"
#include "Text/Url.Vector.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace qb::text::avx2 {

namespace {

// So many bytes, each as itself, as its two halves and all as one "%", fill a vector.
constexpr std::size_t kGroup = 5;

// For each set of escaped bytes of a group the places of what is written.
constexpr auto kEscapes = [] {
    std::array<std::array<std::uint8_t, 16>, 1U << kGroup> escapes{};
    for (unsigned escaped = 0; escaped < escapes.size(); ++escaped) {
        std::size_t count = 0;
        for (unsigned i = 0; i < kGroup; ++i) {
            if (escaped >> i & 1) {
                escapes[escaped][count++] = 3 * kGroup;
                escapes[escaped][count++] = static_cast<std::uint8_t>(kGroup + i);
                escapes[escaped][count++] = static_cast<std::uint8_t>(2 * kGroup + i);
            } else {
                escapes[escaped][count++] = static_cast<std::uint8_t>(i);
            }
        }
    }
    return escapes;
}();

// For each set of kept bytes among eight their places, `first` and those behind it.
constexpr auto placesFrom(unsigned first) {
    std::array<std::array<std::uint8_t, 8>, 256> places{};
    for (unsigned kept = 0; kept < places.size(); ++kept)
        for (unsigned i = 0, count = 0; i < 8; ++i)
            if (kept >> i & 1)
                places[kept][count++] = static_cast<std::uint8_t>(first + i);
    return places;
}

constexpr auto kLower = placesFrom(0);
constexpr auto kUpper = placesFrom(8);

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m128i loadHalf(const void *position) {
    return _mm_loadl_epi64(static_cast<const __m128i *>(position));
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m128i load16(const void *position) {
    return _mm_loadu_si128(static_cast<const __m128i *>(position));
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline void store16(char *target, __m128i bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), bytes);
}

// The byte in each place, kept in a register: the compiler would make it anew in each round of a loop.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i everywhere(char byte) {
    __m256i bytes = _mm256_set1_epi8(byte);
    asm("" : "+x"(bytes));
    return bytes;
}

// What unescaping looks for and puts in its place.
struct Signs {
    __m256i mark;
    __m256i plus;
    __m256i blank;
};

// The number that each byte is as a digit: what is added depends on whether both its halves, the upper one
// and the lower one, are those of a decimal digit (1), or those of a capital one (2).
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m128i digits(__m128i text, __m128i half) {
    const __m128i ofUpper = _mm_setr_epi8(0, 0, 0, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i ofLower = _mm_setr_epi8(1, 3, 3, 3, 3, 3, 3, 1, 1, 1, 0, 0, 0, 0, 0, 0);
    const __m128i added = _mm_setr_epi8(-87, -'0', 10 - 'A', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i upper = _mm_and_si128(_mm_srli_epi16(text, 4), half);
    const __m128i kind = _mm_and_si128(_mm_shuffle_epi8(ofUpper, upper), _mm_shuffle_epi8(ofLower, text));
    return _mm_add_epi8(text, _mm_shuffle_epi8(added, kind));
}

// Stores those bytes that `kept` has, and up to 16 in all. Returns the end of the former.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline char *store(char *target, __m128i bytes,
                                                                      std::uint32_t kept) {
    const __m128i places = _mm_unpacklo_epi64(loadHalf(&kLower[kept & 255]), loadHalf(&kUpper[kept >> 8]));
    const __m128i packed = _mm_shuffle_epi8(bytes, places);
    char *const middle = target + std::popcount(kept & 255);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(target), packed);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(middle), _mm_unpackhi_epi64(packed, packed));
    return middle + std::popcount(kept >> 8);
}

// Whether one of the next 32 bytes is a mark: too near to be looked for, for where it lies is hard to guess.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline bool hasMark(const char *position,
                                                                       const Signs &signs) {
    return topBits(_mm256_cmpeq_epi8(load(position), signs.mark)) != 0;
}

// Copies what stands in front of the next mark, with blanks for "+", as far as the text goes on for 32 bytes.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline UrlResult
copyToMark(const char *position, const char *end, char *target, const Signs &signs) {
    for (; end - position >= 32; position += 32, target += 32) {
        const __m256i text = load(position);
        const __m256i isPlus = _mm256_cmpeq_epi8(text, signs.plus);
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(target),
                            _mm256_blendv_epi8(text, signs.blank, isPlus));
        const std::uint32_t marks = topBits(_mm256_cmpeq_epi8(text, signs.mark));
        if (marks) {
            const auto length = static_cast<std::uint32_t>(std::countr_zero(marks));
            return {position + length, target + length};
        }
    }
    return {position, target};
}

} // namespace

[[gnu::target("avx2,popcnt")]] char *escapeUrl(const char *position, std::size_t length,
                                               std::uint64_t escaped, char *target) {
    const __m128i thrice = _mm_setr_epi8(0, 1, 2, 3, 4, 0, 1, 2, 3, 4, 0, 1, 2, 3, 4, -1);
    const __m128i isHigh = _mm_setr_epi8(0, 0, 0, 0, 0, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0);
    const __m128i isText = _mm_setr_epi8(-1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i low = _mm_set1_epi8(15);
    const __m128i base =
        _mm_setr_epi8('0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '%');
    for (std::size_t done = 0; done < length; done += kGroup) {
        const __m128i text = _mm_shuffle_epi8(loadHalf(position + done), thrice);
        const __m128i shifted = _mm_blendv_epi8(text, _mm_srli_epi16(text, 4), isHigh);
        const __m128i halves = _mm_add_epi8(_mm_and_si128(shifted, low), base);
        const __m128i bytes = _mm_blendv_epi8(halves, text, isText);
        const auto group = static_cast<unsigned>(escaped) & ((1U << kGroup) - 1);
        store16(target, _mm_shuffle_epi8(bytes, load16(&kEscapes[group])));
        target += std::min(kGroup, length - done) + 2U * static_cast<unsigned>(std::popcount(group));
        escaped >>= kGroup;
    }
    return target;
}

[[gnu::target("avx2,popcnt")]] UrlResult unescapeUrl(const char *position, const char *end, char *target) {
    // A block ends two bytes early, so that it has what stands behind its marks.
    constexpr int kTaken = 14;
    constexpr std::uint32_t kMask = (1U << kTaken) - 1;
    const Signs signs{everywhere('%'), everywhere('+'), everywhere(' ')};
    const __m128i half = _mm256_castsi256_si128(everywhere(15));
    for (;;) {
        const UrlResult run = copyToMark(position, end, target, signs);
        position = run.next;
        target = run.end;
        std::uint32_t done = 0; // of the block: those that belong to marks in the last one
        do {
            if (end - position < 16)
                return {position + std::popcount(done), target};
            const __m128i text = load16(position);
            const __m128i isMark = _mm_cmpeq_epi8(text, _mm256_castsi256_si128(signs.mark));
            const std::uint32_t marks = static_cast<std::uint32_t>(_mm_movemask_epi8(isMark)) & kMask;
            const std::uint32_t behind = marks << 1 | marks << 2 | done;
            if (marks & behind)
                return {position + std::popcount(done), target};
            const __m128i values = digits(text, half);
            const __m128i upper = _mm_andnot_si128(half, _mm_slli_epi16(values, 4));
            const __m128i decoded = _mm_add_epi8(_mm_srli_si128(upper, 1), _mm_srli_si128(values, 2));
            const __m128i isPlus = _mm_cmpeq_epi8(text, _mm256_castsi256_si128(signs.plus));
            const __m128i plain = _mm_blendv_epi8(text, _mm256_castsi256_si128(signs.blank), isPlus);
            target = store(target, _mm_blendv_epi8(plain, decoded, isMark), ~behind & kMask);
            position += kTaken;
            done = behind >> kTaken;
        } while (end - position >= 32 && hasMark(position, signs));
        if (done != 0) [[unlikely]] // by a jump, so that what comes next need not wait for the block
            position += std::popcount(done);
    }
}

} // namespace qb::text::avx2
