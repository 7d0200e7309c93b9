#include <QBFoundation/QBBool.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *QBBool::cls() {
    static const qb::Method methods[] = {
        qb::maker<"booleanWithValue:">(&QBBool::setUpWithValue),
        qb::initialiser<"initWithValue:">(&QBBool::setUpWithValue),
        qb::classMethod<"trueBoolean">(&QBBool::trueBoolean),
        qb::classMethod<"falseBoolean">(&QBBool::falseBoolean),
        qb::method<"value">(&QBBool::value),
        qb::method<"boolValue">(&QBBool::boolValue),
        qb::method<"isTrue">(&QBBool::isTrue),
        qb::method<"intValue">(&QBBool::intValue),
    };
    static Class *const self =
        new Class("QBBool", NSObject::cls(), methods, qb::construct<QBBool>, {"NSCopying"});
    return self;
}

QBBool *QBBool::trueBoolean() {
    static QBBool *const shared = initWithValue(YES).detach();
    return shared;
}

QBBool *QBBool::falseBoolean() {
    static QBBool *const shared = initWithValue(NO).detach();
    return shared;
}

BOOL QBBool::setUpWithValue(BOOL value) {
    value_ = value;
    return YES;
}

NSString *QBBool::stringValue() const {
    return value_ ? "true"_ns : "false"_ns;
}

NSString *QBBool::description() const {
    return value_ ? "<QBBool true>"_ns : "<QBBool false>"_ns;
}
