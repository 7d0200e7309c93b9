// The values that templates ask for.
#ifndef PUBLISH_VALUES_H
#define PUBLISH_VALUES_H

#include <QBFoundation/QBFoundation.h>

#include <string_view>
#include <vector>

namespace publish {

/// A dotted key, "page.author.name". Templates keep them, so that the strings are made once.
struct KeyPath {
    Ref<NSString> first;
    Ref<NSString> rest; // a dotted key for the first one's value; null when there is none
};

/// Takes a dotted key apart.
KeyPath keyPathOf(std::string_view text);

/// Where a template's keys are looked up: the page's values, and the elements of the loops around the place.
class Values {
public:
    /// `url`: the page's own address, `site`: the directory that the names of files are relative to,
    /// `images`: takes the paths of files that pages are made of.
    Values(NSDictionary *page, NSString *url, NSString *site, NSMutableSet *images)
        : page_(page), url_(url), site_(site), images_(images) {}

    NSString *url() const { return url_; }
    /// Returns the path of an image that the page is made of, so that it can be watched.
    NSString *imageAt(NSString *name) const;
    /// The language that the site's texts are sorted by: its setting "locale", or else "language"; nil
    /// without either.
    NSString *language() const;

    /// Returns the value of a dotted key: the first component is the name of a loop's element, the innermost
    /// first, or a key of the page's values or of the library's reference; the rest is a dotted key of the
    /// value there, as `deepObjectForKey:` takes it. nil when there is no value, also where a value on the
    /// way has no keys.
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
    NSString *url_;
    NSString *site_;
    NSMutableSet *images_;
    std::vector<Element> elements_;
};

} // namespace publish

#endif
