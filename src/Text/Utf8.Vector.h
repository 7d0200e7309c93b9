// What the vector versions of UTF-8 checking share. Utf8.cpp chooses among them and completes what they
// return.
#ifndef QB_TEXT_UTF8_VECTOR_H
#define QB_TEXT_UTF8_VECTOR_H

#include <cstddef>

namespace qb::text {

/// A run of strictly valid text that ends between characters, with its continuation bytes and its sequences
/// of four.
struct CheckedText {
    std::size_t bytes = 0;
    std::size_t continuations = 0;
    std::size_t supplementary = 0;

    /// Takes a sequence that is cut at the end of the run out of it again.
    void dropCutSequence(const char *text);
};

namespace avx2 {

/// Returns whether all bytes are below 0x80.
bool isAscii(const char *bytes, std::size_t length);

/// Returns a valid run of the text: all of it, or at least what ends some 128 bytes before the first
/// malformed sequence.
CheckedText checkText(const char *bytes, std::size_t length);

/// As `checkText`, without counting.
std::size_t checkTextOnly(const char *bytes, std::size_t length);

} // namespace avx2

namespace avx512 {

// As the functions of the same names above.
CheckedText checkText(const char *bytes, std::size_t length);
std::size_t checkTextOnly(const char *bytes, std::size_t length);

} // namespace avx512

namespace utf8 {

// What two neighbouring bytes can do wrong. Three tables (high and low half of the first byte, high half of
// the second) each list what is still possible; a fault is what all three list.
inline constexpr unsigned char kTooShort = 1 << 0;   // lead byte, then no continuation
inline constexpr unsigned char kTooLong = 1 << 1;    // ASCII, then a continuation
inline constexpr unsigned char kOverlong3 = 1 << 2;  // E0 80..9F
inline constexpr unsigned char kTooLarge = 1 << 3;   // F4 90.. and F5.. 90..
inline constexpr unsigned char kSurrogate = 1 << 4;  // ED A0..
inline constexpr unsigned char kOverlong2 = 1 << 5;  // C0, C1
inline constexpr unsigned char kTooLarge80 = 1 << 6; // F5.. 80..8F, which is one bit with:
inline constexpr unsigned char kOverlong4 = 1 << 6;  // F0 80..8F
inline constexpr unsigned char kTwoFollow =
    1 << 7; // two continuations; a fault unless a lead of three or four precedes
inline constexpr unsigned char kAnyLow =
    kTooShort | kTooLong | kTwoFollow; // whatever the low half of the first byte
inline constexpr unsigned char kBig = kAnyLow | kTooLarge | kTooLarge80;

inline constexpr unsigned char kFirstHigh[16] = {
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong, // 0xxxxxxx
    kTwoFollow,
    kTwoFollow,
    kTwoFollow,
    kTwoFollow,                                       // 10xxxxxx
    kTooShort | kOverlong2,                           // 1100xxxx
    kTooShort,                                        // 1101xxxx
    kTooShort | kOverlong3 | kSurrogate,              // 1110xxxx
    kTooShort | kTooLarge | kTooLarge80 | kOverlong4, // 1111xxxx
};
inline constexpr unsigned char kFirstLow[16] = {
    kAnyLow | kOverlong2 | kOverlong3 | kOverlong4, // C0, E0, F0
    kAnyLow | kOverlong2,                           // C1
    kAnyLow,
    kAnyLow,
    kAnyLow | kTooLarge, // F4
    kBig,                // F5 ...
    kBig,
    kBig,
    kBig,
    kBig,
    kBig,
    kBig,
    kBig,
    kBig | kSurrogate, // ED
    kBig,
    kBig,
};
inline constexpr unsigned char kFollow =
    kTooLong | kOverlong2 | kTwoFollow; // whichever continuation comes second
inline constexpr unsigned char kSecondHigh[16] = {
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,                                       // 0xxxxxxx
    kFollow | kOverlong3 | kTooLarge80 | kOverlong4, // 1000xxxx
    kFollow | kOverlong3 | kTooLarge,                // 1001xxxx
    kFollow | kSurrogate | kTooLarge,                // 1010xxxx
    kFollow | kSurrogate | kTooLarge,                // 1011xxxx
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort, // 11xxxxxx
};

} // namespace utf8

} // namespace qb::text

#endif
