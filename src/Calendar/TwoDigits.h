// Numbers of two digits, of which dates are made.
#ifndef QBFOUNDATION_CALENDAR_TWODIGITS_H
#define QBFOUNDATION_CALENDAR_TWODIGITS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qb::calendar {

namespace detail {
inline constexpr std::array<char, 200> kTwoDigits = [] {
    std::array<char, 200> digits{};
    for (std::size_t number = 0; number < 100; ++number) {
        digits[2 * number] = static_cast<char>('0' + number / 10);
        digits[2 * number + 1] = static_cast<char>('0' + number % 10);
    }
    return digits;
}();
} // namespace detail

/// Writes `number`, 0 to 99, as two digits. Returns the place behind them.
inline char *putTwo(char *target, std::int64_t number) {
    std::memcpy(target, detail::kTwoDigits.data() + 2 * static_cast<std::size_t>(number), 2);
    return target + 2;
}

/// Writes `number`, 0 to 9999, as four digits. Returns the place behind them.
inline char *putFour(char *target, std::int64_t number) {
    const auto small = static_cast<std::uint32_t>(number);
    return putTwo(putTwo(target, small / 100), small % 100);
}

} // namespace qb::calendar

#endif
