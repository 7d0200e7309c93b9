#include <QBFoundation/Runtime/Memory.h>

#include "System/Memory.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <new>
#include <utility>

namespace qb {

#ifdef QB_NO_FREE_LISTS

// Not through the seam: an allocation that is made to fail is a buffer's here as it is with free lists, which
// take memory from the system once in a while only.
void *allocateObject(std::size_t size) {
    void *memory = std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void freeObject(void *memory, std::size_t) noexcept {
    std::free(memory);
}

void freeObjectOfUnknownSize(void *memory) noexcept {
    std::free(memory);
}

std::int64_t pooledObjectsInUse() noexcept {
    return 0;
}

#else

namespace {

// Chunks are aligned to their size, so that an object's address leads to its chunk.
constexpr std::size_t kChunkSize = 64 * 1024;
constexpr std::size_t kStepsInWord = 64;
constexpr std::size_t kWords = kChunkSize / kSizeStep / kStepsInWord;
constexpr std::size_t kSizes = std::size(freeObjects);

constexpr std::size_t kCacheLine = 64;

// A chunk's head. Its objects, all of one size, begin behind it: at a cache line, so that those whose size is
// a power of two don't begin in one and end in the next.
//
// Which of them are free is written here and not into them. So they are handed out in the order of their
// addresses, however wildly they came back, and what is built of them lies together.
struct alignas(kCacheLine) Chunk {
    std::size_t size;       // of an object
    std::uint32_t capacity; // in objects
    std::uint32_t free;     // how many of them
    Chunk *next;
    Chunk **place;                // of the pointer to this one
    std::uint64_t isFree[kWords]; // by step, whether a free object begins there

    explicit Chunk(std::size_t objectSize);

    void *at(std::size_t step) { return reinterpret_cast<char *>(this) + step * kSizeStep; }
    std::size_t stepOf(const void *object) const {
        return static_cast<std::size_t>(static_cast<const char *>(object) -
                                        reinterpret_cast<const char *>(this)) /
               kSizeStep;
    }
};

Chunk::Chunk(std::size_t objectSize)
    : size(objectSize), capacity(static_cast<std::uint32_t>((kChunkSize - sizeof(Chunk)) / objectSize)),
      free(capacity), next(nullptr), place(nullptr), isFree{} {
    std::size_t step = sizeof(Chunk) / kSizeStep;
    for (std::uint32_t i = 0; i < capacity; ++i, step += size / kSizeStep)
        isFree[step / kStepsInWord] |= UINT64_C(1) << step % kStepsInWord;
}

// Those with free objects, by size in steps, and those that are free as a whole, for any size.
constinit Chunk *available[kSizes] = {};
constinit Chunk *unused = nullptr;

constinit std::int64_t objectsOutside = 0; // of the chunks

void link(Chunk &chunk, Chunk *&first) noexcept {
    chunk.next = first;
    chunk.place = &first;
    if (first)
        first->place = &chunk.next;
    first = &chunk;
}

void unlink(Chunk &chunk) noexcept {
    *chunk.place = chunk.next;
    if (chunk.next)
        chunk.next->place = chunk.place;
}

Chunk &chunkOf(void *object) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    return *reinterpret_cast<Chunk *>(address & ~(std::uintptr_t{kChunkSize} - 1));
}

constexpr std::uint32_t kBatch = FreeObjects::kMost / 2;

// Takes free objects out of a chunk, in an order in which the first ones come to be handed out first.
void take(FreeObjects &free, Chunk &chunk) noexcept {
    std::uint32_t left = std::min(kBatch, chunk.free);
    free.count = left;
    objectsOutside += left;
    chunk.free -= left;
    for (std::size_t word = 0; left != 0; ++word) {
        std::uint64_t bits = chunk.isFree[word];
        for (; bits != 0 && left != 0; bits &= bits - 1)
            free.objects[--left] =
                chunk.at(word * kStepsInWord + static_cast<std::size_t>(std::countr_zero(bits)));
        chunk.isFree[word] = bits;
    }
    if (chunk.free == 0)
        unlink(chunk);
}

// Puts objects back into the chunk of the first one. Returns the first one of another chunk, or the end.
void **putRunBack(void **objects, void **end) noexcept {
    Chunk &chunk = chunkOf(*objects);
    void **object = objects;
    for (; object != end && &chunkOf(*object) == &chunk; ++object) {
        const std::size_t step = chunk.stepOf(*object);
        chunk.isFree[step / kStepsInWord] |= UINT64_C(1) << step % kStepsInWord;
    }
    if (chunk.free == 0)
        link(chunk, available[chunk.size / kSizeStep]);
    chunk.free += static_cast<std::uint32_t>(object - objects);
    if (chunk.free == chunk.capacity) {
        unlink(chunk);
        link(chunk, unused);
    }
    return object;
}

// Gives the first ones of the free objects at hand back to their chunks.
void putBack(FreeObjects &free, std::uint32_t count) noexcept {
    void **const end = free.objects + count;
    for (void **object = free.objects; object != end;)
        object = putRunBack(object, end);
    std::copy(end, free.objects + free.count, free.objects);
    free.count -= count;
    objectsOutside -= count;
}

// Returns a chunk that is free as a whole, or null.
void *unusedChunk() noexcept {
    Chunk *const chunk = unused;
    if (chunk)
        unlink(*chunk);
    return chunk;
}

// Chunks come from the system several at a time: what alignment wastes is wasted once for all of them.
struct Region {
    char *next = nullptr; // the first chunk that nobody has had yet
    char *end = nullptr;
};

constexpr std::size_t kLargePage = 2 * 1024 * 1024;
constexpr std::size_t kSmallRegion = 16 * kChunkSize;
constexpr std::size_t kLargeRegion = 8 * kLargePage;

// Returns an empty one when there is no memory. A large one begins at a chunk like others, and not at a large
// page, which would cost the address space of another page.
Region regionOf(std::size_t size) noexcept {
    auto *const memory = static_cast<char *>(sys::allocateAligned(kChunkSize, size));
    if (!memory)
        return {};
    if (size >= kLargePage)
        sys::preferLargePages(memory, size);
    return {memory, memory + size};
}

// A program with few objects has enough in the first one, which is small.
Region newRegion() {
    static constinit bool isFirst = true;
    const int error = errno;
    Region region = isFirst ? Region{} : regionOf(kLargeRegion);
    if (!region.next)
        region = regionOf(kSmallRegion);
    if (!region.next)
        throw std::bad_alloc();
    isFirst = false;
    errno = error; // of a large one that could not be had
    return region;
}

void *newChunk() {
    static constinit Region region;
    if (void *const chunk = unusedChunk())
        return chunk;
    if (region.next == region.end) {
        for (FreeObjects &free : freeObjects) // a few at hand keep many chunks from being free as a whole
            putBack(free, free.count);
        if (void *const chunk = unusedChunk())
            return chunk;
        region = newRegion();
    }
    return std::exchange(region.next, region.next + kChunkSize);
}

void *allocateLarge(std::size_t size) {
    void *memory = sys::allocate(size);
    if (!memory)
        throw std::bad_alloc();
    if (size >= kLargePage)
        sys::preferLargePages(memory, size);
    return memory;
}

} // namespace

constinit FreeObjects freeObjects[kLargestPooledSize / kSizeStep + 1] = {};

void *allocateObjectSlowly(std::size_t size) {
    if (size > kLargestPooledSize)
        return allocateLarge(size);
    FreeObjects &free = freeObjects[(size + kSizeStep - 1) / kSizeStep];
    const std::size_t index =
        (std::max<std::size_t>(size, 1) + kSizeStep - 1) / kSizeStep; // 0 bytes are a step
    if (!available[index])
        link(*new (newChunk()) Chunk(index * kSizeStep), available[index]);
    take(free, *available[index]);
    return free.objects[--free.count];
}

void returnToChunks(FreeObjects &free) noexcept {
    putBack(free, kBatch);
}

void freeLargeObject(void *memory) noexcept {
    sys::release(memory);
}

void freeObjectOfUnknownSize(void *memory) noexcept {
    freeObject(memory, chunkOf(memory).size);
}

std::int64_t pooledObjectsInUse() noexcept {
    std::int64_t count = objectsOutside;
    for (const FreeObjects &free : freeObjects)
        count -= free.count;
    return count;
}

#endif

} // namespace qb
