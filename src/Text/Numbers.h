// Numbers as decimal text and back, whatever the locale.
#ifndef QB_TEXT_NUMBERS_H
#define QB_TEXT_NUMBERS_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// The most characters that `formatInteger` writes: "-9223372036854775808".
constexpr std::size_t kLongestInteger = 20;

/// Writes `value` as decimal digits to `target`, without a terminating NUL; returns the number of characters.
std::size_t formatInteger(std::uint32_t value, char *target);
std::size_t formatInteger(std::int32_t value, char *target);
std::size_t formatInteger(std::uint64_t value, char *target);
std::size_t formatInteger(std::int64_t value, char *target);

/// The most characters that `formatDouble` writes: "-1.2345678901234567e-300".
constexpr std::size_t kLongestDouble = 24;

/// Writes the shortest digits that read back as `value` to `target`, without a terminating NUL; returns the
/// number of characters.
///
/// The layout is that of printf's "%.16g", so "5", "0.1", "1e+20", "-0": an exponent stands from 1e+16 on and
/// below 0.0001. What is no number is "nan", "inf" or "-inf".
std::size_t formatDouble(double value, char *target);
/// As above, with the digits that are enough to read back a float.
std::size_t formatFloat(float value, char *target);

/// A number that was read leniently.
struct ParsedInteger {
    std::int64_t value; // 0 without digits; the nearest value there is when out of range
    const char *next;   // behind the last digit; the beginning of the text without digits
    bool isOutOfRange;
};

/// Reads an integer as strtoll does to the base 10: blanks, a sign, digits; whatever follows is left.
ParsedInteger parseInteger(const char *position, const char *end);

/// A floating-point number that was read leniently.
struct ParsedDouble {
    double value;     // 0 without a number; infinite or 0 with the right sign when out of range
    const char *next; // behind the number; the beginning of the text without one
};

/// Reads a number as strtod does in the "C" locale, hexadecimal ones excepted: blanks, a sign, digits with an
/// optional point and exponent, or "inf", "infinity", "nan" in any case; whatever follows is left.
ParsedDouble parseDouble(const char *position, const char *end);

} // namespace qb::text

#endif
