// The clocks, sleeping, and deadlines.
#ifndef QBFOUNDATION_SYSTEM_CLOCK_H
#define QBFOUNDATION_SYSTEM_CLOCK_H

#include "OnSignal.h"

#include <cstdint>

namespace qb::sys {

/// Returns the wall-clock time in nanoseconds since the epoch.
std::int64_t wallNanoseconds() noexcept;

/// Returns the wall-clock time in whole milliseconds since the epoch.
std::int64_t wallMilliseconds() noexcept;

/// Returns the wall-clock time in whole seconds since the epoch, as `time` does: cheaper than the others, and
/// some milliseconds late at the turn of a second.
std::int64_t wallSeconds() noexcept;

/// What the C library's clocks show as local time now.
struct LocalTime {
    int minutesWest; // of Greenwich, without daylight saving
    bool isDaylightSaving;
};

/// Looks anew at what the system is set to, then at the clock.
LocalTime localTime() noexcept;
/// Looks anew at what the system is set to; returns the abbreviation of its standard time, valid until that
/// changes.
const char *standardZoneName() noexcept;

/// Returns nanoseconds on a clock that never goes back, since some moment in the past.
std::int64_t monotonicNanoseconds() noexcept;

/// Sleeps; nothing for values below 1. Returns 0, or -1 with EINTR when interruptions are to be reported.
int sleep(std::int64_t nanoseconds, OnSignal onSignal = OnSignal::repeat) noexcept;

/// A moment on the monotonic clock that a repeated wait must not pass.
class Deadline {
public:
    /// Returns the one that never passes.
    static constexpr Deadline never() noexcept { return Deadline(INT64_MAX); }
    /// Returns the moment `milliseconds` from now; passed already when that is below 1, never when it
    /// overflows.
    static Deadline afterMilliseconds(std::int64_t milliseconds) noexcept;

    /// Returns whether the moment has come.
    bool hasPassed() const noexcept;
    /// Returns what `poll` takes: milliseconds left, rounded up, 0 when it has passed, -1 when it never does.
    int remainingMilliseconds() const noexcept;

private:
    explicit constexpr Deadline(std::int64_t moment) noexcept : moment_(moment) {}

    std::int64_t moment_; // monotonic nanoseconds; INT64_MAX: never
};

} // namespace qb::sys

#endif
