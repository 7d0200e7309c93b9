#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSTime.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Calendar/Stamp.h"
#include "Foundation/DateParts.h"
#include "Foundation/NSCalendarDate.Tables.h"
#include "Foundation/NSString.Tables.h"
#include "System/Clock.h"
#include "Text/Numbers.h"

#include <algorithm>
#include <string_view>

namespace {

using qb::calendar::Fields;

constexpr std::int64_t kMillisecondsPerSecond = 1000;
constexpr std::size_t kLengthWithMilliseconds = 17;

// Leap years are the calendar's business.
constexpr std::int64_t kDaysOfMonth[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool isDigits(std::string_view text, std::size_t count) {
    text = text.substr(0, text.find('\0'));
    return text.size() == count &&
           std::all_of(text.begin(), text.end(), [](char byte) { return byte >= '0' && byte <= '9'; });
}

/// Returns the number with which some characters of the text begin.
std::int64_t numberAt(const NSString *text, std::uint32_t position, std::uint32_t length) {
    if (!text->isAscii())
        return text->substringWithRange({position, length})->intValue();
    const char *const characters = text->cString() + position;
    return qb::text::parseInteger(characters, characters + length).value;
}

std::int64_t yearOfNow() {
    return qb::calendar::fieldsFromSeconds(qb::sys::wallSeconds()).year;
}

// Apart from the usual date, which needs none of its registers.
[[gnu::noinline]] Fields clampedFields(const NSString *text) {
    Fields fields;
    fields.year = numberAt(text, 0, 4);
    if (fields.year < 1)
        fields.year = yearOfNow();
    fields.month = std::clamp<std::int64_t>(numberAt(text, 4, 2), 1, 12);
    fields.day = std::clamp<std::int64_t>(numberAt(text, 6, 2), 1, kDaysOfMonth[fields.month - 1]);
    fields.hour = std::clamp<std::int64_t>(numberAt(text, 8, 2), 0, 23);
    fields.minute = std::clamp<std::int64_t>(numberAt(text, 10, 2), 0, 59);
    fields.second = std::clamp<std::int64_t>(numberAt(text, 12, 2), 0, 59);
    return fields;
}

} // namespace

std::span<const qb::Method> qb::tables::calendarDateISODateTime() {
    static const qb::Method methods[] = {
        qb::method<"asISODateTimeString">(&NSCalendarDate::asISODateTimeString),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::stringISODateTime() {
    static const qb::Method methods[] = {
        qb::classMethod<"currentDateAsISODateTimeStringWithMilliSeconds">(
            &NSString::currentDateAsISODateTimeStringWithMilliSeconds),
        qb::method<"isIsoDateTimeStringWithMilliseconds">(&NSString::isIsoDateTimeStringWithMilliseconds),
        qb::method<"asDateFromISODateTimeString">(&NSString::asDateFromISODateTimeString),
        qb::method<"asDateFromISODateTimeStringWithMilliseconds">(
            &NSString::asDateFromISODateTimeStringWithMilliseconds),
    };
    return methods;
}

NSString *NSCalendarDate::asISODateTimeString() const {
    const Fields fields = qb::calendar::fieldsFromSeconds(qb::utcSecondsOf(timeIntervalSinceReferenceDate()));
    const std::int64_t year = fields.year;
    if (year > 999 && year <= 9999)
        return NSString::initFilled(qb::calendar::kStampLength,
                                    [&fields](char *target) { qb::calendar::putStamp(fields, target); })
            .autorelease();
    NSString *const text =
        qb::dateText(timeIntervalSinceReferenceDate(), NSTimeZone::gmt(), qb::calendar::kStampPattern);
    if (year > 999)
        return text;
    return NSString::stringWithRestrictedFormat("%s%s", year > 99 ? "0" : year > 9 ? "00" : "000", text);
}

NSString *NSString::currentDateAsISODateTimeStringWithMilliSeconds() {
    NSString *const now = NSCalendarDate::calendarDate()->asISODateTimeString();
    return stringWithRestrictedFormat(
        "%s%03d", now, static_cast<std::int32_t>(OSTime::currentTimeMillis() % kMillisecondsPerSecond));
}

BOOL NSString::isIsoDateTimeString() const {
    return isDigits(view(), qb::calendar::kStampLength);
}

BOOL NSString::isIsoDateTimeStringWithMilliseconds() const {
    return isDigits(view(), kLengthWithMilliseconds);
}

NSCalendarDate *NSString::asDateFromISODateTimeString() const {
    if (cStringLength() == qb::calendar::kStampLength)
        if (const std::int64_t seconds = qb::calendar::secondsOfStamp(cString());
            seconds != qb::calendar::kNoSeconds)
            return NSCalendarDate::dateAt(seconds, NSTimeZone::gmt());
    if (length() != qb::calendar::kStampLength)
        return nullptr;
    return NSCalendarDate::dateAt(qb::calendar::secondsFromUsualFields(clampedFields(this)),
                                  NSTimeZone::gmt());
}

NSCalendarDate *NSString::asDateFromISODateTimeStringWithMilliseconds() const {
    if (!isIsoDateTimeStringWithMilliseconds())
        return nullptr;
    return stringWith(view().substr(0, qb::calendar::kStampLength))->asDateFromISODateTimeString();
}

id NSString::standardizedISODateTimeString() const {
    if (!containsData())
        return nullptr;
    NSMutableString *const digits =
        substringToIndex(std::min<std::uint32_t>(length(), qb::calendar::kStampLength))
            ->mutableCopy()
            .autorelease();
    while (digits->length() < qb::calendar::kStampLength)
        digits->append("0");
    return digits->asDateFromISODateTimeString()->asISODateTimeString();
}

id NSObject::standardizedISODateTimeString() const {
    NSString *const text = stringValue();
    return text ? text->standardizedISODateTimeString() : nullptr;
}
