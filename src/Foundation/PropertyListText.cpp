#include "Foundation/PropertyListText.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Foundation/NSString.h>

#include "Foundation/DeepWalk.h"
#include "Text/PlistText.h"
#include "Text/Room.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <variant>
#include <vector>

namespace qb {

namespace {

constexpr std::size_t kIndentStep = 2;
constexpr std::size_t kWidestIndent = 78; // as many blanks as a property-list stream writes

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
        Ref<NSObject> object; // kept, whatever its elements do for their texts
        std::variant<NSArray::Iterator, NSSet::Iterator, NSDictionary::Iterator> next;
        Phase phase = Phase::nextElement;
        bool hasBegun = false;
        bool hasElement = false;       // of a list: one is written
        Ref<NSObject> value = nullptr; // of the entry whose key is written
    };

    // Writes a value that holds no others, or opens a container.
    void begin(id value) {
        const ContainerKind kind = containerKindOf(value);
        if (kind != ContainerKind::none)
            return open(value, kind);
        if (auto *const string = castOrNil<NSString>(value))
            return appendPropertyListString(target_, string->view());
        const NSAutoreleasePool pool; // a long container makes many texts
        if (auto *const data = castOrNil<NSData>(value))
            return text::append(target_, data->description()->view());
        if (NSString *const text = value->stringValue())
            appendPropertyListString(target_, text->view());
    }

    void open(id container, ContainerKind kind) {
        const auto isSame = [container](const Container &other) { return other.object.get() == container; };
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
        const Ref<NSObject> element = std::holds_alternative<NSSet::Iterator>(list.next)
                                          ? nextElement(list, std::get<NSSet::Iterator>(list.next))
                                          : nextElement(list, std::get<NSArray::Iterator>(list.next));
        if (!element)
            return close(list.hasElement ? "\n" : "", ')');
        if (std::exchange(list.hasElement, true))
            target_ += ",\n";
        indent();
        begin(element);
    }

    // Returns the next element that is not nil-like, kept, whatever it does when it is asked; nil at the end.
    template <class Iterator>
    static Ref<NSObject> nextElement(Container &list, Iterator &next) {
        while (isAtNext(list, next))
            if (Ref<NSObject> element = *next; !element->isNil())
                return element;
        return nullptr;
    }

    // Moves on, which notices a container that a value's text has changed; returns whether there is one more.
    template <class Iterator>
    static bool isAtNext(Container &container, Iterator &next) {
        if (std::exchange(container.hasBegun, true))
            ++next;
        return !next.atEnd();
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
        if (!isAtNext(dictionary, next))
            return close("", '}');
        const Ref<NSObject> key = (*next).first;
        dictionary.value = (*next).second;
        if (key->isNil() || dictionary.value->isNil())
            return;
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
    const std::size_t before = target.size();
    const std::uint64_t length = text::plistTextLength(text.data(), text.size());
    text::requireRoom(target, length + text::kPlistTextSlack);
    const std::size_t end = before + static_cast<std::size_t>(length);
    target.resize(end + text::kPlistTextSlack);
    text::writePlistText(text.data(), text.size(), target.data() + before);
    target.resize(end);
}

void appendPropertyListText(std::string &target, id value) {
    TextWriter(target).write(value);
}

} // namespace qb
