// Streams that collect in memory.
#ifndef PUBLISH_COLLECTING_H
#define PUBLISH_COLLECTING_H

#include <QBFoundation/QBFoundation.h>

#include <cstdint>
#include <new>

namespace publish {

/// Returns a stream of that kind with room for so many bytes at first, autoreleased.
/// Throws std::bad_alloc, where the library's own operation raises an error and returns nil.
template <class Stream>
Stream *collecting(std::uint32_t capacity) {
    Stream *const stream = Stream::streamWithCapacity(capacity);
    if (!stream)
        throw std::bad_alloc();
    return stream;
}

} // namespace publish

#endif
