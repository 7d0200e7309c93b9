// Page plug-ins: shared libraries that give pages more values.
#ifndef PUBLISH_PLUGINS_H
#define PUBLISH_PLUGINS_H

#include "Site.h"

#include <vector>

namespace publish {

/// The classes of a directory's plug-ins.
///
/// A file "libName.so" has a class "Name" that answers the class operation `valuesForPage:body:` with a
/// dictionary of values for a page, from its head and the text of its body, or with nil. It raises an error
/// when the run must not go on.
class Plugins {
public:
    /// Loads the plug-ins of a directory, in the order of their names; nil has none. Returns false, with an
    /// error raised, when the directory can't be read, what is named as a library is no plain file, or a
    /// library has no such class. A file that is no library ends the program, see `OSDynamicLoader`.
    bool load(NSString *directory);

    /// Adds the plug-ins' values to the head of each page, where a later plug-in's replace an earlier one's
    /// and the null object takes a value away. Returns false, with an error raised, when one failed.
    bool addValues(Site &site) const;

private:
    bool loadLibrary(NSString *file);

    std::vector<Class *> classes_;
};

} // namespace publish

#endif
