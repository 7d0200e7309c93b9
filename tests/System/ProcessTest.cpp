#include "System/Process.h"

#include "System/Files.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

namespace sys = qb::sys;

static char *writable(const char *text) {
    return const_cast<char *>(text);
}

// The exit status of a child; minus the signal that has killed it.
static int endOf(pid_t child) {
    int status = 0;
    EXPECT_EQ(sys::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

static bool isBlocked(int signal) {
    sigset_t mask;
    return ::sigprocmask(SIG_SETMASK, nullptr, &mask) == 0 && ::sigismember(&mask, signal) == 1;
}

static void (*actionOf(int signal))(int) {
    struct sigaction action {};
    sys::sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

TEST(ProcessTest, ChildSharingMemoryIsSafeFromSignalsUntilItResetsThem) {
    // What the child finds comes back as its exit status: emulators give it a memory of its own.
    const auto child = [](void *context) {
        if (!isBlocked(SIGALRM) || actionOf(SIGUSR1) != SIG_IGN)
            return 1;
        sys::resetSignals();
        for (const int signal : {SIGALRM, SIGUSR1, SIGRTMIN})
            if (isBlocked(signal) || actionOf(signal) != SIG_DFL)
                return 2;
        return *static_cast<int *>(context);
    };
    const auto alarmBefore = std::signal(SIGALRM, [](int) {});
    const auto userBefore = std::signal(SIGUSR1, SIG_IGN);
    int value = 17;
    EXPECT_EQ(endOf(sys::startSharingMemory(sys::SignalsBlocked(), child, &value)), 17);
    rlimit limit;
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit full{0, limit.rlim_max}; // no descriptor to ask the system for the actions with
    ::setrlimit(RLIMIT_NOFILE, &full);
    EXPECT_EQ(endOf(sys::startSharingMemory(sys::SignalsBlocked(), child, &value)), 17);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_FALSE(isBlocked(SIGALRM));
    EXPECT_EQ(actionOf(SIGUSR1), SIG_IGN);
    std::signal(SIGALRM, alarmBefore);
    std::signal(SIGUSR1, userBefore);
}

TEST(ProcessTest, ChildSharingMemoryHasAnEnvironmentAndAStackForItself) {
    const TemporaryDirectory directory;
    directory.write("script",
                    "exit $(($# % 100 + COUNT))"); // as the C library gives it to the shell, from its stack
    const std::string script = directory / "script";
    ASSERT_EQ(sys::chmod(script.c_str(), 0700), 0);
    std::vector<char *> arguments(100'033, writable("x"));
    arguments[0] = writable(script.c_str());
    arguments.push_back(nullptr);
    const auto child = [](void *context) {
        static char *environment[] = {writable("COUNT=5"), nullptr};
        sys::setEnvironment(environment);
        char **const list = static_cast<char **>(context);
        return sys::execvp(*list, list);
    };
    char **const before = sys::environment();
    EXPECT_EQ(
        endOf(sys::startSharingMemory(sys::SignalsBlocked(), child, arguments.data(), arguments.size())), 37);
    EXPECT_EQ(sys::environment(), before);
}
