#include "Process.h"

#include "Attempt.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <pwd.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace qb::sys {

namespace {

// A user's entry with longer texts is not looked for.
constexpr std::size_t kLargestEntry = 1 << 20;

struct SharingStart {
    int (*child)(void *);
    void *context;
    sigset_t mask; // the caller's
};

pid_t keptId = 0; // 0: not asked yet

// For a child, and on both sides of a start that shares the memory.
void forgetId() {
    keptId = 0;
}

// A handler that ran in the child would find and change the parent's memory.
void resetSignalHandlers() {
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN ||
            action.sa_handler == SIG_DFL)
            continue;
        action = {};
        action.sa_handler = SIG_DFL;
        ::sigaction(signal, &action, nullptr);
    }
}

int runSharingChild(void *start) {
    const auto *self = static_cast<SharingStart *>(start);
    forgetId();
    resetSignalHandlers();
    ::sigprocmask(SIG_SETMASK, &self->mask, nullptr);
    return self->child(self->context);
}

} // namespace

pid_t getpid() noexcept {
    static const bool isForgottenInChildren = ::pthread_atfork(nullptr, nullptr, forgetId) == 0;
    if (keptId == 0 || !isForgottenInChildren)
        keptId = ::getpid();
    return keptId;
}

pid_t fork() noexcept {
    return attempt(Call::fork, [] { return ::fork(); });
}

pid_t startSharingMemory(int (*child)(void *context), void *context) noexcept {
    // Not `vfork`: a function that returns twice into one frame is undefined as soon as either side returns
    // from it.
    alignas(64) static char stack[65536];
    if (fails(Call::startSharingMemory))
        return -1;
    SharingStart start{child, context, {}};
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, &start.mask);
    const int error = errno;
    const pid_t process =
        ::clone(runSharingChild, stack + sizeof stack, CLONE_VM | CLONE_VFORK | SIGCHLD, &start);
    forgetId();
    if (process >= 0)
        errno = error; // the child's calls have set it
    const int result = errno;
    ::sigprocmask(SIG_SETMASK, &start.mask, nullptr);
    errno = result;
    return process;
}

int execvp(const char *file, char *const arguments[]) noexcept {
    return attempt(Call::execvp, [&] { return ::execvp(file, arguments); });
}

pid_t waitpid(pid_t process, int *status, int options, OnSignal onSignal) noexcept {
    return repeat(
        Call::waitpid, [&] { return ::waitpid(process, status, options); }, nullptr, onSignal);
}

int kill(pid_t process, int signal) noexcept {
    return attempt(Call::kill, [&] { return ::kill(process, signal); });
}

int pipe(int ends[2]) noexcept {
    return attempt(Call::pipe, [&] { return ::pipe2(ends, O_CLOEXEC); });
}

int dup2(int descriptor, int target) noexcept {
    // For equal ones the system does nothing, and the mark would close it after all.
    if (descriptor == target)
        return attempt(Call::dup2, [&] { return ::fcntl(target, F_SETFD, 0) == 0 ? target : -1; });
    return repeat(Call::dup2, [&] { return ::dup2(descriptor, target); });
}

int sigaction(int signal, const struct sigaction *action, struct sigaction *old) noexcept {
    return attempt(Call::sigaction, [&] { return ::sigaction(signal, action, old); });
}

pid_t setsid() noexcept {
    return attempt(Call::setsid, [] { return ::setsid(); });
}

unsigned alarm(unsigned seconds) noexcept {
    return ::alarm(seconds);
}

void exit(int status) {
    std::exit(status);
}

void _exit(int status) noexcept {
    ::_exit(status);
}

bool isatty(int descriptor) noexcept {
    return ::isatty(descriptor) == 1;
}

int rand() noexcept {
    return std::rand();
}

void srand(unsigned seed) noexcept {
    std::srand(seed);
}

char *getenv(const char *name) noexcept {
    return std::getenv(name);
}

int putenv(char *text) noexcept {
    return attempt(Call::putenv, [&] { return ::putenv(text) == 0 ? 0 : -1; });
}

int unsetenv(const char *name) noexcept {
    return attempt(Call::unsetenv, [&] { return ::unsetenv(name); });
}

char **environment() noexcept {
    return ::environ;
}

std::string homeDirectory(const char *user) {
    std::vector<char> texts(1024);
    struct passwd entry = {};
    struct passwd *found = nullptr;
    const auto ask = [&] {
        return user ? ::getpwnam_r(user, &entry, texts.data(), texts.size(), &found)
                    : ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    };
    int error = ask();
    for (; error == EINTR || (error == ERANGE && texts.size() < kLargestEntry); error = ask())
        if (error == ERANGE)
            texts.resize(texts.size() * 2);
    return error == 0 && found && found->pw_dir ? found->pw_dir : "";
}

int gethostname(char *buffer, std::size_t size) noexcept {
    return attempt(Call::gethostname, [&] { return ::gethostname(buffer, size); });
}

} // namespace qb::sys
