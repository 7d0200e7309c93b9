// The same steps as in Base64.Sse41.cpp on vectors of twice the size.
#include "Text/Avx2.h"
#include "Text/Base64.Vector.h"

namespace qb::text::avx2 {

namespace {

constexpr signed char kSpread[16] = {1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10};
constexpr signed char kDistances[16] = {'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                        '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62,
                                        '/' - 63, 'A',      0,        0};
constexpr signed char kHighs[16] = {0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,
                                    0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10};
constexpr signed char kLows[16] = {0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                   0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A};
constexpr signed char kBack[16] = {0, 16, 19, 4, -65, -65, -71, -71};
constexpr signed char kPack[16] = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1};

// Returns twelve bytes in each half.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i loadGroups(const char *position) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(position))),
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(position + 12)), 1);
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i encoded(__m256i bytes, __m256i spreading,
                                                                          __m256i distances) {
    const __m256i spread = _mm256_shuffle_epi8(bytes, spreading);
    const __m256i odd = _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(0x0FC0FC00)),
                                           _mm256_set1_epi32(0x04000040));
    const __m256i even = _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(0x003F03F0)),
                                            _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(odd, even);
    const __m256i isCapital = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    const __m256i range = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                          _mm256_and_si256(isCapital, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(distances, range));
}

} // namespace

[[gnu::target("avx2,popcnt")]] char *encodeBase64(Base64Input &input, char *target) {
    const __m256i spreading = loadTable(kSpread);
    const __m256i distances = loadTable(kDistances);
    const char *position = input.bytes;
    std::size_t length = input.length;
    for (; length >= 28; length -= 24, position += 24, target += 32)
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(target),
                            encoded(loadGroups(position), spreading, distances));
    input = {position, length};
    return target;
}

[[gnu::target("avx2,popcnt")]] Base64Result decodeBase64(Base64Result from, const char *end) {
    const __m256i highs = loadTable(kHighs);
    const __m256i lows = loadTable(kLows);
    const __m256i distances = loadTable(kBack);
    const __m256i pack = loadTable(kPack);
    const __m256i slash = _mm256_set1_epi8('/');
    const __m256i together = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
    // A store of thirty-two bytes, twenty-four of them meant, stays in the room of forty-four characters.
    for (; end - from.next >= 44; from.next += 32, from.end += 24) {
        const __m256i text = load(from.next);
        const __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), slash);
        const __m256i low = _mm256_and_si256(text, slash);
        if (!_mm256_testz_si256(_mm256_shuffle_epi8(lows, low), _mm256_shuffle_epi8(highs, high)))
            break;
        const __m256i isSlash = _mm256_cmpeq_epi8(text, slash);
        const __m256i values =
            _mm256_add_epi8(text, _mm256_shuffle_epi8(distances, _mm256_add_epi8(isSlash, high)));
        const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
        const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(from.end),
                            _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, pack), together));
    }
    return from;
}

} // namespace qb::text::avx2
