// Data from files and back.
#include <QBFoundation/Foundation/NSData.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBFileOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/NSData.Tables.h"

#include <string>

namespace {
constexpr const char *kFile = "src/Foundation/NSData.File";
} // namespace

std::span<const qb::Method> qb::tables::dataFile() {
    static const qb::Method methods[] = {
        qb::method<"writeToFile:atomically:">(&NSData::writeToFile),
    };
    return methods;
}

BOOL NSData::setUpWithContentsOfFile(NSString *path) {
    if (!path)
        throw InvalidArgumentException("NSData initWithContentsOfFile: must have a path that is not nil.");
    std::string bytes;
    if (!qb::readFileContentsOrRaise(path, bytes, kFile, __LINE__))
        return NO;
    return setUpWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

BOOL NSData::writeToFile(NSString *path, BOOL atomically) const {
    if (!path)
        throw InvalidArgumentException("NSData writeToFile:atomically: must have a path that is not nil.");
    const qb::SavedErrors earlier; // for which the stream would be nil
    const Ref<QBFileOutputStream> stream = QBFileOutputStream::initWithFile(path, atomically);
    if (!stream)
        return NO;
    if (length_ != 0)
        stream->writeBuffer(bytes_, length_);
    stream->close();
    return !qb::isErrorPending();
}
