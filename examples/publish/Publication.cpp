#include "Publication.h"

#include "Files.h"
#include "Interruption.h"
#include "Messages.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace publish {

namespace {

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
    if (!OSFilePath::fileExistsAtPath(file) || OSFilePath::directoryExistsAtPath(file) ||
        NSFileManager::defaultManager()->pathContentOfSymbolicLinkAtPath(file))
        return false;
    QBFileInputStream *const stream = QBFileInputStream::streamWithFile(file);
    const bool isEqual = stream && stream->providesSameDataAs(QBDataInputStream::streamWithData(text));
    if (stream)
        stream->close();
    return isEqual;
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
    if (hasStaged_)
        OSFilePath::removePath(staging_);
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
    OSFilePath::makePath(staging_);
    hasStaged_ = true;
    return !hasFailed();
}

// Without a journal, what an earlier run staged is of no use; with one, that run is decided and is finished
// here.
bool Publication::recover() {
    if (OSFilePath::fileExistsAtPath(journal_)) {
        NSDictionary *const journal = readOwnFile(journal_);
        if (!journal || !carryOut(journal))
            return false;
    }
    if (OSFilePath::fileExistsAtPath(staging_))
        OSFilePath::removePath(staging_);
    return !hasFailed();
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

bool Publication::commit() {
    NSArray *const removed = vanished();
    if (!removed || !stageManifest())
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
    if (!carryOut(journal))
        return false;
    OSFilePath::removePath(staging_);
    return !hasFailed();
}

bool Publication::carryOut(NSDictionary *journal) {
    return removeOld(pathsIn(journal, "removed"_ns)) && moveStaged(pathsIn(journal, "moved"_ns));
}

bool Publication::removeOld(NSArray *paths) {
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        OSFilePath::removePath(place(path));
        if (hasFailed())
            return false;
        removeEmptyDirectories(target_, path);
    }
    return true;
}

bool Publication::moveStaged(NSArray *paths) {
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        NSString *const from = staged(path);
        const bool isLink = NSFileManager::defaultManager()->pathContentOfSymbolicLinkAtPath(from) != nullptr;
        if (!isLink && !OSFilePath::fileExistsAtPath(from))
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
