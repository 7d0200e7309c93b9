#include "support/PoolFixture.h"
#include "support/Terminal.h"

using OSProgressBarTest = PoolFixture;

// What the terminal's line shows one after the other while a program works.
static Strings shown(const std::function<void()> &work) {
    Terminal terminal(work);
    Strings screens = screensOf(terminal.end());
    EXPECT_EQ(screens.front(), ""); // drawing begins with a return
    screens.erase(screens.begin());
    return screens;
}

static std::string bar(unsigned dots, const std::string &position) {
    return "[" + std::string(dots, '#') + std::string(50 - dots, ' ') + "] " + position;
}

TEST_F(OSProgressBarTest, ABarFillsUpAsItsUnitsAreDone) {
    const Strings screens = shown([] {
        OSProgressBar *const progress = OSProgressBar::progressBarWithStart(0, 10);
        for (int i = 0; i < 11; ++i)
            progress->increment();
        progress->finish();
        progress->finish(); // nothing
        OSUserIO::print("behind"_ns);
    });
    Strings expected;
    for (unsigned i = 0; i <= 10; ++i)
        expected.push_back(bar(i * 5, std::to_string(i) + "/10"));
    expected.push_back(expected.back()); // the full one is drawn once more
    expected.emplace_back("behind");
    EXPECT_EQ(screens, expected);
}

TEST_F(OSProgressBarTest, ABarGoesToTheValueThatItIsGiven) {
    const Strings screens = shown([] {
        const Ref<OSProgressBar> progress = OSProgressBar::initWithStart(100, 107);
        for (std::uint32_t value : {103u, 3u, 108u, 99u, 0u, 4294967295u})
            progress->setCurrent(value);
        progress->initializeWithStart(5, 3); // there is nothing to do
        progress->initializeWithStart(0, 4294967294u);
        progress->incrementBy(4294967295u);
    }); // which finishes it
    // 3 is the number of units done, and draws nothing; nor does 0 behind 99.
    EXPECT_EQ(screens,
              (Strings{bar(0, "0/7"), bar(21, "3/7"), bar(50, "7/7"), bar(0, "0/7"), bar(50, "7/7"),
                       bar(50, "0/0"), bar(0, "0/4294967294"), bar(50, "4294967294/4294967294"), ""}));
}

TEST_F(OSProgressBarTest, AnIndeterminateBarsMarkGoesToAndFro) {
    const Strings screens = shown([] {
        OSProgressBar *const progress = OSProgressBar::progressBar();
        for (int i = 0; i < 95; ++i)
            progress->increment();
        progress->incrementBy(2);
        progress->setCurrent(4294967295u);
        progress->finish();
        OSUserIO::print("behind"_ns);
    });
    const std::string banner = "*********** Thank you for using ZQS. ***********";
    const auto mark = [&](unsigned position) {
        return "[" + std::string(position, ' ') + "<" + banner.substr(position, 2) + ">" +
               std::string(46 - position, ' ') + "]";
    };
    Strings expected;
    for (unsigned i = 0; i < 96; ++i)
        expected.push_back(mark(i % 94 < 47 ? i % 94 : 93 - i % 94));
    expected.push_back(mark(3));
    expected.push_back(mark(0));
    expected.emplace_back(""); // wiped out
    expected.emplace_back("behind");
    EXPECT_EQ(screens, expected);
}
