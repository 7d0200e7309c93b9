#include "Publication.h"

#include "Channels.h"
#include "Files.h"
#include "Interruption.h"
#include "Messages.h"
#include "OwnFiles.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <unistd.h>
#include <utility>

namespace publish {

namespace {

// Whether files can be made in a directory and taken away.
bool canChange(NSString *directory) {
    NSFileManager *const files = NSFileManager::defaultManager();
    return files->isWritableFileAtPath(directory) && files->isExecutableFileAtPath(directory);
}

// Whether what has that path, if anything, may be taken away or replaced by those who can change its
// directory. If not, errno says why.
bool mayGo(NSString *path) {
    struct statx status, above;
    if (::statx(AT_FDCWD, path->cString(), AT_SYMLINK_NOFOLLOW, STATX_UID, &status) != 0 ||
        ::statx(AT_FDCWD, path->stringByDeletingLastPathComponent()->cString(), 0, STATX_UID | STATX_MODE,
                &above) != 0)
        return true;
    const bool isMounted = (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    const bool isMarked =
        ((status.stx_attributes | above.stx_attributes) & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0;
    const uid_t user = ::geteuid();
    const bool isOfOther =
        user != 0 && (above.stx_mode & S_ISVTX) != 0 && above.stx_uid != user && status.stx_uid != user;
    errno = isMounted ? EBUSY : EPERM;
    return !isMounted && !isMarked && !isOfOther;
}

// Whether files can be renamed from one directory to the other. One device may be mounted several times, and
// one mount show several devices.
bool areOnOneMount(NSString *directory, NSString *other) {
    struct statx one, two;
    return ::statx(AT_FDCWD, directory->cString(), 0, STATX_MNT_ID, &one) == 0 &&
           ::statx(AT_FDCWD, other->cString(), 0, STATX_MNT_ID, &two) == 0 &&
           one.stx_mnt_id == two.stx_mnt_id && one.stx_dev_major == two.stx_dev_major &&
           one.stx_dev_minor == two.stx_dev_minor;
}

// A copy belongs to whoever publishes: a file that came from another user must not lend their rights to those
// who run it. Returns false, with an error raised, when it would.
bool dropLentRights(NSString *staged) {
    constexpr mode_t kLent = S_ISUID | S_ISGID;
    struct stat status;
    if (!statusOf(staged, status) || !S_ISREG(status.st_mode) || (status.st_mode & kLent) == 0)
        return !hasFailed();
    return ::chmod(staged->cString(), status.st_mode & 07777 & ~kLent) == 0 ||
           failWith(__LINE__, qb::kErrorCannotWrite, staged);
}

// Whether the file there has the rights of the staged one; links have none.
bool haveSameRights(NSString *staged, NSString *place) {
    struct stat status, placed;
    return statusOf(staged, status) && statusOf(place, placed) &&
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
    if (hasNewDigest(path, digestOf(text)) || out_.kindInPlace(path) != Kind::file)
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
    if (isNew || hasFailed() || out_.kindInPlace(path) != kind)
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

// The library copies the tree with its links, and tells those that lead out by their paths: the directory's
// is the real one. What is as it was before does not leave its stage.
bool Publication::addAssets(NSString *directory) {
    if (!OSFilePath::directoryExistsAtPath(directory))
        return fail(__LINE__, kErrorDirectoryUnreadable, directory);
    NSString *const name = directory->lastPathComponent();
    OSFilePath::copyPath(NSString::stringWith(realPath(directory)), out_.staged(name));
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
        if (!claim(path) || !dropLentRights(out_.staged(path)))
            return false;
        count(path, isInPlace(path) && haveSameRights(out_.staged(path), out_.place(path)));
        if (hasFailed())
            return false;
    }
    return true;
}

// --- The commit ---

// What an earlier run wrote and this one does not. A directory that has such a name is not ours.
NSArray *Publication::vanished() const {
    NSMutableArray *const old = NSMutableArray::array();
    for (id element : *listed_.files) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        const Kind kind = isTaken(path) ? Kind::nothing : out_.kindInPlace(path);
        if (kind != Kind::nothing && kind != Kind::directory)
            old->addObject(path);
    }
    if (hasFailed())
        return nullptr;
    return old->count() > 0 ? withoutOurs(old) : old;
}

// Returns what files in their places share that are one file by two names; nothing where there is none. The
// several links of a file are told apart by their paths, but not by the case of these.
std::optional<Publication::Identity> Publication::identityOf(NSString *path) const {
    struct stat status;
    if (out_.linkAbove(path) || !statusOf(out_.place(path), status))
        return std::nullopt;
    const std::string_view name = status.st_nlink == 1 ? "" : path->lowercaseString()->view();
    return Identity(status.st_dev, status.st_ino, name);
}

// Whether two paths of one identity lead to the same entry of a directory. Links whose names differ by case
// alone are different ones where the directory lists both names.
bool Publication::areOneEntry(NSString *one, NSString *other) const {
    NSString *const directory = out_.place(one)->stringByDeletingLastPathComponent();
    struct stat above, otherAbove;
    if (!statusOf(directory, above) ||
        !statusOf(out_.place(other)->stringByDeletingLastPathComponent(), otherAbove) ||
        above.st_dev != otherAbove.st_dev || above.st_ino != otherAbove.st_ino)
        return false;
    NSString *const name = one->lastPathComponent(), *const otherName = other->lastPathComponent();
    if (name->isEqualToString(otherName))
        return true;
    NSArray *const names = NSFileManager::defaultManager()->directoryContentsAtPath(directory);
    return !names || !names->containsObject(name) || !names->containsObject(otherName);
}

// Leaves out those that are files of this run under another name, as where case is disregarded.
NSArray *Publication::withoutOurs(NSArray *paths) const {
    std::multimap<Identity, NSString *> ours;
    for (id path : *paths_) {
        const NSAutoreleasePool pool;
        if (const auto identity = identityOf(path->stringValue()))
            ours.emplace(*identity, path->stringValue());
    }
    NSMutableArray *const others = NSMutableArray::array();
    for (id path : *paths) {
        const NSAutoreleasePool pool;
        const auto identity = identityOf(path->stringValue());
        const auto [first, last] = identity ? ours.equal_range(*identity) : std::pair(ours.end(), ours.end());
        if (std::none_of(first, last,
                         [&](const auto &own) { return areOneEntry(own.second, path->stringValue()); }))
            others->addObject(path);
    }
    return others;
}

// Whoever comes to the start page of a new site finds what it leads to.
void Publication::bringStartPageLast() {
    NSString *const start = "index.html"_ns;
    if (!changed_->containsObject(start))
        return;
    changed_->removeObject(start);
    changed_->addObject(start);
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
    bringStartPageLast();
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
    for (id element : *plan.moved) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        NSString *const directory = path->stringByDeletingLastPathComponent();
        const bool isChecked = checked && checked->isEqualToString(directory);
        if ((!isChecked && !hasDirectory(path, leaving)) || !isFree(path, leaving))
            return false;
        checked = directory;
    }
    return !hasFailed();
}

bool Publication::canRemove(NSString *path) const {
    NSString *const file = out_.place(path);
    return (NSFileManager::defaultManager()->isDeletableFileAtPath(file) && mayGo(file)) ||
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
        above = above->stringByDeletingLastPathComponent();
    NSString *const directory = above->containsData() ? out_.place(above) : out_.path();
    if (above->containsData() && kindOf(directory) != Kind::directory)
        return fail(__LINE__, kErrorInTheWay, directory);
    if (!canChange(directory))
        return failWith(__LINE__, qb::kErrorCannotWrite, out_.place(path));
    return areOnOneMount(directory, out_.path()) ||
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

// Whether what has the file's name can be replaced. A directory has to be one that can be removed, being
// empty or with the last file in it.
bool Publication::isFree(NSString *path, NSSet *leaving) const {
    NSString *const place = out_.place(path);
    const Kind kind = out_.kindInPlace(path);
    if (kind != Kind::directory)
        return kind == Kind::nothing || mayGo(place) || failWith(__LINE__, qb::kErrorCannotWrite, place);
    NSArray *const inside = NSFileManager::defaultManager()->subpathsAtPath(place);
    if (!inside)
        return fail(__LINE__, kErrorInTheWay, place);
    bool isLeft = inside->count() > 0;
    for (id element : *inside) {
        NSString *const one = path->stringByAppendingPathComponent(static_cast<NSString *>(element));
        if (leaving->containsObject(one))
            isLeft = false;
        else if (kindOf(out_.place(one)) != Kind::directory || !isAboveOneOf(leaving, one))
            return fail(__LINE__, kErrorInTheWay, out_.place(one));
        if (!canRemove(one))
            return false;
    }
    return isLeft ? fail(__LINE__, kErrorInTheWay, place) : canRemove(path);
}

} // namespace publish
