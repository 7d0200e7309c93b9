// Arrays as sets: different elements, unions, differences, common elements.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/NSArray.Tables.h"

namespace {

// Elements of arrays, each once.
class ElementSet {
public:
    ElementSet() = default;
    explicit ElementSet(NSArray *array) { addAll(array); }

    void reserve(std::uint32_t count) { table_.reserve(count); }
    // Returns whether the element was not there before.
    bool add(id element) {
        const std::uint32_t before = table_.count();
        table_.entryFor(element);
        return table_.count() != before;
    }
    void addAll(NSArray *array) {
        if (!array)
            return;
        reserve(array->count());
        for (id element : *array)
            add(element);
    }
    bool contains(id element) const { return table_.find(element) != nullptr; }

private:
    qb::HashTable table_;
};

// Whether the answer to the message is neither 0 nor nil.
bool isTrueAnswer(id receiver, SEL selector, std::span<const qb::Value> values) {
    bool isOwned = false;
    const qb::Value answer = qb::sendValues(receiver, selector, values.data(), values.size(), isOwned);
    switch (answer.kind()) {
    case qb::Kind::none:
        return false;
    case qb::Kind::integer:
    case qb::Kind::character:
        return answer.integer() != 0;
    case qb::Kind::real:
        return answer.real() != 0;
    default:
        return !answer.isNull();
    }
}

} // namespace

std::span<const qb::Method> qb::tables::arraySets() {
    using Unique = NSMutableArray *;
    static const qb::Method methods[] = {
        qb::method<"uniqueArray">(&NSArray::uniqueArray),
        qb::method<"uniqueArrayWithoutObj:", Unique(id)>(&NSArray::uniqueArrayWithoutObj),
        qb::method<"uniqueArraySelectedWithSelector:">(&NSArray::uniqueArraySelectedWithSelector),
        qb::method<"uniqueArrayWithoutObj:selectedWithSelector:", Unique(id, SEL)>(
            &NSArray::uniqueArrayWithoutObj),
        qb::method<"plus:">(&NSArray::plus),
        qb::method<"minus:">(&NSArray::minus),
        qb::method<"commonElementsWithArray:">(&NSArray::commonElementsWithArray),
        qb::method<"hasCommonElementsWithArray:">(&NSArray::hasCommonElementsWithArray),
        qb::method<"badElementsForGoodElements:">(&NSArray::badElementsForGoodElements),
        qb::method<"indexOfObjectUsingSelector:withObject:">(&NSArray::indexOfObjectUsingSelector),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableArraySets() {
    static const qb::Method methods[] = {
        qb::method<"makeUnique">(&NSMutableArray::makeUnique),
    };
    return methods;
}

// --- Different elements ---

NSMutableArray *NSArray::uniqueArray() const {
    return uniqueArrayWithoutObj(nullptr, nullptr);
}

NSMutableArray *NSArray::uniqueArrayWithoutObj(id object) const {
    return uniqueArrayWithoutObj(object, nullptr);
}

NSMutableArray *NSArray::uniqueArraySelectedWithSelector(SEL selector) const {
    return uniqueArrayWithoutObj(nullptr, selector);
}

NSMutableArray *NSArray::uniqueArrayWithoutObj(id object, SEL selectedWithSelector) const {
    auto unique = NSMutableArray::initWithCapacity(count_);
    ElementSet seen;
    seen.reserve(count_);
    for (id element : *this)
        if (seen.add(element) && !(object && object->isEqual(element)) &&
            (!selectedWithSelector || isTrueAnswer(element, selectedWithSelector, {})))
            unique->addObject(element);
    return unique.autorelease();
}

void NSMutableArray::makeUnique() {
    const Ref<NSArray> unique = uniqueArray();
    if (unique->count() != count())
        setArray(unique);
}

// --- Two arrays ---

NSMutableArray *NSArray::plus(NSArray *array) const {
    NSMutableArray *const sum = uniqueArray();
    if (!array)
        return sum;
    ElementSet seen(sum);
    for (id element : *array)
        if (seen.add(element))
            sum->addObject(element);
    return sum;
}

NSMutableArray *NSArray::minus(NSArray *array) const {
    NSMutableArray *const rest = uniqueArray();
    rest->removeObjectsInArray(array);
    return rest;
}

NSArray *NSArray::commonElementsWithArray(NSArray *array) const {
    if (!array || count_ == 0)
        return nullptr;
    const ElementSet own(static_cast<NSArray *>(self()));
    NSMutableArray *const common = NSMutableArray::array();
    for (id element : *array)
        if (own.contains(element))
            common->addObject(element);
    return common->containsData() ? common : nullptr;
}

BOOL NSArray::hasCommonElementsWithArray(NSArray *array) const {
    return array && array->firstObjectCommonWithArray(static_cast<NSArray *>(self())) != nullptr;
}

NSArray *NSArray::badElementsForGoodElements(NSArray *goodElements) const {
    const ElementSet good(goodElements);
    NSMutableArray *const bad = NSMutableArray::array();
    for (id element : *this)
        if (!good.contains(element))
            bad->addObject(element);
    return bad->containsData() ? bad : nullptr;
}

std::uint32_t NSArray::indexOfObjectUsingSelector(SEL selector, id withObject) const {
    const qb::Value value(withObject);
    std::uint32_t index = 0;
    for (id element : *this) {
        if (isTrueAnswer(element, selector, {&value, 1}))
            return index;
        ++index;
    }
    return NSNotFound;
}
