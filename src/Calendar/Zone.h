// Time zones.
#ifndef QBFOUNDATION_CALENDAR_ZONE_H
#define QBFOUNDATION_CALENDAR_ZONE_H

#include "Civil.h"
#include "ZoneFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qb::calendar {

/// What the clocks of a place show at each instant. Immutable; for one thread, since it remembers its latest
/// answers.
class Zone {
public:
    /// Serves the functions below. `advance`: seconds that all clocks are ahead of `data`, then as daylight
    /// saving time under the zone's name.
    Zone(std::string name, ZoneData data, std::int32_t advance = 0);
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;

    const std::string &name() const { return name_; }

    /// Returns whether the clocks never change.
    bool isFixed() const;

    /// Returns the local time in force at `utcSeconds` after 1970-01-01.
    ZoneOffset offsetAt(std::int64_t utcSeconds) const { return remembered(utcSeconds).offset; }

    /// Returns the stretch around `utcSeconds` without a change; the next change of the clocks is at its
    /// `end`.
    ZoneRange rangeAt(std::int64_t utcSeconds) const { return remembered(utcSeconds); }

    /// Returns the UTC seconds of a local time, given as seconds after 1970-01-01 00:00:00 local time.
    ///
    /// A local time that a change of the clocks skips or doubles takes the offset before the change.
    std::int64_t localToUtc(std::int64_t localSeconds) const;

    /// Returns the local time at `utcSeconds`, in seconds after 1970-01-01 00:00:00 local time.
    std::int64_t utcToLocal(std::int64_t utcSeconds) const {
        // By a jump, so that what is computed next need not wait for the comparison.
        if (utcSeconds < INT64_MIN + kReach || utcSeconds > INT64_MAX - kReach) [[unlikely]]
            utcSeconds = std::clamp(utcSeconds, INT64_MIN + kReach, INT64_MAX - kReach);
        return utcSeconds + remembered(utcSeconds).offset.seconds;
    }

    /// Returns the local date and time at `utcSeconds`.
    Fields fieldsAt(std::int64_t utcSeconds) const { return fieldsFromSeconds(utcToLocal(utcSeconds)); }

    /// Returns the UTC seconds of local `fields`, by the rules of `secondsFromFields` and `localToUtc`.
    std::int64_t utcFromFields(const Fields &fields) const { return localToUtc(secondsFromFields(fields)); }

private:
    /// Returns the range that was found for a time nearby, when `utcSeconds` is in it, or finds it.
    const ZoneRange &remembered(std::int64_t utcSeconds) const {
        const ZoneRange &range = recent_[static_cast<std::uint64_t>(utcSeconds) / kNearby & recentMask_];
        return utcSeconds >= range.begin && utcSeconds < range.end ? range : remember(utcSeconds);
    }
    const ZoneRange &remember(std::int64_t utcSeconds) const;
    ZoneRange find(std::int64_t utcSeconds) const;
    ZoneRange storedRange(std::size_t transitionsBefore) const;

    // More than any offset, an hour ahead included: no two clocks differ by more than twice this.
    static constexpr std::int64_t kReach = kMaxZoneOffset + 2 * 3600;
    // Half a year, as long as most ranges, and some 70 years of them. Powers of two.
    static constexpr std::uint64_t kNearby = 1U << 24;
    static constexpr std::size_t kRecent = 128;

    const std::string name_;
    const ZoneData data_;
    const std::int32_t advance_;
    mutable std::size_t recentMask_ = 0;
    mutable std::vector<ZoneRange> recent_ = std::vector<ZoneRange>(1); // by time; first an empty range
};

/// Zones are shared by all who asked for them; null means that there is none.
using ZoneRef = std::shared_ptr<const Zone>;

/// No zone's name has more bytes.
constexpr std::size_t kLongestZoneName = 255;

/// Returns the zone "GMT": offset 0, abbreviation "GMT". Always the same one.
const ZoneRef &utc();

/// Returns a zone with one offset for ever, in seconds east of Greenwich; its abbreviation is its name.
///
/// Without a name it is called by its offset, "+0130", which `zoneNamed` understands; offset 0 is "GMT".
/// Null when the offset is beyond `kMaxZoneOffset`.
ZoneRef fixedZone(std::int32_t offset, std::string_view name = {}, bool isDst = false);

/// Returns the directory of the zone database, with a slash at the end: that of the variable TZDIR, or the
/// system's.
std::string zoneDirectory();

/// Returns the zone called `name`: "GMT" with sign and hours ("GMT-11", "GMT+5:30"), "+hhmm" or "+hh" with
/// either sign, east positive; "X DST", the zone or abbreviation X one hour ahead; otherwise an entry of the
/// system's zone database.
///
/// Null for an unknown or malformed name and for a malformed file. Answers are kept, also those of null.
/// "GMT" and "UTC" need no database.
ZoneRef zoneNamed(std::string_view name);

/// Returns the fixed zone that a common abbreviation such as "CEST" stands for, or null.
ZoneRef zoneForAbbreviation(std::string_view abbreviation);

/// Returns a zone named by its TZ rule ("CET-1CEST,M3.5.0,M10.5.0/3"; see `parsePosixRule`), or null.
ZoneRef zoneFromRule(std::string_view rule);

/// Returns the zone of this process as the C library sees it, never null.
///
/// It comes from the TZ variable (a database name, a path, a rule; a leading colon is ignored) or, without
/// it, from /etc/localtime. A useless setting counts as UTC. Kept until TZ changes (by `setenv`, `putenv`,
/// `unsetenv`, `clearenv` or another environment), until the next second after that file has changed, or
/// until `resetSystemZone`.
const ZoneRef &systemZone();

/// Makes the next `systemZone` look anew.
void resetSystemZone();

} // namespace qb::calendar

#endif
