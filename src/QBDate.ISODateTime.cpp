#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSTime.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSCalendarDate.Tables.h"
#include "Foundation/NSString.Tables.h"

namespace {
constexpr std::int64_t kMillisecondsPerSecond = 1000;
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
    };
    return methods;
}

NSString *NSCalendarDate::asISODateTimeString() const {
    const Ref<NSCalendarDate> date = copy();
    date->setTimeZone(NSTimeZone::gmt());
    NSString *const text = date->descriptionWithCalendarFormat("%Y%m%d%H%M%S"_ns);
    const std::int32_t year = date->yearOfCommonEra();
    if (year > 999)
        return text;
    return NSString::stringWithRestrictedFormat("%s%s", year > 99 ? "0" : year > 9 ? "00" : "000", text);
}

NSString *NSString::currentDateAsISODateTimeStringWithMilliSeconds() {
    NSString *const now = NSCalendarDate::calendarDate()->asISODateTimeString();
    return stringWithRestrictedFormat(
        "%s%03d", now, static_cast<std::int32_t>(OSTime::currentTimeMillis() % kMillisecondsPerSecond));
}
