// Strings from files and back.
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBFileOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"

#include <string>

namespace {

constexpr const char *kFile = "src/Foundation/NSString.File";

Ref<NSString> initWithContentsOfClass(Class *asked, NSString *path) {
    qb::required(path, "NSString initWithContentsOfFile:", "a path");
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
    qb::required(path, "NSString writeToFile:atomically:", "a path");
    const qb::SavedErrors earlier; // an atomic stream takes a pending error for one of its own
    QBFileOutputStream::writeToFile(self(), path, atomically);
    return !qb::isErrorPending();
}
