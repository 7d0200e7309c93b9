// The calls of a repeated message, to be part of the loops that make them.
#ifndef QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_CALLS_H
#define QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_CALLS_H

#include <QBFoundation/Runtime/Method.h>
#include <QBFoundation/Runtime/RepeatedMessage.h>
#include <QBFoundation/Runtime/Send.h>

namespace qb {

inline bool RepeatedMessage::isPlainFor(id receiver) const {
    return plainKey_ == dispatchKey(receiver);
}

inline id RepeatedMessage::plainObject(id receiver) const {
    return reinterpret_cast<id (*)(id)>(plainOperation_)(receiver);
}

inline bool RepeatedMessage::isPlainTrue(id receiver) const {
    return reinterpret_cast<BOOL (*)(id)>(plainOperation_)(receiver) != 0;
}

} // namespace qb

#endif
