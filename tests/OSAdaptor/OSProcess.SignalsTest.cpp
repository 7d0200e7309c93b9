#include "support/ServicesFixture.h"

using OSProcessSignalsTest = ServicesFixture;

static volatile std::sig_atomic_t seen = 0;

static BOOL note(int signal) {
    seen = seen * 100 + signal;
    return NO;
}

TEST_F(OSProcessSignalsTest, TerminationHandlerDecidesWhetherTheProcessEnds) {
    for (const int signal : {SIGTERM, SIGQUIT}) {
        const auto end = runInChild([signal] {
            OSProcess::registerTerminationHandler(note);
            struct sigaction action {};
            ::sigaction(signal, nullptr, &action);
            errno = EDOM;
            ::raise(signal);
            if (seen != signal || errno != EDOM || (action.sa_flags & SA_RESTART) == 0)
                ::_exit(1);
            OSProcess::registerTerminationHandler([](int number) -> BOOL {
                ::dprintf(STDERR_FILENO, "got %d", number);
                ::raise(SIGTERM); // while it runs: dropped
                ::raise(SIGINT);
                return YES;
            });
            ::raise(signal);
            ::_exit(2);
        });
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.standardError, "got " + std::to_string(signal));
    }
}

TEST_F(OSProcessSignalsTest, WithoutATerminationHandlerTheProcessEnds) {
    const auto end = runInChild([] {
        OSProcess::registerTerminationHandler(nullptr);
        ::raise(SIGINT);
        ::_exit(1);
    });
    EXPECT_EQ(end.status, 0);
}

TEST_F(OSProcessSignalsTest, UserSignalHandlerIsCalledAndNeverEndsTheProcess) {
    const auto end = runInChild([] {
        OSProcess::registerUserSignalHandler([](int signal) {
            note(signal);
            ::raise(signal == SIGUSR1 ? SIGUSR2 : SIGUSR1); // while it runs: dropped
            errno = ERANGE;
        });
        errno = EDOM;
        ::raise(SIGUSR1);
        ::raise(SIGUSR2);
        ::_exit(seen == SIGUSR1 * 100 + SIGUSR2 && errno == EDOM ? 5 : 1);
    });
    EXPECT_EQ(end.status, 5);
}

TEST_F(OSProcessSignalsTest, HandlersAreInstalledForAllSignalsOrNone) {
    // A handler whose fatal errors are told, but do not end the process.
    struct Survivor : QBErrorHandler {
        void terminateBecauseOfFatalError() override {
            std::fprintf(stderr, "%s", errorStackMessagesStringWithIndent(nullptr)->cString());
        }
    };
    const auto terminating = [] { OSProcess::registerTerminationHandler(note); };
    const auto user = [] { OSProcess::registerUserSignalHandler([](int) {}); };
    const auto alarm = [] { OSProcess::selfDestructionWithTimeout(100); };
    const std::tuple<void (*)(), unsigned, const char *> rows[] = {
        {terminating, 0, "ofthe handler for the 'SIGTERM'"},
        {terminating, 1, "ofthe handler for the 'SIGINT'"},
        {terminating, 2, "ofthe handler for the 'SIGQUIT'"},
        {user, 0, "ofthe handler for the 'SIGUSR1'"},
        {user, 1, "ofthe handler for the 'SIGUSR2'"},
        {alarm, 0, "of the handler for the 'SIGALRM'"}};
    for (const auto &[install, skip, failed] : rows) {
        const ChildEnd end = runInChild([install = install, skip = skip] {
            ERRORHANDLER = new Survivor;
            for (int signal : {SIGTERM, SIGINT, SIGUSR1})
                std::signal(signal, SIG_IGN);
            const Fault fault(Call::sigaction, skip, /*times=*/1, EINVAL);
            install();
            for (int signal : {SIGTERM, SIGINT, SIGUSR1})
                if (std::signal(signal, SIG_DFL) != SIG_IGN)
                    ::_exit(1);
            ::_exit(5);
        });
        EXPECT_EQ(end.status, 5) << failed;
        EXPECT_EQ(end.standardError, std::string("[130004] The installation ") + failed +
                                         " signal has failed: Invalid argument\n");
    }
}

TEST_F(OSProcessSignalsTest, SelfDestructionEndsTheProcessWhateverStateItIsInUnlessCancelled) {
    // A logger in whose work the process waits for ever.
    struct Broken : OSLogger {
        void logWithLevelFormatAndArglist(std::int32_t, NSString *, const qb::ArgList &) override {
            ::raise(::alarm(0) <= 2 ? SIGALRM : SIGKILL); // as if that time had passed
        }
    };
    const auto end = runInChild([] {
        OSProcess::selfDestructionWithTimeout(100);
        OSProcess::cancelSelfDestruction();
        if (::alarm(0) != 0)
            ::_exit(1);
        OSProcess::selfDestructionWithTimeout(1);
        ::pause();
    });
    EXPECT_EQ(end.status, 17);
    EXPECT_EQ(logLines(end.standardError, end.process),
              "[T] (P) [] Self destruction timeout, process terminated.\n");
    const auto broken = runInChild([] {
        const auto logger = Ref<Broken>::adopt(new Broken);
        OSLogger::_loggers()->setObjectForKey(logger, "alert"_ns);
        OSProcess::selfDestructionWithTimeout(100);
        ::raise(SIGALRM);
    });
    EXPECT_EQ(broken.status, 17);
}

TEST_F(OSProcessSignalsTest, NoSignalOfItsLastWritesChangesTheStatusOfAProcess) {
    void (*const rows[])() = {
        [] { (ERRORHANDLER = QBErrorHandler::init().detach())->raiseFatalError(1); },
        [] { OSProcess::abortWithMessage("text"_ns); },
        [] {
            OSProcess::selfDestructionWithTimeout(100);
            ::raise(SIGALRM);
        },
        [] {
            std::int32_t code = 0;
            OSProcess::initWithCommand("/no/such"_ns, nullptr, nullptr)->waitForProcessDoHang(YES, &code);
            ::_exit(code);
        }};
    for (const auto &act : rows) {
        const ChildEnd end = runInChild([&] {
            const OSPipe *const unread = OSPipe::pipe();
            ::dup2(unread->writeHandle(), STDOUT_FILENO);
            ::close(unread->readHandle());
            const rlimit none{};
            ::setrlimit(RLIMIT_FSIZE, &none); // standard error is a file
            std::signal(SIGTTOU, [](int) { ::_exit(1); });
            std::atexit([] { ::raise(SIGTTOU); }); // as a terminal may
            std::printf("until the exit");
            act();
        });
        EXPECT_EQ(end.status, &act == rows ? 255 : 17) << &act - rows;
    }
}
