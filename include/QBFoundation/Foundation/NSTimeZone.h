// Time zones as objects.
#ifndef QBFOUNDATION_FOUNDATION_NSTIMEZONE_H
#define QBFOUNDATION_FOUNDATION_NSTIMEZONE_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>

#include <cstdint>
#include <memory>

class NSDate;

namespace qb::calendar {
class Zone;
}

/// What the clocks of a place show at each instant; it does not change.
///
/// A zone is found by a name of the system's zone database ("Europe/Berlin"), "GMT" with a sign and hours
/// ("GMT-11"), "+hhmm" or "-hhmm", east positive, and any of these or an abbreviation with " DST" behind it,
/// one hour ahead. Names of files that count leap seconds ("right/Europe/Berlin") are none, and UTC as TZ.
/// Zones are equal when their names and their clocks are.
class QB_EXPORT NSTimeZone : public NSObject {
public:
    /// GMT, until it is set up.
    NSTimeZone();
    ~NSTimeZone() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns the zone of that name, owned or autoreleased; nil when there is none.
    static Ref<NSTimeZone> initWithName(NSString *name) {
        return qb::init<NSTimeZone>(&NSTimeZone::setUpWithName, name);
    }
    static NSTimeZone *timeZoneWithName(NSString *name) { return initWithName(name).autorelease(); }
    /// Returns the fixed zone that an abbreviation such as "CEST" stands for, autoreleased; else as
    /// `timeZoneWithName:`.
    static NSTimeZone *timeZoneWithAbbreviation(NSString *abbreviation) {
        return qb::init<NSTimeZone>(&NSTimeZone::setUpWithAbbreviation, abbreviation).autorelease();
    }
    /// Returns a zone that is so many seconds east of Greenwich for ever, named "+0130", or "GMT" for 0,
    /// autoreleased; nil beyond 26 hours, further than the clocks of any place.
    static NSTimeZone *timeZoneForSecondsFromGMT(std::int32_t seconds) {
        return qb::init<NSTimeZone>(&NSTimeZone::setUpForSecondsFromGMT, seconds).autorelease();
    }

    // --- The zones of the process ---

    /// Returns GMT, always the same object.
    static NSTimeZone *gmt();
    /// Returns the zone that the system is set to, by the variable TZ or else /etc/localtime.
    static NSTimeZone *systemTimeZone();
    /// Makes the next `systemTimeZone` look anew at what the system is set to.
    static void resetSystemTimeZone();
    /// Returns the zone of dates made without one: the one that was set, else the system's.
    static NSTimeZone *defaultTimeZone();
    /// Sets the default zone; nil makes it the system's again.
    static void setDefaultTimeZone(NSTimeZone *zone);
    /// Returns the default zone as it is now.
    static NSTimeZone *localTimeZone() { return defaultTimeZone(); }
    /// Returns the names in the system's zone database and "GMT", sorted, autoreleased.
    static NSArray *knownTimeZoneNames();

    // --- Clocks ---

    NSString *name() const;
    /// How many seconds the clocks are ahead of GMT, at `date` or now.
    virtual std::int32_t secondsFromGMT() const;
    virtual std::int32_t secondsFromGMTForDate(NSDate *date) const;
    /// Returns the abbreviation that holds at `date`, or now, such as "CEST", autoreleased.
    virtual NSString *abbreviation() const;
    virtual NSString *abbreviationForDate(NSDate *date) const;
    /// Whether the clocks are ahead for summer, at `date` or now.
    virtual BOOL isDaylightSavingTime() const;
    virtual BOOL isDaylightSavingTimeForDate(NSDate *date) const;

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToTimeZone(NSTimeZone *other) const;
    std::uint32_t hash() const override;
    friend bool operator==(const NSTimeZone &a, const NSTimeZone &b) { return a.isEqual(b.self()); }

    // --- What every value answers ---

    /// Returns the name.
    NSString *description() const override { return name(); }
    /// Writes the name, of a zone with one offset that too. The system's zone from a file outside of the
    /// database is found again where it is the system's.
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }

    /// The rules behind the object, for the dates.
    const qb::calendar::Zone &rules() const { return *zone_; }

protected:
    virtual BOOL setUpWithName(NSString *name);
    virtual BOOL setUpWithAbbreviation(NSString *abbreviation);
    virtual BOOL setUpForSecondsFromGMT(std::int32_t seconds);
    BOOL setUpWithCoder(NSCoder *coder) override;

private:
    using Rules = std::shared_ptr<const qb::calendar::Zone>;

    BOOL setUpWithRules(Rules zone);

    Rules zone_;
};

template <>
struct std::hash<NSTimeZone> : qb::ValueHash {};

#endif
