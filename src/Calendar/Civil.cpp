#include "Civil.h"

#include <algorithm>

namespace qb::calendar {

namespace {
// Bounds of the lesser fields: together with kYearLimit their sum in seconds stays below 2^63.
constexpr std::int64_t kCountLimit = std::int64_t{1} << 36;
constexpr std::int64_t kTimeLimit = std::int64_t{1} << 48;

constexpr std::int64_t bounded(std::int64_t value, std::int64_t limit) {
    return std::clamp(value, -limit, limit);
}
} // namespace

int dayOfYearFromDays(std::int64_t days) {
    return static_cast<int>(days - daysFromCivil(civilFromDays(days).year, 1, 1)) + 1;
}

IsoWeek isoWeekFromDays(std::int64_t days) {
    // A week belongs to the year of its Thursday.
    const std::int64_t thursday = days - floorMod(days + 3, 7) + 3;
    const std::int64_t year = civilFromDays(thursday).year;
    return {year, static_cast<int>((thursday - daysFromCivil(year, 1, 1)) / 7) + 1};
}

namespace detail {

Fields fieldsOfFarSeconds(std::int64_t seconds) {
    const std::int64_t days = floorDiv(seconds, kSecondsPerDay);
    return withTime(civilFromDays(days), static_cast<std::uint32_t>(seconds - days * kSecondsPerDay));
}

} // namespace detail

std::int64_t secondsFromFields(const Fields &fields) {
    std::int64_t year = bounded(fields.year, kYearLimit);
    std::int64_t month = fields.month;
    if (month < 1 || month > 12) {
        const std::int64_t months = bounded(month, kCountLimit) - 1;
        year = bounded(year + floorDiv(months, 12), kYearLimit);
        month = floorMod(months, 12) + 1;
    }
    const std::int64_t first = daysFromCivil(year, static_cast<int>(month), 1);
    const std::int64_t days = first + bounded(fields.day, kCountLimit) - 1;
    return days * kSecondsPerDay + bounded(fields.hour, kCountLimit) * 3600 +
           bounded(fields.minute, kCountLimit) * 60 + bounded(fields.second, kTimeLimit);
}

Fields normalised(const Fields &fields) {
    return fieldsFromSeconds(secondsFromFields(fields));
}

} // namespace qb::calendar
