#include <QBFoundation/OSAdaptor/OSSocket.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OSAdaptor/OSSocketInputStream.h>
#include <QBFoundation/OSAdaptor/OSSocketOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSSocket.Support.h"
#include "System/Files.h"
#include "System/Memory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace sys = qb::sys;
using qb::sockets::kFile;

Class *OSSocket::cls() {
    using Count = std::uint32_t;
    using Time = std::int64_t;
    static const qb::Method methods[] = {
        qb::initialiser<"initWithSocketType:">(&OSSocket::setUpWithSocketType),
        qb::maker<"serverSocketOnHost:onPort:">(&OSSocket::setUpServerSocketOnHost),
        qb::initialiser<"initServerSocketOnHost:onPort:">(&OSSocket::setUpServerSocketOnHost),
        qb::initialiser<"_initServerSocketOnAddr:host:port:">(&OSSocket::setUpServerSocketOnAddr),
        qb::maker<"clientSocketToHost:onPort:">(&OSSocket::setUpClientSocketToHost),
        qb::initialiser<"initClientSocketToHost:onPort:">(&OSSocket::setUpClientSocketToHost),
        qb::maker<"serverSocketWithName:">(&OSSocket::setUpServerSocketWithName),
        qb::initialiser<"initServerSocketWithName:">(&OSSocket::setUpServerSocketWithName),
        qb::maker<"clientSocketWithName:">(&OSSocket::setUpClientSocketWithName),
        qb::initialiser<"initClientSocketWithName:">(&OSSocket::setUpClientSocketWithName),
        qb::maker<"acceptSocketFromListener:">(&OSSocket::setUpAcceptSocketFromListener),
        qb::initialiser<"initAcceptSocketFromListener:">(&OSSocket::setUpAcceptSocketFromListener),
        qb::classMethod<"makeNameForSocket">(&OSSocket::makeNameForSocket),
        qb::method<"sendBuffer:length:">(&OSSocket::sendBuffer),
        qb::method<"writeLine:">(&OSSocket::writeLine),
        qb::method<"receiveWithBuffer:length:timeout:performPeek:">(&OSSocket::receiveWithBuffer),
        qb::method<"bufferedReceiveWithBuffer:length:timeout:performPeek:">(
            &OSSocket::bufferedReceiveWithBuffer),
        qb::method<"_copyBytesFromInternalBufferIntoBuffer:length:offset:performPeek:">(
            &OSSocket::_copyBytesFromInternalBufferIntoBuffer),
        qb::method<"readBytes:", NSData *(Count)>(&OSSocket::readBytes),
        qb::method<"readBytes:withTimeout:", NSData *(Count, Time)>(&OSSocket::readBytes),
        qb::method<"readLine">(&OSSocket::readLine),
        qb::method<"readLineWithTimeout:">(&OSSocket::readLineWithTimeout),
        qb::method<"setSockOptWithLevel:optionName:optionValue:optionLength:">(
            &OSSocket::setSockOptWithLevel),
        qb::method<"setNonBlocking">(&OSSocket::setNonBlocking),
        qb::method<"setCloseOnExec">(&OSSocket::setCloseOnExec),
        qb::method<"shutdown">(&OSSocket::shutdown),
        qb::method<"close">(&OSSocket::close),
        qb::method<"socketHandle">(&OSSocket::socketHandle),
        qb::method<"socketType">(&OSSocket::socketType),
        qb::method<"wantToBeClosed">(&OSSocket::wantToBeClosed),
        qb::method<"setWantToBeClosed:">(&OSSocket::setWantToBeClosed),
        qb::method<"socketName">(&OSSocket::socketName),
        qb::method<"setSocketName:">(&OSSocket::setSocketName),
        qb::method<"isEqual:">(&OSSocket::isEqual),
        qb::method<"writeStateToErrorLog">(&OSSocket::writeStateToErrorLog),
        qb::method<"getInputStream">(&OSSocket::getInputStream),
        qb::method<"getOutputStream">(&OSSocket::getOutputStream),
        qb::classMethod<"selectSockets:activation:timeoutSecs:timeoutMilliSecs:">(&OSSocket::selectSockets),
        qb::classMethod<"selectWithMaxSocket:readfds:writefds:exceptfds:timeVal:">(
            &OSSocket::selectWithMaxSocket<>),
        qb::classMethod<"registerContinueBlockingOperationCallback:">(
            &OSSocket::registerContinueBlockingOperationCallback),
        qb::classMethod<"startup">(&OSSocket::startup),
        qb::classMethod<"cleanup">(&OSSocket::cleanup),
    };
    static Class *const self = new Class("OSSocket", OSObject::cls(), methods, qb::construct<OSSocket>);
    return self;
}

OSSocket::~OSSocket() {
    try {
        qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, "dealloc"}, "Deallocing socket %d",
                  socketHandle_);
    } catch (...) { // the line is lost
    }
    OSSocket::shutdown();
    OSSocket::close();
    sys::release(internalBuffer_);
}

// --- State ---

BOOL OSSocket::setSockOptWithLevel(std::int32_t level, std::int32_t optionName, const void *optionValue,
                                   std::uint32_t optionLength) {
    if (sys::setsockopt(socketHandle_, level, optionName, optionValue, optionLength) == 0)
        return YES;
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotSetSocketOption, optionName, errorDescription());
    return NO;
}

bool qb::sockets::makeNonBlocking(std::int32_t socket) {
    const int flags = sys::fcntl(socket, F_GETFL);
    return flags >= 0 && sys::fcntl(socket, F_SETFL, flags | O_NONBLOCK) == 0;
}

BOOL OSSocket::setNonBlocking() {
    if (qb::sockets::makeNonBlocking(socketHandle_)) {
        waiting_ = Waiting::never;
        return YES;
    }
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotSetSocketMode, socketHandle_, errorDescription());
    return NO;
}

BOOL OSSocket::setCloseOnExec() {
    if (sys::fcntl(socketHandle_, F_SETFD, FD_CLOEXEC) == 0)
        return YES;
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotSetSocketMode, socketHandle_, errorDescription());
    return NO;
}

// A socket that is not connected, or no longer, has nothing to end: no failure of this call matters.
void OSSocket::shutdown() {
    if (socketHandle_ >= 0)
        sys::shutdown(socketHandle_, SHUT_RDWR);
}

void OSSocket::close() {
    if (socketHandle_ >= 0)
        sys::close(std::exchange(socketHandle_, -1));
    currentPositionInBuffer_ = numberOfBytesInBuffer_ = 0;
    isEofReached_ = NO;
}

// An open descriptor belongs to one object, so that the inherited hash fits.
BOOL OSSocket::isEqual(id other) const {
    const auto *socket = qb::castOrNil<OSSocket>(other);
    return socket && (socket == this || (socketHandle_ >= 0 && socketHandle_ == socket->socketHandle_));
}

// --- Sending ---

namespace {

[[noreturn, gnu::cold]] void throwForBuffer() {
    throw InvalidArgumentException("OSSocket sendBuffer:length: must have a buffer that is not NULL.");
}

[[gnu::cold, gnu::noinline]] void raiseSendError(int error) {
    if (error == EAGAIN)
        qb::raiseError(kFile, __LINE__, qb::kErrorSendWouldBlock);
    else
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotSend, std::strerror(error));
}

// Part of the loops that send: right behind a system call, a processor guesses every return wrong.
[[gnu::always_inline]] inline std::int32_t sendOnce(OSSocket &socket, const void *buffer,
                                                    std::uint32_t length) {
    if (!buffer) [[unlikely]]
        throwForBuffer();
    const ssize_t sent =
        sys::send(socket.OSSocket::socketHandle(), buffer, std::min<std::uint32_t>(length, INT32_MAX));
    if (sent < 0) [[unlikely]]
        return raiseSendError(errno), -1;
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, &socket, "sendBuffer:length:"}, "sent bytes: %d of %d",
              sent, length);
    return static_cast<std::int32_t>(sent);
}

} // namespace

std::int32_t OSSocket::sendBuffer(const void *buffer, std::uint32_t length) {
    return sendOnce(*this, buffer, length);
}

// In one piece, so that a line is one packet and needs one call.
void OSSocket::writeLine(NSString *line) {
    std::string bytes(line ? line->view() : "");
    bytes += "\r\n";
    qb::sockets::sendAll(this, bytes.data(), bytes.size());
}

bool qb::sockets::sendAll(OSSocket *socket, const char *bytes, std::size_t length) {
    while (length > 0) {
        const auto most = static_cast<std::uint32_t>(std::min<std::size_t>(length, INT32_MAX));
        const std::int32_t sent =
            isPlain(*socket) ? sendOnce(*socket, bytes, most) : socket->sendBuffer(bytes, most);
        if (sent <= 0)
            return false;
        bytes += sent;
        length -= static_cast<std::size_t>(sent);
    }
    return true;
}

// --- Streams ---

OSSocketInputStream *OSSocket::getInputStream() {
    return OSSocketInputStream::streamWithSocket(this);
}

OSSocketOutputStream *OSSocket::getOutputStream() {
    return OSSocketOutputStream::streamWithSocket(this);
}
