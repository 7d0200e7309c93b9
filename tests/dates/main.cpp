// Compares dates of 1900 to 2100 in the zones that are named with what the command date makes of them.
//   qb_dates ZONE...
#include <QBFoundation/QBFoundation.h>

#include "Calendar/Zone.h"
#include "support/DateCommand.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::int64_t kBegin = -2208988800, kEnd = 4133980800; // 1900 and 2101 in UTC
constexpr std::int64_t kStep = 9 * 86400 + 3607;
constexpr std::int64_t kHttpEnd = 2145916800;                                // 2038
constexpr std::int64_t kDayFirstBegin = 31622400, kDayFirstEnd = 1577750400; // 1971 to 2019 in every zone

long differences = 0;

void require(bool isSame, const std::string &zone, const char *what, std::int64_t seconds,
             std::string_view ours, std::string_view theirs) {
    if (isSame || ++differences > 20)
        return;
    std::fprintf(stderr, "%s, %s at %lld: '%.*s', date says '%.*s'\n", zone.c_str(), what,
                 static_cast<long long>(seconds), static_cast<int>(ours.size()), ours.data(),
                 static_cast<int>(theirs.size()), theirs.data());
}

/// Times all over the centuries, and those around each change of the clocks.
std::vector<std::int64_t> instantsOf(const qb::calendar::Zone &zone) {
    std::vector<std::int64_t> instants;
    for (std::int64_t time = kBegin; time < kEnd; time += kStep)
        instants.push_back(time);
    for (std::int64_t change = zone.rangeAt(kBegin).end; change < kEnd; change = zone.rangeAt(change).end)
        for (const int shift : {-86400, -3600, -1, 0, 1, 1799, 3600, 43200, 86400})
            instants.push_back(change + shift);
    return instants;
}

std::vector<std::string> answers(const std::string &zone, const std::vector<std::int64_t> &instants,
                                 const char *format) {
    std::vector<std::string> questions;
    for (const std::int64_t instant : instants)
        questions.push_back("@" + std::to_string(instant));
    std::vector<std::string> lines = printedDates(zone, questions, format);
    require(lines.size() == instants.size(), zone, "lines", 0, std::to_string(instants.size()),
            std::to_string(lines.size()));
    lines.resize(instants.size());
    return lines;
}

std::string secondsOf(NSDate *date) {
    return date ? std::to_string(static_cast<std::int64_t>(date->timeIntervalSince1970())) : "none";
}

/// The midnight is the first instant of the day, or the one that 0:00 is; and the day's date, read, is it
/// too.
void compareMidnights(const std::string &zone, NSTimeZone *timeZone,
                      const std::vector<std::int64_t> &instants) {
    const NSAutoreleasePool outerPool;
    std::vector<std::int64_t> midnights, dayBefore;
    for (const std::int64_t instant : instants) {
        NSDate *const midnight = NSCalendarDate::dateAt(instant, timeZone)->midnightOfTimeZone(timeZone);
        midnights.push_back(static_cast<std::int64_t>(midnight->timeIntervalSince1970()));
        dayBefore.push_back(midnights.back() - 86400);
    }
    const std::vector<std::string> days = answers(zone, instants, "%d.%m.%Y");
    const std::vector<std::string> found = answers(zone, midnights, "%d.%m.%Y %H:%M:%S");
    const std::vector<std::string> before = answers(zone, dayBefore, "%H:%M:%S");
    for (std::size_t at = 0; at < instants.size(); ++at) {
        const NSAutoreleasePool pool;
        const bool isMidnight = found[at] == days[at] + " 00:00:00";
        const bool isSkipped = found[at].starts_with(days[at]) && before[at] == "00:00:00";
        require(isMidnight || isSkipped, zone, "midnight", instants[at], std::to_string(midnights[at]),
                found[at]);
        if (instants[at] < kDayFirstBegin || instants[at] >= kDayFirstEnd)
            continue;
        const std::string read = secondsOf(NSDate::obsolete_dateWithString(NSString::stringWith(days[at])));
        require(read == std::to_string(midnights[at]), zone, "day-first", instants[at], read, days[at]);
    }
}

void compareStamps(const std::vector<std::int64_t> &instants) {
    const std::vector<std::string> stamps = answers("UTC0", instants, "%Y%m%d%H%M%S");
    for (std::size_t at = 0; at < instants.size(); ++at) {
        const NSAutoreleasePool pool;
        NSCalendarDate *const date = NSString::stringWith(stamps[at])->asDateFromISODateTimeString();
        const std::string read = secondsOf(date);
        require(read == std::to_string(instants[at]), "UTC", "ISO", instants[at], read, stamps[at]);
        const std::string_view text = date->asISODateTimeString()->view();
        require(text == stamps[at], "UTC", "ISO", instants[at], text, stamps[at]);
    }
}

void compareHttpDates(const std::vector<std::int64_t> &instants) {
    for (const char *const format :
         {"%a, %d %b %Y %H:%M:%S GMT", "%A, %d-%b-%y %H:%M:%S GMT", "%a %b %e %H:%M:%S %Y"}) {
        const std::vector<std::string> texts = answers("UTC0", instants, format);
        for (std::size_t at = 0; at < instants.size(); ++at) {
            const NSAutoreleasePool pool;
            const std::int64_t expected = instants[at] >= 0 && instants[at] < kHttpEnd ? instants[at] : 0;
            const std::int32_t read = NSString::stringWith(texts[at])->ctimeFromHTTPDate();
            const bool isVague =
                expected == 0 && std::string_view(format).find("%y") != std::string_view::npos;
            require(read == expected || isVague, "UTC", "HTTP", instants[at], std::to_string(read),
                    texts[at]);
        }
    }
}

} // namespace

int main(int argumentCount, char **arguments) {
    if (argumentCount < 2)
        return std::fputs("usage: qb_dates ZONE...\n", stderr), 2;
    const NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    std::size_t compared = 0;
    for (int at = 1; at < argumentCount; ++at) {
        const std::string zone = arguments[at];
        NSTimeZone *const timeZone = NSTimeZone::timeZoneWithName(NSString::stringWith(zone));
        const qb::calendar::ZoneRef rules = qb::calendar::zoneNamed(zone);
        if (!timeZone || !rules)
            return std::fprintf(stderr, "%s is no zone\n", arguments[at]), 1;
        NSTimeZone::setDefaultTimeZone(timeZone);
        const std::vector<std::int64_t> instants = instantsOf(*rules);
        compareMidnights(zone, timeZone, instants);
        if (at == 1) { // these know no zones
            compareStamps(instants);
            compareHttpDates(instants);
        }
        compared += instants.size();
    }
    std::printf("%d zones, %zu times, %ld differences\n", argumentCount - 1, compared, differences);
    return differences == 0 ? 0 : 1;
}
