// Restricted formats for callers that own what they get.
#ifndef QBFOUNDATION_FOUNDATION_RESTRICTEDFORMAT_H
#define QBFOUNDATION_FOUNDATION_RESTRICTEDFORMAT_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Ref.h>
#include <QBFoundation/Runtime/Value.h>

namespace qb {

/// What `stringWithRestrictedFormat:andArglist:` answers, owned instead of autoreleased. Nil for nil.
Ref<NSString> restrictedText(NSString *format, const ArgList &argList);

} // namespace qb

#endif
