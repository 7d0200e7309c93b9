#include <QBFoundation/QBNil.h>

#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Runtime/MethodTable.h>

BOOL IsNil(id object) {
    return !object || object->isNil();
}

Class *QBNil::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"new">(&QBNil::new_),
        qb::classMethod<"value">(&QBNil::value),
        qb::classMethod<"isNil:">(&QBNil::isNilOfClass),
        qb::method<"intValue">(&QBNil::intValue),
    };
    static Class *const self =
        new Class("QBNil", NSObject::cls(), methods, nullptr, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

QBNil *QBNil::new_() {
    static QBNil *const shared = new QBNil;
    return shared;
}

void QBNil::forwardInvocation(NSInvocation *) {}

void QBNil::encodeWithCoder(NSCoder *) const {}
