// Libraries that are loaded while the program runs.
#ifndef QBFOUNDATION_OSADAPTOR_OSDYNAMICLOADER_H
#define QBFOUNDATION_OSADAPTOR_OSDYNAMICLOADER_H

#include <QBFoundation/OSAdaptor/OSObject.h>

class NSString;

/// Loads shared libraries. All operations are the class's; there are no objects.
///
/// A library stays loaded as long as the process. What it defines is there for libraries that are loaded
/// later, and the classes that it registers (`qb::ClassRegistration`) are found by their names.
class QB_EXPORT OSDynamicLoader final : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Loads the library "lib", name, ".so" of a directory; nil and the empty directory stand for those that
    /// the system searches. Errors are those of the next.
    static void loadLibrary(NSString *name, NSString *fromDir);
    /// Loads the library of that path, or of that name when it has no "/" in it; nil loads nothing. Raises
    /// the fatal error 100241 (path, system text), which ends the process, when it can't be loaded.
    static void loadLibraryFromPath(NSString *path);

private:
    OSDynamicLoader() = default;
};

#endif
