// What must not reach the C library's compiler of regular expressions.
#ifndef QBFOUNDATION_TEXT_PATTERNCHECK_H
#define QBFOUNDATION_TEXT_PATTERNCHECK_H

#include <cstddef>

namespace qb::text {

/// The most bytes that a pattern may have.
inline constexpr std::size_t kLongestPattern = 32768;

/// The most groups that a pattern may have, so that the positions of all of them fit on the stack.
inline constexpr std::size_t kMostPatternGroups = 1000;

/// What may be done with a pattern. Its faults are texts like "its groups are nested too deeply", or null.
struct PatternLimits {
    const char *fault = nullptr;      // why it must not be compiled
    const char *groupFault = nullptr; // why nobody must ask for the places of its groups
    bool hasReferences = false;       // whether each search wants groups, and a pattern compiled for it alone
    std::size_t longestText = 0;      // bytes that a text may have that is searched
};

/// Returns what may be done with `pattern`, a POSIX extended regular expression with the additions of the GNU
/// C library, in the process's character set.
///
/// What it lets pass, well formed or not, the compiler and the matcher work on without coming to the end of a
/// stack of 256 KiB, and the compiler within a second, mostly far less, and 32 MiB. A pattern that is not
/// well formed is left to the compiler to report. The check takes time in proportion to the pattern's length,
/// and recurses nowhere.
///
/// Where what may be of several lengths is repeated, as in "((a{9,40}){1,10}.){10}", the matcher may be at
/// all nodes of its copies at one place of the text, and keeps which: there may be 8 000 of them, 2 000 with
/// an anchor among them.
///
/// To find the places of groups the matcher goes once more along what it has found. Where it comes a second
/// time to a choice without having taken a character, it decides for the other side, and so on for ever when
/// none of these leads out. So an endless repeat may have one way only to match nothing, and none where
/// it is repeated together with an anchor, for which the compiler copies loops.
///
/// Back references make the matcher try all that a group may be at each place where a reference may stand. So
/// in a pattern with back references one thing only may be open without limit: where the match begins, unless
/// a "^" in front of everything says so, or where one endless repeat ends, unless it is delimited as in
/// "([a-z]+) \1"; behind a reference each one is open, as the matcher comes to it from its end, too. Where
/// such an end is open, no choice may stand in front of a group that is referred to. The group may neither
/// have an anchor, be repeated, stand behind such a repeat, nor match nothing where a way leads past it, or
/// where it is named twice or an anchor may be left out; if it has an endless repeat, no reference may be
/// left out, and where the match may begin anywhere, no choice stand in front of it. No endless repeat may
/// match nothing, and no anchor be repeated but by "?". What is tried at a place of the text may be 80 000:
/// the pattern's nodes, times the ends of each such group (one more than the choices in it) and the square of
/// its begins (one more than those in front of it), times one more than all choices for each reference; the
/// nodes may be 200. When the matcher seeks the places of groups, it may go each way through the pattern that
/// leads from one place to another: there may be 10 000, and one only in what is repeated without end. What
/// is left has taken some three seconds at most in a text of 4 KiB, or of the length that it may have.
/// Without groups the matcher may find what it does not find with them, so that they are always to be asked
/// for; and what it keeps of one text misleads it in others.
///
/// `isByLines`: "^" matches behind each newline. The longest text has INT_MAX bytes. When a group that is
/// referred to has an endless repeat inside, it has 4096: the matcher takes memory in proportion to the
/// square of the text's length. It has 1024, as the time is in proportion to the cube, when there is an
/// endless repeat and the match may begin anywhere, 10 000 are tried at a place, or, if it is in a group that
/// is referred to or open, there are several references.
PatternLimits checkPattern(const char *pattern, bool isByLines = false);

} // namespace qb::text

#endif
