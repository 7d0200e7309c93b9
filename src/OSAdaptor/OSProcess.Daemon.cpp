// Going into the background.
#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include "OSAdaptor/OSProcess.Program.h"
#include "System/Process.h"
#include "System/Stdio.h"

#include <csignal>
#include <cstdio>

namespace sys = qb::sys;

namespace {

[[noreturn]] void end(const char *format) {
    qb::logAlert(format, OSObject::errorDescription());
    sys::exit(qb::kExitWithoutProgram);
}

bool isReopened(std::FILE *file, const char *mode) {
    return sys::freopen("/dev/null", mode, file) != nullptr;
}

} // namespace

void OSProcess::detachAndChdirTo(NSString *directory) {
    // The end of a session's leader, as which the parent may end, hangs up on the child as long as the child
    // belongs to the session.
    struct sigaction ignoring {};
    struct sigaction earlier {};
    ignoring.sa_handler = SIG_IGN;
    sys::sigaction(SIGHUP, &ignoring, &earlier);
    // To where they go now, and before whoever waits for the parent looks there.
    sys::fflush(stdout);
    sys::fflush(stderr);
    const pid_t child = sys::fork();
    if (child < 0)
        end("fork failed: %s\n");
    if (child > 0)
        sys::_exit(0); // exit functions and the other streams are the child's affair
    sys::setsid();
    sys::sigaction(SIGHUP, &earlier, nullptr);
    OSFilePath::chdir(directory);
    if (!isReopened(stdin, "r") || !isReopened(stdout, "w") || !isReopened(stderr, "w"))
        end("freopen standard channel failed: %s\n");
}
