// The calls of a repeated message, to be part of the loops that make them.
#ifndef QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_CALLS_H
#define QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_CALLS_H

#include <QBFoundation/Runtime/Method.h>
#include <QBFoundation/Runtime/RepeatedMessage.h>
#include <QBFoundation/Runtime/Send.h>

#include "Runtime/Dispatch.h"

namespace qb {

namespace detail {

/// Calls an operation whose result travels as an `R` and whose parameters are up to three objects.
template <class R>
R callTyped(const Method *method, id receiver, const id *values) {
    const Method::TypedEntry entry = method->typedEntry();
    switch (method->parameterCount()) {
    case 0:
        return reinterpret_cast<R (*)(const Method *, id)>(entry)(method, receiver);
    case 1:
        return reinterpret_cast<R (*)(const Method *, id, id)>(entry)(method, receiver, values[0]);
    case 2:
        return reinterpret_cast<R (*)(const Method *, id, id, id)>(entry)(method, receiver, values[0],
                                                                          values[1]);
    default:
        return reinterpret_cast<R (*)(const Method *, id, id, id, id)>(entry)(method, receiver, values[0],
                                                                              values[1], values[2]);
    }
}

} // namespace detail

inline bool RepeatedMessage::reaches(id receiver, std::span<const id> values) {
    if (!receiver)
        return false;
    if (key_ != dispatchKey(receiver) || generation_ != dispatchGeneration) [[unlikely]]
        lookUp(receiver, values.size());
    return call_ != Call::none && (!looksAtValues_ || takes(values));
}

inline id RepeatedMessage::object(id receiver, const id *values) const {
    if (call_ == Call::object) [[likely]]
        return detail::callTyped<id>(method_, receiver, values);
    return objectOf(invoke(receiver, values));
}

inline bool RepeatedMessage::isTrue(id receiver, const id *values) const {
    switch (call_) {
    case Call::signedByte:
        return detail::callTyped<std::int8_t>(method_, receiver, values) != 0;
    case Call::unsignedByte:
        return detail::callTyped<std::uint8_t>(method_, receiver, values) != 0;
    case Call::object:
        return detail::callTyped<id>(method_, receiver, values) != nullptr;
    default:
        return isTrueValue(invoke(receiver, values));
    }
}

} // namespace qb

#endif
