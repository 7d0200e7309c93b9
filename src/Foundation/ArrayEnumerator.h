// The enumerator of arrays.
#ifndef QBFOUNDATION_FOUNDATION_ARRAYENUMERATOR_H
#define QBFOUNDATION_FOUNDATION_ARRAYENUMERATOR_H

#include <QBFoundation/Foundation/NSArray.h>

#include "Foundation/CollectionEnumerator.h"

namespace qb {

inline id elementItself(id element) {
    return element;
}

/// What `objectEnumerator` of arrays returns; of a known class, so that loops over it may have it in place.
using ArrayEnumerator = CollectionEnumerator<NSArray, &elementItself>;

} // namespace qb

#endif
