#include "Foundation/PlainString.h"

namespace qb {

const void *plainStringKeys[2] = {plainKeyOf<NSString>(), plainKeyOf<NSMutableString>()};

} // namespace qb
