// What filters make of the elements of an array.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/QBEnumFilter.h>
#include <QBFoundation/QBEnumObjectFilter.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSArray.Tables.h"

namespace {

// Whether the filter yields nothing of the elements.
template <class Filter>
BOOL isOk(const NSArray *array, Filter *filter) {
    array->objectEnumeratorFilteredWith(filter);
    return filter->ok();
}

} // namespace

std::span<const qb::Method> qb::tables::arrayFiltering() {
    using Array = NSArray;
    static const qb::Method methods[] = {
        qb::method<"filterWithSelector:", Array *(SEL)>(&Array::filterWithSelector),
        qb::method<"filterWithSelector:withObject:", Array *(SEL, id)>(&Array::filterWithSelector),
        qb::method<"filterWithSelector:withObject:withObject:", Array *(SEL, id, id)>(
            &Array::filterWithSelector),
        qb::method<"filterWithObject:selector:", Array *(id, SEL)>(&Array::filterWithObjectSelector),
        qb::method<"filterWithObject:selector:withObject:", Array *(id, SEL, id)>(
            &Array::filterWithObjectSelector),
        qb::method<"filterWithObject:selector:withObject:withObject:", Array *(id, SEL, id, id)>(
            &Array::filterWithObjectSelector),
        qb::method<"selectWithSelector:", Array *(SEL)>(&Array::selectWithSelector),
        qb::method<"selectWithSelector:withObject:", Array *(SEL, id)>(&Array::selectWithSelector),
        qb::method<"selectWithObject:selector:", Array *(id, SEL)>(&Array::selectWithObject),
        qb::method<"selectWithObject:selector:withObject:", Array *(id, SEL, id)>(&Array::selectWithObject),
        qb::method<"rejectWithSelector:", Array *(SEL)>(&Array::rejectWithSelector),
        qb::method<"rejectWithSelector:withObject:", Array *(SEL, id)>(&Array::rejectWithSelector),
        qb::method<"nonNil">(&Array::nonNil),
        qb::method<"objectEnumeratorFilteredWith:">(&Array::objectEnumeratorFilteredWith),
        qb::method<"objectsFilteredWith:">(&Array::objectsFilteredWith),
        qb::method<"allTrue:", BOOL(SEL)>(&Array::allTrue),
        qb::method<"allTrue:withObject:withObject:", BOOL(SEL, id, id)>(&Array::allTrue),
        qb::method<"allTrueWithObject:selector:">(&Array::allTrueWithObject),
        qb::method<"allFalse:", BOOL(SEL)>(&Array::allFalse),
        qb::method<"allFalse:withObject:withObject:", BOOL(SEL, id, id)>(&Array::allFalse),
        qb::method<"allOk:", BOOL(SEL)>(&Array::allOk),
        qb::method<"allOk:withObject:withObject:", BOOL(SEL, id, id)>(&Array::allOk),
        qb::method<"allOkWithObject:selector:">(&Array::allOkWithObject),
    };
    return methods;
}

QBEnumFilter *NSArray::objectEnumeratorFilteredWith(QBEnumFilter *filter) const {
    if (filter)
        filter->setSource(objectEnumerator());
    return filter;
}

NSArray *NSArray::objectsFilteredWith(QBEnumFilter *filter) const {
    return filter ? objectEnumeratorFilteredWith(filter)->allObjects() : nullptr;
}

// --- Answers ---

NSArray *NSArray::filterWithSelector(SEL selector) const {
    return filterWithSelector(selector, nullptr, nullptr);
}

NSArray *NSArray::filterWithSelector(SEL selector, id withObject) const {
    return filterWithSelector(selector, withObject, nullptr);
}

NSArray *NSArray::filterWithSelector(SEL selector, id withObject, id withObject2) const {
    return objectsFilteredWith(QBEnumFilter::filterWithMessageOfClass(selector, withObject, withObject2));
}

NSArray *NSArray::filterWithObjectSelector(id object, SEL selector) const {
    return filterWithObjectSelector(object, selector, nullptr, nullptr);
}

NSArray *NSArray::filterWithObjectSelector(id object, SEL selector, id withObject) const {
    return filterWithObjectSelector(object, selector, withObject, nullptr);
}

NSArray *NSArray::filterWithObjectSelector(id object, SEL selector, id withObject, id withObject2) const {
    auto *const filter = QBEnumObjectFilter::filterWithObjectMessage(object, selector, withObject);
    filter->setArgument2(withObject2);
    return objectsFilteredWith(filter);
}

// --- Elements ---

NSArray *NSArray::selectWithSelector(SEL selector) const {
    return selectWithSelector(selector, nullptr);
}

NSArray *NSArray::selectWithSelector(SEL selector, id withObject) const {
    return objectsFilteredWith(QBEnumSelectFilter::filterWithMessageOfClass(selector, withObject));
}

NSArray *NSArray::selectWithObject(id object, SEL selector) const {
    return selectWithObject(object, selector, nullptr);
}

NSArray *NSArray::selectWithObject(id object, SEL selector, id withObject) const {
    return objectsFilteredWith(
        QBEnumObjectSelectFilter::filterWithObjectMessage(object, selector, withObject));
}

NSArray *NSArray::rejectWithSelector(SEL selector) const {
    return rejectWithSelector(selector, nullptr);
}

NSArray *NSArray::rejectWithSelector(SEL selector, id withObject) const {
    return objectsFilteredWith(QBEnumRejectFilter::filterWithMessageOfClass(selector, withObject));
}

NSArray *NSArray::nonNil() const {
    return objectsFilteredWith(QBEnumSelectFilter::notNilFilter());
}

// --- All of them ---

BOOL NSArray::allTrue(SEL selector) const {
    return allTrue(selector, nullptr, nullptr);
}

BOOL NSArray::allTrue(SEL selector, id withObject, id withObject2) const {
    return isOk(this, QBEnumRejectFilter::filterWithMessageOfClass(selector, withObject, withObject2));
}

BOOL NSArray::allTrueWithObject(id object, SEL selector) const {
    return isOk(this, QBEnumObjectRejectFilter::filterWithObjectMessage(object, selector));
}

BOOL NSArray::allFalse(SEL selector) const {
    return allFalse(selector, nullptr, nullptr);
}

BOOL NSArray::allFalse(SEL selector, id withObject, id withObject2) const {
    return isOk(this, QBEnumRejectOnFalseFilter::filterWithMessageOfClass(selector, withObject, withObject2));
}

BOOL NSArray::allOk(SEL selector) const {
    return allOk(selector, nullptr, nullptr);
}

BOOL NSArray::allOk(SEL selector, id withObject, id withObject2) const {
    return isOk(this, QBEnumRejectOnErrorFilter::filterWithMessageOfClass(selector, withObject, withObject2));
}

BOOL NSArray::allOkWithObject(id object, SEL selector) const {
    return isOk(this, QBEnumObjectRejectOnErrorFilter::filterWithObjectMessage(object, selector));
}
