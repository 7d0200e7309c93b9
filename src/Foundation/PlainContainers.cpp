#include "Foundation/PlainContainers.h"

#include "Foundation/PlainString.h"

namespace qb {

const void *plainArrayKeys[2] = {plainKeyOf<NSArray>(), plainKeyOf<NSMutableArray>()};
const void *plainDictionaryKeys[2] = {plainKeyOf<NSDictionary>(), plainKeyOf<NSMutableDictionary>()};

} // namespace qb
