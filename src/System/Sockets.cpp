#include "Sockets.h"

#include "Attempt.h"
#include "Clock.h"
#include "Files.h"

namespace qb::sys {

namespace {

// The kernel goes on with an interrupted connection; asking again would only say that it does.
int finishConnecting(int socket) {
    pollfd waiting{socket, POLLOUT, 0};
    int error = 0;
    socklen_t length = sizeof error;
    if (sys::poll(&waiting, 1, -1) < 0 || sys::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &length) < 0)
        return -1;
    return error ? (errno = error, -1) : 0;
}

// Look-ups answer numbers of their own.
template <class Function>
int lookUp(Call call, Function function) {
    for (;;) {
        const int error = fails(call) ? EAI_SYSTEM : function();
        if (error != EAI_SYSTEM || errno != EINTR)
            return error;
    }
}

} // namespace

int socket(int domain, int type, int protocol) noexcept {
    return aboveStandardStreams(
        attempt(Call::socket, [&] { return ::socket(domain, type | SOCK_CLOEXEC, protocol); }));
}

int bind(int socket, const sockaddr *address, socklen_t length) noexcept {
    return attempt(Call::bind, [&] { return ::bind(socket, address, length); });
}

int listen(int socket, int backlog) noexcept {
    return attempt(Call::listen, [&] { return ::listen(socket, backlog); });
}

int accept(int socket, sockaddr *address, socklen_t *length, OnSignal onSignal) noexcept {
    const auto take = [&] { return ::accept4(socket, address, length, SOCK_CLOEXEC); };
    return aboveStandardStreams(repeat(Call::accept, take, nullptr, onSignal));
}

int connect(int socket, const sockaddr *address, socklen_t length) noexcept {
    if (address->sa_family == AF_UNIX) // where the kernel does not go on
        return repeat(Call::connect, [&] { return ::connect(socket, address, length); });
    const bool hasFault = fails(Call::connect);
    if (hasFault && errno != EINTR)
        return -1;
    const int result = ::connect(socket, address, length);
    const bool interrupted = result == 0 ? hasFault : errno == EINTR;
    return interrupted ? finishConnecting(socket) : result;
}

int poll(pollfd *descriptors, nfds_t count, int milliseconds, OnSignal onSignal) noexcept {
    const Deadline deadline =
        milliseconds < 0 ? Deadline::never() : Deadline::afterMilliseconds(milliseconds);
    const auto wait = [&] { return ::poll(descriptors, count, deadline.remainingMilliseconds()); };
    return repeat(Call::poll, wait, nullptr, onSignal);
}

int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional, timeval *timeout,
           OnSignal onSignal) noexcept {
    // Linux takes the time that has passed off `timeout` itself and leaves the sets alone when it fails.
    const auto wait = [&] { return ::select(count, readable, writable, exceptional, timeout); };
    return repeat(Call::select, wait, nullptr, onSignal);
}

int getsockopt(int socket, int level, int option, void *value, socklen_t *length) noexcept {
    return attempt(Call::getsockopt, [&] { return ::getsockopt(socket, level, option, value, length); });
}

int setsockopt(int socket, int level, int option, const void *value, socklen_t length) noexcept {
    return attempt(Call::setsockopt, [&] { return ::setsockopt(socket, level, option, value, length); });
}

int getsockname(int socket, sockaddr *address, socklen_t *length) noexcept {
    return attempt(Call::getsockname, [&] { return ::getsockname(socket, address, length); });
}

int shutdown(int socket, int how) noexcept {
    return attempt(Call::shutdown, [&] { return ::shutdown(socket, how); });
}

int getaddrinfo(const char *host, const char *service, const addrinfo *hints, addrinfo **result) noexcept {
    *result = nullptr;
    return lookUp(Call::getaddrinfo, [&] { return ::getaddrinfo(host, service, hints, result); });
}

int getnameinfo(const sockaddr *address, socklen_t length, char *host, socklen_t hostSize, char *service,
                socklen_t serviceSize, int flags) noexcept {
    return lookUp(Call::getnameinfo, [&] {
        return ::getnameinfo(address, length, host, hostSize, service, serviceSize, flags);
    });
}

void freeaddrinfo(addrinfo *list) noexcept {
    if (list) // POSIX leaves null open
        ::freeaddrinfo(list);
}

} // namespace qb::sys
