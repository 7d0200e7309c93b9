#include <QBFoundation/QBBufferOutputStream.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Memory.h"

#include <algorithm>
#include <utility>

namespace {
constexpr const char *kFile = "src/QBBufferOutputStream";

// A buffer doubles up to here, and from here on grows by as much.
constexpr std::uint32_t kLargestIncrement = 32768;
} // namespace

Class *QBBufferOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithCapacity:">(&QBBufferOutputStream::setUpWithCapacity),
        qb::initialiser<"initWithCapacity:">(&QBBufferOutputStream::setUpWithCapacity),
        qb::method<"bufLength">(&QBBufferOutputStream::bufLength),
        qb::method<"byteCounter">(&QBBufferOutputStream::byteCounter),
    };
    static Class *const self = new Class("QBBufferOutputStream", QBOutputStream::cls(), methods,
                                         qb::construct<QBBufferOutputStream>);
    return self;
}

QBBufferOutputStream::~QBBufferOutputStream() {
    freeBuffer();
}

BOOL QBBufferOutputStream::setUpWithCapacity(std::uint32_t capacity) {
    if (!allocate(capacity)) {
        qb::raiseError(kFile, 64, qb::kErrorOutOfMemory);
        return NO;
    }
    allowDirectWrites<QBBufferOutputStream>();
    return YES;
}

void QBBufferOutputStream::freeBuffer() {
    if (!std::exchange(isGivenAway_, false))
        qb::sys::release(buf_);
}

// Replaces the buffer by an empty one.
bool QBBufferOutputStream::allocate(std::uint32_t capacity) {
    freeBuffer();
    buf_ = static_cast<char *>(qb::sys::reallocate(nullptr, capacity));
    bufLength_ = buf_ ? capacity : 0;
    next_ = buf_;
    updateDirectEnd();
    return buf_ != nullptr;
}

void QBBufferOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    if ((isGivenAway_ && !copyBack()) || (bufLength_ - byteCounter() < length && !grow(length))) {
        next_ = buf_;
        qb::raiseError(kFile, 117, qb::kErrorOutOfMemory);
        return;
    }
    append(buffer, length);
    updateDirectEnd();
}

// Gets a buffer of its own for one that was given away; leaves all as it is when there is no memory.
bool QBBufferOutputStream::copyBack() {
    const std::uint32_t used = byteCounter();
    void *const copy = qb::sys::allocate(bufLength_);
    if (!copy)
        return false;
    std::memcpy(copy, buf_, used);
    buf_ = static_cast<char *>(copy);
    next_ = buf_ + used;
    isGivenAway_ = false;
    return true;
}

char *QBBufferOutputStream::findJoinedRoom(std::uint32_t unit, std::uint32_t &count) {
    const bool isAnnounced = directEnd_ == buf_; // to a subclass, or to drop what was made of the buffer
    const std::uint32_t room = (bufLength_ - byteCounter()) / unit;
    if (isAnnounced || room == 0)
        return nullptr;
    count = std::min(count, room);
    updateDirectEnd();
    return next_;
}

const char *QBBufferOutputStream::terminatedBuf() const {
    if (!buf_ || byteCounter() == bufLength_)
        return nullptr;
    *next_ = '\0';
    return buf_;
}

// Makes room for a write of `length` bytes; leaves all as it is when there is no memory.
bool QBBufferOutputStream::grow(std::uint32_t length) {
    const std::uint32_t used = byteCounter();
    const std::uint64_t room = bufLength_ - used;
    std::uint64_t increment = std::min(bufLength_, kLargestIncrement);
    if (room + increment < length)
        increment = length;
    const std::uint64_t capacity = bufLength_ + increment;
    if (capacity > UINT32_MAX)
        return false;
    void *const grown = qb::sys::reallocate(buf_, static_cast<std::size_t>(capacity));
    if (!grown)
        return false;
    buf_ = static_cast<char *>(grown);
    next_ = buf_ + used;
    bufLength_ = static_cast<std::uint32_t>(capacity);
    return true;
}

void QBBufferOutputStream::reset() {
    if (!allocate(kDefaultCapacity))
        qb::raiseError(kFile, 155, qb::kErrorOutOfMemory);
}
