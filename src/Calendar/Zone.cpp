#include "Zone.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace qb::calendar {

namespace {
constexpr std::int64_t kSinceEver = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kForEver = std::numeric_limits<std::int64_t>::max();
} // namespace

Zone::Zone(std::string name, ZoneData data, std::int32_t advance)
    : name_(std::move(name)), data_(std::move(data)), advance_(advance) {}

bool Zone::isFixed() const {
    return data_.transitions.empty() && (!data_.rule || data_.rule->daylightName.empty());
}

ZoneRange Zone::storedRange(std::size_t transitionsBefore) const {
    const auto &times = data_.transitions;
    const ZoneData::Type &type =
        data_.types[transitionsBefore == 0 ? 0 : data_.typeIndexes[transitionsBefore - 1]];
    return {transitionsBefore == 0 ? kSinceEver : times[transitionsBefore - 1],
            transitionsBefore == times.size() ? kForEver : times[transitionsBefore],
            {type.offset, type.isDst, std::string_view(data_.names).substr(type.nameStart, type.nameLength)}};
}

// A zone that nothing is asked of has no room for answers: an archive may hold many such zones.
const ZoneRange &Zone::remember(std::int64_t utcSeconds) const {
    if (recentMask_ == 0 && !isFixed()) {
        try {
            recent_.resize(kRecent);
            recentMask_ = kRecent - 1;
        } catch (const std::bad_alloc &) { // one answer at a time does, too
        }
    }
    return recent_[static_cast<std::uint64_t>(utcSeconds) / kNearby & recentMask_] = find(utcSeconds);
}

ZoneRange Zone::find(std::int64_t utcSeconds) const {
    ZoneRange range;
    const auto &times = data_.transitions;
    const auto next = std::upper_bound(times.begin(), times.end(), utcSeconds);
    if (next == times.end() && data_.rule) {
        range = data_.rule->rangeAt(utcSeconds);
        if (!times.empty())
            range.begin = std::max(range.begin, times.back());
    } else {
        range = storedRange(static_cast<std::size_t>(next - times.begin()));
    }
    if (advance_ != 0)
        range.offset = {range.offset.seconds + advance_, true, name_};
    return range;
}

std::int64_t Zone::localToUtc(std::int64_t localSeconds) const {
    const std::int64_t local = std::clamp(localSeconds, kSinceEver + 4 * kReach, kForEver - 4 * kReach);
    // Far enough behind the last change no earlier clock can have shown this time.
    const ZoneRange &nearby = remembered(local);
    const std::int64_t guess = local - nearby.offset.seconds;
    if (guess < nearby.end && guess - 2 * kReach >= nearby.begin)
        return guess;
    ZoneRange range = rangeAt(local - kReach);
    for (;;) {
        // The first range that has this time wins, so a doubled one keeps the offset before the change …
        if (range.end == kForEver || local < range.end + range.offset.seconds)
            return local - range.offset.seconds;
        const ZoneRange next = rangeAt(range.end);
        // … and so does one that the change skips.
        if (local < range.end + next.offset.seconds)
            return local - range.offset.seconds;
        range = next;
    }
}

} // namespace qb::calendar
