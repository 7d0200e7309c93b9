#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSAdaptor/StandardError.h"
#include "System/Memory.h"

#include <cinttypes>
#include <cstdint>
#include <new>

namespace {

// Where allocations are reported from, whoever asks for them.
constexpr const char *kAllocationFile = "src/OSAdaptor/OSFilePath";
constexpr int kAllocationLine = 97;

} // namespace

void *_malloc(std::size_t size) {
    void *const memory = qb::sys::allocate(size);
    if (memory)
        return memory;
    try {
        qb::raiseError(kAllocationFile, kAllocationLine, qb::kErrorOutOfMemory);
    } catch (const std::bad_alloc &) { // then null alone tells
    }
    return nullptr;
}

void *_dbgMalloc(std::size_t size, int line, const char *file) {
    qb::writeStandardError(
        qb::printed("allocating %zu bytes in %s:%d - ", size, file ? file : "(null)", line));
    void *const memory = _malloc(size);
    qb::writeStandardError(
        qb::printed("return 0x%08" PRIxPTR "\n", reinterpret_cast<std::uintptr_t>(memory)));
    return memory;
}

void _dbgFree(void *memory, int line, const char *file) {
    qb::writeStandardError(qb::printed("freeing memory at 0x%08" PRIxPTR " in %s:%d\n",
                                       reinterpret_cast<std::uintptr_t>(memory), file ? file : "(null)",
                                       line));
    qb::sys::release(memory);
}
