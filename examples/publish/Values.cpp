#include "Values.h"

#include <algorithm>

namespace publish {

id Values::firstValue(std::string_view key) const {
    const auto found = std::find_if(elements_.rbegin(), elements_.rend(),
                                    [&](const Element &element) { return element.name == key; });
    return found != elements_.rend() ? found->value : page_->objectForKey(NSString::stringWith(key));
}

id Values::valueAt(std::string_view path) const {
    std::size_t dot = path.find('.');
    id value = firstValue(path.substr(0, dot));
    while (value && dot != std::string_view::npos) {
        path.remove_prefix(dot + 1);
        dot = path.find('.');
        auto *dictionary = qb::castOrNil<NSDictionary>(value);
        value = dictionary ? dictionary->objectForKey(NSString::stringWith(path.substr(0, dot))) : nullptr;
    }
    return IsNil(value) ? nullptr : value;
}

} // namespace publish
