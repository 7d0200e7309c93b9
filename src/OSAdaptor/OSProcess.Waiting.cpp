// The end of child processes.
#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSAdaptor/OSProcess.Program.h"
#include "System/Clock.h"
#include "System/Process.h"

#include <algorithm>
#include <cerrno>
#include <sys/wait.h>

namespace sys = qb::sys;

namespace {

enum Answer : std::int32_t { kFailed = -1, kOver = 1, kNotOver = 2 };

constexpr const char *kSelector = "waitForProcessDoHang:exitCode:";
constexpr int kLeastDebugOfWaiting = 3;
constexpr std::int64_t kPause = 100'000'000; // nanoseconds between two looks at several children

void trace(int line, const OSProcess *process, const char *format, int value) {
    if (debug >= kLeastDebugOfWaiting)
        qb::trace(DEBUG_CHANNEL_MISC, {qb::kProcessFile, line, process, kSelector}, format, value);
}

} // namespace

std::int32_t OSProcess::waitForProcessDoHang(BOOL doHang, std::int32_t *exitCode) {
    int status = 0;
    // An id that was waited for may be that of a stranger by now.
    const pid_t waited =
        isChild_ ? sys::waitpid(processHandle_, &status, doHang ? 0 : WNOHANG) : (errno = ECHILD, -1);
    trace(__LINE__, this, "waitpid() returned %d", waited);
    if (waited == 0)
        return kNotOver;
    if (waited < 0) {
        // Where SIGCHLD is ignored the system waits for it; a copy of its parent can't tell.
        if (errno == ECHILD && starter_ == sys::getpid())
            isChild_ = false;
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotWaitForProcess, processHandle_,
                       errorDescription());
        return kFailed;
    }
    isChild_ = false;
    const std::int32_t code = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    if (exitCode)
        *exitCode = code;
    trace(__LINE__, this, "exit code is %d", code);
    if (code != qb::kExitWithoutProgram)
        return kOver;
    qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorProgramNotStarted);
    return kFailed;
}

std::int32_t OSProcess::waitForProcesses(NSArray *processes, std::int32_t timeout, BOOL waitForAll) {
    const std::uint32_t count = processes ? processes->count() : 0;
    if (count == 0)
        return kOver;
    const std::uint32_t wanted = waitForAll ? count : 1;
    const std::int64_t start = sys::wallSeconds();
    for (std::uint32_t ended = 0; ended < wanted;) {
        if (sys::wallSeconds() - start > timeout)
            return kNotOver;
        const pid_t child = sys::waitpid(-1, nullptr, WNOHANG);
        if (child < 0)
            return kFailed;
        if (child == 0) {
            sys::sleep(kPause, sys::OnSignal::report); // a signal may tell of a child's end
            continue;
        }
        bool isListed = false;
        for (id element : *processes) {
            auto *const process = qb::castOrNil<OSProcess>(element);
            if (!process || process->processHandle_ != child)
                continue;
            process->isChild_ = false;
            isListed = true;
        }
        ended += isListed;
    }
    return kOver;
}
