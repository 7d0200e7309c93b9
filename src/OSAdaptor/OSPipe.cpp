#include <QBFoundation/OSAdaptor/OSPipe.h>

#include <QBFoundation/OSAdaptor/OSPipeInputStream.h>
#include <QBFoundation/OSAdaptor/OSPipeOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Files.h"
#include "System/Process.h"

#include <algorithm>
#include <utility>

namespace sys = qb::sys;

namespace {

// The number is forgotten whatever the system answers: it may be that of another file by now.
std::int32_t closeEnd(std::int32_t &handle, BOOL &isOpen) {
    if (!isOpen)
        return 0;
    const int result = sys::close(std::exchange(handle, -1));
    isOpen = result != 0;
    return result;
}

// What programs write through a buffer comes in pieces of this length or more.
constexpr ssize_t kPiece = 4096;

std::size_t atOnce(std::uint32_t length) {
    return std::min<std::uint32_t>(length, INT32_MAX);
}

} // namespace

Class *OSPipe::cls() {
    static const qb::Method methods[] = {
        qb::maker<"pipe">(&OSPipe::setUp),
        qb::method<"readHandle">(&OSPipe::readHandle),
        qb::method<"writeHandle">(&OSPipe::writeHandle),
        qb::method<"_isReadHandleOpen">(&OSPipe::_isReadHandleOpen),
        qb::method<"_isWriteHandleOpen">(&OSPipe::_isWriteHandleOpen),
        qb::method<"closeReadHandle">(&OSPipe::closeReadHandle),
        qb::method<"closeWriteHandle">(&OSPipe::closeWriteHandle),
        qb::method<"makeReadHandleUninheritable">(&OSPipe::makeReadHandleUninheritable),
        qb::method<"makeWriteHandleUninheritable">(&OSPipe::makeWriteHandleUninheritable),
        qb::method<"read:length:">(&OSPipe::read),
        qb::method<"write:length:">(&OSPipe::write),
        qb::method<"getInputStream">(&OSPipe::getInputStream),
        qb::method<"getOutputStream">(&OSPipe::getOutputStream),
    };
    static Class *const self = new Class("OSPipe", OSObject::cls(), methods, qb::construct<OSPipe>);
    return self;
}

OSPipe::~OSPipe() {
    closeEnd(readHandle_, isReadHandleOpen_);
    closeEnd(writeHandle_, isWriteHandleOpen_);
}

BOOL OSPipe::setUp() {
    int ends[2];
    if (sys::pipe(ends) != 0)
        return NO;
    readHandle_ = ends[0];
    writeHandle_ = ends[1];
    isReadHandleOpen_ = YES;
    isWriteHandleOpen_ = YES;
    return YES;
}

std::int32_t OSPipe::closeReadHandle() {
    return closeEnd(readHandle_, isReadHandleOpen_);
}

std::int32_t OSPipe::closeWriteHandle() {
    return closeEnd(writeHandle_, isWriteHandleOpen_);
}

// A writer of pieces on the same processor fills the pipe in one turn, instead of waking its reader for each
// of them. Behind a few bytes there is no such turn: who waits for a short answer wants it at once, and where
// processors are busy a turn takes milliseconds.
std::int32_t OSPipe::read(void *buffer, std::uint32_t length) {
    if (isDrained_)
        sys::sched_yield();
    const ssize_t count = sys::read(readHandle_, buffer, atOnce(length), sys::OnSignal::report);
    isDrained_ = count >= kPiece && static_cast<std::size_t>(count) < length;
    return static_cast<std::int32_t>(count);
}

std::int32_t OSPipe::write(const void *buffer, std::uint32_t length) {
    return static_cast<std::int32_t>(
        sys::writeWithoutSignal(writeHandle_, buffer, atOnce(length), sys::OnSignal::report));
}

OSPipeInputStream *OSPipe::getInputStream() {
    return OSPipeInputStream::streamWithPipe(this);
}

OSPipeOutputStream *OSPipe::getOutputStream() {
    return OSPipeOutputStream::streamWithPipe(this);
}
