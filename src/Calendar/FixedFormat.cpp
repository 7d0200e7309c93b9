#include "FixedFormat.h"

#include "FormatNames.h"
#include "TwoDigits.h"

#include "Text/Bytes.h"

#include <array>
#include <cstring>

namespace qb::calendar {

namespace {

// Longer ones are as rare as their preparing is dear.
constexpr std::size_t kLongestPattern = 128;

constexpr std::uint32_t kMonthShifts[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};

/// Source: Tomohiko Sakamoto, comp.lang.c, 1992. The year has four digits.
std::string_view weekdayOf(const Fields &fields) {
    const auto month = static_cast<std::uint32_t>(fields.month);
    const std::uint32_t year = static_cast<std::uint32_t>(fields.year) - (month <= 2 ? 1 : 0);
    return kWeekdays[(year + year / 4 - year / 100 + year / 400 + kMonthShifts[month - 1] +
                      static_cast<std::uint32_t>(fields.day)) %
                     7];
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
        addPlace(weekdays_, kShortName);
        return true;
    case 'b':
        addPlace(months_, kShortName);
        return true;
    case 'd':
        addNumber(&Fields::day);
        return true;
    case 'e':
        paddedDays_.push_back(text_.size());
        addNumber(&Fields::day);
        return true;
    case 'H':
        addNumber(&Fields::hour);
        return true;
    case 'm':
        addNumber(&Fields::month);
        return true;
    case 'M':
        addNumber(&Fields::minute);
        return true;
    case 'S':
        addNumber(&Fields::second);
        return true;
    case 'y':
        addPlace(yearsOfCentury_, 2);
        return true;
    case 'Y':
        addPlace(years_, 4);
        return true;
    default:
        return false;
    }
}

void FixedFormat::addNumber(std::int64_t Fields::*field) {
    numbers_.push_back({text_.size(), field});
    text_.append(2, '0');
}

void FixedFormat::addPlace(Places &places, std::size_t width) {
    places.push_back(text_.size());
    text_.append(width, '0');
}

void FixedFormat::write(const Fields &fields, char *target) const {
    text::copyBytes(target, text_.data(), text_.size());
    for (const Number &number : numbers_)
        putTwo(target + number.place, fields.*number.field);
    for (const std::size_t place : years_)
        putFour(target + place, fields.year);
    for (const std::size_t place : yearsOfCentury_)
        putTwo(target + place, fields.year % 100);
    for (const std::size_t place : weekdays_)
        std::memcpy(target + place, weekdayOf(fields).data(), kShortName);
    for (const std::size_t place : months_)
        std::memcpy(target + place, kMonths[static_cast<std::size_t>(fields.month - 1)].data(), kShortName);
    for (const std::size_t place : paddedDays_)
        target[place] = fields.day < 10 ? ' ' : target[place];
}

const FixedFormat &fixedFormat(std::string_view pattern) {
    static auto &kept = *new std::array<FixedFormat, 16>;
    // Most patterns are constants, each in a place of its own.
    FixedFormat &format = kept[reinterpret_cast<std::uintptr_t>(pattern.data()) / 16 % kept.size()];
    if (format.pattern() != pattern)
        format = FixedFormat(pattern);
    return format;
}

} // namespace qb::calendar
