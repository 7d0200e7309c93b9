// Signals, to other processes and to this one.
#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSAdaptor/OSProcess.Program.h"
#include "System/Process.h"

#include <cerrno>
#include <csignal>
#include <cstddef>

namespace sys = qb::sys;

// --- To others ---

// An id that was waited for may be that of a stranger by now. So may one that was waited for without this
// object, among all children.
bool OSProcess::signal(int number) const {
    if (isChild_ && (starter_ != sys::getpid() || sys::isChild(processHandle_)))
        return sys::kill(processHandle_, number) == 0;
    errno = ESRCH;
    return false;
}

BOOL OSProcess::isRunning() {
    if (signal(0))
        return YES;
    if (errno != ESRCH)
        abortWithMessage(NSString::stringWithRestrictedFormat(
            "Could not get the exit code of the subprocess with pid %d", processHandle_));
    return NO;
}

void OSProcess::sendTermSignal() {
    if (!signal(SIGTERM))
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotSendTerm, processHandle_,
                       errorDescription());
}

void OSProcess::sendKillSignal() {
    if (!signal(SIGKILL))
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotSendKill, processHandle_,
                       errorDescription());
}

// --- To this process ---

namespace {

constexpr const char *kHandlerFailed = "The installation ofthe handler for the '%s' signal has failed: %s";
constexpr const char *kAlarmFailed = "The installation of the handler for the '%s' signal has failed: %s";

BOOL (*volatile terminationHandler)(int) = nullptr;
void (*volatile userSignalHandler)(int) = nullptr;
volatile std::sig_atomic_t isTerminationRunning = 0;
volatile std::sig_atomic_t isUserSignalRunning = 0;
bool isAlarmInstalled = false;

// The entries align the stack themselves, which emulators of 32-bit programs forget.

extern "C" [[gnu::force_align_arg_pointer]] void enterTermination(int signal) noexcept {
    if (isTerminationRunning)
        return;
    isTerminationRunning = 1;
    const int error = errno;
    BOOL (*const handler)(int) = terminationHandler;
    if (!handler || handler(signal))
        sys::_exit(0);
    errno = error;
    isTerminationRunning = 0;
}

extern "C" [[gnu::force_align_arg_pointer]] void enterUserSignal(int signal) noexcept {
    if (isUserSignalRunning)
        return;
    isUserSignalRunning = 1;
    const int error = errno;
    if (void (*const handler)(int) = userSignalHandler)
        handler(signal);
    errno = error;
    isUserSignalRunning = 0;
}

// The logger may find its data, or those of the C library, half-changed.
extern "C" [[gnu::force_align_arg_pointer]] void enterSelfDestruction(int) noexcept {
    qb::endWithAlert("Self destruction timeout, process terminated.");
}

struct NamedSignal {
    int number;
    const char *name;
};

// All of them, or none and the fatal error raised.
template <std::size_t Count>
bool install(const NamedSignal (&signals)[Count], void (*entry)(int), const char *format) {
    struct sigaction action {};
    action.sa_handler = entry;
    action.sa_flags = SA_RESTART;
    struct sigaction earlier[Count];
    for (std::size_t done = 0; done < Count; ++done) {
        if (sys::sigaction(signals[done].number, &action, &earlier[done]) == 0)
            continue;
        const int error = errno;
        for (std::size_t index = 0; index < done; ++index)
            sys::sigaction(signals[index].number, &earlier[index], nullptr);
        errno = error;
        if (ERRORHANDLER)
            ERRORHANDLER->raiseFatalErrorWithDefaultFormat(NSString::stringWithCString(format),
                                                           qb::kErrorCannotHandleSignal, signals[done].name,
                                                           OSObject::errorDescription());
        return false;
    }
    return true;
}

} // namespace

void OSProcess::registerTerminationHandler(BOOL (*handler)(int)) {
    terminationHandler = handler;
    install({{SIGTERM, "SIGTERM"}, {SIGINT, "SIGINT"}, {SIGQUIT, "SIGQUIT"}}, enterTermination,
            kHandlerFailed);
}

void OSProcess::registerUserSignalHandler(void (*handler)(int)) {
    if (install({{SIGUSR1, "SIGUSR1"}, {SIGUSR2, "SIGUSR2"}}, enterUserSignal, kHandlerFailed))
        userSignalHandler = handler;
}

void OSProcess::selfDestructionWithTimeout(std::uint32_t seconds) {
    if (!isAlarmInstalled)
        isAlarmInstalled = install({{SIGALRM, "SIGALRM"}}, enterSelfDestruction, kAlarmFailed);
    if (isAlarmInstalled)
        sys::alarm(seconds);
}

void OSProcess::cancelSelfDestruction() {
    sys::alarm(0);
}
