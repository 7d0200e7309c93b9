// Visibility of what the library offers.
#ifndef QBFOUNDATION_RUNTIME_EXPORT_H
#define QBFOUNDATION_RUNTIME_EXPORT_H

/// Marks a class, function or object that clients link to. The library is built with everything else hidden,
/// and the names that leave it are compared with a list, so a mark that is added or lost is noticed.
#define QB_EXPORT __attribute__((visibility("default")))

#endif
