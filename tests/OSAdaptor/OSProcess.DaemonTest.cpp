#include "OSAdaptor/ProcessOutput.h"
#include "support/ServicesFixture.h"

using OSProcessDaemonTest = ServicesFixture;

namespace {

/// The exit status of a process that goes into the background, and what it then finds out.
struct Daemon {
    int status;
    std::string report;
};

/// Runs `work` in a process that goes into the background in it.
Daemon daemon(auto work) {
    const Ref<OSPipe> report = OSPipe::init();
    const ChildEnd end = runInChild([&] { work(report.get()); });
    return {end.status, contentOf(report)};
}

} // namespace

TEST_F(OSProcessDaemonTest, BackgroundProcessHasASessionADirectoryAndNoTerminal) {
    CapturedOutput output(STDOUT_FILENO);
    const Daemon end = daemon([&](OSPipe *report) {
        std::printf("buffered;");
        std::atexit([] { ::dprintf(STDOUT_FILENO, "exit function"); });
        OSProcess::detachAndChdirTo(path(""));
        std::string text = ::getsid(0) == ::getpid() ? "leader" : "";
        for (const char *name : {"cwd", "fd/0", "fd/1", "fd/2"})
            text += " " + std::filesystem::read_symlink(std::string("/proc/self/") + name).string();
        text += ::fcntl(0, F_GETFD) == 0 ? " inherited" : ""; // by programs that are started then
        report->getOutputStream()->writeObject(string(text));
        ::_exit(5); // nobody's affair
    });
    EXPECT_EQ(output.end(), "buffered;");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.report, "leader " + directory_.path() + " /dev/null /dev/null /dev/null inherited");
}

TEST_F(OSProcessDaemonTest, BackgroundProcessOutlivesTheSessionOfItsParent) {
    for (int i = 0; i < 10; ++i) {
        const Daemon end = daemon([&](OSPipe *report) {
            ::setsid();
            const int terminal = ::posix_openpt(O_RDWR);
            ::unlockpt(terminal);
            ::open(::ptsname(terminal), O_RDWR); // the session's from now on
            OSProcess::detachAndChdirTo("/"_ns);
            struct sigaction hangup {};
            ::sigaction(SIGHUP, nullptr, &hangup);
            ::usleep(20'000);
            report->getOutputStream()->writeObject(hangup.sa_handler == SIG_DFL ? "alive"_ns : "deaf"_ns);
        });
        EXPECT_EQ(end.report, "alive");
    }
}

TEST_F(OSProcessDaemonTest, MissingDirectoryIsAnErrorOfTheBackgroundProcess) {
    const Daemon end = daemon([](OSPipe *report) {
        OSProcess::detachAndChdirTo("/no/such"_ns);
        report->getOutputStream()->writeObject(ERRORHANDLER->errorId());
    });
    EXPECT_EQ(end.report, "100196");
}

TEST_F(OSProcessDaemonTest, FailuresEndTheProcess) {
    OSLogger::setDefaultLogFileName(path("log"));
    const auto endOf = [](Call call, unsigned skip) {
        return daemon([=](OSPipe *) {
            const Fault fault(call, skip, /*times=*/1, ENOMEM);
            OSProcess::detachAndChdirTo("/"_ns);
        });
    };
    EXPECT_EQ(endOf(Call::fork, 0).status, 17);
    std::string logged = "fork failed: Cannot allocate memory\n\n";
    for (const unsigned reopened : {0, 1, 2}) {
        EXPECT_EQ(endOf(Call::freopen, reopened).status, 0);
        logged += "freopen standard channel failed: Cannot allocate memory\n\n";
    }
    EXPECT_EQ(replaced(directory_.read("log"), "\\[2.*\\[\\] ", ""), logged);
}

TEST_F(OSProcessDaemonTest, AbortLogsTheMessageAsItIsAndEndsInGoodOrder) {
    CapturedOutput output(STDOUT_FILENO);
    const ChildEnd end = runInChild([] {
        std::printf("buffered");
        OSProcess::abortWithMessage("100%d of it"_ns);
    });
    EXPECT_EQ(output.end(), "buffered");
    EXPECT_EQ(end.status, 17);
    EXPECT_EQ(logLines(end.standardError, end.process), "[T] (P) [] 100%d of it\n");
}
