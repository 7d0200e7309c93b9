#include "support/PoolFixture.h"

using QBDateMidnightTest = PoolFixture;

namespace {

NSTimeZone *zoneOf(const char *name) {
    return NSTimeZone::timeZoneWithName(NSString::stringWith(name));
}

} // namespace

TEST_F(QBDateMidnightTest, DayIsThatOfTheZone) {
    NSTimeZone *const berlin = zoneOf("Europe/Berlin");
    NSCalendarDate *const evening = NSCalendarDate::dateWithYear(2024, 3, 30, 23, 30, 0, NSTimeZone::gmt());
    EXPECT_EQ(describe(evening->midnightOfTimeZone(berlin)), "2024-03-31 00:00:00 +0100");
    NSTimeZone::setDefaultTimeZone(berlin);
    EXPECT_EQ(describe(evening->midnight()), "2024-03-31 00:00:00 +0100");
    auto *const today = send<NSCalendarDate *>(NSDate::cls(), "midnight"_sel);
    EXPECT_EQ(describe(today), describe(NSDate::date()->midnight()));
    NSTimeZone::setDefaultTimeZone(nullptr);
}

TEST_F(QBDateMidnightTest, ClocksThatChangeAtMidnight) {
    const struct {
        const char *zone;
        int year, month, day, hour;
        const char *expected;
    } rows[] = {
        {"America/Sao_Paulo", 2018, 11, 4, 12, "2018-11-04 01:00:00 -0200"}, // there is no midnight
        {"America/Sao_Paulo", 2018, 2, 18, 12, "2018-02-18 00:00:00 -0300"}, // 23 to 24 came twice
        {"America/Havana", 2023, 11, 5, 12, "2023-11-05 00:00:00 -0400"},    // 0 to 1 came twice
        {"Pacific/Apia", 2011, 12, 31, 0, "2011-12-31 00:00:00 +1400"},      // behind a day that was left out
    };
    for (const auto &row : rows) {
        NSTimeZone *const zone = zoneOf(row.zone);
        NSCalendarDate *const date =
            NSCalendarDate::dateWithYear(row.year, row.month, row.day, row.hour, 0, 0, zone);
        EXPECT_EQ(describe(date->midnightOfTimeZone(zone)), row.expected) << row.zone;
    }
}
