#include <QBFoundation/Runtime/Send.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Runtime/Class.h>

#include "Runtime/Dispatch.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <utility>
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

// A message on its way through `forwardInvocation:`.
//
// Its receiver and arguments belong to the sender, and one of them may be being destroyed: the pool gets
// neither them nor what retains them.
class Forwarding {
public:
    Forwarding(id receiver, SEL selector, std::span<const Value> values)
        : receiver_(receiver), values_(values), invocation_(Ref<NSInvocation>::adopt(new NSInvocation)) {
        invocation_->setTarget(receiver);
        invocation_->setSelector(selector);
        invocation_->setArguments({values.begin(), values.end()});
    }

    Value result(bool &isOwned) {
        receiver_->forwardInvocation(invocation_);
        isOwned = invocation_->returnsOwned();
        Value result = invocation_->returnValue();
        if (!isOwned && !isSenders(result.object()))
            Ref<NSObject>(result.object()).autorelease(); // nobody else may keep it
        if (result.pointer()) { // it may lead into what the invocation got meanwhile
            letGoOfSenders();
            invocation_.autorelease();
        }
        return result;
    }

private:
    static bool isAmong(id object, const auto &values) {
        return std::any_of(values.begin(), values.end(), [object](const Value &value) {
            return value.argList() ? isAmong(object, *value.argList()) : value.object() == object;
        });
    }
    bool isSenders(id object) const { return object == receiver_ || isAmong(object, values_); }
    // Others may have the lists as well, so that they get new ones.
    Value withoutSenders(const Value &value) const {
        if (const ArgList *const list = value.argList()) {
            std::vector<Value> values;
            std::transform(list->begin(), list->end(), std::back_inserter(values),
                           [this](const Value &each) { return withoutSenders(each); });
            return Value(ArgList(std::move(values)));
        }
        return value.object() && isSenders(value.object()) ? Value() : value;
    }
    void letGoOfSenders() {
        if (isSenders(invocation_->target_))
            invocation_->target_ = nullptr;
        for (Value &argument : invocation_->arguments_)
            argument = withoutSenders(argument);
    }

    const id receiver_;
    const std::span<const Value> values_;
    Ref<NSInvocation> invocation_;
};

Value sendValues(id receiver, SEL selector, const Value *values, std::size_t count, bool &isOwned) {
    isOwned = false;
    if (!receiver)
        return Value();
    if (const Method *method = receiver->methodForSelector(selector)) {
        isOwned = method->resultType().isOwned;
        return method->invoke(receiver, values, count);
    }
    return Forwarding(receiver, selector, {values, count}).result(isOwned);
}

void throwWrongResult(id receiver, SEL selector, const Type &wanted) {
    throw InvalidArgumentException(std::string(receiver->classObject()->nameView()) + " " + selector->text() +
                                   " must have a result that is a " + nameOf(wanted) + ".");
}

} // namespace qb
