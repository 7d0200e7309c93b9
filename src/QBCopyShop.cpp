#include <QBFoundation/QBCopyShop.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBInputStream.h>
#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/Required.h"
#include "System/Memory.h"

#include <algorithm>

namespace {

constexpr const char *kFile = "src/QBCopyShop";

/// Memory for the pieces of a copy, which a source that has its bytes in memory never needs.
class PieceBuffer {
public:
    explicit PieceBuffer(std::uint32_t size) : size_(size) {}
    ~PieceBuffer() { qb::sys::release(memory_); }
    PieceBuffer(const PieceBuffer &) = delete;
    PieceBuffer &operator=(const PieceBuffer &) = delete;

    // Returns null, with an error, when there is no memory.
    void *memory() {
        if (!memory_)
            memory_ = qb::sys::allocate(size_);
        if (!memory_)
            qb::raiseError(kFile, __LINE__, qb::kErrorOutOfMemory);
        return memory_;
    }

private:
    const std::uint32_t size_;
    void *memory_ = nullptr;
};

/// Bytes of a source: where they are, and how many; less than 1 when there are none.
struct Piece {
    const void *bytes;
    std::int32_t length;
};

// Reads up to `length` bytes: to the buffer, unless they can be had where they are.
Piece nextPiece(QBInputStream *from, PieceBuffer &buffer, std::uint32_t length, const std::int64_t *timeout) {
    std::int32_t count = 0;
    if (const void *const bytes = timeout ? nullptr : from->takeBuffer(length, &count))
        return {bytes, count};
    void *const memory = buffer.memory();
    if (!memory)
        return {nullptr, 0};
    if (timeout)
        return {memory, send<std::int32_t>(from, "readBuffer:length:timeout:"_sel, memory, length, *timeout)};
    return {memory, from->readBuffer(memory, length)};
}

} // namespace

Class *QBCopyShop::cls() {
    using From = QBInputStream *;
    using To = QBOutputStream *;
    using Count = std::uint32_t;
    static const qb::Method methods[] = {
        qb::maker<"copyShop">(&QBCopyShop::setUp),
        qb::maker<"copyShopWithBufferSize:">(&QBCopyShop::setUpWithBufferSize),
        qb::initialiser<"initWithBufferSize:">(&QBCopyShop::setUpWithBufferSize),
        qb::method<"copyFrom:to:">(&QBCopyShop::copyFrom),
        qb::method<"copyFrom:to:timeout:">(&QBCopyShop::copyFromToTimeout),
        qb::method<"copyFrom:to:length:", Count(From, To, Count)>(&QBCopyShop::copyFromToLength),
        qb::method<"copyFrom:to:length:timeout:", Count(From, To, Count, std::int64_t)>(
            &QBCopyShop::copyFromToLength),
    };
    static Class *const self = new Class("QBCopyShop", NSObject::cls(), methods, qb::construct<QBCopyShop>);
    return self;
}

BOOL QBCopyShop::setUpWithBufferSize(std::uint32_t bufferSize) {
    bufferSize_ = bufferSize != 0 ? bufferSize : kDefaultBufferSize;
    return YES;
}

std::int32_t QBCopyShop::copyFrom(QBInputStream *from, QBOutputStream *to) {
    return copyAll(from, to, nullptr);
}

std::int32_t QBCopyShop::copyFromToTimeout(QBInputStream *from, QBOutputStream *to, std::int64_t timeout) {
    return copyAll(from, to, &timeout);
}

std::uint32_t QBCopyShop::copyFromToLength(QBInputStream *from, QBOutputStream *to, std::uint32_t length) {
    return static_cast<std::uint32_t>(copyUpTo(length, from, to, nullptr));
}

std::uint32_t QBCopyShop::copyFromToLength(QBInputStream *from, QBOutputStream *to, std::uint32_t length,
                                           std::int64_t timeout) {
    return static_cast<std::uint32_t>(copyUpTo(length, from, to, &timeout));
}

std::int32_t QBCopyShop::copyAll(QBInputStream *from, QBOutputStream *to, const std::int64_t *timeout) const {
    const std::uint64_t count = copyUpTo(UINT64_MAX, from, to, timeout);
    if (count <= INT32_MAX)
        return static_cast<std::int32_t>(count);
    qb::raiseError(kFile, __LINE__, qb::kErrorCopyTooLong, count);
    return INT32_MAX;
}

std::uint64_t QBCopyShop::copyUpTo(std::uint64_t limit, QBInputStream *from, QBOutputStream *to,
                                   const std::int64_t *timeout) const {
    qb::required(from, "QBCopyShop copyFrom:to:", "a source");
    qb::required(to, "QBCopyShop copyFrom:to:", "a sink");
    const Ref<QBInputStream> keptSource(from); // whatever the two do to their owners
    const Ref<QBOutputStream> keptSink(to);
    const qb::SavedErrors errors;
    PieceBuffer buffer(bufferSize_);
    std::uint64_t done = 0;
    while (done < limit && !qb::isErrorPending()) {
        const auto most = static_cast<std::uint32_t>(std::min<std::uint64_t>(bufferSize_, limit - done));
        const Piece piece = nextPiece(from, buffer, most, timeout);
        if (piece.length < 1)
            break;
        const std::uint32_t length = std::min(static_cast<std::uint32_t>(piece.length), most);
        done += length;
        to->writeBuffer(piece.bytes, length);
    }
    return done;
}
