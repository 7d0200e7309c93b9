#include "support/PoolFixture.h"

using IdCreatorTest = PoolFixture;

TEST_F(IdCreatorTest, IdsAreARandomNumberPidCounterAndTime) {
    const auto now = [] { return describe(NSString::currentDateAsISODateTimeStringWithMilliSeconds()); };
    int counter = -1;
    for (int i = 0; i < 3; ++i) {
        std::srand(7);
        const std::string start = std::to_string(std::rand()) + std::to_string(::getpid());
        std::srand(7);
        const std::string before = now();
        const std::string text(IdCreator::createId()->view());
        ASSERT_EQ(text.substr(0, start.size()), start);
        ASSERT_GT(text.size(), start.size() + before.size());
        const std::string stamp = text.substr(text.size() - before.size());
        EXPECT_TRUE(before <= stamp && stamp <= now()) << stamp;
        const int last = counter;
        counter = std::stoi(text.substr(start.size(), text.size() - stamp.size() - start.size()));
        EXPECT_TRUE(i == 0 || counter == last + 1) << text;
    }
}
