#include "Foundation/PlainClasses.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

namespace qb {

namespace {

template <class T>
const void *keyOf() {
    T object;
    return dispatchKey(&object);
}

} // namespace

const PlainKeys plainStringKeys{keyOf<NSString>(), keyOf<NSMutableString>()};
const PlainKeys plainArrayKeys{keyOf<NSArray>(), keyOf<NSMutableArray>()};
const PlainKeys plainDictionaryKeys{keyOf<NSDictionary>(), keyOf<NSMutableDictionary>()};

} // namespace qb
