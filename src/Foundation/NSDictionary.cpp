#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/CollectionEnumerator.h"
#include "Foundation/DeepWalk.h"
#include "Foundation/NSDictionary.Tables.h"
#include "Foundation/PropertyListText.h"
#include "Foundation/Required.h"
#include "Foundation/Sort.h"

#include <string>
#include <utility>
#include <vector>

Class *NSDictionary::cls() {
    static const qb::Method methods[] = {
        qb::maker<"dictionary">(&NSDictionary::setUp),
        qb::maker<"dictionaryWithObject:forKey:">(&NSDictionary::setUpWithObjectForKey),
        qb::maker<"dictionaryWithDictionary:">(&NSDictionary::setUpWithDictionary),
        qb::maker<"dictionaryWithObjects:forKeys:">(&NSDictionary::setUpWithObjectsForKeys),
        qb::maker<"dictionaryWithObjects:forKeys:count:">(&NSDictionary::setUpWithBuffers),
        qb::maker<"dictionaryWithObjectsAndKeys:">(&NSDictionary::setUpWithObjectsAndKeys),
        qb::initialiser<"initWithObject:forKey:">(&NSDictionary::setUpWithObjectForKey),
        qb::initialiser<"initWithDictionary:">(&NSDictionary::setUpWithDictionary),
        qb::initialiser<"initWithDictionary:copyItems:">(&NSDictionary::setUpWithCopies),
        qb::initialiser<"initWithObjects:forKeys:">(&NSDictionary::setUpWithObjectsForKeys),
        qb::initialiser<"initWithObjects:forKeys:count:">(&NSDictionary::setUpWithBuffers),
        qb::initialiser<"initWithObjectsAndKeys:">(&NSDictionary::setUpWithObjectsAndKeys),
        qb::maker<"dictionaryWithContentsOfFile:">(&NSDictionary::setUpWithContentsOfFile),
        qb::initialiser<"initWithContentsOfFile:">(&NSDictionary::setUpWithContentsOfFile),
        qb::method<"count">(&NSDictionary::count),
        qb::method<"objectForKey:", id(id)>(&NSDictionary::objectForKey),
        qb::method<"objectsForKeys:notFoundMarker:">(&NSDictionary::objectsForKeys),
        qb::method<"allKeysForObject:">(&NSDictionary::allKeysForObject),
        qb::method<"keysSortedByValueUsingSelector:">(&NSDictionary::keysSortedByValueUsingSelector),
        qb::method<"allKeys">(&NSDictionary::allKeys),
        qb::method<"allValues">(&NSDictionary::allValues),
        qb::method<"getObjects:andKeys:">(&NSDictionary::getObjects),
        qb::method<"keyEnumerator">(&NSDictionary::keyEnumerator),
        qb::method<"objectEnumerator">(&NSDictionary::objectEnumerator),
        qb::method<"isEqualToDictionary:">(&NSDictionary::isEqualToDictionary),
        qb::initialiser<"initWithCoder:">(&NSDictionary::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSDictionary::encodeWithCoder),
    };
    static Class *const self = new Class(
        "NSDictionary", NSObject::cls(),
        {methods, qb::tables::dictionaryPropertyListFile(), qb::tables::dictionaryReading(), makingMethods(),
         keyListMethods(), qb::tables::dictionaryChecks(), qb::tables::dictionaryFileAttributes(),
         qb::tables::dictionaryReplacing(), environmentMethods()},
        qb::construct<NSDictionary>, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

void NSDictionary::store(id key, id value) {
    if (!key || !value)
        throw InvalidArgumentException(
            "NSMutableDictionary setObject:forKey: must have an object and a key that are not nil.");
    Ref<NSObject> kept = value; // the key's own operations may let go of it
    qb::HashTable::Entry &entry = table_.entryForCopyOf(key);
    if (!entry.value) // it is new
        ++mutations_;
    if (const id old = std::exchange(entry.value, kept.detach()))
        old->release();
}

void NSDictionary::storeNew(id key, id value) {
    if (!table_.find(key))
        store(key, value);
}

Ref<NSDictionary> NSDictionary::initWith(std::initializer_list<Pair> keysAndValues) {
    auto dictionary = Ref<NSDictionary>::adopt(new NSDictionary);
    for (const auto &[key, value] : keysAndValues)
        dictionary->store(key, value);
    return dictionary;
}

Ref<NSDictionary> NSDictionary::initWithDictionary(NSDictionary *other) {
    return qb::init<NSDictionary>(&NSDictionary::setUpWithDictionary, other);
}

Ref<NSDictionary> NSDictionary::initWithDictionary(NSDictionary *other, BOOL copyItems) {
    return qb::init<NSDictionary>(&NSDictionary::setUpWithCopies, other, copyItems);
}

Ref<NSDictionary> NSDictionary::initWithObjectsForKeys(NSArray *objects, NSArray *forKeys) {
    return qb::init<NSDictionary>(&NSDictionary::setUpWithObjectsForKeys, objects, forKeys);
}

Ref<NSDictionary> NSDictionary::initWithObjectsForKeys(const id *objects, const id *forKeys,
                                                       std::uint32_t count) {
    return qb::init<NSDictionary>(&NSDictionary::setUpWithBuffers, objects, forKeys, count);
}

BOOL NSDictionary::setUpWithDictionary(NSDictionary *other) {
    return setUpWithCopies(other, /*copyItems=*/NO);
}

BOOL NSDictionary::setUpWithCopies(NSDictionary *other, BOOL copyItems) {
    if (!other)
        return YES;
    table_.reserve(other->count());
    for (const auto &[key, value] : *other) {
        // Whatever is done to copy the value.
        const Ref<NSObject> kept = copyItems ? key : nullptr, keptValue = copyItems ? value : nullptr;
        store(key, copyItems ? value->copy().autorelease() : value);
    }
    return YES;
}

BOOL NSDictionary::setUpWithObjectsForKeys(NSArray *objects, NSArray *forKeys) {
    const std::uint32_t count = objects ? objects->count() : 0;
    if (count != (forKeys ? forKeys->count() : 0))
        throw InvalidArgumentException(
            "NSDictionary initWithObjects:forKeys: must have as many objects as keys.");
    if (count == 0)
        return YES;
    const Ref<NSArray> values = NSArray::initWith(objects->view()),
                       keys = NSArray::initWith(forKeys->view()); // what a key's operations don't change
    return setUpWithBuffers(values->view().data(), keys->view().data(), count);
}

BOOL NSDictionary::setUpWithBuffers(const id *objects, const id *forKeys, std::uint32_t count) {
    if (count != 0 && (!objects || !forKeys))
        throw InvalidArgumentException(
            "NSDictionary initWithObjects:forKeys:count: must have objects and keys that are not NULL.");
    table_.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i)
        store(forKeys[i], objects[i]);
    return YES;
}

BOOL NSDictionary::setUpWithObjectsAndKeys(const qb::ArgList &objectsAndKeys) {
    if (objectsAndKeys.count() % 2 != 0)
        throw InvalidArgumentException(
            "NSDictionary initWithObjectsAndKeys: must have a key behind each object.");
    for (std::uint32_t i = 0; i < objectsAndKeys.count(); i += 2)
        store(objectsAndKeys[i + 1].as<id>(), objectsAndKeys[i].as<id>());
    return YES;
}

BOOL NSDictionary::setUpWithObjectForKey(id object, id key) {
    store(key, object);
    return YES;
}

id NSDictionary::objectForKey(id key) const {
    return key ? table_.valueFor(key) : nullptr;
}

NSArray *NSDictionary::allKeys() const {
    auto keys = NSMutableArray::initWithCapacity(count());
    for (const auto &[key, value] : *this)
        keys->addObject(key);
    return keys.autorelease();
}

NSArray *NSDictionary::allValues() const {
    auto values = NSMutableArray::initWithCapacity(count());
    for (const auto &[key, value] : *this)
        values->addObject(value);
    return values.autorelease();
}

NSArray *NSDictionary::objectsForKeys(NSArray *keys, id notFoundMarker) const {
    const Ref<NSArray> keptKeys = keys; // whatever the keys' operations do
    const Ref<NSObject> keptMarker = notFoundMarker;
    auto objects = NSMutableArray::initWithCapacity(keys ? keys->count() : 0);
    for (std::uint32_t i = 0; keys && i < keys->count(); ++i) {
        const id object = objectForKey(keys->objectAtIndex(i));
        objects->addObject(object ? object : notFoundMarker);
    }
    return objects.autorelease();
}

void NSDictionary::getObjects(id *objects, id *andKeys) const {
    for (const auto &[key, value] : *this) {
        if (objects)
            *objects++ = value;
        if (andKeys)
            *andKeys++ = key;
    }
}

NSArray *NSDictionary::allKeysForObject(id object) const {
    const Ref<NSObject> kept = object; // whatever comparisons do
    NSMutableArray *const keys = NSMutableArray::array();
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> keptKey = key, keptValue = value;
        if (value == object || (object && object->isEqual(value)))
            keys->addObject(key);
    }
    return keys;
}

NSArray *NSDictionary::keysSortedByValueUsingSelector(SEL comparator) const {
    const Ref<NSArray> keys = allKeys(); // retained, whatever a comparison does to the dictionary
    const Ref<NSArray> values = allValues();
    std::vector<Pair> entries;
    for (std::uint32_t i = 0; i < keys->count(); ++i)
        entries.emplace_back(keys->view()[i], values->view()[i]);
    std::vector<Pair> buffer(entries.size());
    qb::mergeSort(std::span(entries), std::span(buffer), [=](const Pair &a, const Pair &b) {
        return qb::compareByMessage(a.second, comparator, b.second) > 0;
    });
    auto sorted = NSMutableArray::initWithCapacity(keys->count());
    for (const auto &[key, value] : entries)
        sorted->addObject(key);
    return sorted.autorelease();
}

// --- Enumeration ---

namespace {

id keyOf(NSDictionary::Pair entry) {
    return entry.first;
}

id valueOf(NSDictionary::Pair entry) {
    return entry.second;
}

} // namespace

NSEnumerator *NSDictionary::keyEnumerator() const {
    return qb::enumeratorOf<NSDictionary, &keyOf>(this);
}

NSEnumerator *NSDictionary::objectEnumerator() const {
    return qb::enumeratorOf<NSDictionary, &valueOf>(this);
}

// --- Values ---

BOOL NSDictionary::isEqualToDictionary(NSDictionary *other) const {
    return other && qb::areContainersEqual(self(), other);
}

BOOL NSDictionary::isEqual(id other) const {
    return other && qb::areContainersEqual(self(), other);
}

std::uint32_t NSDictionary::hash() const {
    return qb::hashOfContainer(self());
}

NSString *NSDictionary::description() const {
    std::string text;
    qb::appendPropertyListText(text, self());
    return NSString::stringWith(text);
}

Ref<NSObject> NSDictionary::copyWithZone(void *) const {
    return self();
}

Ref<NSObject> NSDictionary::mutableCopyWithZone(void *) const {
    return mutableCopy();
}

Ref<NSDictionary> NSDictionary::copy() const {
    return qb::requiredCopy(this, "NSDictionary copyWithZone:");
}

Ref<NSMutableDictionary> NSDictionary::mutableCopy() const {
    return NSMutableDictionary::initWithDictionary(static_cast<NSDictionary *>(self()));
}

void NSDictionary::throwMutated() {
    throw InvalidUseOfMethodException(
        "NSDictionary nextObject must have a dictionary that was not changed meanwhile.");
}
