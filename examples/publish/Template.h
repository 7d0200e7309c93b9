// Templates: text with places for values.
//
//   {{key.path}}                        the value, escaped for HTML
//   {{{key.path}}}                      the value as it is
//   {{link key.path}}                   the link from the page to the address, escaped
//   {{image key.path}}                  the image file's content as an address, escaped
//   {{#each key.path as name}}…{{/each}}  once for each element of a list;
//                                       with "by KEY" or "by KEY.REVERSE" before "as", in that order
//   {{#if key.path}}…{{else}}…{{/if}}   when there is a value with something in it
//   {{> name}}                          another template
//
// Behind the key of a value, link or image may stand 'or "TEXT"', for when there is none; the text alone may
// stand for the key.
#ifndef PUBLISH_TEMPLATE_H
#define PUBLISH_TEMPLATE_H

#include "Values.h"

#include <map>
#include <memory>
#include <string>

namespace publish {

class TemplateStore;

/// A template, ready to be filled.
class Template {
public:
    /// Reads `text`, which came from `file`. Returns null, with an error raised, when it is malformed.
    static std::unique_ptr<Template> read(NSString *text, NSString *file);

    /// Writes the filled template. Returns false, with an error raised, when a value or template is missing.
    bool fill(Values &values, TemplateStore &store, QBOutputStream *target) const;

private:
    friend class TemplateReader;

    enum class Kind { text, value, rawValue, link, image, each, when, include };

    struct Part {
        Kind kind;
        int line;
        std::string_view text;   // the text itself, a key path, or a template's name
        KeyPath keys{};          // of the key path
        std::string_view name{}; // of a loop's element
        std::vector<Part> parts{};
        std::vector<Part> otherwise{};
        Ref<NSString> fallback{}; // for a value that is missing; null when there is none
        Ref<NSString> sortKey{};  // of a loop; null when the list's order stays
    };

    bool fillParts(const std::vector<Part> &parts, Values &values, TemplateStore &store,
                   QBOutputStream *target) const;
    bool fillPart(const Part &part, Values &values, TemplateStore &store, QBOutputStream *target) const;
    bool fillValue(const Part &part, Values &values, QBOutputStream *target) const;
    NSString *textOf(const Part &part, id value, const Values &values) const;
    bool fillEach(const Part &part, Values &values, TemplateStore &store, QBOutputStream *target) const;
    bool fillInclude(const Part &part, Values &values, TemplateStore &store, QBOutputStream *target) const;
    id valueOf(const Part &part, const Values &values) const;
    bool failAt(const Part &part, int error) const;

    Ref<NSString> source_; // which the parts point into
    Ref<NSString> file_;
    std::vector<Part> parts_;
};

/// The templates of a directory, read when they are asked for.
class TemplateStore {
public:
    explicit TemplateStore(NSString *directory) : directory_(directory) {}

    /// Returns the template of that name; null, with an error raised, when it is malformed. `exists` says
    /// whether there is such a file.
    const Template *named(std::string_view name, bool &exists);

    /// The templates that are being filled, the outermost first.
    std::vector<std::string> &beingFilled() { return beingFilled_; }

private:
    Ref<NSString> directory_;
    std::map<std::string, std::unique_ptr<Template>, std::less<>> templates_;
    std::vector<std::string> beingFilled_;
};

} // namespace publish

#endif
