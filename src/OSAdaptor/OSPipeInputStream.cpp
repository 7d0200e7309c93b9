#include <QBFoundation/OSAdaptor/OSPipeInputStream.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *OSPipeInputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithPipe:">(&OSPipeInputStream::setUpWithPipe),
        qb::initialiser<"initWithPipe:">(&OSPipeInputStream::setUpWithPipe),
        qb::method<"setIsBinary:">(&OSPipeInputStream::setIsBinary),
    };
    static Class *const self =
        new Class("OSPipeInputStream", QBInputStream::cls(), methods, qb::construct<OSPipeInputStream>);
    return self;
}

BOOL OSPipeInputStream::setUpWithPipe(OSPipe *pipe) {
    if (!pipe || !pipe->_isReadHandleOpen())
        throw InternalInconsistencyException(
            "OSPipeInputStream initWithPipe: must have a pipe whose read end is open.");
    pipe_ = pipe;
    return YES;
}

void OSPipeInputStream::close() {
    if (pipe_)
        pipe_->closeReadHandle();
    QBInputStream::close();
}

std::int32_t OSPipeInputStream::readByte() {
    unsigned char byte = 0;
    return _readBuffer(&byte, 1) == 1 ? byte : -1;
}

std::int32_t OSPipeInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    return pipe_ && pipe_->_isReadHandleOpen() ? pipe_->read(buffer, length) : -1;
}
