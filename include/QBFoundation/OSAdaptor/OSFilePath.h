// Paths and files.
#ifndef QBFOUNDATION_OSADAPTOR_OSFILEPATH_H
#define QBFOUNDATION_OSADAPTOR_OSFILEPATH_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

class NSArray;
class NSString;

/// What is known of a file, links followed.
struct OSFileInfo {
    BOOL exists;
    BOOL isDirectory;
    std::int32_t size;             // bytes
    std::int32_t accessTime;       // seconds since 1970, as the other times
    std::int32_t modificationTime; // of the content
    std::int32_t changeTime;       // of the content or the attributes
    std::uint32_t mode;            // type and permission bits
};

/// All work with paths and files; there are class operations only.
///
/// Paths are bytes, not necessarily UTF-8. An operation that fails raises an error, whose values are paths
/// ("<null>" for nil) and the system's text, and returns nil, NO or 0; one of several steps also stops at the
/// first step behind which an error is pending, be it an earlier one. A path with a NUL byte in it fails with
/// the text for EINVAL. An empty directory, where a path is made of directory and name, is the working
/// directory.
class QB_EXPORT OSFilePath final : public OSObject {
public:
    OSFilePath() = delete;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Path text ---

    static char pathSeparator() { return '/'; }
    static NSString *pathSeparatorString();
    static BOOL isPathSeparator(char character) { return character == pathSeparator(); }
    /// Returns `path` without "." components, doubled separators and those ".." that have a component before
    /// them, autoreleased.
    ///
    /// The root ("/", or "//host/") and a ".." directly behind it stay, as do a "." and separators at the
    /// end. A path of which nothing is left is ".". The file system is not asked, so that a link in front of
    /// a ".." makes the result another file. nil and the empty string come back as they are.
    static NSString *stringBySimplifyingPath(NSString *path);
    /// As `stringBySimplifyingPath:`: where "/" is the only separator there is nothing to normalise.
    static NSString *stringByNormalizingAndSimplifyingPath(NSString *path);
    /// Returns a copy of `path`, autoreleased; so does `stringByStandardizingPath:`.
    static NSString *stringByNormalizingPath(NSString *path);
    static NSString *stringByStandardizingPath(NSString *path);
    /// Returns `path`: there are no short forms here.
    static NSString *shortPathForPath(NSString *path) { return path; }
    /// Returns `path`: programs have no extension here.
    static NSString *completeExecutable(NSString *path) { return path; }
    static BOOL isAbsolutePath(NSString *path);
    /// Returns the text in front of the first separator, the whole text without one; nil for nil.
    static NSString *firstPathComponentOf(NSString *path);
    /// Returns the text behind the first separator, the empty string without one; nil for nil.
    static NSString *stringByDeletingFirstPathComponentOf(NSString *path);
    static NSString *sharedLibExtension();

    // --- Temporary names ---

    static NSString *tmpDir();
    /// Returns a path in `tmpDir` that no other call returns. Nothing is created.
    static NSString *uniqueTmpFilename();
    /// Returns a path in the directory that no other call returns: `prefix` (or nil), then a unique part.
    /// Nothing is created.
    static NSString *uniqueFilenameWithPrefix(NSString *prefix, NSString *dir);

    // --- Queries ---

    /// Fills `info` (selector `fileInfo:atPath:`); for a missing file all is 0.
    ///
    /// Raises 100194 (path, system text) when the file can't be asked, or a size or time does not fit its
    /// field (the text for EOVERFLOW); all of `info` is 0 then.
    /// Throws InvalidArgumentException when `info` is null.
    static void fileInfo(OSFileInfo *info, NSString *path);
    /// Returns whether something is there, links followed. Never raises, as the next ones.
    static BOOL fileExistsAtPath(NSString *path);
    /// Stores in `isDirectory` (or null) whether it is a directory.
    static BOOL fileExistsAtPath(NSString *path, BOOL *isDirectory);
    static BOOL directoryExistsAtPath(NSString *path);
    /// Returns the size in bytes: 0 for a missing file, INT32_MAX for any that is longer.
    static std::int32_t fileSizeAtPath(NSString *path);
    /// Returns whether it is a file of at least one byte. Raises 100194 (path, system text).
    static BOOL fileContainsDataAtPath(NSString *path);
    /// Returns the link's text, autoreleased; nil for an empty path and after an error.
    ///
    /// Raises 100222 (path) for what is no link, 100194 and 100023 (path, system text).
    static NSString *symlinkTarget(NSString *path);
    /// Returns whether the files differ: NO only for two files of the same size and the same bytes. Files
    /// that state no size, as those of /proc do, count as empty.
    ///
    /// Raises 100194 and 100023 (path, system text) for a file that can't be asked, opened or read, and
    /// 100156, and answers NO.
    static BOOL fileAtPath(NSString *path, NSString *differsFromFileAtPath);
    /// Returns the working directory, autoreleased. Raises 100196 ("getcwd()", system text) when there is
    /// none, or its path has 4096 bytes and more.
    static NSString *getcwd();
    /// Returns the paths that match the pattern, in the system's order; an empty array when there is none.
    ///
    /// A directory that may not be read has none. Raises 100156, and 100240 (pattern, system text) when
    /// reading one fails otherwise.
    static NSArray *glob(NSString *pattern);
    /// As `glob:` for the pattern in that directory.
    static NSArray *glob(NSString *pattern, NSString *dir);

    // --- Changes ---

    /// Creates each missing directory of the path, with the rights that the umask leaves.
    ///
    /// Raises 100168 (directory, system text) for the first that can't be made, and 100156. Something else
    /// than a directory under the name is not noticed.
    static void makePath(NSString *path);
    /// Removes a file, or a directory with all that is in it; nothing happens when there is none.
    ///
    /// Links are followed: of a link to a directory the content is removed, and the link itself then can't
    /// be; one that leads nowhere counts as missing and stays. Raises 100194, 100198 and 100203 (path, system
    /// text) and stops there; 100194 with the text for ELOOP at a directory that it is inside of already.
    /// Errors that were pending before stay, in front.
    static void removePath(NSString *path);
    /// As `removePath:`, but the name disappears in one step: what it names is moved to `tmpDir` first, where
    /// it replaces a file of its name, and stays there when an error is pending then, one from before
    /// included. A link is followed from its new place: what a relative one means there is removed.
    ///
    /// Raises 100202 (path, new path, system text) when it can't be moved, to another file system, say.
    static void removePath(NSString *path, NSString *atomicallyWithTmpDir);
    /// The walk of `removePath:`, without its care for earlier errors.
    static void _removePath(const char *path);
    /// Renames, replacing a file of that name. Raises 100202 (source, target, system text).
    static void renamePath(NSString *source, NSString *to);
    /// As `touchFileAtPath:mtime:` with the current time.
    static void touchFileAtPath(NSString *path);
    /// Sets access and modification time to `mtime` (seconds since 1970; 0: now) and creates a missing file.
    ///
    /// Raises 100024 (path, system text) when it can't be created, 100235 when the times can't be set.
    static void touchFileAtPath(NSString *path, std::int64_t mtime);
    /// Makes `link` a symbolic link to the directory, replacing a link or file of that name in one step;
    /// nothing happens when one is nil.
    ///
    /// Raises 100170 (directory) when there is no such directory, 100199 (directory, link, system text).
    static void symlink(NSString *link, NSString *toTargetDir);
    /// Changes the working directory. Raises 100196 ("chdir(path)", system text).
    static void chdir(NSString *path);

    // --- Descriptors ---

    /// Opens with a mode of `fopen`. Returns the descriptor, close-on-exec; -1 after a failure, without an
    /// error.
    static std::int32_t openFile(NSString *path, const char *mode);
    /// Closes. Returns 0, or -1 after a failure.
    static std::int32_t closeFile(std::int32_t descriptor);

    // --- Copying ---

    /// Copies a file or a tree into the directory `toPath` under the source's name; see `_copyPath`. With a
    /// separator at its end a source has no name, and what is in it goes into the directory itself.
    static void copyPath(NSString *source, NSString *toPath) {
        copyPath(source, toPath, /*renameSource=*/NO);
    }
    /// With `renameSource`, `toPath` is the copy's own path, which must be free.
    static void copyPath(NSString *source, NSString *toPath, BOOL renameSource);
};

extern "C" {

/// Returns the place behind the last separator of `path`, its start without one.
QB_EXPORT const char *_basename(const char *path);
/// Returns the text in front of the last separator, empty without one, in a new buffer for `free`. Null, and
/// 100156 raised, without memory.
QB_EXPORT char *_dirname(const char *path);
/// Returns whether `path` begins with the bytes of `directory`: /a/bc counts as inside /a/b. NO for null.
QB_EXPORT BOOL _isPathSubpathOfPath(const char *path, const char *directory);
/// Returns the way from `directory` to `path`, both absolute and simplified, in a new buffer for `free`.
/// Null, and 100156 raised, without memory.
QB_EXPORT char *_pathRelativeToDir(const char *path, const char *directory);

/// Copies a file, a link or a directory with all that is in it.
///
/// `target` is the directory for the copy, which is created if need be, or with `targetIsNewName` the path of
/// the copy itself. Files keep their permissions, directories get those that the umask leaves (see
/// `NSFileManager` for copies that keep theirs); owners and times are not copied, devices, pipes and sockets
/// are left out. A link to something inside of the source becomes a relative link to its copy, any other a
/// copy of what it points to. What was copied before an error stays.
///
/// What is inside is seen by the texts of simplified paths, so that the source should be named plainly,
/// without "." or ".." and with one separator at its end at most. A link outside of the source that is copied
/// on the way and leads back into it keeps its text, which may then mean the original, or nothing.
///
/// Raises 100195 (source, target) for a new name that is taken, 100170 (target) when it is no directory,
/// 100194 (path, system text) for a source that can't be asked, and with the text for ELOOP for a directory
/// that the walk is inside of already, or that is its own target, 100199 (link text, link, system text); the
/// others as the next ones.
QB_EXPORT void _copyPath(const char *source, const char *target, BOOL targetIsNewName);
/// Copies a file's bytes, as many as it states to have, and permissions to `name` (null: the source's) in a
/// directory that exists.
///
/// Raises 100197 (name) for more than 254 bytes, 100039 (source) without source, 100023 (source, system text)
/// for reading and 100024 (target, system text) for writing, 100156, 100194 (source, system text) for one
/// that can't be asked, or that is its own target.
QB_EXPORT void _copyFile(const char *source, const char *targetDir, const char *name);
/// Copies a directory's entries into the directory `name` (null: the source's) in `targetDir`.
///
/// Raises 100197 (name) for more than 254 bytes, 100196 and 100198 (source, system text) for a directory that
/// can't be opened or read, 100168 (directory, system text) for one that can't be made, 100194 for one that
/// is copied into itself.
QB_EXPORT void _copyDir(const char *source, const char *targetDir, const char *name);
/// Copies what a link points to, to `name` (null: the name of what it points to) in `targetDir`: a link by
/// itself has no tree to stay a link in.
///
/// Raises 100222 (source) for what is no link, 100194 and 100023 (source, system text), and what `_copyPath`
/// raises.
QB_EXPORT void _copyLink(const char *source, const char *targetDir, const char *name);

} // extern "C"

#endif
