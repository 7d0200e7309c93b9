#include "System/Clock.h"
#include "support/PoolFixture.h"

#include <cstdlib>
#include <ctime>
#include <unistd.h>

using IdCreatorTest = PoolFixture;

namespace {

// The current time in GMT, without its milliseconds.
std::string timeStamp() {
    const auto now = static_cast<std::time_t>(qb::sys::wallMilliseconds() / 1000);
    char text[32];
    std::tm fields;
    std::strftime(text, sizeof text, "%Y%m%d%H%M%S", gmtime_r(&now, &fields));
    return text;
}

} // namespace

TEST_F(IdCreatorTest, IdsAreARandomNumberPidCounterAndTime) {
    constexpr std::size_t kStampLength = 17;
    int counter = -1;
    for (int i = 0; i < 3; ++i) {
        std::srand(7);
        const std::string start = std::to_string(std::rand()) + std::to_string(::getpid());
        std::srand(7);
        const std::string before = timeStamp();
        const std::string text(IdCreator::createId()->view());
        ASSERT_EQ(text.substr(0, start.size()), start);
        ASSERT_GT(text.size(), start.size() + kStampLength);
        const std::string stamp = text.substr(text.size() - kStampLength);
        EXPECT_GE(stamp.substr(0, 14), before);
        EXPECT_LE(stamp.substr(0, 14), timeStamp());
        EXPECT_EQ(stamp.find_first_not_of("0123456789"), std::string::npos) << stamp;
        const int last = counter;
        counter = std::stoi(text.substr(start.size(), text.size() - kStampLength - start.size()));
        EXPECT_TRUE(i == 0 || counter == last + 1) << text;
    }
}
