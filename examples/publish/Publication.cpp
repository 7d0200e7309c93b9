#include "Publication.h"

#include "Files.h"
#include "Interruption.h"
#include "Messages.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace publish {

namespace {

// Raises an error of the library with the path and why the system refused.
bool failWith(int line, int error, NSString *path) {
    return fail(line, error, path, std::strerror(errno));
}

bool isLink(NSString *path) {
    return NSFileManager::defaultManager()->pathContentOfSymbolicLinkAtPath(path) != nullptr;
}

bool isDirectoryItself(NSString *path) {
    return OSFilePath::directoryExistsAtPath(path) && !isLink(path);
}

// Whether files can be made in a directory and taken away.
bool canChange(NSString *directory) {
    NSFileManager *const files = NSFileManager::defaultManager();
    return files->isWritableFileAtPath(directory) && files->isExecutableFileAtPath(directory);
}

// Whether two files are the same: links of one text, or files of the same bytes.
bool isSameFile(NSString *a, NSString *b) {
    NSFileManager *const files = NSFileManager::defaultManager();
    NSString *const linkA = files->pathContentOfSymbolicLinkAtPath(a);
    NSString *const linkB = files->pathContentOfSymbolicLinkAtPath(b);
    if (linkA || linkB)
        return linkA && linkB && linkA->isEqualToString(linkB);
    return OSFilePath::fileExistsAtPath(b) && !OSFilePath::fileAtPath(a, /*differsFromFileAtPath=*/b);
}

bool holds(NSString *file, NSData *text) {
    if (isLink(file))
        return false;
    NSData *const old = NSFileManager::defaultManager()->contentsAtPath(file);
    return old && old->isEqualToData(text);
}

// Writes without syncing each file: the commit syncs them all at once.
bool writeFile(NSString *file, NSData *text) {
    QBFileOutputStream *const stream = QBFileOutputStream::streamWithFile(file);
    if (!stream)
        return false;
    stream->setSynchronizes(NO);
    stream->writeObject(text);
    stream->close();
    return !hasFailed();
}

bool writePropertyList(id value, NSString *file, BOOL atomically) {
    QBPropertyListOutputStream *const text = QBPropertyListOutputStream::streamWithCapacity(4096);
    text->writeObject(value);
    text->writeNL();
    if (!atomically)
        return writeFile(file, text->targetData());
    QBFileOutputStream::writeToFile(text->targetData(), file, YES);
    return !hasFailed();
}

// The list that a journal or manifest names, without what leads out of the site.
NSArray *pathsIn(NSDictionary *dictionary, NSString *key) {
    NSMutableArray *const paths = NSMutableArray::array();
    if (auto *listed = qb::castOrNil<NSArray>(dictionary->objectForKey(key)))
        for (id path : *listed)
            if (isInside(path->stringValue()->view()))
                paths->addObject(path);
    return paths;
}

// Reads a dictionary that an earlier run wrote; nil, with an error raised, when it is not whole.
NSDictionary *readOwnFile(NSString *file) {
    NSString *const text = readText(file);
    auto *dictionary = text ? qb::castOrNil<NSDictionary>(text->propertyList()) : nullptr;
    if (!dictionary)
        fail(__LINE__, kErrorMalformedFile, file);
    return dictionary;
}

// Removes a directory of ours with all that is in it. No link is followed, be it ours or planted.
bool removeTree(NSString *path) {
    return NSFileManager::defaultManager()->removeFileAtPath(path) || errno == ENOENT ||
           failWith(__LINE__, qb::kErrorCannotRemove, path);
}

// Directories that are left empty go with their last file.
void removeEmptyDirectories(NSString *root, NSString *path) {
    for (NSString *directory = path->stringByDeletingLastPathComponent(); directory->containsData();
         directory = directory->stringByDeletingLastPathComponent())
        if (::rmdir(root->stringByAppendingPathComponent(directory)->cString()) != 0)
            return;
}

} // namespace

Publication::Publication(NSString *target)
    : target_(target), staging_(target->stringByAppendingPathComponent(".publish"_ns)),
      journal_(staging_->stringByAppendingPathComponent("journal.plist"_ns)), paths_(NSMutableSet::init()),
      changed_(NSMutableArray::init()) {}

Publication::~Publication() {
    if (hasStaged_) {
        ::unlink(journal_->cString()); // first, so that it never names what is gone
        removeTree(staging_);
    }
    if (lock_ >= 0)
        ::close(lock_);
}

bool Publication::lock() {
    lock_ = ::open(target_->cString(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (lock_ < 0)
        return fail(__LINE__, kErrorDirectoryUnreadable, target_.get());
    return ::flock(lock_, LOCK_EX | LOCK_NB) == 0 || fail(__LINE__, kErrorBusy, target_.get());
}

bool Publication::begin() {
    OSFilePath::makePath(target_);
    if (hasFailed() || !lock() || !recover())
        return false;
    hasStaged_ = NSFileManager::defaultManager()->createDirectoryAtPath(staging_, nullptr);
    return hasStaged_ || failWith(__LINE__, qb::kErrorCannotMakeDirectory, staging_.get());
}

// Without a journal, what an earlier run staged is of no use; with one, that run is decided and is finished
// here.
bool Publication::recover() {
    if (!isLink(staging_) && OSFilePath::fileExistsAtPath(journal_)) {
        NSDictionary *const journal = readOwnFile(journal_);
        if (!journal || !carryOut(journal))
            return false;
    }
    return removeTree(staging_);
}

bool Publication::claim(NSString *path) {
    if (!isInside(path->view()) || path->hasPrefix(".publish"_ns))
        return fail(__LINE__, kErrorUnsafePath, target_.get(), path);
    if (paths_->containsObject(path) || path->isEqualToString("manifest.plist"_ns))
        return fail(__LINE__, kErrorWrittenTwice, path);
    paths_->addObject(path);
    return true;
}

bool Publication::addPage(NSString *path, NSData *text) {
    if (!claim(path))
        return false;
    if (holds(place(path), text)) {
        ++counts_.unchanged;
        return !hasFailed();
    }
    ++counts_.written;
    changed_->addObject(path);
    return writeFile(staged(path), text);
}

// The library copies the tree with its links; what is as it was before does not stay staged.
bool Publication::addAssets(NSString *directory) {
    if (!OSFilePath::directoryExistsAtPath(directory))
        return true;
    NSString *const name = directory->lastPathComponent();
    OSFilePath::copyPath(directory, staging_);
    NSArray *const files = hasFailed() ? nullptr : filesBelow(staged(name));
    if (!files)
        return false;
    for (id element : *files) {
        const NSAutoreleasePool pool;
        NSString *const path = name->stringByAppendingPathComponent(static_cast<NSString *>(element));
        if (!claim(path))
            return false;
        const bool isUnchanged = isSameFile(staged(path), place(path));
        ++(isUnchanged ? counts_.unchanged : counts_.written);
        if (!isUnchanged)
            changed_->addObject(path);
        if (hasFailed())
            return false;
    }
    return true;
}

// What an earlier run wrote and this one does not.
NSArray *Publication::vanished() {
    NSMutableArray *const old = NSMutableArray::array();
    NSString *const manifest = place("manifest.plist"_ns);
    if (!OSFilePath::fileExistsAtPath(manifest))
        return old;
    NSDictionary *const listed = readOwnFile(manifest);
    if (!listed)
        return nullptr;
    for (id path : *pathsIn(listed, "files"_ns))
        if (!paths_->containsObject(path))
            old->addObject(path);
    return old;
}

bool Publication::stageManifest() {
    NSArray *const files = paths_->allObjects()->sortedArrayUsingSelector("compare:"_sel);
    NSString *const name = "manifest.plist"_ns;
    if (!writePropertyList(NSDictionary::dictionaryWith({{"files"_ns, files}}), staged(name), NO))
        return false;
    changed_->addObject(name); // the last to be renamed
    return true;
}

// Whether the removals and renames can be done, as far as that can be known before the first of them.
bool Publication::canCarryOut(NSArray *removed) const {
    for (id element : *removed) {
        NSString *const file = place(static_cast<NSString *>(element));
        if (!NSFileManager::defaultManager()->isDeletableFileAtPath(file) && errno != ENOENT &&
            errno != ENOTDIR)
            return failWith(__LINE__, qb::kErrorCannotRemove, file);
    }
    NSSet *const leaving = NSSet::setWithArray(removed);
    for (id element : *changed_) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        if (!hasDirectory(path, leaving) || !isFree(path, leaving))
            return false;
    }
    return true;
}

// Whether there is, or can be made, a directory for the file.
bool Publication::hasDirectory(NSString *path, NSSet *leaving) const {
    NSString *directory = path->stringByDeletingLastPathComponent();
    while (directory->containsData() && !OSFilePath::fileExistsAtPath(place(directory)))
        directory = directory->stringByDeletingLastPathComponent();
    if (leaving->containsObject(directory))
        return true;
    if (!OSFilePath::directoryExistsAtPath(place(directory)))
        return fail(__LINE__, kErrorInTheWay, place(directory));
    return canChange(place(directory)) || failWith(__LINE__, qb::kErrorCannotWrite, place(path));
}

// Whether no directory has the file's name, or only one that is removed with the last file in it.
bool Publication::isFree(NSString *path, NSSet *leaving) const {
    if (!isDirectoryItself(place(path)))
        return true;
    bool isLeft = true;
    if (NSArray *const inside = NSFileManager::defaultManager()->subpathsAtPath(place(path))) {
        for (id element : *inside) {
            NSString *const one = path->stringByAppendingPathComponent(static_cast<NSString *>(element));
            if (leaving->containsObject(one))
                isLeft = false;
            else if (!isDirectoryItself(place(one)))
                return fail(__LINE__, kErrorInTheWay, place(one));
        }
    }
    return !isLeft || fail(__LINE__, kErrorInTheWay, place(path));
}

bool Publication::commit() {
    NSArray *const removed = vanished();
    if (!removed || !stageManifest() || !canCarryOut(removed))
        return false;
    if (wasInterrupted())
        return fail(__LINE__, kErrorInterrupted, target_.get());
    counts_.removed = removed->count();
    ::syncfs(lock_); // what is staged is on the disk before the journal says that it is to be used
    NSDictionary *const journal =
        NSDictionary::dictionaryWith({{"moved"_ns, changed_}, {"removed"_ns, removed}});
    if (!writePropertyList(journal, journal_, YES))
        return false;
    hasStaged_ = false; // from here on the next run finishes what this one does not
    return carryOut(journal) && removeTree(staging_);
}

bool Publication::carryOut(NSDictionary *journal) {
    return removeOld(pathsIn(journal, "removed"_ns)) && moveStaged(pathsIn(journal, "moved"_ns));
}

bool Publication::removeOld(NSArray *paths) {
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        // After a run that was cut off, a new directory may have the name, or a new file that of one above
        // it.
        if (::unlink(place(path)->cString()) != 0 && errno != ENOENT && errno != EISDIR && errno != ENOTDIR)
            return failWith(__LINE__, qb::kErrorCannotRemove, place(path));
        removeEmptyDirectories(target_, path);
    }
    return true;
}

bool Publication::moveStaged(NSArray *paths) {
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        NSString *const from = staged(path);
        if (!isLink(from) && !OSFilePath::fileExistsAtPath(from))
            continue; // the run that was cut off had come so far
        OSFilePath::makePath(place(path)->stringByDeletingLastPathComponent());
        OSFilePath::renamePath(from, place(path));
        if (hasFailed())
            return false;
    }
    ::syncfs(lock_);
    return true;
}

} // namespace publish
