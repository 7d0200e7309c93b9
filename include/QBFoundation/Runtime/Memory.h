// Memory of objects: free lists by size class.
#ifndef QBFOUNDATION_RUNTIME_MEMORY_H
#define QBFOUNDATION_RUNTIME_MEMORY_H

#include <QBFoundation/Runtime/Export.h>

#include <cstddef>

namespace qb {

/// Sizes are rounded up to this step; it is also the alignment of every object.
constexpr std::size_t kSizeStep = 16;

/// Larger objects go to the C allocator: beyond this the cost of an allocation no longer matters beside its
/// use.
constexpr std::size_t kLargestPooledSize = 512;

#ifdef QB_NO_FREE_LISTS

/// Returns memory for an object of `size` bytes from the C allocator, so that leak tools see each object.
/// Throws std::bad_alloc when there is none.
QB_EXPORT void *allocateObject(std::size_t size);

/// Gives back what `allocateObject` returned for `size`.
QB_EXPORT void freeObject(void *memory, std::size_t size) noexcept;

#else

/// The heads of the free lists, by size in steps. The library runs on one thread, so that nothing is locked
/// here.
QB_EXPORT extern void *freeObjects[kLargestPooledSize / kSizeStep + 1];

/// The way of `allocateObject` when its free list is empty or the size is beyond the lists.
QB_EXPORT void *allocateObjectSlowly(std::size_t size);
QB_EXPORT void freeLargeObject(void *memory) noexcept;

/// Returns memory for an object of `size` bytes, aligned to `kSizeStep`. Throws std::bad_alloc when there is
/// none.
inline void *allocateObject(std::size_t size) {
    if (size <= kLargestPooledSize) {
        void *&head = freeObjects[(size + kSizeStep - 1) / kSizeStep];
        if (head) {
            void *memory = head;
            head = *static_cast<void **>(memory);
            return memory;
        }
    }
    return allocateObjectSlowly(size);
}

/// Gives back what `allocateObject` returned for `size`.
inline void freeObject(void *memory, std::size_t size) noexcept {
    if (size > kLargestPooledSize)
        return freeLargeObject(memory);
    void *&head = freeObjects[(size + kSizeStep - 1) / kSizeStep];
    *static_cast<void **>(memory) = head;
    head = memory;
}

#endif

/// Gives back an object of at most `kLargestPooledSize` bytes whose size its type does not tell: one that
/// carries its contents behind itself. The size is found from the chunk that the memory belongs to.
QB_EXPORT void freeObjectOfUnknownSize(void *memory) noexcept;

} // namespace qb

#endif
