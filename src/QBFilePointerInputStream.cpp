#include <QBFoundation/QBFilePointerInputStream.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Stdio.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {
constexpr const char *kFile = "src/QBFilePointerInputStream";

// An error that a read before this one has met left no number behind.
std::int32_t raiseReadError(int error) {
    qb::raiseError(kFile, 96, qb::kErrorCannotRead, "<unknown>", std::strerror(error ? error : EIO));
    return 0;
}

} // namespace

Class *QBFilePointerInputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithFilePointer:">(&QBFilePointerInputStream::setUpWithFilePointer),
        qb::initialiser<"initWithFilePointer:">(&QBFilePointerInputStream::setUpWithFilePointer),
        qb::maker<"streamForStdin">(&QBFilePointerInputStream::setUpForStdin),
        qb::method<"setIsBinary:">(&QBFilePointerInputStream::setIsBinary),
        qb::method<"reset">(&QBFilePointerInputStream::reset),
    };
    static Class *const self = new Class("QBFilePointerInputStream", QBInputStream::cls(), methods,
                                         qb::construct<QBFilePointerInputStream>);
    return self;
}

BOOL QBFilePointerInputStream::setUpWithFilePointer(std::FILE *filePointer) {
    if (!filePointer)
        throw InvalidArgumentException("QBFilePointerInputStream initWithFilePointer: must have a file "
                                       "pointer argument that is not NULL.");
    filePtr_ = filePointer;
    return YES;
}

void QBFilePointerInputStream::close() {
    if (filePtr_)
        qb::sys::fclose(std::exchange(filePtr_, nullptr));
    QBInputStream::close();
}

void QBFilePointerInputStream::reset() {
    if (filePtr_)
        qb::sys::rewind(filePtr_);
}

std::int32_t QBFilePointerInputStream::readByte() {
    signed char byte = 0;
    return _readBuffer(&byte, 1) < 0 ? -1 : byte;
}

std::int32_t QBFilePointerInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    if (!filePtr_)
        return raiseReadError(EBADF);
    const std::size_t most = std::min<std::uint32_t>(length, INT32_MAX);
    const std::size_t count = qb::sys::fread(buffer, 1, most, filePtr_);
    if (count > 0)
        return static_cast<std::int32_t>(count);
    return qb::sys::ferror(filePtr_) ? raiseReadError(errno) : -1;
}
