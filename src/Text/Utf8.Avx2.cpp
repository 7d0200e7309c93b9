#include "Text/Utf8.Vector.h"

#include "Text/Avx2.h"

namespace qb::text::avx2 {

namespace {

// Returns `vector` moved up by `count` bytes, the last bytes of `previous` moving in.
template <int count>
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i shifted(__m256i vector, __m256i previous) {
    return _mm256_alignr_epi8(vector, _mm256_permute2x128_si256(previous, vector, 0x21), 16 - count);
}

// The tables and constants of the check. They are passed on, because compilers fetch them anew for each block
// when they only stand where they are used.
struct Constants {
    __m256i firstHigh;
    __m256i firstLow;
    __m256i secondHigh;
    __m256i halves;
    __m256i top;
    __m256i three; // taken from lead bytes of three and above, leaves their top bit set
    __m256i four;
};

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline Constants makeConstants() {
    return {loadTable(utf8::kFirstHigh),  loadTable(utf8::kFirstLow), loadTable(utf8::kSecondHigh),
            _mm256_set1_epi8(0x0F),       _mm256_set1_epi8(-128),     _mm256_set1_epi8(0xE0 - 0x80),
            _mm256_set1_epi8(0xF0 - 0x80)};
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i highHalves(__m256i vector,
                                                                             const Constants &constants) {
    return _mm256_and_si256(_mm256_srli_epi16(vector, 4), constants.halves);
}

// Returns a vector that is not zero when a sequence in `vector` is malformed, given the same text from one,
// two and three bytes before on. A sequence that is cut at the end of `vector` is no fault yet.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i faults(__m256i vector, __m256i oneBefore,
                                                                         __m256i twoBefore,
                                                                         __m256i threeBefore,
                                                                         const Constants &constants) {
    const __m256i lowHalves = _mm256_and_si256(oneBefore, constants.halves);
    const __m256i byHigh = _mm256_shuffle_epi8(constants.firstHigh, highHalves(oneBefore, constants));
    const __m256i byLow = _mm256_shuffle_epi8(constants.firstLow, lowHalves);
    const __m256i bySecond = _mm256_shuffle_epi8(constants.secondHigh, highHalves(vector, constants));
    const __m256i pairs = _mm256_and_si256(_mm256_and_si256(byHigh, byLow), bySecond);
    // The third and the fourth byte of a sequence must be the second of two continuations, and no other may
    // be.
    const __m256i third = _mm256_subs_epu8(twoBefore, constants.three);
    const __m256i fourth = _mm256_subs_epu8(threeBefore, constants.four);
    const __m256i expected = _mm256_and_si256(_mm256_or_si256(third, fourth), constants.top);
    return _mm256_xor_si256(pairs, expected);
}

// As above, for text that stands behind `previous`.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i
faultsAfter(__m256i previous, __m256i vector, const Constants &constants) {
    return faults(vector, shifted<1>(vector, previous), shifted<2>(vector, previous),
                  shifted<3>(vector, previous), constants);
}

// As above, for text in memory with three bytes before it; loads cost less than shifts.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i faultsAt(const char *position,
                                                                           const Constants &constants) {
    return faults(load(position), load(position - 1), load(position - 2), load(position - 3), constants);
}

// Returns whether a sequence is cut at the end of `vector`.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline bool isCut(__m256i vector) {
    const __m256i limits = _mm256_setr_epi8(
        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
        -1, -1, -1, -1, static_cast<char>(0xEF), static_cast<char>(0xDF), static_cast<char>(0xBF));
    const __m256i leads = _mm256_subs_epu8(vector, limits);
    return !_mm256_testz_si256(leads, leads);
}

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline void count(__m256i vector, CheckedText &text) {
    const __m256i continuations = _mm256_cmpgt_epi8(_mm256_set1_epi8(-64), vector);
    const __m256i fours = _mm256_subs_epu8(vector, _mm256_set1_epi8(0xF0 - 0x80)); // top bit: F0 and above
    text.continuations += static_cast<unsigned>(__builtin_popcount(topBits(continuations)));
    text.supplementary += static_cast<unsigned>(__builtin_popcount(topBits(fours)));
}

// Checks what follows the run `text` and takes it into the run when it is valid. The zero bytes behind the
// end make a cut sequence a fault.
template <bool isCounting>
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline bool
takeRest(const char *rest, std::size_t length, __m256i previous, const Constants &constants,
         CheckedText &text) {
    CheckedText longer = text;
    longer.bytes += length;
    __m256i found = _mm256_setzero_si256();
    for (bool isLast = false; !isLast; rest += 32, length -= 32) {
        isLast = length < 32;
        const __m256i vector = isLast ? loadPart(rest, length) : load(rest);
        found = _mm256_or_si256(found, faultsAfter(previous, vector, constants));
        if constexpr (isCounting)
            count(vector, longer);
        previous = vector;
    }
    if (!_mm256_testz_si256(found, found))
        return false;
    text = longer;
    return true;
}

// Returns the faults in a block of 128 bytes, given its parts.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i
blockFaults(const char *block, __m256i first, const Constants &constants) {
    const __m256i low = _mm256_or_si256(first, faultsAt(block + 32, constants));
    const __m256i high = _mm256_or_si256(faultsAt(block + 64, constants), faultsAt(block + 96, constants));
    return _mm256_or_si256(low, high);
}

// A block is large enough that most text has either none or only blocks of pure ASCII: guessing wrong costs
// as much as checking.
template <bool isCounting>
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline CheckedText check(const char *bytes,
                                                                            std::size_t length) {
    const Constants constants = makeConstants();
    CheckedText text;
    __m256i previous = _mm256_setzero_si256();
    for (; length - text.bytes >= 128; text.bytes += 128) {
        const char *block = bytes + text.bytes;
        const __m256i low = _mm256_or_si256(load(block), load(block + 32));
        const __m256i high = _mm256_or_si256(load(block + 64), load(block + 96));
        if (topBits(_mm256_or_si256(low, high)) == 0) {
            if (isCut(previous))
                break;
        } else {
            const __m256i first =
                text.bytes ? faultsAt(block, constants) : faultsAfter(previous, load(block), constants);
            const __m256i found = blockFaults(block, first, constants);
            if (!_mm256_testz_si256(found, found))
                break;
            if constexpr (isCounting)
                for (std::size_t i = 0; i < 128; i += 32)
                    count(load(block + i), text);
        }
        previous = load(block + 96);
    }
    const std::size_t rest = length - text.bytes;
    if (rest >= 128 || !takeRest<isCounting>(bytes + text.bytes, rest, previous, constants, text))
        text.dropCutSequence(bytes);
    return text;
}

} // namespace

[[gnu::target("avx2,popcnt")]] bool isAscii(const char *bytes, std::size_t length) {
    std::size_t position = 0;
    for (; length - position >= 128; position += 128) {
        const char *block = bytes + position;
        const __m256i low = _mm256_or_si256(load(block), load(block + 32));
        const __m256i high = _mm256_or_si256(load(block + 64), load(block + 96));
        if (topBits(_mm256_or_si256(low, high)))
            return false;
    }
    for (; length - position >= 32; position += 32)
        if (topBits(load(bytes + position)))
            return false;
    return topBits(loadPart(bytes + position, length - position)) == 0;
}

[[gnu::target("avx2,popcnt")]] CheckedText checkText(const char *bytes, std::size_t length) {
    return check<true>(bytes, length);
}

[[gnu::target("avx2,popcnt")]] std::size_t checkTextOnly(const char *bytes, std::size_t length) {
    return check<false>(bytes, length).bytes;
}

} // namespace qb::text::avx2
