// What the running library says about itself, as values for templates.
#ifndef PUBLISH_REFERENCE_H
#define PUBLISH_REFERENCE_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// Returns what a template gets under the key; nil under any other than these:
/// - "classes": each a dictionary of name, superclass (missing for the root), and operations, a list of
///   dictionaries with kind ("+" or "-"), selector and signature
/// - "errors": the error numbers, each a dictionary of number, values, text
///
/// It is made when it is first asked for, as few sites do, and kept.
NSArray *referenceFor(NSString *key);

} // namespace publish

#endif
