// The descriptors of the process, to see that none is left open.
#ifndef QBFOUNDATION_TESTS_SUPPORT_OPENDESCRIPTORS_H
#define QBFOUNDATION_TESTS_SUPPORT_OPENDESCRIPTORS_H

#include <cstddef>
#include <filesystem>
#include <iterator>

/// Returns how many are open, one more for the look at them.
inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

#endif
