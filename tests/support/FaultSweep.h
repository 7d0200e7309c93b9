// Uses of the library under every fault.
#ifndef QBFOUNDATION_TESTS_SUPPORT_FAULTSWEEP_H
#define QBFOUNDATION_TESTS_SUPPORT_FAULTSWEEP_H

#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <iosfwd>
#include <type_traits>

/// What a failure may leave behind.
enum class Leaves {
    oldOrNew, // each file is as it was before, or as it is to be
    parts,    // those to be made or changed may be in between, no other is touched
    anything, // which has been told of then
};

/// What is done in a directory; returns what that delivers as a text, if anything.
class Act {
public:
    template <class F>
    Act(F function) {
        if constexpr (std::is_void_v<std::invoke_result_t<F, const TemporaryDirectory &>>)
            function_ = [function](const TemporaryDirectory &place) {
                return function(place), std::string();
            };
        else
            function_ = function;
    }
    std::string operator()(const TemporaryDirectory &place) const { return function_(place); }

private:
    std::function<std::string(const TemporaryDirectory &)> function_;
};

/// A use of the library, as a client makes it: a row of the sweep.
struct Use {
    const char *name; // letters and digits
    /// Makes what the use works on.
    Act prepare;
    /// The use; what it does to files is seen.
    Act act;
    Leaves leaves = Leaves::oldOrNew;
    /// Calls whose failure is an answer, so that it need not be told as one; `any`: other faults.
    std::vector<sys::Call> answering = {};
};

void PrintTo(const Use &use, std::ostream *stream);

/// Makes each use once without a fault, then again and again: each call to the system fails in turn, each in
/// several ways, each allocation fails in turn, alone and with all after it, files may grow no further than
/// that many bytes, and the directory can't be changed.
///
/// Each time the use must do all that it does without a fault, or else raise an error or throw. It must not
/// crash, nor leave an object, a block, a descriptor, a file or a part of a file behind. All of this happens
/// on a small stack, in a directory whose name is as long as names can be, and no UTF-8.
class FaultSweepTest : public PoolFixture, public testing::WithParamInterface<Use> {};

/// Rows of a test file: `QB_FAULT_SWEEP(Streams, uses);`
#define QB_FAULT_SWEEP(theme, uses)                                                                          \
    INSTANTIATE_TEST_SUITE_P(theme, FaultSweepTest, testing::ValuesIn(uses),                                 \
                             [](const auto &row) { return std::string(row.param.name); })

#endif
