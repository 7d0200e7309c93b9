// The time of day, and where it holds.
#ifndef QBFOUNDATION_OSADAPTOR_OSTIME_H
#define QBFOUNDATION_OSADAPTOR_OSTIME_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

class NSString;
class NSTimeZone;

/// Reads the clock of the wall. All operations are the class's; there are no objects.
class QB_EXPORT OSTime final : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the milliseconds since the epoch.
    static std::int64_t currentTimeMillis();
    /// Returns the local time as "%Y-%m-%d %H:%M:%S", autoreleased.
    static NSString *timeAsStringInSystemFormat();

    // --- Time zones ---

    /// Returns the zone of that name, autoreleased: an abbreviation such as "CEST", which stands for one
    /// offset, or else a name that `NSTimeZone` knows; nil when there is no such zone. For nil, the default
    /// zone of dates.
    ///
    /// Some names stand for others, by a list that is older than most of today's abbreviations: "MEZ" for
    /// "CET", "IST" for "GB-Eire", "CAT" and "AKST" for "HST".
    static NSTimeZone *timeZoneWithName(NSString *name);
    /// Returns the zone that the abbreviation of the system's standard time names, see `timeZoneWithName:`.
    /// Where there is no abbreviation, the one with the fixed offset that holds now.
    static NSTimeZone *timeZone();

private:
    OSTime() = default;
};

#endif
