// One object for many: as an array, as an enumerator.
#include <QBFoundation/OneShotEnumerator.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSObject.Tables.h"

Class *OneShotEnumerator::cls() {
    static const qb::Method methods[] = {
        qb::initialiser<"initWithObject:">(&OneShotEnumerator::setUpWithObject),
        qb::method<"nextObject">(&OneShotEnumerator::nextObject),
    };
    static Class *const self =
        new Class("OneShotEnumerator", NSObject::cls(), methods, qb::construct<OneShotEnumerator>);
    return self;
}

BOOL OneShotEnumerator::setUpWithObject(id object) {
    object_ = object;
    return YES;
}

std::span<const qb::Method> qb::tables::objectEnumeratorCompatibility() {
    static const qb::Method methods[] = {
        qb::method<"asArray">(&NSObject::asArray),
        qb::method<"nextObject">(&NSObject::nextObject),
    };
    return methods;
}

NSArray *NSObject::asArray() const {
    return NSArray::arrayWithObject(self());
}
