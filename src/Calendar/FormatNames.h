// What formatting and parsing of dates share.
#ifndef QBFOUNDATION_CALENDAR_FORMATNAMES_H
#define QBFOUNDATION_CALENDAR_FORMATNAMES_H

#include <array>
#include <cstddef>
#include <string_view>

namespace qb::calendar {

constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};

/// The short form of a name is this many of its first letters.
constexpr std::size_t kShortName = 3;

/// Returns the pattern that a conversion letter abbreviates; empty for every other letter. None contains
/// another.
constexpr std::string_view patternOf(char letter) {
    switch (letter) {
    case 'c':
        return "%a %b %e %H:%M:%S %Y";
    case 'x':
        return "%m/%d/%y";
    case 'X':
        return "%H:%M:%S";
    default:
        return {};
    }
}

} // namespace qb::calendar

#endif
