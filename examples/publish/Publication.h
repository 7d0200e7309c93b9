// A run's files: which there are, which of them are new, and whether they can go to their place.
#ifndef PUBLISH_PUBLICATION_H
#define PUBLISH_PUBLICATION_H

#include "OutputDirectory.h"

#include <optional>
#include <string>
#include <tuple>

namespace publish {

/// How many files a run changed.
struct Counts {
    unsigned written = 0;
    unsigned unchanged = 0;
    unsigned removed = 0;
};

/// One run's output. The operations that answer bool return false, with an error raised, when they fail.
class Publication {
public:
    explicit Publication(NSString *directory) : out_(directory) {}

    /// Finishes what an earlier run left, see `OutputDirectory::recover`.
    bool recover() { return out_.recover(); }
    /// Takes hold of the directory, see `OutputDirectory::begin`, and looks what the run before wrote.
    bool begin() { return out_.begin() && out_.readListed(listed_); }
    /// Takes a page's text for `path`, relative to the site's root.
    bool addPage(NSString *path, NSData *text);
    /// Takes all files of a directory, links included.
    bool addAssets(NSString *directory);
    /// Brings everything to its place, all or nothing.
    bool commit();

    /// Where the site goes.
    NSString *directory() const { return out_.path(); }
    /// Where a run keeps what is gone at its end.
    NSString *workingDirectory() const { return out_.workingDirectory(); }
    const Counts &counts() const { return counts_; }

private:
    using Identity = std::tuple<dev_t, ino_t, std::string>;

    bool claim(NSString *path);
    bool isTaken(NSString *path) const;
    bool isInPlace(NSString *path, NSData *text);
    bool isInPlace(NSString *path);
    bool hasNewDigest(NSString *path, NSString *digest);
    void count(NSString *path, bool isUnchanged);
    void bringStartPageLast();
    bool addManifest();
    NSArray *vanished() const;
    std::optional<Identity> identityOf(NSString *path) const;
    bool areOneEntry(NSString *one, NSString *other) const;
    NSArray *withoutOurs(NSArray *paths) const;
    bool canCarryOut(const Plan &plan) const;
    bool canRemove(NSString *path) const;
    bool hasDirectory(NSString *path, NSSet *leaving) const;
    bool isFree(NSString *path, NSSet *leaving) const;
    static bool isAboveOneOf(NSSet *paths, NSString *directory);

    OutputDirectory out_;
    Manifest listed_; // of the run before
    Ref<NSMutableDictionary> digests_ = NSMutableDictionary::init();
    Ref<NSMutableSet> paths_ = NSMutableSet::init();       // of this run's files
    Ref<NSMutableSet> directories_ = NSMutableSet::init(); // that they stand in
    Ref<NSMutableArray> changed_ = NSMutableArray::init(); // those of the files that are staged
    Counts counts_;
};

} // namespace publish

#endif
