#include "Format.h"

#include "FormatNames.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace qb::calendar {

namespace {

bool isNormal(const Fields &fields) {
    return fields.month >= 1 && fields.month <= 12 && fields.day >= 1 &&
           fields.day <= daysInMonth(fields.year, static_cast<int>(fields.month)) && fields.hour >= 0 &&
           fields.hour <= 23 && fields.minute >= 0 && fields.minute <= 59 && fields.second >= 0 &&
           fields.second <= 59 && fields.year >= -kYearLimit && fields.year <= kYearLimit;
}

char *putTwo(char *position, std::int64_t value) {
    const auto small = static_cast<std::uint32_t>(value);
    *position++ = static_cast<char>('0' + small / 10);
    *position++ = static_cast<char>('0' + small % 10);
    return position;
}

void appendNumber(std::string &text, std::int64_t value, std::size_t width, char pad) {
    if (width == 2 && value >= 0 && value <= 99) {
        char two[2];
        putTwo(two, value);
        two[0] = value < 10 ? pad : two[0];
        text.append(two, sizeof two);
        return;
    }
    char digits[24];
    const std::size_t count =
        static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits);
    if (count < width)
        text.append(width - count, pad);
    text.append(digits, count);
}

void appendOffset(std::string &text, std::int32_t offset) {
    const std::int32_t minutes = std::abs(offset / 60);
    text += offset < 0 ? '-' : '+';
    appendNumber(text, std::int64_t{minutes / 60} * 100 + minutes % 60, 4, '0');
}

class Formatter {
public:
    Formatter(std::string &text, const Moment &moment)
        : text_(text), moment_(moment), fields_(moment.fields) {}

    void append(std::string_view pattern) {
        for (;;) {
            const std::size_t percent = pattern.find('%');
            text_.append(pattern.substr(0, percent));
            if (percent == std::string_view::npos)
                return;
            if (percent + 1 == pattern.size()) {
                text_ += '%';
                return;
            }
            convert(pattern[percent + 1]);
            pattern.remove_prefix(percent + 2);
        }
    }

private:
    std::int64_t days() const {
        return daysFromCivil(fields_.year, static_cast<int>(fields_.month), static_cast<int>(fields_.day));
    }
    int weekday() const { return weekdayFromDays(days()); }

    void convert(char letter) {
        if (const std::string_view expansion = patternOf(letter); !expansion.empty())
            append(expansion);
        else if (!convertTimeOfDay(letter) && !convertDate(letter) && !convertName(letter))
            text_.append({'%', letter});
    }

    bool number(std::int64_t value, std::size_t width, char pad = '0') {
        appendNumber(text_, value, width, pad);
        return true;
    }

    bool convertTimeOfDay(char letter) {
        switch (letter) {
        case 'H':
            return number(fields_.hour, 2);
        case 'I':
            return number((fields_.hour + 11) % 12 + 1, 2);
        case 'M':
            return number(fields_.minute, 2);
        case 'S':
            return number(fields_.second, 2);
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
            return number(fields_.day, 2);
        case 'e':
            return number(fields_.day, 2, ' ');
        case 'j':
            return number(dayOfYearFromDays(days()), 3);
        case 'm':
            return number(fields_.month, 2);
        case 'w':
            return number(weekday(), 1);
        case 'u':
            return number((weekday() + 6) % 7 + 1, 1);
        case 'y':
            return number(floorMod(fields_.year, 100), 2);
        case 'Y':
            return number(fields_.year, 1);
        case 'G':
            return number(isoWeekFromDays(days()).year, 1);
        case 'V':
            return number(isoWeekFromDays(days()).week, 2);
        default:
            return false;
        }
    }

    bool convertName(char letter) {
        switch (letter) {
        case 'a':
            text_.append(kWeekdays[static_cast<std::size_t>(weekday())].substr(0, kShortName));
            return true;
        case 'A':
            text_.append(kWeekdays[static_cast<std::size_t>(weekday())]);
            return true;
        case 'b':
            text_.append(kMonths[static_cast<std::size_t>(fields_.month - 1)].substr(0, kShortName));
            return true;
        case 'B':
            text_.append(kMonths[static_cast<std::size_t>(fields_.month - 1)]);
            return true;
        case 'p':
            text_.append(fields_.hour < 12 ? "AM" : "PM");
            return true;
        case 'z':
            appendOffset(text_, moment_.offset);
            return true;
        case 'Z':
            text_.append(moment_.zoneAbbreviation);
            return true;
        case '%':
            text_ += '%';
            return true;
        default:
            return false;
        }
    }

    std::string &text_;
    const Moment &moment_;
    const Fields &fields_;
};

} // namespace

Moment momentAt(std::int64_t utcSeconds, int millisecond, const Zone &zone) {
    const ZoneOffset offset = zone.offsetAt(utcSeconds);
    return {zone.fieldsAt(utcSeconds), millisecond, offset.seconds, offset.abbreviation};
}

void putStamp(const Fields &fields, char *target) {
    target = putTwo(target, fields.year / 100);
    target = putTwo(target, fields.year % 100);
    target = putTwo(target, fields.month);
    target = putTwo(target, fields.day);
    target = putTwo(target, fields.hour);
    target = putTwo(target, fields.minute);
    putTwo(target, fields.second);
}

void appendFormatted(std::string &text, std::string_view pattern, const Moment &moment) {
    if (!isNormal(moment.fields)) {
        Moment normal = moment;
        normal.fields = normalised(moment.fields);
        Formatter(text, normal).append(pattern);
    } else if (pattern == kStampPattern && moment.fields.year >= 1000 && moment.fields.year <= 9999) {
        char stamp[kStampLength];
        putStamp(moment.fields, stamp);
        text.append(stamp, sizeof stamp);
    } else {
        Formatter(text, moment).append(pattern);
    }
}

std::string formatted(std::string_view pattern, const Moment &moment) {
    std::string text;
    appendFormatted(text, pattern, moment);
    return text;
}

} // namespace qb::calendar
