#include "Values.h"

#include <algorithm>

namespace publish {

KeyPath keyPathOf(std::string_view text) {
    KeyPath keys;
    for (;;) {
        const std::size_t dot = std::min(text.find('.'), text.size());
        keys.push_back(NSString::initWith(text.substr(0, dot)));
        if (dot == text.size())
            return keys;
        text.remove_prefix(dot + 1);
    }
}

id Values::firstValue(NSString *key) const {
    const auto found = std::find_if(elements_.rbegin(), elements_.rend(),
                                    [&](const Element &element) { return element.name == key->view(); });
    return found != elements_.rend() ? found->value : page_->objectForKey(key);
}

id Values::valueAt(const KeyPath &path) const {
    id value = firstValue(path.front());
    for (std::size_t i = 1; value && i < path.size(); ++i) {
        auto *dictionary = qb::castOrNil<NSDictionary>(value);
        value = dictionary ? dictionary->objectForKey(path[i]) : nullptr;
    }
    return IsNil(value) ? nullptr : value;
}

} // namespace publish
