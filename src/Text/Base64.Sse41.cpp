#include "Text/Base64.Vector.h"

#include <cstring>
#include <immintrin.h>

namespace qb::text::sse41 {

namespace {

[[gnu::target("sse4.1"), gnu::always_inline]] inline __m128i load(const char *position) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(position));
}

[[gnu::target("sse4.1"), gnu::always_inline]] inline void store(char *target, __m128i vector) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), vector);
}

[[gnu::target("sse4.1"), gnu::always_inline]] inline __m128i table(const void *entries) {
    return _mm_load_si128(static_cast<const __m128i *>(entries));
}

// Spreads twelve bytes over sixteen places of six bits, then adds to each the distance of its character.
[[gnu::target("sse4.1"), gnu::always_inline]] inline __m128i encoded(__m128i bytes, __m128i spreading) {
    const __m128i spread = _mm_shuffle_epi8(bytes, spreading);
    const __m128i odd =
        _mm_mulhi_epu16(_mm_and_si128(spread, table(kBase64Tables.oddBits)), table(kBase64Tables.oddShifts));
    const __m128i even = _mm_mullo_epi16(_mm_and_si128(spread, table(kBase64Tables.evenBits)),
                                         table(kBase64Tables.evenShifts));
    const __m128i values = _mm_or_si128(odd, even);
    const __m128i isCapital = _mm_cmpgt_epi8(table(kBase64Tables.capitals), values);
    const __m128i range = _mm_or_si128(_mm_subs_epu8(values, table(kBase64Tables.letters)),
                                       _mm_and_si128(isCapital, table(kBase64Tables.isCapital)));
    return _mm_add_epi8(values, _mm_shuffle_epi8(table(kBase64Tables.distances), range));
}

// Decodes sixteen characters to twelve bytes, in front of zeros. False when one of them is outside of the
// alphabet.
[[gnu::target("sse4.1"), gnu::always_inline]] inline bool decoded(__m128i text, __m128i &bytes) {
    const __m128i slash = table(kBase64Tables.slash);
    const __m128i high = _mm_and_si128(_mm_srli_epi32(text, 4), slash);
    const __m128i low = _mm_and_si128(text, slash);
    if (!_mm_testz_si128(_mm_shuffle_epi8(table(kBase64Tables.lows), low),
                         _mm_shuffle_epi8(table(kBase64Tables.highs), high)))
        return false;
    const __m128i row = _mm_add_epi8(_mm_cmpeq_epi8(text, slash), high);
    const __m128i values = _mm_add_epi8(text, _mm_shuffle_epi8(table(kBase64Tables.back), row));
    const __m128i pairs = _mm_maddubs_epi16(values, table(kBase64Tables.pairs));
    const __m128i groups = _mm_madd_epi16(pairs, table(kBase64Tables.groups));
    bytes = _mm_shuffle_epi8(groups, table(kBase64Tables.pack));
    return true;
}

// Decodes to the twelve bytes' room and writes nothing behind it.
[[gnu::target("sse4.1"), gnu::always_inline]] inline bool decodeExactly(const char *position, char *target) {
    __m128i bytes;
    if (!decoded(load(position), bytes))
        return false;
    _mm_storel_epi64(reinterpret_cast<__m128i *>(target), bytes);
    const std::int32_t last = _mm_extract_epi32(bytes, 2);
    std::memcpy(target + 8, &last, sizeof last);
    return true;
}

} // namespace

[[gnu::target("sse4.1")]] char *encodeBase64(const char *bytes, std::size_t count, char *target) {
    const char *const end = bytes + count * 3;
    char *const targetEnd = target + count * 4;
    store(target, encoded(load(bytes), table(kBase64Tables.spread)));
    for (bytes += 12, target += 16; end - bytes >= 12; bytes += 12, target += 16)
        store(target, encoded(load(bytes - 4), table(kBase64Tables.spreadLast)));
    if (bytes != end) // the last twelve, most of them once more
        store(targetEnd - 16, encoded(load(end - 16), table(kBase64Tables.spreadLast)));
    return targetEnd;
}

[[gnu::target("sse4.1")]] Base64Result decodeBase64(const char *position, const char *end, char *target) {
    __m128i bytes;
    // A store of sixteen bytes, twelve of them meant, stays in the room of twenty-four characters.
    for (; end - position >= 24; position += 16, target += 12) {
        if (!decoded(load(position), bytes))
            return {position, target};
        store(target, bytes);
    }
    // What is left has no room for such a store: at most twenty characters, the last sixteen perhaps once
    // more.
    const char *const last = end - 16;
    if (position < last) {
        if (!decodeExactly(position, target))
            return {position, target};
        position += 16;
        target += 12;
    }
    char *const targetEnd = target + (end - position) / 4 * 3;
    if (position != end && decodeExactly(last, targetEnd - 12))
        return {end, targetEnd};
    return {position, target};
}

} // namespace qb::text::sse41
