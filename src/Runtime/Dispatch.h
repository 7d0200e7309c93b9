// What changes in dispatch when an operation is added to a class.
#ifndef QBFOUNDATION_RUNTIME_DISPATCH_H
#define QBFOUNDATION_RUNTIME_DISPATCH_H

#include <cstdint>

namespace qb {

/// Counts the operations added at run time; the caches of classes of an older count are out of date.
extern std::uint32_t dispatchGeneration;

/// Makes all call sites look their operations up anew.
void forgetCallSites();

} // namespace qb

#endif
