#include <QBFoundation/Foundation/NSDate.h>

#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/DateParts.h"
#include "Foundation/NSDate.Tables.h"
#include "System/Clock.h"
#include "Text/Hash.h"

#include <algorithm>
#include <cmath>

namespace {

using qb::kReferenceSeconds;

// 200 billion years either way, as far as the calendar goes.
constexpr double kFurthestInterval = 6.3e18;
constexpr NSTimeInterval kDistantPast = -63113904000.0;  // 0001-01-01
constexpr NSTimeInterval kDistantFuture = 63113904000.0; // 4001-01-01
constexpr double kMillisecondsPerSecond = 1000;
constexpr double kNanosecondsPerSecond = 1e9;
// A double of today's interval is some 0.1 microseconds off; that much must not cost a millisecond.
constexpr double kMillisecondTolerance = 1e-3;

// Without the function for it, which is slow where the processor is to be any. Usual intervals are whole or
// positive, so that what is computed next need not wait for the comparison.
std::int64_t floorOf(double value) {
    const double within = std::clamp(value, -kFurthestInterval, kFurthestInterval);
    const auto whole = static_cast<std::int64_t>(within);
    if (static_cast<double>(whole) > within) [[unlikely]]
        return whole - 1;
    return whole;
}

} // namespace

namespace qb {

std::int64_t utcSecondsOf(NSTimeInterval interval) {
    return floorOf(interval) + kReferenceSeconds;
}

int millisecondOf(NSTimeInterval interval) {
    const double fraction =
        std::abs(interval) < kFurthestInterval ? interval - static_cast<double>(floorOf(interval)) : 0;
    return std::min(static_cast<int>(fraction * kMillisecondsPerSecond + kMillisecondTolerance), 999);
}

calendar::Moment momentOf(NSTimeInterval interval, const NSTimeZone *zone) {
    return calendar::momentAt(utcSecondsOf(interval), millisecondOf(interval), zone->rules());
}

// Apart from the usual date, which needs none of its registers.
[[gnu::noinline]] static NSString *unfixedText(NSTimeInterval interval, const NSTimeZone *zone,
                                               std::string_view format) {
    return NSString::stringWith(calendar::formatted(format, momentOf(interval, zone)));
}

NSString *dateText(NSTimeInterval interval, const NSTimeZone *zone, std::string_view format) {
    const calendar::FixedFormat &fixed = calendar::fixedFormat(format);
    const std::int64_t local = zone->rules().utcToLocal(utcSecondsOf(interval));
    return fixed.suits(local) ? fixedText(local, fixed) : unfixedText(interval, zone, format);
}

} // namespace qb

Class *NSDate::cls() {
    static const qb::Method methods[] = {
        qb::maker<"date">(&NSDate::setUp),
        qb::initialiser<"initWithTimeIntervalSinceReferenceDate:">(
            &NSDate::setUpWithTimeIntervalSinceReferenceDate),
        qb::maker<"dateWithTimeIntervalSinceReferenceDate:">(
            &NSDate::setUpWithTimeIntervalSinceReferenceDate),
        qb::initialiser<"initWithTimeIntervalSince1970:">(&NSDate::setUpWithTimeIntervalSince1970),
        qb::maker<"dateWithTimeIntervalSince1970:">(&NSDate::setUpWithTimeIntervalSince1970),
        qb::initialiser<"initWithTimeIntervalSinceNow:">(&NSDate::setUpWithTimeIntervalSinceNow),
        qb::maker<"dateWithTimeIntervalSinceNow:">(&NSDate::setUpWithTimeIntervalSinceNow),
        qb::initialiser<"initWithTimeInterval:sinceDate:">(&NSDate::setUpWithTimeInterval),
        qb::maker<"dateWithTimeInterval:sinceDate:">(&NSDate::setUpWithTimeInterval),
        qb::initialiser<"initWithCTime:">(&NSDate::setUpWithCTime),
        qb::maker<"dateWithCTime:">(&NSDate::setUpWithCTime),
        qb::initialiser<"initWithString:">(&NSDate::setUpWithString),
        qb::maker<"dateWithString:">(&NSDate::setUpWithString),
        qb::maker<"distantPast">(&NSDate::setUpInDistantPast),
        qb::maker<"distantFuture">(&NSDate::setUpInDistantFuture),
        qb::classMethod<"timeIntervalSinceReferenceDate">(&NSDate::timeIntervalSinceReferenceDateOfClass),
        qb::method<"timeIntervalSinceReferenceDate">(&NSDate::timeIntervalSinceReferenceDate),
        qb::method<"timeIntervalSince1970">(&NSDate::timeIntervalSince1970),
        qb::method<"timeIntervalSinceNow">(&NSDate::timeIntervalSinceNow),
        qb::method<"timeIntervalSinceDate:">(&NSDate::timeIntervalSinceDate),
        qb::method<"addTimeInterval:">(&NSDate::addTimeInterval),
        qb::method<"isEqualToDate:">(&NSDate::isEqualToDate),
        qb::method<"compare:", NSComparisonResult(id)>(&NSDate::compare),
        qb::method<"earlierDate:">(&NSDate::earlierDate),
        qb::method<"laterDate:">(&NSDate::laterDate),
        qb::method<"descriptionWithCalendarFormat:timeZone:locale:">(&NSDate::descriptionWithCalendarFormat),
        qb::method<"dateWithCalendarFormat:timeZone:">(&NSDate::dateWithCalendarFormat),
        qb::initialiser<"initWithCoder:">(&NSDate::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSDate::encodeWithCoder),
    };
    static Class *const self = new Class(
        "NSDate", NSObject::cls(),
        {methods, qb::tables::dateCTime(), qb::tables::dateMidnight(), qb::tables::dateQBDatabaseDate()},
        qb::construct<NSDate>, {"NSCopying", "NSCoding"});
    return self;
}

BOOL NSDate::setUp() {
    return setUpWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDateOfClass());
}

BOOL NSDate::setUpWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) {
    if (std::isnan(seconds))
        throw InvalidArgumentException("NSDate initWithTimeIntervalSinceReferenceDate: must have an interval "
                                       "that is a number.");
    interval_ = seconds;
    return YES;
}

BOOL NSDate::setUpWithTimeIntervalSince1970(NSTimeInterval seconds) {
    return setUpWithTimeIntervalSinceReferenceDate(seconds - NSTimeIntervalSince1970);
}

BOOL NSDate::setUpWithTimeIntervalSinceNow(NSTimeInterval seconds) {
    return setUpWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDateOfClass() + seconds);
}

BOOL NSDate::setUpWithTimeInterval(NSTimeInterval seconds, NSDate *sinceDate) {
    if (!sinceDate)
        throw InvalidArgumentException("NSDate initWithTimeInterval:sinceDate: must have a date.");
    return setUpWithTimeIntervalSinceReferenceDate(sinceDate->timeIntervalSinceReferenceDate() + seconds);
}

BOOL NSDate::setUpWithString(NSString *text) {
    const Ref<NSCalendarDate> date = NSCalendarDate::initWithString(text);
    return date && setUpWithTimeIntervalSinceReferenceDate(date->timeIntervalSinceReferenceDate());
}

BOOL NSDate::setUpInDistantPast() {
    return setUpWithTimeIntervalSinceReferenceDate(kDistantPast);
}

BOOL NSDate::setUpInDistantFuture() {
    return setUpWithTimeIntervalSinceReferenceDate(kDistantFuture);
}

NSTimeInterval NSDate::timeIntervalSinceReferenceDateOfClass() {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    const std::int64_t now = qb::sys::wallNanoseconds();
    const std::int64_t seconds = now / kNanoseconds;
    return static_cast<double>(seconds - kReferenceSeconds) +
           static_cast<double>(now % kNanoseconds) / kNanosecondsPerSecond;
}

NSTimeInterval NSDate::timeIntervalSinceNow() const {
    return timeIntervalSinceReferenceDate() - timeIntervalSinceReferenceDateOfClass();
}

NSTimeInterval NSDate::timeIntervalSinceDate(NSDate *other) const {
    if (!other)
        throw InvalidArgumentException("NSDate timeIntervalSinceDate: must have a date.");
    return timeIntervalSinceReferenceDate() - other->timeIntervalSinceReferenceDate();
}

NSDate *NSDate::addTimeInterval(NSTimeInterval seconds) const {
    const Ref<NSObject> object = classObject()->construct();
    auto *const date = static_cast<NSDate *>(object.get());
    const NSTimeInterval interval = timeIntervalSinceReferenceDate() + seconds;
    return date->setUpWithTimeIntervalSinceReferenceDate(interval) ? Ref<NSDate>(date).autorelease()
                                                                   : nullptr;
}

NSDate *NSDate::dateWith(TimePoint point) {
    // Seconds and fraction apart, because a double holds no nanoseconds since 1970.
    const auto second = std::chrono::floor<std::chrono::seconds>(point);
    return dateWithTimeIntervalSinceReferenceDate(qb::intervalOf(second.time_since_epoch().count()) +
                                                  std::chrono::duration<double>(point - second).count());
}

NSDate::TimePoint NSDate::timePoint() const {
    using std::chrono::duration_cast, std::chrono::seconds;
    const NSTimeInterval interval = timeIntervalSinceReferenceDate();
    const seconds second(qb::utcSecondsOf(interval));
    if (second >= duration_cast<seconds>(TimePoint::max().time_since_epoch()))
        return TimePoint::max();
    if (second <= duration_cast<seconds>(TimePoint::min().time_since_epoch()))
        return TimePoint::min();
    const std::chrono::duration<double> fraction(interval - std::floor(interval));
    return TimePoint(second) + duration_cast<TimePoint::duration>(fraction);
}

BOOL NSDate::isEqual(id other) const {
    return isEqualToDate(qb::castOrNil<NSDate>(other));
}

BOOL NSDate::isEqualToDate(NSDate *other) const {
    return other && other->timeIntervalSinceReferenceDate() == timeIntervalSinceReferenceDate();
}

std::uint32_t NSDate::hash() const {
    const double interval = timeIntervalSinceReferenceDate() + 0.0; // -0 becomes 0
    return qb::text::hashBytes(reinterpret_cast<const char *>(&interval), sizeof interval);
}

NSComparisonResult NSDate::compare(id other) const {
    auto *date = qb::castOrNil<NSDate>(other);
    if (!date)
        throw InvalidArgumentException("NSDate compare: must have an argument that is a date.");
    const NSTimeInterval own = timeIntervalSinceReferenceDate(),
                         others = date->timeIntervalSinceReferenceDate();
    return own < others ? NSOrderedAscending : own > others ? NSOrderedDescending : NSOrderedSame;
}

NSDate *NSDate::earlierDate(NSDate *other) const {
    return other && *other < *this ? other : static_cast<NSDate *>(self());
}

NSDate *NSDate::laterDate(NSDate *other) const {
    return other && *other > *this ? other : static_cast<NSDate *>(self());
}

NSString *NSDate::description() const {
    return qb::dateText(timeIntervalSinceReferenceDate(), NSTimeZone::gmt(), qb::kDefaultDateFormat);
}

NSString *NSDate::descriptionWithCalendarFormat(NSString *format, NSTimeZone *timeZone,
                                                NSDictionary *) const {
    return qb::dateText(timeIntervalSinceReferenceDate(), timeZone ? timeZone : NSTimeZone::defaultTimeZone(),
                        format ? format->view() : qb::kDefaultDateFormat);
}

NSCalendarDate *NSDate::dateWithCalendarFormat(NSString *format, NSTimeZone *timeZone) const {
    NSCalendarDate *const date =
        NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDate());
    date->setTimeZone(timeZone);
    date->setCalendarFormat(format);
    return date;
}
