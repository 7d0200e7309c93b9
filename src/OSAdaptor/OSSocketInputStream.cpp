#include <QBFoundation/OSAdaptor/OSSocketInputStream.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OSAdaptor/OSSocket.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSSocket.Support.h"

Class *OSSocketInputStream::cls() {
    using Count = std::uint32_t;
    using Result = std::int32_t;
    using Time = std::int64_t;
    static const qb::Method methods[] = {
        qb::maker<"streamWithSocket:">(&OSSocketInputStream::setUpWithSocket),
        qb::initialiser<"initWithSocket:">(&OSSocketInputStream::setUpWithSocket),
        qb::method<"socket">(&OSSocketInputStream::socket),
        qb::method<"setIsBinary:">(&OSSocketInputStream::setIsBinary),
        qb::method<"readBuffer:length:timeout:", Result(void *, Count, Time)>(
            &OSSocketInputStream::readBuffer),
        qb::method<"readBuffer:length:timeout:performPeek:", Result(void *, Count, Time, BOOL)>(
            &OSSocketInputStream::readBuffer),
        qb::method<"readByteWithTimeout:", Result(Time)>(&OSSocketInputStream::readByteWithTimeout),
        qb::method<"readByteWithTimeout:performPeek:", Result(Time, BOOL)>(
            &OSSocketInputStream::readByteWithTimeout),
        qb::method<"_readBuffer:length:timeout:performPeek:", Result(void *, Count, Time, BOOL)>(
            &OSSocketInputStream::_readBuffer),
    };
    static Class *const self =
        new Class("OSSocketInputStream", QBInputStream::cls(), methods, qb::construct<OSSocketInputStream>);
    return self;
}

OSSocketInputStream::OSSocketInputStream() noexcept = default;
OSSocketInputStream::~OSSocketInputStream() = default;

BOOL OSSocketInputStream::setUp() {
    throw InvalidUseOfMethodException("OSSocketInputStream init: must be made with a socket.");
}

BOOL OSSocketInputStream::setUpWithSocket(OSSocket *socket) {
    if (!socket)
        throw InvalidArgumentException(
            "OSSocketInputStream initWithSocket: must have a socket that is not nil.");
    socket_ = socket;
    return YES;
}

void OSSocketInputStream::close() {
    if (socket_)
        socket_->close();
    QBInputStream::close();
}

std::int32_t OSSocketInputStream::readBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                             BOOL performPeek) {
    if (!buffer)
        throw InvalidArgumentException("OSSocketInputStream readBuffer:length:timeout:performPeek: must have "
                                       "a buffer that is not NULL.");
    return length == 0 ? 0 : _readBuffer(buffer, length, timeout, performPeek);
}

std::int32_t OSSocketInputStream::readByteWithTimeout(std::int64_t timeout, BOOL performPeek) {
    unsigned char byte = 0;
    return _readBuffer(&byte, 1, timeout, performPeek) == 1 ? byte : -1;
}

std::int32_t OSSocketInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    return _readBuffer(buffer, length, /*timeout=*/0, /*performPeek=*/NO);
}

std::int32_t OSSocketInputStream::_readBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                              BOOL performPeek) {
    if (!socket_)
        setUp(); // which throws
    return qb::sockets::isPlain(*socket_)
               ? socket_->OSSocket::bufferedReceiveWithBuffer(buffer, length, timeout, performPeek)
               : socket_->bufferedReceiveWithBuffer(buffer, length, timeout, performPeek);
}
