#include "Values.h"

#include "Reference.h"

#include <algorithm>

namespace publish {

KeyPath keyPathOf(std::string_view text) {
    const std::size_t dot = text.find('.');
    KeyPath path{NSString::initWith(text.substr(0, dot)), nullptr};
    if (dot != std::string_view::npos)
        path.rest = NSString::initWith(text.substr(dot + 1));
    return path;
}

id Values::firstValue(NSString *key) const {
    const auto found = std::find_if(elements_.rbegin(), elements_.rend(),
                                    [&](const Element &element) { return element.name == key->view(); });
    if (found != elements_.rend())
        return found->value;
    const id value = page_->objectForKey(key);
    return value ? value : referenceFor(key);
}

id Values::valueAt(const KeyPath &path) const {
    id value = firstValue(path.first);
    if (value && path.rest) {
        const qb::SavedErrors missingKeys(qb::SavedErrors::kDiscard); // the template says where it asked
        value = value->deepObjectForKey(path.rest);
    }
    return IsNil(value) ? nullptr : value;
}

NSString *Values::imageAt(NSString *name) const {
    NSString *const path = site_->stringByAppendingPathComponent(name);
    images_->addObject(path);
    return path;
}

NSString *Values::language() const {
    for (const char *setting : {"site.locale", "site.language"})
        if (auto *language = qb::castOrNil<NSString>(valueAt(keyPathOf(setting)));
            language && language->containsData())
            return language;
    return nullptr;
}

} // namespace publish
