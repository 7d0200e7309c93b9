#include <QBFoundation/OSAdaptor/OSTime.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Foundation/NSTimeZone.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSTime.Text.h"
#include "System/Clock.h"

#include <string_view>

namespace {

struct Alias {
    std::string_view name;
    std::string_view zone;
};

// Kept as they have always been, whatever is usual today.
constexpr Alias kAliases[] = {
    {"TAI", "GMT"},
    {"UT", "GMT"},
    {"Z", "GMT"},
    {"IST", "GB-Eire"},
    {"WEST", "WET DST"},
    {"WAT", "GMT-1"},
    {"AT", "GMT-2"},
    {"MT", "MST"},
    {"PT", "PST"},
    {"CAT", "HST"},
    {"AHST", "HST"},
    {"AKST", "HST"},
    {"AKDT", "HDT"},
    {"CCT", "GMT+8"},
    {"EAST", "EST"},
    {"EADT", "EDT"},
    {"NT", "GMT-11"},
    {"IDLW", "GMT-12"},
    {"FWT", "CET"},
    {"FST", "CET"},
    {"MEZ", "CET"},
    {"MESZ", "CEST"},
    {"MEST", "CEST"},
    {"MEWT", "CET"},
    {"SWT", "CET"},
    {"EEST", "EET DST"},
    {"BT", "GMT+3"},
    {"MSK", "W-SU"},
    {"WAST", "Australia/West"},
    {"WADT", "Australia/West"},
    {"GST", "GMT+10"},
    {"IDLE", "GMT+12"},
};

NSString *withoutAlias(NSString *name) {
    for (const Alias &alias : kAliases)
        if (alias.name == name->view())
            return NSString::stringWith(alias.zone);
    return name;
}

} // namespace

Class *OSTime::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"currentTimeMillis">(&OSTime::currentTimeMillis),
        qb::classMethod<"timeAsStringInSystemFormat">(&OSTime::timeAsStringInSystemFormat),
        qb::classMethod<"timeZoneWithName:">(&OSTime::timeZoneWithName),
        qb::classMethod<"timeZone">(&OSTime::timeZone),
    };
    static Class *const self = new Class("OSTime", OSObject::cls(), methods);
    return self;
}

std::int64_t OSTime::currentTimeMillis() {
    return qb::sys::wallMilliseconds();
}

NSString *OSTime::timeAsStringInSystemFormat() {
    return NSString::stringWith(qb::currentTimeText());
}

NSTimeZone *OSTime::timeZoneWithName(NSString *name) {
    if (!name)
        return NSTimeZone::defaultTimeZone();
    NSString *const known = withoutAlias(name);
    NSTimeZone *const zone = NSTimeZone::timeZoneWithAbbreviation(known);
    return zone ? zone : NSTimeZone::timeZoneWithName(known);
}

NSTimeZone *OSTime::timeZone() {
    if (const char *const name = qb::sys::standardZoneName(); *name)
        return timeZoneWithName(NSString::stringWithCString(name));
    const qb::sys::LocalTime local = qb::sys::localTime();
    return NSTimeZone::timeZoneForSecondsFromGMT((local.minutesWest - (local.isDaylightSaving ? 60 : 0)) *
                                                 -60);
}
