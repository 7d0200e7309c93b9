#include <QBFoundation/Foundation/NSFileManager.h>

#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/FileTree.h"
#include "System/Descriptor.h"
#include "System/Files.h"

#include <cerrno>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

// Initialisers of static objects need the constants, which must neither be made first nor end.
class Constant final : public NSString {
public:
    constexpr explicit Constant(std::string_view text) noexcept : NSString(text) { makeImmortal(); }
};

union Kept {
    constexpr explicit Kept(std::string_view text) : string(text) {}
    ~Kept() {}
    Constant string;
};

template <qb::FixedString Text>
constinit Kept kept(Text.view());

} // namespace

constinit NSString *const NSFileType = &kept<"NSFileType">.string;
constinit NSString *const NSFileSize = &kept<"NSFileSize">.string;
constinit NSString *const NSFileModificationDate = &kept<"NSFileModificationDate">.string;
constinit NSString *const NSFilePosixPermissions = &kept<"NSFilePosixPermissions">.string;
constinit NSString *const NSFileReferenceCount = &kept<"NSFileReferenceCount">.string;
constinit NSString *const NSFileOwnerAccountID = &kept<"NSFileOwnerAccountID">.string;
constinit NSString *const NSFileGroupOwnerAccountID = &kept<"NSFileGroupOwnerAccountID">.string;
constinit NSString *const NSFileSystemNumber = &kept<"NSFileSystemNumber">.string;
constinit NSString *const NSFileSystemFileNumber = &kept<"NSFileSystemFileNumber">.string;
constinit NSString *const NSFileTypeRegular = &kept<"NSFileTypeRegular">.string;
constinit NSString *const NSFileTypeDirectory = &kept<"NSFileTypeDirectory">.string;
constinit NSString *const NSFileTypeSymbolicLink = &kept<"NSFileTypeSymbolicLink">.string;
constinit NSString *const NSFileTypeSocket = &kept<"NSFileTypeSocket">.string;
constinit NSString *const NSFileTypePipe = &kept<"NSFileTypePipe">.string;
constinit NSString *const NSFileTypeCharacterSpecial = &kept<"NSFileTypeCharacterSpecial">.string;
constinit NSString *const NSFileTypeBlockSpecial = &kept<"NSFileTypeBlockSpecial">.string;

namespace {

namespace sys = qb::sys;

constexpr mode_t kPermissionBits = 07777;
constexpr double kNanosecondsPerSecond = 1e9;

/// Whether the system can be asked about the path at all; sets errno when not.
bool namesSomething(NSString *path) {
    const bool isUsable = path && path->view().find('\0') == std::string_view::npos;
    if (!isUsable)
        errno = path ? EINVAL : EFAULT;
    return isUsable;
}

BOOL hasAccess(NSString *path, int mode) {
    return namesSomething(path) && sys::access(path->cString(), mode) == 0;
}

std::string text(NSString *path) {
    return std::string(path->view());
}

NSString *typeOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return NSFileTypeDirectory;
    case S_IFLNK:
        return NSFileTypeSymbolicLink;
    case S_IFSOCK:
        return NSFileTypeSocket;
    case S_IFIFO:
        return NSFileTypePipe;
    case S_IFCHR:
        return NSFileTypeCharacterSpecial;
    case S_IFBLK:
        return NSFileTypeBlockSpecial;
    default:
        return NSFileTypeRegular;
    }
}

NSDictionary *attributesOf(const struct stat &info) {
    const double modified = static_cast<double>(info.st_mtim.tv_sec) +
                            static_cast<double>(info.st_mtim.tv_nsec) / kNanosecondsPerSecond;
    return NSDictionary::dictionaryWith({
        {NSFileType, typeOf(info.st_mode)},
        {NSFileSize, NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(info.st_size))},
        {NSFileModificationDate, NSDate::dateWithTimeIntervalSince1970(modified)},
        {NSFilePosixPermissions, NSNumber::numberWithUnsignedInt(info.st_mode & kPermissionBits)},
        {NSFileReferenceCount, NSNumber::numberWithUnsignedLongLong(info.st_nlink)},
        {NSFileOwnerAccountID, NSNumber::numberWithUnsignedInt(info.st_uid)},
        {NSFileGroupOwnerAccountID, NSNumber::numberWithUnsignedInt(info.st_gid)},
        {NSFileSystemNumber, NSNumber::numberWithUnsignedLongLong(info.st_dev)},
        {NSFileSystemFileNumber, NSNumber::numberWithUnsignedLongLong(info.st_ino)},
    });
}

timespec timeOf(NSDate *date) {
    const double seconds = date->timeIntervalSince1970();
    const double whole = std::floor(seconds);
    using Limits = std::numeric_limits<time_t>;
    constexpr auto kEarliest = static_cast<double>(Limits::min());
    if (whole >= -kEarliest)
        return {Limits::max(), 0};
    if (whole < kEarliest)
        return {Limits::min(), 0};
    return {static_cast<time_t>(whole), static_cast<long>((seconds - whole) * kNanosecondsPerSecond)};
}

NSArray *arrayOf(const std::vector<std::string> &texts) {
    NSMutableArray *const array = NSMutableArray::arrayWithCapacity(static_cast<std::uint32_t>(texts.size()));
    for (const std::string &one : texts) {
        const Ref<NSString> string = NSString::initWith(one);
        array->addObject(string);
    }
    return array;
}

// Whether the attributes that are set have their classes; sets errno when not.
bool canBeSet(NSDictionary *attributes) {
    const id mode = attributes ? attributes->objectForKey(NSFilePosixPermissions) : nullptr;
    const id date = attributes ? attributes->objectForKey(NSFileModificationDate) : nullptr;
    const bool isUsable = qb::castOrNil<NSNumber>(mode) == mode && qb::castOrNil<NSDate>(date) == date;
    if (!isUsable)
        errno = EINVAL;
    return isUsable;
}

bool writeContents(sys::Descriptor &file, NSData *contents) {
    return (!contents || sys::writeAll(file.get(), contents->bytes(), contents->length()) == 0) &&
           file.close() == 0;
}

} // namespace

Class *NSFileManager::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"defaultManager">(&NSFileManager::defaultManager),
        qb::method<"fileExistsAtPath:", BOOL(NSString *)>(&NSFileManager::fileExistsAtPath),
        qb::method<"fileExistsAtPath:isDirectory:", BOOL(NSString *, BOOL *)>(
            &NSFileManager::fileExistsAtPath),
        qb::method<"isReadableFileAtPath:">(&NSFileManager::isReadableFileAtPath),
        qb::method<"isWritableFileAtPath:">(&NSFileManager::isWritableFileAtPath),
        qb::method<"isExecutableFileAtPath:">(&NSFileManager::isExecutableFileAtPath),
        qb::method<"isDeletableFileAtPath:">(&NSFileManager::isDeletableFileAtPath),
        qb::method<"fileAttributesAtPath:traverseLink:">(&NSFileManager::fileAttributesAtPath),
        qb::method<"changeFileAttributes:atPath:">(&NSFileManager::changeFileAttributes),
        qb::method<"contentsEqualAtPath:andPath:">(&NSFileManager::contentsEqualAtPath),
        qb::method<"contentsAtPath:">(&NSFileManager::contentsAtPath),
        qb::method<"createFileAtPath:contents:attributes:">(&NSFileManager::createFileAtPath),
        qb::method<"createSymbolicLinkAtPath:pathContent:">(&NSFileManager::createSymbolicLinkAtPath),
        qb::method<"pathContentOfSymbolicLinkAtPath:">(&NSFileManager::pathContentOfSymbolicLinkAtPath),
        qb::method<"copyPath:toPath:handler:">(&NSFileManager::copyPath),
        qb::method<"linkPath:toPath:handler:">(&NSFileManager::linkPath),
        qb::method<"movePath:toPath:handler:">(&NSFileManager::movePath),
        qb::method<"removeFileAtPath:handler:">(&NSFileManager::removeFileAtPath),
        qb::method<"createDirectoryAtPath:attributes:">(&NSFileManager::createDirectoryAtPath),
        qb::method<"directoryContentsAtPath:">(&NSFileManager::directoryContentsAtPath),
        qb::method<"subpathsAtPath:">(&NSFileManager::subpathsAtPath),
        qb::method<"enumeratorAtPath:">(&NSFileManager::enumeratorAtPath),
        qb::method<"changeCurrentDirectoryPath:">(&NSFileManager::changeCurrentDirectoryPath),
        qb::method<"currentDirectoryPath">(&NSFileManager::currentDirectoryPath),
        qb::method<"fileSystemRepresentationWithPath:">(&NSFileManager::fileSystemRepresentationWithPath),
        qb::method<"stringWithFileSystemRepresentation:length:">(
            &NSFileManager::stringWithFileSystemRepresentation),
    };
    static Class *const self =
        new Class("NSFileManager", NSObject::cls(), methods, qb::construct<NSFileManager>);
    return self;
}

NSFileManager *NSFileManager::defaultManager() {
    static NSFileManager *const manager = new NSFileManager;
    return manager;
}

BOOL NSFileManager::fileExistsAtPath(NSString *path, BOOL *isDirectory) const {
    struct stat info;
    const bool exists = namesSomething(path) && sys::stat(path->cString(), &info) == 0;
    if (isDirectory)
        *isDirectory = exists && S_ISDIR(info.st_mode);
    return exists;
}

BOOL NSFileManager::isReadableFileAtPath(NSString *path) const {
    return hasAccess(path, R_OK);
}

BOOL NSFileManager::isWritableFileAtPath(NSString *path) const {
    return hasAccess(path, W_OK);
}

BOOL NSFileManager::isExecutableFileAtPath(NSString *path) const {
    return hasAccess(path, X_OK);
}

BOOL NSFileManager::isDeletableFileAtPath(NSString *path) const {
    struct stat info;
    if (!namesSomething(path) || sys::lstat(path->cString(), &info) != 0)
        return NO;
    std::string directory = text(path);
    directory.resize(directory.find_last_not_of('/') + 1);
    directory.resize(directory.rfind('/') + 1);
    return sys::access(directory.empty() ? "." : directory.c_str(), W_OK | X_OK) == 0;
}

NSDictionary *NSFileManager::fileAttributesAtPath(NSString *path, BOOL traverseLink) const {
    struct stat info;
    if (!namesSomething(path) ||
        (traverseLink ? sys::stat(path->cString(), &info) : sys::lstat(path->cString(), &info)) != 0)
        return nullptr;
    return attributesOf(info);
}

BOOL NSFileManager::changeFileAttributes(NSDictionary *attributes, NSString *path) {
    if (!namesSomething(path) || !canBeSet(attributes))
        return NO;
    if (!attributes)
        return YES;
    auto *mode = qb::castOrNil<NSNumber>(attributes->objectForKey(NSFilePosixPermissions));
    auto *date = qb::castOrNil<NSDate>(attributes->objectForKey(NSFileModificationDate));
    bool isDone = true;
    if (mode)
        isDone = sys::chmod(path->cString(), mode->unsignedIntValue() & kPermissionBits) == 0;
    if (date) {
        const timespec times[2] = {timeOf(date), timeOf(date)};
        isDone = sys::utimensat(path->cString(), times) == 0 && isDone;
    }
    return isDone;
}

BOOL NSFileManager::contentsEqualAtPath(NSString *path, NSString *andPath) const {
    return namesSomething(path) && namesSomething(andPath) && qb::tree::areEqual(text(path), text(andPath));
}

NSData *NSFileManager::contentsAtPath(NSString *path) const {
    std::string bytes;
    if (!namesSomething(path))
        return nullptr;
    if (const int error = qb::readFileContents(path->cString(), bytes); error != 0) {
        errno = error;
        return nullptr;
    }
    return NSData::dataWith(std::as_bytes(std::span(bytes)));
}

BOOL NSFileManager::createFileAtPath(NSString *path, NSData *contents, NSDictionary *attributes) {
    if (!namesSomething(path) || !canBeSet(attributes))
        return NO;
    sys::Descriptor file(sys::openExclusive(path->cString(), 0666));
    const bool isNew = static_cast<bool>(file);
    if (!isNew && errno == EEXIST)
        file = sys::Descriptor(sys::open(path->cString(), O_WRONLY | O_CREAT | O_TRUNC));
    if (!file)
        return NO;
    if (writeContents(file, contents))
        return changeFileAttributes(attributes, path);
    const int error = errno;
    if (isNew)
        sys::unlink(path->cString());
    errno = error;
    return NO;
}

BOOL NSFileManager::createSymbolicLinkAtPath(NSString *path, NSString *pathContent) {
    return namesSomething(path) && namesSomething(pathContent) &&
           sys::symlink(pathContent->cString(), path->cString()) == 0;
}

NSString *NSFileManager::pathContentOfSymbolicLinkAtPath(NSString *path) const {
    std::string link;
    return namesSomething(path) && qb::tree::readLink(text(path), link) ? NSString::stringWith(link)
                                                                        : nullptr;
}

BOOL NSFileManager::copyPath(NSString *path, NSString *toPath, id) {
    return namesSomething(path) && namesSomething(toPath) && qb::tree::copy(text(path), text(toPath));
}

BOOL NSFileManager::linkPath(NSString *path, NSString *toPath, id) {
    return namesSomething(path) && namesSomething(toPath) && qb::tree::link(text(path), text(toPath));
}

BOOL NSFileManager::movePath(NSString *path, NSString *toPath, id) {
    struct stat info;
    if (!namesSomething(path) || !namesSomething(toPath))
        return NO;
    if (sys::lstat(toPath->cString(), &info) == 0) {
        errno = EEXIST;
        return NO;
    }
    if (sys::rename(path->cString(), toPath->cString()) == 0)
        return YES;
    return errno == EXDEV && qb::tree::copy(text(path), text(toPath)) && qb::tree::remove(text(path));
}

BOOL NSFileManager::removeFileAtPath(NSString *path, id) {
    return namesSomething(path) && qb::tree::remove(text(path));
}

BOOL NSFileManager::createDirectoryAtPath(NSString *path, NSDictionary *attributes) {
    return namesSomething(path) && canBeSet(attributes) && sys::mkdir(path->cString(), 0777) == 0 &&
           changeFileAttributes(attributes, path);
}

NSArray *NSFileManager::directoryContentsAtPath(NSString *path) const {
    std::vector<std::string> names;
    return namesSomething(path) && qb::tree::list(text(path), names) ? arrayOf(names) : nullptr;
}

NSArray *NSFileManager::subpathsAtPath(NSString *path) const {
    NSEnumerator *const paths = enumeratorAtPath(path);
    return paths ? paths->allObjects() : nullptr;
}

NSDirectoryEnumerator *NSFileManager::enumeratorAtPath(NSString *path) const {
    return namesSomething(path) ? NSDirectoryEnumerator::enumeratorAtPath(path) : nullptr;
}

BOOL NSFileManager::changeCurrentDirectoryPath(NSString *path) {
    return namesSomething(path) && sys::chdir(path->cString()) == 0;
}

NSString *NSFileManager::currentDirectoryPath() const {
    constexpr std::size_t kFirstSize = 1024;
    for (std::string path(kFirstSize, '\0');; path.resize(path.size() * 2)) {
        if (sys::getcwd(path.data(), path.size()))
            return NSString::stringWith(path.c_str());
        if (errno != ERANGE)
            return nullptr;
    }
}

const char *NSFileManager::fileSystemRepresentationWithPath(NSString *path) const {
    return path ? path->fileSystemRepresentation() : nullptr;
}

NSString *NSFileManager::stringWithFileSystemRepresentation(const char *string, std::uint32_t length) const {
    return string ? NSString::stringWithCString(string, length) : nullptr;
}
