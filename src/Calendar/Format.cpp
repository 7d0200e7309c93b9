#include "Format.h"

#include "FormatNames.h"
#include "TwoDigits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>

namespace qb::calendar {

namespace {

/// Writes a moment by a pattern, through a buffer of its own, because it is written byte by byte.
class Formatter {
public:
    Formatter(std::string &text, const Moment &moment)
        : text_(text), moment_(moment), fields_(moment.fields) {}

    void write(std::string_view pattern) {
        append(pattern);
        flush();
    }

private:
    // What the longest conversion without a text of its own may take.
    static constexpr std::size_t kRoom = 32;

    void append(std::string_view pattern) {
        for (std::size_t index = 0; index < pattern.size(); ++index) {
            if (position_ > buffer_ + sizeof buffer_ - kRoom)
                flush();
            if (pattern[index] != '%' || index + 1 == pattern.size())
                *position_++ = pattern[index];
            else
                convert(pattern[++index]);
        }
    }

    void flush() {
        text_.append(buffer_, position_);
        position_ = buffer_;
    }

    std::int64_t days() const {
        return daysFromCivil(fields_.year, static_cast<int>(fields_.month), static_cast<int>(fields_.day));
    }
    int weekday() const { return weekdayFromDays(days()); }

    void convert(char letter) {
        if (const std::string_view expansion = patternOf(letter); !expansion.empty())
            append(expansion);
        else if (!convertTimeOfDay(letter) && !convertDate(letter) && !convertName(letter))
            position_ = std::copy_n(std::array{'%', letter}.data(), 2, position_);
    }

    bool two(std::int64_t value, char pad = '0') {
        char *const end = putTwo(position_, value);
        *position_ = value < 10 ? pad : *position_;
        position_ = end;
        return true;
    }

    bool number(std::int64_t value, std::size_t width) {
        char digits[24];
        char *const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        const auto count = static_cast<std::size_t>(end - digits);
        position_ = std::fill_n(position_, count < width ? width - count : 0, '0');
        position_ = std::copy(digits, end, position_);
        return true;
    }

    bool year(std::int64_t value) {
        if (value < 1000 || value > 9999)
            return number(value, 1);
        position_ = putFour(position_, value);
        return true;
    }

    bool shortName(std::string_view name) {
        position_ = std::copy_n(name.begin(), kShortName, position_);
        return true;
    }

    bool text(std::string_view bytes) {
        flush();
        text_.append(bytes);
        return true;
    }

    bool offset() {
        const std::int32_t minutes = std::abs(moment_.offset / 60);
        *position_++ = moment_.offset < 0 ? '-' : '+';
        return number(std::int64_t{minutes / 60} * 100 + minutes % 60, 4);
    }

    bool convertTimeOfDay(char letter) {
        switch (letter) {
        case 'H':
            return two(fields_.hour);
        case 'I':
            return two((fields_.hour + 11) % 12 + 1);
        case 'M':
            return two(fields_.minute);
        case 'S':
            return two(fields_.second);
        case 'F':
            return number(std::clamp(moment_.millisecond, 0, 999), 3);
        case 's':
            return number(secondsFromFields(fields_) - moment_.offset, 1);
        default:
            return false;
        }
    }

    bool convertDate(char letter) {
        switch (letter) {
        case 'd':
            return two(fields_.day);
        case 'e':
            return two(fields_.day, ' ');
        case 'j':
            return number(dayOfYearFromDays(days()), 3);
        case 'm':
            return two(fields_.month);
        case 'w':
            return number(weekday(), 1);
        case 'u':
            return number((weekday() + 6) % 7 + 1, 1);
        case 'y':
            return two(floorMod(fields_.year, 100));
        case 'Y':
            return year(fields_.year);
        case 'G':
            return year(isoWeekFromDays(days()).year);
        case 'V':
            return two(isoWeekFromDays(days()).week);
        default:
            return false;
        }
    }

    bool convertName(char letter) {
        switch (letter) {
        case 'a':
            return shortName(kWeekdays[static_cast<std::size_t>(weekday())]);
        case 'A':
            return text(kWeekdays[static_cast<std::size_t>(weekday())]);
        case 'b':
            return shortName(kMonths[static_cast<std::size_t>(fields_.month - 1)]);
        case 'B':
            return text(kMonths[static_cast<std::size_t>(fields_.month - 1)]);
        case 'p':
            return text(fields_.hour < 12 ? "AM" : "PM");
        case 'z':
            return offset();
        case 'Z':
            return text(moment_.zoneAbbreviation);
        case '%':
            *position_++ = '%';
            return true;
        default:
            return false;
        }
    }

    std::string &text_; // holds what no longer stands in the buffer
    const Moment &moment_;
    const Fields &fields_;
    char buffer_[128];
    char *position_ = buffer_;
};

} // namespace

Moment momentAt(std::int64_t utcSeconds, int millisecond, const Zone &zone) {
    const ZoneOffset offset = zone.offsetAt(utcSeconds);
    return {zone.fieldsAt(utcSeconds), millisecond, offset.seconds, offset.abbreviation};
}

void appendFormatted(std::string &text, std::string_view pattern, const Moment &moment) {
    if (isUsual(moment.fields))
        return Formatter(text, moment).write(pattern);
    Moment usual = moment;
    usual.fields = normalised(moment.fields);
    Formatter(text, usual).write(pattern);
}

std::string formatted(std::string_view pattern, const Moment &moment) {
    std::string text;
    appendFormatted(text, pattern, moment);
    return text;
}

} // namespace qb::calendar
