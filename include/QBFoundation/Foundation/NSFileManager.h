// Files and directories by their paths.
#ifndef QBFOUNDATION_FOUNDATION_NSFILEMANAGER_H
#define QBFOUNDATION_FOUNDATION_NSFILEMANAGER_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSDirectoryEnumerator.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>

// Keys of a file's attributes, and the type's values.
extern QB_EXPORT NSString *const NSFileType;                // NSString, one of those below
extern QB_EXPORT NSString *const NSFileSize;                // NSNumber: bytes
extern QB_EXPORT NSString *const NSFileModificationDate;    // NSDate
extern QB_EXPORT NSString *const NSFilePosixPermissions;    // NSNumber: the mode's 12 low bits
extern QB_EXPORT NSString *const NSFileReferenceCount;      // NSNumber: hard links
extern QB_EXPORT NSString *const NSFileOwnerAccountID;      // NSNumber
extern QB_EXPORT NSString *const NSFileGroupOwnerAccountID; // NSNumber
extern QB_EXPORT NSString *const NSFileSystemNumber;        // NSNumber: the device that it lies on
extern QB_EXPORT NSString *const NSFileSystemFileNumber;    // NSNumber: the inode
extern QB_EXPORT NSString *const NSFileTypeRegular;
extern QB_EXPORT NSString *const NSFileTypeDirectory;
extern QB_EXPORT NSString *const NSFileTypeSymbolicLink;
extern QB_EXPORT NSString *const NSFileTypeSocket;
extern QB_EXPORT NSString *const NSFileTypePipe;
extern QB_EXPORT NSString *const NSFileTypeCharacterSpecial;
extern QB_EXPORT NSString *const NSFileTypeBlockSpecial;

/// Files and directories, for programs that only want to know whether it worked: every operation answers NO
/// or nil where it fails, and raises nothing. errno then says why. The operations of OSFilePath raise
/// numbered errors instead.
///
/// A nil or empty path, and one with a NUL in it, names nothing. Links are followed where it is not said
/// otherwise; copying, removing and comparing trees never follow those inside them.
class QB_EXPORT NSFileManager : public NSObject {
public:
    NSFileManager() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the one object that serves all.
    static NSFileManager *defaultManager();

    // --- What is there ---

    virtual BOOL fileExistsAtPath(NSString *path) const { return fileExistsAtPath(path, nullptr); }
    /// `isDirectory` (or null) becomes whether it is a directory, NO when nothing is there.
    virtual BOOL fileExistsAtPath(NSString *path, BOOL *isDirectory) const;
    virtual BOOL isReadableFileAtPath(NSString *path) const;
    virtual BOOL isWritableFileAtPath(NSString *path) const;
    virtual BOOL isExecutableFileAtPath(NSString *path) const;
    /// Whether something of that name, a link not followed, is in a directory whose entries may be changed.
    virtual BOOL isDeletableFileAtPath(NSString *path) const;
    /// Returns the attributes, autoreleased, by the keys above; nil when nothing is there. `traverseLink`:
    /// those of what a link leads to, else of the link itself.
    virtual NSDictionary *fileAttributesAtPath(NSString *path, BOOL traverseLink) const;
    /// Sets NSFilePosixPermissions, a number, and NSFileModificationDate, a date, and nothing when one of
    /// them is of another class; others are left alone.
    virtual BOOL changeFileAttributes(NSDictionary *attributes, NSString *path);
    /// Whether both are the same, or files with the same bytes, links with the same text, or directories of
    /// which that holds for all that is in them.
    virtual BOOL contentsEqualAtPath(NSString *path, NSString *andPath) const;

    // --- Files ---

    /// Returns the file's bytes, autoreleased; nil for a directory too.
    virtual NSData *contentsAtPath(NSString *path) const;
    /// Makes the file, or empties the one that is there, and writes `contents` (or nil). A new file that
    /// can't be written whole is removed again. `attributes` (or nil): as for `changeFileAttributes:atPath:`.
    virtual BOOL createFileAtPath(NSString *path, NSData *contents, NSDictionary *attributes);
    virtual BOOL createSymbolicLinkAtPath(NSString *path, NSString *pathContent);
    /// Returns the link's text, autoreleased.
    virtual NSString *pathContentOfSymbolicLinkAtPath(NSString *path) const;

    // --- Trees ---

    /// Copies a file, a link as a link, or a directory with all that is in it, with permissions. NO when
    /// something has the name `toPath`, or it lies inside of `path`; what was copied when it fails stays. A
    /// copy of a pipe, socket or device fails, and holes of files are filled. `handler` is not used.
    virtual BOOL copyPath(NSString *path, NSString *toPath, id handler = nullptr);
    /// Gives the file, link or files of a directory at `path` further names at `toPath`, and makes the
    /// directories; else as `copyPath:toPath:handler:`.
    virtual BOOL linkPath(NSString *path, NSString *toPath, id handler = nullptr);
    /// Renames, or copies, which gives new times, and removes where that does not go; else as
    /// `copyPath:toPath:handler:`.
    virtual BOOL movePath(NSString *path, NSString *toPath, id handler = nullptr);
    /// Removes a file, a link, or a directory with all that is in it. It goes on after a failure and removes
    /// what it can. `handler` is not used.
    virtual BOOL removeFileAtPath(NSString *path, id handler = nullptr);

    // --- Directories ---

    /// Makes one directory; NO when something has that name. `attributes`: as for `createFileAtPath:…`.
    virtual BOOL createDirectoryAtPath(NSString *path, NSDictionary *attributes);
    /// Returns the names in a directory in the system's order, autoreleased.
    virtual NSArray *directoryContentsAtPath(NSString *path) const;
    /// Returns the relative paths of all that is below a directory, each directory before what is in it,
    /// autoreleased. Directories that can't be read count as empty.
    virtual NSArray *subpathsAtPath(NSString *path) const;
    /// Returns an enumerator of the same paths, which reads each directory when it gets there; nil when the
    /// first can't be read.
    virtual NSDirectoryEnumerator *enumeratorAtPath(NSString *path) const;
    virtual BOOL changeCurrentDirectoryPath(NSString *path);
    /// As `NSString` `fileSystemRepresentation`; null for nil.
    virtual const char *fileSystemRepresentationWithPath(NSString *path) const;
    /// Returns the path with those bytes, autoreleased.
    virtual NSString *stringWithFileSystemRepresentation(const char *string, std::uint32_t length) const;
    /// Returns the working directory's path, autoreleased; nil when it has none any more.
    virtual NSString *currentDirectoryPath() const;
};

#endif
