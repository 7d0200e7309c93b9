#include "support/PoolFixture.h"

using QBDateMidnightTest = PoolFixture;

// Clocks that change at midnight are compared with the system's in tests/dates.
TEST_F(QBDateMidnightTest, DayIsThatOfTheZone) {
    NSTimeZone *const berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
    NSCalendarDate *const evening = NSCalendarDate::dateWithYear(2024, 3, 30, 23, 30, 0, NSTimeZone::gmt());
    EXPECT_EQ(describe(evening->midnightOfTimeZone(berlin)), "2024-03-31 00:00:00 +0100");
    NSTimeZone::setDefaultTimeZone(berlin);
    EXPECT_EQ(describe(evening->midnight()), "2024-03-31 00:00:00 +0100");
    NSTimeZone *const havana = NSTimeZone::timeZoneWithName("America/Havana"_ns); // 0 to 1 came twice
    NSCalendarDate *const noon = NSCalendarDate::dateWithYear(2023, 11, 5, 12, 0, 0, havana);
    EXPECT_EQ(describe(noon->midnightOfTimeZone(havana)), "2023-11-05 00:00:00 -0400");
    auto *const today = send<NSCalendarDate *>(NSDate::cls(), "midnight"_sel);
    EXPECT_EQ(describe(today), describe(NSDate::date()->midnight()));
    NSTimeZone::setDefaultTimeZone(nullptr);
}
