#include "Text/Search.h"

#include "Text/Unicode.h"
#include "Text/Utf8.h"

#include <cstring>

namespace qb::text {

namespace {

std::uint32_t symbolOf(std::uint32_t character, std::size_t used, bool ignoresCase) {
    if (used == 1 && character >= 0x80)
        return kFirstMalformed + character;
    return ignoresCase ? foldCase(character) : character;
}

// Takes the characters of a text one by one, from its front or from its back.
class Characters {
public:
    Characters(std::string_view text, unsigned options)
        : begin_(text.data()), end_(text.data() + text.size()), options_(options) {}

    bool isEmpty() const { return begin_ == end_; }
    // What is left of the text begins, or ends, here.
    const char *position() const { return isBackwards() ? end_ : begin_; }

    std::uint32_t take() {
        const bool ignoresCase = options_ & Search::kIgnoreCase;
        return isBackwards() ? takeSymbolBefore(begin_, end_, ignoresCase)
                             : takeSymbol(begin_, end_, ignoresCase);
    }

private:
    bool isBackwards() const { return options_ & Search::kBackwards; }

    const char *begin_, *end_;
    unsigned options_;
};

std::size_t offsetIn(std::string_view text, const char *position) {
    return static_cast<std::size_t>(position - text.data());
}

bool isWhole(std::string_view text, Match match) {
    const char *const end = text.data() + text.size();
    return isCharacterStart(text.data(), end, text.data() + match.from) &&
           isCharacterStart(text.data(), end, text.data() + match.end);
}

} // namespace

std::uint32_t takeLongSymbol(const char *&position, const char *end, bool ignoresCase) {
    std::uint32_t character = 0;
    const std::size_t used = decodeLenient(position, end, &character);
    position += used;
    return symbolOf(character, used, ignoresCase);
}

std::uint32_t takeSymbolBefore(const char *begin, const char *&position, bool ignoresCase) {
    std::uint32_t character = 0;
    const std::size_t used = decodeLenientBefore(begin, position, &character);
    position -= used;
    return symbolOf(character, used, ignoresCase);
}

Search::Search(std::string_view needle, unsigned options)
    : needle_(needle), options_(options & (kIgnoreCase | kBackwards)) {}

void Search::prepare() {
    for (Characters characters(needle_, options_); !characters.isEmpty();)
        symbols_.push_back(characters.take());
    fallbacks_.assign(symbols_.size() + 1, 0);
    std::uint32_t border = 0;
    for (std::size_t i = 1; i < symbols_.size(); ++i) {
        while (border && symbols_[border] != symbols_[i])
            border = fallbacks_[border];
        border += symbols_[border] == symbols_[i];
        fallbacks_[i + 1] = border;
    }
}

std::optional<Match> Search::find(std::string_view text) {
    if (needle_.empty() || text.empty())
        return std::nullopt;
    if (options_ != 0 || !symbols_.empty())
        return findSymbols(text);
    const void *const found = memmem(text.data(), text.size(), needle_.data(), needle_.size());
    if (!found)
        return std::nullopt;
    const std::size_t from = offsetIn(text, static_cast<const char *>(found));
    const Match match{from, from + needle_.size()};
    // In malformed text the bytes may stand across characters. Bytes are no use any more then, for a text
    // made for it would have such a match everywhere.
    return isWhole(text, match) ? std::optional(match) : findSymbols(text);
}

std::optional<Match> Search::findSymbols(std::string_view text) {
    if (symbols_.empty())
        prepare();
    std::uint32_t matched = 0;
    Characters characters(text, options_);
    while (!characters.isEmpty()) {
        const std::uint32_t symbol = characters.take();
        while (matched && symbols_[matched] != symbol)
            matched = fallbacks_[matched];
        matched += symbols_[matched] == symbol;
        if (matched != symbols_.size())
            continue;
        // The match is as many characters long as the needle; its other edge lies in what was taken.
        const std::size_t edge = offsetIn(text, characters.position());
        const bool isBackwards = options_ & kBackwards;
        Characters match(isBackwards ? text.substr(edge) : text.substr(0, edge), options_ ^ kBackwards);
        for (std::size_t i = 0; i < symbols_.size(); ++i)
            match.take();
        const std::size_t other = offsetIn(text, match.position());
        return isBackwards ? Match{edge, other} : Match{other, edge};
    }
    return std::nullopt;
}

std::optional<Match> Search::findAtEdge(std::string_view text) const {
    const bool isBackwards = options_ & kBackwards;
    Characters rest(text, options_);
    if (!(options_ & kIgnoreCase)) {
        if (isBackwards ? !text.ends_with(needle_) : !text.starts_with(needle_))
            return std::nullopt;
        const Match match =
            isBackwards ? Match{text.size() - needle_.size(), text.size()} : Match{0, needle_.size()};
        return isWhole(text, match) ? std::optional(match) : std::nullopt;
    }
    for (Characters wanted(needle_, options_); !wanted.isEmpty();)
        if (rest.isEmpty() || rest.take() != wanted.take())
            return std::nullopt;
    const std::size_t edge = offsetIn(text, rest.position());
    return isBackwards ? Match{edge, text.size()} : Match{0, edge};
}

} // namespace qb::text
