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
};

// The child. Its memory is the parent's, so that a process with a memory of its own must tell of a failure;
// where there can be none, the exit status alone does.
int becomeProgram(void *context) {
    const auto *start = static_cast<const Start *>(context);
    const qb::StartFailure failure = start->program.become(start->redirections);
    const pid_t self = sys::getpid();
    const pid_t teller = sys::fork();
    if (teller == 0) {
        sys::speakFor(self);
        start->program.tell(failure);
    } else if (teller > 0) {
        sys::waitpid(teller, nullptr, 0);
    }
    return qb::kExitWithoutProgram;
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
    const pid_t child = sys::startSharingMemory(becomeProgram, &start, program.argumentCount());
    if (child < 0) {
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotStartProcess, program.shownCommand(),
                       errorDescription());
        return NO;
    }
    processHandle_ = child;
    isChild_ = true;
    return YES;
}
