// What fuzz targets hold to be true of every input.
#ifndef QBFOUNDATION_FUZZ_SUPPORT_REQUIRE_H
#define QBFOUNDATION_FUZZ_SUPPORT_REQUIRE_H

#include <cstdio>
#include <cstdlib>

/// Ends the process, which is how a target reports an input, unless `holds`.
inline void require(bool holds, const char *claim) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
}

#endif
