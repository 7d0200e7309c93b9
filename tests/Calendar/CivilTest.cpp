#include "Calendar/Civil.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace qb::calendar;

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
