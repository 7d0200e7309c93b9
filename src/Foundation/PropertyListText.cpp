#include "Foundation/PropertyListText.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Foundation/NSString.h>

#include "Foundation/DeepWalk.h"
#include "Text/Scan.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <variant>
#include <vector>

namespace qb {

namespace {

constexpr std::size_t kIndentStep = 2;
constexpr std::size_t kWidestIndent = 78; // as many blanks as a property-list stream writes

// What is escaped in valid UTF-8.
constexpr text::ByteSet kEscaped = text::ByteSet("\"\\\x7F").with(0x00, 0x1F);

void appendEscaped(std::string &target, unsigned char byte) {
    constexpr std::string_view kLetters = "abtnvfr"; // of the bytes from 7 on
    target += '\\';
    if (byte == '"' || byte == '\\') {
        target += static_cast<char>(byte);
    } else if (byte >= 7 && byte < 7 + kLetters.size()) {
        target += kLetters[byte - 7U];
    } else {
        for (const int shift : {6, 3, 0})
            target += static_cast<char>('0' + (byte >> shift & 7));
    }
}

void appendQuoted(std::string &target, std::string_view text) {
    const char *position = text.data();
    const char *const end = position + text.size();
    target += '"';
    while (position != end) {
        const char *const validEnd =
            position + text::validPrefix(position, static_cast<std::size_t>(end - position));
        while (position != validEnd) {
            const char *const stop = text::findIn(position, validEnd, kEscaped);
            target.append(position, stop);
            position = stop;
            if (stop != validEnd)
                appendEscaped(target, static_cast<unsigned char>(*position++));
        }
        if (position != end)
            appendEscaped(target, static_cast<unsigned char>(*position++));
    }
    target += '"';
}

// Writes containers by a stack of its own, so that their depth never meets the end of the thread's.
class TextWriter {
public:
    explicit TextWriter(std::string &target) : target_(target) {}

    void write(id value) {
        begin(value);
        while (!open_.empty())
            if (std::holds_alternative<NSDictionary::Iterator>(open_.back().next))
                goOnInDictionary(open_.back());
            else
                goOnInList(open_.back());
    }

private:
    enum class Phase { nextElement, value, endOfEntry };
    struct Container {
        id object;
        std::variant<NSArray::Iterator, NSSet::Iterator, NSDictionary::Iterator> next;
        Phase phase = Phase::nextElement;
        bool hasElement = false;
        Ref<NSObject> value = nullptr; // of the entry whose key is written
    };

    // Writes a value that holds no others, or opens a container.
    void begin(id value) {
        const ContainerKind kind = containerKindOf(value);
        if (kind != ContainerKind::none)
            return open(value, kind);
        if (auto *const string = castOrNil<NSString>(value))
            return appendPropertyListString(target_, string->view());
        if (auto *const data = castOrNil<NSData>(value)) {
            target_ += data->description()->view();
            return;
        }
        if (NSString *const text = value->stringValue())
            appendPropertyListString(target_, text->view());
    }

    void open(id container, ContainerKind kind) {
        const auto isSame = [container](const Container &other) { return other.object == container; };
        if (open_.size() == kDeepestDescription || std::any_of(open_.begin(), open_.end(), isSame)) {
            target_ += "...";
            return;
        }
        if (kind == ContainerKind::array)
            open_.push_back({container, static_cast<NSArray *>(container)->begin()});
        else if (kind == ContainerKind::set)
            open_.push_back({container, static_cast<NSSet *>(container)->begin()});
        else
            open_.push_back({container, static_cast<NSDictionary *>(container)->begin()});
        target_ += kind == ContainerKind::dictionary ? "{\n" : "(\n";
    }

    void goOnInList(Container &list) {
        const id element = std::holds_alternative<NSSet::Iterator>(list.next)
                               ? nextElement(std::get<NSSet::Iterator>(list.next))
                               : nextElement(std::get<NSArray::Iterator>(list.next));
        if (!element)
            return close("\n", ')');
        if (std::exchange(list.hasElement, true))
            target_ += ",\n";
        indent();
        begin(element);
    }

    // Returns the next element that is not nil-like; nil at the end.
    template <class Iterator>
    static id nextElement(Iterator &next) {
        while (!next.atEnd()) {
            const id element = *next;
            ++next;
            if (!element->isNil())
                return element;
        }
        return nullptr;
    }

    // One step of "key = value;": each may leave a container open, which is written first.
    void goOnInDictionary(Container &dictionary) {
        switch (dictionary.phase) {
        case Phase::nextElement:
            return beginEntry(dictionary);
        case Phase::value:
            target_ += " = ";
            dictionary.phase = Phase::endOfEntry;
            return begin(dictionary.value);
        case Phase::endOfEntry:
            target_ += ";\n";
            dictionary.value = nullptr;
            dictionary.phase = Phase::nextElement;
        }
    }

    void beginEntry(Container &dictionary) {
        auto &next = std::get<NSDictionary::Iterator>(dictionary.next);
        if (next.atEnd())
            return close("", '}');
        const auto [key, value] = *next;
        ++next;
        if (key->isNil() || value->isNil())
            return;
        dictionary.value = value;
        dictionary.phase = Phase::value;
        indent();
        begin(key);
    }

    void close(std::string_view lineEnd, char bracket) {
        open_.pop_back();
        target_ += lineEnd;
        indent();
        target_ += bracket;
    }

    void indent() { target_.append(std::min(open_.size() * kIndentStep, kWidestIndent), ' '); }

    std::string &target_;
    std::vector<Container> open_; // the outermost first
};

} // namespace

void appendPropertyListString(std::string &target, std::string_view text) {
    if (text::isPlistBare(text.data(), text.size()))
        target += text;
    else
        appendQuoted(target, text);
}

void appendPropertyListText(std::string &target, id value) {
    TextWriter(target).write(value);
}

} // namespace qb
