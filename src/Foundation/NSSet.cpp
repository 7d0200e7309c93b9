#include <QBFoundation/Foundation/NSSet.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/CollectionEnumerator.h"
#include "Foundation/DeepWalk.h"
#include "Foundation/PropertyListText.h"
#include "Foundation/Required.h"

Class *NSSet::cls() {
    static const qb::Method methods[] = {
        qb::maker<"set">(&NSSet::setUp),
        qb::maker<"setWithObject:">(&NSSet::setUpWithObject),
        qb::maker<"setWithObjects:">(&NSSet::setUpWithObjectList),
        qb::maker<"setWithObjects:count:">(&NSSet::setUpWithObjects),
        qb::maker<"setWithArray:">(&NSSet::setUpWithArray),
        qb::maker<"setWithSet:">(&NSSet::setUpWithSet),
        qb::initialiser<"initWithObjects:">(&NSSet::setUpWithObjectList),
        qb::initialiser<"initWithObjects:count:">(&NSSet::setUpWithObjects),
        qb::initialiser<"initWithArray:">(&NSSet::setUpWithArray),
        qb::initialiser<"initWithSet:">(&NSSet::setUpWithSet),
        qb::initialiser<"initWithSet:copyItems:">(&NSSet::setUpWithCopies),
        qb::method<"count">(&NSSet::count),
        qb::method<"member:">(&NSSet::member),
        qb::method<"containsObject:">(&NSSet::containsObject),
        qb::method<"allObjects">(&NSSet::allObjects),
        qb::method<"anyObject">(&NSSet::anyObject),
        qb::method<"objectEnumerator">(&NSSet::objectEnumerator),
        qb::method<"makeObjectsPerformSelector:", void(SEL)>(&NSSet::makeObjectsPerformSelector),
        qb::method<"makeObjectsPerformSelector:withObject:", void(SEL, id)>(
            &NSSet::makeObjectsPerformSelector),
        qb::method<"isEqualToSet:">(&NSSet::isEqualToSet),
        qb::method<"isSubsetOfSet:">(&NSSet::isSubsetOfSet),
        qb::method<"intersectsSet:">(&NSSet::intersectsSet),
        qb::method<"setByAddingObject:">(&NSSet::setByAddingObject),
        qb::method<"setByAddingObjectsFromSet:">(&NSSet::setByAddingObjectsFromSet),
        qb::method<"setByAddingObjectsFromArray:">(&NSSet::setByAddingObjectsFromArray),
        qb::initialiser<"initWithCoder:">(&NSSet::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSSet::encodeWithCoder),
    };
    static Class *const self = new Class("NSSet", NSObject::cls(), {methods}, qb::construct<NSSet>,
                                         {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

// --- Creation ---

Ref<NSSet> NSSet::initWith(std::span<const id> elements) {
    return qb::init<NSSet>(&NSSet::setUpWithObjects, elements.data(),
                           qb::countOf(elements, "NSSet initWithObjects:count:"));
}

Ref<NSSet> NSSet::initWithArray(NSArray *array) {
    return qb::init<NSSet>(&NSSet::setUpWithArray, array);
}

Ref<NSSet> NSSet::initWithSet(NSSet *other) {
    return qb::init<NSSet>(&NSSet::setUpWithSet, other);
}

Ref<NSSet> NSSet::initWithSet(NSSet *other, BOOL copyItems) {
    return qb::init<NSSet>(&NSSet::setUpWithCopies, other, copyItems);
}

BOOL NSSet::setUpWithObjects(const id *objects, std::uint32_t count) {
    if (!objects && count != 0)
        throw InvalidArgumentException("NSSet initWithObjects:count: must have objects that are not NULL.");
    table_.reserve(count);
    for (const id object : std::span(objects, count))
        insert(object);
    return YES;
}

BOOL NSSet::setUpWithObjectList(const qb::ArgList &objects) {
    for (const qb::Value &object : objects)
        insert(object.as<id>());
    return YES;
}

BOOL NSSet::setUpWithObject(id object) {
    insert(object);
    return YES;
}

BOOL NSSet::setUpWithArray(NSArray *array) {
    if (!array)
        return YES;
    const Ref<NSArray> elements = array->copy(); // what an element's operations don't change
    return setUpWithObjects(elements->view().data(), elements->count());
}

BOOL NSSet::setUpWithSet(NSSet *other) {
    return setUpWithCopies(other, /*copyItems=*/NO);
}

BOOL NSSet::setUpWithCopies(NSSet *other, BOOL copyItems) {
    if (!other)
        return YES;
    table_.reserve(other->count());
    for (const Ref<NSObject> object : *other) // kept, whatever its copying does to the set
        insert(copyItems ? object->copy().autorelease() : object.get());
    return YES;
}

void NSSet::insert(id object) {
    qb::required(object, "NSMutableSet addObject:", "an object");
    bool isNew = false;
    table_.entryFor(object, &isNew);
    if (isNew)
        ++mutations_;
}

// --- Elements ---

namespace {

id elementItself(id element) {
    return element;
}

} // namespace

id NSSet::member(id object) const {
    const qb::HashTable::Entry *entry = object ? table_.find(object) : nullptr;
    return entry ? entry->key : nullptr;
}

NSArray *NSSet::allObjects() const {
    auto objects = NSMutableArray::initWithCapacity(count());
    for (id object : *this)
        objects->addObject(object);
    return objects.autorelease();
}

id NSSet::anyObject() const {
    return count() ? *begin() : nullptr;
}

NSEnumerator *NSSet::objectEnumerator() const {
    return qb::enumeratorOf<NSSet, &elementItself>(this);
}

void NSSet::makeObjectsPerformSelector(SEL selector) const {
    for (const Ref<NSObject> object : *this) // kept, whatever it does to the set
        send<void>(object, selector);
}

void NSSet::makeObjectsPerformSelector(SEL selector, id withObject) const {
    const Ref<NSObject> kept = withObject;
    for (const Ref<NSObject> object : *this)
        send<void>(object, selector, withObject);
}

void NSSet::throwMutated() {
    throw InvalidUseOfMethodException("NSSet nextObject must have a set that was not changed meanwhile.");
}

// --- Comparison ---

BOOL NSSet::isEqual(id other) const {
    return other && qb::areContainersEqual(self(), other);
}

BOOL NSSet::isEqualToSet(NSSet *other) const {
    return other && qb::areContainersEqual(self(), other);
}

BOOL NSSet::isSubsetOfSet(NSSet *other) const {
    if (other == this)
        return YES;
    if (!other || other->count() < count())
        return count() == 0;
    for (id object : *this)
        if (!other->containsObject(object))
            return NO;
    return YES;
}

BOOL NSSet::intersectsSet(NSSet *other) const {
    if (!other)
        return NO;
    for (id object : *this)
        if (other->containsObject(object))
            return YES;
    return NO;
}

// --- Further sets ---

NSSet *NSSet::setByAddingObject(id object) const {
    const Ref<NSObject> kept = object; // whatever the elements' operations do
    auto set = NSSet::initWithSet(static_cast<NSSet *>(self()));
    set->insert(object);
    return set.autorelease();
}

NSSet *NSSet::setByAddingObjectsFromSet(NSSet *other) const {
    return setByAddingObjectsFromArray(other ? other->allObjects() : nullptr);
}

NSSet *NSSet::setByAddingObjectsFromArray(NSArray *other) const {
    const Ref<NSArray> kept = other; // whatever the elements' operations do
    auto set = NSSet::initWithSet(static_cast<NSSet *>(self()));
    set->setUpWithArray(other);
    return set.autorelease();
}

// --- Values ---

std::uint32_t NSSet::hash() const {
    return qb::hashOfContainer(self());
}

NSString *NSSet::description() const {
    std::string text;
    qb::appendPropertyListText(text, self());
    return NSString::stringWith(text);
}

Ref<NSObject> NSSet::copyWithZone(void *) const {
    return self();
}

Ref<NSObject> NSSet::mutableCopyWithZone(void *) const {
    return mutableCopy();
}

Ref<NSSet> NSSet::copy() const {
    return qb::requiredCopy(this, "NSSet copyWithZone:");
}

Ref<NSMutableSet> NSSet::mutableCopy() const {
    return NSMutableSet::initWithSet(static_cast<NSSet *>(self()));
}
