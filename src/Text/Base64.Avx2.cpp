// The same steps as in Base64.Sse41.cpp on vectors of twice the size.
#include "Text/Avx2.h"
#include "Text/Base64.Vector.h"

#include <cstring>

namespace qb::text::avx2 {

namespace {

// Encodes twenty-four bytes of the twenty-eight at `position`.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i encoded(const char *position,
                                                                          const void *spreading) {
    const __m256i bytes = _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(position))),
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(position + 12)), 1);
    const __m256i spread = _mm256_shuffle_epi8(bytes, loadTable(spreading));
    const __m256i odd = _mm256_mulhi_epu16(_mm256_and_si256(spread, loadTable(kBase64Tables.oddBits)),
                                           loadTable(kBase64Tables.oddShifts));
    const __m256i even = _mm256_mullo_epi16(_mm256_and_si256(spread, loadTable(kBase64Tables.evenBits)),
                                            loadTable(kBase64Tables.evenShifts));
    const __m256i values = _mm256_or_si256(odd, even);
    const __m256i isCapital = _mm256_cmpgt_epi8(loadTable(kBase64Tables.capitals), values);
    const __m256i range = _mm256_or_si256(_mm256_subs_epu8(values, loadTable(kBase64Tables.letters)),
                                          _mm256_and_si256(isCapital, loadTable(kBase64Tables.isCapital)));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(loadTable(kBase64Tables.distances), range));
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline void store(char *target, __m256i bytes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), bytes);
}

// Decodes thirty-two characters to twelve bytes in each half, in front of zeros. False when one of them is
// outside of the alphabet.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline bool decoded(__m256i text, __m256i &bytes) {
    const __m256i slash = loadTable(kBase64Tables.slash);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), slash);
    const __m256i low = _mm256_and_si256(text, slash);
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(loadTable(kBase64Tables.lows), low),
                            _mm256_shuffle_epi8(loadTable(kBase64Tables.highs), high)))
        return false;
    const __m256i row = _mm256_add_epi8(_mm256_cmpeq_epi8(text, slash), high);
    const __m256i values = _mm256_add_epi8(text, _mm256_shuffle_epi8(loadTable(kBase64Tables.back), row));
    const __m256i pairs = _mm256_maddubs_epi16(values, loadTable(kBase64Tables.pairs));
    const __m256i groups = _mm256_madd_epi16(pairs, loadTable(kBase64Tables.groups));
    bytes = _mm256_shuffle_epi8(groups, loadTable(kBase64Tables.pack));
    return true;
}

// Stores twelve bytes and nothing behind them.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline void store12(char *target, __m128i bytes) {
    _mm_storel_epi64(reinterpret_cast<__m128i *>(target), bytes);
    const std::int32_t last = _mm_extract_epi32(bytes, 2);
    std::memcpy(target + 8, &last, sizeof last);
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline bool decodeExactly(const char *position,
                                                                             char *target) {
    __m256i bytes;
    if (!decoded(load(position), bytes))
        return false;
    store12(target, _mm256_castsi256_si128(bytes));
    store12(target + 12, _mm256_extracti128_si256(bytes, 1));
    return true;
}

} // namespace

[[gnu::target("avx2,popcnt")]] char *encodeBase64(const char *bytes, std::size_t count, char *target) {
    const char *const end = bytes + count * 3;
    char *const targetEnd = target + count * 4;
    store(target, encoded(bytes, kBase64Tables.spread));
    for (bytes += 24, target += 32; end - bytes >= 24; bytes += 24, target += 32)
        store(target, encoded(bytes - 4, kBase64Tables.spreadLast));
    if (bytes != end) // the last twenty-four, most of them once more
        store(targetEnd - 32, encoded(end - 28, kBase64Tables.spreadLast));
    return targetEnd;
}

[[gnu::target("avx2,popcnt")]] Base64Result decodeBase64(const char *position, const char *end,
                                                         char *target) {
    const __m256i together = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
    __m256i bytes;
    // A store of thirty-two bytes, twenty-four of them meant, stays in the room of forty-four characters.
    for (; end - position >= 44; position += 32, target += 24) {
        if (!decoded(load(position), bytes))
            return {position, target};
        store(target, _mm256_permutevar8x32_epi32(bytes, together));
    }
    // What is left has no room for such a store: at most forty characters, the last thirty-two perhaps once
    // more.
    const char *const last = end - 32;
    if (position < last) {
        if (!decodeExactly(position, target))
            return {position, target};
        position += 32;
        target += 24;
    }
    char *const targetEnd = target + (end - position) / 4 * 3;
    if (position != end && decodeExactly(last, targetEnd - 24))
        return {end, targetEnd};
    return {position, target};
}

} // namespace qb::text::avx2
