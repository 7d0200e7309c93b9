// The receiving side of sockets.
#include <QBFoundation/OSAdaptor/OSSocket.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>

#include "OSAdaptor/OSSocket.Support.h"
#include "System/Memory.h"
#include "Text/Scan.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <utility>

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

// Returns the bytes without their carriage returns, which stand at the end as a rule.
NSString *lineOf(std::string_view bytes) {
    while (bytes.ends_with('\r'))
        bytes.remove_suffix(1);
    NSString *const line = NSString::stringWith(bytes);
    const char *const end = bytes.data() + bytes.size();
    return qb::text::findByte(bytes.data(), end, '\r') == end
               ? line
               : line->stringByReplacingOccurrencesOfString("\r"_ns, nullptr);
}

} // namespace

void qb::sockets::raiseReceiveError(int line, std::int32_t socket) {
    qb::raiseError(kFile, line, kErrorCannotReceive, socket);
}

// --- From the system ---

namespace {

// Returns whether receiving is to be tried now.
bool waitForInput(const OSSocket &socket, pollfd &descriptor, std::int64_t timeout,
                  const sys::Deadline &deadline) {
    if (timeout > 0)
        qb::trace(DEBUG_CHANNEL_SOCKET,
                  {kFile, __LINE__, &socket, "receiveWithBuffer:length:timeout:performPeek:"},
                  "waiting max %ld milliseconds for input", timeout);
    const int ready = qb::sockets::waitFor({&descriptor, 1}, deadline);
    if (ready < 0)
        qb::sockets::raiseReceiveError(__LINE__, descriptor.fd);
    return ready > 0;
}

} // namespace

// The way to the system and back is in one piece: right behind a system call, a processor guesses every
// return wrong. Who has waited does not block: a process that shares the socket may have been faster.
[[gnu::always_inline]] inline std::int32_t OSSocket::receive(void *buffer, std::uint32_t length,
                                                             std::int64_t timeout, BOOL performPeek) {
    requireBuffer(buffer, "receiveWithBuffer:length:timeout:performPeek:");
    const bool waits = timeout > 0 || qb::sockets::isToBeWaitedFor(socketHandle_);
    const sys::Deadline deadline =
        timeout > 0 ? sys::Deadline::afterMilliseconds(timeout) : sys::Deadline::never();
    const int flags = (performPeek ? MSG_PEEK : 0) | (waits ? MSG_DONTWAIT : 0);
    pollfd descriptor{socketHandle_, POLLIN, 0};
    ssize_t count;
    do {
        if (waits && !waitForInput(*this, descriptor, timeout, deadline))
            return -1;
        count = sys::recv(socketHandle_, buffer, std::min<std::uint32_t>(length, INT32_MAX), flags,
                          sys::OnSignal::report);
    } while (count < 0 && errno == EAGAIN && (descriptor.revents & POLLIN) && !deadline.hasPassed());
    if (count > 0)
        return static_cast<std::int32_t>(count);
    if (count < 0 && errno == EAGAIN)
        return waits ? -1 : 0;
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
    if (!internalBuffer_) {
        if (!qb::isErrorPending()) // nor any for an error
            throw std::bad_alloc();
        return kFailed;
    }
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

// Makes the bytes those that are received next. Returns false, with nothing changed, without room for them.
[[gnu::cold, gnu::noinline]] bool OSSocket::putBack(const void *bytes, std::uint32_t count) {
    const auto held = static_cast<std::uint32_t>(bufferedCount());
    const std::uint32_t sum = count + held;
    if (count == 0)
        return true;
    if (sum > INT32_MAX)
        return false;
    const auto position = static_cast<std::uint32_t>(currentPositionInBuffer_);
    if (position < count && internalBuffer_ && sum <= kBufferSize) { // they come from elsewhere
        std::memmove(internalBuffer_ + count, internalBuffer_ + position, held);
        currentPositionInBuffer_ = static_cast<std::int32_t>(count);
        numberOfBytesInBuffer_ = static_cast<std::int32_t>(sum);
    }
    if (static_cast<std::uint32_t>(currentPositionInBuffer_) >= count) { // perhaps they still stand there
        currentPositionInBuffer_ -= static_cast<std::int32_t>(count);
        std::memmove(internalBuffer_ + currentPositionInBuffer_, bytes, count);
        return true;
    }
    auto *const buffer = static_cast<char *>(_malloc(std::max(sum, kBufferSize)));
    if (!buffer)
        return false;
    std::memcpy(buffer, bytes, count);
    replaceBuffer(buffer, count);
    return true;
}

// Makes `buffer` the socket's, which has `count` bytes, and room for those that are still held.
void OSSocket::replaceBuffer(char *buffer, std::uint32_t count) {
    const auto held = static_cast<std::uint32_t>(bufferedCount());
    if (held > 0)
        std::memcpy(buffer + count, internalBuffer_ + currentPositionInBuffer_, held);
    sys::release(std::exchange(internalBuffer_, buffer));
    currentPositionInBuffer_ = 0;
    numberOfBytesInBuffer_ = static_cast<std::int32_t>(count + held);
}

[[gnu::always_inline]] inline std::int32_t OSSocket::take(char *buffer, std::uint32_t length,
                                                          std::int64_t timeout) {
    std::uint32_t done = 0;
    try {
        while (done < length) {
            const std::int32_t held = fillBuffer(timeout);
            if (held == kFailed)
                return putBack(buffer, done) ? -1 : static_cast<std::int32_t>(done);
            if (held <= 0)
                return done > 0 ? static_cast<std::int32_t>(done) : held;
            done +=
                static_cast<std::uint32_t>(copyBuffered(buffer + done, length - done, /*performPeek=*/false));
        }
    } catch (const std::bad_alloc &) {
        if (putBack(buffer, done))
            throw;
    } catch (...) { // of the callback, say
        putBack(buffer, done);
        throw;
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

// There may be none for the error either.
static void raiseOutOfMemory(int line) {
    try {
        qb::raiseError(kFile, line, qb::kErrorOutOfMemory);
    } catch (const std::bad_alloc &) { // then it is missing where the next read wants some
    }
}

// Grows with what comes, because the count may be any number that a peer has sent.
NSData *OSSocket::readBytes(std::uint32_t count, std::int64_t withTimeout) {
    const Ref<OSSocket> self(this);
    NSMutableData *const data = NSMutableData::data();
    std::uint32_t done = 0;
    const auto receive = [&](std::uint32_t length) {
        data->setLength(done + length);
        const std::int32_t read =
            bufferedReceiveWithBuffer(static_cast<char *>(data->mutableBytes()) + done, length, withTimeout,
                                      /*performPeek=*/NO);
        done += static_cast<std::uint32_t>(std::max(read, 0));
        data->setLength(done);
        return read == static_cast<std::int32_t>(length);
    };
    try {
        while (done < count && receive(std::min(count - done, std::max(done, kBufferSize)))) {
        }
        if (done < count && bufferedCount() > 0) // what had come before an error
            receive(std::min(count - done, static_cast<std::uint32_t>(bufferedCount())));
    } catch (const std::bad_alloc &) { // for what comes, and perhaps for putting back what has come
        if (done == 0)
            throw;
        data->setLength(done);
        raiseOutOfMemory(__LINE__);
    } catch (...) {
        putBack(data->bytes(), done);
        throw;
    }
    return data;
}

// --- Lines ---

/// The bytes of a line that does not lie in the buffer as a whole. There is always room for another buffer
/// behind them, so that they become the buffer where there is no memory for more, and nothing is lost.
class OSSocket::CollectedBytes {
public:
    CollectedBytes() = default;
    ~CollectedBytes() { sys::release(bytes_); }
    CollectedBytes(const CollectedBytes &) = delete;
    CollectedBytes &operator=(const CollectedBytes &) = delete;

    std::size_t size() const { return size_; }
    std::size_t room() const { return room_; }
    std::string_view view() const { return {bytes_, size_}; }
    char *end() const { return bytes_ + size_; }

    /// Throws std::bad_alloc, with nothing changed; never for a byte that stands at `placeOfNext`.
    void append(std::string_view piece) {
        reserve(size_ + piece.size() + kBufferSize);
        std::memmove(end(), piece.data(), piece.size());
        size_ += piece.size();
    }
    /// Where a byte may be put that is to be appended. Throws std::bad_alloc.
    char *placeOfNext() {
        reserve(size_ + 1 + kBufferSize);
        return end();
    }
    char *release() {
        size_ = room_ = 0;
        return std::exchange(bytes_, nullptr);
    }

private:
    void reserve(std::size_t size) {
        if (size <= room_)
            return;
        const std::size_t room = std::max(size, 2 * room_);
        auto *const bytes = static_cast<char *>(sys::reallocate(bytes_, room));
        if (!bytes)
            throw std::bad_alloc();
        bytes_ = bytes;
        room_ = room;
    }

    char *bytes_ = nullptr;
    std::size_t size_ = 0, room_ = 0;
};

[[gnu::cold, gnu::noinline]] void OSSocket::putBack(CollectedBytes &bytes) {
    const std::size_t count = bytes.size();
    const std::size_t sum = count + static_cast<std::size_t>(bufferedCount());
    if (count > 0 && sum <= std::min<std::size_t>(bytes.room(), INT32_MAX))
        replaceBuffer(bytes.release(), static_cast<std::uint32_t>(count));
    else
        putBack(bytes.view().data(), static_cast<std::uint32_t>(count));
}

// What the buffer, filled when it is empty, holds of the next line; none when nothing comes.
inline std::span<char> OSSocket::takePiece(std::int64_t timeout) {
    if (fillBuffer(timeout) <= 0)
        return {};
    char *const start = internalBuffer_ + currentPositionInBuffer_;
    char *const limit = internalBuffer_ + numberOfBytesInBuffer_;
    const std::ptrdiff_t length = qb::text::findByte(start, limit, '\n') - start;
    const std::span<char> piece(start, limit - start > length ? start + length + 1 : limit);
    currentPositionInBuffer_ += static_cast<std::int32_t>(piece.size());
    return piece;
}

// The next byte alone, as a subclass delivers it.
static std::span<char> takeByte(OSSocket &socket, char *byte, std::int64_t timeout) {
    const bool has = socket.bufferedReceiveWithBuffer(byte, 1, timeout, /*performPeek=*/NO) == 1;
    return {byte, has ? 1U : 0U};
}

// Returns the next line if the buffer holds it as a whole, as a rule with a carriage return in front of the
// line feed and with none elsewhere; nil for others.
inline NSString *OSSocket::takeBufferedLine() {
    const char *const start = internalBuffer_ + currentPositionInBuffer_;
    const char *const limit = internalBuffer_ + numberOfBytesInBuffer_;
    const char *const stop = qb::text::findLineStop(start, limit);
    const char *const lineFeed = stop != limit && *stop == '\r' ? stop + 1 : stop;
    if (lineFeed == limit || *lineFeed != '\n')
        return nullptr;
    NSString *const line = NSString::stringWith({start, stop});
    currentPositionInBuffer_ = static_cast<std::int32_t>(lineFeed + 1 - internalBuffer_);
    return line;
}

NSString *OSSocket::readLineWithTimeout(std::int64_t timeout) {
    const Ref<OSSocket> self(this);
    NSString *const line =
        qb::sockets::isPlain(*this) && !qb::isErrorPending() ? takeBufferedLine() : nullptr;
    return line ? line : collectLine(timeout);
}

NSString *OSSocket::collectLine(std::int64_t timeout) {
    CollectedBytes collected; // a line that was not in the buffer as a whole, as it came
    std::span<char> piece;    // what was taken and is in no string yet
    try {
        for (bool isLast = false; !isLast && !qb::isErrorPending();) {
            piece = qb::sockets::isPlain(*this) ? takePiece(timeout)
                                                : takeByte(*this, collected.placeOfNext(), timeout);
            if (piece.empty())
                break;
            isLast = piece.back() == '\n';
            const std::size_t length = piece.size() - isLast;
            if (isLast && collected.size() == 0)
                return lineOf({piece.data(), length});
            collected.append({piece.data(), length});
            piece = piece.subspan(length);
        }
        return lineOf(collected.view());
    } catch (...) {
        if (!piece.empty() && piece.data() == collected.end())
            collected.append({piece.data(), piece.size()});
        else
            putBack(piece.data(), static_cast<std::uint32_t>(piece.size()));
        putBack(collected);
        throw;
    }
}
