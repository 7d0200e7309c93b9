// Values inside values, by dotted keys.
//
// A key is walked in a loop, component by component, so that neither its length nor the depth of the values
// meets the end of the stack. Only what has a class of its own is asked by a message, for it may answer
// in its own way.
#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/QBStringAdditions.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "Foundation/NSObject.Tables.h"
#include "Foundation/PlainClasses.h"
#include "Text/Scan.h"

#include <algorithm>
#include <string_view>

namespace {

// The components of a dotted key, one after the other.
class DottedKey {
public:
    explicit DottedKey(std::string_view text)
        : component_(text.data()), dot_(component_), end_(component_ + text.size()) {
        findDot();
    }

    std::string_view component() const { return viewOf(component_, dot_); }
    // What has not been walked yet, the component included.
    std::string_view rest() const { return viewOf(component_, end_); }
    bool isLast() const { return dot_ == end_; }
    void goOn() {
        component_ = dot_ + 1;
        findDot();
    }

private:
    static std::string_view viewOf(const char *begin, const char *end) {
        return {begin, static_cast<std::size_t>(end - begin)};
    }
    void findDot() { dot_ = qb::text::findByteNearby(component_, end_, '.'); }

    const char *component_;
    const char *dot_; // where the component ends
    const char *end_;
};

// Returns the index that the component is; UINT32_MAX, which no element has, for any other text.
std::uint32_t indexOf(std::string_view component) {
    std::uint64_t index = 0;
    for (char character : component) {
        if (character < '0' || character > '9')
            return UINT32_MAX;
        index = std::min<std::uint64_t>(index * 10 + static_cast<std::uint64_t>(character - '0'), INT32_MAX);
    }
    return static_cast<std::uint32_t>(index);
}

// A message that hands the rest of a key to an object.
class Question {
public:
    Question() { ++open_; }
    ~Question() { --open_; }
    Question(const Question &) = delete;
    Question &operator=(const Question &) = delete;

    // Whether the object is asked for the rest of a key, instead of being sent a message for one component.
    // Questions inside each other take stack, and a copy of the rest each.
    static bool isDueTo(id object) {
        constexpr unsigned kMostInsideEachOther = 64;
        return !qb::isPlainContainer(object) && open_ < kMostInsideEachOther;
    }

private:
    static inline constinit unsigned open_ = 0;
};

// --- Getting ---

id elementAt(NSArray *array, std::string_view component) {
    const std::uint32_t index = indexOf(component);
    return index < array->count() ? array->objectAtIndex(index) : nullptr;
}

// Where a walk stands: the key is one of the object; or it is over, and the object its result.
struct Walk {
    id object;
    std::string_view key;
    bool isOver;
};

// Goes on as long as there are containers of the library's own, which take no messages.
[[gnu::always_inline]] inline Walk throughPlainContainers(id object, std::string_view dottedKey) {
    for (DottedKey key(dottedKey);; key.goOn()) {
        id value = nullptr;
        if (qb::isPlainDictionary(object)) {
            const auto &table = static_cast<NSDictionary *>(object)->table();
            const qb::HashTable::Entry *const entry = table.findText(key.component());
            value = entry ? entry->value : nullptr;
        } else if (qb::isPlainArray(object)) {
            const auto elements = static_cast<NSArray *>(object)->view();
            const std::uint32_t index = indexOf(key.component());
            value = index < elements.size() ? elements[index] : nullptr;
        } else {
            return {object, key.rest(), /*isOver=*/false};
        }
        if (!value || key.isLast())
            return {value, {}, /*isOver=*/true};
        object = value;
    }
}

id valueAt(id object, std::string_view component) {
    if (auto *const array = qb::castOrNil<NSArray>(object))
        return elementAt(array, component);
    return object->objectForKey(NSString::stringWith(component));
}

// Goes on at an object that takes messages. `isReceiver`: it is the one that was asked for the whole key. Not
// a part of the walk through containers, which then needs no registers for it.
[[gnu::noinline]] id objectByMessages(Walk walk, bool isReceiver) {
    const Ref<NSString> kept = NSString::initWith(walk.key); // whoever gets one may change the text
    walk.key = kept->view();
    for (; !walk.isOver; isReceiver = false) {
        const qb::Kept keptObject(walk.object); // whatever it does to what holds it
        if (!isReceiver && Question::isDueTo(walk.object)) {
            const Question question;
            return walk.object->deepObjectForKey(NSString::stringWith(walk.key));
        }
        DottedKey key(walk.key);
        const id value = valueAt(walk.object, key.component());
        if (!value || key.isLast())
            return value;
        key.goOn();
        walk = throughPlainContainers(value, key.rest());
    }
    return walk.object;
}

// --- Setting and removing ---

// What is done where a dotted key ends.
struct Change {
    enum Kind { kSet, kRemove } kind;
    Ref<NSObject> value;

    void askOf(id object, NSString *rest) const {
        const Question question;
        if (kind == kSet)
            object->setDeepObject(value, rest);
        else
            object->removeDeepObjectForKey(rest);
    }
    void applyToKey(id object, NSString *key) const {
        if (kind == kSet)
            object->setObjectForKey(value, key);
        else
            object->removeObjectForKey(key);
    }
    void applyToIndex(NSMutableArray *array, std::uint32_t index) const {
        if (kind == kSet && index <= array->count())
            array->insertObject(value, index);
        else if (kind == kRemove && index < array->count())
            array->removeObjectAtIndex(index);
    }
};

void raiseWrongKey(NSString *key) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorWithDefaultFormat(
            NSString::stringWithCString(qb::errorNumber(qb::kErrorWrongDeepKey)->format),
            qb::kErrorWrongDeepKey, key);
}

// Returns the element on the way to deeper ones, made mutable when it has no mutable copies; null without
// one.
Ref<NSObject> mutableElementAt(NSMutableArray *array, std::string_view component) {
    static Protocol *const mutableCopying = Protocol::named("NSMutableCopying");
    Ref<NSObject> element = elementAt(array, component);
    if (!element || element->conformsToProtocol(mutableCopying))
        return element;
    Ref<NSObject> changed = element->makeMutable();
    if (changed != element)
        array->replaceObjectAtIndex(indexOf(component), changed);
    return changed;
}

// Returns the value of the key on the way to deeper ones, made mutable; what nothing can be set in as it is.
Ref<NSObject> mutableValueAt(id object, NSString *key, Change::Kind kind) {
    Ref<NSObject> value = object->objectForKey(key);
    if (!value || (kind == Change::kSet && IsNil(value)))
        return value;
    Ref<NSObject> changed = value->makeMutable();
    if (changed != value)
        object->setObjectForKey(changed, key);
    return changed;
}

void changeAt(id receiver, NSString *dottedKey, const Change &change) {
    const Ref<NSString> kept = dottedKey->copy(); // whoever gets a message may change it
    DottedKey key(kept->view());
    for (Ref<NSObject> object = receiver; object;) {
        auto *const array = qb::castOrNil<NSMutableArray>(object.get());
        if (key.isLast())
            return array ? change.applyToIndex(array, indexOf(key.component()))
                         : change.applyToKey(object, NSString::stringWith(key.component()));
        object = array ? mutableElementAt(array, key.component())
                       : mutableValueAt(object, NSString::stringWith(key.component()), change.kind);
        if (!array && change.kind == Change::kSet && IsNil(object))
            return raiseWrongKey(NSString::stringWith(key.rest()));
        key.goOn();
        if (object && Question::isDueTo(object))
            return change.askOf(object, NSString::stringWith(key.rest()));
    }
}

} // namespace

BOOL isInteger(const char *text) {
    return text && indexOf(text) != UINT32_MAX;
}

std::span<const qb::Method> qb::tables::objectDeepAccess() {
    static const qb::Method methods[] = {
        qb::method<"deepObjectForKey:">(&NSObject::deepObjectForKey),
        qb::method<"setDeepObject:forKey:">(&NSObject::setDeepObject),
        qb::method<"removeDeepObjectForKey:">(&NSObject::removeDeepObjectForKey),
    };
    return methods;
}

id NSObject::deepObjectForKey(NSString *key) const {
    if (!key)
        return nullptr;
    const Walk walk = throughPlainContainers(self(), key->view());
    return walk.isOver ? walk.object : objectByMessages(walk, !qb::isPlainContainer(self()));
}

void NSObject::setDeepObject(id object, NSString *forKey) {
    if (forKey)
        changeAt(this, forKey, {Change::kSet, object});
    else if (!isKindOfClass(NSMutableArray::cls()))
        raiseWrongKey("(null)"_ns);
}

void NSObject::removeDeepObjectForKey(NSString *key) {
    if (key)
        changeAt(this, key, {Change::kRemove, nullptr});
}
