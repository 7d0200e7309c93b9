// What the sources of sockets share.
#ifndef QBFOUNDATION_OSADAPTOR_OSSOCKET_SUPPORT_H
#define QBFOUNDATION_OSADAPTOR_OSSOCKET_SUPPORT_H

#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/OSAdaptor/OSSocket.h>
#include <QBFoundation/QBErrorHandler.h>

#include "System/Clock.h"
#include "System/Sockets.h"

#include <cstddef>
#include <span>
#include <typeinfo>

namespace qb::sockets {

inline constexpr const char *kFile = "src/OSAdaptor/OSSocket";

/// Whether no subclass can see the operations of the socket. They are called as OSSocket's own then: right
/// behind a system call, a processor often guesses indirect calls wrong.
inline bool isPlain(const OSSocket &socket) {
    return typeid(socket) == typeid(OSSocket);
}

/// Raises 100207 with the socket.
void raiseReceiveError(int line, std::int32_t socket);

/// Whether there is a callback to be asked.
bool hasCallback();
/// Whether an operation without a time-out must wait by `waitFor` first, so that the callback is asked.
bool isToBeWaitedFor(std::int32_t socket);
/// Waits until something is ready, and asks the callback in between. Returns how many descriptors are ready;
/// 0 when the deadline has passed, the callback has said NO, or a signal has interrupted that it was not
/// asked about; -1, with errno set, for failures.
///
/// A closed descriptor is one, EBADF, and has POLLNVAL in its `revents`.
int waitFor(std::span<pollfd> descriptors, const sys::Deadline &deadline);

/// Lets operations on the descriptor answer at once. Returns whether they do.
bool makeNonBlocking(std::int32_t socket);

/// Sends all of the bytes, in as many sends as it takes. Returns false when one has failed.
bool sendAll(OSSocket *socket, const char *bytes, std::size_t length);

} // namespace qb::sockets

#endif
