#include <QBFoundation/OSAdaptor/OSPipeOutputStream.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *OSPipeOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"stream">(&OSPipeOutputStream::stream),
        qb::maker<"streamWithPipe:">(&OSPipeOutputStream::setUpWithPipe),
        qb::initialiser<"initWithPipe:">(&OSPipeOutputStream::setUpWithPipe),
    };
    static Class *const self =
        new Class("OSPipeOutputStream", QBOutputStream::cls(), methods, qb::construct<OSPipeOutputStream>);
    return self;
}

OSPipeOutputStream *OSPipeOutputStream::stream() {
    throw InvalidUseOfMethodException("OSPipeOutputStream stream needs a pipe: use streamWithPipe:.");
}

BOOL OSPipeOutputStream::setUpWithPipe(OSPipe *pipe) {
    if (!pipe || !pipe->_isWriteHandleOpen())
        throw InternalInconsistencyException(
            "OSPipeOutputStream initWithPipe: must have a pipe whose write end is open.");
    pipe_ = pipe;
    return YES;
}

void OSPipeOutputStream::close() {
    QBOutputStream::close();
    if (pipe_)
        pipe_->closeWriteHandle();
}

void OSPipeOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    if (pipe_ && pipe_->_isWriteHandleOpen())
        pipe_->write(buffer, length);
}
