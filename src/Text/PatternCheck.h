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
/// not be compiled in the process's character set, as a text like "its groups are nested too deeply"; null
/// when it may be.
///
/// What it lets pass, well formed or not, the compiler and the matcher work on without coming to the end of a
/// stack of 256 KiB, and the compiler within some 100 milliseconds and 32 MiB. A pattern that is not well
/// formed is left to the compiler to report. The check takes time in proportion to the pattern's length, and
/// recurses nowhere.
///
/// Back references make the matcher try all that a group may be at each place where a reference may stand. So
/// in a pattern with back references one thing only may be open without limit: where the match begins, unless
/// a "^" in front of everything says so, or where one endless repeat ends, unless it is one of a bracket
/// expression that lacks the character behind it, as in "([a-z]+) \1". A group that is referred to may
/// neither be repeated nor stand behind such a repeat, and choices times back references may be 32. What is
/// left takes some tenths of a second in a text of 4 KiB, and finds the same with groups as without.
///
/// `isByLines`: "^" matches behind each newline. `longestText`, unless null, takes how many bytes a text may
/// have that is searched: INT_MAX, but 4096 when a group that is referred to has an open end inside, for
/// which the matcher takes memory in proportion to the square of the text's length.
const char *patternFault(const char *pattern, bool isByLines = false, std::size_t *longestText = nullptr);

} // namespace qb::text

#endif
