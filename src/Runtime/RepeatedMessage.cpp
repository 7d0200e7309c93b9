#include <QBFoundation/Runtime/RepeatedMessage.h>

#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Value.h>

#include "Runtime/RepeatedMessage.Calls.h"

#include <algorithm>
#include <array>

namespace qb {

namespace {

constexpr std::size_t kMostValues = 3;

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

template <class Predicate>
bool allParameters(const Method &method, Predicate holds) {
    for (std::uint32_t i = 0; i < namedCount(method); ++i)
        if (!holds(method.parameterType(i)))
            return false;
    return true;
}

} // namespace

RepeatedMessage::Call RepeatedMessage::callFor(const Method *method, std::size_t valueCount) {
    if (!method || namedCount(*method) > valueCount || !allParameters(*method, &takesNil))
        return Call::none;
    if (method->hasVariableValues() || !allParameters(*method, &isObject))
        return Call::listed;
    const Type &result = method->resultType();
    if (isObject(result) && !result.isOwned)
        return Call::object;
    if (result.kind == Kind::integer && result.width == 8)
        return result.isSigned ? Call::signedByte : Call::unsignedByte;
    return Call::listed;
}

void RepeatedMessage::lookUp(id receiver, std::size_t valueCount) {
    method_ = receiver->methodForSelector(selector_);
    call_ = callFor(method_, valueCount);
    const auto isAnyObject = [](const Type &type) { return isObject(type) && type.cls() == NSObject::cls(); };
    looksAtValues_ = call_ != Call::none && !allParameters(*method_, isAnyObject);
    // Class objects share one virtual table but not their operations.
    const void *const key = dispatchKey(receiver);
    key_ = key == dispatchKey(Class::cls()) ? nullptr : key;
    generation_ = dispatchGeneration;
}

bool RepeatedMessage::takes(std::span<const id> values) const {
    for (std::uint32_t i = 0; i < namedCount(*method_); ++i) {
        const Type &type = method_->parameterType(i);
        if (values[i] && !(isObject(type) && values[i]->isKindOfClass(type.cls())))
            return false;
    }
    return true;
}

Value RepeatedMessage::invoke(id receiver, const id *values) const {
    const std::uint32_t count = namedCount(*method_);
    std::array<Value, kMostValues> list;
    std::copy_n(values, count, list.begin());
    return method_->invoke(receiver, list.data(), count);
}

id RepeatedMessage::objectOf(const Value &result) {
    const Ref<NSObject> object = result.object();
    return Ref<NSObject>(object).autorelease();
}

bool RepeatedMessage::isTrueValue(const Value &result) {
    switch (result.kind()) {
    case Kind::none:
    case Kind::argList:
        return false;
    case Kind::integer:
    case Kind::character:
        return result.integer() != 0;
    case Kind::real:
        return result.real() != 0;
    case Kind::range:
        return result.range().location != 0 || result.range().length != 0;
    default:
        return !result.isNull();
    }
}

} // namespace qb
