// Dates as 14 digits: year, month, day, hour, minute, second.
#ifndef QBFOUNDATION_CALENDAR_STAMP_H
#define QBFOUNDATION_CALENDAR_STAMP_H

#include "Civil.h"
#include "TwoDigits.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qb::calendar {

/// The pattern of a stamp, for years of four digits.
inline constexpr std::string_view kStampPattern = "%Y%m%d%H%M%S";
inline constexpr std::size_t kStampLength = 14;

/// Writes the digits, without a NUL. The fields are in their usual ranges, the year is 1000 to 9999.
inline void putStamp(const Fields &fields, char *target) {
    target = putTwo(putTwo(putFour(target, fields.year), fields.month), fields.day);
    putTwo(putTwo(putTwo(target, fields.hour), fields.minute), fields.second);
}

/// Earlier than any stamp's second.
inline constexpr std::int64_t kNoSeconds = INT64_MIN;

/// Returns the seconds from 1970 to the date of a stamp; `kNoSeconds` when one of the `kStampLength` bytes is
/// no digit, or the calendar has no such date, or the year is 0.
std::int64_t secondsOfStamp(const char *digits);

} // namespace qb::calendar

#endif
