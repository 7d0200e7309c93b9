#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Calendar/Zone.h"
#include "Foundation/DateParts.h"
#include "Foundation/NSCalendarDate.Tables.h"
#include "Foundation/NSDate.Tables.h"

std::span<const qb::Method> qb::tables::dateMidnight() {
    static const qb::Method methods[] = {
        qb::classMethod<"midnight">(&NSDate::midnightOfClass),
        qb::method<"midnight">(&NSDate::midnight),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::calendarDateMidnight() {
    static const qb::Method methods[] = {
        qb::method<"midnightOfTimeZone:">(&NSCalendarDate::midnightOfTimeZone),
    };
    return methods;
}

NSCalendarDate *NSDate::midnightOfClass() {
    return NSCalendarDate::calendarDate()->midnight();
}

NSCalendarDate *NSDate::midnight() const {
    return dateWithCalendarFormat(nullptr, nullptr)->midnight();
}

NSCalendarDate *NSCalendarDate::midnight() const {
    return midnightOfTimeZone(nullptr);
}

NSCalendarDate *NSCalendarDate::midnightOfTimeZone(NSTimeZone *timeZone) const {
    NSTimeZone *const zone = timeZone ? timeZone : NSTimeZone::defaultTimeZone();
    const qb::calendar::Fields now = qb::momentOf(timeIntervalSinceReferenceDate(), zone).fields;
    return dateAt(zone->rules().utcFromFields({now.year, now.month, now.day}), zone);
}
