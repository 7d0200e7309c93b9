#include "HttpDate.h"

#include "Civil.h"

#include <algorithm>

namespace qb::calendar {

namespace {

constexpr std::size_t kMostCompared = 255;

constexpr std::string_view kMonthNames = "JanFebMarAprMayJunJulAugSepOctNovDec";
constexpr std::size_t kMonthNameLength = 3;

constexpr std::int64_t kFirstYear = 1970;
constexpr std::int64_t kLastYear = 2037;
// Two-digit years below this are in the 21st century.
constexpr std::int64_t kFirstYearOf20th = 70;

bool isWhite(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

bool fits(char byte, char templateCharacter) {
    switch (templateCharacter) {
    case '#':
        return isDigit(byte);
    case '@':
        return byte >= 'A' && byte <= 'Z';
    case '$':
        return byte >= 'a' && byte <= 'z';
    case '&':
        return isDigit(byte) || (byte >= 'A' && byte <= 'F') || (byte >= 'a' && byte <= 'f');
    case '~':
        return byte == ' ' || isDigit(byte);
    default:
        return byte == templateCharacter;
    }
}

/// Where the parts of a form stand.
struct Form {
    std::string_view dateTemplate;
    std::size_t day, month, year, yearDigits, time;
};

constexpr Form kForms[] = {
    {"## @$$ #### ##:##:## *", 0, 3, 7, 4, 12},
    {"##-@$$-## ##:##:## *", 0, 3, 7, 2, 10},
    {"@$$ ~# ##:##:## ####*", 4, 0, 16, 4, 7},
};

std::int64_t twoDigits(const char *position) {
    const int tens = position[0] == ' ' ? 0 : position[0] - '0';
    return tens * 10 + (position[1] - '0');
}

/// Returns 1 to 12; 0 for no name of a month.
std::int64_t monthNamed(std::string_view name) {
    for (std::size_t month = 0; month < kMonthNames.size() / kMonthNameLength; ++month)
        if (kMonthNames.substr(month * kMonthNameLength, kMonthNameLength) == name)
            return static_cast<std::int64_t>(month) + 1;
    return 0;
}

std::int64_t yearOf(const char *position, std::size_t digits) {
    const std::int64_t number = twoDigits(position);
    if (digits == 4)
        return number * 100 + twoDigits(position + 2);
    return number + (number < kFirstYearOf20th ? 2000 : 1900);
}

Fields fieldsOf(std::string_view text, const Form &form) {
    const char *const time = text.data() + form.time;
    return {yearOf(text.data() + form.year, form.yearDigits),
            monthNamed(text.substr(form.month, kMonthNameLength)),
            twoDigits(text.data() + form.day),
            twoDigits(time),
            twoDigits(time + 3),
            twoDigits(time + 6)};
}

bool isValid(const Fields &fields) {
    return fields.year >= kFirstYear && fields.year <= kLastYear && fields.month != 0 && fields.day >= 1 &&
           fields.day <= daysInMonth(fields.year, static_cast<int>(fields.month)) && fields.hour <= 23 &&
           fields.minute <= 59 && fields.second <= 61; // leap seconds, as in C
}

} // namespace

bool hasDateForm(std::string_view text, std::string_view dateTemplate) {
    for (std::size_t index = 0; index < dateTemplate.size(); ++index) {
        if (dateTemplate[index] == '*')
            return true;
        if (index == kMostCompared || index == text.size() || !fits(text[index], dateTemplate[index]))
            return false;
    }
    return text.size() == dateTemplate.size();
}

std::optional<std::int32_t> parseHttpDate(std::string_view text) {
    text.remove_prefix(
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isWhite) - text.begin()));
    const std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos)
        return {};
    text.remove_prefix(blank + 1);
    const Form *const form =
        std::find_if(std::begin(kForms), std::end(kForms),
                     [text](const Form &candidate) { return hasDateForm(text, candidate.dateTemplate); });
    if (form == std::end(kForms))
        return {};
    const Fields fields = fieldsOf(text, *form);
    if (!isValid(fields))
        return {};
    return static_cast<std::int32_t>(secondsFromUsualFields(fields));
}

} // namespace qb::calendar
