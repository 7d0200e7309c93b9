#include <QBFoundation/OSAdaptor/OSSocketOutputStream.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSSocket.Support.h"

Class *OSSocketOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"stream">(&OSSocketOutputStream::setUp),
        qb::maker<"streamWithSocket:">(&OSSocketOutputStream::setUpWithSocket),
        qb::initialiser<"initWithSocket:">(&OSSocketOutputStream::setUpWithSocket),
        qb::method<"socket">(&OSSocketOutputStream::socket),
    };
    static Class *const self = new Class("OSSocketOutputStream", QBOutputStream::cls(), methods,
                                         qb::construct<OSSocketOutputStream>);
    return self;
}

OSSocketOutputStream::OSSocketOutputStream() noexcept = default;
OSSocketOutputStream::~OSSocketOutputStream() = default;

BOOL OSSocketOutputStream::setUp() {
    throw InvalidUseOfMethodException("OSSocketOutputStream init: must be made with a socket.");
}

BOOL OSSocketOutputStream::setUpWithSocket(OSSocket *socket) {
    if (!socket)
        throw InvalidArgumentException(
            "OSSocketOutputStream initWithSocket: must have a socket that is not nil.");
    socket_ = socket;
    return YES;
}

void OSSocketOutputStream::close() {
    QBOutputStream::close();
    if (socket_)
        socket_->close();
}

void OSSocketOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    if (!socket_)
        setUp(); // which throws
    qb::sockets::sendAll(socket_, static_cast<const char *>(buffer), length);
}
