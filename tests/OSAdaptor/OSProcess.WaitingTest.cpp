#include "OSAdaptor/ProcessOutput.h"
#include "support/ServicesFixture.h"

#include <fstream>

using OSProcessWaitingTest = ServicesFixture;

constexpr const char *kSleep = "exec sleep 60";

static OSProcess *start(const char *text) {
    return OSProcess::subProcessWithCommand("sh"_ns, script(text), nullptr);
}

TEST_F(OSProcessWaitingTest, ExitCodeIsThatOfTheProgramAnd0AfterASignal) {
    std::int32_t code = -1;
    EXPECT_EQ(start("exit 5")->waitForProcessDoHang(YES, &code), 1);
    EXPECT_EQ(code, 5);
    OSProcess *const process = start(kSleep);
    EXPECT_EQ(process->waitForProcessDoHang(NO), 2);
    EXPECT_TRUE(process->isRunning());
    process->sendTermSignal();
    EXPECT_EQ(process->waitForProcessDoHang(YES, &code), 1);
    EXPECT_EQ(code, 0);
    OSProcess *const reserved = start("exit 17");
    const ErrorExpectation error(100228);
    EXPECT_EQ(reserved->waitForProcessDoHang(YES, &code), -1);
    EXPECT_EQ(code, 17);
}

// Its id may be given to another process at any time.
TEST_F(OSProcessWaitingTest, ProcessThatWasWaitedForIsGone) {
    OSProcess *const process = start("exit 0");
    const std::string pid = std::to_string(process->pid());
    EXPECT_EQ(process->waitForProcessDoHang(YES), 1);
    const CallCounter counter;
    EXPECT_ERROR(100234, pid + " No child processes", EXPECT_EQ(process->waitForProcessDoHang(YES), -1));
    EXPECT_ERROR(100232, pid + " No such process", process->sendTermSignal());
    EXPECT_ERROR(100233, pid + " No such process", process->sendKillSignal());
    EXPECT_FALSE(process->isRunning());
    EXPECT_EQ(counter.calls(Call::kill) + counter.calls(Call::waitpid), 0u);
}

TEST_F(OSProcessWaitingTest, FailuresOfTheSystemAreRaised) {
    OSProcess *const process = start(kSleep);
    const std::string pid = std::to_string(process->pid());
    const Fault denied(Call::kill, 0, 2, EPERM);
    EXPECT_ERROR(100232, pid + " Operation not permitted", process->sendTermSignal());
    EXPECT_ERROR(100233, pid + " Operation not permitted", process->sendKillSignal());
    const Fault gone(Call::kill, 0, 1, ESRCH);
    EXPECT_FALSE(process->isRunning());
    const Fault invalid(Call::waitpid, 0, 1, EINVAL);
    EXPECT_ERROR(100234, pid + " Invalid argument", EXPECT_EQ(process->waitForProcessDoHang(YES), -1));
    process->sendKillSignal();
    const Fault storm(Call::waitpid, 0, 3, EINTR);
    EXPECT_EQ(process->waitForProcessDoHang(YES), 1);
    EXPECT_EQ(storm.hits(), 3u);
}

TEST_F(OSProcessWaitingTest, NotKnowingWhetherItRunsEndsTheProcess) {
    OSProcess *const process = start(kSleep);
    const ChildEnd end = runInChild([&] {
        const Fault fault(Call::kill, 0, 1, EPERM);
        process->isRunning();
    });
    EXPECT_EQ(end.status, 17);
    EXPECT_EQ(logLines(end.standardError, end.process),
              "[T] (P) [] Could not get the exit code of the subprocess with pid " +
                  std::to_string(process->pid()) + "\n");
    process->sendKillSignal();
    EXPECT_EQ(process->waitForProcessDoHang(YES), 1);
}

TEST_F(OSProcessWaitingTest, CopiesOfTheParentCannotWaitButSignal) {
    OSProcess *const process = start(kSleep);
    for (std::string name; name != "sleep";) // valgrind does not wait for it, and loses signals until then
        std::getline(std::ifstream("/proc/" + std::to_string(process->pid()) + "/comm"), name);
    const ChildEnd end = runInChild([&] {
        const BOOL waits = process->waitForProcessDoHang(YES) != -1;
        process->sendTermSignal();
        ::_exit(waits ? 1 : 5);
    });
    EXPECT_EQ(end.status, 5);
    int status = 0;
    ::waitpid(process->pid(), &status, 0);
    EXPECT_EQ(status, SIGTERM);
}

TEST_F(OSProcessWaitingTest, OneOrAllOfSeveralAreWaitedFor) {
    const auto wait = &OSProcess::waitForProcesses;
    OSProcess *const slow = start(kSleep);
    OSProcess *const quick = start("exit 1");
    OSProcess *const unlisted = start("exit 2");
    EXPECT_EQ(wait(NSArray::arrayWith({slow, quick}), 30, NO), 1);
    const CallCounter counter;
    EXPECT_FALSE(quick->isRunning());
    EXPECT_EQ(counter.calls(Call::kill), 0u); // a stranger may have its id
    EXPECT_TRUE(slow->isRunning());
    OSProcess *const other = start("exit 3");
    EXPECT_EQ(wait(NSArray::arrayWith({other, slow}), 0, YES), 2);
    EXPECT_GT(counter.calls(Call::sleep), 0u);
    slow->sendKillSignal();
    OSProcess *const last = start("exit 17");
    EXPECT_EQ(wait(NSArray::arrayWith({last, slow}), 30, YES), 1);
    EXPECT_EQ(wait(NSArray::arrayWith({last, slow}), 30, YES), -1); // there is no child any more
    EXPECT_EQ(::waitpid(unlisted->pid(), nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    const CallCounter later;
    EXPECT_FALSE(unlisted->isRunning());
    EXPECT_EQ(later.calls(Call::kill), 0u);
}

TEST_F(OSProcessWaitingTest, ProcessesAreEqualByTheirIds) {
    OSProcess *const one = start("exit 0");
    OSProcess *const other = start("exit 0");
    EXPECT_TRUE(one->isEqual(one) && !one->isEqual(other));
    const auto none = send<Ref<OSProcess>>(OSProcess::cls(), "init"_sel);
    EXPECT_EQ(none->pid(), 0);
    EXPECT_FALSE(none->isRunning()); // nor signalled: 0 would mean the whole group
    EXPECT_EQ(OSProcess::waitForProcesses(NSArray::arrayWith({one, other}), 30, YES), 1);
}

TEST_F(OSProcessWaitingTest, SleepIsForSecondsAboveZero) {
    const Fault fault(Call::sleep, 0, 1, EINVAL);
    OSProcess::sleep(0);
    OSProcess::sleep(-5);
    EXPECT_EQ(fault.hits(), 0u);
    OSProcess::sleep(7200);
    EXPECT_EQ(fault.hits(), 1u);
}
