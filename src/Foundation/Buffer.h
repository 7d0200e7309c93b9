// Memory of containers.
#ifndef QBFOUNDATION_FOUNDATION_BUFFER_H
#define QBFOUNDATION_FOUNDATION_BUFFER_H

#include <QBFoundation/Runtime/Memory.h>

#include <cstddef>
#include <cstring>

namespace qb {

/// Returns memory for a container's elements. Throws std::bad_alloc.
inline void *allocateBuffer(std::size_t bytes) {
    return allocateObject(bytes);
}

/// Gives back a buffer of that many bytes; null is fine.
inline void freeBuffer(void *buffer, std::size_t bytes) noexcept {
    if (buffer)
        freeObject(buffer, bytes);
}

/// Returns a buffer of `newBytes` that begins with the first `used` bytes of the old one, which is given
/// back.
inline void *growBuffer(void *buffer, std::size_t bytes, std::size_t used, std::size_t newBytes) {
    void *const grown = allocateBuffer(newBytes);
    if (used)
        std::memcpy(grown, buffer, used);
    freeBuffer(buffer, bytes);
    return grown;
}

} // namespace qb

#endif
