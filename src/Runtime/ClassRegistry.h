// The classes of the process by name.
#ifndef QBFOUNDATION_RUNTIME_CLASSREGISTRY_H
#define QBFOUNDATION_RUNTIME_CLASSREGISTRY_H

#include <QBFoundation/Runtime/Class.h>

#include <span>

namespace qb {

/// One of the library's own classes.
struct ListedClass {
    const char *name;
    Class *(*cls)();
};

/// The library's own classes (src/ClassList.cpp): found by name without having been used before.
std::span<const ListedClass> libraryClasses();

/// Enters a class that was just made. Throws InvalidArgumentException when its name is taken: by another
/// class, or for a client's class by one of the library's own.
void enterClass(Class *cls, ClassMaker maker);

} // namespace qb

#endif
