// What the running library says about itself, as values for templates.
#ifndef PUBLISH_REFERENCE_H
#define PUBLISH_REFERENCE_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// The classes, each a dictionary: name, superclass (missing for the root), and operations, a list of
/// dictionaries with kind ("+" or "-"), selector and signature.
NSArray *referenceOfClasses();

/// The error numbers, each a dictionary: number, values, text.
NSArray *referenceOfErrors();

} // namespace publish

#endif
