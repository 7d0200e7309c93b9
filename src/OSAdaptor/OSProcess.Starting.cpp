// Programs as children.
#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSAdaptor/OSProcess.Program.h"
#include "System/Process.h"
#include "System/Stdio.h"

#include <cstdio>

namespace sys = qb::sys;

namespace {

struct Start {
    const qb::Program &program;
    std::span<const qb::Redirection> redirections;
    bool hasFailed = false;
};

int becomeProgram(void *context) {
    auto *start = static_cast<Start *>(context);
    start->program.become(start->redirections);
    start->hasFailed = true;
    return qb::kExitWithoutProgram;
}

// Returns the child's id, or -1.
//
// A child in this process's memory must not log. One that would have to is given up for one in a copy, which
// finds the same and may.
pid_t startChild(Start &start) {
    const sys::SignalsBlocked blocked;
    if (sys::canShareMemory()) {
        const pid_t child =
            sys::startSharingMemory(blocked, becomeProgram, &start, start.program.argumentCount());
        if (child < 0 || !start.hasFailed)
            return child;
        sys::waitpid(child, nullptr, 0);
    }
    const pid_t child = sys::fork();
    if (child == 0)
        start.program.run(start.redirections);
    return child;
}

} // namespace

BOOL OSProcess::setUpWithCommand(NSString *command, NSArray *args, NSDictionary *env) {
    return setUpWithCommandAndHandles(command, args, env, nullptr, nullptr, nullptr);
}

BOOL OSProcess::setUpWithCommandAndHandles(NSString *command, NSArray *args, NSDictionary *env,
                                           const std::int32_t *stdinHandle, const std::int32_t *stdoutHandle,
                                           const std::int32_t *stderrHandle) {
    const qb::Program program(command, args, env);
    const qb::Redirection redirections[] = {qb::toStandardInput(stdinHandle),
                                            qb::toStandardOutput(stdoutHandle),
                                            qb::toStandardError(stderrHandle)};
    Start start{program, redirections};
    sys::fflush(stderr); // or a child that logs would write again what is buffered here
    const pid_t child = startChild(start);
    if (child < 0) {
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotStartProcess, program.shownCommand(),
                       errorDescription());
        return NO;
    }
    processHandle_ = child;
    starter_ = sys::getpid();
    isChild_ = true;
    return YES;
}
