#include "OSAdaptor/StandardError.h"

#include "System/Stdio.h"

#include <cstdarg>
#include <cstdio>

namespace qb {

void writeStandardError(std::string_view text) {
    sys::fwrite(text.data(), 1, text.size(), stderr);
    sys::fflush(stderr);
}

std::string printed(const char *format, ...) {
    std::string text;
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    va_end(arguments);
    return text;
}

} // namespace qb
