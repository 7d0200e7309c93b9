// Instants.
#ifndef QBFOUNDATION_FOUNDATION_NSDATE_H
#define QBFOUNDATION_FOUNDATION_NSDATE_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Foundation/NSTimeZone.h>

#include <chrono>
#include <compare>
#include <cstdint>

class NSArray;
class NSCalendarDate;
class NSMutableArray;
class NSNumber;

/// A span of time in seconds.
using NSTimeInterval = double;

/// The seconds from 1970-01-01 00:00:00 GMT to the reference date.
constexpr NSTimeInterval NSTimeIntervalSince1970 = 978307200.0;

/// An instant: the seconds, with fractions, since the reference date 2001-01-01 00:00:00 GMT. It does not
/// change. Makers given an interval that is not a number throw InvalidArgumentException.
class QB_EXPORT NSDate : public NSObject {
public:
    /// A point of the C++ library's clock.
    using TimePoint = std::chrono::system_clock::time_point;

    NSDate() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns now, owned or autoreleased.
    static Ref<NSDate> init() { return qb::init<NSDate>(&NSDate::setUp); }
    static NSDate *date() { return init().autorelease(); }
    static Ref<NSDate> initWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) {
        return qb::init<NSDate>(&NSDate::setUpWithTimeIntervalSinceReferenceDate, seconds);
    }
    static NSDate *dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) {
        return initWithTimeIntervalSinceReferenceDate(seconds).autorelease();
    }
    static Ref<NSDate> initWithTimeIntervalSince1970(NSTimeInterval seconds) {
        return qb::init<NSDate>(&NSDate::setUpWithTimeIntervalSince1970, seconds);
    }
    static NSDate *dateWithTimeIntervalSince1970(NSTimeInterval seconds) {
        return initWithTimeIntervalSince1970(seconds).autorelease();
    }
    static Ref<NSDate> initWithTimeIntervalSinceNow(NSTimeInterval seconds) {
        return qb::init<NSDate>(&NSDate::setUpWithTimeIntervalSinceNow, seconds);
    }
    static NSDate *dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
        return initWithTimeIntervalSinceNow(seconds).autorelease();
    }
    /// Throws InvalidArgumentException when `date` is nil.
    static Ref<NSDate> initWithTimeInterval(NSTimeInterval seconds, NSDate *sinceDate) {
        return qb::init<NSDate>(&NSDate::setUpWithTimeInterval, seconds, sinceDate);
    }
    static NSDate *dateWithTimeInterval(NSTimeInterval seconds, NSDate *sinceDate) {
        return initWithTimeInterval(seconds, sinceDate).autorelease();
    }
    /// Returns the instant of a text in the form of `description`; nil when it has another form.
    static Ref<NSDate> initWithString(NSString *text) {
        return qb::init<NSDate>(&NSDate::setUpWithString, text);
    }
    static NSDate *dateWithString(NSString *text) { return initWithString(text).autorelease(); }
    static NSDate *dateWith(TimePoint point);
    /// Returns the first second of the year 1, and of the year 4001: earlier and later than what programs
    /// reckon with.
    static NSDate *distantPast() { return qb::init<NSDate>(&NSDate::setUpInDistantPast).autorelease(); }
    static NSDate *distantFuture() { return qb::init<NSDate>(&NSDate::setUpInDistantFuture).autorelease(); }

    // --- Intervals ---

    /// Returns the seconds from the reference date to now, to the receiver.
    static NSTimeInterval timeIntervalSinceReferenceDateOfClass();
    virtual NSTimeInterval timeIntervalSinceReferenceDate() const { return interval_; }
    virtual NSTimeInterval timeIntervalSince1970() const { return interval_ + NSTimeIntervalSince1970; }
    /// Returns the seconds from now to the receiver, negative when it has passed.
    virtual NSTimeInterval timeIntervalSinceNow() const;
    /// Returns the seconds from `other` to the receiver. Throws InvalidArgumentException when `other` is nil.
    virtual NSTimeInterval timeIntervalSinceDate(NSDate *other) const;
    /// Returns the instant `seconds` later, of the receiver's class, autoreleased. Throws
    /// InvalidUseOfMethodException when that class has no constructor.
    virtual NSDate *addTimeInterval(NSTimeInterval seconds) const;
    /// The instant on the C++ library's clock; the clock's first or last point when it is beyond its range.
    TimePoint timePoint() const;

    // --- Comparison ---

    /// Whether both are the same instant, of whatever class of dates.
    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToDate(NSDate *other) const;
    std::uint32_t hash() const override;
    /// Orders by time. Throws InvalidArgumentException when `other` is no date.
    NSComparisonResult compare(id other) const override;
    friend bool operator==(const NSDate &a, const NSDate &b) { return a.isEqual(b.self()); }
    friend std::weak_ordering operator<=>(const NSDate &a, const NSDate &b) {
        return a.compare(b.self()) <=> 0;
    }
    /// Returns the earlier or later of both, the receiver when they are the same or `other` is nil.
    virtual NSDate *earlierDate(NSDate *other) const;
    virtual NSDate *laterDate(NSDate *other) const;

    // --- Text ---

    /// Returns the date as "2001-01-01 00:00:00 +0000", in GMT.
    NSString *description() const override;
    /// Returns the date as text, autoreleased. `format`: as that of a calendar date; nil for the form of
    /// `description`. `timeZone`: nil for the default zone. The locale is ignored.
    virtual NSString *descriptionWithCalendarFormat(NSString *format, NSTimeZone *timeZone,
                                                    NSDictionary *locale) const;
    /// Returns the same instant as a calendar date, autoreleased; nil for the default format and zone.
    virtual NSCalendarDate *dateWithCalendarFormat(NSString *format, NSTimeZone *timeZone) const;

    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }

    // --- CTime ---

    // Seconds since 1970 in 32 bits, which end in January 2038. A date before or behind them has the first
    // or the last of them.

    static Ref<NSDate> initWithCTime(std::int32_t seconds) {
        return qb::init<NSDate>(&NSDate::setUpWithCTime, seconds);
    }
    static NSDate *dateWithCTime(std::int32_t seconds) { return initWithCTime(seconds).autorelease(); }
    /// Returns the seconds since 1970, a fraction cut off.
    virtual std::int32_t ctime() const;
    virtual NSNumber *ctimeAsNSNumber() const;
    /// Returns the format of `stringValue`, "%d.%m.%Y %H:%M" at first, valid until another one is set.
    static const char *stringValueFormat();
    /// Sets the format (copied) of `stringValue` for all dates, with the conversions of strftime; null for
    /// the first one.
    static void setStringValueFormat(const char *format);
    /// Returns the `ctime` in the system's zone by the `stringValueFormat` of the date's class, autoreleased;
    /// the empty text when that makes more than 1023 bytes. Names are those of the process's locale.
    NSString *stringValue() const override;

    // --- midnight ---

    /// Returns the beginning of today, of the receiver's day, in the default zone, autoreleased.
    static NSCalendarDate *midnightOfClass();
    virtual NSCalendarDate *midnight() const;

    // --- QBDatabaseDate ---

    /// Returns the beginning of the day that `string` says, the day first, in the default zone, autoreleased;
    /// nil when it says none, is empty or the null object.
    ///
    /// Day, month and year are separated by points, else by slashes, else by hyphens; or they are two digits
    /// each, the year perhaps four. The year, or year and month, may be missing and are the current ones
    /// then. Two digits up to 35 are a year after 2000, from 70 on one after 1900. The year must be 1971 to
    /// 2019.
    static NSCalendarDate *obsolete_dateWithString(id string);
    /// Returns day, month, year and hour, autoreleased: those of `array` without an empty last one, with the
    /// current month and year in place of missing ones, and with the hour 0 behind them.
    static NSMutableArray *_completeDateArray(NSArray *array);
    /// Returns the date of day, month and year, texts of digits, as `obsolete_dateWithString:` does.
    static NSCalendarDate *_dateWithArray(NSArray *array);

protected:
    BOOL setUp() override;
    /// The initialiser that all others of this class go through.
    virtual BOOL setUpWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds);
    virtual BOOL setUpWithTimeIntervalSince1970(NSTimeInterval seconds);
    virtual BOOL setUpWithTimeIntervalSinceNow(NSTimeInterval seconds);
    virtual BOOL setUpWithTimeInterval(NSTimeInterval seconds, NSDate *sinceDate);
    virtual BOOL setUpWithString(NSString *text);
    virtual BOOL setUpInDistantPast();
    virtual BOOL setUpInDistantFuture();
    virtual BOOL setUpWithCTime(std::int32_t seconds);
    BOOL setUpWithCoder(NSCoder *coder) override;

    NSTimeInterval interval_ = 0;
};

template <>
struct std::hash<NSDate> : qb::ValueHash {};

#endif
