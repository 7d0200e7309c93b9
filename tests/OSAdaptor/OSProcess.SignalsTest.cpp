#include "support/Faults.h"
#include "support/ServicesFixture.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>
#include <unistd.h>

using OSProcessSignalsTest = ServicesFixture;

namespace {

/// A handler whose fatal errors are told, but do not end the process.
class Survivor : public QBErrorHandler {
public:
    void terminateBecauseOfFatalError() override {
        std::fprintf(stderr, "%s", errorStackMessagesStringWithIndent(nullptr)->cString());
    }
};

/// A logger in whose work the process crashes, or waits for ever.
class Broken : public OSLogger {
public:
    explicit Broken(bool waits = false) : waits_(waits) {}
    void logWithLevelFormatAndArglist(std::int32_t, NSString *, const qb::ArgList &) override {
        if (!waits_)
            std::abort();
        ::raise(::alarm(0) > 0 ? SIGALRM : SIGKILL); // as if that time had passed
    }

private:
    const bool waits_;
};

volatile std::sig_atomic_t seen = 0;

BOOL note(int signal) {
    seen = seen * 100 + signal;
    return NO;
}

} // namespace

TEST_F(OSProcessSignalsTest, TerminationHandlerDecidesWhetherTheProcessEnds) {
    for (const int signal : {SIGTERM, SIGINT, SIGQUIT}) {
        const auto end = runInChild([signal] {
            send<void>(OSProcess::cls(), "registerTerminationHandler:"_sel, &note);
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
    const auto installed = [](unsigned failing, auto install, std::initializer_list<int> signals) {
        return runInChild([=] {
            ERRORHANDLER = new Survivor;
            for (const int signal : signals)
                std::signal(signal, SIG_IGN);
            const Fault fault(Call::sigaction, failing, 1, EINVAL);
            install();
            for (const int signal : signals) {
                struct sigaction action {};
                ::sigaction(signal, nullptr, &action);
                if (action.sa_handler != SIG_IGN)
                    ::_exit(1);
            }
        });
    };
    const char *const names[] = {"SIGTERM", "SIGINT", "SIGQUIT", "SIGUSR1", "SIGUSR2", "SIGALRM"};
    for (unsigned index = 0; index < std::size(names); ++index) {
        const ChildEnd end =
            index < 3   ? installed(index, [] { OSProcess::registerTerminationHandler(note); },
                                    {SIGTERM, SIGINT, SIGQUIT})
            : index < 5 ? installed(index - 3, [] { OSProcess::registerUserSignalHandler([](int) {}); },
                                    {SIGUSR1, SIGUSR2})
                        : installed(0, [] { OSProcess::selfDestructionWithTimeout(100); }, {SIGALRM});
        EXPECT_EQ(end.status, 0) << names[index];
        EXPECT_EQ(end.standardError, std::string("[130004] The installation ") +
                                         (index < 5 ? "ofthe" : "of the") + " handler for the '" +
                                         names[index] + "' signal has failed: Invalid argument\n");
    }
}

TEST_F(OSProcessSignalsTest, FatalErrorEndsTheProcess) {
    const auto end = runInChild([] {
        const Fault fault(Call::sigaction, 0, 1, EINVAL);
        OSProcess::selfDestructionWithTimeout(100);
    });
    EXPECT_EQ(end.status, 255);
}

TEST_F(OSProcessSignalsTest, SelfDestructionEndsTheProcessWhateverStateItIsIn) {
    const auto end = runInChild([] {
        OSProcess::selfDestructionWithTimeout(1);
        ::pause();
    });
    EXPECT_EQ(end.status, 17);
    EXPECT_EQ(logLines(end.standardError, end.process),
              "[T] (P) [] Self destruction timeout, process terminated.\n");
    for (const bool waits : {false, true}) {
        const auto broken = runInChild([waits] {
            const auto logger = Ref<Broken>::adopt(new Broken(waits));
            OSLogger::_loggers()->setObjectForKey(logger, "alert"_ns);
            OSProcess::selfDestructionWithTimeout(100);
            ::raise(SIGALRM);
        });
        EXPECT_EQ(broken.status, 17);
    }
}

TEST_F(OSProcessSignalsTest, SelfDestructionIsCancelled) {
    const auto end = runInChild([] {
        OSProcess::selfDestructionWithTimeout(100);
        OSProcess::selfDestructionWithTimeout(50);
        const unsigned left = ::alarm(0);
        OSProcess::selfDestructionWithTimeout(100);
        OSProcess::cancelSelfDestruction();
        ::_exit(left == 50 && ::alarm(0) == 0 ? 5 : 1);
    });
    EXPECT_EQ(end.status, 5);
}
