// The values that templates ask for.
#ifndef PUBLISH_VALUES_H
#define PUBLISH_VALUES_H

#include <QBFoundation/QBFoundation.h>

#include <string_view>
#include <vector>

namespace publish {

/// The keys of a path, "page.author.name". Templates keep them, so that their hashes are made once.
using KeyPath = std::vector<Ref<NSString>>;

/// Takes a path apart.
KeyPath keyPathOf(std::string_view text);

/// Where a template's keys are looked up: the page's values, and the elements of the loops around the place.
class Values {
public:
    explicit Values(NSDictionary *page) : page_(page) {}

    /// Returns the value of a key path, which is not empty: the first key is the name of a loop's element,
    /// the innermost first, or a key of the page's values; each next one is looked up in the dictionary
    /// before it. nil when there is no value.
    id valueAt(const KeyPath &path) const;

    /// Makes `element` known as `name` until `leave`.
    void enter(std::string_view name, id element) { elements_.push_back({name, element}); }
    void leave() { elements_.pop_back(); }

private:
    struct Element {
        std::string_view name;
        id value;
    };

    id firstValue(NSString *key) const;

    NSDictionary *page_;
    std::vector<Element> elements_;
};

} // namespace publish

#endif
