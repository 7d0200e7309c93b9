// Adding values that may be absent.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSArray.Tables.h"

std::span<const qb::Method> qb::tables::mutableArrayAdding() {
    static const qb::Method methods[] = {
        qb::method<"addObjectIfNotNil:">(&NSMutableArray::addObjectIfNotNil),
        qb::method<"addObjectIfNotQBNil:">(&NSMutableArray::addObjectIfNotQBNil),
        qb::method<"addObjectAndQBNilIfNil:">(&NSMutableArray::addObjectAndQBNilIfNil),
        qb::method<"addObjectsFrom:">(&NSMutableArray::addObjectsFrom),
        qb::method<"removeFirstObject">(&NSMutableArray::removeFirstObject),
    };
    return methods;
}

void NSMutableArray::addObjectIfNotNil(id object) {
    if (object)
        addObject(object);
}

void NSMutableArray::addObjectIfNotQBNil(id object) {
    const Ref<NSObject> kept = object; // whatever it does when it is asked
    if (!IsNil(object))
        addObject(object);
}

void NSMutableArray::addObjectAndQBNilIfNil(id object) {
    addObject(object ? object : QBNil::value());
}

void NSMutableArray::removeFirstObject() {
    if (containsData())
        removeObjectAtIndex(0);
}
