#include "Calendar/TimeZoneSetting.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <ctime>

using OSTimeTest = PoolFixture;

namespace {

// The C library's text for the current second.
std::string localTimeText() {
    const std::time_t now = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
    return text;
}

} // namespace

TEST_F(OSTimeTest, TheTimeIsLocalAndFollowsTheZoneAtOnce) {
    for (const char *zone : {"UTC", "XYZ-5:45", "UTC"}) {
        const TimeZoneSetting setting(zone);
        const std::string before = localTimeText();
        const std::string text(OSTime::timeAsStringInSystemFormat()->view());
        EXPECT_LE(before, text);
        EXPECT_LE(text, localTimeText());
    }
}

TEST_F(OSTimeTest, MillisecondsCountFromTheEpoch) {
    const std::int64_t before = std::time(nullptr);
    const std::int64_t now = OSTime::currentTimeMillis();
    EXPECT_GE(now, before * 1000);
    EXPECT_LT(now, (std::time(nullptr) + 2) * 1000LL); // time() is some milliseconds late
}

TEST_F(OSTimeTest, AliasesStandForOtherZones) {
    const struct {
        const char *alias, *name;
        int summer, winter; // hours ahead of Greenwich
    } rows[] = {
        {"TAI", "GMT", 0, 0},
        {"UT", "GMT", 0, 0},
        {"Z", "GMT", 0, 0},
        {"IST", "GB-Eire", 1, 0},
        {"WEST", "WET DST", 1, 1},
        {"WAT", "GMT-1", -1, -1},
        {"AT", "GMT-2", -2, -2},
        {"MT", "MST", -7, -7},
        {"PT", "PST", -8, -8},
        {"CAT", "HST", -10, -10},
        {"AHST", "HST", -10, -10},
        {"AKST", "HST", -10, -10},
        {"AKDT", "HDT", -9, -9},
        {"CCT", "GMT+8", 8, 8},
        {"EAST", "EST", -5, -5},
        {"EADT", "EDT", -4, -4},
        {"NT", "GMT-11", -11, -11},
        {"IDLW", "GMT-12", -12, -12},
        {"FWT", "CET", 1, 1},
        {"FST", "CET", 1, 1},
        {"MEZ", "CET", 1, 1},
        {"MESZ", "CEST", 2, 2},
        {"MEST", "CEST", 2, 2},
        {"MEWT", "CET", 1, 1},
        {"SWT", "CET", 1, 1},
        {"EEST", "EET DST", 3, 3},
        {"BT", "GMT+3", 3, 3},
        {"MSK", "W-SU", 3, 3},
        {"WAST", "Australia/West", 8, 8},
        {"WADT", "Australia/West", 8, 8},
        {"GST", "GMT+10", 10, 10},
        {"IDLE", "GMT+12", 12, 12},
        // no aliases
        {"CEST", "CEST", 2, 2},
        {"Europe/Berlin", "Europe/Berlin", 2, 1},
        {"GMT+5", "GMT+5", 5, 5},
    };
    NSDate *const summer = NSDate::dateWithString("2024-07-15 12:00:00 +0000"_ns);
    NSDate *const winter = NSDate::dateWithString("2024-01-15 12:00:00 +0000"_ns);
    for (const auto &row : rows) {
        NSTimeZone *const zone = OSTime::timeZoneWithName(NSString::stringWith(row.alias));
        ASSERT_NE(zone, nullptr) << row.alias;
        EXPECT_EQ(describe(zone), row.name);
        EXPECT_EQ(zone->secondsFromGMTForDate(summer), row.summer * 3600) << row.alias;
        EXPECT_EQ(zone->secondsFromGMTForDate(winter), row.winter * 3600) << row.alias;
    }
    EXPECT_EQ(OSTime::timeZoneWithName(""_ns), nullptr);
    EXPECT_EQ(OSTime::timeZoneWithName(NSString::stringWith({"MEZ\0", 4})), nullptr);
    EXPECT_EQ(OSTime::timeZoneWithName(nullptr), NSTimeZone::defaultTimeZone());
}

TEST_F(OSTimeTest, TheSystemsZoneIsNamedByItsStandardTime) {
    const TimeZoneSetting setting("Europe/Berlin");
    EXPECT_EQ(describe(OSTime::timeZone()), "CET");
    TimeZoneSetting::set("America/Anchorage");
    EXPECT_EQ(describe(OSTime::timeZone()), "HST");
    TimeZoneSetting::set("XYZ-5:45");
    EXPECT_EQ(OSTime::timeZone(), nullptr);
    for (id name : *NSTimeZone::knownTimeZoneNames()) {
        TimeZoneSetting::set(name->cStringValue());
        EXPECT_NE(OSTime::timeZone(), nullptr) << describe(name);
    }
}

TEST_F(OSTimeTest, WithoutANameTheZoneIsTheOffsetOfNow) {
    // A zone file: the clocks are 5400 s ahead, from 1970 on 9000 s as daylight saving time; both without a
    // name.
    const auto file = [](bool isAdvanced) {
        const char counts[] = {0, 0, 0, static_cast<char>(isAdvanced ? 2 : 0), 0, 0, 0, 2, 0, 0, 0, 1};
        const char types[] = {0, 0, 0x15, 0x18, 0, 0, 0, 0, 0x23, 0x28, 1, 0};
        const std::string changes = isAdvanced ? std::string("\xFF\xFF\0\0\0\0\0\0\0\1", 10) : "";
        return "TZif" + std::string(28, '\0') + std::string(counts, sizeof counts) + changes +
               std::string(types, sizeof types) + '\0';
    };
    const TemporaryDirectory directory;
    directory.write("standard", file(false));
    directory.write("advanced", file(true));
    const TimeZoneSetting setting((directory / "standard").c_str());
    EXPECT_EQ(describe(OSTime::timeZone()), "+0130");
    TimeZoneSetting::set((directory / "advanced").c_str());
    EXPECT_EQ(describe(OSTime::timeZone()), "+0230");
}
