#include "Text/Hex.h"

#include "Text/Bytes.h"

namespace qb::text {

namespace {

constexpr std::uint64_t kEach = 0x0101010101010101u;

// Returns the eight digits of four bytes, both in the order of memory.
std::uint64_t digitsOf(std::uint32_t bytes) {
    std::uint64_t spread = bytes; // each byte gets two places
    spread = (spread | spread << 16) & 0x0000FFFF0000FFFFu;
    spread = (spread | spread << 8) & 0x00FF00FF00FF00FFu;
    const std::uint64_t halves = (spread >> 4 & 0x000F000F000F000Fu) | (spread & 0x000F000F000F000Fu) << 8;
    const std::uint64_t letters = (halves + 6 * kEach) >> 4 & kEach; // 1 where the value is 10 or more
    return halves + '0' * kEach + letters * ('a' - '0' - 10);
}

// The values of all digits; others, and the blanks, are told apart by the two highest values.
constexpr unsigned char kBlank = 0xFE;
constexpr unsigned char kOther = 0xFF;

struct DigitTable {
    unsigned char values[256] = {};

    constexpr DigitTable() {
        for (int byte = 0; byte < 256; ++byte) {
            const int value = hexDigitValue(static_cast<char>(byte));
            const bool blank = byte == ' ' || (byte >= '\t' && byte <= '\r');
            values[byte] = value >= 0 ? static_cast<unsigned char>(value) : blank ? kBlank : kOther;
        }
    }
};

constexpr DigitTable kDigits;

unsigned valueOf(char digit) {
    return kDigits.values[static_cast<unsigned char>(digit)];
}

// Reads pairs of digits as long as nothing stands between them.
const char *readPairs(const char *position, const char *end, unsigned char *&target) {
    for (; end - position >= 2; position += 2) {
        const unsigned high = valueOf(position[0]);
        const unsigned low = valueOf(position[1]);
        if ((high | low) > 15)
            break;
        *target++ = static_cast<unsigned char>(high << 4 | low);
    }
    return position;
}

} // namespace

char *writeHexGroups(const void *bytes, std::size_t length, char *target) {
    const auto *position = static_cast<const unsigned char *>(bytes);
    for (; length > 4; length -= 4, position += 4) {
        storeWord(target, digitsOf(loadWord<std::uint32_t>(position)));
        target[8] = ' ';
        target += 9;
    }
    for (; length > 0; --length, ++position, target += 2)
        storeWord(target, static_cast<std::uint16_t>(digitsOf(*position)));
    return target;
}

char *writeHex(const void *bytes, std::size_t length, char *target) {
    const auto *position = static_cast<const unsigned char *>(bytes);
    for (; length >= 4; length -= 4, position += 4, target += 8)
        storeWord(target, digitsOf(loadWord<std::uint32_t>(position)));
    for (; length > 0; --length, ++position, target += 2)
        storeWord(target, static_cast<std::uint16_t>(digitsOf(*position)));
    return target;
}

HexResult readHex(const char *position, const char *end, unsigned char *target) {
    const unsigned char *start = target;
    unsigned pending = kOther; // the first digit of a pair that a blank divides
    for (; position != end; ++position) {
        if (pending == kOther)
            position = readPairs(position, end, target);
        if (position == end)
            break;
        const unsigned value = valueOf(*position);
        if (value == kOther)
            break;
        if (value == kBlank)
            continue;
        if (pending == kOther) {
            pending = value;
            continue;
        }
        *target++ = static_cast<unsigned char>(pending << 4 | value);
        pending = kOther;
    }
    return {position, static_cast<std::size_t>(target - start), pending == kOther};
}

} // namespace qb::text
