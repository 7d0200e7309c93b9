#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSProcess.Program.h"
#include "System/Clock.h"
#include "System/Memory.h"
#include "System/Process.h"

#include <algorithm>

namespace {

constexpr std::int32_t kLongestSleep = 3600; // seconds

} // namespace

Class *OSProcess::cls() {
    using Handle = const std::int32_t *;
    using S = NSString *;
    using A = NSArray *;
    using D = NSDictionary *;
    static const qb::Method methods[] = {
        qb::maker<"subProcessWithCommand:withArgs:withEnv:">(&OSProcess::setUpWithCommand),
        qb::maker<"subProcessWithCommand:withArgs:withEnv:stdinHandle:stdoutHandle:stderrHandle:">(
            &OSProcess::setUpWithCommandAndHandles),
        qb::initialiser<"initWithCommand:withArgs:withEnv:">(&OSProcess::setUpWithCommand),
        qb::initialiser<"initWithCommand:withArgs:withEnv:stdinHandle:stdoutHandle:stderrHandle:">(
            &OSProcess::setUpWithCommandAndHandles),
        qb::classMethod<"createSubProcessWithPipe:doesRead:withCommand:withArgs:withEnv:stdinHandle:"
                        "stdoutHandle:stderrHandle:">(&OSProcess::createSubProcessWithPipe),
        qb::classMethod<"createSubProcessReadingFromPipe:withCommand:withArgs:withEnv:",
                        BOOL(OSPipe *, S, A, D)>(&OSProcess::createSubProcessReadingFromPipe),
        qb::classMethod<"createSubProcessReadingFromPipe:withCommand:withArgs:withEnv:stdoutHandle:"
                        "stderrHandle:",
                        BOOL(OSPipe *, S, A, D, Handle, Handle)>(&OSProcess::createSubProcessReadingFromPipe),
        qb::classMethod<"createSubProcessWritingToPipe:withCommand:withArgs:withEnv:",
                        BOOL(OSPipe *, S, A, D)>(&OSProcess::createSubProcessWritingToPipe),
        qb::classMethod<"createSubProcessWritingToPipe:withCommand:withArgs:withEnv:stdinHandle:"
                        "stderrHandle:",
                        BOOL(OSPipe *, S, A, D, Handle, Handle)>(&OSProcess::createSubProcessWritingToPipe),
        qb::classMethod<"createCoprocessWithPipeForRead:pipeForWrite:withCommand:withArgs:withEnv:"
                        "stderrHandle:">(&OSProcess::createCoprocessWithPipeForRead),
        qb::classMethod<"runExternalCmd:withArgs:withEnv:">(&OSProcess::runExternalCmd),
        qb::method<"pid">(&OSProcess::pid),
        qb::method<"waitForProcessDoHang:exitCode:", std::int32_t(BOOL, std::int32_t *)>(
            &OSProcess::waitForProcessDoHang),
        qb::method<"waitForProcessDoHang:", std::int32_t(BOOL)>(&OSProcess::waitForProcessDoHang),
        qb::classMethod<"waitForProcesses:timeout:waitForAll:">(&OSProcess::waitForProcesses),
        qb::method<"isRunning">(&OSProcess::isRunning),
        qb::method<"sendTermSignal">(&OSProcess::sendTermSignal),
        qb::method<"sendKillSignal">(&OSProcess::sendKillSignal),
        qb::classMethod<"registerTerminationHandler:">(&OSProcess::registerTerminationHandler),
        qb::classMethod<"registerUserSignalHandler:">(&OSProcess::registerUserSignalHandler),
        qb::classMethod<"selfDestructionWithTimeout:">(&OSProcess::selfDestructionWithTimeout),
        qb::classMethod<"cancelSelfDestruction">(&OSProcess::cancelSelfDestruction),
        qb::classMethod<"getCurrentPid">(&OSProcess::getCurrentPid),
        qb::classMethod<"getDataSegmentSize">(&OSProcess::getDataSegmentSize),
        qb::classMethod<"sleep:">(&OSProcess::sleep),
        qb::classMethod<"abortWithMessage:">(&OSProcess::abortWithMessage),
        qb::classMethod<"detachAndChdirTo:">(&OSProcess::detachAndChdirTo),
    };
    static Class *const self = new Class("OSProcess", OSObject::cls(), methods, qb::construct<OSProcess>);
    return self;
}

// --- This process ---

std::int32_t OSProcess::getCurrentPid() {
    return qb::sys::getpid();
}

std::int64_t OSProcess::getDataSegmentSize() {
    return qb::sys::dataSegmentEnd();
}

void OSProcess::sleep(std::int32_t seconds) {
    qb::sys::sleep(std::int64_t{1'000'000'000} * std::min(seconds, kLongestSleep));
}

void OSProcess::abortWithMessage(NSString *message) {
    qb::logAlert("%s", message ? message->cString() : "<nil>");
    qb::sys::exit(qb::kExitWithoutProgram);
}

// --- Comparing ---

BOOL OSProcess::isEqual(id other) const {
    auto *const process = qb::castOrNil<OSProcess>(other);
    return process && process->pid() == pid();
}
