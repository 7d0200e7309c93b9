// Programs that are no children: their parent ends as soon as it has started them.
#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/OSAdaptor/OSPipe.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSAdaptor/OSProcess.Program.h"
#include "System/Files.h"
#include "System/Process.h"
#include "System/Stdio.h"

#include <cerrno>
#include <cstdio>
#include <initializer_list>
#include <optional>
#include <span>

namespace sys = qb::sys;

namespace {

/// A copy of this process, and a copy of that.
class Grandchild {
public:
    enum class Side {
        caller,      // there is a process in between, and it may have a child
        failure,     // there is none
        halfFailure, // this is the process in between, and it has no child
        grandchild
    };

    Grandchild() noexcept {
        sys::fflush(stderr); // or one that logs would write again what is buffered here
        between_ = sys::fork();
        if (between_ != 0) {
            blocked_.reset(); // they are for the caller, also while it waits
            side_ = between_ > 0 ? Side::caller : Side::failure;
            return;
        }
        const pid_t grandchild = sys::fork();
        if (grandchild > 0)
            sys::_exit(0);
        side_ = grandchild == 0 ? Side::grandchild : Side::halfFailure;
    }

    Side side() const { return side_; }
    /// Waits for the end of the process in between.
    void awaitChild() const { sys::waitpid(between_, nullptr, 0); }

private:
    // The handlers of the caller's signals are not for the copies.
    std::optional<sys::SignalsBlocked> blocked_{std::in_place};
    pid_t between_;
    Side side_;
};

using Side = Grandchild::Side;

std::int32_t openReadHandle(const OSPipe *pipe) {
    return pipe && pipe->_isReadHandleOpen() ? pipe->readHandle() : -1;
}

std::int32_t openWriteHandle(const OSPipe *pipe) {
    return pipe && pipe->_isWriteHandleOpen() ? pipe->writeHandle() : -1;
}

// Closes the ends of pipes that are the caller's first: a copy that has to log and still held one would wait
// for itself.
[[noreturn]] void runWithout(std::initializer_list<std::int32_t> ends, const qb::Program &program,
                             std::span<const qb::Redirection> redirections) noexcept {
    for (const std::int32_t end : ends)
        if (end >= 0)
            sys::close(end);
    program.run(redirections);
}

} // namespace

BOOL OSProcess::createSubProcessWithPipe(OSPipe *pipe, BOOL doesRead, NSString *command, NSArray *args,
                                         NSDictionary *env, const std::int32_t *stdinHandle,
                                         const std::int32_t *stdoutHandle, const std::int32_t *stderrHandle) {
    const qb::Program program(command, args, env);
    const std::int32_t end = !pipe ? -1 : doesRead ? pipe->readHandle() : pipe->writeHandle();
    const std::int32_t otherEnd = !pipe ? -1 : doesRead ? openWriteHandle(pipe) : openReadHandle(pipe);
    const qb::Redirection redirections[] = {qb::toStandardInput(doesRead ? &end : stdinHandle),
                                            qb::toStandardOutput(doesRead ? stdoutHandle : &end),
                                            qb::toStandardError(stderrHandle)};
    const Grandchild grandchild;
    if (grandchild.side() == Side::grandchild)
        runWithout({otherEnd}, program, redirections);
    if (grandchild.side() != Side::caller)
        return NO;
    if (pipe)
        doesRead ? pipe->closeReadHandle() : pipe->closeWriteHandle();
    grandchild.awaitChild();
    return YES;
}

void OSProcess::createCoprocessWithPipeForRead(OSPipe *pipe, OSPipe *pipeForWrite, NSString *command,
                                               NSArray *args, NSDictionary *env,
                                               const std::int32_t *stderrHandle) {
    const qb::Program program(command, args, env);
    const std::int32_t output = pipe ? pipe->writeHandle() : -1;
    const std::int32_t input = pipeForWrite ? pipeForWrite->readHandle() : -1;
    const std::int32_t callersInput = openReadHandle(pipe), callersOutput = openWriteHandle(pipeForWrite);
    const qb::Redirection redirections[] = {qb::toStandardOutput(&output), qb::toStandardInput(&input),
                                            qb::toStandardError(stderrHandle)};
    const Grandchild grandchild;
    if (grandchild.side() == Side::grandchild)
        runWithout({callersInput, callersOutput}, program, redirections);
    if (grandchild.side() == Side::halfFailure)
        program.end({"fork for '%s' failed!\n", errno});
    if (grandchild.side() == Side::failure) {
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotStartProcess, program.shownCommand(),
                       errorDescription());
        return;
    }
    if (pipe)
        pipe->closeWriteHandle();
    if (pipeForWrite)
        pipeForWrite->closeReadHandle();
    grandchild.awaitChild();
}
