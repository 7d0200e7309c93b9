#include "PosixRule.h"

#include "Civil.h"

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>

namespace qb::calendar {

namespace {

constexpr std::size_t kTextLimit = 255;
// Beyond these the changes of the neighbouring years would not fit 64-bit seconds.
constexpr std::int64_t kRuleLimit = std::int64_t{1} << 62;

bool isLetter(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

class RuleParser {
public:
    explicit RuleParser(std::string_view text) : rest_(text) {}

    bool parse(PosixRule &rule) {
        if (!name(rule.standardName) || !offset(rule.standardOffset))
            return false;
        if (rest_.empty())
            return true;
        if (!name(rule.daylightName))
            return false;
        rule.daylightOffset = rule.standardOffset + 3600;
        if (!rest_.empty() && rest_.front() != ',' && !offset(rule.daylightOffset))
            return false;
        if (rest_.empty())
            rest_ = ",M3.2.0,M11.1.0";
        return change(rule.start) && change(rule.end) && rest_.empty();
    }

private:
    bool take(char byte) {
        if (rest_.empty() || rest_.front() != byte)
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool name(std::string &result) {
        const bool quoted = take('<');
        const auto belongs = [quoted](char byte) {
            return isLetter(byte) || (quoted && (isDigit(byte) || byte == '+' || byte == '-'));
        };
        const auto last = std::find_if_not(rest_.begin(), rest_.end(), belongs);
        result.assign(rest_.begin(), last);
        rest_.remove_prefix(result.size());
        return result.size() >= 3 && (!quoted || take('>'));
    }

    bool number(int low, int high, int &result) {
        std::size_t digits = 0;
        int value = 0;
        for (; digits < rest_.size() && isDigit(rest_[digits]); ++digits) {
            if (digits == 3)
                return false;
            value = value * 10 + (rest_[digits] - '0');
        }
        rest_.remove_prefix(digits);
        result = value;
        return digits > 0 && value >= low && value <= high;
    }

    bool time(int hourLimit, std::int32_t &seconds) {
        const bool negative = take('-');
        if (!negative)
            take('+');
        int hour = 0;
        int minute = 0;
        int second = 0;
        if (!number(0, hourLimit, hour) || (take(':') && !number(0, 59, minute)) ||
            (take(':') && !number(0, 59, second)))
            return false;
        seconds = (hour * 3600 + minute * 60 + second) * (negative ? -1 : 1);
        return true;
    }

    // The text counts west of Greenwich as positive.
    bool offset(std::int32_t &seconds) {
        if (!time(24, seconds))
            return false;
        seconds = -seconds;
        return true;
    }

    bool change(ChangeRule &rule) {
        if (!take(',') || !changeDay(rule))
            return false;
        return !take('/') || time(167, rule.time);
    }

    bool changeDay(ChangeRule &rule) {
        if (take('J')) {
            rule.kind = ChangeRule::Kind::dayWithoutLeap;
            return number(1, 365, rule.day);
        }
        if (take('M')) {
            rule.kind = ChangeRule::Kind::weekdayOfMonth;
            return number(1, 12, rule.month) && take('.') && number(1, 5, rule.week) && take('.') &&
                   number(0, 6, rule.day);
        }
        rule.kind = ChangeRule::Kind::dayOfYear;
        return number(0, 365, rule.day);
    }

    std::string_view rest_;
};

struct Change {
    std::int64_t at;
    bool toDst;

    // At one instant the end of daylight saving comes before its next start: so rules can keep it on all
    // year.
    bool operator<(const Change &other) const {
        return std::tie(at, toDst) < std::tie(other.at, other.toDst);
    }
};

std::int64_t weekdayOfMonth(std::int64_t year, const ChangeRule &rule) {
    const std::int64_t first = daysFromCivil(year, rule.month, 1);
    const int toWeekday = (rule.day - weekdayFromDays(first) + 7) % 7;
    int day = toWeekday + (rule.week - 1) * 7;
    if (day >= daysInMonth(year, rule.month))
        day -= 7;
    return first + day;
}

} // namespace

std::int64_t ChangeRule::localSecondsInYear(std::int64_t year) const {
    if (kind == Kind::weekdayOfMonth)
        return weekdayOfMonth(year, *this) * kSecondsPerDay + time;
    int yearDay = day;
    if (kind == Kind::dayWithoutLeap && !(isLeapYear(year) && day >= 60))
        --yearDay; // counts from 1, and in a leap year 1 March is day 60 as ever
    return (daysFromCivil(year, 1, 1) + yearDay) * kSecondsPerDay + time;
}

ZoneRange PosixRule::rangeAt(std::int64_t utcSeconds) const {
    constexpr std::int64_t kSinceEver = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kForEver = std::numeric_limits<std::int64_t>::max();
    if (daylightName.empty())
        return {kSinceEver, kForEver, {standardOffset, false, standardName}};
    if (utcSeconds < -kRuleLimit)
        return {kSinceEver, -kRuleLimit, {standardOffset, false, standardName}};
    if (utcSeconds > kRuleLimit)
        return {kRuleLimit + 1, kForEver, {standardOffset, false, standardName}};

    // A change may lie up to a week outside its year, so the neighbours' neighbours can matter.
    const std::int64_t year = civilFromDays(floorDiv(utcSeconds, kSecondsPerDay)).year;
    std::array<Change, 10> changes;
    std::int64_t ruleYear = year - 2;
    for (std::size_t index = 0; index < changes.size(); index += 2, ++ruleYear) {
        changes[index] = {start.localSecondsInYear(ruleYear) - standardOffset, true};
        changes[index + 1] = {end.localSecondsInYear(ruleYear) - daylightOffset, false};
    }
    std::sort(changes.begin(), changes.end());
    const auto next = std::upper_bound(changes.begin() + 1, changes.end() - 1, Change{utcSeconds, true});
    const Change &last = *(next - 1);
    if (last.toDst)
        return {last.at, next->at, {daylightOffset, true, daylightName}};
    return {last.at, next->at, {standardOffset, false, standardName}};
}

std::optional<PosixRule> parsePosixRule(std::string_view text) {
    PosixRule rule;
    if (text.size() > kTextLimit || !RuleParser(text).parse(rule))
        return std::nullopt;
    return rule;
}

} // namespace qb::calendar
