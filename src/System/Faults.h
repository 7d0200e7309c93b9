// Faults injected into the calls of the system seam, and their counting; both only in the test build.
#ifndef QBFOUNDATION_SYSTEM_FAULTS_H
#define QBFOUNDATION_SYSTEM_FAULTS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qb::sys {

/// The calls that can be counted and made to fail, by the names of their functions (`readLine`: `fgets`,
/// `allocateAligned`: `allocate`, `openat`: `open`).
///
/// Calls that cannot fail (`getpid`, the clocks, `rand` …) are not among them. `any` stands for each of them,
/// `end` is their number.
// clang-format off
enum class Call : unsigned {
    any,
    // Memory
    allocate, reallocate,
    // Files
    open, close, fcntl, read, write, lseek, stat, fstat, lstat, access, readlink, rename,
    unlink, rmdir, mkdir, symlink, link, chmod, fchmod, utimensat, opendir, readdir, closedir, getcwd,
    chdir, fsync, ftruncate, copy_file_range, sendfile, glob,
    // Stdio
    fopen, fdopen, freopen, fclose, fread, fwrite, fflush, fgets, fgetc, fseeko,
    // Clock
    sleep,
    // Process
    fork, startSharingMemory, close_range, execvp, waitpid, kill, pipe, dup2, sigaction, setsid, putenv,
    unsetenv, gethostname,
    // Sockets
    socket, bind, listen, accept, connect, send, recv, poll, select, getsockopt, setsockopt, getsockname,
    shutdown, getaddrinfo, getnameinfo,
    // Library, Iconv, Regex
    dlopen, iconv_open, iconv, iconv_close, setlocale, regcomp, regexec,
    end
};
// clang-format on

/// How many values `Call` has, `any` among them.
inline constexpr std::size_t kCallCount = static_cast<std::size_t>(Call::end);

#ifdef QB_FAULT_INJECTION
inline constexpr bool kFaultInjection = true;
#else
inline constexpr bool kFaultInjection = false;
#endif

namespace detail {
/// How many faults and counters are alive; 0 lets every call pass after this one test.
extern int watchers;
/// Counts the call and looks for a fault armed for it; see `fails`.
bool interfere(Call call, std::size_t *length) noexcept;
} // namespace detail

/// Returns whether `call` is to fail now instead of being done, with errno set. Never, outside the test
/// build.
///
/// A short transfer is no failure: `*length` becomes smaller, and the call goes on with what is left of it.
inline bool fails(Call call, std::size_t *length = nullptr) noexcept {
    if constexpr (kFaultInjection) {
        if (detail::watchers != 0) [[unlikely]]
            return detail::interfere(call, length);
    }
    return false;
}

#ifdef QB_FAULT_INJECTION

/// Returns the name of `call` as it stands in the enumeration ("copy_file_range").
std::string_view nameOfCall(Call call) noexcept;

/// A fault's effect: transfers at most `bytes` bytes. Only for calls that transfer bytes; others pass
/// unharmed.
struct ShortTransfer {
    std::size_t bytes;
};

/// A fault's effect: the process dies by SIGKILL at the call, before it is done.
struct KillProcess {};

/// Makes calls fail as long as it lives; several may live at once, and the youngest that fits acts.
///
///     Fault fault(Call::write, /*skip=*/2, /*times=*/1, ENOSPC);   // the third write fails, once
///     Fault storm(Call::read, /*skip=*/0, /*times=*/5, EINTR);     // five interruptions, then all is well
///
/// Each attempt counts: a call that repeats itself on EINTR meets the fault again, so that EINTR for ever
/// (`times` 0) never ends there. Calls that release something (`close`, `fclose`, `closedir` …) release it
/// and then report the error, as the kernel does.
class Fault {
public:
    /// Lets `skip` calls of `call` pass, then makes `times` of them (0: all) fail with errno `error`.
    Fault(Call call, unsigned skip, unsigned times, int error) noexcept;
    /// As above, but the transfer is cut instead.
    Fault(Call call, unsigned skip, unsigned times, ShortTransfer transfer) noexcept;
    /// Lets `skip` calls pass, then kills the process.
    Fault(Call call, unsigned skip, KillProcess) noexcept;
    ~Fault();
    Fault(const Fault &) = delete;
    Fault &operator=(const Fault &) = delete;

    /// Returns how often it has struck so far.
    unsigned hits() const noexcept { return hits_; }
    /// Returns the call on which it has struck last; `any` before that.
    Call struck() const noexcept { return struck_; }

private:
    enum class Effect { error, shortTransfer, kill };
    friend bool detail::interfere(Call call, std::size_t *length) noexcept;
    Fault(Call call, unsigned skip, unsigned times, Effect effect, int error, std::size_t bytes) noexcept;
    bool strikes(Call call) noexcept;

    Call call_;
    unsigned skip_;     // calls still to pass
    unsigned times_;    // 0: for ever
    unsigned hits_ = 0; // up to `times_`
    Call struck_ = Call::any;
    Effect effect_;
    int error_;
    std::size_t bytes_;
    Fault *next_; // the older ones
};

/// Counts the calls since its making. A walk over all failure points counts first, then fails the first,
/// second … call.
class CallCounter {
public:
    CallCounter() noexcept;
    ~CallCounter();
    CallCounter(const CallCounter &) = delete;
    CallCounter &operator=(const CallCounter &) = delete;

    /// Returns how many attempts at `call` (`Call::any`: at all calls) there were so far.
    std::uint64_t calls(Call call) const noexcept;

private:
    std::array<std::uint64_t, kCallCount> start_;
};

#endif // QB_FAULT_INJECTION

} // namespace qb::sys

#endif
