// What the process takes from the C allocator, counted and made to fail.
//
// Not in builds without free lists, which are for leak tools with allocators of their own: there nothing is
// counted, no fault strikes, and the tool finds what was not given back.
#ifndef QBFOUNDATION_TESTS_SUPPORT_ALLOCATIONS_H
#define QBFOUNDATION_TESTS_SUPPORT_ALLOCATIONS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

/// Returns how many blocks are in use: those of the C allocator, of `new` and of the library's objects.
std::int64_t blocksInUse() noexcept;

/// Makes allocations fail as long as it lives, those of the C library and of `new` among them: lets `skip`
/// pass, then fails `times` (0: all). One at a time.
class AllocationFault {
public:
    AllocationFault(unsigned skip, unsigned times) noexcept;
    ~AllocationFault();
    AllocationFault(const AllocationFault &) = delete;
    AllocationFault &operator=(const AllocationFault &) = delete;

    /// Returns how often it has struck so far.
    unsigned hits() const noexcept;
};

/// Lets each allocation of `make` fail in turn: it throws std::bad_alloc then, or gives what it gives when
/// none fails.
template <class Make>
void expectAllOrBadAlloc(Make make) {
    const auto all = make();
    for (unsigned skip = 0, failures = 1; failures != 0; ++skip) {
        const AllocationFault fault(skip, /*times=*/1);
        try {
            EXPECT_EQ(make(), all) << skip;
        } catch (const std::bad_alloc &) {
        }
        failures = fault.hits();
    }
}

#endif
