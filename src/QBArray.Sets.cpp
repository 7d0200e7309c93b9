// Arrays as sets: different elements, unions, differences, common elements.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/NSArray.Tables.h"
#include "Foundation/PlainClasses.h"
#include "Foundation/StringSet.h"

namespace {

// Elements of arrays, each once.
class ElementSet {
public:
    // What runs between two elements: only what is here, or code of the elements' classes too.
    enum class Meanwhile { nothing, others };

    explicit ElementSet(std::uint64_t capacity, Meanwhile meanwhile = Meanwhile::nothing)
        : strings_(meanwhile == Meanwhile::nothing ? capacity : 0), isTable_(meanwhile == Meanwhile::others) {
    }

    // Looks up the elements, and adds them if `adds`; calls visit(element, wasThere) for each.
    template <bool adds, class Visit>
    void lookUp(const NSArray *array, Visit visit) {
        const std::size_t strings = isTable_ ? 0 : strings_.lookUp<adds>(array->view(), visit);
        for (NSArray::Iterator next(array, static_cast<std::uint32_t>(strings)); !next.atEnd(); ++next) {
            becomeTable();
            const Ref<NSObject> element = *next; // its own operations may take it out of the array
            visit(element, find<adds>(element));
        }
    }
    void add(const NSArray *array) {
        lookUp<true>(array, [](id, bool) {});
    }
    void appendNew(const NSArray *array, NSMutableArray *target) {
        lookUp<true>(array, [target](id element, bool wasThere) {
            if (!wasThere)
                target->addObject(element);
        });
    }

private:
    // What is no plain string may run any code, from which the table's elements are safe.
    void becomeTable() {
        if (isTable_)
            return;
        strings_.forEach([this](id string) { table_.entryFor(string); });
        isTable_ = true;
    }
    template <bool adds>
    bool find(id element) {
        if (!adds)
            return table_.find(element) != nullptr;
        bool isNew = false;
        table_.entryFor(element, &isNew);
        return !isNew;
    }

    qb::StringSet strings_; // while no other code has run
    qb::HashTable table_;
    bool isTable_;
};

std::uint64_t countOf(const NSArray *array) {
    return array ? array->count() : 0;
}

// Whether the answer to the message is neither 0 nor nil.
bool isTrueAnswer(id receiver, SEL selector, std::span<const qb::Value> values) {
    bool isOwned = false;
    return qb::sendValues(receiver, selector, values.data(), values.size(), isOwned).isTrue();
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
    auto unique = NSMutableArray::initWithCapacity(count_);
    ElementSet(count_).appendNew(this, unique);
    return unique.autorelease();
}

NSMutableArray *NSArray::uniqueArrayWithoutObj(id object) const {
    return uniqueArrayWithoutObj(object, nullptr);
}

NSMutableArray *NSArray::uniqueArraySelectedWithSelector(SEL selector) const {
    return uniqueArrayWithoutObj(nullptr, selector);
}

NSMutableArray *NSArray::uniqueArrayWithoutObj(id object, SEL selectedWithSelector) const {
    auto unique = NSMutableArray::initWithCapacity(count_);
    ElementSet seen(count_, ElementSet::Meanwhile::others);
    const Ref<NSObject> kept = object; // whatever the elements do
    seen.lookUp<true>(this, [&](id element, bool wasThere) {
        if (!wasThere && !(object && object->isEqual(element)) &&
            (!selectedWithSelector || isTrueAnswer(element, selectedWithSelector, {})))
            unique->addObject(element);
    });
    return unique.autorelease();
}

void NSMutableArray::makeUnique() {
    const Ref<NSArray> unique = uniqueArray();
    if (unique->count() != count())
        setArray(unique);
}

// --- Two arrays ---

NSMutableArray *NSArray::plus(NSArray *array) const {
    const Ref<NSArray> kept = array; // whatever the elements' operations do
    NSMutableArray *const sum = NSMutableArray::arrayWithCapacity(count_);
    ElementSet seen(count_ + countOf(array));
    seen.appendNew(this, sum);
    if (array)
        seen.appendNew(array, sum);
    return sum;
}

NSMutableArray *NSArray::minus(NSArray *array) const {
    NSMutableArray *const rest = NSMutableArray::array();
    ElementSet seen(count_ + countOf(array));
    if (array)
        seen.add(array);
    seen.appendNew(this, rest);
    return rest;
}

NSArray *NSArray::commonElementsWithArray(NSArray *array) const {
    if (!array)
        return nullptr;
    const Ref<NSArray> kept = array;
    ElementSet own(count_);
    own.add(this);
    NSMutableArray *const common = NSMutableArray::array();
    own.lookUp<false>(array, [common](id element, bool isThere) {
        if (isThere)
            common->addObject(element);
    });
    return common->containsData() ? common : nullptr;
}

BOOL NSArray::hasCommonElementsWithArray(NSArray *array) const {
    const Ref<NSArray> kept = array;
    return array && array->firstObjectCommonWithArray(static_cast<NSArray *>(self())) != nullptr;
}

NSArray *NSArray::badElementsForGoodElements(NSArray *goodElements) const {
    ElementSet good(countOf(goodElements));
    if (goodElements)
        good.add(goodElements);
    NSMutableArray *const bad = NSMutableArray::array();
    good.lookUp<false>(this, [bad](id element, bool isThere) {
        if (!isThere)
            bad->addObject(element);
    });
    return bad->containsData() ? bad : nullptr;
}

std::uint32_t NSArray::indexOfObjectUsingSelector(SEL selector, id withObject) const {
    const qb::Value value(withObject);
    std::uint32_t index = 0;
    for (const Ref<NSObject> element : *this) { // kept, whatever it does to the array
        if (isTrueAnswer(element, selector, {&value, 1}))
            return index;
        ++index;
    }
    return NSNotFound;
}
