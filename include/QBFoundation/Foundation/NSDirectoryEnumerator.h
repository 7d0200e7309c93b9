// Going over a directory with all that is in it.
#ifndef QBFOUNDATION_FOUNDATION_NSDIRECTORYENUMERATOR_H
#define QBFOUNDATION_FOUNDATION_NSDIRECTORYENUMERATOR_H

#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Runtime/Ref.h>

#include <memory>

class NSDictionary;
class NSString;

namespace qb::tree {
class Walk;
}

/// Yields the relative paths of all that is below a directory, in the system's order, each directory before
/// what is in it; made by `NSFileManager` `enumeratorAtPath:`.
///
/// A directory is read when it is reached. Those that can't be read count as empty, and links are not
/// followed.
class QB_EXPORT NSDirectoryEnumerator : public NSEnumerator {
public:
    ~NSDirectoryEnumerator() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    id nextObject() override;
    /// Returns the attributes of the file whose path was returned last, as `NSFileManager`
    /// `fileAttributesAtPath:traverseLink:` does without following; of the directory itself before the first.
    virtual NSDictionary *fileAttributes() const;
    /// Returns those of the directory that is gone over.
    virtual NSDictionary *directoryAttributes() const;
    /// Leaves out what is in the directory whose path was returned last.
    virtual void skipDescendents() { mayEnter_ = false; }

private:
    friend class NSFileManager;

    NSDirectoryEnumerator();
    static NSDirectoryEnumerator *enumeratorAtPath(NSString *path);
    bool enter();

    Ref<NSString> path_;
    std::unique_ptr<qb::tree::Walk> walk_;
    bool mayEnter_ = true; // the place that was returned last, if it is a directory
};

#endif
