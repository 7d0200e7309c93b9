// Strings that are known to be of the library's own classes, for the paths that can't wait for virtual calls.
#ifndef QB_FOUNDATION_PLAINSTRING_H
#define QB_FOUNDATION_PLAINSTRING_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Send.h>

namespace qb {

/// The dispatch key of the objects of a class.
template <class T>
const void *plainKeyOf() {
    T object;
    return dispatchKey(&object);
}

/// The dispatch keys of `NSString` and `NSMutableString`; null until static objects are made.
extern const void *plainStringKeys[2];

/// Whether the object is of one of those two classes and no subclass, so that its hash, its comparisons and
/// its bytes are what `NSString` says. May be false for them too, early at the program's start.
inline bool isPlainString(const NSObject *object) {
    const void *const key = dispatchKey(const_cast<NSObject *>(object));
    return key == plainStringKeys[0] || key == plainStringKeys[1];
}

} // namespace qb

#endif
