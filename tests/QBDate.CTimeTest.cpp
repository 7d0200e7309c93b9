#include "Calendar/TimeZoneSetting.h"
#include "support/DateCommand.h"
#include "support/PoolFixture.h"

struct QBDateCTimeTest : PoolFixture {
    ~QBDateCTimeTest() override { NSDate::setStringValueFormat(nullptr); }
};

static std::string stringValueIn(const char *zone, std::int32_t seconds, const char *format) {
    const TimeZoneSetting setting(zone);
    NSDate::setStringValueFormat(format);
    return std::string(NSDate::dateWithCTime(seconds)->stringValue()->view());
}

TEST_F(QBDateCTimeTest, SecondsGoBothWaysAndStopAtTheFieldsEnds) {
    for (const std::int32_t seconds : {-1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(NSDate::dateWithCTime(seconds)->timeIntervalSinceReferenceDate(), seconds - 978307200.0);
        EXPECT_EQ(NSDate::dateWithCTime(seconds)->ctimeAsNSNumber()->intValue(), seconds);
    }
    const double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, std::int32_t> rows[] = {
        {-1.9, -1}, {2147483646.9, 2147483646}, {4e9, INT32_MAX}, {-infinity, INT32_MIN}};
    for (const auto &[interval, seconds] : rows)
        EXPECT_EQ(NSDate::dateWithTimeIntervalSince1970(interval)->ctime(), seconds);
}

TEST_F(QBDateCTimeTest, TextIsInTheSystemsZoneByTheCommonFormat) {
    // Dates with a format of their own.
    struct Monthly : ClientClass<Monthly, NSDate, "Monthly"> {
        static Operations operations() {
            return {qb::classMethod<"stringValueFormat">(+[] { return "%m"; })};
        }
    };
    EXPECT_STREQ(NSDate::stringValueFormat(), "%d.%m.%Y %H:%M");
    EXPECT_EQ(stringValueIn("Europe/Berlin", 1719792000, nullptr), "01.07.2024 02:00");
    EXPECT_EQ(stringValueIn("UTC0", 0, (std::string(1020, 'x') + "%C%C").c_str()), "");
    NSDate::setStringValueFormat("%Y");
    NSDate::setStringValueFormat(NSDate::stringValueFormat()); // its own copy
    EXPECT_STREQ(NSDate::stringValueFormat(), "%Y");
    EXPECT_EQ(send<Ref<NSDate>>(Monthly::cls(), "initWithCTime:"_sel, 0)->stringValue()->view(), "01");
    // Beyond the field: its last second.
    const TimeZoneSetting setting("UTC0");
    NSDate::setStringValueFormat(nullptr);
    EXPECT_EQ(NSDate::distantFuture()->stringValue()->view(), "19.01.2038 03:14");
}

TEST_F(QBDateCTimeTest, NamesAreInTheLanguageOfTheProcess) {
    if (!std::setlocale(LC_TIME, "de_DE.UTF-8"))
        GTEST_SKIP() << "the system has no German";
    EXPECT_EQ(stringValueIn("UTC0", 1719792000, "%a, %d. %b"), "Mo, 01. Jul");
    std::setlocale(LC_TIME, "C");
    EXPECT_EQ(stringValueIn("UTC0", 1719792000, "%a, %d. %b"), "Mon, 01. Jul");
}

TEST_F(QBDateCTimeTest, TextAgreesWithTheSystem) {
    Strings dates;
    for (std::int64_t seconds = INT32_MIN; seconds <= INT32_MAX; seconds += 1'700'001)
        dates.push_back("@" + std::to_string(seconds));
    for (const char *zone : {"Europe/London", "America/St_Johns", "Asia/Tehran"})
        for (const char *format : {"%d.%m.%Y %H:%M", "%A %e %b %y %I:%M:%S %p %j %U %Z"}) {
            const Strings expected = printedDates(zone, dates, format);
            ASSERT_EQ(expected.size(), dates.size());
            for (std::size_t i = 0; i < dates.size(); ++i) {
                const NSAutoreleasePool pool;
                ASSERT_EQ(stringValueIn(zone, std::stoi(dates[i].substr(1)), format), expected[i]) << zone;
            }
        }
}
