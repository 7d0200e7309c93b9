// Waiting for sockets, and the callback that is asked whether to go on.
#include <QBFoundation/OSAdaptor/OSSocket.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSException.h>

#include "OSAdaptor/OSSocket.Support.h"
#include "System/Files.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace sys = qb::sys;
using qb::sockets::kFile;

namespace {

// How long the callback is not asked, in milliseconds.
constexpr unsigned kPatience = 200;

OSContinueBlockingOperationCallback mayContinue = nullptr;

bool isClosed(const pollfd &descriptor) {
    return (descriptor.revents & POLLNVAL) != 0;
}

// The kernel passes over negative descriptors.
bool hasNoDescriptor(std::span<pollfd> descriptors) {
    bool found = false;
    for (pollfd &descriptor : descriptors)
        if (descriptor.fd < 0) {
            descriptor.revents = POLLNVAL;
            found = true;
        }
    return found;
}

} // namespace

bool qb::sockets::hasCallback() {
    return mayContinue != nullptr;
}

bool qb::sockets::isToBeWaitedFor(std::int32_t socket) {
    return mayContinue && (sys::fcntl(socket, F_GETFL) & O_NONBLOCK) == 0;
}

int qb::sockets::waitFor(std::span<pollfd> descriptors, const sys::Deadline &deadline) {
    if (hasNoDescriptor(descriptors))
        return errno = EBADF, -1;
    for (;;) {
        int milliseconds = deadline.remainingMilliseconds();
        if (mayContinue && static_cast<unsigned>(milliseconds) > kPatience) // -1, for ever, too
            milliseconds = kPatience;
        const int ready =
            sys::poll(descriptors.data(), descriptors.size(), milliseconds, sys::OnSignal::report);
        if (ready > 0 && std::any_of(descriptors.begin(), descriptors.end(), isClosed))
            return errno = EBADF, -1;
        if (ready > 0 || (ready < 0 && errno != EINTR))
            return ready;
        if (ready == 0 && deadline.hasPassed())
            return 0;
        if (mayContinue ? !mayContinue() : ready < 0)
            return 0;
    }
}

void OSSocket::registerContinueBlockingOperationCallback(OSContinueBlockingOperationCallback callback) {
    mayContinue = callback;
}

// --- Several sockets ---

namespace {

constexpr std::pair<OSSocket::Activation, short> kEvents[] = {
    {OSSocket::kReadable, POLLIN}, {OSSocket::kWritable, POLLOUT}, {OSSocket::kExceptional, POLLPRI}};

short eventsFor(std::int32_t activation) {
    int events = 0;
    for (const auto &[one, event] : kEvents)
        if (activation & one)
            events |= event;
    if (events == 0)
        throw InvalidArgumentException(
            "OSSocket selectSockets:activation:timeoutSecs:timeoutMilliSecs: must have "
            "an activation that is not 0.");
    return static_cast<short>(events);
}

// Retained, because the callback and what it calls may change the array.
std::vector<Ref<OSSocket>> socketsOf(NSArray *array) {
    std::vector<Ref<OSSocket>> sockets;
    sockets.reserve(array ? array->count() : 0);
    for (std::uint32_t index = 0; array && index < array->count(); ++index)
        sockets.emplace_back(qb::castOrNil<OSSocket>(array->objectAtIndex(index)));
    if (!array || std::find(sockets.begin(), sockets.end(), nullptr) != sockets.end())
        throw InvalidArgumentException(
            "OSSocket selectSockets:activation:timeoutSecs:timeoutMilliSecs: must have "
            "an array of sockets.");
    return sockets;
}

sys::Deadline deadlineAfter(std::int64_t seconds, std::int64_t milliseconds) {
    std::int64_t sum = 0;
    const bool overflows = __builtin_mul_overflow(seconds, std::int64_t{1000}, &sum) ||
                           __builtin_add_overflow(sum, milliseconds, &sum);
    const bool isForEver = seconds < 0 || milliseconds < 0 || overflows;
    return isForEver ? sys::Deadline::never() : sys::Deadline::afterMilliseconds(sum);
}

} // namespace

NSArray *OSSocket::selectSockets(NSArray *sockets, std::int32_t activation, std::int64_t timeoutSecs,
                                 std::int64_t timeoutMilliSecs) {
    const short events = eventsFor(activation);
    const std::vector<Ref<OSSocket>> all = socketsOf(sockets);
    std::vector<pollfd> descriptors;
    descriptors.reserve(all.size());
    const auto isBuffered = [&](const OSSocket *socket) {
        return (activation & kReadable) && socket->bufferedCount() > 0;
    };
    sys::Deadline deadline = deadlineAfter(timeoutSecs, timeoutMilliSecs);
    for (const Ref<OSSocket> &socket : all) {
        descriptors.push_back({socket->socketHandle(), events, 0});
        if (isBuffered(socket))
            deadline = sys::Deadline::afterMilliseconds(0);
    }
    if (qb::sockets::waitFor(descriptors, deadline) < 0) {
        const auto closed = std::find_if(descriptors.begin(), descriptors.end(), isClosed);
        qb::sockets::raiseReceiveError(__LINE__, closed != descriptors.end() ? closed->fd : -1);
        return nullptr;
    }
    NSMutableArray *const ready = NSMutableArray::array();
    for (std::size_t index = 0; index < all.size(); ++index)
        if (descriptors[index].revents != 0 || isBuffered(all[index]))
            ready->addObject(all[index]);
    return ready;
}

std::int32_t OSSocket::selectForTime(std::int32_t maxSocket, fd_set *readfds, fd_set *writefds,
                                     fd_set *exceptfds, Time *time) {
    const bool fits = maxSocket < FD_SETSIZE;
    if (!fits)
        errno = EINVAL; // the kernel would read, and write, behind the sets
    timeval left = time ? timeval{time->seconds, time->microseconds} : timeval{};
    const int ready = fits ? sys::select(maxSocket + 1, readfds, writefds, exceptfds, time ? &left : nullptr,
                                         sys::OnSignal::report)
                           : -1;
    if (time)
        *time = {left.tv_sec, left.tv_usec};
    if (ready < 0 && errno != EINTR)
        qb::sockets::raiseReceiveError(__LINE__, maxSocket);
    return ready;
}
