#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Buffer.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

constexpr std::uint64_t kMostElements = 0x10000000; // a buffer's bytes fit 32 bits

void requireObject(id object, const char *selector) {
    if (!object)
        throw InvalidArgumentException(std::string("NSMutableArray ") + selector +
                                       " must have an object that is not nil.");
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
        qb::method<"removeLastObject">(&NSMutableArray::removeLastObject),
        qb::method<"removeAllObjects">(&NSMutableArray::removeAllObjects),
    };
    static Class *const self =
        new Class("NSMutableArray", NSArray::cls(), {methods}, qb::construct<NSMutableArray>);
    return self;
}

Ref<NSMutableArray> NSMutableArray::initWith(std::span<const id> elements) {
    if (std::find(elements.begin(), elements.end(), nullptr) != elements.end())
        requireObject(nullptr, "initWithObjects:count:");
    return qb::init<NSMutableArray>(&NSMutableArray::setUpWithObjects, elements.data(),
                                    static_cast<std::uint32_t>(elements.size()));
}

Ref<NSMutableArray> NSMutableArray::initWithArray(NSArray *other) {
    return initWith(other ? other->view() : std::span<const id>());
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
    elements_ = static_cast<id *>(qb::growBuffer(elements_, capacity_ * sizeof(id), count_ * sizeof(id),
                                                 static_cast<std::size_t>(capacity) * sizeof(id)));
    capacity_ = static_cast<std::uint32_t>(capacity);
}

void NSMutableArray::addObject(id object) {
    requireObject(object, "addObject:");
    if (count_ == capacity_)
        reserve(std::max<std::uint64_t>(4, std::uint64_t{capacity_} * 2));
    elements_[count_++] = object->retain();
    ++mutations_;
}

void NSMutableArray::addObjectsFromArray(NSArray *other) {
    if (!other)
        return;
    const std::uint32_t added = other->count(); // read once: the array may be this one
    reserve(std::uint64_t{count_} + added);
    for (std::uint32_t i = 0; i < added; ++i)
        addObject(other->objectAtIndex(i));
}

void NSMutableArray::insertObject(id object, std::uint32_t atIndex) {
    requireObject(object, "insertObject:atIndex:");
    requireIndex(atIndex, count_ + 1, "insertObject:atIndex:");
    addObject(object);
    std::memmove(elements_ + atIndex + 1, elements_ + atIndex, (count_ - 1 - atIndex) * sizeof(id));
    elements_[atIndex] = object;
}

void NSMutableArray::removeObjectAtIndex(std::uint32_t index) {
    requireIndex(index, count_, "removeObjectAtIndex:");
    const id removed = elements_[index];
    --count_;
    ++mutations_;
    std::memmove(elements_ + index, elements_ + index + 1, (count_ - index) * sizeof(id));
    removed->release(); // last, because its destructor may come back to this array
}

void NSMutableArray::replaceObjectAtIndex(std::uint32_t index, id withObject) {
    requireObject(withObject, "replaceObjectAtIndex:withObject:");
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

Ref<NSObject> NSMutableArray::copyWithZone(void *) const {
    return NSArray::initWith(view());
}
