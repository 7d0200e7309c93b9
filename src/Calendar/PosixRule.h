// Time-zone rules in the form of the TZ variable.
#ifndef QBFOUNDATION_CALENDAR_POSIXRULE_H
#define QBFOUNDATION_CALENDAR_POSIXRULE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qb::calendar {

/// The local time in force: what a zone's clocks show at one instant.
struct ZoneOffset {
    std::int32_t seconds = 0;      // local time less UTC, so east of Greenwich is positive
    bool isDst = false;            // daylight saving time
    std::string_view abbreviation; // "CEST"; valid as long as the zone
};

/// A stretch of time over which the local time stays the same.
struct ZoneRange {
    std::int64_t begin = 0; // UTC seconds; INT64_MIN: since ever
    std::int64_t end = 0;   // UTC seconds, exclusive; INT64_MAX: for ever
    ZoneOffset offset;
};

/// The day of a year, and the time of that day, at which the clocks change.
struct ChangeRule {
    enum class Kind { weekdayOfMonth, dayWithoutLeap, dayOfYear };

    Kind kind = Kind::weekdayOfMonth;
    int month = 1;            // weekdayOfMonth: 1 to 12
    int week = 1;             // weekdayOfMonth: 1 to 5, 5 the last
    int day = 0;              // weekday 0 to 6; else 1 to 365 (29 February not counted) or 0 to 365
    std::int32_t time = 7200; // seconds after local midnight, may be negative or beyond a day

    /// Returns the change in `year` as seconds of the local time before the change.
    std::int64_t localSecondsInYear(std::int64_t year) const;
};

/// Standard time and, if there is one, daylight saving time with the days of its begin and end.
struct PosixRule {
    std::string standardName;
    std::string daylightName; // empty: no daylight saving time
    std::int32_t standardOffset = 0;
    std::int32_t daylightOffset = 0;
    ChangeRule start;
    ChangeRule end;

    /// Returns the range that holds `utcSeconds`. Its abbreviation points into this rule.
    ZoneRange rangeAt(std::int64_t utcSeconds) const;
};

/// Returns the rule of a TZ text such as "CET-1CEST,M3.5.0,M10.5.0/3" or "<+0545>-5:45"; none when malformed.
///
/// Form: POSIX.1-2017, Base Definitions 8.3, with the hours -167 to 167 of RFC 8536, section 3.3.1. Daylight
/// saving time without days takes those of the C library: second Sunday of March, first Sunday of November.
std::optional<PosixRule> parsePosixRule(std::string_view text);

} // namespace qb::calendar

#endif
