#include "Clock.h"

#include "Attempt.h"

#include <algorithm>
#include <climits>
#include <ctime>

namespace qb::sys {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;

std::int64_t nanosecondsOf(clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now); // can't fail for these clocks
    return static_cast<std::int64_t>(now.tv_sec) * kNanosecondsPerSecond + now.tv_nsec;
}

// Moment `nanoseconds` after `start`; INT64_MAX when there is no such number.
std::int64_t momentAfter(std::int64_t start, std::int64_t nanoseconds) {
    return nanoseconds > INT64_MAX - start ? INT64_MAX : start + nanoseconds;
}

} // namespace

std::int64_t wallNanoseconds() noexcept {
    return nanosecondsOf(CLOCK_REALTIME);
}

std::int64_t wallMilliseconds() noexcept {
    return wallNanoseconds() / kNanosecondsPerMillisecond;
}

std::int64_t wallSeconds() noexcept {
    return ::time(nullptr);
}

LocalTime localTime() noexcept {
    ::tzset();
    const std::time_t now = ::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return {static_cast<int>(::timezone / 60), local.tm_isdst > 0};
}

const char *standardZoneName() noexcept {
    ::tzset();
    return ::tzname[0];
}

std::int64_t monotonicNanoseconds() noexcept {
    return nanosecondsOf(CLOCK_MONOTONIC);
}

int sleep(std::int64_t nanoseconds, OnSignal onSignal) noexcept {
    if (nanoseconds < 1)
        return 0;
    const std::int64_t end = momentAfter(monotonicNanoseconds(), nanoseconds);
    timespec wake{};
    wake.tv_sec = static_cast<std::time_t>(end / kNanosecondsPerSecond);
    wake.tv_nsec = static_cast<long>(end % kNanosecondsPerSecond);
    // An absolute end, so that interruptions don't make it later.
    const auto wait = [&] {
        const int error = ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, nullptr);
        return error ? (errno = error, -1) : 0;
    };
    return repeat(Call::sleep, wait, nullptr, onSignal);
}

Deadline Deadline::afterMilliseconds(std::int64_t milliseconds) noexcept {
    const std::int64_t now = monotonicNanoseconds();
    if (milliseconds < 1)
        return Deadline(now);
    if (milliseconds > INT64_MAX / kNanosecondsPerMillisecond)
        return never();
    return Deadline(momentAfter(now, milliseconds * kNanosecondsPerMillisecond));
}

bool Deadline::hasPassed() const noexcept {
    return moment_ != INT64_MAX && monotonicNanoseconds() >= moment_;
}

int Deadline::remainingMilliseconds() const noexcept {
    if (moment_ == INT64_MAX)
        return -1;
    const std::int64_t left = std::max<std::int64_t>(moment_ - monotonicNanoseconds(), 0);
    const std::int64_t milliseconds =
        left / kNanosecondsPerMillisecond + (left % kNanosecondsPerMillisecond != 0);
    return static_cast<int>(std::min<std::int64_t>(milliseconds, INT_MAX));
}

} // namespace qb::sys
