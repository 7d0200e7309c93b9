// Programs that are run to their end.
#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/OSAdaptor/OSPipeInputStream.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBStringOutputStream.h>

#include "OSAdaptor/OSProcess.Program.h"

#include "System/Clock.h"
#include "System/Files.h"
#include "System/Sockets.h"

#include <cerrno>
#include <fcntl.h>
#include <new>

namespace sys = qb::sys;

namespace {

constexpr const char *kSelector = "runExternalCmd:withArgs:withEnv:";
constexpr int kLeastDebugOfRunning = 3;
constexpr std::int64_t kPatience = 500;              // milliseconds for what is still on its way
constexpr std::uint32_t kMostErrorOutput = 1U << 20; // more than a pipe holds

const char *shown(id object) {
    return object ? object->cStringValue() : "<nil>";
}

// What was written to the pipe, as far as there is memory for it. Others that the command has left behind may
// still hold the pipe: filters of its error output, which end soon, but also programs that go on.
Ref<NSString> contentOf(OSPipe *pipe) {
    pipe->closeWriteHandle();
    sys::fcntl(pipe->readHandle(), F_SETFL, O_NONBLOCK);
    const Ref<OSPipeInputStream> source = OSPipeInputStream::initWithPipe(pipe);
    const Ref<QBStringOutputStream> text = QBStringOutputStream::init();
    const sys::Deadline deadline = sys::Deadline::afterMilliseconds(kPatience);
    pollfd input{pipe->readHandle(), POLLIN, 0};
    static char block[65536]; // all that a pipe holds: when the time is over, one more look takes it
    std::uint32_t done = 0;
    for (bool isLast = false; text && !isLast && done < kMostErrorOutput;) {
        isLast = deadline.hasPassed();
        const std::int32_t count = source->readBuffer(block, sizeof block);
        if (count > 0) {
            text->writeBuffer(block, static_cast<std::uint32_t>(count));
            done += static_cast<std::uint32_t>(count);
        } else if (count < 0 && errno == EAGAIN) {
            sys::poll(&input, 1, deadline.remainingMilliseconds());
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    source->close();
    try {
        return text ? text->targetString() : nullptr;
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

} // namespace

void OSProcess::runExternalCmd(NSString *command, NSArray *args, NSDictionary *env) {
    const qb::SavedErrors earlier;
    if (debug >= kLeastDebugOfRunning)
        qb::trace(DEBUG_CHANNEL_MISC, {qb::kProcessFile, __LINE__, &OSProcess::cls, kSelector},
                  "running '%s' with args '%s'", shown(command), shown(args));
    const Ref<OSPipe> pipe = OSPipe::init(); // not the pool's, which might keep it open for long
    if (!pipe) {
        qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCannotStartProcess, shown(command),
                       errorDescription());
        return;
    }
    const std::int32_t errorOutput = pipe->writeHandle();
    const Ref<OSProcess> process = initWithCommand(command, args, env, nullptr, nullptr, &errorOutput);
    std::int32_t exitCode = 0;
    if (process && !qb::isErrorPending())
        process->waitForProcessDoHang(/*doHang=*/YES, &exitCode);
    if (exitCode == 0)
        return;
    const Ref<NSString> text = contentOf(pipe);
    qb::raiseError(qb::kProcessFile, __LINE__, qb::kErrorCommandFailed, shown(command), exitCode,
                   text ? text.get() : NSString::string());
}
