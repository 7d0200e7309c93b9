// Processes, signals, the environment.
//
// Each function is the system's of the same name, with its results (-1 and errno), unless its comment says
// otherwise.
#ifndef QBFOUNDATION_SYSTEM_PROCESS_H
#define QBFOUNDATION_SYSTEM_PROCESS_H

#include "OnSignal.h"

#include <csignal>
#include <cstddef>
#include <string>
#include <sys/types.h>

namespace qb::sys {

/// Returns the process's id, without asking the system more than once.
pid_t getpid() noexcept;
/// Returns 0 in the child, its id in the parent.
pid_t fork() noexcept;
/// Blocks all signals in its scope, also in processes that begin in it. errno stays as it was.
class SignalsBlocked {
public:
    SignalsBlocked() noexcept;
    ~SignalsBlocked();
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t mask_; // the one before
};

/// Runs `child(context)` in a new process, in this process's memory, which waits for it.
///
/// As cheap as a start can be, for a child that goes on to `execvp` at once; what it returns is its exit
/// status. What it writes to memory stays written here, except errno and which list is the environment;
/// signals are blocked, because a handler that ran in it would find and change this memory. Its stack has
/// 64 KiB and room for `pointers` pointers more. Returns the child's id once the child has another program or
/// is at its end.
pid_t startSharingMemory(const SignalsBlocked &, int (*child)(void *context), void *context,
                         std::size_t pointers = 0) noexcept;
/// Returns whether that is so: emulators and memory checkers give the child a memory of its own, and don't
/// wait.
bool canShareMemory() noexcept;
/// Becomes the program `file`, looked up on the search path; returns only after a failure. It takes up to as
/// many pointers from the stack as there are arguments.
int execvp(const char *file, char *const arguments[]) noexcept;
/// Marks each descriptor but those of the standard streams close-on-exec: by `close_range`, by what
/// /proc lists, or as many as the limit of descriptors allows.
void closeOthersOnExec() noexcept;
/// Waits for a child; returns its id, 0 with WNOHANG while it runs.
pid_t waitpid(pid_t process, int *status, int options, OnSignal onSignal = OnSignal::repeat) noexcept;
/// Returns whether the process is a child that was not waited for, or the system won't tell.
bool isChild(pid_t process) noexcept;
/// Sends a signal; 0 only tests.
int kill(pid_t process, int signal) noexcept;
/// Stores a read end and a write end, both close-on-exec, neither of them 0, 1 or 2.
int pipe(int ends[2]) noexcept;
/// Makes `target` a duplicate that a program to be started inherits; also when both are the same descriptor.
int dup2(int descriptor, int target) noexcept;
/// Reads (null `action`) or sets what a signal does.
int sigaction(int signal, const struct sigaction *action, struct sigaction *old) noexcept;
/// Gives each signal its default action and blocks none, as a new program may expect to find it.
void resetSignals() noexcept;
/// Ignores from now on the signals that a write may raise: it fails instead, or goes through.
void ignoreSignalsOfWriting() noexcept;
/// Writes once to a pipe or the like; where nobody reads any more it is EPIPE, and never the signal.
ssize_t writeWithoutSignal(int descriptor, const void *buffer, std::size_t length,
                           OnSignal onSignal) noexcept;
/// Lets what else waits for this processor run first.
void sched_yield() noexcept;
/// Starts a session; returns its id.
pid_t setsid() noexcept;
/// Asks for SIGALRM in so many seconds (0: never); returns the seconds an earlier one had left.
unsigned alarm(unsigned seconds) noexcept;
/// Ends the process in good order: exit functions run, streams are flushed.
[[noreturn]] void exit(int status);
/// Ends the process at once, as a child must that shares its parent's streams.
[[noreturn]] void _exit(int status) noexcept;
/// Returns whether the descriptor is a terminal.
bool isatty(int descriptor) noexcept;
/// Returns the C library's next pseudo-random number, which is not for secrets.
int rand() noexcept;
/// Makes those numbers follow from `seed`.
void srand(unsigned seed) noexcept;

/// Returns an environment variable's value, the environment's own bytes; null when there is none.
char *getenv(const char *name) noexcept;
/// Makes `text` ("NAME=value"), which must stay alive, part of the environment.
int putenv(char *text) noexcept;
/// Removes an environment variable.
int unsetenv(const char *name) noexcept;
/// Returns the environment itself, "NAME=value" each and a null at the end; null when it was cleared.
char **environment() noexcept;
/// Makes `list`, which must stay alive, the environment.
void setEnvironment(char **list) noexcept;
/// Returns the home directory of the user of that name, or of the process's own for null, as the user
/// database has it; the empty text when there is none.
std::string homeDirectory(const char *user);
/// Stores the host's name with a NUL; ENAMETOOLONG when the buffer is too small.
int gethostname(char *buffer, std::size_t size) noexcept;

} // namespace qb::sys

#endif
