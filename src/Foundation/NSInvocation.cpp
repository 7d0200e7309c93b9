#include <QBFoundation/Foundation/NSInvocation.h>

#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

Class *NSInvocation::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"invocationWithTarget:selector:">(&NSInvocation::invocationWithTarget),
        qb::method<"target">(&NSInvocation::target),
        qb::method<"setTarget:">(&NSInvocation::setTarget),
        qb::method<"selector">(&NSInvocation::selector),
        qb::method<"setSelector:">(&NSInvocation::setSelector),
        qb::method<"invoke">(&NSInvocation::invoke),
        qb::method<"invokeWithTarget:">(&NSInvocation::invokeWithTarget),
    };
    static Class *const self =
        new Class("NSInvocation", NSObject::cls(), methods, qb::construct<NSInvocation>);
    return self;
}

NSInvocation *NSInvocation::invocationWithTarget(id target, SEL selector) {
    auto invocation = Ref<NSInvocation>::adopt(new NSInvocation);
    invocation->target_ = target;
    invocation->selector_ = selector;
    return invocation.autorelease();
}

void NSInvocation::setArguments(std::vector<qb::Value> arguments) {
    for (const qb::Value &value : arguments_) // which an operation under way may still be using
        Ref<NSObject>(value.object()).autorelease();
    arguments_ = std::move(arguments);
}

void NSInvocation::invoke() {
    invokeWithTarget(target_);
}

void NSInvocation::invokeWithTarget(id target) {
    // The operation may replace the invocation's reference to it, and let the invocation go; the old result
    // may be all that keeps it.
    const Ref<NSObject> kept = target, self = this;
    setReturnValue(qb::Value());
    if (!target)
        return;
    const qb::Method *const method = target->methodForSelector(selector_);
    if (!method)
        return target->forwardInvocation(this);
    setReturnValue(method->invoke(target, arguments_.data(), arguments_.size()));
    returnsOwned_ = method->resultType().isOwned;
}
