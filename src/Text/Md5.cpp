#include "Text/Md5.h"

#include "Text/Bytes.h"

#include <bit>

namespace qb::text {

namespace {

// The four functions of the rounds, in forms that keep the chain short: only `b` comes from the step before,
// so everything else is ready when it arrives.
struct Round1 {
    static std::uint32_t of(std::uint32_t b, std::uint32_t c, std::uint32_t d) { return ((c ^ d) & b) ^ d; }
};
struct Round2 {
    // Both halves are disjoint, so that a sum may stand for the "or", and one of them waits for nobody.
    static std::uint32_t of(std::uint32_t b, std::uint32_t c, std::uint32_t d) { return (d & b) + (~d & c); }
};
struct Round3 {
    static std::uint32_t of(std::uint32_t b, std::uint32_t c, std::uint32_t d) { return b ^ (c ^ d); }
};
struct Round4 {
    static std::uint32_t of(std::uint32_t b, std::uint32_t c, std::uint32_t d) { return c ^ (b | ~d); }
};

// The whole part of 2^32 times the sine of each step's number, in radians, without its sign.
constexpr std::uint32_t kSines[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391,
};

template <class Round>
inline void step(std::uint32_t &a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t addend,
                 int shift) {
    a = std::rotl(a + addend + Round::of(b, c, d), shift) + b;
}

// Sixteen steps; the word of each is `stride` behind that of the one before it, and the shifts come in fours.
template <class Round, unsigned number, unsigned first, unsigned stride, int... shifts>
inline void addRound(std::uint32_t *state, const unsigned char *block) {
    static constexpr int kShifts[] = {shifts...};
    auto &[a, b, c, d] = *reinterpret_cast<std::uint32_t(*)[4]>(state);
    const auto addend = [block](unsigned i) {
        return loadWord<std::uint32_t>(block + (first + stride * i) % 16 * 4) + kSines[number * 16 + i];
    };
#pragma GCC unroll 4
    for (unsigned i = 0; i < 16; i += 4) {
        step<Round>(a, b, c, d, addend(i), kShifts[0]);
        step<Round>(d, a, b, c, addend(i + 1), kShifts[1]);
        step<Round>(c, d, a, b, addend(i + 2), kShifts[2]);
        step<Round>(b, c, d, a, addend(i + 3), kShifts[3]);
    }
}

} // namespace

void addMd5Blocks(std::uint32_t *state, const unsigned char *bytes, std::size_t length) {
    std::uint32_t sums[4] = {state[0], state[1], state[2], state[3]};
    for (; length >= kMd5Block; length -= kMd5Block, bytes += kMd5Block) {
        std::uint32_t words[4] = {sums[0], sums[1], sums[2], sums[3]};
        addRound<Round1, 0, 0, 1, 7, 12, 17, 22>(words, bytes);
        addRound<Round2, 1, 1, 5, 5, 9, 14, 20>(words, bytes);
        addRound<Round3, 2, 5, 3, 4, 11, 16, 23>(words, bytes);
        addRound<Round4, 3, 0, 7, 6, 10, 15, 21>(words, bytes);
        for (int i = 0; i < 4; ++i)
            sums[i] += words[i];
    }
    std::memcpy(state, sums, sizeof sums);
}

} // namespace qb::text
