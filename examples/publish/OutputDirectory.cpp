#include "OutputDirectory.h"

#include "Channels.h"
#include "Messages.h"
#include "OwnFiles.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace publish {

namespace {

constexpr std::string_view kStaging = ".publish";

// Removes a directory of ours with all that is in it. No link is followed, be it ours or planted.
bool removeTree(NSString *path) {
    // The filter of a run that was killed goes on, and may put its three files there meanwhile.
    for (int filesToCome = 3; filesToCome >= 0; --filesToCome) {
        if (NSFileManager::defaultManager()->removeFileAtPath(path) || errno == ENOENT)
            return true;
        if (errno != ENOTEMPTY)
            break;
    }
    return failWith(__LINE__, qb::kErrorCannotRemove, path);
}

bool removeFile(NSString *path) {
    return ::unlink(path->cString()) == 0 || errno == ENOENT || errno == EISDIR || errno == ENOTDIR ||
           failWith(__LINE__, qb::kErrorCannotRemove, path);
}

// Removes a directory of the site unless something is in it. One that others hold or have not given us the
// right to remove stays too, for nothing can be done about it by trying again.
bool removeIfEmpty(NSString *directory) {
    if (::rmdir(directory->cString()) == 0)
        return true;
    switch (errno) {
    case ENOENT:
    case ENOTEMPTY:
    case EEXIST:
    case ENOTDIR:
    case EACCES:
    case EPERM:
    case EBUSY:
        return true;
    default:
        return failWith(__LINE__, qb::kErrorCannotRemove, directory);
    }
}

// Removes the directories in it that have no files.
void removeEmptyDirectories(NSString *tree) {
    if (NSArray *const inside = NSFileManager::defaultManager()->subpathsAtPath(tree))
        for (std::uint32_t i = inside->count(); i-- > 0;) // what is in a directory comes behind it
            ::rmdir(tree->stringByAppendingPathComponent(inside->objectAtIndex(i)->stringValue())->cString());
}

// The directories that the paths stand in.
NSSet *directoriesAbove(NSArray *paths) {
    NSMutableSet *const above = NSMutableSet::set();
    for (id path : *paths) {
        const NSAutoreleasePool pool;
        for (NSString *directory = path->stringValue()->stringByDeletingLastPathComponent();
             directory->containsData() && !above->containsObject(directory);
             directory = directory->stringByDeletingLastPathComponent())
            above->addObject(directory);
    }
    return above;
}

} // namespace

bool isSitePath(NSString *path) {
    const std::string_view text = path->view();
    return isInside(text) && text.substr(0, text.find('/')) != kStaging;
}

OutputDirectory::OutputDirectory(NSString *path)
    : path_(path), staging_(place(NSString::stringWith(kStaging))),
      files_(staging_->stringByAppendingPathComponent("files"_ns)),
      journal_(staging_->stringByAppendingPathComponent("journal.plist"_ns)),
      list_(staging_->stringByAppendingPathComponent("brought.plist"_ns)) {}

OutputDirectory::~OutputDirectory() {
    try {
        const qb::SavedErrors errors(qb::SavedErrors::kDiscard); // the run has failed for another reason
        discard();
    } catch (const std::bad_alloc &) { // then the next run does it
    }
    if (lock_ >= 0)
        ::close(lock_);
}

bool OutputDirectory::discard() {
    if (!std::exchange(hasStaged_, false))
        return true;
    // The journal first, so that it never names what is gone.
    return removeFile(journal_) && takeBack(brought_) && removeTree(staging_);
}

bool OutputDirectory::lock() {
    lock_ = ::open(path_->cString(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (lock_ < 0)
        return fail(__LINE__, kErrorDirectoryUnreadable, path_.get());
    return ::flock(lock_, LOCK_EX | LOCK_NB) == 0 || fail(__LINE__, kErrorBusy, path_.get());
}

bool OutputDirectory::begin() {
    OSFilePath::makePath(path_);
    if (hasFailed() || (lock_ < 0 && !lock()) || !finishEarlierRun())
        return false;
    hasStaged_ = ::mkdir(staging_->cString(), 0700) == 0; // pages that wait to be enciphered are in there
    return hasStaged_ || failWith(__LINE__, qb::kErrorCannotMakeDirectory, staging_.get());
}

bool OutputDirectory::recover() {
    if (!OSFilePath::directoryExistsAtPath(path_))
        return !hasFailed();
    return lock() && finishEarlierRun();
}

// Without a journal, what an earlier run staged and brought is of no use; with one, that run is decided and
// is finished here.
bool OutputDirectory::finishEarlierRun() {
    const bool isOurs = kindOf(staging_) == Kind::directory;
    Plan plan;
    if (isOurs && kindOf(journal_) != Kind::nothing)
        return readPlan(journal_, plan) && finish(plan);
    if (hasFailed())
        return false;
    if (isOurs && kindOf(list_) != Kind::nothing && (!readPlan(list_, plan) || !takeBack(plan.removed)))
        return false;
    return !hasFailed() && removeTree(staging_);
}

NSString *OutputDirectory::linkAbove(NSString *path) const {
    const std::string_view text = path->view();
    for (std::size_t end = text.find('/'); end != text.npos; end = text.find('/', end + 1)) {
        NSString *const directory = NSString::stringWith(text.substr(0, end));
        const Kind kind = kindOf(place(directory));
        if (kind != Kind::directory)
            return kind == Kind::link ? directory : nullptr;
    }
    return nullptr;
}

Kind OutputDirectory::kindInPlace(NSString *path) const {
    return linkAbove(path) || hasFailed() ? Kind::nothing : kindOf(place(path));
}

bool OutputDirectory::stageManifest(const Manifest &manifest) {
    return writeManifest(manifest, staged(NSString::stringWith(kManifest)));
}

bool OutputDirectory::readListed(Manifest &manifest) const {
    NSString *const file = place(NSString::stringWith(kManifest));
    return kindOf(file) == Kind::nothing ? !hasFailed() : readManifest(file, manifest);
}

// --- The exchange ---

bool OutputDirectory::exchange(const Plan &plan) {
    // What is staged is on the disk before the journal says that it is to be used.
    if (!areStaged(plan.moved) || !bringNewNames(plan) || !synchronize() || !writePlan(plan, journal_))
        return false;
    hasStaged_ = false; // from here on the next run finishes what this one does not
    return finish(plan);
}

// What somebody has taken away meanwhile would be thought to have come to its place already.
bool OutputDirectory::areStaged(NSArray *paths) const {
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        NSString *const file = staged(static_cast<NSString *>(element));
        if (kindOf(file) == Kind::nothing)
            return hasFailed() ? false : fail(__LINE__, qb::kErrorFileMissing, file);
    }
    return true;
}

// They are written down first, so that the next run takes them away if this one is cut off.
bool OutputDirectory::bringNewNames(const Plan &plan) {
    NSArray *const names = newNames(plan);
    if (hasFailed() || names->count() == 0)
        return !hasFailed();
    if (!writePlan({names, NSArray::array()}, list_))
        return false;
    brought_ = names;
    for (id name : *names)
        if (!bring(name->stringValue()))
            return false;
    return true;
}

// Those of the paths, and of the directories above them, that nothing has yet; a directory before what is in
// it. What stands below a file or link that has to go first is not among them, nor is the manifest where
// there are others that go or are replaced.
NSArray *OutputDirectory::newNames(const Plan &plan) const {
    const Ref<NSMutableSet> names = NSMutableSet::init(); // in order
    Ref<NSString> before; // the directory of the path before; most share theirs
    bool hasDirectory = false;
    bool areAllNew = plan.removed->count() == 0;
    for (id element : *plan.moved) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        NSString *const directory = path->stringByDeletingLastPathComponent();
        if (!before || !before->isEqualToString(directory))
            hasDirectory = addMissing(path, names);
        before = directory;
        const bool isNew = hasDirectory && kindOf(place(path)) == Kind::nothing;
        areAllNew = areAllNew && isNew;
        if (isNew && (areAllNew || path->view() != kManifest))
            names->addObject(path);
    }
    return names->allObjects();
}

// Adds the directories that the path is in, the outermost first. Returns whether none has to wait.
bool OutputDirectory::addMissing(NSString *path, NSMutableSet *names) const {
    if (linkAbove(path))
        return false;
    NSMutableArray *const missing = NSMutableArray::array();
    NSString *directory = path->stringByDeletingLastPathComponent();
    while (directory->containsData() && kindOf(place(directory)) == Kind::nothing) {
        missing->insertObject(directory, 0);
        directory = directory->stringByDeletingLastPathComponent();
    }
    if (directory->containsData() && kindOf(place(directory)) != Kind::directory)
        return false;
    names->addObjectsFromArray(missing);
    return true;
}

// A directory may have come under another name that counts as the same where case is disregarded.
bool OutputDirectory::bring(NSString *name) {
    const NSAutoreleasePool pool;
    const Kind kind = kindOf(staged(name));
    if (hasFailed())
        return false;
    if (kind == Kind::directory)
        return ::mkdir(place(name)->cString(), 0777) == 0 ||
               (errno == EEXIST && kindOf(place(name)) == Kind::directory) ||
               failWith(__LINE__, qb::kErrorCannotMakeDirectory, place(name));
    OSFilePath::renamePath(staged(name), place(name));
    return !hasFailed();
}

// The innermost first. A file that is still staged is not the one in its place; what others put into a
// directory stays with it.
bool OutputDirectory::takeBack(NSArray *names) const {
    for (std::uint32_t i = names->count(); i-- > 0;) {
        const NSAutoreleasePool pool;
        NSString *const name = names->objectAtIndex(i)->stringValue();
        const bool isBehindLink = linkAbove(name) != nullptr;
        const bool isBroughtFile = kindOf(staged(name)) == Kind::nothing;
        if (hasFailed())
            return false;
        if (!isBehindLink && !(isBroughtFile ? removeFile(place(name)) : removeIfEmpty(place(name))))
            return false;
    }
    return removeFile(list_); // whoever has one of the names from now on keeps it
}

// The list goes first: what it has is decided now, whichever of both files a run that is cut off leaves. When
// all is done the journal goes: whoever has one of the names from then on keeps it.
bool OutputDirectory::finish(const Plan &plan) {
    try {
        return ((removeFile(list_) && carryOut(plan) && removeFile(journal_)) ||
                fail(__LINE__, kErrorUnfinished, path_.get())) &&
               removeTree(staging_);
    } catch (const std::bad_alloc &) {
        fail(__LINE__, kErrorUnfinished, path_.get());
        throw;
    }
}

bool OutputDirectory::carryOut(const Plan &plan) {
    return remove(plan) && move(plan.moved) && synchronize();
}

bool OutputDirectory::remove(const Plan &plan) {
    NSSet *const kept = directoriesAbove(plan.moved); // those that something comes to
    for (id element : *plan.removed) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        // After a run that was cut off, a new directory may have the name, or a new file or link that of one
        // above it.
        if (linkAbove(path))
            continue;
        if (hasFailed())
            return false;
        debug_printf(debugChannel, "%s is removed"_ns, path);
        if (!removeFile(place(path)) || !removeDirectoriesAbove(path, kept))
            return false;
    }
    return true;
}

// Directories that are left empty go with their last file.
bool OutputDirectory::removeDirectoriesAbove(NSString *path, NSSet *kept) const {
    for (NSString *directory = path->stringByDeletingLastPathComponent();
         directory->containsData() && !kept->containsObject(directory);
         directory = directory->stringByDeletingLastPathComponent())
        if (!removeIfEmpty(place(directory)))
            return false;
    return true;
}

bool OutputDirectory::move(NSArray *paths) {
    Ref<NSString> prepared; // the directory of the path before; most share theirs
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        if (kindOf(staged(path)) == Kind::nothing && !hasFailed())
            continue; // it was brought before the journal, in its directory, or by a run that was cut off
        NSString *const directory = path->stringByDeletingLastPathComponent();
        const bool isPrepared = prepared && prepared->isEqualToString(directory);
        if (hasFailed() || !(isPrepared ? replace(path) : moveWithDirectory(path)))
            return false;
        prepared = directory;
    }
    return true;
}

// A directory that a file or link has left its name to comes as it is staged: to make it could need room.
bool OutputDirectory::moveWithDirectory(NSString *path) {
    if (NSString *const link = linkAbove(path))
        return fail(__LINE__, kErrorInTheWay, place(link));
    NSString *name = path;
    for (NSString *directory = path->stringByDeletingLastPathComponent();
         directory->containsData() && kindOf(place(directory)) == Kind::nothing;
         directory = directory->stringByDeletingLastPathComponent())
        name = directory;
    if (name != path)
        removeEmptyDirectories(staged(name));
    return !hasFailed() && replace(name);
}

bool OutputDirectory::replace(NSString *name) {
    if (!removeIfEmpty(place(name)))
        return false;
    OSFilePath::renamePath(staged(name), place(name));
    return !hasFailed();
}

bool OutputDirectory::synchronize() {
    return ::syncfs(lock_) == 0 || failWith(__LINE__, qb::kErrorCannotWrite, path_.get());
}

} // namespace publish
