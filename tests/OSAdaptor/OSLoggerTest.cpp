#include "support/ServicesFixture.h"

using OSLoggerTest = ServicesFixture;

// Writes a line by way of the common logger.
static void log(NSString *line) {
    OSLogger::loggerForCategory(""_ns)->logWithLevelMessage(0, line);
}

TEST_F(OSLoggerTest, UnknownCategoriesShareTheDefaultLogger) {
    OSLogger *const logger = OSLogger::loggerForCategory("alert"_ns);
    EXPECT_EQ(OSLogger::loggerForCategory(""_ns), logger);
    EXPECT_EQ(describe(OSLogger::_loggers()->allKeys()), "()");
    OSLogger::createLoggerForCategory("alert"_ns);
    OSLogger *const alert = OSLogger::loggerForCategory("alert"_ns);
    EXPECT_NE(alert, logger);
    EXPECT_EQ(alert->retainCount(), 1u); // the table's
    OSLogger::createLoggerForCategory("alert"_ns, /*withLogLevel=*/7, nullptr, nullptr);
    EXPECT_TRUE(OSLogger::loggerForCategory("alert"_ns)->wouldLogLevel(7));
    EXPECT_REASON(OSLogger::createLoggerForCategory(nullptr),
                  "OSLogger createLoggerForCategory: must have a category that is not nil.");
}

TEST_F(OSLoggerTest, LinesCarryPrefixAndCategory) {
    CapturedOutput output;
    log("plain"_ns);
    OSLogger::setDefaultLogPrefix("web"_ns);
    OSLogger::loggerForCategory(""_ns)->logWithLevelFormat(0, "%s %05d"_ns, "a", 42);
    OSLogger::createLoggerForCategory("debug"_ns);
    OSLogger *const logger = OSLogger::loggerForCategory("debug"_ns);
    logger->logWithLevelFormat(0, nullptr);
    logger->setLogPrefix(nullptr);
    logger->logWithLevelFormat(0, "%s"_ns, NSString::stringWith({"a\0b", 3}));
    EXPECT_EQ(logLines(output.end()), "[T] (P) [] plain\n"
                                      "[T] (P) [web ] a 00042\n"
                                      "[T] (P) [web debug] <nil>\n"
                                      "[T] (P) [debug] a\n");
}

TEST_F(OSLoggerTest, ALoggersLevelIsItsThreshold) {
    OSLogger::createLoggerForCategory("early"_ns);
    OSLogger *const early = OSLogger::loggerForCategory("early"_ns);
    OSLogger *const common = OSLogger::loggerForCategory(""_ns);
    CapturedOutput output;
    OSLogger::setDefaultLogLevel(3);
    for (int level : {-1, 3, 4}) {
        common->logWithLevelMessage(level, "message"_ns);
        common->logWithLevelFormat(level, "%d"_ns, level);
    }
    early->logWithLevelMessage(1, "too fine"_ns);
    EXPECT_EQ(logLines(output.end()), "[T] (P) [] message\n[T] (P) [] -1\n"
                                      "[T] (P) [] message\n[T] (P) [] 3\n");
    EXPECT_FALSE(common->wouldLogLevel(4));
}

TEST_F(OSLoggerTest, LinesGoToTheFileAndAlsoToStandardErrorUnlessSwitchedOff) {
    directory_.write("log", "before\n");
    CapturedOutput output;
    log("standard error alone"_ns);
    OSLogger::setDefaultLogFileName(path("log"));
    log("both"_ns);
    OSLogger::disableDuplicateLogToStderr();
    log("file alone"_ns);
    OSLogger::createLoggerForCategory("other"_ns); // takes the default file with its first line
    OSLogger::loggerForCategory("other"_ns)->logWithLevelMessage(0, "shared"_ns);
    EXPECT_EQ(logLines(output.end()), "[T] (P) [] standard error alone\n[T] (P) [] both\n");
    EXPECT_EQ(logLines(directory_.read("log")),
              "before\n[T] (P) [] both\n[T] (P) [] file alone\n[T] (P) [other] shared\n");
}

TEST_F(OSLoggerTest, LinesAndTheirEndsAreOneWrite) {
    OSLogger::setDefaultLogFileName(path("log"));
    const std::string longMessage(1 << 20, '\xff');
    CapturedOutput output;
    const CallCounter counter;
    log(NSString::stringWith(longMessage));
    EXPECT_EQ(counter.calls(Call::write), 2u); // to the file, and to standard error
    EXPECT_EQ(logLines(output.end()), "[T] (P) [] " + longMessage + "\n");
    EXPECT_EQ(logLines(directory_.read("log")), "[T] (P) [] " + longMessage + "\n");
}

// In a child, because such a logger closes standard error with its file name.
TEST_F(OSLoggerTest, AFileThatCannotBeOpenedIsAnErrorAndStandardErrorTakesTheLines) {
    const std::string name = directory_ / "missing/log";
    const ChildEnd end = runInChild([&] {
        OSLogger *const logger = OSLogger::loggerForCategory(""_ns);
        logger->setLogFileName(NSString::stringWith(name));
        log("one"_ns);
        log("two"_ns); // no further attempt, no further error
        for (const auto &error : recordingErrorHandler()->raised)
            std::fprintf(stderr, "%d raised %d: %s\n", error.line, error.number, error.values.c_str());
        logger->setLogFileName(path("missing/other"));
        log("lost"_ns); // and nothing breaks
        logger->setLogFileName(path({"log\0x", 5}));
        log("lost, too"_ns);
        logger->setLogFileName(path("log"));
        log("three"_ns); // once, and not for standard error, too
        ::_exit(static_cast<int>(recordingErrorHandler()->raised.size()));
    });
    EXPECT_EQ(end.status, 3); // an error for each file that can't be opened
    EXPECT_EQ(logLines(end.standardError, end.process),
              "[T] (P) [] one\n[T] (P) [] two\n236 raised 100024: " + name + " No such file or directory\n");
    EXPECT_EQ(logLines(directory_.read("log"), end.process), "[T] (P) [] three\n");
}

TEST_F(OSLoggerTest, AnErrorHandlerMayLogAndChangeTheLoggers) {
    // Turns to another log file when the one that it has can't be opened.
    struct : QBErrorHandler {
        using QBErrorHandler::raiseErrorInFileWithArgList;
        void raiseErrorInFileWithArgList(const char *, int, int, const qb::ArgList &, NSArray *,
                                         NSString *) override {
            log("raised"_ns);
            if (hasNewLogger)
                OSLogger::createLoggerForCategory(""_ns, /*withLogLevel=*/0, nullptr, other);
            else
                OSLogger::setDefaultLogFileName(other);
        }

        NSString *other = nullptr;
        bool hasNewLogger = false;
    } handler;
    for (const bool hasNewLogger : {true, false}) { // or standard error closed, and its own file opened
        handler.hasNewLogger = hasNewLogger;
        handler.other = directory_.string(hasNewLogger ? "other" : "another");
        const ChildEnd end = runInChild([&] {
            ERRORHANDLER = &handler;
            _duplicateLogToStderr = NO;
            OSLogger::setDefaultLogFileName(path("missing/log"));
            log("one"_ns);
            log("two"_ns);
        });
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(logLines(end.standardError + directory_.read(handler.other->lastPathComponent()->view()),
                           end.process),
                  "[T] (P) [] raised\n[T] (P) [] one\n[T] (P) [] two\n");
    }
}

TEST_F(OSLoggerTest, ALoggerMayFailWhileATraceIsWritten) {
    struct Failing : ClientClass<Failing, OSLogger, "Failing"> {
        void logWithLevelMessage(std::int32_t, NSString *) override {
            ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900999);
            throw InvalidArgumentException("no journal");
        }
    };
    send<void>(Failing::cls(), "createLoggerForCategory:"_sel, "debug"_ns);
    Ref<OSSocket> socket = OSSocket::initWithSocketType(/*SOCK_STREAM*/ 1);
    activateChannel("socket");
    socket = nullptr; // in whose end no exception may leave
    activateChannel("utils");
    debug = 1;
    EXPECT_THROW(ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900998), InvalidArgumentException);
    EXPECT_EQ(takenErrors(), "(900999, 900999, 900999, 900999, 900998, 900999)"); // an end after four
}

TEST_F(OSLoggerTest, LinesThatCannotBeWrittenAreLostWithoutAnError) {
    OSLogger::setDefaultLogFileName(path("log"));
    OSLogger::disableDuplicateLogToStderr();
    const Fault fault(Call::write, /*skip=*/0, /*times=*/1, ENOSPC);
    log("lost"_ns);
    const Fault storm(Call::write, /*skip=*/0, /*times=*/5, EINTR);
    log("kept"_ns);
    EXPECT_EQ(logLines(directory_.read("log")), "[T] (P) [] kept\n");
}
