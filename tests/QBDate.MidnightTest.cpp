#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Runtime/Send.h>

#include "support/DateCommand.h"
#include "support/PoolFixture.h"

#include <random>

using QBDateMidnightTest = PoolFixture;

namespace {

NSTimeZone *zoneOf(const char *name) {
    return NSTimeZone::timeZoneWithName(NSString::stringWith(name));
}

bool isMidnight(NSDate *date, NSTimeZone *zone) {
    return date->descriptionWithCalendarFormat("%H%M%S"_ns, zone, nullptr)->view() == "000000";
}

/// Whether no other instant nearby has the same local time.
bool isSingle(NSDate *date, NSTimeZone *zone) {
    for (const double shift : {-7200.0, -3600.0, -1800.0, 1800.0, 3600.0, 7200.0})
        if (isMidnight(date->addTimeInterval(shift), zone))
            return false;
    return true;
}

} // namespace

TEST_F(QBDateMidnightTest, DayIsThatOfTheZone) {
    NSTimeZone *const berlin = zoneOf("Europe/Berlin");
    NSCalendarDate *const evening = NSCalendarDate::dateWithYear(2024, 3, 30, 23, 30, 0, NSTimeZone::gmt());
    EXPECT_EQ(describe(evening->midnightOfTimeZone(berlin)), "2024-03-31 00:00:00 +0100");
    EXPECT_EQ(describe(evening->midnightOfTimeZone(NSTimeZone::gmt())), "2024-03-30 00:00:00 +0000");
    NSTimeZone::setDefaultTimeZone(berlin);
    EXPECT_EQ(describe(evening->midnight()), "2024-03-31 00:00:00 +0100");
    EXPECT_EQ(describe(evening->midnightOfTimeZone(nullptr)), "2024-03-31 00:00:00 +0100");
    NSDate *const instant =
        NSDate::dateWithTimeIntervalSinceReferenceDate(evening->timeIntervalSinceReferenceDate() + 0.5);
    EXPECT_EQ(describe(send<NSCalendarDate *>(instant, "midnight"_sel)), "2024-03-31 00:00:00 +0100");
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
        {"Europe/Berlin", 2024, 10, 27, 23, "2024-10-27 00:00:00 +0200"},
    };
    for (const auto &row : rows) {
        NSTimeZone *const zone = zoneOf(row.zone);
        NSCalendarDate *const date =
            NSCalendarDate::dateWithYear(row.year, row.month, row.day, row.hour, 0, 0, zone);
        EXPECT_EQ(describe(date->midnightOfTimeZone(zone)), row.expected) << row.zone;
    }
}

TEST_F(QBDateMidnightTest, MidnightsOfAllZonesAgreeWithTheSystem) {
    const std::uint32_t seed = std::random_device{}();
    std::mt19937_64 random(seed);
    std::vector<std::string> questions, answers;
    for (const id name : *NSTimeZone::knownTimeZoneNames()) {
        const NSAutoreleasePool pool;
        NSTimeZone *const zone = NSTimeZone::timeZoneWithName(name->description());
        for (int count = 0; count < 20; ++count) {
            const double seconds =
                static_cast<double>(random() % 6'343'000'000) - 2'208'988'800; // 1900 to 2100
            NSCalendarDate *const midnight = NSDate::dateWithTimeIntervalSince1970(seconds)
                                                 ->dateWithCalendarFormat(nullptr, nullptr)
                                                 ->midnightOfTimeZone(zone);
            if (!isMidnight(midnight, zone) || !isSingle(midnight, zone))
                continue; // of which the command has an opinion of its own
            questions.push_back(std::string("TZ=\"") + name->cStringValue() + "\" " +
                                std::string(midnight->descriptionWithCalendarFormat("%Y-%m-%d"_ns)->view()));
            answers.push_back(std::to_string(static_cast<std::int64_t>(midnight->timeIntervalSince1970())));
        }
    }
    EXPECT_GT(questions.size(), 1000u);
    const std::vector<std::string> expected = printedDates("UTC0", questions, "%s");
    ASSERT_EQ(answers.size(), expected.size());
    for (std::size_t i = 0; i < answers.size(); ++i)
        EXPECT_EQ(answers[i], expected[i]) << questions[i] << " seed " << seed;
}
