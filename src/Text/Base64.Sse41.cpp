#include "Text/Base64.Vector.h"

#include <immintrin.h>

namespace qb::text::sse41 {

namespace {

[[gnu::target("sse4.1"), gnu::always_inline]] inline __m128i load(const char *position) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(position));
}

[[gnu::target("sse4.1"), gnu::always_inline]] inline void store(char *target, __m128i vector) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), vector);
}

// Spreads twelve bytes over sixteen places of six bits.
[[gnu::target("sse4.1"), gnu::always_inline]] inline __m128i valuesOf(__m128i bytes) {
    const __m128i spread =
        _mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m128i odd =
        _mm_mulhi_epu16(_mm_and_si128(spread, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
    const __m128i even =
        _mm_mullo_epi16(_mm_and_si128(spread, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
    return _mm_or_si128(odd, even);
}

// Adds to each value the distance of its character: one of five ranges, the letters told apart by a
// comparison.
[[gnu::target("sse4.1"), gnu::always_inline]] inline __m128i charactersOf(__m128i values) {
    const __m128i distances =
        _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
    const __m128i isCapital = _mm_cmpgt_epi8(_mm_set1_epi8(26), values);
    const __m128i range =
        _mm_or_si128(_mm_subs_epu8(values, _mm_set1_epi8(51)), _mm_and_si128(isCapital, _mm_set1_epi8(13)));
    return _mm_add_epi8(values, _mm_shuffle_epi8(distances, range));
}

} // namespace

[[gnu::target("sse4.1")]] char *encodeBase64(Base64Input &input, char *target) {
    for (; input.length >= 16; input.length -= 12, input.bytes += 12, target += 16)
        store(target, charactersOf(valuesOf(load(input.bytes))));
    return target;
}

[[gnu::target("sse4.1")]] Base64Result decodeBase64(Base64Result from, const char *end) {
    // Two bits a byte tell which rows of the alphabet its high and its low half are in; a byte outside shares
    // one.
    const __m128i highs = _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10,
                                        0x10, 0x10, 0x10, 0x10, 0x10);
    const __m128i lows = _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A,
                                       0x1B, 0x1B, 0x1B, 0x1A);
    const __m128i distances = _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i slash = _mm_set1_epi8('/');
    // A store of sixteen bytes, twelve of them meant, stays in the room of twenty-four characters.
    for (; end - from.next >= 24; from.next += 16, from.end += 12) {
        const __m128i text = load(from.next);
        const __m128i high = _mm_and_si128(_mm_srli_epi32(text, 4), slash);
        const __m128i low = _mm_and_si128(text, slash);
        if (!_mm_testz_si128(_mm_shuffle_epi8(lows, low), _mm_shuffle_epi8(highs, high)))
            break;
        const __m128i isSlash = _mm_cmpeq_epi8(text, slash);
        const __m128i values = _mm_add_epi8(text, _mm_shuffle_epi8(distances, _mm_add_epi8(isSlash, high)));
        const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
        const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
        store(from.end, _mm_shuffle_epi8(
                            groups, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
    }
    return from;
}

} // namespace qb::text::sse41
