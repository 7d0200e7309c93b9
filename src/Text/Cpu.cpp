#include "Text/Cpu.h"

namespace qb::detail {

constinit CpuLevel knownCpuLevel = CpuLevel::unknown;

CpuLevel askCpuLevel() {
    __builtin_cpu_init(); // we may run before the compiler's own start-up code
    const bool sse41 = __builtin_cpu_supports("sse4.1");
    const bool avx2 = sse41 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
    // 32-bit code has eight vector registers and no 64-bit masks in one, so it gains nothing by the larger
    // vectors.
    const bool avx512 = avx2 && sizeof(void *) == 8 && __builtin_cpu_supports("avx512bw");
    const bool vbmi2 =
        avx512 && __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512vbmi");
    knownCpuLevel = vbmi2    ? CpuLevel::avx512vbmi2
                    : avx512 ? CpuLevel::avx512
                    : avx2   ? CpuLevel::avx2
                    : sse41  ? CpuLevel::sse41
                             : CpuLevel::plain;
    return knownCpuLevel;
}

} // namespace qb::detail
