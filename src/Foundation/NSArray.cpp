#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/ArrayEnumerator.h"
#include "Foundation/Buffer.h"
#include "Foundation/DeepWalk.h"
#include "Foundation/Kept.h"
#include "Foundation/NSArray.Tables.h"
#include "Foundation/PlainClasses.h"
#include "Foundation/PropertyListText.h"
#include "Foundation/Required.h"

#include <algorithm>
#include <new>
#include <string>
#include <vector>

namespace {

void requireNoNil(std::span<const id> elements) {
    if (std::find(elements.begin(), elements.end(), nullptr) != elements.end())
        throw InvalidArgumentException("NSArray initWithObjects:count: must have objects that are not nil.");
}

// Returns how many elements there are, none of them nil.
std::uint32_t checkedCount(std::span<const id> elements) {
    const std::uint32_t count = qb::countOf(elements, "NSArray initWithObjects:count:");
    requireNoNil(elements);
    return count;
}

std::span<const id> viewOf(NSArray *array) {
    return array ? array->view() : std::span<const id>();
}

// Copies retained.
void copyElements(id *target, std::span<const id> elements) {
    for (id element : elements)
        *target++ = element->retain();
}

std::span<const id> viewOf(const id *objects, std::uint32_t count) {
    if (!objects && count != 0)
        throw InvalidArgumentException("NSArray initWithObjects:count: must have objects that are not NULL.");
    return {objects, count};
}

std::vector<id> objectsOf(const qb::ArgList &objects) {
    std::vector<id> elements;
    for (const qb::Value &value : objects)
        elements.push_back(value.as<id>());
    return elements;
}

NSArray *arrayOfClass(Class *asked) {
    return NSArray::initOfClass(asked, {}).autorelease();
}
NSArray *arrayWithObjectOfClass(Class *asked, id object) {
    return NSArray::initOfClass(asked, {&object, 1}).autorelease();
}
NSArray *arrayWithObjectsOfClass(Class *asked, const qb::ArgList &objects) {
    return NSArray::initOfClass(asked, objectsOf(objects)).autorelease();
}
NSArray *arrayWithArrayOfClass(Class *asked, NSArray *other) {
    return NSArray::initOfClass(asked, viewOf(other)).autorelease();
}
NSArray *arrayWithObjectsCountOfClass(Class *asked, const id *objects, std::uint32_t count) {
    return NSArray::initOfClass(asked, viewOf(objects, count)).autorelease();
}
Ref<NSArray> initEmptyOfClass(Class *asked) {
    return NSArray::initOfClass(asked, {});
}
Ref<NSArray> initWithArrayOfClass(Class *asked, NSArray *other) {
    return NSArray::initOfClass(asked, viewOf(other));
}
Ref<NSArray> initWithArrayCopyItemsOfClass(Class *asked, NSArray *other, BOOL copyItems) {
    const Ref<NSArray> elements = NSArray::initWithArray(other, copyItems);
    return asked == NSArray::cls() ? elements : NSArray::initOfClass(asked, elements->view());
}
Ref<NSArray> initWithObjectsCountOfClass(Class *asked, const id *objects, std::uint32_t count) {
    return NSArray::initOfClass(asked, viewOf(objects, count));
}
Ref<NSArray> initWithObjectsOfClass(Class *asked, const qb::ArgList &objects) {
    return NSArray::initOfClass(asked, objectsOf(objects));
}

} // namespace

Class *NSArray::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"array">(&arrayOfClass),
        qb::classMethod<"arrayWithObject:">(&arrayWithObjectOfClass),
        qb::classMethod<"arrayWithObjects:">(&arrayWithObjectsOfClass),
        qb::classMethod<"arrayWithObjects:count:">(&arrayWithObjectsCountOfClass),
        qb::classMethod<"arrayWithArray:">(&arrayWithArrayOfClass),
        qb::classMethod<"init">(&initEmptyOfClass),
        qb::classMethod<"initWithArray:">(&initWithArrayOfClass),
        qb::classMethod<"initWithArray:copyItems:">(&initWithArrayCopyItemsOfClass),
        qb::classMethod<"initWithObjects:">(&initWithObjectsOfClass),
        qb::classMethod<"initWithObjects:count:">(&initWithObjectsCountOfClass),
        qb::method<"count">(&NSArray::count),
        qb::method<"objectAtIndex:">(&NSArray::objectAtIndex),
        qb::method<"firstObject">(&NSArray::firstObject),
        qb::method<"lastObject">(&NSArray::lastObject),
        qb::method<"objectEnumerator">(&NSArray::objectEnumerator),
        qb::method<"reverseObjectEnumerator">(&NSArray::reverseObjectEnumerator),
        qb::method<"containsObject:">(&NSArray::containsObject),
        qb::method<"getObjects:", void(id *)>(&NSArray::getObjects),
        qb::method<"getObjects:range:", void(id *, NSRange)>(&NSArray::getObjects),
        qb::method<"indexOfObject:", std::uint32_t(id)>(&NSArray::indexOfObject),
        qb::method<"indexOfObject:inRange:", std::uint32_t(id, NSRange)>(&NSArray::indexOfObject),
        qb::method<"indexOfObjectIdenticalTo:", std::uint32_t(id)>(&NSArray::indexOfObjectIdenticalTo),
        qb::method<"indexOfObjectIdenticalTo:inRange:", std::uint32_t(id, NSRange)>(
            &NSArray::indexOfObjectIdenticalTo),
        qb::method<"isEqualToArray:">(&NSArray::isEqualToArray),
        qb::initialiser<"initWithCoder:">(&NSArray::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSArray::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSArray", NSObject::cls(),
                  {methods, qb::tables::arrayDerivation(), qb::tables::arrayFiltering(),
                   qb::tables::arrayOrder(), qb::tables::arrayPath(), qb::tables::arrayPropertyListFile(),
                   qb::tables::arraySets(), qb::tables::arrayReshaping(), qb::tables::arrayTexts(),
                   qb::tables::arraySortingByKey(), qb::tables::arrayReplacing()},
                  qb::construct<NSArray>, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

NSArray::~NSArray() {
    for (std::uint32_t i = 0; i < count_; ++i)
        elements_[i]->release();
    freeElements();
}

void NSArray::freeElements() noexcept {
    if (front_ + capacity_ != 0)
        qb::freeBuffer(elements_ - front_, (std::size_t{front_} + capacity_) * sizeof(id));
}

void NSArray::moveElements(std::size_t front, std::size_t capacity) {
    auto *const moved = static_cast<id *>(qb::allocateBuffer((front + capacity) * sizeof(id))) + front;
    std::copy_n(elements_, count_, moved);
    freeElements();
    elements_ = moved;
    capacity_ = static_cast<std::uint32_t>(capacity);
    front_ = static_cast<std::uint32_t>(front);
}

// A short array's memory is longer than its type says.
void NSArray::operator delete(void *memory, std::size_t size) noexcept {
    if (size > qb::kLargestPooledSize)
        qb::freeObject(memory, size);
    else
        qb::freeObjectOfUnknownSize(memory);
}

Ref<NSArray> NSArray::makeShort(std::span<const id> elements) {
    requireNoNil(elements);
    auto *const array = new (qb::allocateObject(sizeof(NSArray) + elements.size_bytes())) NSArray;
    array->elements_ = reinterpret_cast<id *>(array + 1);
    array->count_ = static_cast<std::uint32_t>(elements.size());
    copyElements(array->elements_, elements);
    return Ref<NSArray>::adopt(array);
}

Ref<NSArray> NSArray::initWith(std::span<const id> elements) {
    if (sizeof(NSArray) + elements.size_bytes() <= qb::kLargestPooledSize)
        return makeShort(elements);
    return qb::init<NSArray>(&NSArray::setUpWithObjects, elements.data(), checkedCount(elements));
}

Ref<NSArray> NSArray::initOfClass(Class *asked, std::span<const id> elements) {
    if (asked == NSArray::cls())
        return initWith(elements);
    const std::uint32_t count = checkedCount(elements);
    const Ref<NSObject> object = asked->construct();
    auto *array = static_cast<NSArray *>(object.get());
    return array->setUpWithObjects(elements.data(), count) ? Ref<NSArray>(array) : Ref<NSArray>();
}

// The elements come behind those that a subclass's constructor may have added.
BOOL NSArray::setUpWithObjects(const id *objects, std::uint32_t count) {
    if (count == 0)
        return YES;
    if (count > UINT32_MAX - count_)
        throw std::bad_alloc();
    const std::uint32_t all = count_ + count;
    moveElements(0, all);
    copyElements(elements_ + count_, {objects, count});
    count_ = all;
    return YES;
}

Ref<NSArray> NSArray::initWithArray(NSArray *other) {
    return initWith(viewOf(other));
}

Ref<NSArray> NSArray::initWithArray(NSArray *other, BOOL copyItems) {
    if (!copyItems || !other)
        return initWithArray(other);
    std::vector<Ref<NSObject>> copies;
    std::vector<id> elements;
    for (const Ref<NSObject> element : *other) // kept, whatever its copying does to the array
        elements.push_back(copies.emplace_back(element->copy()));
    return initWith(elements);
}

NSArray *NSArray::arrayWithArray(NSArray *other) {
    return initWithArray(other).autorelease();
}

id NSArray::objectAtIndex(std::uint32_t index) const {
    if (index >= count_)
        throw NSRangeException("NSArray objectAtIndex: must have an index below " + std::to_string(count_) +
                               ", not " + std::to_string(index) + ".");
    return elements_[index];
}

void NSArray::requireRange(const NSArray *array, NSRange range, const char *selector) {
    if (NSMaxRange(range) > array->count_)
        throw NSRangeException(std::string(array->classObject()->nameView()) + " " + selector +
                               " must have a range inside the " + std::to_string(array->count_) +
                               " elements.");
}

void NSArray::getObjects(id *buffer) const {
    getObjects(buffer, {0, count_});
}

void NSArray::getObjects(id *buffer, NSRange range) const {
    requireRange(this, range, "getObjects:range:");
    if (!buffer && range.length != 0)
        throw InvalidArgumentException("NSArray getObjects:range: must have a buffer that is not NULL.");
    std::copy_n(elements_ + range.location, range.length, buffer);
}

// --- Searching ---

// A client's object may do anything to the array, and then look at the element again.
static bool isEqualTo(id object, id element) {
    if (qb::isPlainString(object))
        return object->isEqual(element);
    const qb::Kept kept(element);
    return object->isEqual(element);
}

std::uint32_t NSArray::indexOfObject(id object) const {
    return indexOfObject(object, {0, count_});
}

std::uint32_t NSArray::indexOfObject(id object, NSRange inRange) const {
    requireRange(this, inRange, "indexOfObject:inRange:");
    if (!object)
        return NSNotFound;
    const Ref<NSObject> kept = object; // which the array may own alone
    for (std::uint32_t i = inRange.location; i < NSMaxRange(inRange) && i < count_; ++i)
        if (elements_[i] == object || isEqualTo(object, elements_[i]))
            return i;
    return NSNotFound;
}

std::uint32_t NSArray::indexOfObjectIdenticalTo(id object) const {
    return indexOfObjectIdenticalTo(object, {0, count_});
}

std::uint32_t NSArray::indexOfObjectIdenticalTo(id object, NSRange inRange) const {
    requireRange(this, inRange, "indexOfObjectIdenticalTo:inRange:");
    const auto elements = view().subspan(inRange.location, inRange.length);
    const auto place = std::find(elements.begin(), elements.end(), object);
    return place == elements.end() ? NSNotFound
                                   : inRange.location + static_cast<std::uint32_t>(place - elements.begin());
}

// --- Enumeration ---

// Goes from the last element to the first.
class NSArray::ReverseEnumerator final : public NSEnumerator {
public:
    explicit ReverseEnumerator(NSArray *array) : array_(array) {}

    id nextObject() override {
        if (!hasBegun_)
            begin();
        if (isAtEnd_)
            return nullptr;
        if (array_->mutations_ != mutations_)
            throwMutated();
        isAtEnd_ = left_ == 0;
        return isAtEnd_ ? nullptr : array_->objectAtIndex(--left_);
    }

private:
    void begin() {
        hasBegun_ = true;
        left_ = array_->count();
        mutations_ = array_->mutations_;
    }

    Ref<NSArray> array_;
    std::uint32_t left_ = 0, mutations_ = 0;
    bool hasBegun_ = false, isAtEnd_ = false;
};

NSEnumerator *NSArray::objectEnumerator() const {
    return qb::enumeratorOf<NSArray, &qb::elementItself>(this);
}

NSEnumerator *NSArray::reverseObjectEnumerator() const {
    return Ref<NSEnumerator>::adopt(new ReverseEnumerator(static_cast<NSArray *>(self()))).autorelease();
}

// --- Values ---

BOOL NSArray::isEqualToArray(NSArray *other) const {
    return other && qb::areContainersEqual(self(), other);
}

BOOL NSArray::isEqual(id other) const {
    return other && qb::areContainersEqual(self(), other);
}

std::uint32_t NSArray::hash() const {
    return qb::hashOfContainer(self());
}

NSString *NSArray::description() const {
    std::string text;
    qb::appendPropertyListText(text, self());
    return NSString::stringWith(text);
}

Ref<NSObject> NSArray::copyWithZone(void *) const {
    return self();
}

Ref<NSObject> NSArray::mutableCopyWithZone(void *) const {
    return mutableCopy();
}

Ref<NSArray> NSArray::copy() const {
    return qb::requiredCopy(this, "NSArray copyWithZone:");
}

Ref<NSMutableArray> NSArray::mutableCopy() const {
    return NSMutableArray::initWith(view());
}

void NSArray::throwMutated() {
    throw InvalidUseOfMethodException(
        "NSArray nextObject must have an array that was not changed meanwhile.");
}
