#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/CollectionEnumerator.h"
#include "Foundation/DeepWalk.h"
#include "Foundation/PropertyListFile.Tables.h"
#include "Foundation/PropertyListText.h"

#include <string>
#include <utility>

Class *NSDictionary::cls() {
    static const qb::Method methods[] = {
        qb::maker<"dictionary">(&NSDictionary::setUp),
        qb::maker<"dictionaryWithObject:forKey:">(&NSDictionary::setUpWithObjectForKey),
        qb::maker<"dictionaryWithDictionary:">(&NSDictionary::setUpWithDictionary),
        qb::initialiser<"initWithDictionary:">(&NSDictionary::setUpWithDictionary),
        qb::method<"count">(&NSDictionary::count),
        qb::method<"objectForKey:">(&NSDictionary::objectForKey),
        qb::method<"allKeys">(&NSDictionary::allKeys),
        qb::method<"allValues">(&NSDictionary::allValues),
        qb::method<"keyEnumerator">(&NSDictionary::keyEnumerator),
        qb::method<"objectEnumerator">(&NSDictionary::objectEnumerator),
        qb::method<"isEqualToDictionary:">(&NSDictionary::isEqualToDictionary),
        qb::initialiser<"initWithCoder:">(&NSDictionary::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSDictionary::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSDictionary", NSObject::cls(), {methods, qb::tables::dictionaryPropertyListFile()},
                  qb::construct<NSDictionary>, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

void NSDictionary::store(id key, id value) {
    if (!key || !value)
        throw InvalidArgumentException(
            "NSMutableDictionary setObject:forKey: must have an object and a key that are not nil.");
    qb::HashTable::Entry *entry = table_.find(key);
    if (!entry) {
        const Ref<NSObject> copy = key->copy();
        entry = &table_.entryFor(copy.get());
        ++mutations_;
    }
    value->retain();
    if (const id old = std::exchange(entry->value, value))
        old->release();
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

BOOL NSDictionary::setUpWithDictionary(NSDictionary *other) {
    if (!other)
        return YES;
    table_.reserve(other->count());
    for (const auto &[key, value] : *other)
        store(key, value);
    return YES;
}

BOOL NSDictionary::setUpWithObjectForKey(id object, id key) {
    store(key, object);
    return YES;
}

id NSDictionary::objectForKey(id key) const {
    const qb::HashTable::Entry *entry = key ? table_.find(key) : nullptr;
    return entry ? entry->value : nullptr;
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
    return static_cast<NSDictionary *>(copyWithZone(nullptr).get());
}

Ref<NSMutableDictionary> NSDictionary::mutableCopy() const {
    return NSMutableDictionary::initWithDictionary(static_cast<NSDictionary *>(self()));
}

void NSDictionary::throwMutated() {
    throw InvalidUseOfMethodException(
        "NSDictionary nextObject must have a dictionary that was not changed meanwhile.");
}

Class *NSMutableDictionary::cls() {
    static const qb::Method methods[] = {
        qb::maker<"dictionaryWithCapacity:">(&NSMutableDictionary::setUpWithCapacity),
        qb::initialiser<"initWithCapacity:">(&NSMutableDictionary::setUpWithCapacity),
        qb::method<"setObject:forKey:">(&NSMutableDictionary::setObjectForKey),
        qb::method<"removeObjectForKey:">(&NSMutableDictionary::removeObjectForKey),
        qb::method<"removeAllObjects">(&NSMutableDictionary::removeAllObjects),
    };
    static Class *const self =
        new Class("NSMutableDictionary", NSDictionary::cls(), {methods}, qb::construct<NSMutableDictionary>);
    return self;
}

Ref<NSMutableDictionary> NSMutableDictionary::initWith(std::initializer_list<Pair> keysAndValues) {
    auto dictionary = Ref<NSMutableDictionary>::adopt(new NSMutableDictionary);
    for (const auto &[key, value] : keysAndValues)
        dictionary->store(key, value);
    return dictionary;
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithCapacity(std::uint32_t capacity) {
    return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithCapacity, capacity);
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithDictionary(NSDictionary *other) {
    return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithDictionary, other);
}

BOOL NSMutableDictionary::setUpWithCapacity(std::uint32_t capacity) {
    table_.reserve(capacity);
    return YES;
}

void NSMutableDictionary::setObjectForKey(id object, id key) {
    store(key, object);
}

void NSMutableDictionary::removeObjectForKey(id key) {
    if (key && table_.remove(key))
        ++mutations_;
}

void NSMutableDictionary::removeAllObjects() {
    ++mutations_;
    table_.removeAll();
}

Ref<NSObject> NSMutableDictionary::copyWithZone(void *) const {
    return NSDictionary::initWithDictionary(static_cast<NSDictionary *>(self()));
}
