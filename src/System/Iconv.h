// Character sets and the locale.
#ifndef QBFOUNDATION_SYSTEM_ICONV_H
#define QBFOUNDATION_SYSTEM_ICONV_H

#include <clocale>
#include <cstddef>
#include <iconv.h>

namespace qb::sys {

/// Opens a conversion; `(iconv_t)-1` and errno (EINVAL: not supported) after a failure.
iconv_t iconv_open(const char *target, const char *source) noexcept;
/// Converts, moving the pointers and counts; `(size_t)-1` with E2BIG, EILSEQ or EINVAL where it stopped.
///
/// A null `input` resets the shift state, writing what that takes.
std::size_t iconv(iconv_t conversion, char **input, std::size_t *inputLeft, char **output,
                  std::size_t *outputLeft) noexcept;
/// Closes a conversion.
int iconv_close(iconv_t conversion) noexcept;
/// Returns the name of the locale's character set ("UTF-8"), valid until the locale changes.
const char *characterSetName() noexcept;
/// Sets (null `name`: asks for) a category of the process's locale; returns its name, null when there is no
/// such one.
const char *setlocale(int category, const char *name) noexcept;

} // namespace qb::sys

#endif
