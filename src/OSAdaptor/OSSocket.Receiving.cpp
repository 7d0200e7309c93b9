// The receiving side of sockets.
#include <QBFoundation/OSAdaptor/OSSocket.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBStringOutputStream.h>

#include "OSAdaptor/OSSocket.Support.h"
#include "System/Memory.h"
#include "Text/Scan.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

namespace sys = qb::sys;
using qb::sockets::kFile;

namespace {

// The debug level from which on the steps of the buffer are traced.
constexpr int kBufferTraceLevel = 9;

// What filling the buffer answers when an error is pending afterwards.
constexpr std::int32_t kFailed = -2;

[[noreturn, gnu::cold]] void throwForBuffer(const char *selector) {
    throw InvalidArgumentException(std::string("OSSocket ") + selector +
                                   " must have a buffer that is not NULL.");
}

inline void requireBuffer(const void *buffer, const char *selector) {
    if (!buffer) [[unlikely]]
        throwForBuffer(selector);
}

// Takes the carriage returns out; returns the new end.
char *withoutReturns(char *start, char *end) {
    return std::remove(start + (qb::text::findByte(start, end, '\r') - start), end, '\r');
}

} // namespace

void qb::sockets::raiseReceiveError(int line, std::int32_t socket) {
    qb::raiseError(kFile, line, kErrorCannotReceive, socket);
}

// --- From the system ---

// Returns whether receiving is to be tried now.
bool OSSocket::waitForInput(std::int64_t timeout) {
    const bool isLimited = timeout > 0;
    if (isLimited)
        qb::trace(DEBUG_CHANNEL_SOCKET,
                  {kFile, __LINE__, this, "receiveWithBuffer:length:timeout:performPeek:"},
                  "waiting max %ld milliseconds for input", timeout);
    else if (!qb::sockets::isToBeWaitedFor(socketHandle_))
        return true;
    pollfd descriptor{socketHandle_, POLLIN, 0};
    const int ready = qb::sockets::waitFor(
        {&descriptor, 1}, isLimited ? sys::Deadline::afterMilliseconds(timeout) : sys::Deadline::never());
    if (ready < 0)
        qb::sockets::raiseReceiveError(__LINE__, socketHandle_);
    return ready > 0;
}

// The way to the system and back is in one piece: right behind a system call, a processor guesses every
// return wrong.
[[gnu::always_inline]] inline std::int32_t OSSocket::receive(void *buffer, std::uint32_t length,
                                                             std::int64_t timeout, BOOL performPeek) {
    requireBuffer(buffer, "receiveWithBuffer:length:timeout:performPeek:");
    if (!waitForInput(timeout))
        return -1;
    const ssize_t count = sys::recv(socketHandle_, buffer, std::min<std::uint32_t>(length, INT32_MAX),
                                    performPeek ? MSG_PEEK : 0, sys::OnSignal::report);
    if (count > 0)
        return static_cast<std::int32_t>(count);
    if (count < 0 && errno == EAGAIN)
        return 0;
    if (count < 0 && errno != EINTR)
        qb::sockets::raiseReceiveError(__LINE__, socketHandle_);
    return -1;
}

std::int32_t OSSocket::receiveWithBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                         BOOL performPeek) {
    return receive(buffer, length, timeout, performPeek);
}

// --- Through the buffer ---

void OSSocket::traceBuffer(const char *format, std::int32_t count, std::int32_t limit) const {
    qb::trace(DEBUG_CHANNEL_SOCKET,
              {kFile, __LINE__, this, "bufferedReceiveWithBuffer:length:timeout:performPeek:"}, format, count,
              limit);
}

std::int32_t OSSocket::_copyBytesFromInternalBufferIntoBuffer(void *buffer, std::uint32_t length,
                                                              std::int32_t offset, BOOL performPeek) {
    requireBuffer(buffer, "_copyBytesFromInternalBufferIntoBuffer:length:offset:performPeek:");
    return copyBuffered(static_cast<char *>(buffer) + std::max(offset, 0), length, performPeek);
}

inline std::int32_t OSSocket::copyBuffered(char *buffer, std::uint32_t length, bool performPeek) {
    const std::int32_t held = bufferedCount();
    const auto count = static_cast<std::int32_t>(std::min(length, static_cast<std::uint32_t>(held)));
    if (debug >= kBufferTraceLevel) [[unlikely]]
        traceBuffer("bytes wanted of those in the buffer: %d of %d", count, held);
    if (count > 0)
        std::memcpy(buffer, internalBuffer_ + currentPositionInBuffer_, static_cast<std::size_t>(count));
    if (!performPeek)
        currentPositionInBuffer_ += count;
    return count;
}

// Makes sure that the buffer holds a byte. Returns how many it holds; without any, -1 at the end or the
// time-out, 0 when the socket would block, or `kFailed`.
[[gnu::always_inline]] inline std::int32_t OSSocket::fillBuffer(std::int64_t timeout) {
    if (bufferedCount() > 0)
        return bufferedCount();
    if (isEofReached_) {
        isEofReached_ = NO;
        return -1;
    }
    if (!internalBuffer_)
        internalBuffer_ = static_cast<char *>(_malloc(kBufferSize));
    if (!internalBuffer_)
        return kFailed;
    currentPositionInBuffer_ = numberOfBytesInBuffer_ = 0;
    const std::int32_t count =
        qb::sockets::isPlain(*this)
            ? receive(internalBuffer_, kBufferSize, timeout, /*performPeek=*/NO)
            : receiveWithBuffer(internalBuffer_, kBufferSize, timeout, /*performPeek=*/NO);
    numberOfBytesInBuffer_ = std::clamp(count, 0, static_cast<std::int32_t>(kBufferSize));
    if (debug >= kBufferTraceLevel) [[unlikely]]
        traceBuffer("bytes received into the buffer: %d of %d", count, kBufferSize);
    return qb::isErrorPending() ? kFailed : count;
}

[[gnu::always_inline]] inline std::int32_t OSSocket::take(char *buffer, std::uint32_t length,
                                                          std::int64_t timeout) {
    std::uint32_t done = 0;
    while (done < length) {
        const std::int32_t held = fillBuffer(timeout);
        if (held == kFailed)
            return -1;
        if (held <= 0)
            return done > 0 ? static_cast<std::int32_t>(done) : held;
        done += static_cast<std::uint32_t>(copyBuffered(buffer + done, length - done, /*performPeek=*/false));
    }
    return static_cast<std::int32_t>(done);
}

std::int32_t OSSocket::bufferedReceiveWithBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                                 BOOL performPeek) {
    requireBuffer(buffer, "bufferedReceiveWithBuffer:length:timeout:performPeek:");
    const Ref<OSSocket> self(this); // what is called on the way may let go of it
    const std::uint32_t most = std::min<std::uint32_t>(length, INT32_MAX);
    return performPeek ? peek(static_cast<char *>(buffer), most, timeout)
                       : take(static_cast<char *>(buffer), most, timeout);
}

std::int32_t OSSocket::peek(char *buffer, std::uint32_t length, std::int64_t timeout) {
    const std::int32_t count = copyBuffered(buffer, length, /*performPeek=*/true);
    const std::uint32_t rest = length - static_cast<std::uint32_t>(count);
    if (rest == 0 || isEofReached_)
        return count;
    const std::int32_t more = receiveWithBuffer(buffer + count, rest, timeout, /*performPeek=*/YES);
    isEofReached_ = more < 0;
    return count + std::max(more, 0);
}

// Grows with what comes, because the count may be any number that a peer has sent.
NSData *OSSocket::readBytes(std::uint32_t count, std::int64_t withTimeout) {
    const Ref<OSSocket> self(this);
    NSMutableData *const data = NSMutableData::data();
    while (data->length() < count) {
        const std::uint32_t done = data->length();
        const std::uint32_t step = std::min(count - done, std::max(done, kBufferSize));
        data->setLength(done + step);
        const std::int32_t read =
            bufferedReceiveWithBuffer(static_cast<char *>(data->mutableBytes()) + done, step, withTimeout,
                                      /*performPeek=*/NO);
        data->setLength(done + static_cast<std::uint32_t>(std::max(read, 0)));
        if (data->length() < done + step)
            break;
    }
    return data;
}

// --- Lines ---

NSString *OSSocket::readLineWithTimeout(std::int64_t timeout) {
    const Ref<OSSocket> self(this);
    Ref<QBStringOutputStream> collected; // the pieces of a line that was not in the buffer as a whole
    while (!qb::isErrorPending() && fillBuffer(timeout) > 0) {
        char *const start = internalBuffer_ + currentPositionInBuffer_;
        char *const limit = internalBuffer_ + numberOfBytesInBuffer_;
        char *const end = start + (qb::text::findByte(start, limit, '\n') - start);
        const bool isLast = end != limit;
        currentPositionInBuffer_ += static_cast<std::int32_t>(end - start) + isLast;
        const std::string_view piece(start, withoutReturns(start, end));
        if (isLast && !collected)
            return NSString::stringWith(piece);
        if (!collected && !(collected = QBStringOutputStream::init()))
            break;
        collected->writeBuffer(piece.data(), static_cast<std::uint32_t>(piece.size()));
        if (isLast)
            break;
    }
    return collected ? collected->targetString() : NSString::string();
}
