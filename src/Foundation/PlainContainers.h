// Containers that are known to be of the library's own classes, for the paths that can't wait for virtual
// calls.
#ifndef QB_FOUNDATION_PLAINCONTAINERS_H
#define QB_FOUNDATION_PLAINCONTAINERS_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Runtime/Send.h>

namespace qb {

/// The dispatch keys of arrays and dictionaries, immutable and mutable; null until static objects are made.
extern const void *plainArrayKeys[2];
extern const void *plainDictionaryKeys[2];

/// Whether the object is of one of those two classes and no subclass. May be false for them too, early at the
/// program's start.
inline bool isPlainArray(id object) {
    const void *const key = dispatchKey(object);
    return key == plainArrayKeys[0] || key == plainArrayKeys[1];
}
inline bool isPlainDictionary(id object) {
    const void *const key = dispatchKey(object);
    return key == plainDictionaryKeys[0] || key == plainDictionaryKeys[1];
}

} // namespace qb

#endif
