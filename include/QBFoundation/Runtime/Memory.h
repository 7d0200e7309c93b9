// Memory of objects: pools by size.
#ifndef QBFOUNDATION_RUNTIME_MEMORY_H
#define QBFOUNDATION_RUNTIME_MEMORY_H

#include <QBFoundation/Runtime/Export.h>

#include <cstddef>
#include <cstdint>

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

/// The free objects of one size that are handed out next, the one that was given back last before all others.
/// Behind it stand the chunks that the objects lie in. The library runs on one thread, so that nothing is
/// locked here.
struct FreeObjects {
    static constexpr std::uint32_t kMost = 247; // with the count 31 cache lines, so that the counts of all
                                                // sizes don't contend for the same place in the cache
    std::uint32_t count;
    void *objects[kMost];
};

/// By size in steps.
QB_EXPORT extern FreeObjects freeObjects[kLargestPooledSize / kSizeStep + 1];

/// The way of `allocateObject` when no free object is at hand or the size is beyond the pools.
QB_EXPORT void *allocateObjectSlowly(std::size_t size);
QB_EXPORT void freeLargeObject(void *memory) noexcept;
/// Makes room for objects that are given back.
QB_EXPORT void returnToChunks(FreeObjects &free) noexcept;

/// Returns memory for an object of `size` bytes, aligned to `kSizeStep`. Throws std::bad_alloc when there is
/// none.
inline void *allocateObject(std::size_t size) {
    if (size <= kLargestPooledSize) {
        FreeObjects &free = freeObjects[(size + kSizeStep - 1) / kSizeStep];
        if (free.count != 0)
            return free.objects[--free.count];
    }
    return allocateObjectSlowly(size);
}

/// Gives back what `allocateObject` returned for `size`.
inline void freeObject(void *memory, std::size_t size) noexcept {
    if (size > kLargestPooledSize)
        return freeLargeObject(memory);
    FreeObjects &free = freeObjects[(size + kSizeStep - 1) / kSizeStep];
    if (free.count == FreeObjects::kMost)
        returnToChunks(free);
    free.objects[free.count++] = memory;
}

#endif

/// Gives back an object of at most `kLargestPooledSize` bytes whose size its type does not tell: one that
/// carries its contents behind itself. The size is found from the chunk that the memory belongs to.
QB_EXPORT void freeObjectOfUnknownSize(void *memory) noexcept;

/// Returns how many objects of at most `kLargestPooledSize` bytes are in use; 0 where the C allocator gives
/// them.
QB_EXPORT std::int64_t pooledObjectsInUse() noexcept;

} // namespace qb

#endif
