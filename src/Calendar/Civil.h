// Proleptic Gregorian calendar arithmetic without time zones.
#ifndef QBFOUNDATION_CALENDAR_CIVIL_H
#define QBFOUNDATION_CALENDAR_CIVIL_H

#include <cstdint>

namespace qb::calendar {

constexpr std::int64_t kSecondsPerDay = 86400;

/// Years beyond this, either way, count as this year: every date then still fits 64-bit seconds.
constexpr std::int64_t kYearLimit = 200'000'000'000;

/// A date and time of day as people write it. Wide fields, so that callers can add to them without overflow.
struct Fields {
    std::int64_t year = 1970; // astronomical: 0 is 1 BC
    std::int64_t month = 1;
    std::int64_t day = 1;
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0;

    bool operator==(const Fields &) const = default;
};

/// A week of ISO 8601: weeks begin on Monday, week 1 holds the year's first Thursday.
struct IsoWeek {
    std::int64_t year; // may differ from the calendar year around New Year
    int week;          // 1 to 53
};

/// Returns the quotient rounded down and the remainder that goes with it; `divisor` is positive.
constexpr std::int64_t floorDiv(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}
constexpr std::int64_t floorMod(std::int64_t value, std::int64_t divisor) {
    return value % divisor + (value % divisor < 0 ? divisor : 0);
}

constexpr bool isLeapYear(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Returns the number of days in `month`, 1 to 12, of `year`.
constexpr int daysInMonth(std::int64_t year, int month) {
    if (month == 2)
        return isLeapYear(year) ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

namespace detail {
// The calendar repeats itself after 400 years; it is counted here from 1 March of the year 0.
constexpr std::int64_t kDaysOf400Years = 146097;
constexpr std::int64_t kEpoch = 719468; // 1970-01-01
// Below these the arithmetic fits 32 bits.
constexpr std::int64_t kShortYears = 1'000'000;
constexpr std::int64_t kShortDays = 365'000'000;
} // namespace detail

/// Returns the days from 1970-01-01 to a date that the calendar has, within the year limit.
///
/// Sources: Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms", days_from_civil; for the days
/// before a month, Neri and Schneider as below.
constexpr std::int64_t daysFromCivil(std::int64_t year, int month, int day) {
    const bool isEarly = month <= 2; // January and February are the last months of the year before
    const std::int64_t marchYear = year - (isEarly ? 1 : 0);
    const bool isShort = marchYear >= 0 && marchYear < detail::kShortYears;
    const std::int64_t era = isShort ? 0 : floorDiv(marchYear, 400);
    const auto years = static_cast<std::uint32_t>(marchYear - era * 400);
    const auto dayOfYear = (979 * static_cast<std::uint32_t>(month + (isEarly ? 12 : 0)) - 2919) / 32 +
                           static_cast<std::uint32_t>(day) - 1;
    const std::uint32_t days = years * 365 + years / 4 - years / 100 + years / 400 + dayOfYear;
    return era * detail::kDaysOf400Years + static_cast<std::int64_t>(days) - detail::kEpoch;
}

namespace detail {

/// Returns the date so many days after 1 March of the year 0.
///
/// Source: Cassio Neri and Lorenz Schneider, "Euclidean affine functions and their application to calendar
/// algorithms", 2022, section 7.
constexpr Fields civilFromCount(std::uint32_t count) {
    const std::uint32_t quarters = count * 4 + 3;
    const std::uint32_t century = quarters / 146097;
    const std::uint64_t yearAndDay = std::uint64_t{2939745} * ((quarters % 146097) | 3);
    const std::uint32_t dayOfYear = static_cast<std::uint32_t>(yearAndDay) / 2939745 / 4;
    const auto year = static_cast<std::uint32_t>(yearAndDay >> 32) + 100 * century;
    const std::uint32_t monthAndDay = 2141 * dayOfYear + 197913;
    const std::uint32_t nextYear = dayOfYear >= 306 ? 1 : 0; // January and February
    return {year + nextYear, (monthAndDay >> 16) - 12 * nextYear, (monthAndDay & 0xFFFF) / 2141 + 1, 0, 0, 0};
}

} // namespace detail

/// Returns the date `days` after 1970-01-01, at midnight; `days` is a count that 64-bit seconds can express.
constexpr Fields civilFromDays(std::int64_t days) {
    const std::int64_t count = days + detail::kEpoch;
    if (count >= 0 && count < detail::kShortDays)
        return detail::civilFromCount(static_cast<std::uint32_t>(count));
    const std::int64_t era = floorDiv(count, detail::kDaysOf400Years);
    Fields fields = detail::civilFromCount(static_cast<std::uint32_t>(count - era * detail::kDaysOf400Years));
    fields.year += era * 400;
    return fields;
}

/// Returns the weekday of the day `days` after 1970-01-01: 0 Sunday to 6 Saturday.
constexpr int weekdayFromDays(std::int64_t days) {
    return static_cast<int>(floorMod(floorMod(days, 7) + 4, 7));
}

/// Returns the day of the year, 1 to 366, of the day `days` after 1970-01-01.
int dayOfYearFromDays(std::int64_t days);

/// Returns the ISO 8601 week that holds the day `days` after 1970-01-01.
IsoWeek isoWeekFromDays(std::int64_t days);

/// Returns the seconds from 1970-01-01 00:00:00 to fields whose values are in their usual ranges. The day may
/// be one that the month has not.
constexpr std::int64_t secondsFromUsualFields(const Fields &fields) {
    return daysFromCivil(fields.year, static_cast<int>(fields.month), static_cast<int>(fields.day)) *
               kSecondsPerDay +
           fields.hour * 3600 + fields.minute * 60 + fields.second;
}

/// Whether each value is in its usual range, and the year within the limit.
constexpr bool isUsual(const Fields &fields) {
    const auto isUpTo = [](std::int64_t value, std::uint64_t most) {
        return static_cast<std::uint64_t>(value) <= most;
    };
    return fields.month >= 1 && fields.month <= 12 && fields.day >= 1 &&
           (fields.day <= 28 || fields.day <= daysInMonth(fields.year, static_cast<int>(fields.month))) &&
           isUpTo(fields.hour, 23) && isUpTo(fields.minute, 59) && isUpTo(fields.second, 59) &&
           fields.year >= -kYearLimit && fields.year <= kYearLimit;
}

namespace detail {

/// Returns the date with the time of day, given in seconds.
constexpr Fields withTime(Fields date, std::uint32_t seconds) {
    const std::uint32_t minutes = seconds / 60;
    const std::uint32_t hours = minutes / 60;
    date.hour = hours;
    date.minute = minutes - hours * 60;
    date.second = seconds - minutes * 60;
    return date;
}

Fields fieldsOfFarSeconds(std::int64_t seconds);

} // namespace detail

/// Returns the fields of the second `seconds` after 1970-01-01 00:00:00, every one in its usual range.
inline Fields fieldsFromSeconds(std::int64_t seconds) {
    // Usual ones are counted from a day before them all, which spares looking at signs.
    const std::uint64_t count =
        static_cast<std::uint64_t>(seconds) + std::uint64_t{detail::kEpoch * kSecondsPerDay};
    if (count >= std::uint64_t{detail::kShortDays * kSecondsPerDay}) [[unlikely]]
        return detail::fieldsOfFarSeconds(seconds);
    const auto days = static_cast<std::uint32_t>(count / std::uint64_t{kSecondsPerDay});
    const auto rest = static_cast<std::uint32_t>(count - std::uint64_t{days} * kSecondsPerDay);
    return detail::withTime(detail::civilFromCount(days), rest);
}

/// Returns the seconds from 1970-01-01 00:00:00 to `fields`, whose values may lie outside their usual ranges.
///
/// Months carry into years; days, hours, minutes and seconds then count from the first of that month. So
/// month 13 is January of the next year, day 0 the last day of the month before, and 29 February 2003 is 1
/// March 2003. Values too large to add up are taken as the largest that do; see `kYearLimit`.
std::int64_t secondsFromFields(const Fields &fields);

/// Returns `fields` with every value in its usual range, by the rules of `secondsFromFields`.
Fields normalised(const Fields &fields);

} // namespace qb::calendar

#endif
