#include "System/Clock.h"
#include "support/PoolFixture.h"

using NSDateTest = PoolFixture;

static constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST_F(NSDateTest, MakersCountFromTheirOwnZero) {
    const double now = static_cast<double>(qb::sys::wallMilliseconds()) / 1000 - NSTimeIntervalSince1970;
    EXPECT_NEAR(NSDate::timeIntervalSinceReferenceDateOfClass(), now, 2);
    EXPECT_NEAR(NSDate::dateWithTimeIntervalSinceNow(100)->timeIntervalSinceNow(), 100, 2);
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(0.5)->timeIntervalSince1970(), 978307200.5);
    NSDate *one = NSDate::dateWithTimeIntervalSinceReferenceDate(1);
    EXPECT_EQ(NSDate::initWithTimeInterval(2, one)->timeIntervalSinceReferenceDate(), 3);
    EXPECT_EQ(NSDate::dateWithTimeInterval(2, one)->timeIntervalSinceReferenceDate(), 3);
    EXPECT_EQ(answer(NSDate::cls(), "initWithTimeIntervalSince1970:", {1}), "1970-01-01 00:00:01 +0000");
    EXPECT_EQ(one->timeIntervalSinceDate(one->addTimeInterval(4)), -4);
    EXPECT_REASON(NSDate::dateWithTimeIntervalSinceReferenceDate(std::nan("")),
                  "NSDate initWithTimeIntervalSinceReferenceDate: must have an interval that is a number.");
}

TEST_F(NSDateTest, LaterDatesAreOfTheReceiversClassAndMadeByItsInitialiser) {
    struct WholeDate : ClientClass<WholeDate, NSDate, "WholeDate"> {
        BOOL setUpWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) override {
            return seconds >= 0 && NSDate::setUpWithTimeIntervalSinceReferenceDate(std::floor(seconds));
        }
    };
    const id date = send(WholeDate::cls(), "dateWithTimeIntervalSinceReferenceDate:"_sel, 2.0);
    NSDate *const later = static_cast<NSDate *>(date)->addTimeInterval(1.5);
    EXPECT_TRUE(later->isMemberOfClass(WholeDate::cls()));
    EXPECT_EQ(later->timeIntervalSinceReferenceDate(), 3);
    EXPECT_EQ(later->addTimeInterval(-4), nullptr);
}

TEST_F(NSDateTest, DescriptionsAreInGmtAndReadBack) {
    NSDate *const date = NSDate::dateWithTimeIntervalSinceReferenceDate(-0.001);
    EXPECT_EQ(date->description()->view(), "2000-12-31 23:59:59 +0000");
    EXPECT_EQ(NSDate::dateWithString(date->description())->timeIntervalSinceReferenceDate(), -1);
    EXPECT_EQ(NSDate::distantPast()->description()->view(), "1-01-01 00:00:00 +0000");
    EXPECT_EQ(NSDate::distantFuture()->description()->view(), "4001-01-01 00:00:00 +0000");
    // Beyond every calendar, but text all the same.
    EXPECT_GT(NSDate::dateWithTimeIntervalSinceReferenceDate(kInfinity)->description()->length(), 20u);
}

TEST_F(NSDateTest, FormatAndZoneAreAsked) {
    NSDate *date = NSDate::dateWithTimeIntervalSinceReferenceDate(1.001);
    NSTimeZone *zone = NSTimeZone::timeZoneForSecondsFromGMT(3600);
    EXPECT_EQ(date->descriptionWithCalendarFormat("%d.%m.%Y %H:%M:%S,%F"_ns, zone, nullptr)->view(),
              "01.01.2001 01:00:01,001"); // of 0.99999 milliseconds
    NSCalendarDate *shown = date->dateWithCalendarFormat("%H %z"_ns, zone);
    EXPECT_EQ(shown->description()->view(), "01 +0100");
}

TEST_F(NSDateTest, OrderAndEqualityGoByTheInstant) {
    NSDate *early = NSDate::dateWithTimeIntervalSinceReferenceDate(-1);
    NSDate *late = NSDate::dateWithTimeIntervalSinceReferenceDate(1.5);
    NSDate *shown = NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(1.5);
    EXPECT_EQ(early->compare(late), NSOrderedAscending);
    EXPECT_EQ(late->compare(shown), NSOrderedSame);
    EXPECT_TRUE(late->isEqual(shown) && shown->isEqual(late) && late->hash() == shown->hash());
    EXPECT_FALSE(late->isEqual(early));
    EXPECT_TRUE(early->earlierDate(late) == early && early->laterDate(late) == late);
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(-0.0)->hash(),
              NSDate::dateWithTimeIntervalSinceReferenceDate(0)->hash());
    EXPECT_THROW(early->compare("a"_ns), InvalidArgumentException);
}

TEST_F(NSDateTest, TimePointsOfTheClockGoBothWaysAndStopAtItsEnds) {
    using namespace std::chrono;
    const NSDate::TimePoint point(
        duration_cast<NSDate::TimePoint::duration>(milliseconds(1'500'000'000'250)));
    NSDate *date = NSDate::dateWith(point);
    EXPECT_EQ(date->timeIntervalSince1970(), 1'500'000'000.25);
    EXPECT_LT(abs(date->timePoint() - point), microseconds(1));
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(kInfinity)->timePoint(),
              NSDate::TimePoint::max());
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(-1e30)->timePoint(), NSDate::TimePoint::min());
}
