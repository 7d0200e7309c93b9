// Strings from files and back.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBFileOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/NSString.Tables.h"

#include <cerrno>
#include <cstring>
#include <string>

namespace {

constexpr const char *kFile = "src/Foundation/NSString.File";

std::string_view checkedPath(NSString *path, const char *selector) {
    if (!path)
        throw InvalidArgumentException(std::string("NSString ") + selector +
                                       " must have a path that is not nil.");
    return path->view();
}

Ref<NSString> initWithContentsOfClass(Class *asked, NSString *path) {
    const std::string_view name = checkedPath(path, "initWithContentsOfFile:");
    std::string bytes;
    const bool isCString = name.find('\0') == std::string_view::npos;
    const int error = isCString ? qb::readFileContents(path->cString(), bytes) : EINVAL;
    if (error == 0)
        return NSString::initOfClass(asked, bytes);
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotRead, path, std::strerror(error));
    return {};
}

NSString *stringWithContentsOfClass(Class *asked, NSString *path) {
    return initWithContentsOfClass(asked, path).autorelease();
}

} // namespace

std::span<const qb::Method> qb::tables::stringFile() {
    static const qb::Method methods[] = {
        qb::classMethod<"stringWithContentsOfFile:">(&stringWithContentsOfClass),
        qb::classMethod<"initWithContentsOfFile:">(&initWithContentsOfClass),
        qb::method<"writeToFile:atomically:">(&NSString::writeToFile),
    };
    return methods;
}

Ref<NSString> NSString::initWithContentsOfFile(NSString *path) {
    return initWithContentsOfClass(NSString::cls(), path);
}

Ref<NSMutableString> NSMutableString::initWithContentsOfFile(NSString *path) {
    return static_cast<NSMutableString *>(initWithContentsOfClass(NSMutableString::cls(), path).get());
}

BOOL NSString::writeToFile(NSString *path, BOOL atomically) const {
    checkedPath(path, "writeToFile:atomically:");
    const qb::SavedErrors earlier; // an atomic stream takes a pending error for one of its own
    QBFileOutputStream::writeToFile(self(), path, atomically);
    return !qb::isErrorPending();
}
