#include "support/Allocations.h"

#include <QBFoundation/Runtime/Memory.h>

#include <cerrno>
#include <cstddef>

static bool isArmed = false;
static unsigned toPass = 0;
static unsigned toFail = 0; // 0: all
static unsigned failed = 0;

AllocationFault::AllocationFault(unsigned skip, unsigned times) noexcept {
    toPass = skip;
    toFail = times;
    failed = 0;
    isArmed = true;
}

AllocationFault::~AllocationFault() {
    isArmed = false;
}

unsigned AllocationFault::hits() const noexcept {
    return failed;
}

// --- The C allocator ---

#ifdef QB_NO_FREE_LISTS

std::int64_t blocksInUse() noexcept {
    return 0;
}

#else

static std::int64_t blocks = 0;

static bool fails() {
    if (!isArmed || (toPass > 0 && toPass--) || (toFail != 0 && failed == toFail))
        return false;
    ++failed;
    errno = ENOMEM;
    return true;
}

static void *counted(void *block) {
    blocks += block ? 1 : 0;
    return block;
}

std::int64_t blocksInUse() noexcept {
    return blocks + qb::pooledObjectsInUse();
}

extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *block);

void *malloc(std::size_t size) {
    return fails() ? nullptr : counted(__libc_malloc(size));
}

void *calloc(std::size_t count, std::size_t size) {
    return fails() ? nullptr : counted(__libc_calloc(count, size));
}

void *realloc(void *block, std::size_t size) {
    if (!block)
        return malloc(size);
    if (fails())
        return nullptr;
    void *const moved = __libc_realloc(block, size);
    blocks -= !moved && size == 0 ? 1 : 0;
    return moved;
}

void *memalign(std::size_t alignment, std::size_t size) {
    return fails() ? nullptr : counted(__libc_memalign(alignment, size));
}

void *aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void **block, std::size_t alignment, std::size_t size) {
    void *const memory = memalign(alignment, size);
    return memory ? (*block = memory, 0) : ENOMEM;
}

void free(void *block) {
    blocks -= block ? 1 : 0;
    __libc_free(block);
}

} // extern "C"

#endif
