#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSDictionary.Tables.h"
#include "Foundation/Refill.h"

Class *NSMutableDictionary::cls() {
    static const qb::Method methods[] = {
        qb::maker<"dictionaryWithCapacity:">(&NSMutableDictionary::setUpWithCapacity),
        qb::initialiser<"initWithCapacity:">(&NSMutableDictionary::setUpWithCapacity),
        qb::method<"setObject:forKey:">(&NSMutableDictionary::setObjectForKey),
        qb::method<"removeObjectForKey:">(&NSMutableDictionary::removeObjectForKey),
        qb::method<"removeAllObjects">(&NSMutableDictionary::removeAllObjects),
        qb::method<"removeObjectsForKeys:">(&NSMutableDictionary::removeObjectsForKeys),
        qb::method<"addEntriesFromDictionary:">(&NSMutableDictionary::addEntriesFromDictionary),
        qb::method<"setDictionary:">(&NSMutableDictionary::setDictionary),
    };
    static Class *const self =
        new Class("NSMutableDictionary", NSDictionary::cls(),
                  {methods, qb::tables::mutableDictionaryAdding(), qb::tables::mutableDictionaryReplacing()},
                  qb::construct<NSMutableDictionary>);
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

Ref<NSMutableDictionary> NSMutableDictionary::initWithObjectsForKeys(NSArray *objects, NSArray *forKeys) {
    return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithObjectsForKeys, objects, forKeys);
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithDictionary(NSDictionary *other, BOOL copyItems) {
    return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithCopies, other, copyItems);
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithObjectsForKeys(const id *objects, const id *forKeys,
                                                                     std::uint32_t count) {
    return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithBuffers, objects, forKeys, count);
}

BOOL NSMutableDictionary::setUpWithCapacity(std::uint32_t capacity) {
    table_.reserve(capacity);
    return YES;
}

void NSMutableDictionary::setObjectForKey(id object, id key) {
    store(key, object);
}

void NSMutableDictionary::removeObjectForKey(id key) {
    qb::HashTable::Entry *const entry = key ? table_.find(key) : nullptr;
    if (!entry)
        return;
    ++mutations_; // first, because a destructor may come back to this dictionary
    table_.remove(entry);
}

void NSMutableDictionary::removeAllObjects() {
    ++mutations_;
    table_.removeAll();
}

void NSMutableDictionary::removeObjectsForKeys(NSArray *keys) {
    if (!keys)
        return;
    const Ref<NSArray> kept = NSArray::initWithArray(keys); // a removed value may own the array
    for (id key : *kept)
        removeObjectForKey(key);
}

void NSMutableDictionary::addEntriesFromDictionary(NSDictionary *other) {
    if (!other || other == this)
        return;
    const Ref<NSDictionary> kept = other; // which an old value may own
    for (const auto &[key, value] : *other)
        setObjectForKey(value, key);
}

void NSMutableDictionary::setDictionary(NSDictionary *other) {
    if (other == this)
        return;
    qb::refill(table_, mutations_, [&] {
        removeAllObjects();
        addEntriesFromDictionary(other);
    });
}

Ref<NSObject> NSMutableDictionary::copyWithZone(void *) const {
    return NSDictionary::initWithDictionary(static_cast<NSDictionary *>(self()));
}
