#include <QBFoundation/Runtime/RepeatedMessage.h>

#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Value.h>

#include "Runtime/RepeatedMessage.Calls.h"

#include <algorithm>
#include <array>

namespace qb {

namespace {

constexpr std::size_t kMostValues = 3;

// The first of those that have looked up.
constinit RepeatedMessage *newestMessage = nullptr;

// How many values the operation takes beside a list of variable ones, which stays empty.
std::uint32_t namedCount(const Method &method) {
    return method.parameterCount() - (method.hasVariableValues() ? 1U : 0U);
}

bool isObject(const Type &type) {
    return type.kind == Kind::object || type.kind == Kind::classObject;
}

bool takesNil(const Type &type) {
    return isObject(type) || type.kind == Kind::cString || type.kind == Kind::pointer ||
           type.kind == Kind::function || type.kind == Kind::selector;
}

// Whether a result travels as an object that is not the caller's, or as a BOOL.
bool isTyped(const Type &result) {
    return isObject(result) ? !result.isOwned
                            : result.kind == Kind::integer && result.width == 8 && result.isSigned;
}

// Calls an operation whose result travels as an `R`, and whose values are objects.
template <class R, class... Ids>
R callTyped(const Method *method, id receiver, Ids... values) {
    return reinterpret_cast<R (*)(const Method *, id, Ids...)>(method->typedEntry())(method, receiver,
                                                                                     values...);
}

template <class R>
R callWith(const Method *method, id receiver, const id *values) {
    switch (method->parameterCount()) {
    case 0:
        return callTyped<R>(method, receiver);
    case 1:
        return callTyped<R>(method, receiver, values[0]);
    case 2:
        return callTyped<R>(method, receiver, values[0], values[1]);
    default:
        return callTyped<R>(method, receiver, values[0], values[1], values[2]);
    }
}

template <class Predicate>
bool allParameters(const Method &method, Predicate holds) {
    for (std::uint32_t i = 0; i < namedCount(method); ++i)
        if (!holds(method.parameterType(i)))
            return false;
    return true;
}

// Whether the typed entry can be called, with objects only.
bool isCalledTyped(const Method &method) {
    return isTyped(method.resultType()) && !method.hasVariableValues() && allParameters(method, &isObject);
}

bool canBeCalled(const Method &method, std::size_t valueCount) {
    return namedCount(method) <= valueCount && allParameters(method, &takesNil);
}

} // namespace

RepeatedMessage::~RepeatedMessage() {
    if (!link_)
        return;
    *link_ = next_;
    if (next_)
        next_->link_ = link_;
}

void RepeatedMessage::enterList() {
    if (link_)
        return;
    next_ = newestMessage;
    if (next_)
        next_->link_ = &next_;
    link_ = &newestMessage;
    newestMessage = this;
}

void RepeatedMessage::forgetAll() {
    for (RepeatedMessage *message = newestMessage; message; message = message->next_)
        message->forget();
}

bool RepeatedMessage::returnsWanted() const {
    const bool wantsObject = wanted_ == Wanted::object;
    return wanted_ != Wanted::anything && call_ == Call::typed &&
           isObject(method_->resultType()) == wantsObject;
}

void RepeatedMessage::lookUp(id receiver, std::size_t valueCount) {
    method_ = receiver->methodForSelector(selector_);
    call_ = Call::none;
    if (method_ && canBeCalled(*method_, valueCount))
        call_ = isCalledTyped(*method_) ? Call::typed : Call::listed;
    const auto isAnyObject = [](const Type &type) { return isObject(type) && type.cls() == NSObject::cls(); };
    looksAtValues_ = call_ != Call::none && !allParameters(*method_, isAnyObject);
    // Class objects share one virtual table but not their operations.
    const void *const key = dispatchKey(receiver);
    key_ = key == dispatchKey(Class::cls()) ? nullptr : key;
    plainOperation_ = key_ && returnsWanted() ? method_->bareMember(key_) : nullptr;
    plainKey_ = plainOperation_ ? key_ : nullptr;
    enterList();
}

bool RepeatedMessage::reaches(id receiver, std::span<const id> values) {
    if (!receiver)
        return false;
    if (key_ != dispatchKey(receiver))
        lookUp(receiver, values.size());
    return call_ != Call::none && (!looksAtValues_ || takes(values));
}

bool RepeatedMessage::takes(std::span<const id> values) const {
    for (std::uint32_t i = 0; i < namedCount(*method_); ++i) {
        const Type &type = method_->parameterType(i);
        if (values[i] && !(isObject(type) && values[i]->isKindOfClass(type.cls())))
            return false;
    }
    return true;
}

id RepeatedMessage::object(id receiver, const id *values) const {
    if (call_ == Call::listed)
        return Ref<NSObject>(invoke(receiver, values).object()).autorelease();
    if (isObject(method_->resultType()))
        return callWith<id>(method_, receiver, values);
    callWith<BOOL>(method_, receiver, values);
    return nullptr;
}

bool RepeatedMessage::isTrue(id receiver, const id *values) const {
    if (call_ == Call::listed)
        return invoke(receiver, values).isTrue();
    if (isObject(method_->resultType()))
        return callWith<id>(method_, receiver, values) != nullptr;
    return callWith<BOOL>(method_, receiver, values) != 0;
}

Value RepeatedMessage::invoke(id receiver, const id *values) const {
    const std::uint32_t count = namedCount(*method_);
    std::array<Value, kMostValues> list;
    std::copy_n(values, count, list.begin());
    return method_->invoke(receiver, list.data(), count);
}

} // namespace qb
