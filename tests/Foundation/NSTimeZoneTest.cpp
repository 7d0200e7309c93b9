#include "Calendar/TimeZoneSetting.h"
#include "support/PoolFixture.h"

#include <algorithm>

using NSTimeZoneTest = PoolFixture;

namespace {

NSDate *winter() {
    return NSDate::dateWithString("2024-01-15 12:00:00 +0000"_ns);
}
NSDate *summer() {
    return NSDate::dateWithString("2024-07-15 12:00:00 +0000"_ns);
}

} // namespace

TEST_F(NSTimeZoneTest, NamesAbbreviationsAndOffsetsFindZones) {
    const struct {
        NSTimeZone *zone;
        const char *name;
        int winter, summer; // seconds
        const char *summerName;
        bool isSummerTime;
    } rows[] = {
        {NSTimeZone::timeZoneWithName("Europe/Berlin"_ns), "Europe/Berlin", 3600, 7200, "CEST", true},
        {NSTimeZone::timeZoneWithName("CET"_ns), "CET", 3600, 7200, "CEST", true}, // a place of that name
        {NSTimeZone::timeZoneWithName("GMT-11"_ns), "GMT-11", -39600, -39600, "GMT-11", false},
        {NSTimeZone::timeZoneWithName("GMT+5:30"_ns), "GMT+5:30", 19800, 19800, "GMT+5:30", false},
        {NSTimeZone::timeZoneWithName("-03"_ns), "-03", -10800, -10800, "-03", false},
        {NSTimeZone::timeZoneWithName("+001930"_ns), "+001930", 1170, 1170, "+001930", false},
        {NSTimeZone::timeZoneWithName("CET DST"_ns), "CET DST", 7200, 7200, "CET DST", true},
        {NSTimeZone::timeZoneWithName("GMT+1 DST"_ns), "GMT+1 DST", 7200, 7200, "GMT+1 DST", true},
        {NSTimeZone::timeZoneWithName("Europe/Berlin DST"_ns), "Europe/Berlin DST", 7200, 10800,
         "Europe/Berlin DST", true},
        {NSTimeZone::timeZoneWithAbbreviation("CET"_ns), "CET", 3600, 3600, "CET", false},
        {NSTimeZone::timeZoneWithAbbreviation("CEST"_ns), "CEST", 7200, 7200, "CEST", true},
        {NSTimeZone::timeZoneWithAbbreviation("Asia/Kathmandu"_ns), "Asia/Kathmandu", 20700, 20700, "+0545",
         false},
        {NSTimeZone::timeZoneForSecondsFromGMT(-5400), "-0130", -5400, -5400, "-0130", false},
    };
    for (const auto &row : rows) {
        ASSERT_NE(row.zone, nullptr) << row.name;
        EXPECT_EQ(row.zone->name()->view(), row.name);
        EXPECT_EQ(row.zone->secondsFromGMTForDate(winter()), row.winter) << row.name;
        EXPECT_EQ(row.zone->secondsFromGMTForDate(summer()), row.summer) << row.name;
        EXPECT_EQ(row.zone->abbreviationForDate(summer())->view(), row.summerName);
        EXPECT_EQ(row.zone->isDaylightSavingTimeForDate(summer()), row.isSummerTime) << row.name;
        EXPECT_EQ(row.zone->secondsFromGMT(), row.zone->secondsFromGMTForDate(NSDate::date()));
    }
    EXPECT_EQ(NSTimeZone::timeZoneWithName("Nowhere/Land"_ns), nullptr);
    EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(27 * 3600), nullptr);
}

TEST_F(NSTimeZoneTest, EqualityIsOfNameAndClocks) {
    NSTimeZone *const minute = NSTimeZone::timeZoneForSecondsFromGMT(60);
    EXPECT_TRUE(minute->isEqual(NSTimeZone::timeZoneWithName("+0001"_ns)));
    EXPECT_EQ(minute->hash(), NSTimeZone::timeZoneWithName("+0001"_ns)->hash());
    NSTimeZone *const place = NSTimeZone::timeZoneWithName("CET"_ns);
    EXPECT_FALSE(place->isEqual(NSTimeZone::timeZoneWithAbbreviation("CET"_ns)));
    EXPECT_FALSE(place->isEqual(NSTimeZone::timeZoneWithName("Europe/Berlin"_ns)));
}

TEST_F(NSTimeZoneTest, TheDefaultIsTheSystemsUntilItIsSet) {
    const TimeZoneSetting setting("America/New_York");
    EXPECT_EQ(describe(NSTimeZone::systemTimeZone()), "America/New_York");
    TimeZoneSetting::set("Asia/Tokyo");
    EXPECT_EQ(describe(NSTimeZone::defaultTimeZone()), "Asia/Tokyo");
    NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Europe/Paris"_ns));
    EXPECT_EQ(describe(NSTimeZone::localTimeZone()), "Europe/Paris");
    EXPECT_EQ(describe(NSTimeZone::systemTimeZone()), "Asia/Tokyo");
    NSTimeZone::setDefaultTimeZone(nullptr);
    EXPECT_EQ(describe(NSTimeZone::defaultTimeZone()), "Asia/Tokyo");
}

TEST_F(NSTimeZoneTest, EveryKnownNameFindsItsZone) {
    std::string before;
    NSArray *names = NSTimeZone::knownTimeZoneNames();
    EXPECT_GT(names->count(), 300u);
    EXPECT_TRUE(names->containsObject("America/Argentina/Buenos_Aires"_ns));
    for (id name : *names) {
        EXPECT_LT(before, describe(name));
        before = describe(name);
        EXPECT_NE(NSTimeZone::timeZoneWithName(static_cast<NSString *>(name)), nullptr) << before;
    }
}
