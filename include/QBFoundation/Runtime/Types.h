// The basic types that every header of the library uses.
#ifndef QBFOUNDATION_RUNTIME_TYPES_H
#define QBFOUNDATION_RUNTIME_TYPES_H

#include <QBFoundation/Runtime/Export.h>

#ifdef __i386__
static_assert(alignof(double) == 4,
              "the library's objects have the platform's layout: without -malign-double");
#endif

class NSObject;
class Class;
class Selector;

/// Any object, or no object (nil is the null pointer).
using id = NSObject *;

/// The name of an operation: one object for each text in the process, so that comparing pointers compares
/// names.
using SEL = const Selector *;

/// A truth value with room for more: any value but 0 counts as true.
using BOOL = signed char;
constexpr BOOL YES = 1;
constexpr BOOL NO = 0;

#endif
