// The same steps as in Utf8.Avx2.cpp on vectors of twice the size, and with masked loads for the ends.
#include "Text/Utf8.Vector.h"

#include <algorithm>
#include <cstdint>
#include <immintrin.h>

namespace qb::text::avx512 {

namespace {

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i load(const char *position) {
    return _mm512_loadu_si512(position);
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i loadTable(const unsigned char *table) {
    // The form without a mask makes g++ 12 warn of its own header.
    return _mm512_maskz_broadcast_i32x4(0xFFFF, _mm_loadu_si128(reinterpret_cast<const __m128i *>(table)));
}

inline std::uint64_t lowBits(std::size_t count) {
    return count < 64 ? (std::uint64_t{1} << count) - 1 : ~std::uint64_t{0};
}

// The tables and constants of the check. They are passed on, because compilers fetch them anew for each block
// when they only stand where they are used.
struct Constants {
    __m512i firstHigh;
    __m512i firstLow;
    __m512i secondHigh;
    __m512i halves;
    __m512i top;
    __m512i three; // taken from lead bytes of three and above, leaves their top bit set
    __m512i four;
};

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline Constants makeConstants() {
    return {loadTable(utf8::kFirstHigh),  loadTable(utf8::kFirstLow), loadTable(utf8::kSecondHigh),
            _mm512_set1_epi8(0x0F),       _mm512_set1_epi8(-128),     _mm512_set1_epi8(0xE0 - 0x80),
            _mm512_set1_epi8(0xF0 - 0x80)};
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i highHalves(__m512i vector,
                                                                                 const Constants &constants) {
    return _mm512_and_si512(_mm512_srli_epi16(vector, 4), constants.halves);
}

// Returns a vector that is not zero when a sequence in `vector` is malformed, given the same text from one,
// two and three bytes before on. A sequence that is cut at the end of `vector` is no fault yet.
[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i
faults(__m512i vector, __m512i oneBefore, __m512i twoBefore, __m512i threeBefore,
       const Constants &constants) {
    const __m512i lowHalves = _mm512_and_si512(oneBefore, constants.halves);
    const __m512i byHigh = _mm512_shuffle_epi8(constants.firstHigh, highHalves(oneBefore, constants));
    const __m512i byLow = _mm512_shuffle_epi8(constants.firstLow, lowHalves);
    const __m512i bySecond = _mm512_shuffle_epi8(constants.secondHigh, highHalves(vector, constants));
    const __m512i pairs = _mm512_and_si512(_mm512_and_si512(byHigh, byLow), bySecond);
    const __m512i third = _mm512_subs_epu8(twoBefore, constants.three);
    const __m512i fourth = _mm512_subs_epu8(threeBefore, constants.four);
    const __m512i expected = _mm512_and_si512(_mm512_or_si512(third, fourth), constants.top);
    return _mm512_xor_si512(pairs, expected);
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i faultsAt(const char *position,
                                                                               const Constants &constants) {
    return faults(load(position), load(position - 1), load(position - 2), load(position - 3), constants);
}

// As `faultsAt` for the last `length` bytes of the text (all 64 when there are more), `isFirst` telling that
// there is nothing before them. Only bytes of the text are read; a zero byte stands for each other one, and
// with less than 64 of the text the first of those makes a cut sequence a fault.
[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline __m512i
faultsAtEdge(const char *position, std::size_t length, bool isFirst, const Constants &constants) {
    const std::uint64_t known = isFirst ? 0 : 7; // of the three bytes before
    const std::uint64_t one = lowBits(length + 1) & (~std::uint64_t{1} | known);
    const std::uint64_t two = lowBits(length + 1) & (~std::uint64_t{3} | known);
    const std::uint64_t three = lowBits(length + 1) & (~std::uint64_t{7} | known);
    return faults(_mm512_maskz_loadu_epi8(lowBits(length), position),
                  _mm512_maskz_loadu_epi8(one, position - 1), _mm512_maskz_loadu_epi8(two, position - 2),
                  _mm512_maskz_loadu_epi8(three, position - 3), constants);
}

// Returns whether a sequence is cut before `position`, which has three bytes before it.
bool isCutBefore(const char *position) {
    return static_cast<unsigned char>(position[-1]) >= 0xC0 ||
           static_cast<unsigned char>(position[-2]) >= 0xE0 ||
           static_cast<unsigned char>(position[-3]) >= 0xF0;
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline void count(__m512i vector, CheckedText &text) {
    const std::uint64_t continuations = _mm512_cmplt_epi8_mask(vector, _mm512_set1_epi8(-64));
    const std::uint64_t fours = _mm512_cmpge_epu8_mask(vector, _mm512_set1_epi8(static_cast<char>(0xF0)));
    text.continuations += static_cast<unsigned>(__builtin_popcountll(continuations));
    text.supplementary += static_cast<unsigned>(__builtin_popcountll(fours));
}

[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline bool isZero(__m512i vector) {
    return _mm512_test_epi64_mask(vector, vector) == 0;
}

// Checks what follows the run `text`, less than 128 bytes, and takes it into the run when it is valid.
template <bool isCounting>
[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline bool
takeRest(const char *bytes, std::size_t length, const Constants &constants, CheckedText &text) {
    CheckedText longer = text;
    __m512i found = _mm512_setzero_si512();
    for (bool isLast = false; !isLast;) {
        const std::size_t size = std::min<std::size_t>(length - longer.bytes, 64);
        const char *position = bytes + longer.bytes;
        isLast = size < 64;
        found = _mm512_or_si512(found, faultsAtEdge(position, size, longer.bytes == 0, constants));
        if constexpr (isCounting)
            count(_mm512_maskz_loadu_epi8(lowBits(size), position), longer);
        longer.bytes += size;
    }
    if (!isZero(found))
        return false;
    text = longer;
    return true;
}

template <bool isCounting>
[[gnu::target("avx512bw,popcnt"), gnu::always_inline]] inline CheckedText check(const char *bytes,
                                                                                std::size_t length) {
    const Constants constants = makeConstants();
    CheckedText text;
    if (length == 0)
        return text;
    for (; length - text.bytes >= 128; text.bytes += 128) {
        const char *block = bytes + text.bytes;
        const __m512i low = load(block);
        const __m512i high = load(block + 64);
        if (_mm512_movepi8_mask(_mm512_or_si512(low, high)) == 0) {
            if (text.bytes && isCutBefore(block))
                break;
            continue;
        }
        const __m512i lowFaults =
            text.bytes ? faultsAt(block, constants) : faultsAtEdge(block, 64, /*isFirst=*/true, constants);
        if (!isZero(_mm512_or_si512(lowFaults, faultsAt(block + 64, constants))))
            break;
        if constexpr (isCounting) {
            count(low, text);
            count(high, text);
        }
    }
    if (length - text.bytes >= 128 || !takeRest<isCounting>(bytes, length, constants, text))
        text.dropCutSequence(bytes);
    return text;
}

} // namespace

[[gnu::target("avx512bw,popcnt")]] CheckedText checkText(const char *bytes, std::size_t length) {
    return check<true>(bytes, length);
}

[[gnu::target("avx512bw,popcnt")]] std::size_t checkTextOnly(const char *bytes, std::size_t length) {
    return check<false>(bytes, length).bytes;
}

} // namespace qb::text::avx512
