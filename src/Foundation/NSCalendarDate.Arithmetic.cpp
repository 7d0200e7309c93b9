#include <QBFoundation/Foundation/NSCalendarDate.h>

#include <QBFoundation/Foundation/NSException.h>

#include "Foundation/DateParts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

using qb::calendar::Fields;
using qb::calendar::Zone;

constexpr std::int64_t kMonthsPerYear = 12;
constexpr std::int64_t kSecondsPerHour = 3600;
constexpr std::int64_t kSecondsPerMinute = 60;

/// Returns the second at which the clocks, moved on by those values, show the same time of day as at `start`.
std::int64_t moved(std::int64_t start, const Zone &zone, std::int64_t years, std::int64_t months,
                   std::int64_t days) {
    // A doubled time of day must not become the earlier one when nothing is added.
    if (years == 0 && months == 0 && days == 0)
        return start;
    Fields fields = zone.fieldsAt(start);
    fields.year += years;
    fields.month += months;
    fields.day += days;
    return zone.utcFromFields(fields);
}

// The way from one second to another in calendar steps, all of them in one direction.
class Difference {
public:
    Difference(std::int64_t start, std::int64_t target, const Zone &zone)
        : start_(start), target_(target), sign_(target < start ? -1 : 1), zone_(zone),
          startFields_(zone.fieldsAt(start)), targetFields_(zone.fieldsAt(target)) {}

    void takeYears() { take(years_, std::abs(targetFields_.year - startFields_.year)); }
    void takeMonths() {
        const std::int64_t all = (targetFields_.year - startFields_.year) * kMonthsPerYear +
                                 targetFields_.month - startFields_.month;
        take(months_, std::abs(all) - std::abs(years_) * kMonthsPerYear);
    }
    // A zone that has moved across the date line has a day more than have passed, or one less.
    void takeDays() { take(days_, std::abs(dayOf(target_) - dayOf(place())) + 1); }

    std::int64_t years() const { return years_; }
    std::int64_t months() const { return months_; }
    std::int64_t days() const { return days_; }
    /// As many as 64 bits count, when more are left.
    std::int64_t secondsLeft() const {
        std::int64_t seconds;
        return __builtin_sub_overflow(target_, place(), &seconds) ? sign_ * INT64_MAX : seconds;
    }

private:
    static std::int64_t dayOf(std::int64_t second) {
        return qb::calendar::floorDiv(second, qb::calendar::kSecondsPerDay);
    }
    std::int64_t place() const { return moved(start_, zone_, years_, months_, days_); }

    // Finds the most steps that do not pass the target. Days that a month has not make a step shorter or
    // longer, so the estimate may be one too small, and some too large.
    void take(std::int64_t &steps, std::int64_t estimate) {
        for (std::int64_t count = estimate + 1; count > 0; --count) {
            steps = count * sign_;
            if (sign_ > 0 ? place() <= target_ : place() >= target_)
                return;
        }
        steps = 0;
    }

    const std::int64_t start_, target_, sign_;
    const Zone &zone_;
    const Fields startFields_, targetFields_;
    std::int64_t years_ = 0, months_ = 0, days_ = 0;
};

/// Takes as many `unit`s out of `seconds` as there are when somebody wants them.
void takeOut(std::int64_t &seconds, std::int64_t unit, std::int32_t *target) {
    if (!target)
        return;
    *target = static_cast<std::int32_t>(std::clamp<std::int64_t>(seconds / unit, INT32_MIN, INT32_MAX));
    seconds %= unit;
}

void put(std::int64_t value, std::int32_t *target) {
    if (target)
        *target = static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

} // namespace

NSCalendarDate *NSCalendarDate::dateByAddingYears(std::int32_t years, std::int32_t months, std::int32_t days,
                                                  std::int32_t hours, std::int32_t minutes,
                                                  std::int32_t seconds) const {
    if (!std::isfinite(interval_))
        return shownAt(interval_);
    const NSTimeInterval fraction = interval_ - std::floor(interval_);
    const std::int64_t passed = hours * kSecondsPerHour + minutes * kSecondsPerMinute + seconds;
    const std::int64_t second = moved(qb::utcSecondsOf(interval_), zone_->rules(), years, months, days);
    return shownAt(qb::intervalOf(second) + static_cast<double>(passed) + fraction);
}

void NSCalendarDate::years(std::int32_t *years, std::int32_t *months, std::int32_t *days, std::int32_t *hours,
                           std::int32_t *minutes, std::int32_t *seconds, NSDate *sinceDate) const {
    if (!sinceDate)
        throw InvalidArgumentException(
            "NSCalendarDate years:months:days:hours:minutes:seconds:sinceDate: must have a date.");
    Difference difference(qb::utcSecondsOf(sinceDate->timeIntervalSinceReferenceDate()),
                          qb::utcSecondsOf(interval_), zone_->rules());
    if (years)
        difference.takeYears();
    if (months)
        difference.takeMonths();
    if (days)
        difference.takeDays();
    put(difference.years(), years);
    put(difference.months(), months);
    put(difference.days(), days);
    std::int64_t left = difference.secondsLeft();
    takeOut(left, kSecondsPerHour, hours);
    takeOut(left, kSecondsPerMinute, minutes);
    takeOut(left, 1, seconds);
}
