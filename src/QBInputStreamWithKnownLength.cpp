#include <QBFoundation/QBInputStreamWithKnownLength.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {
constexpr const char *kFile = "src/QBInputStreamWithKnownLength";

constexpr std::int32_t kChunkLength = 65536;

struct Release {
    void operator()(void *memory) const { qb::sys::release(memory); }
};

// Returns what a stream has read; no more than it was asked for, whatever it says.
std::int32_t readSome(QBInputStream *stream, char *buffer, std::int32_t length) {
    return std::min(stream->readBuffer(buffer, static_cast<std::uint32_t>(length)), length);
}

// Reads exactly `length` bytes; false when the stream has not so many.
bool readAll(QBInputStream *stream, char *buffer, std::int32_t length) {
    while (length > 0) {
        const std::int32_t count = readSome(stream, buffer, length);
        if (count <= 0)
            return false;
        buffer += count;
        length -= count;
    }
    return true;
}

// `chunks`: room for two.
bool restIsEqual(QBInputStream *one, QBInputStream *other, char *chunks) {
    char *const otherChunk = chunks + kChunkLength;
    for (;;) {
        const std::int32_t count = readSome(one, chunks, kChunkLength);
        if (count < 1)
            return true;
        if (!readAll(other, otherChunk, count) ||
            std::memcmp(chunks, otherChunk, static_cast<std::size_t>(count)) != 0)
            return false;
    }
}

} // namespace

Class *QBInputStreamWithKnownLength::cls() {
    static const qb::Method methods[] = {
        qb::method<"byteLength">(&QBInputStreamWithKnownLength::byteLength),
        qb::method<"reset">(&QBInputStreamWithKnownLength::reset),
        qb::method<"providesSameDataAs:">(&QBInputStreamWithKnownLength::providesSameDataAs),
    };
    static Class *const self = new Class("QBInputStreamWithKnownLength", QBInputStream::cls(), methods);
    return self;
}

std::uint32_t QBInputStreamWithKnownLength::byteLength() const {
    subclassResponsibility("byteLength"_sel);
    return 0;
}

void QBInputStreamWithKnownLength::reset() {
    subclassResponsibility("reset"_sel);
}

BOOL QBInputStreamWithKnownLength::providesSameDataAs(QBInputStreamWithKnownLength *other) {
    const Ref<QBInputStream> kept(other); // whatever reading does to its owner
    if (other == this)
        return reset(), YES;
    if (!other || byteLength() != other->byteLength())
        return NO;
    const std::unique_ptr<void, Release> chunks(qb::sys::allocate(2 * std::size_t{kChunkLength}));
    if (!chunks) {
        qb::raiseError(kFile, __LINE__, qb::kErrorOutOfMemory);
        return NO;
    }
    // For one that says that it has read, and has not.
    std::memset(chunks.get(), 0, 2 * std::size_t{kChunkLength});
    reset();
    other->reset();
    const bool isEqual = restIsEqual(this, other, static_cast<char *>(chunks.get()));
    reset();
    other->reset();
    return isEqual;
}
