#include "support/PoolFixture.h"

using NSCalendarDateTest = PoolFixture;

static NSTimeZone *berlin() {
    return NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
}

static NSCalendarDate *dateIn(NSTimeZone *zone, int year, int month, int day, int hour = 0, int minute = 0,
                              int second = 0) {
    return NSCalendarDate::dateWithYear(year, month, day, hour, minute, second, zone);
}

TEST_F(NSCalendarDateTest, FieldsAreThoseOfTheZone) {
    NSCalendarDate *date = dateIn(berlin(), 2024, 2, 29, 23, 30, 15);
    EXPECT_EQ(date->dayOfWeek(), 4);
    EXPECT_EQ(date->dayOfYear(), 60);
    EXPECT_EQ(date->dayOfCommonEra(), 738945);
    EXPECT_EQ(dateIn(NSTimeZone::gmt(), 1, 1, 1)->dayOfCommonEra(), 1);
    EXPECT_EQ(date->minuteOfHour(), 30);
    EXPECT_EQ(describe(date->timeZone()), "Europe/Berlin");
    date->setTimeZone(NSTimeZone::timeZoneWithName("+0930"_ns));
    const int parts[] = {date->yearOfCommonEra(), date->monthOfYear(),  date->dayOfMonth(),
                         date->hourOfDay(),       date->minuteOfHour(), date->secondOfMinute()};
    EXPECT_EQ(std::to_array(parts), (std::array{2024, 3, 1, 8, 0, 15}));
}

TEST_F(NSCalendarDateTest, DatesThatTheCalendarHasNotCarry) {
    const std::pair<NSCalendarDate *, const char *> rows[] = {
        {dateIn(berlin(), 2003, 2, 29), "2003-03-01 00:00:00 +0100"},
        {dateIn(berlin(), 2003, 13, 32, 25, 61, 62), "2004-02-02 02:02:02 +0100"},
        {dateIn(berlin(), 2003, 0, 0, -1, -1, -1), "2002-11-29 22:58:59 +0100"},
        {dateIn(berlin(), 2024, 3, 31, 2, 30), "2024-03-31 03:30:00 +0200"},  // skipped: the offset before
        {dateIn(berlin(), 2024, 10, 27, 2, 30), "2024-10-27 02:30:00 +0200"}, // doubled: likewise
    };
    for (const auto &[date, text] : rows)
        EXPECT_EQ(describe(date), text);
    const double beyond = std::numeric_limits<double>::infinity();
    EXPECT_EQ(NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(beyond)->yearOfCommonEra(), INT32_MAX);
    EXPECT_EQ(NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(-beyond)->dayOfCommonEra(), INT32_MIN);
}

TEST_F(NSCalendarDateTest, TextsAreReadByTheirFormat) {
    NSTimeZone::setDefaultTimeZone(berlin());
    const std::tuple<const char *, const char *, const char *> rows[] = {
        {"24.12.2023 18:05", "%d.%m.%Y %H:%M", "2023-12-24 18:05:00 +0100"},
        {"1 Jul 2023 America/New_York", "%d %B %Y %Z", "2023-07-01 00:00:00 -0400"},
        {"86400", "%s", "1970-01-02 01:00:00 +0100"},
        {"-9223372036854775807", "%s", "-199639050592-02-03 08:53:28 +0053"},
        {"1 Jul 2023 Nowhere/Land", "%d %B %Y %Z", "nil"},
        {"", "%Y", "nil"},
    };
    for (const auto &[text, pattern, expected] : rows) {
        NSString *const format = NSString::stringWith(pattern);
        NSCalendarDate *const date = NSCalendarDate::dateWithString(NSString::stringWith(text), format);
        EXPECT_TRUE(!date || date->calendarFormat()->isEqual(format)) << text;
        EXPECT_EQ(date ? describe(date->descriptionWithCalendarFormat("%Y-%m-%d %H:%M:%S %z"_ns)) : "nil",
                  expected);
    }
    NSString *const text = "2023-07-01 12:00:00 -0330"_ns;
    EXPECT_EQ(describe(NSCalendarDate::dateWithString(text, nullptr)), describe(text));
    NSTimeZone::setDefaultTimeZone(nullptr);
}

TEST_F(NSCalendarDateTest, AddingMovesTheDateOnTheClocksAndTimePasses) {
    const struct {
        NSCalendarDate *start;
        int add[6];
        const char *expected;
    } rows[] = {
        {dateIn(berlin(), 2023, 1, 31), {0, 1, 0, 0, 0, 0}, "2023-03-03 00:00:00 +0100"},
        {dateIn(berlin(), 2024, 3, 30, 12), {0, 0, 1, 0, 0, 0}, "2024-03-31 12:00:00 +0200"},  // 23 hours
        {dateIn(berlin(), 2024, 3, 30, 12), {0, 0, 0, 24, 0, 0}, "2024-03-31 13:00:00 +0200"}, // 24 hours
        {dateIn(berlin(), 2024, 10, 27, 1, 59, 59), {0, 0, 0, 0, 60, 1}, "2024-10-27 02:00:00 +0100"},
        {dateIn(berlin(), 2024, 1, 1), {-1, -13, -31, -1, -1, -1}, "2021-10-30 22:58:59 +0200"},
    };
    for (const auto &row : rows) {
        const int *a = row.add;
        EXPECT_EQ(describe(row.start->dateByAddingYears(a[0], a[1], a[2], a[3], a[4], a[5])), row.expected);
    }
    NSCalendarDate *later = dateIn(berlin(), 2024, 10, 27, 0, 0, 0)->dateByAddingYears(0, 0, 0, 3, 0, 0);
    EXPECT_EQ(later->description()->view(), "2024-10-27 02:00:00 +0100");
    EXPECT_TRUE(later->dateByAddingYears(0, 0, 0, 0, 0, 0)->isEqual(later)); // still the second two o'clock
    later = NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(-0.25);
    EXPECT_TRUE(later->dateByAddingYears(0, 0, 0, 0, 0, 0)->isEqual(later));
}

TEST_F(NSCalendarDateTest, DifferencesAreWhatHasToBeAdded) {
    NSCalendarDate *start = dateIn(berlin(), 2020, 2, 29, 10, 0, 0);
    NSCalendarDate *end = dateIn(berlin(), 2024, 4, 1, 9, 30, 5);
    int years, months, days, hours, minutes, seconds;
    end->years(&years, &months, &days, &hours, &minutes, &seconds, start);
    const std::array<int, 6> parts = {years, months, days, hours, minutes, seconds};
    EXPECT_EQ(parts, (std::array<int, 6>{4, 1, 2, 23, 30, 5}));
    end->years(nullptr, &months, nullptr, &hours, nullptr, nullptr, start);
    EXPECT_EQ(months, 49);
    EXPECT_EQ(hours, 70); // three days, less half an hour and the hour that the clocks went ahead
    dateIn(berlin(), 2024, 4, 1)
        ->years(nullptr, nullptr, &days, &hours, nullptr, nullptr, dateIn(berlin(), 2024, 3, 31));
    EXPECT_EQ(days * 100 + hours, 100);                                       // a day, though of 23 hours
    NSTimeZone *const apia = NSTimeZone::timeZoneWithName("Pacific/Apia"_ns); // which has left out a day
    start = dateIn(apia, 1976, 2, 2, 18, 55, 5);
    end = dateIn(apia, 2017, 3, 8, 19, 24, 4);
    end->years(nullptr, nullptr, &days, &hours, nullptr, nullptr, start);
    EXPECT_EQ(days * 100 + hours, 15010 * 100);
    start->years(nullptr, nullptr, &days, &hours, nullptr, nullptr, end);
    EXPECT_EQ(days * 100 + hours, -15010 * 100);
    // The calendar has more seconds than 64 bits count.
    start = NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(-1e300);
    end = NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(1e300);
    start->years(nullptr, nullptr, nullptr, &hours, nullptr, nullptr, end);
    ASSERT_EQ(hours, INT32_MIN);
    end->years(nullptr, nullptr, &days, nullptr, nullptr, nullptr, start);
    EXPECT_EQ(days, INT32_MAX);

    Random random;
    const auto instant = [&] {
        return static_cast<std::int64_t>(random.bits() % 4'000'000'000) - 1'000'000'000;
    };
    for (int i = 0; i < 2000; ++i) {
        NSCalendarDate *from = NSCalendarDate::dateAt(instant(), berlin());
        NSCalendarDate *to = NSCalendarDate::dateAt(instant(), berlin());
        to->years(&years, i % 2 ? &months : nullptr, i % 3 ? &days : nullptr, &hours, &minutes, &seconds,
                  from);
        NSCalendarDate *sum =
            from->dateByAddingYears(years, i % 2 ? months : 0, i % 3 ? days : 0, hours, minutes, seconds);
        ASSERT_TRUE(sum->isEqual(to)) << *from << " to " << *to;
    }
}

TEST_F(NSCalendarDateTest, CopiesHaveZoneAndFormatOfTheirOwn) {
    NSCalendarDate *date = dateIn(berlin(), 2024, 1, 1);
    Ref<NSCalendarDate> copy = date->copy();
    date->setTimeZone(NSTimeZone::gmt());
    date->setCalendarFormat("%H"_ns);
    EXPECT_EQ(date->description()->view(), "23");
    EXPECT_EQ(copy->description()->view(), "2024-01-01 00:00:00 +0100");
    EXPECT_EQ(date->addTimeInterval(7200)->description()->view(), "01");
}
