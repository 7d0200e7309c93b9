// The directory that a site is published into, and how its files are exchanged.
//
// Everything new is first written below OUT/.publish/files. New names, which a full disk may have no room
// for, then come to their place, where nothing leads to them yet; a list has them, by which they are taken
// away again when the run fails. Then a journal names what is to be done, and with that the run is decided:
// old files go, the other new ones are renamed over what they replace, the manifest last. A run that finds a
// journal finishes what it says before it does anything else, and one that finds only the list takes back
// what it says, so that a run that was cut off leaves no mixed site behind.
#ifndef PUBLISH_OUTPUTDIRECTORY_H
#define PUBLISH_OUTPUTDIRECTORY_H

#include "Files.h"

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// What is to be done when all is staged. The paths are relative to the directory.
struct Plan {
    Ref<NSArray> removed = NSArray::init(); // first,
    Ref<NSArray> moved = NSArray::init();   // then these, in this order
};

/// What a run wrote.
struct Manifest {
    Ref<NSArray> files = NSArray::init();             // the paths
    Ref<NSDictionary> digests = NSDictionary::init(); // the MD5 of each file that is no link, under its path
};

/// One run's hold on the directory. The operations that answer bool return false, with an error raised, when
/// they fail.
class OutputDirectory {
public:
    explicit OutputDirectory(NSString *path);
    /// Does what `discard` does, but is silent.
    ~OutputDirectory();
    OutputDirectory(const OutputDirectory &) = delete;
    OutputDirectory &operator=(const OutputDirectory &) = delete;

    /// Takes the lock of the directory, if there is one, and finishes a run that was cut off.
    bool recover();
    /// Makes the directory, and does the same.
    bool begin();

    NSString *path() const { return path_; }
    /// Where a file belongs.
    NSString *place(NSString *path) const { return path_->stringByAppendingPathComponent(path); }
    /// Where a run keeps what is gone at its end.
    NSString *workingDirectory() const { return staging_; }
    /// Where it waits for its exchange; the place of the directory that all of them wait in, for "".
    NSString *staged(NSString *path) const { return files_->stringByAppendingPathComponent(path); }
    /// Returns the path of the link that stands where a file's path wants a directory, of several the
    /// outermost; nil when none does. What is behind it is not ours.
    NSString *linkAbove(NSString *path) const;
    /// Returns what has a file's path; nothing when that is behind a link, or an error is pending.
    Kind kindInPlace(NSString *path) const;

    /// Writes the manifest where `staged` says.
    bool stageManifest(const Manifest &manifest);
    /// Reads the manifest that is in place, if any.
    bool readListed(Manifest &manifest) const;

    /// Decides that the plan is carried out, by this run or the next one, and does it.
    bool exchange(const Plan &plan);
    /// Takes away what was staged, unless it was decided to use it.
    bool discard();

private:
    bool lock();
    bool finishEarlierRun();
    bool areStaged(NSArray *paths) const;
    bool bringNewNames(const Plan &plan);
    NSArray *newNames(const Plan &plan) const;
    bool addMissing(NSString *path, NSMutableSet *names) const;
    bool bring(NSString *name);
    bool takeBack(NSArray *names) const;
    bool finish(const Plan &plan);
    bool carryOut(const Plan &plan);
    bool remove(const Plan &plan);
    bool removeDirectoriesAbove(NSString *path, NSSet *kept) const;
    bool move(NSArray *paths);
    bool moveWithDirectory(NSString *path);
    bool replace(NSString *name);
    bool synchronize();

    Ref<NSString> path_;
    Ref<NSString> staging_;
    Ref<NSString> files_;
    Ref<NSString> journal_;
    Ref<NSString> list_;                     // of what comes to its place before the journal
    Ref<NSArray> brought_ = NSArray::init(); // the names in it
    int lock_ = -1;
    bool hasStaged_ = false;
};

/// The site's list of its files, as a path of one of them.
inline constexpr const char *kManifest = "manifest.plist";

/// Whether a site may have a file of that relative path: one inside of the directory and not our own.
bool isSitePath(NSString *path);

} // namespace publish

#endif
