// Shared libraries at run time.
#ifndef QBFOUNDATION_SYSTEM_LIBRARY_H
#define QBFOUNDATION_SYSTEM_LIBRARY_H

#include <dlfcn.h>

namespace qb::sys {

/// Loads a shared library (null: the program itself); returns its handle, or null and then `dlerror` says
/// why.
void *dlopen(const char *path, int flags) noexcept;
/// Returns why the last `dlopen` failed, never null, valid until the next call.
const char *dlerror() noexcept;

} // namespace qb::sys

#endif
