#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Calendar/FixedFormat.h"
#include "Calendar/Zone.h"
#include "Foundation/DateParts.h"
#include "Foundation/NSDate.Tables.h"

#include <algorithm>
#include <ctime>
#include <string>
#include <string_view>

namespace {

using qb::calendar::Moment;

constexpr std::string_view kFirstFormat = "%d.%m.%Y %H:%M";
constexpr std::size_t kMostBytes = 1024; // with a NUL

/// Whether strftime would write the same whatever the locale is, which is what `appendFormatted` writes.
bool isFreeOfLocale(std::string_view format) {
    for (std::size_t percent = format.find('%'); percent != std::string_view::npos;
         percent = format.find('%', percent + 2))
        if (percent + 1 == format.size() ||
            std::string_view("deGHIjmMSuVwyYzZ%").find(format[percent + 1]) == std::string_view::npos)
            return false;
    return true;
}

struct StoredFormat {
    explicit StoredFormat(std::string_view format)
        : text(format), isFree(isFreeOfLocale(format)), fixed(format) {}

    std::string text;
    bool isFree;
    qb::calendar::FixedFormat fixed;
};

// Never destroyed, because dates may outlive main().
StoredFormat &storedFormat() {
    static auto &format = *new StoredFormat(kFirstFormat);
    return format;
}

std::string textByStrftime(const char *format, const Moment &moment, bool isDst) {
    const std::int64_t days = qb::calendar::daysFromCivil(
        moment.fields.year, static_cast<int>(moment.fields.month), static_cast<int>(moment.fields.day));
    const std::string abbreviation(moment.zoneAbbreviation);
    std::tm parts{};
    parts.tm_year = static_cast<int>(moment.fields.year - 1900);
    parts.tm_mon = static_cast<int>(moment.fields.month - 1);
    parts.tm_mday = static_cast<int>(moment.fields.day);
    parts.tm_hour = static_cast<int>(moment.fields.hour);
    parts.tm_min = static_cast<int>(moment.fields.minute);
    parts.tm_sec = static_cast<int>(moment.fields.second);
    parts.tm_wday = qb::calendar::weekdayFromDays(days);
    parts.tm_yday = qb::calendar::dayOfYearFromDays(days) - 1;
    parts.tm_isdst = isDst;
    parts.tm_gmtoff = moment.offset;
    parts.tm_zone = abbreviation.c_str();
    char text[kMostBytes];
    return {text, std::strftime(text, sizeof text, format, &parts)};
}

NSString *textOf(std::int32_t seconds, const qb::calendar::Zone &zone, const StoredFormat &format) {
    const Moment moment = qb::calendar::momentAt(seconds, 0, zone);
    const std::string text = format.isFree
                                 ? qb::calendar::formatted(format.text, moment)
                                 : textByStrftime(format.text.c_str(), moment, zone.offsetAt(seconds).isDst);
    return NSString::stringWith(text.size() < kMostBytes ? text : std::string_view());
}

// The format that a client's class answers; null for the library's own ones, whose answer is known.
const char *formatOfClass(Class *cls) {
    const bool isOurs = cls == NSCalendarDate::cls() || cls == NSDate::cls();
    return isOurs ? nullptr : send<const char *>(cls, "stringValueFormat"_sel);
}

} // namespace

std::span<const qb::Method> qb::tables::dateCTime() {
    static const qb::Method methods[] = {
        qb::method<"ctime">(&NSDate::ctime),
        qb::method<"ctimeAsNSNumber">(&NSDate::ctimeAsNSNumber),
        qb::classMethod<"stringValueFormat">(&NSDate::stringValueFormat),
        qb::classMethod<"setStringValueFormat:">(&NSDate::setStringValueFormat),
    };
    return methods;
}

BOOL NSDate::setUpWithCTime(std::int32_t seconds) {
    return setUpWithTimeIntervalSince1970(seconds);
}

std::int32_t NSDate::ctime() const {
    const double seconds = timeIntervalSince1970();
    if (seconds >= INT32_MIN && seconds <= INT32_MAX) [[likely]]
        return static_cast<std::int32_t>(seconds);
    return seconds > 0 ? INT32_MAX : INT32_MIN;
}

NSNumber *NSDate::ctimeAsNSNumber() const {
    return NSNumber::numberWithInt(ctime());
}

const char *NSDate::stringValueFormat() {
    return storedFormat().text.c_str();
}

void NSDate::setStringValueFormat(const char *format) {
    storedFormat() = StoredFormat(format ? format : kFirstFormat);
}

NSString *NSDate::stringValue() const {
    const std::int32_t seconds = ctime();
    const char *const own = formatOfClass(classObject()); // which may ask for another zone
    const qb::calendar::Zone &zone = *qb::calendar::systemZone();
    const StoredFormat &format = storedFormat();
    if (own && own != format.text.c_str())
        return textOf(seconds, zone, StoredFormat(own));
    const std::int64_t local = zone.utcToLocal(seconds);
    return format.isFree && format.fixed.suits(local) ? qb::fixedText(local, format.fixed)
                                                      : textOf(seconds, zone, format);
}
