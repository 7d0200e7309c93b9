#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Calendar/Format.h"
#include "Foundation/NSString.Tables.h"
#include "System/Clock.h"

#include <string>

namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;

/// Returns the second as 14 digits: "%Y%m%d%H%M%S" in GMT with the year padded to four.
std::string isoText(std::int64_t utcSeconds) {
    const qb::calendar::Moment moment = qb::calendar::momentAt(utcSeconds, 0, *qb::calendar::utc());
    const std::int64_t year = moment.fields.year;
    std::string text = year > 999 ? "" : year > 99 ? "0" : year > 9 ? "00" : "000";
    qb::calendar::appendFormatted(text, "%Y%m%d%H%M%S", moment);
    return text;
}

} // namespace

std::span<const qb::Method> qb::tables::stringISODateTime() {
    static const qb::Method methods[] = {
        qb::classMethod<"currentDateAsISODateTimeStringWithMilliSeconds">(
            &NSString::currentDateAsISODateTimeStringWithMilliSeconds),
    };
    return methods;
}

NSString *NSString::currentDateAsISODateTimeStringWithMilliSeconds() {
    const std::string now = isoText(qb::sys::wallMilliseconds() / kMillisecondsPerSecond);
    return stringWithRestrictedFormat(
        "%s%03d", now.c_str(),
        static_cast<std::int32_t>(qb::sys::wallMilliseconds() % kMillisecondsPerSecond));
}
