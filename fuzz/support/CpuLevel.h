// The vector versions that a fuzz target lets the library use.
#ifndef QBFOUNDATION_FUZZ_SUPPORT_CPULEVEL_H
#define QBFOUNDATION_FUZZ_SUPPORT_CPULEVEL_H

#include "Text/Cpu.h"

/// Any choice is one of those that the processor has.
inline void chooseCpuLevel(unsigned choice) {
    static const auto best = static_cast<unsigned>(qb::cpuLevel());
    constexpr auto plain = static_cast<unsigned>(qb::CpuLevel::plain);
    qb::detail::knownCpuLevel = static_cast<qb::CpuLevel>(plain + choice % best);
}

#endif
