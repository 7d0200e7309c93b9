#include "FixedFormat.h"

#include "FormatNames.h"
#include "Stamp.h"
#include "TwoDigits.h"

#include "Text/Bytes.h"

#include <array>
#include <cstring>

namespace qb::calendar {

namespace {

// Longer ones are as rare as their preparing is dear.
constexpr std::size_t kLongestPattern = 128;

/// What the conversions of a date write, each at a place of its own.
struct Parts {
    char stamp[kStampLength];
    char paddedDay[2];
    char weekday[kShortName + 1];
    char month[kShortName + 1];
};

// Places in the stamp.
constexpr std::size_t kCentury = 0, kYearOfCentury = 2, kMonth = 4, kDay = 6, kHour = 8, kMinute = 10,
                      kSecond = 12;

/// The short names in a row, each with a NUL.
template <std::size_t count>
constexpr auto shortNames(const std::array<std::string_view, count> &names) {
    std::array<char, count *(kShortName + 1)> row{};
    for (std::size_t i = 0; i < count; ++i)
        names[i].copy(row.data() + i * (kShortName + 1), kShortName);
    return row;
}
constexpr auto kShortWeekdays = shortNames(kWeekdays);
constexpr auto kShortMonths = shortNames(kMonths);

/// Writes the name and its NUL.
void putName(char *target, const char *names, std::size_t index) {
    std::memcpy(target, names + index * (kShortName + 1), kShortName + 1);
}

/// A day since 1970, and its parts but for the time of day.
struct Day {
    std::int64_t number = INT64_MIN; // none
    Parts parts = {};
};

[[gnu::noinline]] void fill(Day &day, std::int64_t number) {
    const Fields fields = civilFromDays(number);
    Parts &parts = day.parts;
    putStamp(fields, parts.stamp);
    putTwo(parts.paddedDay, fields.day);
    if (fields.day < 10)
        parts.paddedDay[0] = ' ';
    putName(parts.weekday, kShortWeekdays.data(), static_cast<std::size_t>(weekdayFromDays(number)));
    putName(parts.month, kShortMonths.data(), static_cast<std::size_t>(fields.month - 1));
    day.number = number;
}

/// Returns a day's parts, valid until the next call. Those of late are kept: the dates of a log, or of a
/// site's files, lie on few days, and a day costs more than a time of day.
const Parts &partsOfDay(std::int64_t number) {
    static constinit std::array<Day, 64> kept{};
    Day &day = kept[static_cast<std::uint64_t>(number) % kept.size()];
    if (day.number != number)
        fill(day, number);
    return day.parts;
}

} // namespace

FixedFormat::FixedFormat(std::string_view pattern)
    : pattern_(pattern), isFixed_(pattern.size() <= kLongestPattern) {
    for (std::size_t index = 0; index < pattern.size() && isFixed_; ++index) {
        if (pattern[index] != '%' || index + 1 == pattern.size())
            text_ += pattern[index];
        else
            isFixed_ = add(pattern[++index]);
    }
}

/// Returns whether there is such a conversion.
bool FixedFormat::add(char letter) {
    switch (letter) {
    case '%':
        text_ += '%';
        return true;
    case 'a':
        addName(offsetof(Parts, weekday));
        return true;
    case 'b':
        addName(offsetof(Parts, month));
        return true;
    case 'd':
        addPair(kDay);
        return true;
    case 'e':
        addPair(offsetof(Parts, paddedDay));
        return true;
    case 'H':
        addPair(kHour);
        return true;
    case 'm':
        addPair(kMonth);
        return true;
    case 'M':
        addPair(kMinute);
        return true;
    case 'S':
        addPair(kSecond);
        return true;
    case 'y':
        addPair(kYearOfCentury);
        return true;
    case 'Y':
        addPair(kCentury);
        addPair(kYearOfCentury);
        return true;
    default:
        return false;
    }
}

void FixedFormat::addPair(std::size_t source) {
    const Copy copy = {static_cast<std::uint16_t>(source), static_cast<std::uint16_t>(text_.size())};
    if (isPairFull_)
        copies_.push_back({copy, copy}); // copied twice if it is the last
    else
        copies_.back()[1] = copy;
    isPairFull_ = !isPairFull_;
    text_.append(2, '0');
}

void FixedFormat::addName(std::size_t source) {
    addPair(source);
    text_.pop_back(); // the second letter comes with the third too
    addPair(source + 1);
}

void FixedFormat::write(std::int64_t localSeconds, char *target) const {
    const auto sinceFirst = static_cast<std::uint64_t>(localSeconds - kFirstSecond);
    const std::uint64_t days = sinceFirst / kSecondsPerDay;
    const auto seconds = static_cast<std::uint32_t>(sinceFirst - days * kSecondsPerDay);
    Parts parts = partsOfDay(static_cast<std::int64_t>(days) + kFirstSecond / kSecondsPerDay);
    putTwo(parts.stamp + kHour, seconds / 3600);
    putTwo(parts.stamp + kMinute, seconds / 60 % 60);
    putTwo(parts.stamp + kSecond, seconds % 60);
    text::copyBytes(target, text_.data(), text_.size());
    const char *const source = reinterpret_cast<const char *>(&parts);
    for (const auto &[first, second] : copies_) {
        std::memcpy(target + first.target, source + first.source, 2);
        std::memcpy(target + second.target, source + second.source, 2);
    }
}

namespace {

using KeptFormats = std::array<FixedFormat, 16>;

// These are apart, so that finding a kept one takes no more registers than it needs.
[[gnu::noinline]] KeptFormats &newFormats() {
    return *new KeptFormats;
}
[[gnu::noinline]] void prepare(FixedFormat &format, std::string_view pattern) {
    format = FixedFormat(pattern);
}

} // namespace

const FixedFormat &fixedFormat(std::string_view pattern) {
    static auto &kept = newFormats();
    // Most patterns are constants, each in a place of its own.
    FixedFormat &format = kept[reinterpret_cast<std::uintptr_t>(pattern.data()) / 16 % kept.size()];
    if (format.pattern().size() != pattern.size() ||
        !text::areEqual(format.pattern().data(), pattern.data(), pattern.size()))
        prepare(format, pattern);
    return format;
}

} // namespace qb::calendar
