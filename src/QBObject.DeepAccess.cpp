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

#include "Foundation/NSObject.Tables.h"
#include "Foundation/PlainClasses.h"

#include <algorithm>
#include <string_view>

namespace {

// The components of a dotted key, one after the other.
class DottedKey {
public:
    explicit DottedKey(std::string_view text) : text_(text), dot_(text.find('.')) {}

    std::string_view component() const { return text_.substr(0, dot_); }
    bool isLast() const { return dot_ == std::string_view::npos; }
    void goOn() {
        text_.remove_prefix(dot_ + 1);
        dot_ = text_.find('.');
    }

    // Returns what has not been walked yet, the component included, as a string of its own, which the key
    // refers to from now on: whoever is sent a message may change the text that it came from.
    NSString *keep() {
        kept_ = NSString::initWith(text_);
        text_ = kept_->view();
        return kept_;
    }
    void keepOnce() {
        if (!kept_)
            keep();
    }

private:
    std::string_view text_;
    std::size_t dot_;
    Ref<NSString> kept_;
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

    // Whether the object is asked for the rest of a key, instead of being walked through here. Questions
    // inside each other take stack, and a copy of the rest each.
    static bool isDueTo(id object) {
        constexpr unsigned kMostInsideEachOther = 64;
        return !qb::isPlainDictionary(object) && !qb::isPlainArray(object) && open_ < kMostInsideEachOther;
    }

private:
    static inline constinit unsigned open_ = 0;
};

// --- Getting ---

id elementAt(NSArray *array, std::string_view component) {
    const std::uint32_t index = indexOf(component);
    return index < array->count() ? array->objectAtIndex(index) : nullptr;
}

id valueAt(id object, DottedKey &key) {
    if (qb::isPlainDictionary(object)) {
        const auto *const entry = static_cast<NSDictionary *>(object)->table().findText(key.component());
        return entry ? entry->value : nullptr;
    }
    if (qb::isPlainArray(object))
        return elementAt(static_cast<NSArray *>(object), key.component());
    key.keepOnce();
    if (auto *const array = qb::castOrNil<NSArray>(object))
        return elementAt(array, key.component());
    return object->objectForKey(NSString::stringWith(key.component()));
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
id mutableElementAt(NSMutableArray *array, std::string_view component) {
    static Protocol *const mutableCopying = Protocol::named("NSMutableCopying");
    const id element = elementAt(array, component);
    if (!element || element->conformsToProtocol(mutableCopying))
        return element;
    const id changed = element->makeMutable();
    if (changed != element)
        array->replaceObjectAtIndex(indexOf(component), changed);
    return changed;
}

// Returns the value of the key on the way to deeper ones, made mutable; what is no value as it is.
id mutableValueAt(id object, NSString *key) {
    const id value = object->objectForKey(key);
    if (IsNil(value))
        return value;
    const id changed = value->makeMutable();
    if (changed != value)
        object->setObjectForKey(changed, key);
    return changed;
}

void changeAt(id receiver, std::string_view text, const Change &change) {
    DottedKey key(text);
    key.keepOnce();
    for (Ref<NSObject> object = receiver; object;) {
        auto *const array = qb::castOrNil<NSMutableArray>(object.get());
        if (key.isLast())
            return array ? change.applyToIndex(array, indexOf(key.component()))
                         : change.applyToKey(object, NSString::stringWith(key.component()));
        object = array ? mutableElementAt(array, key.component())
                       : mutableValueAt(object, NSString::stringWith(key.component()));
        if (!array && change.kind == Change::kSet && IsNil(object))
            return raiseWrongKey(key.keep());
        key.goOn();
        if (object && Question::isDueTo(object))
            return change.askOf(object, key.keep());
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
    DottedKey rest(key->view());
    id object = valueAt(self(), rest);
    while (object && !rest.isLast()) {
        rest.goOn();
        if (Question::isDueTo(object)) {
            const Question question;
            return object->deepObjectForKey(rest.keep());
        }
        object = valueAt(object, rest);
    }
    return object;
}

void NSObject::setDeepObject(id object, NSString *forKey) {
    if (forKey)
        changeAt(this, forKey->view(), {Change::kSet, object});
    else if (!isKindOfClass(NSMutableArray::cls()))
        raiseWrongKey("(null)"_ns);
}

void NSObject::removeDeepObjectForKey(NSString *key) {
    if (key)
        changeAt(this, key->view(), {Change::kRemove, nullptr});
}
