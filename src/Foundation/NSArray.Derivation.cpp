// Arrays and other values made from the elements of an array, and messages to all of them.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/Kept.h"
#include "Foundation/NSArray.Tables.h"
#include "Text/Room.h"

#include <string>
#include <vector>

std::span<const qb::Method> qb::tables::arrayDerivation() {
    static const qb::Method methods[] = {
        qb::method<"firstObjectCommonWithArray:">(&NSArray::firstObjectCommonWithArray),
        qb::method<"subarrayWithRange:">(&NSArray::subarrayWithRange),
        qb::method<"arrayByAddingObject:">(&NSArray::arrayByAddingObject),
        qb::method<"arrayByAddingObjectsFromArray:">(&NSArray::arrayByAddingObjectsFromArray),
        qb::method<"componentsJoinedByString:">(&NSArray::componentsJoinedByString),
        qb::method<"pathsMatchingExtensions:">(&NSArray::pathsMatchingExtensions),
        qb::method<"makeObjectsPerformSelector:", void(SEL)>(&NSArray::makeObjectsPerformSelector),
        qb::method<"makeObjectsPerformSelector:withObject:", void(SEL, id)>(
            &NSArray::makeObjectsPerformSelector),
    };
    return methods;
}

id NSArray::firstObjectCommonWithArray(NSArray *other) const {
    if (!other || other->count() == 0)
        return nullptr;
    qb::Kept kept(nullptr); // what is found, while the elements of the table go
    qb::HashTable wanted;
    for (id element : *other)
        wanted.entryFor(element);
    for (id element : *this) {
        kept.change(element);
        if (wanted.find(element))
            return element;
    }
    return nullptr;
}

NSArray *NSArray::subarrayWithRange(NSRange range) const {
    requireRange(this, range, "subarrayWithRange:");
    return arrayWith(view().subspan(range.location, range.length));
}

NSArray *NSArray::arrayByAddingObject(id object) const {
    std::vector<id> elements(view().begin(), view().end());
    elements.push_back(object);
    return arrayWith(std::span<const id>(elements));
}

NSArray *NSArray::arrayByAddingObjectsFromArray(NSArray *other) const {
    std::vector<id> elements(view().begin(), view().end());
    if (other)
        elements.insert(elements.end(), other->view().begin(), other->view().end());
    return arrayWith(std::span<const id>(elements));
}

NSString *NSArray::componentsJoinedByString(NSString *separator) const {
    const Ref<NSString> kept = separator ? separator->copy() : nullptr; // whatever a description does to it
    const std::string_view between = kept ? kept->view() : std::string_view();
    std::string text;
    bool isFirst = true;
    for (const Ref<NSObject> element : *this) { // kept, whatever it does to the array
        if (!std::exchange(isFirst, false))
            qb::text::append(text, between);
        if (NSString *const description = element->description())
            qb::text::append(text, description->view());
    }
    return NSString::stringWith(text);
}

NSArray *NSArray::pathsMatchingExtensions(NSArray *extensions) const {
    NSMutableArray *const paths = NSMutableArray::array();
    for (id element : *this) {
        auto *const path = qb::castOrNil<NSString>(element);
        if (path && extensions && extensions->containsObject(path->pathExtension()))
            paths->addObject(path);
    }
    return paths;
}

void NSArray::makeObjectsPerformSelector(SEL selector) const {
    for (const Ref<NSObject> element : *this) // kept, whatever it does to the array
        send<void>(element, selector);
}

void NSArray::makeObjectsPerformSelector(SEL selector, id withObject) const {
    const Ref<NSObject> kept = withObject;
    for (const Ref<NSObject> element : *this)
        send<void>(element, selector, withObject);
}
