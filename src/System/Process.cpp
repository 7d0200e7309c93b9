#include "Process.h"

#include "Attempt.h"
#include "Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace qb::sys {

namespace {

// A user's entry with longer texts is not looked for.
constexpr std::size_t kLargestEntry = 1 << 20;

// What the system tells of a process, but for one in more groups than anybody is.
constexpr std::size_t kLargestStatus = 4096;

// What a child that shares the memory needs, with the C library's `execvp`, for all but its arguments.
constexpr std::size_t kSharedStack = 65536;

struct SharingStart {
    int (*child)(void *);
    void *context;
};

// Where the process's id is kept, 0 before it was asked for; null when it can't be. The system empties the
// page in each child, whatever call makes it.
pid_t *placeOfId() {
    static auto *const place = [] {
        const int error = errno;
        const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        void *const page = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        constexpr int kNoAdvice = -1; // an emulator takes any, and empties nothing
        const bool isEmptied = page != MAP_FAILED && ::madvise(page, size, MADV_WIPEONFORK) == 0 &&
                               ::madvise(page, size, kNoAdvice) != 0;
        errno = error;
        return isEmptied ? static_cast<pid_t *>(page) : nullptr;
    }();
    return place;
}

void keepId(pid_t id) {
    if (pid_t *const place = placeOfId())
        *place = id;
}

int runSharingChild(void *start) {
    const auto *self = static_cast<SharingStart *>(start);
    keepId(0);
    return self->child(self->context);
}

// The end of a stack of at least `size` bytes, null without memory. It is kept, because starts come often;
// below it is a page that nobody may touch.
char *endOfSharedStack(std::size_t size) {
    static char *start = nullptr;
    static std::size_t room = 0;
    if (size <= room)
        return start + room;
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t wanted = (size + page - 1) / page * page;
    void *const made = ::mmap(nullptr, page + wanted, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
    if (made == MAP_FAILED)
        return nullptr;
    ::mprotect(made, page, PROT_NONE);
    if (start)
        ::munmap(start - page, page + room);
    start = static_cast<char *>(made) + page;
    room = wanted;
    return start + room;
}

// Not `vfork`: a function that returns twice into one frame is undefined as soon as either side returns from
// it.
pid_t cloneInPlace(int (*child)(void *), void *context, std::size_t pointers, int endSignal) {
    char *const stack = endOfSharedStack(kSharedStack + pointers * sizeof(void *));
    if (!stack)
        return -1;
    SharingStart start{child, context};
    const pid_t self = getpid();
    const int error = errno;
    char **const list = ::environ;
    const pid_t process = ::clone(runSharingChild, stack, CLONE_VM | CLONE_VFORK | endSignal, &start);
    ::environ = list;
    keepId(self);
    if (process >= 0)
        errno = error; // the child's calls have set it
    return process;
}

} // namespace

pid_t getpid() noexcept {
    pid_t *const id = placeOfId();
    if (!id)
        return ::getpid();
    if (*id == 0)
        *id = ::getpid();
    return *id;
}

pid_t fork() noexcept {
    return attempt(Call::fork, [] { return ::fork(); });
}

pid_t startSharingMemory(const SignalsBlocked &, int (*child)(void *context), void *context,
                         std::size_t pointers) noexcept {
    if (fails(Call::startSharingMemory))
        return -1;
    return cloneInPlace(child, context, pointers, SIGCHLD);
}

bool canShareMemory() noexcept {
    static bool isKnown = false;
    static volatile bool wasWritten = false;
    if (isKnown)
        return wasWritten;
    const auto write = [](void *) {
        wasWritten = true;
        return 0;
    };
    // Without a signal at its end, as it is nobody's affair.
    const SignalsBlocked blocked;
    const pid_t child = cloneInPlace(write, nullptr, 0, /*endSignal=*/0);
    if (child < 0) {
        isKnown = errno == EINVAL; // an emulator, which knows no child without a signal
        return !isKnown;           // for other reasons the next one will be no better, and tell
    }
    isKnown = true;
    while (::waitpid(child, nullptr, __WALL) < 0 && errno == EINTR) {
    }
    return wasWritten;
}

int execvp(const char *file, char *const arguments[]) noexcept {
    return attempt(Call::execvp, [&] { return ::execvp(file, arguments); });
}

void closeOthersOnExec() noexcept {
    const auto markAll = [] { return ::close_range(STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC); };
    if (attempt(Call::close_range, markAll) == 0)
        return;
    // An old kernel, or a container that refuses what it doesn't know. `readdir` would allocate.
    const int list = ::open("/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (list < 0) { // without a descriptor for it, or without such a directory
        const long end = ::sysconf(_SC_OPEN_MAX);
        for (int descriptor = STDERR_FILENO + 1; descriptor < end; ++descriptor)
            ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
    alignas(dirent64) char entries[1024];
    for (ssize_t size; (size = ::getdents64(list, entries, sizeof entries)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto *const entry = reinterpret_cast<const dirent64 *>(entries + at);
            if (const int descriptor = std::atoi(entry->d_name); descriptor > STDERR_FILENO)
                ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
            at += entry->d_reclen;
        }
    }
    ::close(list);
}

pid_t waitpid(pid_t process, int *status, int options, OnSignal onSignal) noexcept {
    return repeat(
        Call::waitpid, [&] { return ::waitpid(process, status, options); }, nullptr, onSignal);
}

bool isChild(pid_t process) noexcept {
    siginfo_t end;
    const auto look = [&] {
        return ::waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOHANG | WNOWAIT);
    };
    return attempt(Call::waitpid, look) == 0 || errno != ECHILD;
}

int kill(pid_t process, int signal) noexcept {
    return attempt(Call::kill, [&] { return ::kill(process, signal); });
}

int pipe(int ends[2]) noexcept {
    int made[2];
    if (attempt(Call::pipe, [&] { return ::pipe2(made, O_CLOEXEC); }) != 0)
        return -1;
    Descriptor first(aboveStandardStreams(made[0]));
    Descriptor second(aboveStandardStreams(made[1]));
    if (!first || !second)
        return -1;
    ends[0] = first.release();
    ends[1] = second.release();
    return 0;
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

SignalsBlocked::SignalsBlocked() noexcept {
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, &mask_);
}

SignalsBlocked::~SignalsBlocked() {
    const int error = errno;
    ::sigprocmask(SIG_SETMASK, &mask_, nullptr);
    errno = error;
}

// The set of that name in a process's status, bit 0 for signal 1; all signals where it isn't told.
static std::uint64_t signalsTold(const char *status, const char *name) {
    const char *const line = std::strstr(status, name);
    if (!line)
        return ~std::uint64_t{0};
    char *end;
    const std::uint64_t signals = std::strtoull(line + std::strlen(name), &end, 16);
    return *end == '\n' ? signals : ~std::uint64_t{0};
}

// One look at the list instead of a call for each signal, which a start would feel.
static std::uint64_t signalsWithoutDefaultAction() {
    char status[kLargestStatus + 1];
    const Descriptor file(::open("/proc/self/status", O_RDONLY | O_CLOEXEC));
    const ssize_t size = file ? ::read(file.get(), status, kLargestStatus) : 0;
    status[std::max<ssize_t>(size, 0)] = '\0';
    return signalsTold(status, "\nSigIgn:") | signalsTold(status, "\nSigCgt:");
}

void resetSignals() noexcept {
    const std::uint64_t signals = signalsWithoutDefaultAction();
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        if (signals >> (signal - 1) & 1 && signal != SIGKILL && signal != SIGSTOP) // which have no other
            ::sigaction(signal, &action, nullptr);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void ignoreSignalsOfWriting() noexcept {
    // To a pipe that nobody reads, to a file at its limit, and to a terminal from the background.
    for (const int signal : {SIGPIPE, SIGXFSZ, SIGTTOU})
        ::signal(signal, SIG_IGN);
}

ssize_t writeWithoutSignal(int descriptor, const void *buffer, std::size_t length,
                           OnSignal onSignal) noexcept {
    sigset_t pipe, before;
    ::sigemptyset(&pipe);
    ::sigaddset(&pipe, SIGPIPE);
    ::sigprocmask(SIG_BLOCK, &pipe, &before);
    // What was pending already is the caller's; it can only be where the caller blocks it.
    sigset_t pending;
    const bool wasPending = ::sigismember(&before, SIGPIPE) == 1 && ::sigpending(&pending) == 0 &&
                            ::sigismember(&pending, SIGPIPE) == 1;
    const ssize_t result = sys::write(descriptor, buffer, length, onSignal);
    const int error = errno;
    const timespec atOnce{};
    // Also where the reader went amid a write, of which a part was taken.
    if (result != static_cast<ssize_t>(length) && !wasPending)
        ::sigtimedwait(&pipe, nullptr, &atOnce);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return result;
}

void sched_yield() noexcept {
    ::sched_yield();
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

void setEnvironment(char **list) noexcept {
    ::environ = list;
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
