// The C library's regular expressions.
#ifndef QBFOUNDATION_SYSTEM_REGEX_H
#define QBFOUNDATION_SYSTEM_REGEX_H

#include <cstddef>
#include <memory>
#include <regex.h>
#include <string>

namespace qb::sys {

/// Compiles `pattern`; returns 0, and then `expression` is to be given back by `regfree`, or an error code.
int regcomp(regex_t &expression, const char *pattern, int flags) noexcept;
/// Searches `text`; returns 0, REG_NOMATCH, or REG_ESPACE when there is not enough memory to find out. The
/// places of the match and of its first `count` - 1 groups go to `places`.
int regexec(const regex_t &expression, const char *text, std::size_t count, regmatch_t *places) noexcept;
/// Returns what keeps the data of the thread's own locale, for whatever is compiled in it points into them;
/// null when it has none of its own. Throws std::bad_alloc.
std::shared_ptr<void> keptThreadLocale();
/// Returns what the code of a failed `regcomp` means, in the words of the C library.
std::string regerror(int code, const regex_t &expression);

} // namespace qb::sys

#endif
