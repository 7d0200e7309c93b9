#include "Calendar/TimeZoneSetting.h"
#include "support/PoolFixture.h"

using NSTimeZoneTest = PoolFixture;

TEST_F(NSTimeZoneTest, NamesAbbreviationsAndOffsetsFindZones) {
    const std::pair<NSTimeZone *, const char *> rows[] = {
        // The name, the seconds in winter and summer, the summer's name and whether it is summer time.
        {NSTimeZone::timeZoneWithName("Europe/Berlin"_ns), "Europe/Berlin 3600 7200 CEST 1"},
        {NSTimeZone::timeZoneWithName("CET"_ns), "CET 3600 7200 CEST 1"}, // a place of that name
        {NSTimeZone::timeZoneWithName("GMT+5:30"_ns), "GMT+5:30 19800 19800 GMT+5:30 0"},
        {NSTimeZone::timeZoneWithName("-03"_ns), "-03 -10800 -10800 -03 0"},
        {NSTimeZone::timeZoneWithName("+001930"_ns), "+001930 1170 1170 +001930 0"},
        {NSTimeZone::timeZoneWithName("CET DST"_ns), "CET DST 7200 7200 CET DST 1"},
        {NSTimeZone::timeZoneWithName("GMT+1 DST"_ns), "GMT+1 DST 7200 7200 GMT+1 DST 1"},
        {NSTimeZone::timeZoneWithName("Asia/Tokyo DST"_ns), "Asia/Tokyo DST 36000 36000 Asia/Tokyo DST 1"},
        {NSTimeZone::timeZoneWithAbbreviation("CET"_ns), "CET 3600 3600 CET 0"},
        {NSTimeZone::timeZoneWithAbbreviation("Asia/Tokyo"_ns), "Asia/Tokyo 32400 32400 JST 0"},
        {NSTimeZone::timeZoneForSecondsFromGMT(-5400), "-0130 -5400 -5400 -0130 0"},
        {NSTimeZone::timeZoneWithName("Zulu"_ns), "Zulu 0 0 UTC 0"}, // a place whose clocks never change
    };
    NSDate *const winter = NSDate::dateWithString("2024-01-15 12:00:00 +0000"_ns);
    NSDate *const summer = NSDate::dateWithString("2024-07-15 12:00:00 +0000"_ns);
    const auto tell = [&](NSTimeZone *zone) {
        return NSString::stringWithFormat(
                   "%@ %d %d %@ %d"_ns, zone->name(), zone->secondsFromGMTForDate(winter),
                   zone->secondsFromGMTForDate(summer), zone->abbreviationForDate(summer),
                   zone->isDaylightSavingTimeForDate(summer))
            ->view();
    };
    for (const auto &[zone, told] : rows) {
        ASSERT_NE(zone, nullptr) << told;
        EXPECT_EQ(tell(zone), told);
        NSData *const archive = NSArchiver::archivedDataWithRootObject(zone);
        EXPECT_EQ(tell(static_cast<NSTimeZone *>(NSUnarchiver::unarchiveObjectWithData(archive))), told);
        EXPECT_EQ(zone->secondsFromGMT(), zone->secondsFromGMTForDate(NSDate::date()));
        EXPECT_EQ(describe(zone->abbreviation()), describe(zone->abbreviationForDate(NSDate::date())));
        EXPECT_EQ(zone->isDaylightSavingTime(), zone->isDaylightSavingTimeForDate(NSDate::date()));
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
    EXPECT_EQ(describe(NSTimeZone::defaultTimeZone()), "America/New_York");
    NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Europe/Paris"_ns));
    EXPECT_EQ(describe(NSTimeZone::localTimeZone()), "Europe/Paris");
    TimeZoneSetting::set("Asia/Tokyo");
    EXPECT_EQ(describe(NSTimeZone::systemTimeZone()), "Asia/Tokyo");
    NSTimeZone::setDefaultTimeZone(nullptr);
    EXPECT_EQ(describe(NSTimeZone::defaultTimeZone()), "Asia/Tokyo");
}

TEST_F(NSTimeZoneTest, TheSystemsZoneIsKeptUntilItIsReset) {
    const TimeZoneSetting setting("Etc/GMT-12"); // not asked for elsewhere
    {
        const Fault fault(Call::open, /*skip=*/0, /*times=*/0, ENOENT);
        EXPECT_EQ(describe(NSTimeZone::systemTimeZone()), "UTC");
    }
    EXPECT_EQ(describe(NSTimeZone::systemTimeZone()), "UTC");
    NSTimeZone::resetSystemTimeZone();
    EXPECT_EQ(describe(NSTimeZone::systemTimeZone()), "Etc/GMT-12");
}

TEST_F(NSTimeZoneTest, TheSystemsOwnZoneIsFoundInAnArchive) {
    const TimeZoneSetting setting(":/etc/../usr/share/zoneinfo/Europe/Berlin");
    NSTimeZone *const zone = NSTimeZone::systemTimeZone();
    EXPECT_EQ(zone->secondsFromGMTForDate(NSDate::dateWithTimeIntervalSince1970(0)), 3600);
    NSData *const archive = NSArchiver::archivedDataWithRootObject(zone);
    EXPECT_TRUE(zone->isEqual(NSUnarchiver::unarchiveObjectWithData(archive)));
    TimeZoneSetting::set("Asia/Tokyo");
    const ErrorExpectation unknownHere(900002);
    EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(archive), nullptr);
}

TEST_F(NSTimeZoneTest, EveryKnownNameFindsItsZone) {
    NSArray *names = NSTimeZone::knownTimeZoneNames();
    EXPECT_GT(names->count(), 300u);
    EXPECT_TRUE(names->containsObject("GMT"_ns));
    EXPECT_TRUE(names->isEqual(names->sortedArrayUsingSelector("compare:"_sel)));
    for (id name : *names)
        EXPECT_NE(NSTimeZone::timeZoneWithName(static_cast<NSString *>(name)), nullptr) << describe(name);
}
