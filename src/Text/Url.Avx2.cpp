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

// The number that each byte is as a digit: what is added depends on whether both its halves, the upper one
// and the lower one, are those of a decimal digit (1), or those of a capital one (2).
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i digits(__m256i text) {
    alignas(16) static constexpr char kOfUpper[16] = {0, 0, 0, 1, 2};
    alignas(16) static constexpr char kOfLower[16] = {1, 3, 3, 3, 3, 3, 3, 1, 1, 1};
    alignas(16) static constexpr char kAdded[16] = {-87, -'0', 10 - 'A'};
    const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(text, 4), _mm256_set1_epi8(15));
    const __m256i kind = _mm256_and_si256(_mm256_shuffle_epi8(loadTable(kOfUpper), upper),
                                          _mm256_shuffle_epi8(loadTable(kOfLower), text));
    return _mm256_add_epi8(text, _mm256_shuffle_epi8(loadTable(kAdded), kind));
}

// For each byte the one that the two behind it stand for.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i decodedBehind(const char *position) {
    const __m256i high = _mm256_slli_epi16(digits(load(position + 1)), 4);
    return _mm256_add_epi8(_mm256_andnot_si256(_mm256_set1_epi8(15), high), digits(load(position + 2)));
}

// Stores those of 16 bytes that `kept` has, and up to 16 in all. Returns the end of the former.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline char *store(char *target, __m128i bytes,
                                                                      std::uint32_t kept) {
    const __m128i places = _mm_unpacklo_epi64(loadHalf(&kLower[kept & 255]), loadHalf(&kUpper[kept >> 8]));
    const __m128i packed = _mm_shuffle_epi8(bytes, places);
    char *const middle = target + std::popcount(kept & 255);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(target), packed);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(middle), _mm_unpackhi_epi64(packed, packed));
    return middle + std::popcount(kept >> 8);
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
    const __m256i mark = _mm256_set1_epi8('%');
    const __m256i plus = _mm256_set1_epi8('+');
    std::uint32_t done = 0; // of a block: those that belong to marks of the last one
    for (; end - position >= 32 + 2; position += 32) { // what its last marks stand for is there as well
        const __m256i text = load(position);
        const __m256i isMark = _mm256_cmpeq_epi8(text, mark);
        const std::uint32_t marks = topBits(isMark);
        const __m256i plain = _mm256_blendv_epi8(text, _mm256_set1_epi8(' '), _mm256_cmpeq_epi8(text, plus));
        if ((marks | done) == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), plain);
            target += 32;
            continue;
        }
        const std::uint64_t behind = std::uint64_t{marks} << 1 | std::uint64_t{marks} << 2 | done;
        if (marks & behind)
            break;
        const __m256i bytes = _mm256_blendv_epi8(plain, decodedBehind(position), isMark);
        const auto kept = ~static_cast<std::uint32_t>(behind);
        target = store(target, _mm256_castsi256_si128(bytes), kept & 0xFFFF);
        target = store(target, _mm256_extracti128_si256(bytes, 1), kept >> 16);
        done = static_cast<std::uint32_t>(behind >> 32);
    }
    return {position + std::popcount(done), target};
}

} // namespace qb::text::avx2
