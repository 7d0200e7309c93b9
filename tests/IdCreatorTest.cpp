#include <QBFoundation/IdCreator.h>

#include <QBFoundation/Foundation/NSString.h>

#include "System/Clock.h"
#include "support/PoolFixture.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>
#include <unistd.h>

using IdCreatorTest = PoolFixture;

TEST_F(IdCreatorTest, IdsAreARandomNumberPidCounterAndTimeAndNeverRepeat) {
    int counter = -1;
    for (int i = 0; i < 1000; ++i) {
        std::srand(7);
        const std::string start = std::to_string(std::rand()) + std::to_string(::getpid());
        std::srand(7);
        const std::string text(IdCreator::createId()->view());
        ASSERT_EQ(text.substr(0, start.size()), start);
        ASSERT_GT(text.size(), start.size() + 17) << text;
        const std::string time = text.substr(text.size() - 17);
        EXPECT_TRUE(std::all_of(time.begin(), time.end(), [](char c) { return c >= '0' && c <= '9'; }));
        const int before = counter;
        counter = std::stoi(text.substr(start.size(), text.size() - 17 - start.size()));
        EXPECT_TRUE(i == 0 || counter == before + 1) << text;
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
