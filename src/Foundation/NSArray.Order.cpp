// Sorting of arrays.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSArray.Tables.h"
#include "Foundation/PlainClasses.h"
#include "Foundation/Sort.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

using Function = int (*)(id, id, void *);

void sortBySelector(std::span<id> objects, SEL comparator) {
    if (!comparator)
        throw InvalidArgumentException(
            "NSArray sortedArrayUsingSelector: must have a selector that is not NULL.");
    if (comparator == "compare:"_sel && std::all_of(objects.begin(), objects.end(), &qb::isPlainString))
        return qb::sortStrings(objects);
    qb::sortObjects(objects, [=](id a, id b) { return qb::compareByMessage(a, comparator, b); });
}

void sortByFunction(std::span<id> objects, Function compare, void *context) {
    if (!compare)
        throw InvalidArgumentException(
            "NSArray sortedArrayUsingFunction:context: must have a function that is not NULL.");
    qb::sortObjects(objects, [=](id a, id b) { return compare(a, b, context); });
}

// Returns the elements as `sort` leaves them. The array itself is out of reach of what the comparison does.
template <class Sort>
Ref<NSArray> sorted(const NSArray *array, Sort sort) {
    const Ref<NSArray> kept = NSArray::initWith(array->view());
    std::vector<id> objects(kept->view().begin(), kept->view().end());
    sort(std::span(objects));
    return NSArray::initWith(objects);
}

} // namespace

std::span<const qb::Method> qb::tables::arrayOrder() {
    static const qb::Method methods[] = {
        qb::method<"sortedArrayUsingSelector:">(&NSArray::sortedArrayUsingSelector),
        qb::method<"sortedArrayUsingFunction:context:">(&NSArray::sortedArrayUsingFunction),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableArrayOrder() {
    static const qb::Method methods[] = {
        qb::method<"sortUsingSelector:">(&NSMutableArray::sortUsingSelector),
        qb::method<"sortUsingFunction:context:">(&NSMutableArray::sortUsingFunction),
    };
    return methods;
}

NSArray *NSArray::sortedArrayUsingSelector(SEL comparator) const {
    return sorted(this, [=](std::span<id> objects) { sortBySelector(objects, comparator); }).autorelease();
}

NSArray *NSArray::sortedArrayUsingFunction(Function function, void *context) const {
    return sorted(this, [=](std::span<id> objects) { sortByFunction(objects, function, context); })
        .autorelease();
}

template <class Sort>
void NSMutableArray::sortInPlace(Sort sort) {
    const Ref<NSArray> before = NSArray::initWith(view()); // keeps the elements whatever a comparison does
    std::vector<id> objects(before->view().begin(), before->view().end());
    sort(std::span(objects));
    if (!std::equal(before->view().begin(), before->view().end(), view().begin(), view().end()))
        throw InvalidUseOfMethodException(
            "NSMutableArray sortUsingSelector: must have a comparison that does not change the array.");
    std::copy(objects.begin(), objects.end(), elements_);
    ++mutations_;
}

void NSMutableArray::sortUsingSelector(SEL comparator) {
    sortInPlace([=](std::span<id> objects) { sortBySelector(objects, comparator); });
}

void NSMutableArray::sortUsingFunction(Function function, void *context) {
    sortInPlace([=](std::span<id> objects) { sortByFunction(objects, function, context); });
}
