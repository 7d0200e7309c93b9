// Strings from files and back.
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBFileOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/NSString.Tables.h"

#include <string>

namespace {

constexpr const char *kFile = "src/Foundation/NSString.File";

void requirePath(NSString *path, const char *selector) {
    if (!path)
        throw InvalidArgumentException(std::string("NSString ") + selector +
                                       " must have a path that is not nil.");
}

Ref<NSString> initWithContentsOfClass(Class *asked, NSString *path) {
    requirePath(path, "initWithContentsOfFile:");
    std::string bytes;
    if (!qb::readFileContentsOrRaise(path, bytes, kFile, __LINE__))
        return {};
    return NSString::initOfClass(asked, bytes);
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
    requirePath(path, "writeToFile:atomically:");
    const qb::SavedErrors earlier; // an atomic stream takes a pending error for one of its own
    QBFileOutputStream::writeToFile(self(), path, atomically);
    return !qb::isErrorPending();
}
