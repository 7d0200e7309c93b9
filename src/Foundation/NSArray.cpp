#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Buffer.h"
#include "Foundation/CollectionEnumerator.h"
#include "Foundation/DeepWalk.h"
#include "Foundation/PropertyListFile.Tables.h"
#include "Foundation/PropertyListText.h"

#include <algorithm>
#include <new>
#include <string>

namespace {

void requireNoNil(std::span<const id> elements) {
    if (std::find(elements.begin(), elements.end(), nullptr) != elements.end())
        throw InvalidArgumentException("NSArray initWithObjects:count: must have objects that are not nil.");
}

std::span<const id> viewOf(NSArray *array) {
    return array ? array->view() : std::span<const id>();
}

// Copies retained.
void copyElements(id *target, std::span<const id> elements) {
    for (id element : elements)
        *target++ = element->retain();
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
Ref<NSArray> initEmptyOfClass(Class *asked) {
    return NSArray::initOfClass(asked, {});
}
Ref<NSArray> initWithArrayOfClass(Class *asked, NSArray *other) {
    return NSArray::initOfClass(asked, viewOf(other));
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
        qb::classMethod<"arrayWithArray:">(&arrayWithArrayOfClass),
        qb::classMethod<"init">(&initEmptyOfClass),
        qb::classMethod<"initWithArray:">(&initWithArrayOfClass),
        qb::classMethod<"initWithObjects:">(&initWithObjectsOfClass),
        qb::method<"count">(&NSArray::count),
        qb::method<"objectAtIndex:">(&NSArray::objectAtIndex),
        qb::method<"lastObject">(&NSArray::lastObject),
        qb::method<"objectEnumerator">(&NSArray::objectEnumerator),
        qb::method<"reverseObjectEnumerator">(&NSArray::reverseObjectEnumerator),
        qb::method<"containsObject:">(&NSArray::containsObject),
        qb::method<"indexOfObject:", std::uint32_t(id)>(&NSArray::indexOfObject),
        qb::method<"isEqualToArray:">(&NSArray::isEqualToArray),
        qb::initialiser<"initWithCoder:">(&NSArray::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSArray::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSArray", NSObject::cls(), {methods, qb::tables::arrayPropertyListFile()},
                  qb::construct<NSArray>, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

NSArray::~NSArray() {
    for (std::uint32_t i = 0; i < count_; ++i)
        elements_[i]->release();
    if (capacity_)
        qb::freeBuffer(elements_, capacity_ * sizeof(id));
}

// A short array's memory is longer than its type says.
void NSArray::operator delete(void *memory, std::size_t size) noexcept {
    if (size > qb::kLargestPooledSize)
        qb::freeObject(memory, size);
    else
        qb::freeObjectOfUnknownSize(memory);
}

Ref<NSArray> NSArray::makeShort(std::span<const id> elements) {
    auto *const array = new (qb::allocateObject(sizeof(NSArray) + elements.size_bytes())) NSArray;
    array->elements_ = reinterpret_cast<id *>(array + 1);
    array->count_ = static_cast<std::uint32_t>(elements.size());
    copyElements(array->elements_, elements);
    return Ref<NSArray>::adopt(array);
}

Ref<NSArray> NSArray::initWith(std::span<const id> elements) {
    requireNoNil(elements);
    if (sizeof(NSArray) + elements.size_bytes() <= qb::kLargestPooledSize)
        return makeShort(elements);
    return qb::init<NSArray>(&NSArray::setUpWithObjects, elements.data(),
                             static_cast<std::uint32_t>(elements.size()));
}

Ref<NSArray> NSArray::initOfClass(Class *asked, std::span<const id> elements) {
    if (asked == NSArray::cls())
        return initWith(elements);
    requireNoNil(elements);
    const Ref<NSObject> object = asked->construct();
    auto *array = static_cast<NSArray *>(object.get());
    return array->setUpWithObjects(elements.data(), static_cast<std::uint32_t>(elements.size()))
               ? Ref<NSArray>(array)
               : Ref<NSArray>();
}

BOOL NSArray::setUpWithObjects(const id *objects, std::uint32_t count) {
    if (count == 0)
        return YES;
    elements_ = static_cast<id *>(qb::allocateBuffer(count * sizeof(id)));
    capacity_ = count;
    copyElements(elements_, {objects, count});
    count_ = count;
    return YES;
}

Ref<NSArray> NSArray::initWithArray(NSArray *other) {
    return initWith(viewOf(other));
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

std::uint32_t NSArray::indexOfObject(id object) const {
    if (!object)
        return NSNotFound;
    for (std::uint32_t i = 0; i < count_; ++i)
        if (elements_[i] == object || object->isEqual(elements_[i]))
            return i;
    return NSNotFound;
}

// --- Enumeration ---

namespace {

id elementItself(id element) {
    return element;
}

// Goes from the last element to the first.
class ReverseEnumerator final : public NSEnumerator {
public:
    explicit ReverseEnumerator(NSArray *array) : array_(array), left_(array->count()) {}
    id nextObject() override {
        left_ = std::min(left_, array_->count()); // the array may have become shorter
        return left_ ? array_->objectAtIndex(--left_) : nullptr;
    }

private:
    Ref<NSArray> array_;
    std::uint32_t left_;
};

} // namespace

NSEnumerator *NSArray::objectEnumerator() const {
    return qb::enumeratorOf<NSArray, &elementItself>(this);
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
    return static_cast<NSArray *>(copyWithZone(nullptr).get());
}

Ref<NSMutableArray> NSArray::mutableCopy() const {
    return NSMutableArray::initWith(view());
}

void NSArray::throwMutated() {
    throw InvalidUseOfMethodException(
        "NSArray nextObject must have an array that was not changed meanwhile.");
}
