#include "Publication.h"

#include "Channels.h"
#include "Files.h"
#include "Interruption.h"
#include "Messages.h"
#include "OwnFiles.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace publish {

namespace {

// Whether files can be made in a directory and taken away.
bool canChange(NSString *directory) {
    NSFileManager *const files = NSFileManager::defaultManager();
    return files->isWritableFileAtPath(directory) && files->isExecutableFileAtPath(directory);
}

// Whether files of others may not be replaced there.
bool keepsFilesOfOthers(NSString *directory) {
    struct stat status;
    return ::geteuid() != 0 && ::stat(directory->cString(), &status) == 0 &&
           (status.st_mode & S_ISVTX) != 0 && status.st_uid != ::geteuid();
}

bool isOfOther(NSString *file) {
    struct stat status;
    return ::lstat(file->cString(), &status) == 0 && status.st_uid != ::geteuid();
}

// Whether files can be renamed from one to the other.
bool areOnOneDevice(NSString *directory, NSString *other) {
    struct stat status, otherStatus;
    return ::stat(directory->cString(), &status) == 0 && ::stat(other->cString(), &otherStatus) == 0 &&
           status.st_dev == otherStatus.st_dev;
}

// Whether the file there has the rights of the staged one; links have none.
bool haveSameRights(NSString *staged, NSString *place) {
    struct stat status, placed;
    return ::lstat(staged->cString(), &status) != 0 || ::lstat(place->cString(), &placed) != 0 ||
           ((status.st_mode ^ placed.st_mode) & 07777) == 0;
}

} // namespace

// --- Taking files ---

bool Publication::isTaken(NSString *path) const {
    return paths_->containsObject(path) || path->view() == kManifest;
}

// No two files can have one path, nor one the path of a directory that another is in.
bool Publication::claim(NSString *path) {
    if (!isSitePath(path))
        return fail(__LINE__, kErrorUnsafePath, out_.path(), path);
    if (isTaken(path) || directories_->containsObject(path))
        return fail(__LINE__, kErrorWrittenTwice, path);
    for (NSString *directory = path->stringByDeletingLastPathComponent();
         directory->containsData() && !directories_->containsObject(directory);
         directory = directory->stringByDeletingLastPathComponent()) {
        if (isTaken(directory))
            return fail(__LINE__, kErrorWrittenTwice, directory);
        directories_->addObject(directory);
    }
    paths_->addObject(path);
    return true;
}

// Keeps the digest of a file and tells whether the run before listed another one. If so, what that run wrote
// need not be read; if not, it is still compared, for somebody may have changed it since.
bool Publication::hasNewDigest(NSString *path, NSString *digest) {
    digests_->setObjectForKey(digest, path);
    const id listed = listed_.digests->objectForKey(path);
    return listed && !listed->isEqual(digest);
}

bool Publication::isInPlace(NSString *path, NSData *text) {
    NSString *const place = out_.place(path);
    if (hasNewDigest(path, digestOf(text)) || kindOf(place) != Kind::file || out_.linkAbove(path))
        return false;
    NSData *const old = NSFileManager::defaultManager()->contentsAtPath(place);
    return old && old->isEqualToData(text);
}

// The same for a file that is staged.
bool Publication::isInPlace(NSString *path) {
    NSString *const place = out_.place(path), *const staged = out_.staged(path);
    const Kind kind = kindOf(staged);
    NSString *const digest = kind == Kind::file ? digestOfFile(staged) : nullptr;
    const bool isNew = digest && hasNewDigest(path, digest);
    if (isNew || hasFailed() || kindOf(place) != kind || out_.linkAbove(path))
        return false;
    NSFileManager *const files = NSFileManager::defaultManager();
    if (kind == Kind::file)
        return files->contentsEqualAtPath(staged, place);
    NSString *const link = files->pathContentOfSymbolicLinkAtPath(place);
    return link && link->isEqualToString(files->pathContentOfSymbolicLinkAtPath(staged));
}

void Publication::count(NSString *path, bool isUnchanged) {
    ++(isUnchanged ? counts_.unchanged : counts_.written);
    debug_printf(debugChannel, isUnchanged ? "%s is as it was"_ns : "%s is written"_ns, path);
    if (!isUnchanged)
        changed_->addObject(path);
}

bool Publication::addPage(NSString *path, NSData *text) {
    if (!claim(path))
        return false;
    const bool isUnchanged = isInPlace(path, text);
    count(path, isUnchanged);
    return isUnchanged || writeFile(out_.staged(path), text);
}

// The library copies the tree with its links; what is as it was before does not leave its stage.
bool Publication::addAssets(NSString *directory) {
    if (!OSFilePath::directoryExistsAtPath(directory))
        return fail(__LINE__, kErrorDirectoryUnreadable, directory);
    NSString *const name = directory->lastPathComponent();
    OSFilePath::copyPath(directory, out_.staged(NSString::string()));
    NSArray *const files = hasFailed() ? nullptr : filesBelow(out_.staged(name), HiddenFiles::included);
    if (!files)
        return false;
    for (id element : *files) {
        const NSAutoreleasePool pool;
        NSString *const path = name->stringByAppendingPathComponent(static_cast<NSString *>(element));
        // Pages with such a path are staged there too.
        if (isTaken(path) && kindOf(directory->stringByAppendingPathComponent(
                                 static_cast<NSString *>(element))) == Kind::nothing)
            continue;
        if (!claim(path))
            return false;
        count(path, isInPlace(path) && haveSameRights(out_.staged(path), out_.place(path)));
        if (hasFailed())
            return false;
    }
    return true;
}

// --- The commit ---

// What an earlier run wrote and this one does not.
NSArray *Publication::vanished() const {
    NSMutableArray *const old = NSMutableArray::array();
    for (id element : *listed_.files) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        if (!isTaken(path) && kindOf(out_.place(path)) != Kind::nothing && !out_.linkAbove(path))
            old->addObject(path);
    }
    return hasFailed() ? nullptr : old;
}

// The last to be renamed.
bool Publication::addManifest() {
    NSString *const name = NSString::stringWith(kManifest);
    NSArray *const files = paths_->allObjects()->sortedArrayUsingSelector("compare:"_sel);
    if (!out_.stageManifest({files, digests_}))
        return false;
    if (!isInPlace(name))
        changed_->addObject(name);
    return !hasFailed();
}

bool Publication::commit() {
    NSArray *const removed = vanished();
    if (!removed || !addManifest())
        return false;
    const Plan plan{removed, changed_};
    if (!canCarryOut(plan))
        return false;
    if (wasInterrupted())
        return fail(__LINE__, kErrorInterrupted, out_.path());
    counts_.removed = removed->count();
    const bool isAsItWas = removed->count() == 0 && changed_->count() == 0;
    return isAsItWas ? out_.discard() : out_.exchange(plan);
}

// Whether the removals and renames can be done, as far as that can be known before the first of them.
bool Publication::canCarryOut(const Plan &plan) const {
    for (id element : *plan.removed) {
        const NSAutoreleasePool pool;
        if (!canRemove(static_cast<NSString *>(element)))
            return false;
    }
    NSSet *const leaving = NSSet::setWithArray(plan.removed);
    Ref<NSString> checked; // the directory of the path before; most share theirs
    bool keepsOthers = false;
    for (id element : *plan.moved) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        NSString *const directory = path->stringByDeletingLastPathComponent();
        const bool isChecked = checked && checked->isEqualToString(directory);
        if ((!isChecked && !hasDirectory(path, leaving)) || !isFree(path, leaving))
            return false;
        if (!isChecked)
            keepsOthers = keepsFilesOfOthers(out_.place(directory));
        if (keepsOthers && isOfOther(out_.place(path)))
            return errno = EPERM, failWith(__LINE__, qb::kErrorCannotWrite, out_.place(path));
        checked = directory;
    }
    return !hasFailed();
}

bool Publication::canRemove(NSString *path) const {
    NSString *const file = out_.place(path);
    if (isOfOther(file) && keepsFilesOfOthers(file->stringByDeletingLastPathComponent()))
        return errno = EPERM, failWith(__LINE__, qb::kErrorCannotRemove, file);
    return NSFileManager::defaultManager()->isDeletableFileAtPath(file) ||
           failWith(__LINE__, qb::kErrorCannotRemove, file);
}

// Whether there is, or can be made, a directory for the file.
bool Publication::hasDirectory(NSString *path, NSSet *leaving) const {
    NSString *above = out_.linkAbove(path);
    if (!above) {
        above = path->stringByDeletingLastPathComponent();
        while (above->containsData() && kindOf(out_.place(above)) == Kind::nothing)
            above = above->stringByDeletingLastPathComponent();
    }
    if (leaving->containsObject(above))
        return true;
    NSString *const directory = above->containsData() ? out_.place(above) : out_.path();
    if (above->containsData() && kindOf(directory) != Kind::directory)
        return fail(__LINE__, kErrorInTheWay, directory);
    if (!canChange(directory))
        return failWith(__LINE__, qb::kErrorCannotWrite, out_.place(path));
    return areOnOneDevice(directory, out_.path()) ||
           (errno = EXDEV, failWith(__LINE__, qb::kErrorCannotWrite, out_.place(path)));
}

// Whether one of the paths is inside of the directory.
bool Publication::isAboveOneOf(NSSet *paths, NSString *directory) {
    NSString *const start = directory->stringByAppendingString("/"_ns);
    for (id path : *paths)
        if (path->stringValue()->hasPrefix(start))
            return true;
    return false;
}

// Whether no directory has the file's name, or only one that is empty or is removed with the last file in it.
bool Publication::isFree(NSString *path, NSSet *leaving) const {
    NSString *const place = out_.place(path);
    if (kindOf(place) != Kind::directory)
        return true;
    NSArray *const inside = NSFileManager::defaultManager()->subpathsAtPath(place);
    if (!inside)
        return fail(__LINE__, kErrorInTheWay, place);
    bool isLeft = inside->count() > 0 || !areOnOneDevice(place, out_.path());
    for (id element : *inside) {
        NSString *const one = path->stringByAppendingPathComponent(static_cast<NSString *>(element));
        if (leaving->containsObject(one))
            isLeft = false;
        else if (kindOf(out_.place(one)) != Kind::directory || !isAboveOneOf(leaving, one))
            return fail(__LINE__, kErrorInTheWay, out_.place(one));
    }
    return !isLeft || fail(__LINE__, kErrorInTheWay, place);
}

} // namespace publish
