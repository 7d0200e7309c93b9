#include "Calendar/Civil.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace qb::calendar;

TEST(CivilTest, EveryDayOfFourHundredYearsFollowsTheOneBefore) {
    Fields expected{1600, 1, 1, 0, 0, 0};
    std::int64_t dayOfYear = 1;
    const std::int64_t first = daysFromCivil(1600, 1, 1);
    for (std::int64_t days = first; days <= first + 146097; ++days) {
        ASSERT_EQ(civilFromDays(days), expected) << days;
        ASSERT_EQ(
            daysFromCivil(expected.year, static_cast<int>(expected.month), static_cast<int>(expected.day)),
            days);
        ASSERT_EQ(dayOfYearFromDays(days), dayOfYear) << days;
        ASSERT_EQ(weekdayFromDays(days), (days - first + 6) % 7) << days; // 1 January 1600 was a Saturday
        ++dayOfYear;
        if (++expected.day > daysInMonth(expected.year, static_cast<int>(expected.month))) {
            expected.day = 1;
            ++expected.month;
        }
        if (expected.month > 12) {
            expected = {expected.year + 1, 1, 1, 0, 0, 0};
            dayOfYear = 1;
        }
    }
    EXPECT_EQ(expected, (Fields{2000, 1, 2, 0, 0, 0}));
}

TEST(CivilTest, FarYearsAreCountedToTheEndsOfTheScale) {
    EXPECT_EQ(civilFromDays(daysFromCivil(-4713, 11, 24)), (Fields{-4713, 11, 24, 0, 0, 0}));
    for (const std::int64_t year : {-kYearLimit, std::int64_t{-1}, std::int64_t{0}, kYearLimit})
        EXPECT_EQ(civilFromDays(daysFromCivil(year, 2, 28)), (Fields{year, 2, 28, 0, 0, 0}));
    for (const std::int64_t seconds : {INT64_MIN, std::int64_t{-1}, INT64_MAX}) {
        const Fields fields = fieldsFromSeconds(seconds);
        EXPECT_EQ(weekdayFromDays(floorDiv(seconds, kSecondsPerDay)), seconds == -1 ? 3 : 0) << seconds;
        EXPECT_EQ(fields.hour * 3600 + fields.minute * 60 + fields.second, floorMod(seconds, kSecondsPerDay));
    }
}

TEST(CivilTest, FieldsTooLargeStopAtTheLimits) {
    const Fields largest{INT64_MAX, INT64_MAX, INT64_MAX, INT64_MAX, INT64_MAX, INT64_MAX};
    const Fields smallest{INT64_MIN, INT64_MIN, INT64_MIN, INT64_MIN, INT64_MIN, INT64_MIN};
    EXPECT_GT(normalised(largest).year, kYearLimit);
    EXPECT_LT(normalised(smallest).year, -kYearLimit);
    EXPECT_EQ(normalised({INT64_MAX, 1, 1, 0, 0, 0}), (Fields{kYearLimit, 1, 1, 0, 0, 0}));
}
