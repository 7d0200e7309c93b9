// The vector versions of base64, after W. Muła and D. Lemire, "Faster Base64 Encoding and Decoding Using AVX2
// Instructions", ACM Transactions on the Web 12 (2018).
#ifndef QB_TEXT_BASE64_VECTOR_H
#define QB_TEXT_BASE64_VECTOR_H

#include "Text/Base64.h"

namespace qb::text {

/// What the vector versions reckon with, each for sixteen bytes.
///
/// In memory, because compilers make constants that they see of many instructions, which short texts feel.
struct alignas(64) Base64Tables {
    signed char spread[16];     // the byte that each place of six bits begins in
    signed char spreadLast[16]; // the same of twelve bytes that end a vector
    std::uint32_t oddBits[4];   // of every second place,
    std::uint32_t oddShifts[4]; // and how they come down to the lowest bits
    std::uint32_t evenBits[4];
    std::uint32_t evenShifts[4];
    signed char capitals[16];  // how many values are capital letters
    signed char letters[16];   // the last value that is a letter
    signed char isCapital[16]; // the range of capital letters in `distances`
    signed char distances[16]; // from a value to its character, for each of the ranges

    signed char slash[16];
    signed char
        highs[16];        // the rows of the alphabet that a byte's high and low half are not in: two bits, of
    signed char lows[16]; // which a byte outside has one in common
    signed char back[16]; // from a character to its value, by its high half
    std::uint32_t pairs[4];
    std::uint32_t groups[4];
    signed char pack[16]; // the bytes of each group of three, in their order
};
extern const Base64Tables kBase64Tables;

// An encoder does all groups, of which there must be at least so many; a decoder stops where
// `decodeBase64Groups` does, or earlier, and needs at least so many characters.

namespace sse41 {
constexpr std::size_t kLeastToEncode = 6;
constexpr std::size_t kLeastToDecode = 16;
char *encodeBase64(const char *bytes, std::size_t count, char *target);
Base64Result decodeBase64(const char *position, const char *end, char *target);
} // namespace sse41

namespace avx2 {
constexpr std::size_t kLeastToEncode = 10;
constexpr std::size_t kLeastToDecode = 32;
char *encodeBase64(const char *bytes, std::size_t count, char *target);
Base64Result decodeBase64(const char *position, const char *end, char *target);
} // namespace avx2

} // namespace qb::text

#endif
