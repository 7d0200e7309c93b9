#include <QBFoundation/Runtime/Send.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Runtime/Class.h>

#include "Runtime/Dispatch.h"

#include <string>
#include <vector>

namespace qb {

namespace {

// The list ends in a site of its own, so that each site in it has a next one.
constinit CallSite lastSite;
constinit CallSite *newestSite = &lastSite;

bool resultPassesUnchecked(const Type &result, const Type &wanted) {
    if (wanted.kind == Kind::none || result.kind == Kind::none)
        return wanted.kind == result.kind;
    // An owned result fits a plain pointer (the caller releases it), but a borrowed one fits no owner.
    return passesUnchecked(result, wanted) && (result.isOwned || !wanted.isOwned);
}

bool allPassUnchecked(const Method &method, const Type *const *types, std::size_t argumentCount) {
    if (argumentCount != method.parameterCount() || !resultPassesUnchecked(method.resultType(), *types[0]))
        return false;
    for (std::uint32_t i = 0; i < argumentCount; ++i)
        if (!passesUnchecked(*types[i + 1], method.parameterType(i)))
            return false;
    return true;
}

} // namespace

const Method *prepareSend(id receiver, SEL selector, CallSite &site, const Type *const *types,
                          std::size_t argumentCount, bool lasts) {
    const Method *const method = receiver->methodForSelector(selector);
    if (!method || !allPassUnchecked(*method, types, argumentCount))
        return nullptr;
    site.method = method;
    site.entry = method->typedEntry();
    // Class objects share one virtual table but not their operations, so a call site can't know them by it.
    const bool isClass = dispatchKey(receiver) == dispatchKey(Class::cls());
    if (!lasts || isClass) {
        site.key = nullptr;
        return method;
    }
    if (!site.next) {
        site.next = newestSite;
        newestSite = &site;
    }
    site.key = dispatchKey(receiver);
    return method;
}

void forgetCallSites() {
    for (CallSite *site = newestSite; site != &lastSite; site = site->next)
        site->key = nullptr;
}

Value sendValues(id receiver, SEL selector, const Value *values, std::size_t count, bool &isOwned) {
    isOwned = false;
    if (!receiver)
        return Value();
    if (const Method *method = receiver->methodForSelector(selector)) {
        isOwned = method->resultType().isOwned;
        return method->invoke(receiver, values, count);
    }
    // The receiver may be one that is being destroyed: the pool gets neither it nor what retains it.
    const auto invocation = Ref<NSInvocation>::adopt(new NSInvocation);
    invocation->setTarget(receiver);
    invocation->setSelector(selector);
    invocation->setArguments(std::vector<Value>(values, values + count));
    receiver->forwardInvocation(invocation);
    isOwned = invocation->returnsOwned();
    Value result = invocation->returnValue();
    if (!isOwned && result.object() != receiver)
        Ref<NSObject>(result.object()).autorelease(); // nobody else may keep it
    if (result.pointer()) { // it may lead into what the invocation has got meanwhile
        if (invocation->target() == receiver)
            invocation->setTarget(nullptr);
        Ref<NSInvocation>(invocation).autorelease();
    }
    return result;
}

void throwWrongResult(id receiver, SEL selector, const Type &wanted) {
    throw InvalidArgumentException(std::string(receiver->classObject()->nameView()) + " " + selector->text() +
                                   " must have a result that is a " + nameOf(wanted) + ".");
}

} // namespace qb
