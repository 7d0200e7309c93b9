#include "Memory.h"

#include "Attempt.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace qb::sys {

void *allocate(std::size_t size) noexcept {
    return attempt(Call::allocate, [&] { return std::malloc(size); });
}

void *allocateAligned(std::size_t alignment, std::size_t size) noexcept {
    return attempt(Call::allocate, [&] { return std::aligned_alloc(alignment, size); });
}

void preferLargePages(void *memory, std::size_t size) noexcept {
    static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t begin = (start + page - 1) / page * page;
    const std::uintptr_t end = (start + size) / page * page;
    const int error = errno;
    if (begin < end)
        ::madvise(reinterpret_cast<void *>(begin), end - begin, MADV_HUGEPAGE);
    errno = error; // it is a wish
}

void *reallocate(void *memory, std::size_t size) noexcept {
    // Size 0 would free and answer null, which looks like a failure that left the memory alone.
    return attempt(Call::reallocate, [&] { return std::realloc(memory, size ? size : 1); });
}

void release(void *memory) noexcept {
    std::free(memory);
}

void wipe(void *memory, std::size_t size) noexcept {
    ::explicit_bzero(memory, size);
}

std::int64_t dataSegmentEnd() noexcept {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(::sbrk(0)));
}

} // namespace qb::sys
