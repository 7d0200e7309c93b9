#include <QBFoundation/IdCreator.h>

#include <QBFoundation/Foundation/NSString.h>

#include "System/Clock.h"
#include "support/PoolFixture.h"

#include <algorithm>
#include <ctime>
#include <set>
#include <string>
#include <unistd.h>

using IdCreatorTest = PoolFixture;

TEST_F(IdCreatorTest, IdsAreDigitsWithPidCounterAndTimeAndNeverRepeat) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::string text(IdCreator::createId()->view());
        EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
            << text;
        EXPECT_NE(text.find(std::to_string(getpid())), std::string::npos) << text;
        EXPECT_TRUE(seen.insert(text).second) << text;
    }
}

TEST_F(IdCreatorTest, TheTimeStampIsTheCurrentSecondInGmtWithMilliseconds) {
    const std::time_t before = static_cast<std::time_t>(qb::sys::wallMilliseconds() / 1000);
    const std::string text(NSString::currentDateAsISODateTimeStringWithMilliSeconds()->view());
    const std::time_t after = static_cast<std::time_t>(qb::sys::wallMilliseconds() / 1000);
    ASSERT_EQ(text.size(), 17u);
    char first[32], last[32];
    std::tm fields;
    std::strftime(first, sizeof first, "%Y%m%d%H%M%S", gmtime_r(&before, &fields));
    std::strftime(last, sizeof last, "%Y%m%d%H%M%S", gmtime_r(&after, &fields));
    EXPECT_GE(text.substr(0, 14), first);
    EXPECT_LE(text.substr(0, 14), last);
}
