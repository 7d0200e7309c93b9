// Bytes as hexadecimal digits, as property lists write them.
#ifndef QB_TEXT_HEX_H
#define QB_TEXT_HEX_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Returns the length of `length` bytes as digits in groups of four bytes with a blank between the groups.
constexpr std::uint64_t hexGroupsLength(std::size_t length) {
    return length == 0 ? 0 : std::uint64_t{length} * 2 + (length - 1) / 4;
}

/// Writes the bytes as lower-case digits in groups of four bytes, "0fbd7771 c2735ae0", to `target`, which
/// takes the `hexGroupsLength` bytes.
///
/// Returns the end of what was written.
char *writeHexGroups(const void *bytes, std::size_t length, char *target);

/// Writes the bytes as lower-case digits, two a byte, to `target`; returns the end of what was written.
char *writeHex(const void *bytes, std::size_t length, char *target);

/// Where reading of digits ended, and how it did.
struct HexResult {
    const char *next;   // the first byte that is neither digit nor blank, or the end
    std::size_t length; // the bytes written
    bool isComplete;    // false: the last digit has no partner and was not written
};

/// Reads digits, capital ones too, with blanks anywhere between them, and writes their bytes to `target`,
/// which takes half as many bytes as the text has.
HexResult readHex(const char *position, const char *end, unsigned char *target);

/// Returns the value of a hexadecimal digit, or -1.
constexpr int hexDigitValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const int letter = digit | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

} // namespace qb::text

#endif
