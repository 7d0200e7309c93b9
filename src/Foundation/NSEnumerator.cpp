#include <QBFoundation/Foundation/NSEnumerator.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSEnumerator.Tables.h"

Class *NSEnumerator::cls() {
    static const qb::Method methods[] = {
        qb::method<"nextObject">(&NSEnumerator::nextObject),
        qb::method<"allObjects">(&NSEnumerator::allObjects),
    };
    static Class *const self =
        new Class("NSEnumerator", NSObject::cls(), {methods, qb::tables::enumeratorFiltering()});
    return self;
}

NSArray *NSEnumerator::allObjects() {
    const Ref<NSEnumerator> kept = this; // whoever answers may let it go
    NSMutableArray *const objects = NSMutableArray::array();
    for (id object : *this)
        objects->addObject(object);
    return objects;
}
