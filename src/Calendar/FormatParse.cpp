// Reading dates by a pattern.
#include "Format.h"

#include "FormatNames.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace qb::calendar {

namespace {

constexpr std::size_t kZoneNameLimit = 255;
constexpr std::string_view kZoneAhead = " DST";
// POSIX strptime: years of the century below this are in the 21st.
constexpr std::int64_t kFirstYearOf20th = 69;

bool isBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

char lower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool startsWithAnyCase(std::string_view text, std::string_view word) {
    return text.size() >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin(),
                      [](char left, char right) { return lower(left) == lower(right); });
}

bool isZoneLetter(char byte) {
    return (lower(byte) >= 'a' && lower(byte) <= 'z') || isDigit(byte) || byte == '/' || byte == '_' ||
           byte == '+' || byte == '-';
}

/// Which numbers a conversion takes.
struct NumberForm {
    std::size_t digits; // at most; 0: no number
    std::int64_t low;
    std::int64_t high;
};

NumberForm numberForm(char letter) {
    switch (letter) {
    case 'd':
    case 'e':
        return {2, 1, 31};
    case 'F':
        return {3, 0, 999};
    case 'G':
    case 'Y':
        return {12, -kYearLimit, kYearLimit};
    case 'H':
        return {2, 0, 23};
    case 'I':
        return {2, 1, 12};
    case 'j':
        return {3, 1, 366};
    case 'm':
        return {2, 1, 12};
    case 'M':
        return {2, 0, 59};
    case 's':
        return {19, INT64_MIN, INT64_MAX};
    case 'S':
        return {2, 0, 61}; // leap seconds, as in C
    case 'u':
        return {1, 1, 7};
    case 'V':
        return {2, 1, 53};
    case 'w':
        return {1, 0, 6};
    case 'y':
        return {2, 0, 99};
    default:
        return {0, 0, 0};
    }
}

class DateParser {
public:
    DateParser(std::string_view text, ParsedDate &date) : text_(text), date_(date) {}

    bool parse(std::string_view pattern) {
        if (!follow(pattern))
            return false;
        skipBlanks();
        if (!text_.empty())
            return false;
        assemble();
        return true;
    }

private:
    bool follow(std::string_view pattern) {
        while (!pattern.empty()) {
            const char byte = pattern.front();
            pattern.remove_prefix(1);
            if (isBlank(byte)) {
                skipBlanks();
            } else if (byte != '%' || pattern.empty() || pattern.front() == '%') {
                if (byte == '%' && !pattern.empty())
                    pattern.remove_prefix(1);
                if (!take(byte))
                    return false;
            } else {
                const char letter = pattern.front();
                pattern.remove_prefix(1);
                if (!convert(letter, startsWithNumber(pattern)))
                    return false;
            }
        }
        return true;
    }

    static bool startsWithNumber(std::string_view pattern) {
        if (pattern.empty())
            return false;
        return isDigit(pattern[0]) ||
               (pattern[0] == '%' && pattern.size() > 1 && numberForm(pattern[1]).digits > 0);
    }

    bool take(char byte) {
        if (text_.empty() || text_.front() != byte)
            return false;
        text_.remove_prefix(1);
        return true;
    }

    void skipBlanks() {
        while (!text_.empty() && isBlank(text_.front()))
            text_.remove_prefix(1);
    }

    bool convert(char letter, bool numberFollows) {
        if (const std::string_view expansion = patternOf(letter); !expansion.empty())
            return follow(expansion);
        skipBlanks();
        if (numberForm(letter).digits > 0)
            return number(letter, numberFollows);
        switch (letter) {
        case 'a':
        case 'A':
            return name(letter, kWeekdays.data(), kWeekdays.size());
        case 'b':
        case 'B':
            return name('m', kMonths.data(), kMonths.size());
        case 'p':
            return halfOfDay();
        case 'z':
            return offset();
        case 'Z':
            return zoneName();
        default:
            return take('%') && take(letter);
        }
    }

    void set(char letter, std::int64_t value) { values_[static_cast<unsigned char>(letter)] = value; }

    std::optional<std::int64_t> value(char letter) const {
        return values_[static_cast<unsigned char>(letter)];
    }

    bool number(char letter, bool numberFollows) {
        NumberForm form = numberForm(letter);
        // "%Y%m" must leave the month its digits.
        if (numberFollows && form.low < 0 && letter != 's')
            form.digits = 4;
        const bool isNegative = form.low < 0 && take('-');
        if (!isNegative && form.low < 0)
            take('+');
        std::size_t count = 0;
        while (count < form.digits && count < text_.size() && isDigit(text_[count]))
            ++count;
        std::int64_t result = 0;
        if (count == 0 || std::from_chars(text_.data(), text_.data() + count, result).ec != std::errc())
            return false;
        text_.remove_prefix(count);
        result = isNegative ? -result : result;
        set(letter, result);
        return result >= form.low && result <= form.high;
    }

    bool name(char letter, const std::string_view *names, std::size_t count) {
        for (std::size_t index = 0; index < count; ++index) {
            if (!startsWithAnyCase(text_, names[index].substr(0, kShortName)))
                continue;
            text_.remove_prefix(startsWithAnyCase(text_, names[index]) ? names[index].size() : kShortName);
            set(letter, static_cast<std::int64_t>(index) + 1);
            return true;
        }
        return false;
    }

    bool halfOfDay() {
        const bool isAfternoon = startsWithAnyCase(text_, "PM");
        if (!isAfternoon && !startsWithAnyCase(text_, "AM"))
            return false;
        text_.remove_prefix(2);
        set('p', isAfternoon ? 12 : 0);
        return true;
    }

    bool twoDigits(std::int32_t &result) {
        if (text_.size() < 2 || !isDigit(text_[0]) || !isDigit(text_[1]))
            return false;
        result = (text_[0] - '0') * 10 + (text_[1] - '0');
        text_.remove_prefix(2);
        return true;
    }

    bool offset() {
        const bool isWest = take('-');
        std::int32_t hours = 0;
        std::int32_t minutes = 0;
        if ((!isWest && !take('+')) || !twoDigits(hours))
            return false;
        const bool hasColon = take(':');
        if ((hasColon || (!text_.empty() && isDigit(text_.front()))) && !twoDigits(minutes))
            return false;
        date_.offset = (hours * 3600 + minutes * 60) * (isWest ? -1 : 1);
        return hours <= 23 && minutes <= 59;
    }

    bool zoneName() {
        const auto end = std::find_if_not(text_.begin(), text_.end(), isZoneLetter);
        std::size_t length = static_cast<std::size_t>(end - text_.begin());
        if (length > 0 && text_.substr(length).starts_with(kZoneAhead))
            length += kZoneAhead.size();
        if (length == 0 || length > kZoneNameLimit)
            return false;
        date_.zoneName.assign(text_.substr(0, length));
        text_.remove_prefix(length);
        return true;
    }

    void assemble() {
        Fields &fields = date_.fields;
        if (const auto year = value('y'))
            fields.year = *year + (*year < kFirstYearOf20th ? 2000 : 1900);
        fields.year = value('Y').value_or(fields.year);
        if (const auto day = value('j'); day && !value('m') && !value('d') && !value('e')) {
            fields.month = 1;
            fields.day = *day;
        }
        fields.month = value('m').value_or(fields.month);
        fields.day = value('d').value_or(value('e').value_or(fields.day));
        if (const auto hour = value('I'))
            fields.hour = *hour % 12 + value('p').value_or(0);
        fields.hour = value('H').value_or(fields.hour);
        fields.minute = value('M').value_or(fields.minute);
        fields.second = value('S').value_or(fields.second);
        date_.millisecond = static_cast<int>(value('F').value_or(date_.millisecond));
        if (const auto seconds = value('s'))
            date_.utcSeconds = seconds;
    }

    std::string_view text_;
    ParsedDate &date_;
    std::array<std::optional<std::int64_t>, 128> values_; // by conversion letter
};

} // namespace

bool parseDate(std::string_view text, std::string_view pattern, ParsedDate &date) {
    ParsedDate result = date;
    if (!DateParser(text, result).parse(pattern))
        return false;
    date = std::move(result);
    return true;
}

} // namespace qb::calendar
