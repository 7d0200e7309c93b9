#include "Library.h"

#include "Attempt.h"

#include <cstring>

namespace qb::sys {

void *dlopen(const char *path, int flags) noexcept {
    return attempt(Call::dlopen, [&] { return ::dlopen(path, flags); });
}

const char *dlerror() noexcept {
    const int error = errno;
    const char *text = ::dlerror();
    return text ? text : std::strerror(error);
}

} // namespace qb::sys
