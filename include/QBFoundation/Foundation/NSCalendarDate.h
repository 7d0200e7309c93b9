// Instants as a calendar shows them.
#ifndef QBFOUNDATION_FOUNDATION_NSCALENDARDATE_H
#define QBFOUNDATION_FOUNDATION_NSCALENDARDATE_H

#include <QBFoundation/Foundation/NSDate.h>

/// An instant with the time zone and the format in which it is shown, both of which can be changed; the
/// instant can't. The calendar is the Gregorian, also for the time before it was in use.
///
/// A format has these conversions, with English names: %a %A weekday, %b %B month, %d %e day (with a leading
/// zero; with a blank), %H hour, %I hour 1 to 12 with %p AM or PM, %M minute, %S second, %F milliseconds, %j
/// day of the year, %m month, %w weekday (0 Sunday), %u weekday (1 Monday), %y year of the century, %Y year,
/// %G %V year and week of ISO 8601, %z offset (+hhmm), %Z abbreviation of the zone, %s seconds since 1970, %c
/// "%a %b %e %H:%M:%S %Y", %x "%m/%d/%y", %X "%H:%M:%S", %%. Anything else stands for itself.
///
/// Dates that the calendar has not become the date that many days after the first of the month: 29 February
/// 2003 is 1 March. A local time that a change of the clocks skips or doubles takes the offset before it. A
/// field that does not fit its type has the type's largest or smallest value.
class QB_EXPORT NSCalendarDate : public NSDate {
public:
    /// Shown in the default zone.
    NSCalendarDate();
    ~NSCalendarDate() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns now in the default zone, owned or autoreleased.
    static Ref<NSCalendarDate> init() { return qb::init<NSCalendarDate>(&NSCalendarDate::setUp); }
    static NSCalendarDate *calendarDate() { return init().autorelease(); }
    static NSCalendarDate *date() { return calendarDate(); }
    static Ref<NSCalendarDate> initWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithTimeIntervalSinceReferenceDate, seconds);
    }
    static NSCalendarDate *dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) {
        return initWithTimeIntervalSinceReferenceDate(seconds).autorelease();
    }
    static Ref<NSCalendarDate> initWithTimeIntervalSince1970(NSTimeInterval seconds) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithTimeIntervalSince1970, seconds);
    }
    static NSCalendarDate *dateWithTimeIntervalSince1970(NSTimeInterval seconds) {
        return initWithTimeIntervalSince1970(seconds).autorelease();
    }
    static Ref<NSCalendarDate> initWithTimeIntervalSinceNow(NSTimeInterval seconds) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithTimeIntervalSinceNow, seconds);
    }
    static NSCalendarDate *dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
        return initWithTimeIntervalSinceNow(seconds).autorelease();
    }
    static Ref<NSCalendarDate> initWithTimeInterval(NSTimeInterval seconds, NSDate *sinceDate) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithTimeInterval, seconds, sinceDate);
    }
    static NSCalendarDate *dateWithTimeInterval(NSTimeInterval seconds, NSDate *sinceDate) {
        return initWithTimeInterval(seconds, sinceDate).autorelease();
    }
    static Ref<NSCalendarDate> initWithCTime(std::int32_t seconds) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithCTime, seconds);
    }
    static NSCalendarDate *dateWithCTime(std::int32_t seconds) {
        return initWithCTime(seconds).autorelease();
    }
    /// Returns the second `utcSeconds` after 1970, shown in `timeZone`, autoreleased.
    static NSCalendarDate *dateAt(std::int64_t utcSeconds, NSTimeZone *timeZone);
    /// Returns the instant at which the clocks of `timeZone` (nil: the default) show those values, shown in
    /// that zone. Values outside of their usual ranges carry: month 13 is the next January, day 0 the last of
    /// the month before.
    static Ref<NSCalendarDate> initWithYear(std::int32_t year, std::int32_t month, std::int32_t day,
                                            std::int32_t hour, std::int32_t minute, std::int32_t second,
                                            NSTimeZone *timeZone) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithYear, year, month, day, hour, minute,
                                        second, timeZone);
    }
    static NSCalendarDate *dateWithYear(std::int32_t year, std::int32_t month, std::int32_t day,
                                        std::int32_t hour, std::int32_t minute, std::int32_t second,
                                        NSTimeZone *timeZone) {
        return initWithYear(year, month, day, hour, minute, second, timeZone).autorelease();
    }
    /// Returns the date that `text` says by `calendarFormat`, which is also how it is shown; nil when the
    /// text does not fit it, or names a zone that does not exist.
    ///
    /// Blanks in the format match any blanks or none, names are read in any case, short or long, and numbers
    /// may have fewer digits. Weekdays and %G and %V are read but decide nothing. What the text leaves out is
    /// that of 1 January of the current year, midnight, in the default zone.
    static Ref<NSCalendarDate> initWithString(NSString *text, NSString *calendarFormat) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithStringFormat, text, calendarFormat);
    }
    static NSCalendarDate *dateWithString(NSString *text, NSString *calendarFormat) {
        return initWithString(text, calendarFormat).autorelease();
    }
    /// As above, by the format of `description`.
    static Ref<NSCalendarDate> initWithString(NSString *text) {
        return qb::init<NSCalendarDate>(&NSCalendarDate::setUpWithString, text);
    }
    static NSCalendarDate *dateWithString(NSString *text) { return initWithString(text).autorelease(); }

    // --- Fields ---

    /// The year; 0 is the year before the first.
    virtual std::int32_t yearOfCommonEra() const;
    virtual std::int32_t monthOfYear() const;
    virtual std::int32_t dayOfMonth() const;
    /// 0 Sunday to 6 Saturday.
    virtual std::int32_t dayOfWeek() const;
    /// 1 to 366.
    virtual std::int32_t dayOfYear() const;
    /// The days since the end of the year 0: 1 is the first day of the year 1.
    virtual std::int32_t dayOfCommonEra() const;
    virtual std::int32_t hourOfDay() const;
    virtual std::int32_t minuteOfHour() const;
    virtual std::int32_t secondOfMinute() const;

    virtual NSTimeZone *timeZone() const;
    /// Sets the zone in which the instant is shown; nil for the default zone.
    virtual void setTimeZone(NSTimeZone *zone);
    virtual NSString *calendarFormat() const;
    /// Sets the format (copied) of `description`; nil for "%Y-%m-%d %H:%M:%S %z".
    virtual void setCalendarFormat(NSString *format);

    // --- Arithmetic ---

    /// Returns the date with those values added, with the receiver's zone and format, autoreleased.
    ///
    /// Years, months and days move the date while the clocks show the same time of day; hours, minutes and
    /// seconds are time that passes. Every value may be negative.
    virtual NSCalendarDate *dateByAddingYears(std::int32_t years, std::int32_t months, std::int32_t days,
                                              std::int32_t hours, std::int32_t minutes,
                                              std::int32_t seconds) const;
    /// Stores what `dateByAddingYears:…` has to add to `date`, seen in the receiver's zone, to get the
    /// receiver's second: all values of one sign, each as large as it can be. A null pointer leaves its value
    /// to the smaller ones. Throws InvalidArgumentException when `date` is nil.
    virtual void years(std::int32_t *years, std::int32_t *months, std::int32_t *days, std::int32_t *hours,
                       std::int32_t *minutes, std::int32_t *seconds, NSDate *sinceDate) const;
    NSDate *addTimeInterval(NSTimeInterval seconds) const override;

    // --- Text ---

    /// Returns the date by the calendar format, in the zone.
    NSString *description() const override;
    /// Returns the date by `format` (nil: the calendar format), in the zone.
    virtual NSString *descriptionWithCalendarFormat(NSString *format) const;
    using NSDate::descriptionWithCalendarFormat;

    void encodeWithCoder(NSCoder *coder) const override;
    /// Returns a date of the same instant, zone and format that can be changed by itself.
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override { return copyWithZone(zone); }
    Ref<NSCalendarDate> copy() const;

    // --- ISODateTime ---

    /// Returns the second in GMT as 14 digits, autoreleased: year, month, day, hour, minute, second.
    virtual NSString *asISODateTimeString() const;

    // --- midnight ---

    /// Returns the beginning of the receiver's day in that zone (nil: the default), shown in it,
    /// autoreleased.
    virtual NSCalendarDate *midnightOfTimeZone(NSTimeZone *timeZone) const;
    NSCalendarDate *midnight() const override;

protected:
    BOOL setUp() override;
    virtual BOOL setUpWithYear(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                               std::int32_t minute, std::int32_t second, NSTimeZone *timeZone);
    BOOL setUpWithString(NSString *text) override;
    virtual BOOL setUpWithStringFormat(NSString *text, NSString *calendarFormat);
    BOOL setUpWithCoder(NSCoder *coder) override;

private:
    NSCalendarDate(NSTimeInterval interval, NSTimeZone *zone);

    NSCalendarDate *shownAt(NSTimeInterval interval) const;

    Ref<NSTimeZone> zone_; // never null
    Ref<NSString> format_; // null: the default
};

template <>
struct std::hash<NSCalendarDate> : qb::ValueHash {};

#endif
