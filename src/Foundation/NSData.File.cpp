// Data from files and back.
#include <QBFoundation/Foundation/NSData.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBFileOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/NSData.Tables.h"
#include "Foundation/Required.h"

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
    qb::required(path, "NSData initWithContentsOfFile:", "a path");
    std::string bytes;
    if (!qb::readFileContentsOrRaise(path, bytes, kFile, __LINE__))
        return NO;
    return setUpWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

BOOL NSData::writeToFile(NSString *path, BOOL atomically) const {
    qb::required(path, "NSData writeToFile:atomically:", "a path");
    const qb::SavedErrors earlier; // for which the stream would be nil
    const Ref<QBFileOutputStream> stream = QBFileOutputStream::initWithFile(path, atomically);
    if (!stream)
        return NO;
    if (length_ != 0)
        stream->writeBuffer(bytes_, length_);
    stream->close();
    return !qb::isErrorPending();
}
