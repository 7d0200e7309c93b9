#include "Calendar/Zone.h"
#include "Calendar/Format.h"

#include "System/Clock.h"
#include "Text/RandomText.h"
#include "TimeZoneSetting.h"
#include "support/Faults.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>
#include <vector>

using namespace qb::calendar;

const std::string kDirectory = "/usr/share/zoneinfo/";

static std::string contents(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

static std::vector<std::string> zoneNames() {
    std::vector<std::string> names = {"CET", "EST5EDT", "WET", "MST", "Etc/GMT+5"};
    std::istringstream table(contents(kDirectory + "zone1970.tab"));
    for (std::string line; std::getline(table, line);) {
        std::string countries, place, name;
        std::istringstream fields(line);
        if (line[0] != '#' && fields >> countries >> place >> name)
            names.push_back(name);
    }
    return names;
}

/// Compares with what the C library, set to the same zone, says.
static void expectAgreement(const Zone &zone, std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm local;
    localtime_r(&time, &local);
    char expected[80];
    std::strftime(expected, sizeof expected, "%Y-%m-%d %H:%M:%S %Z ", &local);
    ASSERT_EQ(formatted("%Y-%m-%d %H:%M:%S %Z ", momentAt(seconds, 0, zone)), expected) << zone.name();
    ASSERT_EQ(zone.offsetAt(seconds).isDst, local.tm_isdst > 0) << zone.name() << " at " << seconds;
}

static std::int64_t at(int year, int month, int day, int hour = 0, int minute = 0) {
    return secondsFromFields({year, month, day, hour, minute, 0});
}

constexpr bool kNarrowTime = sizeof(std::time_t) == 4;

static void compareWithLibrary(const Zone &zone, int firstYear, int stepDays) {
    const std::int64_t begin = at(kNarrowTime ? std::max(firstYear, 1902) : firstYear, 1, 1);
    const std::int64_t end = kNarrowTime ? at(2038, 1, 1) : at(2100, 12, 31);
    for (std::int64_t time = begin; time < end; time += stepDays * kSecondsPerDay + 3607)
        ASSERT_NO_FATAL_FAILURE(expectAgreement(zone, time));
    for (std::int64_t change = zone.rangeAt(begin).end; change < end; change = zone.rangeAt(change).end) {
        ASSERT_NO_FATAL_FAILURE(expectAgreement(zone, change - 1));
        ASSERT_NO_FATAL_FAILURE(expectAgreement(zone, change));
    }
}

TEST(ZoneTest, EveryZoneAgreesWithTheCLibrary) {
    const TimeZoneSetting setting("UTC");
    const std::vector<std::string> names = zoneNames();
    EXPECT_GT(names.size(), 300u);
    for (const std::string &name : names) {
        const ZoneRef zone = zoneNamed(name);
        ASSERT_TRUE(zone) << name;
        TimeZoneSetting::set(name.c_str());
        ASSERT_NO_FATAL_FAILURE(compareWithLibrary(*zone, 1900, 23));
    }
}

// From 1971 on: the C library takes earlier years for 1970.
TEST(ZoneTest, RulesAgreeWithTheCLibrary) {
    const TimeZoneSetting setting("UTC");
    for (const char *rule :
         {"CET-1CEST,M3.5.0,M10.5.0/3", "<+0545>-5:45", "NZST-12NZDT,M9.5.0,M4.1.0/3", "PQR+3:30:15",
          "<-02>2<-01>,M3.5.0/-1,M10.5.0/0", "EET-2EEST,M3.4.4/50,M10.4.4/50", "AAA3BBB,J59,J60",
          "AAA3BBB4:30,59/0,300/12:30", "IST-1GMT0,M10.5.0,M3.5.0/1"}) {
        const ZoneRef zone = zoneFromRule(rule);
        ASSERT_TRUE(zone) << rule;
        TimeZoneSetting::set(rule);
        ASSERT_NO_FATAL_FAILURE(compareWithLibrary(*zone, 1971, 1));
    }
}

TEST(ZoneTest, DaylightSavingAllYearHasNoGap) {
    const ZoneRef zone = zoneFromRule("XXX3EDT4,0/0,J365/23"); // the example of RFC 8536, section 3.3.1
    ASSERT_TRUE(zone);
    for (std::int64_t time = at(2024, 12, 1); time < at(2025, 2, 1); time += 1800)
        ASSERT_EQ(zone->offsetAt(time).abbreviation, "EDT") << time;
}

TEST(ZoneTest, ChangesAreTheUsualOnesAndMayComeInTheNextYear) {
    const ZoneRef zone = zoneFromRule("AAA0BBB,J364/167,J365/167");
    ASSERT_TRUE(zone);
    const ZoneRange range = zone->rangeAt(at(2024, 1, 1));
    EXPECT_EQ(range.begin, at(2023, 1, 6, 22));
    EXPECT_EQ(range.end, at(2024, 1, 5, 23));
    EXPECT_EQ(zoneFromRule("AAA5BBB")->rangeAt(at(2024, 7, 1)).begin, at(2024, 3, 10, 7));
}

TEST(ZoneTest, MalformedRulesAreRefused) {
    for (const char *rule :
         {"", "AB3", "ABC", "ABC25", "<ABC3", "<A+>3", "ABC3DEF,M13.1.0,M3.1.0", "ABC3DEF,M3.6.0,M4.1.0",
          "ABC3DEF,M3.1.7,M4.1.0", "ABC3DEF,J0,J5", "ABC3DEF,J366,J5", "ABC3DEF,366,5", "ABC3DEF,J5,J9x",
          "ABC3DEF,J5/168,J9", "ABC3:60", "ABC9999999999"})
        EXPECT_FALSE(zoneFromRule(rule)) << rule;
    EXPECT_FALSE(zoneFromRule(std::string_view("ABC3\0", 5)));
}

TEST(ZoneTest, LocalTimesComeBackAroundEveryChange) {
    for (const std::string &name : zoneNames()) {
        const ZoneRef zone = zoneNamed(name);
        ASSERT_TRUE(zone) << name;
        for (ZoneRange range = zone->rangeAt(INT64_MIN); range.end < at(2080, 1, 1);) {
            const ZoneRange next = zone->rangeAt(range.end);
            ASSERT_EQ(next.begin, range.end) << name;
            const std::int64_t end = range.end + range.offset.seconds; // of the range, by its own clocks
            const std::int64_t resumed = range.end + next.offset.seconds;
            zone->offsetAt(at(1890, 1, 1)); // what was asked before does not matter
            ASSERT_EQ(zone->localToUtc(end - 1), range.end - 1) << name << " " << range.end;
            ASSERT_EQ(zone->localToUtc(resumed - 1), resumed - 1 - range.offset.seconds)
                << name << " " << range.end;
            ASSERT_EQ(zone->localToUtc(std::max(end, resumed)), std::max(end, resumed) - next.offset.seconds)
                << name << " " << range.end;
            range = next;
        }
    }
}

TEST(ZoneTest, TimesAtTheEndsOfTheScaleAreAnswered) {
    const ZoneRef zone = zoneNamed("Europe/Berlin");
    ASSERT_TRUE(zone);
    EXPECT_EQ(zone->rangeAt(INT64_MIN).offset.abbreviation, "LMT");
    EXPECT_TRUE(zone->localToUtc(INT64_MIN) < INT64_MIN / 2 && zone->localToUtc(INT64_MAX) > INT64_MAX / 2);
    EXPECT_LT(zone->fieldsAt(INT64_MIN).year, -kYearLimit);
    const std::int64_t far = secondsFromFields({100'000'000'000, 7, 1, 0, 0, 0});
    EXPECT_EQ(far - zone->localToUtc(far), 7200);
}

TEST(ZoneTest, BadNamesAreNoZones) {
    for (const char *name : {"", "/etc/localtime", "../zoneinfo/UTC", "Europe", "Europe/Berlin/", "tzdata.zi",
                             "No/Where", "GMT+24", "GMT+1:", "+1", "+2400", " DST"})
        EXPECT_FALSE(zoneNamed(name)) << name;
}

TEST(ZoneTest, SystemZoneFollowsTheVariable) {
    const std::tuple<const char *, const char *, int> rows[] = {
        {"Europe/Berlin", "Europe/Berlin", 7200},
        {":Europe/Berlin", "Europe/Berlin", 7200},
        {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo", 32400},
        {"CET-1CEST,M3.5.0,M10.5.0/3", "CET-1CEST,M3.5.0,M10.5.0/3", 7200},
        {"GMT+3", "GMT+3", -10800}, // of the variable: west is positive
        {"", "UTC", 0},
        {"/etc/passwd", "UTC", 0},
    };
    const TimeZoneSetting setting("UTC");
    for (const auto &[variable, name, offset] : rows) {
        TimeZoneSetting::set(variable);
        EXPECT_EQ(systemZone()->name(), name);
        EXPECT_EQ(systemZone()->offsetAt(at(2024, 7, 1)).seconds, offset) << variable;
    }
    TimeZoneSetting::set(nullptr);
    resetSystemZone();
    const auto summer = static_cast<std::time_t>(at(2024, 7, 1));
    EXPECT_EQ(systemZone()->offsetAt(summer).seconds, std::localtime(&summer)->tm_gmtoff);
}

TEST(ZoneTest, EveryChangeOfTheEnvironmentIsSeen) {
    const TimeZoneSetting setting("Asia/Tokyo");
    EXPECT_EQ(systemZone()->name(), "Asia/Tokyo");
    char inPlace[] = "TZ=Asia/Kabul";
    ::putenv(inPlace);
    EXPECT_EQ(systemZone()->name(), "Asia/Kabul");
    std::memcpy(inPlace, "TZ=Asia/Dhaka", sizeof inPlace);
    EXPECT_EQ(systemZone()->name(), "Asia/Dhaka");
    const ZoneRef dhaka = systemZone();
    setenv("QB_ANOTHER", "1", 1);
    EXPECT_EQ(systemZone(), dhaka);
    unsetenv("TZ");
    EXPECT_NE(systemZone(), dhaka);
    unsetenv("QB_ANOTHER"); // what is set now takes its place
    setenv("TZ", "Asia/Tokyo", 1);
    EXPECT_EQ(systemZone()->name(), "Asia/Tokyo");

    char **const before = ::environ;
    char *other[] = {inPlace, nullptr}, *none[] = {nullptr};
    ::environ = other;
    EXPECT_EQ(systemZone()->name(), "Asia/Dhaka");
    ::environ = none;
    const ZoneRef withoutVariable = systemZone();
    ::environ = nullptr;
    EXPECT_EQ(systemZone(), withoutVariable);
    ::environ = before;
    EXPECT_EQ(systemZone()->name(), "Asia/Tokyo");
}

TEST(ZoneTest, DatabaseIsWhereTheVariableSays) {
    const TemporaryDirectory directory("zones");
    directory.makeDirectory("Own");
    directory.write("Own/Place", contents(kDirectory + "Asia/Tokyo"));
    setenv("TZDIR", directory.path().c_str(), 1);
    const TimeZoneSetting setting("Own/Place");
    EXPECT_EQ(systemZone()->offsetAt(0).seconds, 32400);
    TimeZoneSetting::set((directory / "Own/Place").c_str());
    EXPECT_EQ(systemZone()->name(), "Own/Place");
    unsetenv("TZDIR");
}

TEST(ZoneTest, LocalTimeFileIsLookedAtEachSecond) {
    const TimeZoneSetting setting(nullptr);
    const auto awaitNextSecond = [] {
        const std::int64_t second = sys::wallSeconds();
        while (sys::wallSeconds() == second)
            sys::sleep(10'000'000);
    };
    for (const Call call : {Call::stat, Call::lstat}) { // the file, and a link in its place
        awaitNextSecond();
        const ZoneRef zone = systemZone();
        awaitNextSecond();
        const Fault gone(call, /*skip=*/0, /*times=*/1, ENOENT);
        EXPECT_NE(systemZone(), zone);
        EXPECT_EQ(gone.hits(), 1u);
    }
}

TEST(ZoneTest, PassingFailuresAreNotKept) {
    const Fault first(Call::open, /*skip=*/0, /*times=*/1, EMFILE);
    EXPECT_FALSE(zoneNamed("Etc/GMT-13")); // not asked for elsewhere
    EXPECT_TRUE(zoneNamed("Etc/GMT-13"));
    for (const char *text : {"Asia/Kolkata", static_cast<const char *>(nullptr)}) { // by the system's link
        const TimeZoneSetting setting(text);
        const std::string name = systemZone()->name();
        resetSystemZone();
        const Fault fault(Call::open, /*skip=*/0, /*times=*/1, EMFILE);
        EXPECT_EQ(systemZone()->name(), "UTC");
        EXPECT_EQ(systemZone()->name(), name);
    }
}

TEST(ZoneFileTest, CutFilesAreRefusedAtEveryLength) {
    const std::string bytes = contents(kDirectory + "Europe/Berlin");
    ZoneData data;
    ASSERT_TRUE(parseZoneFile(bytes, data));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        ExactCopy cut(bytes.substr(0, length), 0);
        ASSERT_FALSE(parseZoneFile({cut.begin(), length}, data)) << length;
    }
}

TEST(ZoneFileTest, FlippedBytesAreRefusedOrStillMakeAZone) {
    const std::string bytes = contents(kDirectory + "America/New_York");
    ASSERT_FALSE(bytes.empty());
    for (std::size_t position = 0; position < bytes.size(); ++position) {
        for (const int flip : {0x01, 0x80, 0xff}) {
            std::string changed = bytes;
            changed[position] = static_cast<char>(changed[position] ^ flip);
            ZoneData data;
            if (!parseZoneFile(changed, data))
                continue;
            const Zone zone("Changed", std::move(data));
            for (const std::int64_t time : {INT64_MIN, at(1918, 3, 31), at(2024, 7, 1), INT64_MAX}) {
                ASSERT_LE(std::abs(zone.offsetAt(time).seconds), kMaxZoneOffset) << position;
                ASSERT_LE(zone.offsetAt(time).abbreviation.size(), 40u) << position;
                zone.localToUtc(time);
            }
        }
    }
}

TEST(ZoneFileTest, FirstVersionEndsWithItsLastTransition) {
    const auto count = [](unsigned value) { return std::string{'\0', '\0', '\0', static_cast<char>(value)}; };
    const auto header = [count](unsigned leaps, unsigned transitions, unsigned types) {
        return "TZif" + std::string(16, '\0') + count(0) + count(0) + count(leaps) + count(transitions) +
               count(types) + count(8);
    };
    const std::string types = count(0) + std::string{'\0', '\0'} + std::string("\0\0\x0e\x10\1\4", 6);
    const std::string names("ABC\0DEF\0", 8);
    const std::string before(4, '\xff'); // one second before 1970
    ZoneData data;
    ASSERT_TRUE(parseZoneFile(header(0, 1, 2) + before + '\1' + types + names, data));
    const Zone zone("Old", std::move(data));
    EXPECT_EQ(zone.offsetAt(-2).abbreviation, "ABC");
    EXPECT_EQ(zone.offsetAt(-1).abbreviation, "DEF");
    EXPECT_EQ(zone.offsetAt(INT64_MAX).seconds, 3600);

    EXPECT_FALSE(parseZoneFile(header(0, 1, 2) + before + '\2' + types + names, data)) << "no such type";
    EXPECT_FALSE(parseZoneFile(header(0, 2, 2) + before + before + "\1\1" + types + names, data)) << "order";
    EXPECT_FALSE(parseZoneFile(header(0, 0, 0) + names, data)) << "no type";
    for (const char *type : {"\x7f\0\0\0\0\0", "\0\0\0\0\2\0", "\0\0\0\0\0\b"}) // offset, flag, name
        EXPECT_FALSE(parseZoneFile(header(0, 0, 1) + std::string(type, 6) + names, data)) << type[4];
    EXPECT_FALSE(parseZoneFile(header(1, 0, 2) + types + names + std::string(8, '\0'), data))
        << "leap second";
}
