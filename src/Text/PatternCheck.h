// What must not reach the C library's compiler of regular expressions.
#ifndef QBFOUNDATION_TEXT_PATTERNCHECK_H
#define QBFOUNDATION_TEXT_PATTERNCHECK_H

#include <cstddef>

namespace qb::text {

/// The most bytes that a pattern may have.
inline constexpr std::size_t kLongestPattern = 32768;

/// The most groups that a pattern may have, so that the positions of all of them fit on the stack.
inline constexpr std::size_t kMostPatternGroups = 1000;

/// Returns why `pattern`, a POSIX extended regular expression with the additions of the GNU C library, must
/// not be compiled, as a text like "its groups are nested too deeply"; null when it may be.
///
/// What it lets pass, well formed or not, the compiler and the matcher work on without coming to the end of a
/// stack of 256 KiB, and the compiler within some 100 milliseconds and 32 MiB. A pattern that is not well
/// formed is left to the compiler to report. The check takes time in proportion to the pattern's length, and
/// recurses nowhere.
const char *patternFault(const char *pattern);

} // namespace qb::text

#endif
