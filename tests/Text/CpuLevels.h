// Runs a check with each vector version that the processor has.
#ifndef QB_TESTS_TEXT_CPULEVELS_H
#define QB_TESTS_TEXT_CPULEVELS_H

#include "Text/Cpu.h"

#include <gtest/gtest.h>

#include <string>

/// Calls `check` once for each version that can run here, the plain one first, and puts the best back in
/// place.
template <class Check>
void forEachCpuLevel(Check check) {
    const qb::CpuLevel best = qb::cpuLevel();
    for (auto level = static_cast<int>(qb::CpuLevel::plain); level <= static_cast<int>(best); ++level) {
        SCOPED_TRACE("vector version " + std::to_string(level));
        qb::detail::knownCpuLevel = static_cast<qb::CpuLevel>(level);
        check();
    }
    qb::detail::knownCpuLevel = best;
}

#endif
