// Elements whose own operations take apart what they are in.
#ifndef QBFOUNDATION_TESTS_SUPPORT_MEDDLERS_H
#define QBFOUNDATION_TESTS_SUPPORT_MEDDLERS_H

#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSSet.h>

/// Containers with meddlers, in them and in containers inside them, and one meddler that is in none.
struct Meddlers {
    NSMutableArray *array;
    NSMutableDictionary *dictionary;
    NSMutableSet *set;
    id single;
};

/// Does `operation` with two such groups again and again. Each time another question to a meddler (`hash`,
/// `isEqual:`, `isNil`, `stringValue`, `description`, `copy`, `encodeWithCoder:`, those of a path's tree)
/// empties all containers; or it lets go of the second group, and the next meddler that is destroyed empties
/// those of the first. Fails when a meddler is destroyed while it is asked or compared with another.
void meddle(void (*operation)(const Meddlers &mine, const Meddlers &other));

#endif
