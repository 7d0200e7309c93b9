#include <QBFoundation/OSAdaptor/OSDynamicLoader.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Library.h"

#include <cerrno>
#include <cstring>

namespace {

void raiseCannotLoad(const char *path, const char *reason) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseFatalErrorWithDefaultFormat("The library '%s' could not be loaded: %s"_ns,
                                                       qb::kErrorCannotLoadLibrary, path, reason);
}

} // namespace

Class *OSDynamicLoader::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"loadLibrary:fromDir:">(&OSDynamicLoader::loadLibrary),
        qb::classMethod<"loadLibraryFromPath:">(&OSDynamicLoader::loadLibraryFromPath),
    };
    static Class *const self = new Class("OSDynamicLoader", OSObject::cls(), methods);
    return self;
}

void OSDynamicLoader::loadLibrary(NSString *name, NSString *fromDir) {
    NSString *const file =
        NSString::stringWithRestrictedFormat("lib%s.%s"_ns, name, OSFilePath::sharedLibExtension());
    loadLibraryFromPath((fromDir ? fromDir : ""_ns)->stringByAppendingPathComponent(file));
}

void OSDynamicLoader::loadLibraryFromPath(NSString *path) {
    const char *const cString = path ? path->cString() : nullptr;
    if (path && std::strlen(cString) != path->view().size())
        raiseCannotLoad(cString, std::strerror(EINVAL));
    else if (!qb::sys::dlopen(cString, RTLD_NOW | RTLD_GLOBAL))
        raiseCannotLoad(cString ? cString : "<nil>", qb::sys::dlerror());
}
