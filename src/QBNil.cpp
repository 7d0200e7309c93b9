#include <QBFoundation/QBNil.h>

#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/Runtime/MethodTable.h>

namespace {

constexpr const char *kFile = "src/QBNil";
constexpr int kLineOfForwarding = 39;
constexpr int kLeastDebugOfForwarding = 7;

} // namespace

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

void QBNil::forwardInvocation(NSInvocation *invocation) {
    swallow(invocation ? invocation->selector() : nullptr);
}

id QBNil::objectForKey(id) const {
    swallow("objectForKey:"_sel);
    return nullptr;
}

void QBNil::setObjectForKey(id, id) {
    swallow("setObject:forKey:"_sel);
}

void QBNil::removeObjectForKey(id) {
    swallow("removeObjectForKey:"_sel);
}

void QBNil::swallow(SEL selector) const {
    if (debug < kLeastDebugOfForwarding)
        return;
    qb::trace(DEBUG_CHANNEL_MISC, {kFile, kLineOfForwarding, this, "forwardInvocation:"}, "%s==%s", "sel",
              selector ? selector->text() : "<nil>");
}

void QBNil::encodeWithCoder(NSCoder *) const {}
