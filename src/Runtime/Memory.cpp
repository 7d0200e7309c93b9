#include <QBFoundation/Runtime/Memory.h>

#include "System/Memory.h"

#include <cstdint>
#include <cstdlib>
#include <new>

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

#else

namespace {

// Chunks are aligned to their size, so that an object's address leads to its chunk's head.
constexpr std::size_t kChunkSize = 64 * 1024;

struct ChunkHead {
    std::size_t sizeIndex; // of every object in the chunk
};
// A cache line, so that objects whose size is a power of two don't begin in one and end in the next.
constexpr std::size_t kHeadSize = 64;
static_assert(sizeof(ChunkHead) <= kHeadSize);

// What was not handed out yet: the part of the newest chunk of a size. Chunks are carved step by step, so
// that objects made one after the other lie one after the other.
struct Uncarved {
    char *next = nullptr;
    char *end = nullptr;
};
constinit Uncarved uncarved[kLargestPooledSize / kSizeStep + 1];

void *allocateLarge(std::size_t size) {
    void *memory = sys::allocate(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

// Chunks come from the system several at a time: what alignment wastes is wasted once for all of them.
constexpr std::size_t kRegionSize = 16 * kChunkSize;
constinit Uncarved region;

char *newChunk() {
    if (region.next == region.end) {
        char *const memory = static_cast<char *>(sys::allocateAligned(kChunkSize, kRegionSize));
        if (!memory)
            throw std::bad_alloc();
        region = {memory, memory + kRegionSize};
    }
    char *const chunk = region.next;
    region.next += kChunkSize;
    return chunk;
}

void addChunk(std::size_t sizeIndex) {
    char *const chunk = newChunk();
    new (chunk) ChunkHead{sizeIndex};
    uncarved[sizeIndex] = {chunk + kHeadSize, chunk + kChunkSize};
}

} // namespace

constinit void *freeObjects[kLargestPooledSize / kSizeStep + 1] = {};

void *allocateObjectSlowly(std::size_t size) {
    if (size > kLargestPooledSize)
        return allocateLarge(size);
    const std::size_t index = (size + kSizeStep - 1) / kSizeStep;
    const auto bytes = static_cast<std::ptrdiff_t>(index * kSizeStep);
    Uncarved &rest = uncarved[index];
    if (rest.end - rest.next < bytes)
        addChunk(index);
    void *memory = rest.next;
    rest.next += bytes;
    return memory;
}

void freeLargeObject(void *memory) noexcept {
    sys::release(memory);
}

void freeObjectOfUnknownSize(void *memory) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const auto *head = reinterpret_cast<const ChunkHead *>(address & ~(std::uintptr_t{kChunkSize} - 1));
    freeObject(memory, head->sizeIndex * kSizeStep);
}

#endif

} // namespace qb
