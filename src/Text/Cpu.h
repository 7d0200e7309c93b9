// What the processor can do, asked once, for functions that stand in a plain and a vector version.
#ifndef QB_TEXT_CPU_H
#define QB_TEXT_CPU_H

namespace qb {

/// The vector versions there are, each including those before it. `unknown`: not asked yet.
enum class CpuLevel : unsigned char { unknown, plain, sse41, avx2, avx512, avx512vbmi2 };

namespace detail {
// Constant-initialised, so that static constructors anywhere may already scan text.
extern constinit CpuLevel knownCpuLevel;
CpuLevel askCpuLevel();
} // namespace detail

/// Returns which versions may be called, never `unknown`.
inline CpuLevel cpuLevel() {
    const CpuLevel level = detail::knownCpuLevel;
    if (level == CpuLevel::unknown) [[unlikely]]
        return detail::askCpuLevel();
    return level;
}

/// True when functions compiled for "sse4.1" may be called.
inline bool hasSse41() {
    return cpuLevel() >= CpuLevel::sse41;
}

/// True when functions compiled for "avx2,popcnt" may be called.
inline bool hasAvx2() {
    return cpuLevel() >= CpuLevel::avx2;
}

/// True when functions compiled for "avx512bw,popcnt" may be called.
inline bool hasAvx512() {
    return cpuLevel() >= CpuLevel::avx512;
}

/// True when functions compiled for "avx512vbmi2,avx512vbmi,avx512bw,popcnt" may be called.
inline bool hasAvx512Vbmi2() {
    return cpuLevel() >= CpuLevel::avx512vbmi2;
}

} // namespace qb

#endif
