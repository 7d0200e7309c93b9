#include "Template.h"

#include "Files.h"
#include "Interruption.h"
#include "Links.h"
#include "Messages.h"
#include "Sorting.h"

#include <algorithm>
#include <utility>

namespace publish {

namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    return text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

// Takes the first word off `text`.
std::string_view takeWord(std::string_view &text) {
    const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

} // namespace

/// Takes a template's text apart.
class TemplateReader {
public:
    TemplateReader(Template &target, std::string_view text, NSString *file)
        : target_(target), rest_(text), file_(file) {}

    bool read() { return readParts(target_.parts_, /*opener=*/{}, nullptr); }

private:
    using Part = Template::Part;
    using Kind = Template::Kind;

    // Loops and conditions may stand in each other this deep.
    static constexpr unsigned kDeepestNesting = 64;

    bool failAt(int line, const char *what) {
        return fail(__LINE__, kErrorMalformedTemplate, file_, line, what);
    }
    bool failHere(const char *what) { return failAt(line_, what); }

    // Reads up to the end of the text or, inside of a block, to the tag that closes `opener`. Behind "else"
    // the parts go to `otherwise`.
    bool readParts(std::vector<Part> &parts, std::string_view opener, std::vector<Part> *otherwise) {
        std::vector<Part> *current = &parts;
        const int begin = line_;
        for (;;) {
            readText(*current);
            if (rest_.empty())
                return opener.empty() || failAt(begin, "a block is not closed");
            const bool isRaw = rest_.starts_with("{{{");
            std::string_view tag;
            if (!readTag(isRaw ? "}}}" : "}}", tag))
                return false;
            if (!isRaw && tag == "else") {
                if (!otherwise || current == otherwise)
                    return failHere("there is an 'else' without its 'if'");
                current = otherwise;
            } else if (!isRaw && tag.starts_with('/')) {
                return (!opener.empty() && tag.substr(1) == opener) ||
                       failHere("a block is closed that is not open");
            } else if (!readPlace(*current, tag, isRaw)) {
                return false;
            }
        }
    }

    void readText(std::vector<Part> &parts) {
        line_ += std::exchange(linesInTag_, 0);
        const std::size_t end = std::min(rest_.find("{{"), rest_.size());
        if (end)
            parts.push_back({Kind::text, line_, rest_.substr(0, end)});
        line_ += take(end);
    }

    // Until the text behind it is read, the line is that of the tag's beginning.
    bool readTag(std::string_view close, std::string_view &tag) {
        const std::size_t end = rest_.find(close);
        if (end == std::string_view::npos)
            return failHere("a '{{' is not closed");
        tag = trimmed(rest_.substr(close.size(), end - close.size()));
        linesInTag_ = take(end + close.size());
        return !tag.empty() || failHere("a pair of braces is empty");
    }

    // Takes the word off that says what becomes of the value.
    static Kind kindOfValue(std::string_view &tag) {
        std::string_view operand = tag;
        const std::string_view word = takeWord(operand);
        if (operand.empty() || (word != "link" && word != "image"))
            return Kind::value;
        tag = operand;
        return word == "link" ? Kind::link : Kind::image;
    }

    // Reads what the value comes from: 'KEY', 'KEY or "TEXT"' or '"TEXT"'.
    bool readOperand(std::string_view tag, Part &place) {
        place.text = tag;
        if (tag.ends_with('"')) {
            const std::size_t quote = tag.find('"');
            std::string_view word = trimmed(tag.substr(0, quote));
            tag = {};
            if (!word.empty()) {
                if (!word.ends_with(" or"))
                    return failHere("a text in quotes stands alone or as 'KEY or \"TEXT\"'");
                tag = trimmed(word.substr(0, word.size() - 3));
            }
            if (quote + 1 == place.text.size())
                return failHere("a quote is not closed");
            place.fallback = NSString::initWith(place.text.substr(quote + 1, place.text.size() - quote - 2));
        }
        if (!tag.empty())
            place.keys = keyPathOf(tag);
        return true;
    }

    bool readPlace(std::vector<Part> &parts, std::string_view tag, bool isRaw) {
        if (isRaw || (tag[0] != '#' && tag[0] != '>')) {
            parts.push_back({isRaw ? Kind::rawValue : kindOfValue(tag), line_, tag});
            return readOperand(tag, parts.back());
        }
        if (tag[0] == '>') {
            parts.push_back({Kind::include, line_, trimmed(tag.substr(1))});
            return true;
        }
        return readBlock(parts, tag.substr(1));
    }

    // Reads what stands behind a loop's key; all of it may be missing.
    static bool readLoop(std::string_view &tag, Part &block) {
        std::string_view word = takeWord(tag);
        if (word == "by") {
            block.sortKey = NSString::initWith(takeWord(tag));
            word = takeWord(tag);
        }
        if (word == "as")
            block.name = takeWord(tag);
        return (word.empty() || word == "as") && !block.name.empty() &&
               (!block.sortKey || block.sortKey->containsData());
    }

    bool readBlock(std::vector<Part> &parts, std::string_view tag) {
        const std::string_view opener = takeWord(tag);
        if (opener != "each" && opener != "if")
            return failHere("a block is neither 'each' nor 'if'");
        const std::string_view path = takeWord(tag);
        Part block{opener == "each" ? Kind::each : Kind::when, line_, path, keyPathOf(path), "item"};
        const bool isComplete = block.kind == Kind::when || readLoop(tag, block);
        if (block.text.empty() || !isComplete || !tag.empty())
            return failHere("a block begins as '#each KEY by SORTKEY as NAME' or '#if KEY'");
        if (++depth_ > kDeepestNesting)
            return failHere("blocks stand too deep in each other");
        const bool isRead =
            readParts(block.parts, opener, block.kind == Kind::when ? &block.otherwise : nullptr);
        --depth_;
        parts.push_back(std::move(block));
        return isRead;
    }

    // Returns how many lines end in what is taken off.
    int take(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return static_cast<int>(std::ranges::count(taken, '\n'));
    }

    Template &target_;
    std::string_view rest_;
    NSString *file_;
    int line_ = 1;
    int linesInTag_ = 0;
    unsigned depth_ = 0;
};

std::unique_ptr<Template> Template::read(NSString *text, NSString *file) {
    auto made = std::make_unique<Template>();
    made->source_ = text;
    made->file_ = file;
    if (!TemplateReader(*made, text->view(), file).read())
        return nullptr;
    return made;
}

bool Template::failAt(const Part &part, int error) const {
    return fail(__LINE__, error, file_.get(), part.line, NSString::stringWith(part.text));
}

bool Template::fill(Values &values, TemplateStore &store, QBOutputStream *target) const {
    return fillParts(parts_, values, store, target);
}

bool Template::fillParts(const std::vector<Part> &parts, Values &values, TemplateStore &store,
                         QBOutputStream *target) const {
    return std::all_of(parts.begin(), parts.end(),
                       [&](const Part &part) { return fillPart(part, values, store, target); });
}

bool Template::fillPart(const Part &part, Values &values, TemplateStore &store,
                        QBOutputStream *target) const {
    if (wasInterrupted()) // for templates that loop over much, in each other, take their time
        return false;
    switch (part.kind) {
    case Kind::text:
        target->writeBuffer(part.text.data(), static_cast<std::uint32_t>(part.text.size()));
        return true;
    case Kind::value:
    case Kind::rawValue:
    case Kind::link:
    case Kind::image:
        return fillValue(part, values, target);
    case Kind::each:
        return fillEach(part, values, store, target);
    case Kind::when: {
        const id value = values.valueAt(part.keys);
        return fillParts(value && value->containsData() ? part.parts : part.otherwise, values, store, target);
    }
    case Kind::include:
        return fillInclude(part, values, store, target);
    }
    return true;
}

id Template::valueOf(const Part &part, const Values &values) const {
    id value = part.keys.first ? values.valueAt(part.keys) : nullptr;
    if (!value)
        value = part.fallback;
    if (!value)
        failAt(part, kErrorMissingKey);
    return value;
}

bool Template::fillValue(const Part &part, Values &values, QBOutputStream *target) const {
    const id value = valueOf(part, values);
    NSString *const text = value ? textOf(part, value, values) : nullptr;
    if (!text)
        return false;
    target->writeObject(part.kind == Kind::rawValue ? text : text->stringWithEscapedHtml());
    return true;
}

// Returns what the part makes of its value; nil, with an error raised, when it can't.
NSString *Template::textOf(const Part &part, id value, const Values &values) const {
    NSString *const text = value->stringValue();
    if (part.kind == Kind::link)
        return linkFrom(values.url(), text);
    if (part.kind != Kind::image)
        return text;
    if (!isInside(text->view())) {
        fail(__LINE__, kErrorUnsafePath,
             NSString::stringWithRestrictedFormat("%s:%d", file_->cString(), part.line), text);
        return nullptr;
    }
    NSString *const image = inlineImage(values.imageAt(text));
    if (!image)
        fail(__LINE__, kErrorMalformedTemplate, file_.get(), part.line,
             "an image can't be put into the page");
    return image;
}

bool Template::fillEach(const Part &part, Values &values, TemplateStore &store,
                        QBOutputStream *target) const {
    const id value = valueOf(part, values);
    auto *list = qb::castOrNil<NSArray>(value);
    if (!list)
        return value && failAt(part, kErrorNotAList);
    if (part.sortKey) {
        list = sortedByKey(list, part.sortKey, values.language());
        if (hasFailed())
            return failAt(part, kErrorNotSortable);
    }
    for (id element : *list) {
        const NSAutoreleasePool pool;
        values.enter(part.name, element);
        const bool isFilled = fillParts(part.parts, values, store, target);
        values.leave();
        if (!isFilled)
            return false;
    }
    return true;
}

bool Template::fillInclude(const Part &part, Values &values, TemplateStore &store,
                           QBOutputStream *target) const {
    bool exists = false;
    const Template *const included = store.named(part.text, exists);
    if (!exists)
        return failAt(part, kErrorUnknownTemplate);
    if (!included)
        return false;
    auto &beingFilled = store.beingFilled();
    if (std::find(beingFilled.begin(), beingFilled.end(), part.text) != beingFilled.end())
        return failAt(part, kErrorTemplateLoop);
    constexpr std::size_t kDeepestInclusion = 64;
    if (beingFilled.size() >= kDeepestInclusion)
        return fail(__LINE__, kErrorMalformedTemplate, file_.get(), part.line,
                    "templates include each other too deeply");
    beingFilled.emplace_back(part.text);
    const bool isFilled = included->fill(values, store, target);
    beingFilled.pop_back();
    return isFilled;
}

const Template *TemplateStore::named(std::string_view name, bool &exists) {
    exists = true;
    if (const auto found = templates_.find(name); found != templates_.end())
        return found->second.get();
    NSString *const file =
        directory_->stringByAppendingPathComponent(NSString::stringWith(std::string(name) + ".html"));
    exists = isInside(name) && OSFilePath::fileExistsAtPath(file);
    if (!exists)
        return nullptr;
    NSString *const text = readText(file);
    auto &slot = templates_[std::string(name)];
    slot = text ? Template::read(text, file) : nullptr;
    return slot.get();
}

} // namespace publish
