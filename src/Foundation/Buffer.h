// Memory of containers.
#ifndef QBFOUNDATION_FOUNDATION_BUFFER_H
#define QBFOUNDATION_FOUNDATION_BUFFER_H

#include <QBFoundation/Runtime/Memory.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

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

/// An allocator of such memory, for the containers of the C++ library: large ones lie in large pages then.
template <class Item>
struct BufferAllocator {
    using value_type = Item;

    Item *allocate(std::size_t count) { return static_cast<Item *>(allocateBuffer(count * sizeof(Item))); }
    void deallocate(Item *items, std::size_t count) noexcept { freeBuffer(items, count * sizeof(Item)); }

    bool operator==(const BufferAllocator &) const = default;
};

/// Calls `resize` with the capacity for at least `least` items: twice the old one but not above `most`, so
/// that what grows bit by bit is seldom moved. Where std::bad_alloc is thrown for it, with half as much room
/// beyond `least`, and so on.
template <class Resize>
[[gnu::noinline]] void growCapacity(std::uint64_t capacity, std::uint64_t least, std::uint64_t most,
                                    Resize resize) {
    std::uint64_t room = std::max(std::min(2 * capacity, most), least) - least;
    for (; room > 0; room /= 2) {
        try {
            return resize(least + room);
        } catch (const std::bad_alloc &) { // there may be memory for less
        }
    }
    resize(least);
}

} // namespace qb

#endif
