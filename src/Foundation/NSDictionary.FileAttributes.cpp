// What a dictionary of a file's attributes holds.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Foundation/NSFileManager.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSDictionary.Tables.h"

namespace {

std::uint64_t numberIn(const NSDictionary *attributes, NSString *key) {
    auto *const number = qb::castOrNil<NSNumber>(attributes->objectForKey(key));
    return number ? number->unsignedLongLongValue() : 0;
}

std::uint32_t smallNumberIn(const NSDictionary *attributes, NSString *key) {
    return static_cast<std::uint32_t>(numberIn(attributes, key));
}

} // namespace

std::span<const qb::Method> qb::tables::dictionaryFileAttributes() {
    static const qb::Method methods[] = {
        qb::method<"fileSize">(&NSDictionary::fileSize),
        qb::method<"fileType">(&NSDictionary::fileType),
        qb::method<"fileModificationDate">(&NSDictionary::fileModificationDate),
        qb::method<"filePosixPermissions">(&NSDictionary::filePosixPermissions),
        qb::method<"fileOwnerAccountID">(&NSDictionary::fileOwnerAccountID),
        qb::method<"fileGroupOwnerAccountID">(&NSDictionary::fileGroupOwnerAccountID),
        qb::method<"fileSystemNumber">(&NSDictionary::fileSystemNumber),
        qb::method<"fileSystemFileNumber">(&NSDictionary::fileSystemFileNumber),
    };
    return methods;
}

std::uint64_t NSDictionary::fileSize() const {
    return numberIn(this, NSFileSize);
}

NSString *NSDictionary::fileType() const {
    return qb::castOrNil<NSString>(objectForKey(NSFileType));
}

NSDate *NSDictionary::fileModificationDate() const {
    return qb::castOrNil<NSDate>(objectForKey(NSFileModificationDate));
}

std::uint32_t NSDictionary::filePosixPermissions() const {
    return smallNumberIn(this, NSFilePosixPermissions);
}

std::uint32_t NSDictionary::fileOwnerAccountID() const {
    return smallNumberIn(this, NSFileOwnerAccountID);
}

std::uint32_t NSDictionary::fileGroupOwnerAccountID() const {
    return smallNumberIn(this, NSFileGroupOwnerAccountID);
}

std::uint64_t NSDictionary::fileSystemNumber() const {
    return numberIn(this, NSFileSystemNumber);
}

std::uint64_t NSDictionary::fileSystemFileNumber() const {
    return numberIn(this, NSFileSystemFileNumber);
}
