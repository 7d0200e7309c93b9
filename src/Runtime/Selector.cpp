#include <QBFoundation/Runtime/Selector.h>

#include "Text/Hash.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

namespace {

struct TextHash {
    std::size_t operator()(std::string_view text) const {
        return qb::text::hashBytes(text.data(), text.size());
    }
};
using SelectorTable = std::unordered_map<std::string_view, SEL, TextHash>;

// Never destroyed: objects may send messages after main().
SelectorTable &table() {
    static SelectorTable &selectors = *new SelectorTable;
    return selectors;
}

} // namespace

SEL Selector::namedIfKnown(std::string_view text) {
    const auto found = table().find(text);
    return found != table().end() ? found->second : nullptr;
}

SEL Selector::named(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    if (const SEL known = namedIfKnown(text))
        return known;

    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::copy(text.begin(), text.end(), copy.get());
    std::unique_ptr<Selector> selector(new Selector);
    selector->text_ = copy.get();
    selector->length_ = static_cast<std::uint32_t>(text.size());
    selector->hash_ = static_cast<std::uint32_t>(TextHash()(text));
    selector->colons_ = static_cast<unsigned>(std::count(text.begin(), text.end(), ':'));
    table().emplace(selector->view(), selector.get());
    copy.release();
    return selector.release();
}
