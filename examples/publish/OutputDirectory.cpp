#include "OutputDirectory.h"

#include "Channels.h"
#include "Files.h"
#include "Messages.h"
#include "OwnFiles.h"

#include <cerrno>
#include <fcntl.h>
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

// Directories that are left empty go with their last file. A run that was cut off may have removed some.
void removeEmptyDirectories(NSString *root, NSString *path) {
    for (NSString *directory = path->stringByDeletingLastPathComponent(); directory->containsData();
         directory = directory->stringByDeletingLastPathComponent())
        if (::rmdir(root->stringByAppendingPathComponent(directory)->cString()) != 0 && errno != ENOENT)
            return;
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
      directories_(staging_->stringByAppendingPathComponent("directories.plist"_ns)) {}

OutputDirectory::~OutputDirectory() {
    const qb::SavedErrors errors(qb::SavedErrors::kDiscard); // the run has failed for another reason
    discard();
    if (lock_ >= 0)
        ::close(lock_);
}

bool OutputDirectory::discard() {
    if (!std::exchange(hasStaged_, false))
        return true;
    ::unlink(journal_->cString()); // first, so that it never names what is gone
    removeDirectories(made_);
    return removeTree(staging_);
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

// Without a journal, what an earlier run staged is of no use; with one, that run is decided and is finished
// here.
bool OutputDirectory::finishEarlierRun() {
    const bool isOurs = kindOf(staging_) == Kind::directory;
    Plan plan;
    if (isOurs && kindOf(journal_) != Kind::nothing)
        return readPlan(journal_, plan) && finish(plan);
    if (isOurs && kindOf(directories_) != Kind::nothing && readPlan(directories_, plan))
        removeDirectories(plan.removed);
    return !hasFailed() && removeTree(staging_);
}

NSString *OutputDirectory::linkAbove(NSString *path) const {
    for (NSString *directory = path->stringByDeletingLastPathComponent(); directory->containsData();
         directory = directory->stringByDeletingLastPathComponent())
        if (kindOf(place(directory)) == Kind::link)
            return directory;
    return nullptr;
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
    if (!makeDirectories(plan.moved) || !synchronize() || !writePlan(plan, journal_))
        return false;
    hasStaged_ = false; // from here on the next run finishes what this one does not
    return finish(plan);
}

// Before anything is decided, for a full disk has no room for them. They are written down first, so that the
// next run takes them away if this one is cut off.
bool OutputDirectory::makeDirectories(NSArray *paths) {
    const Ref<NSMutableSet> missing = NSMutableSet::init(); // in order
    Ref<NSString> before; // the directory of the path before; most share theirs
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        NSString *const directory = static_cast<NSString *>(element)->stringByDeletingLastPathComponent();
        if (!before || !before->isEqualToString(directory))
            addMissing(directory, missing);
        before = directory;
    }
    if (hasFailed() || missing->count() == 0)
        return !hasFailed();
    made_ = missing->allObjects();
    if (!writePlan({made_, NSArray::array()}, directories_))
        return false;
    for (id one : *made_)
        if (::mkdir(place(one->stringValue())->cString(), 0777) != 0)
            return failWith(__LINE__, qb::kErrorCannotMakeDirectory, place(one->stringValue()));
    return true;
}

// The outermost first. Where a file or a link has to go before, directories are made when it has gone.
void OutputDirectory::addMissing(NSString *directory, NSMutableSet *missing) const {
    NSMutableArray *const found = NSMutableArray::array();
    while (directory->containsData() && kindOf(place(directory)) == Kind::nothing) {
        found->insertObject(directory, 0);
        directory = directory->stringByDeletingLastPathComponent();
    }
    if (!directory->containsData() || kindOf(place(directory)) == Kind::directory)
        missing->addObjectsFromArray(found);
}

// Those that are empty.
void OutputDirectory::removeDirectories(NSArray *paths) const {
    for (std::uint32_t i = paths->count(); i-- > 0;)
        ::rmdir(place(paths->objectAtIndex(i)->stringValue())->cString());
}

bool OutputDirectory::finish(const Plan &plan) {
    return (carryOut(plan) && removeTree(staging_)) || fail(__LINE__, kErrorUnfinished, path_.get());
}

bool OutputDirectory::carryOut(const Plan &plan) {
    return remove(plan.removed) && move(plan.moved) && synchronize();
}

bool OutputDirectory::remove(NSArray *paths) {
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        // After a run that was cut off, a new directory may have the name, or a new file or link that of one
        // above it.
        if (linkAbove(path))
            continue;
        if (hasFailed())
            return false;
        debug_printf(debugChannel, "%s is removed"_ns, path);
        if (::unlink(place(path)->cString()) != 0 && errno != ENOENT && errno != EISDIR && errno != ENOTDIR)
            return failWith(__LINE__, qb::kErrorCannotRemove, place(path));
        removeEmptyDirectories(path_, path);
    }
    return true;
}

bool OutputDirectory::move(NSArray *paths) {
    Ref<NSString> prepared; // the directory of the path before; most share theirs
    for (id element : *paths) {
        const NSAutoreleasePool pool;
        auto *path = static_cast<NSString *>(element);
        if (kindOf(staged(path)) == Kind::nothing && !hasFailed())
            continue; // a run that was cut off has moved it
        NSString *const directory = path->stringByDeletingLastPathComponent();
        const bool isPrepared = prepared && prepared->isEqualToString(directory);
        if (hasFailed() || (!isPrepared && !prepareDirectory(path)))
            return false;
        prepared = directory;
        OSFilePath::renamePath(staged(path), place(path));
        if (hasFailed())
            return false;
    }
    return true;
}

// Makes the directory for a file that comes to its place.
bool OutputDirectory::prepareDirectory(NSString *path) {
    if (NSString *const link = linkAbove(path))
        return fail(__LINE__, kErrorInTheWay, place(link));
    OSFilePath::makePath(place(path)->stringByDeletingLastPathComponent());
    return !hasFailed();
}

bool OutputDirectory::synchronize() {
    return ::syncfs(lock_) == 0 || failWith(__LINE__, qb::kErrorCannotWrite, path_.get());
}

} // namespace publish
