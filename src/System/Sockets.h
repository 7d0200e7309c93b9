// Sockets.
//
// Each function is the system's of the same name, with its results (-1 and errno). New sockets are
// close-on-exec, sending never raises SIGPIPE, interrupted calls are repeated unless the caller wants to hear
// of it. Sending and receiving stand here because right behind a system call a processor guesses every return
// wrong: they are to be a part of what calls them.
#ifndef QBFOUNDATION_SYSTEM_SOCKETS_H
#define QBFOUNDATION_SYSTEM_SOCKETS_H

#include "Attempt.h"

#include <cstddef>
#include <netdb.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>

namespace qb::sys {

/// Returns a new socket.
int socket(int domain, int type, int protocol) noexcept;
/// Gives the socket its address.
int bind(int socket, const sockaddr *address, socklen_t length) noexcept;
/// Makes the socket take connections, `backlog` of them waiting.
int listen(int socket, int backlog) noexcept;
/// Returns a socket for the next connection; `address` and `length` may both be null.
int accept(int socket, sockaddr *address, socklen_t *length, OnSignal onSignal = OnSignal::repeat) noexcept;
/// Connects; a connection that a signal interrupts is waited for to its end.
int connect(int socket, const sockaddr *address, socklen_t length) noexcept;
/// Sends once; returns the bytes sent. EPIPE when the peer is gone.
inline ssize_t send(int socket, const void *buffer, std::size_t length, int flags = 0,
                    OnSignal onSignal = OnSignal::repeat) noexcept {
    const auto pass = [&] { return ::send(socket, buffer, length, flags | MSG_NOSIGNAL); };
    return repeat(Call::send, pass, &length, onSignal);
}
/// Receives once; returns the bytes received, 0 when the peer has closed.
inline ssize_t recv(int socket, void *buffer, std::size_t length, int flags = 0,
                    OnSignal onSignal = OnSignal::repeat) noexcept {
    const auto take = [&] { return ::recv(socket, buffer, length, flags); };
    return repeat(Call::recv, take, &length, onSignal);
}
/// Waits for descriptors, -1 for ever; returns how many are ready, 0 at the time-out, which repetition
/// doesn't extend.
int poll(pollfd *descriptors, nfds_t count, int milliseconds, OnSignal onSignal = OnSignal::repeat) noexcept;
/// Waits for descriptors below `count` (at most FD_SETSIZE); `timeout` (null: for ever) becomes what is left
/// of it.
int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional, timeval *timeout,
           OnSignal onSignal = OnSignal::repeat) noexcept;
/// Reads an option.
int getsockopt(int socket, int level, int option, void *value, socklen_t *length) noexcept;
/// Sets an option.
int setsockopt(int socket, int level, int option, const void *value, socklen_t length) noexcept;
/// Stores the socket's own address.
int getsockname(int socket, sockaddr *address, socklen_t *length) noexcept;
/// Ends one direction of a connection, or both.
int shutdown(int socket, int how) noexcept;
/// Looks a host or service up; returns 0 or an EAI number (EAI_SYSTEM: see errno). `freeaddrinfo` frees the
/// result.
int getaddrinfo(const char *host, const char *service, const addrinfo *hints, addrinfo **result) noexcept;
/// Looks the names of an address up; returns as `getaddrinfo` does.
int getnameinfo(const sockaddr *address, socklen_t length, char *host, socklen_t hostSize, char *service,
                socklen_t serviceSize, int flags) noexcept;
/// Frees what `getaddrinfo` has stored.
void freeaddrinfo(addrinfo *list) noexcept;

} // namespace qb::sys

#endif
