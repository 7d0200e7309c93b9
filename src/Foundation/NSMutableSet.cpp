#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Refill.h"
#include "Foundation/Required.h"

Class *NSMutableSet::cls() {
    static const qb::Method methods[] = {
        qb::maker<"setWithCapacity:">(&NSMutableSet::setUpWithCapacity),
        qb::initialiser<"initWithCapacity:">(&NSMutableSet::setUpWithCapacity),
        qb::method<"addObject:">(&NSMutableSet::addObject),
        qb::method<"addObjectsFromArray:">(&NSMutableSet::addObjectsFromArray),
        qb::method<"removeObject:">(&NSMutableSet::removeObject),
        qb::method<"removeAllObjects">(&NSMutableSet::removeAllObjects),
        qb::method<"unionSet:">(&NSMutableSet::unionSet),
        qb::method<"minusSet:">(&NSMutableSet::minusSet),
        qb::method<"intersectSet:">(&NSMutableSet::intersectSet),
        qb::method<"setSet:">(&NSMutableSet::setSet),
    };
    static Class *const self =
        new Class("NSMutableSet", NSSet::cls(), {methods}, qb::construct<NSMutableSet>);
    return self;
}

Ref<NSMutableSet> NSMutableSet::initWith(std::span<const id> elements) {
    return qb::init<NSMutableSet>(&NSMutableSet::setUpWithObjects, elements.data(),
                                  qb::countOf(elements, "NSMutableSet initWithObjects:count:"));
}

Ref<NSMutableSet> NSMutableSet::initWithCapacity(std::uint32_t capacity) {
    return qb::init<NSMutableSet>(&NSMutableSet::setUpWithCapacity, capacity);
}

Ref<NSMutableSet> NSMutableSet::initWithArray(NSArray *array) {
    return qb::init<NSMutableSet>(&NSMutableSet::setUpWithArray, array);
}

Ref<NSMutableSet> NSMutableSet::initWithSet(NSSet *other) {
    return qb::init<NSMutableSet>(&NSMutableSet::setUpWithSet, other);
}

Ref<NSMutableSet> NSMutableSet::initWithSet(NSSet *other, BOOL copyItems) {
    return qb::init<NSMutableSet>(&NSMutableSet::setUpWithCopies, other, copyItems);
}

BOOL NSMutableSet::setUpWithCapacity(std::uint32_t capacity) {
    table_.reserve(capacity);
    return YES;
}

void NSMutableSet::addObject(id object) {
    insert(object);
}

void NSMutableSet::addObjectsFromArray(NSArray *array) {
    if (!array)
        return;
    for (id object : *array)
        insert(object);
}

void NSMutableSet::removeObject(id object) {
    qb::HashTable::Entry *const entry = object ? table_.find(object) : nullptr;
    if (!entry)
        return;
    ++mutations_; // first, because a destructor may come back to this set
    table_.remove(entry);
}

void NSMutableSet::removeAllObjects() {
    ++mutations_;
    table_.removeAll();
}

void NSMutableSet::unionSet(NSSet *other) {
    if (!other || other == this)
        return;
    for (id object : *other)
        insert(object);
}

void NSMutableSet::minusSet(NSSet *other) {
    if (!other)
        return;
    if (other == this)
        return removeAllObjects();
    const Ref<NSSet> kept = other; // which an element of this set may own
    for (id object : *other)
        removeObject(object);
}

void NSMutableSet::intersectSet(NSSet *other) {
    if (other == this)
        return;
    const Ref<NSSet> before = NSSet::initWithSet(this); // walked while this set changes
    for (id object : *before)
        if (!other || !other->containsObject(object))
            removeObject(object);
}

void NSMutableSet::setSet(NSSet *other) {
    if (other == this)
        return;
    const Ref<NSSet> keeper = other; // whatever its elements' own operations do
    qb::refill(table_, mutations_, [&] {
        removeAllObjects();
        unionSet(other);
    });
}

Ref<NSObject> NSMutableSet::copyWithZone(void *) const {
    return NSSet::initWithSet(static_cast<NSSet *>(self()));
}
