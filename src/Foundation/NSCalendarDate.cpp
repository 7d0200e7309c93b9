#include <QBFoundation/Foundation/NSCalendarDate.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/DateParts.h"
#include "Foundation/NSCalendarDate.Tables.h"
#include "Foundation/Required.h"

#include <algorithm>

namespace {

using qb::calendar::Fields;

// The last day of the year 0, counted from 1970.
constexpr std::int64_t kDayBeforeCommonEra = qb::calendar::daysFromCivil(0, 12, 31);

std::int32_t fitted(std::int64_t value) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

std::int64_t daysOf(const Fields &fields) {
    return qb::calendar::daysFromCivil(fields.year, static_cast<int>(fields.month),
                                       static_cast<int>(fields.day));
}

/// Returns the zone that a text named; nil when there is none of that name.
NSTimeZone *zoneOf(const qb::calendar::ParsedDate &parsed) {
    if (parsed.offset)
        return NSTimeZone::timeZoneForSecondsFromGMT(*parsed.offset);
    if (!parsed.zoneName.empty())
        return NSTimeZone::timeZoneWithAbbreviation(NSString::stringWith(parsed.zoneName));
    return NSTimeZone::defaultTimeZone();
}

} // namespace

Class *NSCalendarDate::cls() {
    static const qb::Method methods[] = {
        qb::maker<"calendarDate">(&NSCalendarDate::setUp),
        qb::initialiser<"initWithYear:month:day:hour:minute:second:timeZone:">(
            &NSCalendarDate::setUpWithYear),
        qb::maker<"dateWithYear:month:day:hour:minute:second:timeZone:">(&NSCalendarDate::setUpWithYear),
        qb::initialiser<"initWithString:calendarFormat:">(&NSCalendarDate::setUpWithStringFormat),
        qb::maker<"dateWithString:calendarFormat:">(&NSCalendarDate::setUpWithStringFormat),
        qb::method<"yearOfCommonEra">(&NSCalendarDate::yearOfCommonEra),
        qb::method<"monthOfYear">(&NSCalendarDate::monthOfYear),
        qb::method<"dayOfMonth">(&NSCalendarDate::dayOfMonth),
        qb::method<"dayOfWeek">(&NSCalendarDate::dayOfWeek),
        qb::method<"dayOfYear">(&NSCalendarDate::dayOfYear),
        qb::method<"dayOfCommonEra">(&NSCalendarDate::dayOfCommonEra),
        qb::method<"hourOfDay">(&NSCalendarDate::hourOfDay),
        qb::method<"minuteOfHour">(&NSCalendarDate::minuteOfHour),
        qb::method<"secondOfMinute">(&NSCalendarDate::secondOfMinute),
        qb::method<"timeZone">(&NSCalendarDate::timeZone),
        qb::method<"setTimeZone:">(&NSCalendarDate::setTimeZone),
        qb::method<"calendarFormat">(&NSCalendarDate::calendarFormat),
        qb::method<"setCalendarFormat:">(&NSCalendarDate::setCalendarFormat),
        qb::method<"dateByAddingYears:months:days:hours:minutes:seconds:">(
            &NSCalendarDate::dateByAddingYears),
        qb::method<"years:months:days:hours:minutes:seconds:sinceDate:">(&NSCalendarDate::years),
        qb::method<"descriptionWithCalendarFormat:", NSString *(NSString *)>(
            &NSCalendarDate::descriptionWithCalendarFormat),
        qb::initialiser<"initWithCoder:">(&NSCalendarDate::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSCalendarDate::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSCalendarDate", NSDate::cls(),
                  {methods, qb::tables::calendarDateISODateTime(), qb::tables::calendarDateMidnight()},
                  qb::construct<NSCalendarDate>);
    return self;
}

NSCalendarDate::NSCalendarDate() : zone_(NSTimeZone::defaultTimeZone()) {}
NSCalendarDate::NSCalendarDate(NSTimeInterval interval, NSTimeZone *zone) : zone_(zone) {
    interval_ = interval;
}

NSCalendarDate::~NSCalendarDate() = default;

NSCalendarDate *NSCalendarDate::dateAt(std::int64_t utcSeconds, NSTimeZone *timeZone) {
    return Ref<NSCalendarDate>::adopt(new NSCalendarDate(qb::intervalOf(utcSeconds), timeZone)).autorelease();
}

BOOL NSCalendarDate::setUp() {
    return NSDate::setUp();
}

BOOL NSCalendarDate::setUpWithYear(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                                   std::int32_t minute, std::int32_t second, NSTimeZone *timeZone) {
    setTimeZone(timeZone);
    return setUpWithTimeIntervalSinceReferenceDate(
        qb::intervalOf(zone_->rules().utcFromFields({year, month, day, hour, minute, second})));
}

BOOL NSCalendarDate::setUpWithString(NSString *text) {
    return setUpWithStringFormat(text, nullptr);
}

BOOL NSCalendarDate::setUpWithStringFormat(NSString *text, NSString *calendarFormat) {
    setCalendarFormat(calendarFormat);
    qb::calendar::ParsedDate parsed;
    parsed.fields.year = qb::momentOf(timeIntervalSinceReferenceDateOfClass(), zone_).fields.year;
    if (!text || !qb::calendar::parseDate(text->view(), this->calendarFormat()->view(), parsed))
        return NO;
    NSTimeZone *const zone = zoneOf(parsed);
    if (!zone)
        return NO;
    setTimeZone(zone);
    const std::int64_t seconds =
        parsed.utcSeconds ? *parsed.utcSeconds : zone->rules().utcFromFields(parsed.fields);
    return setUpWithTimeIntervalSinceReferenceDate(qb::intervalOf(seconds, parsed.millisecond));
}

std::int32_t NSCalendarDate::yearOfCommonEra() const {
    return fitted(qb::momentOf(interval_, zone_).fields.year);
}

std::int32_t NSCalendarDate::monthOfYear() const {
    return static_cast<std::int32_t>(qb::momentOf(interval_, zone_).fields.month);
}

std::int32_t NSCalendarDate::dayOfMonth() const {
    return static_cast<std::int32_t>(qb::momentOf(interval_, zone_).fields.day);
}

std::int32_t NSCalendarDate::dayOfWeek() const {
    return qb::calendar::weekdayFromDays(daysOf(qb::momentOf(interval_, zone_).fields));
}

std::int32_t NSCalendarDate::dayOfYear() const {
    return qb::calendar::dayOfYearFromDays(daysOf(qb::momentOf(interval_, zone_).fields));
}

std::int32_t NSCalendarDate::dayOfCommonEra() const {
    return fitted(daysOf(qb::momentOf(interval_, zone_).fields) - kDayBeforeCommonEra);
}

std::int32_t NSCalendarDate::hourOfDay() const {
    return static_cast<std::int32_t>(qb::momentOf(interval_, zone_).fields.hour);
}

std::int32_t NSCalendarDate::minuteOfHour() const {
    return static_cast<std::int32_t>(qb::momentOf(interval_, zone_).fields.minute);
}

std::int32_t NSCalendarDate::secondOfMinute() const {
    return static_cast<std::int32_t>(qb::momentOf(interval_, zone_).fields.second);
}

NSTimeZone *NSCalendarDate::timeZone() const {
    return Ref<NSTimeZone>(zone_).autorelease();
}

void NSCalendarDate::setTimeZone(NSTimeZone *zone) {
    zone_ = zone ? zone : NSTimeZone::defaultTimeZone();
}

NSString *NSCalendarDate::calendarFormat() const {
    return format_ ? Ref<NSString>(format_).autorelease() : NSString::stringWith(qb::kDefaultDateFormat);
}

void NSCalendarDate::setCalendarFormat(NSString *format) {
    format_ = format ? format->copy() : nullptr;
}

NSCalendarDate *NSCalendarDate::shownAt(NSTimeInterval interval) const {
    const Ref<NSCalendarDate> date = copy();
    date->setUpWithTimeIntervalSinceReferenceDate(interval);
    return Ref<NSCalendarDate>(date).autorelease();
}

NSDate *NSCalendarDate::addTimeInterval(NSTimeInterval seconds) const {
    return shownAt(interval_ + seconds);
}

NSString *NSCalendarDate::description() const {
    return descriptionWithCalendarFormat(nullptr);
}

NSString *NSCalendarDate::descriptionWithCalendarFormat(NSString *format) const {
    return qb::dateText(interval_, zone_, (format ? format : calendarFormat())->view());
}

Ref<NSObject> NSCalendarDate::copyWithZone(void *) const {
    Ref<NSObject> object = classObject()->construct();
    auto *date = static_cast<NSCalendarDate *>(object.get());
    date->interval_ = interval_;
    date->zone_ = zone_;
    date->format_ = format_;
    return object;
}

Ref<NSCalendarDate> NSCalendarDate::copy() const {
    return qb::requiredCopy(this, "NSCalendarDate copyWithZone:");
}
