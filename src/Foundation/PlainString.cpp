#include "Foundation/PlainString.h"

namespace qb {

namespace {

template <class T>
const void *keyOf() {
    T object;
    return dispatchKey(&object);
}

} // namespace

const void *plainStringKeys[2] = {keyOf<NSString>(), keyOf<NSMutableString>()};

} // namespace qb
