// Searching for a text in another.
#ifndef QB_TEXT_SEARCH_H
#define QB_TEXT_SEARCH_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qb::text {

/// Characters as searches and comparisons see them: code points, folded with `ignoresCase`; bytes that are no
/// valid UTF-8 stand behind all code points.
constexpr std::uint32_t kFirstMalformed = 0x110000;

/// `takeSymbol` of a character that is not ASCII.
std::uint32_t takeLongSymbol(const char *&position, const char *end, bool ignoresCase);

/// Takes the character at `position`, before `end`, and moves behind it.
inline std::uint32_t takeSymbol(const char *&position, const char *end, bool ignoresCase) {
    const auto byte = static_cast<unsigned char>(*position);
    if (byte >= 0x80)
        return takeLongSymbol(position, end, ignoresCase);
    ++position;
    return ignoresCase && byte >= 'A' && byte <= 'Z' ? byte | 0x20u : byte;
}

/// Takes the character in front of `position`, behind `begin`, and moves to it.
std::uint32_t takeSymbolBefore(const char *begin, const char *&position, bool ignoresCase);

/// A place in a text, in bytes.
struct Match {
    std::size_t from, end;

    friend bool operator==(const Match &, const Match &) = default;
};

/// Finds a text in others, character by character: a match never begins or ends inside a character.
///
/// Characters are those of lenient decoding; bytes that are no valid UTF-8 match themselves only. The time is
/// linear in both texts, whatever they hold (D. E. Knuth, J. H. Morris, V. R. Pratt, "Fast Pattern Matching
/// in Strings", SIAM Journal on Computing, 1977). `needle` must outlive the search. An empty one is never
/// found.
class Search {
public:
    /// Other bits of the options mean nothing.
    enum Option : unsigned { kIgnoreCase = 1, kBackwards = 4 };

    explicit Search(std::string_view needle, unsigned options = 0);

    /// Returns the first match in the text, or with `kBackwards` the last one.
    std::optional<Match> find(std::string_view text);

    /// Returns the match with which the text begins, or with `kBackwards` ends. The empty needle is found
    /// there.
    std::optional<Match> findAtEdge(std::string_view text) const;

private:
    void prepare();
    std::optional<Match> findSymbols(std::string_view text);

    const std::string_view needle_;
    const unsigned options_;
    std::vector<std::uint32_t> symbols_;   // the needle's characters, in the direction of the search
    std::vector<std::uint32_t> fallbacks_; // [n]: the longest border of the first n characters
};

/// Calls `visit` with each match in the text, from the front, none of which overlaps another. Returns their
/// number.
template <class F>
std::size_t forEachMatch(std::string_view text, Search &search, F &&visit) {
    std::size_t count = 0;
    std::size_t done = 0;
    while (const auto match = search.find(text.substr(done))) {
        visit(Match{done + match->from, done + match->end});
        done += match->end;
        ++count;
    }
    return count;
}

} // namespace qb::text

#endif
