// Allocation.
#ifndef QBFOUNDATION_SYSTEM_MEMORY_H
#define QBFOUNDATION_SYSTEM_MEMORY_H

#include <cstddef>
#include <cstdint>

namespace qb::sys {

/// `malloc`: returns `size` bytes (0: a pointer of its own), or null with ENOMEM. To be given to `release`.
[[nodiscard]] void *allocate(std::size_t size) noexcept;

/// `aligned_alloc`: as `allocate`, at a multiple of `alignment`, a power of two that divides `size`.
[[nodiscard]] void *allocateAligned(std::size_t alignment, std::size_t size) noexcept;

/// Lets the system serve the memory by large pages (`madvise`, MADV_HUGEPAGE), as far as whole ones lie in
/// it: one that is used all over then misses the translation buffers less.
void preferLargePages(void *memory, std::size_t size) noexcept;

/// `realloc`: as `allocate`, with the old content; null leaves `memory` (null: none) as it was. Size 0 counts
/// as 1.
[[nodiscard]] void *reallocate(void *memory, std::size_t size) noexcept;

/// `free`; errno stays.
void release(void *memory) noexcept;

/// Makes each byte zero, also where nobody reads them any more: for secrets.
void wipe(void *memory, std::size_t size) noexcept;

/// Returns the address of the end of the data segment (`sbrk` with 0).
std::int64_t dataSegmentEnd() noexcept;

} // namespace qb::sys

#endif
