// The calls of a repeated message, to be part of the loops that make them.
#ifndef QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_CALLS_H
#define QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_CALLS_H

#include <QBFoundation/Runtime/Method.h>
#include <QBFoundation/Runtime/RepeatedMessage.h>
#include <QBFoundation/Runtime/Send.h>

namespace qb {

namespace detail {

/// Calls an operation whose result travels as an `R`, and whose values are objects.
template <class R, class... Ids>
R callTyped(const Method *method, id receiver, Ids... values) {
    return reinterpret_cast<R (*)(const Method *, id, Ids...)>(method->typedEntry())(method, receiver,
                                                                                     values...);
}

} // namespace detail

inline bool RepeatedMessage::isPlainFor(id receiver) const {
    return plainKey_ == dispatchKey(receiver);
}

inline id RepeatedMessage::plainObject(id receiver) const {
    return detail::callTyped<id>(method_, receiver);
}

inline bool RepeatedMessage::isPlainTrue(id receiver) const {
    return detail::callTyped<BOOL>(method_, receiver) != 0;
}

} // namespace qb

#endif
