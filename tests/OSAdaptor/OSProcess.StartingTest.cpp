#include "OSAdaptor/ProcessOutput.h"
#include "System/Process.h"
#include "support/ServicesFixture.h"

using OSProcessStartingTest = ServicesFixture;

/// What the program writes to its standard output, when it ends well.
static std::string outputOf(NSString *command, NSArray *args, NSDictionary *env = nullptr,
                            const std::int32_t *stdinHandle = nullptr) {
    OSPipe *const pipe = OSPipe::pipe();
    const std::int32_t end = pipe->writeHandle();
    OSProcess *const process =
        OSProcess::subProcessWithCommand(command, args, env, stdinHandle, &end, nullptr);
    const std::string output = contentOf(pipe);
    std::int32_t code = -1;
    EXPECT_EQ(process->waitForProcessDoHang(YES, &code), 1);
    EXPECT_EQ(code, 0);
    return output;
}

/// The log lines of a start that fails in the child; waiting raises 100228.
static std::string failureOf(NSString *command, NSArray *args = nullptr, NSDictionary *env = nullptr,
                             const std::int32_t *in = nullptr, const std::int32_t *out = nullptr,
                             const std::int32_t *err = nullptr) {
    CapturedOutput output;
    const Ref<OSProcess> process = OSProcess::initWithCommand(command, args, env, in, out, err);
    const ErrorExpectation error(100228);
    std::int32_t code = -1;
    EXPECT_EQ(process->waitForProcessDoHang(YES, &code), -1);
    EXPECT_EQ(code, 17);
    return logLines(output.end(), process->pid());
}

TEST_F(OSProcessStartingTest, ProgramGetsItsArgumentsAndTheEnvironmentWithAdditions) {
    directory_.write("qb tool", "#!/bin/sh\necho \"$0|$1|$2|$#|$QB_OLD|$QB_NEW|$HOME\"\n");
    ASSERT_EQ(::chmod((directory_ / "qb tool").c_str(), 0700), 0);
    ::setenv("QB_OLD", "before", 1);
    const auto env = NSDictionary::dictionaryWith({{"PATH"_ns, path("")}, // where it is looked up
                                                   {"QB_OLD"_ns, "after=1"_ns},
                                                   {"QB_NEW"_ns, number(7)}});
    const auto args = NSArray::arrayWith({"a b*"_ns, number(5)});
    EXPECT_EQ(outputOf("qb tool"_ns, args, env),
              directory_ / "/qb tool|a b*|5|2|after=1|7|" + ::getenv("HOME") + "\n");
    EXPECT_STREQ(::getenv("QB_OLD"), "before");
    EXPECT_EQ(::getenv("QB_NEW"), nullptr);
    EXPECT_EQ(outputOf("sh"_ns, script("echo $QB_OLD")), "before\n");
    ::unsetenv("QB_OLD");
}

TEST_F(OSProcessStartingTest, ProgramGetsNoDescriptorThatItWasNotGiven) {
    directory_.write("input", "text\n");
    const OSPipe *const pipe = OSPipe::pipe();
    const int given = ::open((directory_ / "input").c_str(), O_RDONLY);
    const int strange = ::close_range(9999, 9999, 0) == 0 ? ::open("/dev/null", O_RDONLY) : -1; // not marked
    ASSERT_GT(pipe->writeHandle(), 2);
    // 3 is that of the listing itself.
    const std::string all = "/proc/self/fd/0 /proc/self/fd/1 /proc/self/fd/2 /proc/self/fd/3\n";
    EXPECT_EQ(outputOf("sh"_ns, script("cat; echo /proc/self/fd/*"), nullptr, &given), "text\n" + all);
    const Fault fault(Call::close_range, /*skip=*/0, /*times=*/1, ENOSYS); // an old kernel
    EXPECT_EQ(outputOf("sh"_ns, script("echo /proc/self/fd/*")), all);
    ::close(given);
    ::close(strange);
}

TEST_F(OSProcessStartingTest, ProgramFindsSignalsAsTheyAreByDefault) {
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, SIGUSR1);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    const auto before = std::signal(SIGHUP, SIG_IGN);
    const auto args = NSArray::arrayWith({"-E"_ns, "^Sig(Blk|Ign)"_ns, "/proc/self/status"_ns});
    EXPECT_EQ(outputOf("grep"_ns, args), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
    std::signal(SIGHUP, before);
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

TEST_F(OSProcessStartingTest, OneDescriptorMayServeTwoStreams) {
    OSPipe *const pipe = OSPipe::pipe();
    const std::int32_t end = pipe->writeHandle();
    const id process = send<id>(
        OSProcess::cls(), "subProcessWithCommand:withArgs:withEnv:stdinHandle:stdoutHandle:stderrHandle:"_sel,
        "sh"_ns, script("echo out; echo err >&2"), nullptr, nullptr, &end, &end);
    EXPECT_EQ(send<std::int32_t>(process, "waitForProcessDoHang:"_sel, YES), 1);
    EXPECT_EQ(contentOf(pipe), "out\nerr\n");
}

TEST_F(OSProcessStartingTest, ClosedDescriptorMayBeGivenForItself) {
    const ChildEnd end = runInChild([] {
        const std::int32_t input = STDIN_FILENO;
        ::close(input);
        std::int32_t exitCode = 0;
        OSProcess::subProcessWithCommand("sh"_ns, script("exit 3"), nullptr, &input, nullptr, nullptr)
            ->waitForProcessDoHang(YES, &exitCode);
        ::_exit(exitCode);
    });
    EXPECT_EQ(end.status, 3);
}

TEST_F(OSProcessStartingTest, ChildThatCantBecomeTheProgramTellsWhyAndEndsWith17) {
    const auto expect = [](const std::string &text, auto... given) {
        EXPECT_EQ(failureOf(given...), "[T] (P) [] " + text + "\n\n");
    };
    const auto cut = "a\0b"_ns;
    const auto env = NSDictionary::dictionaryWith({{"key"_ns, cut}});
    const std::int32_t none = 999;
    expect("execvp() for '/no/such' failed: No such file or directory!", "/no/such"_ns);
    expect("execvp() for '<nil>' failed: Bad address!", nullptr);
    expect("execvp() for 'true' failed: Invalid argument!", "true"_ns, NSArray::arrayWithObject(cut));
    expect("environment setting for 'true' failed: Invalid argument!", "true"_ns, nullptr, env);
    expect("could not reset stdin for 'true'", "true"_ns, nullptr, nullptr, &none);
    expect("could not reset stdout for 'true'", "true"_ns, nullptr, nullptr, nullptr, &none);
    expect("could not reset stderr for 'true'", "true"_ns, nullptr, nullptr, nullptr, nullptr, &none);
}

TEST_F(OSProcessStartingTest, MissingMemoryIsToldByTheChildToo) {
    const auto args = NSArray::arrayWithObject("x"_ns);
    const auto env =
        NSDictionary::dictionaryWith({{"A"_ns, "a text that is too long to stand in its object"_ns}});
    std::set<std::string> lines;
    for (unsigned skip = 0, hits = 1; hits != 0; ++skip) {
        CapturedOutput output;
        Ref<OSProcess> process;
        try {
            const AllocationFault fault(skip, 1);
            process = OSProcess::initWithCommand("true"_ns, args, env);
            hits = fault.hits();
        } catch (const std::bad_alloc &) {
            continue;
        }
        process->waitForProcessDoHang(YES);
        if (hits != 0)
            lines.insert(logLines(output.end(), process->pid()));
        ERRORHANDLER->clearErrorStack();
    }
    if (lines.empty())
        GTEST_SKIP() << "allocations do not fail in this build";
    EXPECT_EQ(lines, std::set<std::string>(
                         {"[T] (P) [] malloc() failed!\n",
                          "[T] (P) [] environment setting for 'true' failed: Cannot allocate memory!\n\n"}));
}

TEST_F(OSProcessStartingTest, NoMoreProcessesIsAnError) {
    const auto expect = [](Call call, NSString *command, const std::string &shown) {
        const Fault fault(call, 0, 1, EAGAIN);
        EXPECT_ERROR(100164, shown + " Resource temporarily unavailable",
                     EXPECT_EQ(OSProcess::subProcessWithCommand(command, nullptr, nullptr), nullptr));
    };
    if (sys::canShareMemory()) {
        expect(Call::startSharingMemory, "true"_ns, "true");
        expect(Call::startSharingMemory, nullptr, "<nil>");
    }
    expect(Call::fork, "/no/such"_ns, "/no/such"); // for the one that is to tell of it
}

// The logger of the child is a copy, also where the child shares the memory.
TEST_F(OSProcessStartingTest, FailureLeavesTheParentAsItWas) {
    OSLogger::setDefaultLogFileName(path("log"));
    OSLogger::disableDuplicateLogToStderr();
    EXPECT_EQ(failureOf("/no/such"_ns), "");
    OSLogger::loggerForCategory("own"_ns)->logWithLevelMessage(0, "mine"_ns);
    EXPECT_NE(directory_.read("log").find("[] execvp()"), std::string::npos);
    EXPECT_NE(directory_.read("log").find("[] mine"), std::string::npos) << directory_.read("log");
}

TEST_F(OSProcessStartingTest, NoChildWritesWhatTheParentHasBuffered) {
    const ChildEnd child = runInChild([] {
        static char buffer[4096];
        std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        std::fputs("once\n", stderr);
        const OSProcess *const process = OSProcess::subProcessWithCommand("/no/such"_ns, nullptr, nullptr);
        ::waitpid(process->pid(), nullptr, 0);
        std::fputs("again\n", stderr);
        OSPipe *const pipe = OSPipe::pipe();
        const std::int32_t held = pipe->writeHandle(); // as long as there is a child
        OSProcess::createSubProcessWritingToPipe(OSPipe::pipe(), "/no/such"_ns, nullptr, nullptr, &held,
                                                 nullptr);
        contentOf(pipe); // until it has ended
    });
    std::string text = child.standardError;
    for (const char *word : {"once\n", "again\n"}) {
        ASSERT_NE(text.find(word), std::string::npos);
        text.erase(text.find(word), std::strlen(word));
        EXPECT_EQ(text.find(word), std::string::npos) << child.standardError;
    }
}

TEST_F(OSProcessStartingTest, ArgumentsAndVariablesMayChangeWhatTheyStandIn) {
    meddle([](auto &, auto &other) {
        OSProcess *const process = OSProcess::subProcessWithCommand("true"_ns, other.array, other.dictionary);
        process->waitForProcessDoHang(YES);
    });
}
