#include "Iconv.h"

#include "Attempt.h"

#include <langinfo.h>

namespace qb::sys {

iconv_t iconv_open(const char *target, const char *source) noexcept {
    if (fails(Call::iconv_open)) // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how POSIX spells "none"
        return reinterpret_cast<iconv_t>(-1);
    return ::iconv_open(target, source);
}

std::size_t iconv(iconv_t conversion, char **input, std::size_t *inputLeft, char **output,
                  std::size_t *outputLeft) noexcept {
    return attempt(Call::iconv, [&] { return ::iconv(conversion, input, inputLeft, output, outputLeft); });
}

int iconv_close(iconv_t conversion) noexcept {
    const int result = ::iconv_close(conversion);
    return fails(Call::iconv_close) ? -1 : result;
}

const char *characterSetName() noexcept {
    return ::nl_langinfo(CODESET);
}

const char *setlocale(int category, const char *name) noexcept {
    return attempt(Call::setlocale, [&] { return ::setlocale(category, name); });
}

} // namespace qb::sys
