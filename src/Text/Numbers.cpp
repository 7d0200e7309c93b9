#include "Text/Numbers.h"

#include "Text/Bytes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace qb::text {

namespace {

struct PairTable {
    char pairs[200] = {};

    constexpr PairTable() {
        for (int i = 0; i < 100; ++i) {
            pairs[2 * i] = static_cast<char>('0' + i / 10);
            pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};

constexpr PairTable kPairs; // "00" to "99"

constexpr std::uint32_t kEightDigits = 100000000;

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

unsigned digitCount(std::uint32_t value) {
    unsigned count = 1;
    for (; value >= 10000; value /= 10000)
        count += 4;
    return count + (value >= 10) + (value >= 100) + (value >= 1000);
}

// Writes exactly `count` digits, the last of `value`'s.
void writeDigits(std::uint32_t value, unsigned count, char *target) {
    for (; count >= 2; count -= 2, value /= 100)
        std::memcpy(target + count - 2, kPairs.pairs + 2 * (value % 100), 2);
    if (count)
        target[0] = static_cast<char>('0' + value % 10);
}

const char *skipBlanks(const char *position, const char *end) {
    while (position != end && isBlank(*position))
        ++position;
    return position;
}

// Reads a sign, if there is one; returns whether it is a minus.
bool readMinus(const char *&position, const char *end) {
    if (position == end || (*position != '-' && *position != '+'))
        return false;
    return *position++ == '-';
}

// Returns whether the number in the text, which is no double, is too large rather than too small.
bool isTooLarge(const char *position, const char *end) {
    // The place of the first digit that counts, with the exponent added, is on one side of 0 by far.
    constexpr std::int64_t kFar = std::int64_t{1} << 40;
    std::int64_t places = 0;
    bool isBehindPoint = false;
    bool isSignificant = false;
    for (; position != end && *position != 'e' && *position != 'E'; ++position) {
        isSignificant = isSignificant || (isDigit(*position) && *position != '0');
        if (*position == '.')
            isBehindPoint = true;
        else if (isBehindPoint)
            places -= !isSignificant;
        else
            places += isSignificant;
    }
    if (position != end)
        places += std::clamp(parseInteger(position + 1, end).value, -kFar, kFar);
    return places > 0;
}

template <class Real>
std::size_t formatReal(Real value, char *target) {
    if (std::isnan(value)) {
        std::memcpy(target, "nan", 3); // to_chars would show its sign
        return 3;
    }
    const Real size = std::fabs(value);
    const bool isPlain = size == 0 || (size >= Real(1e-4) && size < Real(1e16));
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    const auto result = std::to_chars(target, target + kLongestDouble, value, format);
    return static_cast<std::size_t>(result.ptr - target);
}

/// Lets the x87 unit round to a double at once for a while. The C++ library's own code for 32-bit programs
/// computes there, and what it reads would be rounded twice.
class DoublePrecision {
public:
#ifdef __i386__
    DoublePrecision() noexcept {
        asm volatile("fnstcw %0" : "=m"(before_));
        const auto word = static_cast<std::uint16_t>((before_ & ~0x300) | 0x200);
        asm volatile("fldcw %0" : : "m"(word));
    }
    ~DoublePrecision() {
        asm volatile("fldcw %0" : : "m"(before_));
    }
    DoublePrecision(const DoublePrecision &) = delete;
    DoublePrecision &operator=(const DoublePrecision &) = delete;

private:
    std::uint16_t before_;
#endif
};

/// Whether a number in letters, up to `next`, is a word of its own, as in "nan" but not in "Nancy" or
/// "nan(1)".
bool isWord(const char *next, const char *end) {
    return next[-1] != ')' && (next == end || (*next != '(' && !isLetter(*next) && !isDigit(*next)));
}

} // namespace

std::size_t formatInteger(std::uint32_t value, char *target) {
    const unsigned count = digitCount(value);
    writeDigits(value, count, target);
    return count;
}

std::size_t formatInteger(std::uint64_t value, char *target) {
    if (value <= UINT32_MAX)
        return formatInteger(static_cast<std::uint32_t>(value), target);
    // At most twenty digits: up to twelve and then eight, so that no step needs more than one 64-bit
    // division.
    const std::size_t count = formatInteger(value / kEightDigits, target);
    writeDigits(static_cast<std::uint32_t>(value % kEightDigits), 8, target + count);
    return count + 8;
}

std::size_t formatInteger(std::int32_t value, char *target) {
    if (value >= 0)
        return formatInteger(static_cast<std::uint32_t>(value), target);
    *target = '-';
    return 1 + formatInteger(0u - static_cast<std::uint32_t>(value), target + 1);
}

std::size_t formatInteger(std::int64_t value, char *target) {
    if (value >= 0)
        return formatInteger(static_cast<std::uint64_t>(value), target);
    *target = '-';
    return 1 + formatInteger(0u - static_cast<std::uint64_t>(value), target + 1);
}

std::size_t formatDouble(double value, char *target) {
    return formatReal(value, target);
}

std::size_t formatFloat(float value, char *target) {
    return formatReal(value, target);
}

ParsedInteger parseInteger(const char *position, const char *end) {
    const char *digits = skipBlanks(position, end);
    const bool isNegative = readMinus(digits, end);
    const std::uint64_t limit = std::uint64_t{INT64_MAX} + isNegative;
    std::uint64_t value = 0;
    bool isOutOfRange = false;
    const char *next = digits;
    for (; next != end && isDigit(*next); ++next) {
        const auto digit = static_cast<unsigned>(*next - '0');
        isOutOfRange = isOutOfRange || value > limit / 10 || value * 10 > limit - digit;
        value = isOutOfRange ? limit : value * 10 + digit;
    }
    const auto signedValue = static_cast<std::int64_t>(isNegative ? 0u - value : value);
    return {signedValue, next == digits ? position : next, isOutOfRange};
}

ParsedDouble parseDouble(const char *position, const char *end) {
    const char *number = skipBlanks(position, end);
    const bool isNegative = readMinus(number, end);
    if (number == end || *number == '-') // a second sign, which from_chars would take
        return {0, position};
    double value = 0;
    [[maybe_unused]] const DoublePrecision precision;
    const auto [next, error] = std::from_chars(number, end, value);
    if (error == std::errc::invalid_argument || (isLetter(*number) && !isWord(next, end)))
        return {0, position};
    if (error == std::errc::result_out_of_range)
        value = isTooLarge(number, next) ? std::numeric_limits<double>::infinity() : 0;
    return {isNegative ? -value : value, next};
}

} // namespace qb::text
