#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Buffer.h"
#include "Foundation/NSArray.Tables.h"
#include "Foundation/Required.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr std::uint64_t kMostElements = 0x10000000; // a buffer's bytes fit 32 bits
constexpr std::uint64_t kLeastElements = 4;
constexpr std::uint32_t kLeastForFront = 32; // fewer are moved at once

// How many places further back there is as much room in front as behind. A queue has all on one side in the
// end.
std::ptrdiff_t wayToMiddle(std::size_t front, std::size_t behind) {
    return static_cast<std::ptrdiff_t>((front + behind) / 2) - static_cast<std::ptrdiff_t>(front);
}

void requireIndex(std::uint32_t index, std::uint32_t end, const char *selector) {
    if (index >= end)
        throw NSRangeException(std::string("NSMutableArray ") + selector + " must have an index below " +
                               std::to_string(end) + ", not " + std::to_string(index) + ".");
}

} // namespace

Class *NSMutableArray::cls() {
    static const qb::Method methods[] = {
        qb::maker<"arrayWithCapacity:">(&NSMutableArray::setUpWithCapacity),
        qb::initialiser<"initWithCapacity:">(&NSMutableArray::setUpWithCapacity),
        qb::method<"addObject:">(&NSMutableArray::addObject),
        qb::method<"addObjectsFromArray:">(&NSMutableArray::addObjectsFromArray),
        qb::method<"insertObject:atIndex:">(&NSMutableArray::insertObject),
        qb::method<"removeObjectAtIndex:">(&NSMutableArray::removeObjectAtIndex),
        qb::method<"replaceObjectAtIndex:withObject:">(&NSMutableArray::replaceObjectAtIndex),
        qb::method<"exchangeObjectAtIndex:withObjectAtIndex:">(&NSMutableArray::exchangeObjectAtIndex),
        qb::method<"removeLastObject">(&NSMutableArray::removeLastObject),
        qb::method<"removeAllObjects">(&NSMutableArray::removeAllObjects),
        qb::method<"removeObject:", void(id)>(&NSMutableArray::removeObject),
        qb::method<"removeObject:inRange:", void(id, NSRange)>(&NSMutableArray::removeObject),
        qb::method<"removeObjectIdenticalTo:", void(id)>(&NSMutableArray::removeObjectIdenticalTo),
        qb::method<"removeObjectIdenticalTo:inRange:", void(id, NSRange)>(
            &NSMutableArray::removeObjectIdenticalTo),
        qb::method<"removeObjectsInArray:">(&NSMutableArray::removeObjectsInArray),
        qb::method<"removeObjectsInRange:">(&NSMutableArray::removeObjectsInRange),
        qb::method<"replaceObjectsInRange:withObjectsFromArray:", void(NSRange, NSArray *)>(
            &NSMutableArray::replaceObjectsInRange),
        qb::method<"replaceObjectsInRange:withObjectsFromArray:range:", void(NSRange, NSArray *, NSRange)>(
            &NSMutableArray::replaceObjectsInRange),
        qb::method<"setArray:">(&NSMutableArray::setArray),
    };
    static Class *const self =
        new Class("NSMutableArray", NSArray::cls(),
                  {methods, qb::tables::mutableArrayOrder(), qb::tables::mutableArrayAdding(),
                   qb::tables::mutableArraySets(), qb::tables::mutableArrayReplacing()},
                  qb::construct<NSMutableArray>);
    return self;
}

Ref<NSMutableArray> NSMutableArray::initWith(std::span<const id> elements) {
    const std::uint32_t count = qb::countOf(elements, "NSMutableArray initWithObjects:count:");
    if (std::find(elements.begin(), elements.end(), nullptr) != elements.end())
        qb::throwMissing("NSMutableArray initWithObjects:count:", "an object");
    return qb::init<NSMutableArray>(&NSMutableArray::setUpWithObjects, elements.data(), count);
}

Ref<NSMutableArray> NSMutableArray::initWithArray(NSArray *other) {
    return initWith(other ? other->view() : std::span<const id>());
}

Ref<NSMutableArray> NSMutableArray::initWithArray(NSArray *other, BOOL copyItems) {
    return initWith(NSArray::initWithArray(other, copyItems)->view());
}

Ref<NSMutableArray> NSMutableArray::initWithCapacity(std::uint32_t capacity) {
    return qb::init<NSMutableArray>(&NSMutableArray::setUpWithCapacity, capacity);
}

BOOL NSMutableArray::setUpWithCapacity(std::uint32_t capacity) {
    reserve(capacity);
    return YES;
}

void NSMutableArray::reserve(std::uint64_t capacity) {
    if (capacity <= capacity_)
        return;
    if (capacity > kMostElements)
        throw InvalidArgumentException("NSMutableArray must have fewer elements.");
    moveElements(0, static_cast<std::size_t>(capacity));
}

void NSMutableArray::reserveGrowing(std::uint64_t count) {
    if (count > capacity_ && front_ > count_)
        moveBegin(wayToMiddle(front_, capacity_ - count_), count_);
    if (count <= capacity_)
        return;
    try {
        qb::growCapacity(capacity_, std::max<std::uint64_t>(kLeastElements, count), kMostElements,
                         [this](std::uint64_t capacity) { reserve(capacity); });
    } catch (const std::bad_alloc &) { // there may be room in front
        if (count > std::uint64_t{front_} + capacity_)
            throw;
        moveBegin(-static_cast<std::ptrdiff_t>(front_), count_);
    }
}

void NSMutableArray::addObject(id object) {
    qb::required(object, "NSMutableArray addObject:", "an object");
    if (count_ == capacity_)
        reserveGrowing(std::uint64_t{count_} + 1);
    elements_[count_++] = object->retain();
    ++mutations_;
}

void NSMutableArray::addObjectsFromArray(NSArray *other) {
    if (!other)
        return;
    const Ref<NSArray> kept = other;            // whatever a subclass makes of its own `addObject`
    const std::uint32_t added = other->count(); // read once: the array may be this one
    reserveGrowing(std::uint64_t{count_} + added);
    for (std::uint32_t i = 0; i < added; ++i)
        addObject(other->objectAtIndex(i));
}

void NSMutableArray::insertObject(id object, std::uint32_t atIndex) {
    qb::required(object, "NSMutableArray insertObject:atIndex:", "an object");
    requireIndex(atIndex, count_ + 1, "insertObject:atIndex:");
    if (atIndex < count_ / 2 && hasRoomInFront()) {
        object->retain();
        moveBegin(-1, atIndex);
        ++count_;
        ++mutations_;
    } else {
        NSMutableArray::addObject(object); // whatever a subclass makes of its own
        std::memmove(elements_ + atIndex + 1, elements_ + atIndex, (count_ - 1 - atIndex) * sizeof(id));
    }
    elements_[atIndex] = object;
}

// Begins the elements so many places further back, or before where they began, and takes the first ones
// along.
void NSMutableArray::moveBegin(std::ptrdiff_t places, std::uint32_t count) {
    std::memmove(elements_ + places, elements_, count * sizeof(id));
    elements_ += places;
    front_ = static_cast<std::uint32_t>(front_ + places);
    capacity_ = static_cast<std::uint32_t>(capacity_ - places);
}

// Makes as much room as there are elements, so that many insertions in front seldom move all of them.
bool NSMutableArray::hasRoomInFront() {
    if (front_ != 0 || count_ < kLeastForFront)
        return front_ != 0;
    if (capacity_ - count_ > count_) {
        moveBegin(wayToMiddle(front_, capacity_ - count_), count_);
        return true;
    }
    if (std::uint64_t{capacity_} + count_ > kMostElements)
        return false;
    try {
        moveElements(count_, capacity_);
        return true;
    } catch (const std::bad_alloc &) { // there may be room behind
        return false;
    }
}

void NSMutableArray::removeObjectAtIndex(std::uint32_t index) {
    requireIndex(index, count_, "removeObjectAtIndex:");
    const id removed = elements_[index];
    --count_;
    ++mutations_;
    if (index < count_ / 2)
        moveBegin(1, index);
    else
        std::memmove(elements_ + index, elements_ + index + 1, (count_ - index) * sizeof(id));
    removed->release(); // last, because its destructor may come back to this array
}

void NSMutableArray::replaceObjectAtIndex(std::uint32_t index, id withObject) {
    qb::required(withObject, "NSMutableArray replaceObjectAtIndex:withObject:", "an object");
    requireIndex(index, count_, "replaceObjectAtIndex:withObject:");
    withObject->retain();
    std::exchange(elements_[index], withObject)->release();
}

void NSMutableArray::removeLastObject() {
    requireIndex(0, count_, "removeLastObject");
    removeObjectAtIndex(count_ - 1);
}

void NSMutableArray::removeAllObjects() {
    ++mutations_;
    while (count_)
        elements_[--count_]->release();
}

void NSMutableArray::exchangeObjectAtIndex(std::uint32_t index, std::uint32_t withObjectAtIndex) {
    requireIndex(index, count_, "exchangeObjectAtIndex:withObjectAtIndex:");
    requireIndex(withObjectAtIndex, count_, "exchangeObjectAtIndex:withObjectAtIndex:");
    std::swap(elements_[index], elements_[withObjectAtIndex]);
}

// --- Removing by value ---

// The elements are asked first and moved afterwards, because their answers are code that may come back to
// this array.
template <class Predicate>
void NSMutableArray::removeWhere(NSRange range, Predicate isRemoved) {
    struct Removed {
        std::uint32_t index;
        id element;
    };
    const std::uint32_t mutations = mutations_;
    std::vector<Removed> removed;
    std::vector<Ref<NSObject>> keepers; // kept, so that no other object gets the address of one of them
    for (std::uint32_t i = range.location; i < NSMaxRange(range); ++i) {
        const id element = keepers.emplace_back(elements_[i]);
        if (isRemoved(element))
            removed.push_back({i, element});
        else
            keepers.pop_back();
        if (mutations_ != mutations)
            throwMutated();
    }
    // What an answer has put in the place of an element was not asked.
    std::erase_if(removed, [this](const Removed &asked) { return elements_[asked.index] != asked.element; });
    if (removed.empty())
        return;
    id *kept = elements_ + removed.front().index;
    for (std::size_t i = 0; i < removed.size(); ++i) {
        const std::uint32_t end = i + 1 < removed.size() ? removed[i + 1].index : count_;
        kept = std::copy(elements_ + removed[i].index + 1, elements_ + end, kept);
    }
    count_ -= static_cast<std::uint32_t>(removed.size());
    ++mutations_;
    for (const Removed &asked : removed)
        asked.element->release();
}

void NSMutableArray::removeObject(id object) {
    removeObject(object, {0, count_});
}

void NSMutableArray::removeObject(id object, NSRange inRange) {
    requireRange(this, inRange, "removeObject:inRange:");
    if (!object)
        return;
    const Ref<NSObject> keeper = object; // which the array may own alone
    removeWhere(inRange, [object](id element) { return element == object || object->isEqual(element); });
}

void NSMutableArray::removeObjectIdenticalTo(id object) {
    removeObjectIdenticalTo(object, {0, count_});
}

void NSMutableArray::removeObjectIdenticalTo(id object, NSRange inRange) {
    requireRange(this, inRange, "removeObjectIdenticalTo:inRange:");
    removeWhere(inRange, [object](id element) { return element == object; });
}

void NSMutableArray::removeObjectsInArray(NSArray *other) {
    if (!other || other->count() == 0)
        return;
    qb::HashTable unwanted;
    for (id object : *other)
        unwanted.entryFor(object);
    removeWhere({0, count_}, [&unwanted](id element) { return unwanted.find(element) != nullptr; });
}

// --- Ranges ---

void NSMutableArray::removeObjectsInRange(NSRange range) {
    requireRange(this, range, "removeObjectsInRange:");
    replaceObjectsInRange(range, nullptr);
}

void NSMutableArray::replaceObjectsInRange(NSRange range, NSArray *withObjectsFromArray) {
    replaceObjectsInRange(range, withObjectsFromArray,
                          {0, withObjectsFromArray ? withObjectsFromArray->count() : 0});
}

void NSMutableArray::replaceObjectsInRange(NSRange range, NSArray *withObjectsFromArray,
                                           NSRange sourceRange) {
    requireRange(this, range, "replaceObjectsInRange:withObjectsFromArray:");
    std::vector<id> added;
    if (withObjectsFromArray) {
        requireRange(withObjectsFromArray, sourceRange, "replaceObjectsInRange:withObjectsFromArray:range:");
        const auto source = withObjectsFromArray->view().subspan(sourceRange.location, sourceRange.length);
        added.assign(source.begin(), source.end());
    }
    if (range.length == 0 && added.empty())
        return;
    const std::vector<id> removed(elements_ + range.location, elements_ + NSMaxRange(range));
    reserveGrowing(std::uint64_t{count_} - range.length + added.size());
    for (id object : added)
        object->retain();
    std::memmove(elements_ + range.location + added.size(), elements_ + NSMaxRange(range),
                 static_cast<std::size_t>(count_ - NSMaxRange(range)) * sizeof(id));
    std::copy(added.begin(), added.end(), elements_ + range.location);
    count_ = static_cast<std::uint32_t>(count_ - range.length + added.size());
    ++mutations_;
    for (id object : removed)
        object->release(); // last, because its destructor may come back to this array
}

void NSMutableArray::setArray(NSArray *other) {
    replaceObjectsInRange({0, count_}, other);
}

Ref<NSObject> NSMutableArray::copyWithZone(void *) const {
    return NSArray::initWith(view());
}
