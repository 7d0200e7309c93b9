#include <QBFoundation/OSAdaptor/OSTime.h>

#include "Calendar/TimeZoneSetting.h"
#include "support/PoolFixture.h"

#include <ctime>

using OSTimeTest = PoolFixture;

namespace {

// The C library's text for the current second.
std::string localTimeText() {
    const std::time_t now = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
    return text;
}

} // namespace

TEST_F(OSTimeTest, TheTimeIsLocalAndFollowsTheZoneAtOnce) {
    for (const char *zone : {"UTC", "XYZ-5:45", "UTC"}) {
        const TimeZoneSetting setting(zone);
        const std::string before = localTimeText();
        const std::string text(OSTime::timeAsStringInSystemFormat()->view());
        EXPECT_LE(before, text);
        EXPECT_LE(text, localTimeText());
    }
}

TEST_F(OSTimeTest, MillisecondsCountFromTheEpoch) {
    const std::int64_t before = std::time(nullptr);
    const std::int64_t now = OSTime::currentTimeMillis();
    EXPECT_GE(now, before * 1000);
    EXPECT_LT(now, (std::time(nullptr) + 2) * 1000LL); // time() is some milliseconds late
}
