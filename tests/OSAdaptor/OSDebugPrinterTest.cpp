#include "support/ServicesFixture.h"

#include <regex>

struct OSDebugPrinterTest : ServicesFixture {
    // Registers a debug and a profile channel "here" and makes them active; another profile channel has
    // number 0.
    OSDebugPrinterTest() {
        printer()->registerProfileChannel("other"_ns);
        channel_ = printer()->registerDebugChannel("here"_ns);
        printer()->setDebugChannelsActive(NSArray::arrayWithObject("here"_ns));
        profile_ = printer()->registerProfileChannel("here"_ns);
        printer()->setProfileChannelsActive(NSArray::arrayWithObject("here"_ns));
    }

    static OSDebugPrinter *printer() { return OSDebugPrinter::globalDebugPrinter(); }

    // Profile lines with "P:" for the process id and "TAIL" for what they measured.
    static std::string profileLines(const std::string &text) {
        char pid[16];
        std::snprintf(pid, sizeof pid, "%06lu:", static_cast<unsigned long>(::getpid()));
        const std::string bytes = R"(-?\d+\.\d\d[KMGT]?B)";
        const std::string tail = R"(\+-?\d+ms #\d{13} \+m)" + bytes + " #m" + bytes;
        return replaced(replaced(text, pid, "P:"), tail, "TAIL");
    }

    int channel_ = -1;
    int profile_ = -1;
};

TEST_F(OSDebugPrinterTest, NumbersAreGivenOnceAndUpTo100) {
    printer()->release(); // the next one knows nothing
    QBFoundationInitializer::initializeDebugAndProfileChannels();
    const int channels[] = {DEBUG_CHANNEL_UTILS,  DEBUG_CHANNEL_MISC,   DEBUG_CHANNEL_PROCESS,
                            DEBUG_CHANNEL_FILEIO, DEBUG_CHANNEL_SOCKET, PROFILE_CHANNEL_NET_IO};
    EXPECT_TRUE(std::ranges::equal(channels, std::array{1, 2, 3, 4, 5, 0}));
    const Ref<OSDebugPrinter> other = OSDebugPrinter::init();
    EXPECT_EQ(other->registerDebugChannel("utils"_ns), 1);
    EXPECT_EQ(other->registerDebugChannel("utils"_ns), 1);
    for (int number = 2; number <= 100; ++number)
        EXPECT_EQ(other->registerDebugChannel(NSString::stringWith("c" + std::to_string(number))), number);
    EXPECT_EQ(other->registerDebugChannel("one too many"_ns), -1);
    EXPECT_EQ(other->registerDebugChannel("c100"_ns), 100);
    other->setDebugChannelsActive(NSArray::arrayWithObject("c100"_ns));
    EXPECT_TRUE(other->isDebugChannelActive(100));
    for (int number : {-1, 101}) {
        EXPECT_FALSE(other->isDebugChannelActive(number));
        EXPECT_EQ(other->debugChannelName(number), nullptr);
        EXPECT_FALSE(qb::isDebugChannelActive(number));
    }
}

TEST_F(OSDebugPrinterTest, NamesAreKeptAndListed) {
    NSMutableString *const name = NSMutableString::stringWith("b");
    EXPECT_EQ(printer()->registerDebugChannel(name), 2);
    name->appendString("!"_ns);
    printer()->registerDebugChannel("a"_ns);
    EXPECT_STREQ(printer()->debugChannelName(2), "b");
    EXPECT_STREQ(printer()->profileChannelName(profile_), "here");
    EXPECT_EQ(describe(printer()->debugChannelNames()), "(a, all, b, here)");
    EXPECT_EQ(describe(printer()->profileChannelNames()), "(here, other)");
    EXPECT_EQ(printer()->getHelpForProfileChannels()->view(),
              "\n     Possible profile channels are:\n       here\n       other");
    EXPECT_EQ(printer()->getHelpForDebugChannels()->view(),
              "\n     Possible debug channels are:\n       a\n       all\n       b\n       here");
}

TEST_F(OSDebugPrinterTest, AllStandsForAllDebugChannelsButForNoProfileChannel) {
    printer()->registerDebugChannel("other"_ns);
    const std::int32_t other = printer()->registerProfileChannel("other"_ns);
    printer()->setDebugChannelsActive(NSArray::arrayWithObjects("unknown"_ns, "all"_ns));
    EXPECT_EQ(describe(printer()->activeDebugChannelNames()), "(all, here, other)");
    printer()->setProfileChannelsActive(NSArray::arrayWithObject("all"_ns));
    EXPECT_FALSE(printer()->isProfileChannelActive(other));
}

TEST_F(OSDebugPrinterTest, AnyPrintersEndIsThatOfTheGlobalOne) {
    OSDebugPrinter *const before = printer();
    const Ref<OSDebugPrinter> kept = before;
    OSDebugPrinter::init();
    EXPECT_FALSE(qb::isDebugChannelActive(channel_));
    EXPECT_NE(printer(), before);
    EXPECT_EQ(describe(printer()->debugChannelNames()), "(all)");
}

TEST_F(OSDebugPrinterTest, TracesNameChannelLevelStateAndPlace) {
    debug = 3;
    CapturedOutput output;
    debug_printf(channel_, "%s %d%c %ld %lld %5.1f %x", "a", -1, 'c', 5L, 1LL << 40, 2.25, 255);
    debug_printf(channel_, "%s-%d"_ns, "typed"_ns, std::uint64_t{1} << 63);
    ERRORHANDLER->setErrorState(ERRORSTATE_ERROR);
    qb::trace(channel_, {"src/A", 12, printer(), "b:c:"}, "%s", NSString::stringWith("object"));
    ERRORHANDLER->setErrorState(ERRORSTATE_OK);
    qb::trace(channel_, {"src/A", 13, &OSProcess::cls, "d"}, "class");
    qb::trace(channel_ + 1, {"src/A", 14, printer(), "e"}, "silent");
    profile_beginAction(profile_ + 1, "silent");
    EXPECT_EQ(logLines(output.end()), "[T] (P) [] [here(3) OK] a -1c 5 1099511627776   2.2 ff\n"
                                      "[T] (P) [] [here(3) OK] typed-9223372036854775808\n"
                                      "[T] (P) [] [here(3) ERROR] src/A:12(OSDebugPrinter): -b:c: -> object\n"
                                      "[T] (P) [] [here(3) OK] src/A:13(OSProcess): +d -> class\n");
}

TEST_F(OSDebugPrinterTest, TracesOfBadOrMissingFormatsStandAsTheyAreAndReadNothing) {
    OSLogger::createLoggerForCategory("debug"_ns);
    CapturedOutput output;
    qb::trace(channel_, "%d %p %s", 1);
    qb::trace(channel_, {nullptr, 1, static_cast<NSObject *>(nullptr), nullptr}, nullptr);
    // By way of pointers that the compiler can't follow, because it would find the mistakes.
    void (*const print)(int, const char *, ...) = debug_printf;
    char *volatile none = nullptr;
    print(channel_, "%s", none);
    print(channel_, nullptr);
    EXPECT_EQ(logLines(output.end()), "[T] (P) [debug] [here(0) OK] %d %p %s\n"
                                      "[T] (P) [debug] [here(0) OK] <nil>:1(<nil>): -<nil> -> \n"
                                      "[T] (P) [debug] [here(0) OK] %s\n"
                                      "[T] (P) [debug] [here(0) OK] \n");
}

TEST_F(OSDebugPrinterTest, TracesWithoutMemoryAreLeftOut) {
    CapturedOutput output;
    qb::trace(channel_, "one");
    for (unsigned skip = 0, hits = 1; hits != 0; ++skip) {
        const AllocationFault fault(skip, /*times=*/0);
        errno = EPIPE;
        debug_printf(channel_, "one");
        qb::trace(channel_, {"src/A", 1, printer(), "b"}, "%s", "two");
        EXPECT_EQ(errno, EPIPE) << skip;
        hits = fault.hits();
    }
    const std::string lines = logLines(output.end());
    EXPECT_TRUE(lines.ends_with("one\n[T] (P) [] [here(0) OK] src/A:1(OSDebugPrinter): -b -> two\n"));
}

TEST_F(OSDebugPrinterTest, ActionsNestAndMeasure) {
    CapturedOutput output;
    profile_beginAction(profile_, "read %s", "a");
    printer()->setStartTime(printer()->profileLastTime() - 1000000, 0);
    profile_msg(profile_, "%hd of %5s", static_cast<short>(3), "x");
    profile_beginAction(profile_, "%@ %i"_ns, "typed"_ns, 7);
    profile_endAction(profile_, "typed %d", 7);
    profile_endAction(profile_, "read a");
    const std::string lines = profileLines(output.end());
    EXPECT_TRUE(std::regex_match(lines, std::regex(R"(P:\[start:here\] read a \(TAIL\)
P:  \[msg  :here\] 3 of     x \(TAIL\)
P:  \[start:here\] typed 7 \(TAIL\)
P:  \[end  :here\] typed 7 \(time: 000\d\dms TAIL\)
P:\[end  :here\] read a \(time: 100\d{4}ms TAIL\)
)"))) << lines;
    EXPECT_EQ(printer()->profileStackLevel(), 0);
}

TEST_F(OSDebugPrinterTest, UnbalancedActionsAreToldAndClosed) {
    const std::int32_t other = printer()->registerProfileChannel("other"_ns);
    printer()->setProfileChannelsActive(NSArray::arrayWithObject("other"_ns));
    CapturedOutput output;
    profile_beginAction(profile_, "a");
    profile_beginAction(profile_, "b");
    profile_endAction(profile_, "c");
    profile_endAction(other, "a");
    printer()->setProfileStackLevel(-1);
    profile_endAction(profile_, "d");
    EXPECT_EQ(printer()->profileStackLevel(), 0);
    printer()->setProfileStackLevel(PROFILE_STACK_SIZE);
    profile_beginAction(profile_, "e");
    EXPECT_EQ(printer()->profileStackLevel(), PROFILE_STACK_SIZE);
    EXPECT_EQ(profileLines(output.end()),
              "P:[start:here] a (TAIL)\n"
              "P:  [start:here] b (TAIL)\n"
              "P:  notice: unbalanced PROFILE_BEGIN_ACTION() ... PROFILE_END_ACTION() (TAIL)!\n"
              "P:          expected: (here, 'b'), got: (here, 'c')\n"
              "P:notice: unbalanced PROFILE_BEGIN_ACTION() ... PROFILE_END_ACTION() (TAIL)!\n"
              "P:        expected: (here, 'a'), got: (other, 'a')\n"
              "notice: profileStackLevel grew negative(TAIL)!\n"
              "notice: PROFILE_STACK_SIZE (2000) exceeded (TAIL)!\n");
}

TEST_F(OSDebugPrinterTest, WhatIsForStandardErrorNeverEndsInAnotherFile) {
    const ChildEnd end = runInChild([&] {
        OSLogger *const logger = OSLogger::loggerForCategory(""_ns);
        logger->setLogFileName(path("missing/log"));
        logger->logWithLevelMessage(0, "not in a file"_ns);
        logger->setLogFileName(nullptr); // closes standard error, where the line went
        const int other = ::open((directory_ / "other").c_str(), O_CREAT | O_WRONLY, 0600);
        debug_printf(channel_, "trace");
        profile_beginAction(profile_, "action");
        profile_endAction(profile_, "other action");
        _dbgFree(_dbgMalloc(1, 2, "a"), 3, "a");
        NSAutoreleasePool::showAllPoolStatistics();
        OSUserIO::eprintLn("text"_ns);
        ::_exit(other);
    });
    EXPECT_EQ(end.status, STDERR_FILENO);
    EXPECT_EQ(directory_.read("other"), "");
}

TEST_F(OSDebugPrinterTest, MessagesAreCutAt1023Bytes) {
    CapturedOutput output;
    const std::string text(1100, 'x');
    profile_beginAction(profile_, "%s", text.c_str());
    profile_endAction(profile_, "%s"_ns, text.c_str());
    const std::string lines = profileLines(output.end());
    for (const char *what : {"[start:here] ", "[end  :here] "})
        EXPECT_NE(lines.find(what + text.substr(0, 1023) + " ("), std::string::npos) << lines;
}

TEST_F(OSDebugPrinterTest, IndentationFollowsTheDepth) {
    CapturedOutput output;
    for (int level : {-1, 29, 30}) {
        printer()->setProfileStackLevel(level);
        profile_indent();
    }
    EXPECT_EQ(profileLines(output.end()),
              "P:P:" + std::string(58, ' ') + "P:" + std::string(50, ' ') + "   30>>>");
}

TEST_F(OSDebugPrinterTest, BytesAreBeautified) {
    char buffer[1024];
    EXPECT_STREQ(profile_beautifyBytes(1024, buffer), "1024.00B");
    EXPECT_STREQ(profile_beautifyBytes(-2048, buffer), "-2.00KB");
    EXPECT_STREQ(profile_beautifyBytes(std::int64_t{1} << 60, buffer), "1048576.00TB");
}

TEST_F(OSDebugPrinterTest, AllocationsAreToldAndTheirFailureIsRaised) {
    CapturedOutput output;
    void *const told = _dbgMalloc(12, 34, "src/A");
    _dbgFree(told, 35, "src/A");
    EXPECT_EQ(output.text(), "allocating 12 bytes in src/A:34 - return " + addressOf(told) +
                                 "\nfreeing memory at " + addressOf(told) + " in src/A:35\n");

    Fault fault(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
    EXPECT_ERROR_AT("src/OSAdaptor/OSFilePath:97", 100156, "", EXPECT_EQ(_dbgMalloc(1, 2, "b"), nullptr));
    EXPECT_EQ(output.end(), "allocating 1 bytes in b:2 - return 0x00000000\n");
}
