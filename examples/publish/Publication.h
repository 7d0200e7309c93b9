// Bringing a site's files to their place, all or none.
//
// Everything new is first written below OUT/.publish. Then a journal names what is to be done, and with that
// the run is decided: old files go, new ones are renamed to their place, the manifest last. A run that finds
// a journal finishes what it says before it does anything else, so that a run that was cut off leaves no
// mixed site behind.
#ifndef PUBLISH_PUBLICATION_H
#define PUBLISH_PUBLICATION_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// How many files a run changed.
struct Counts {
    unsigned written = 0;
    unsigned unchanged = 0;
    unsigned removed = 0;
};

/// One run's output.
class Publication {
public:
    explicit Publication(NSString *target);
    /// Takes away what was written, unless it was committed.
    ~Publication();
    Publication(const Publication &) = delete;
    Publication &operator=(const Publication &) = delete;

    /// Makes the directory, takes its lock, and finishes a run that was cut off. All these operations return
    /// false, with an error raised, when they fail.
    bool begin();
    /// Takes a page's text for `path`, relative to the site's root.
    bool addPage(NSString *path, NSData *text);
    /// Takes all files of a directory, links included.
    bool addAssets(NSString *directory);
    /// Brings everything to its place.
    bool commit();

    const Counts &counts() const { return counts_; }

private:
    bool lock();
    bool claim(NSString *path);
    bool recover();
    bool carryOut(NSDictionary *journal);
    bool moveStaged(NSArray *paths);
    bool removeOld(NSArray *paths);
    bool stageManifest();
    NSArray *vanished();
    bool canCarryOut(NSArray *removed) const;
    bool hasDirectory(NSString *path, NSSet *leaving) const;
    bool isFree(NSString *path, NSSet *leaving) const;
    NSString *place(NSString *path) const { return target_->stringByAppendingPathComponent(path); }
    NSString *staged(NSString *path) const { return staging_->stringByAppendingPathComponent(path); }

    Ref<NSString> target_;
    Ref<NSString> staging_;
    Ref<NSString> journal_;
    Ref<NSMutableSet> paths_;     // of this run's files
    Ref<NSMutableArray> changed_; // those of them that are staged
    int lock_ = -1;
    bool hasStaged_ = false;
    Counts counts_;
};

} // namespace publish

#endif
