// Descriptors, files and directories.
//
// Each function is the system's of the same name, with its results (-1 or null, and errno). New descriptors
// are close-on-exec, interrupted calls are repeated, offsets have 64 bits. Missing from that, or added to it,
// is what the comments say.
#ifndef QBFOUNDATION_SYSTEM_FILES_H
#define QBFOUNDATION_SYSTEM_FILES_H

#include "OnSignal.h"

#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace qb::sys {

// --- Descriptors ---

/// Returns the open descriptor itself, or a duplicate in its place when it is 0, 1 or 2: where a program was
/// started without one of those, a new file would get its number, and what is meant for people would end in
/// it. Takes -1 for a failed call and leaves errno.
int aboveStandardStreams(int descriptor) noexcept;
/// Opens `path`; `mode` (less the umask) is for a file that is created.
///
/// Where a duplicate is needed and can't be had, O_EXCL leaves no new file behind, and O_TRUNC the content.
int open(const char *path, int flags, mode_t mode = 0666) noexcept;
/// As `open`; a relative path is one in the open directory (the call `open` to faults).
int openat(int directory, const char *path, int flags, mode_t mode = 0666) noexcept;
/// Returns the flags with which a C stream of that mode opens its file; -1 and EINVAL when it is no mode.
int openingFlags(const char *mode) noexcept;
/// As `open`; what can only be appended to is at its end, as for a C stream.
int openAtPlace(const char *path, int flags) noexcept;
/// Creates `path` for reading and writing; EEXIST when anything has that name already, be it a dangling link.
int openExclusive(const char *path, mode_t mode) noexcept;
/// Closes. The descriptor is gone even after a failure, so it is never to be closed again; an interruption is
/// success.
int close(int descriptor) noexcept;
/// Does a command that takes an integer or nothing (F_GETFL, F_SETFL, F_GETFD, F_SETFD).
int fcntl(int descriptor, int command, int argument = 0) noexcept;

// --- Transfer ---

/// Reads once; returns the bytes read, 0 at the end.
ssize_t read(int descriptor, void *buffer, std::size_t length, OnSignal onSignal = OnSignal::repeat) noexcept;
/// Reads until `length` bytes are there or the end is reached; returns how many there are, -1 after an error.
ssize_t readAll(int descriptor, void *buffer, std::size_t length) noexcept;
/// Writes once; returns the bytes written, which may be fewer.
ssize_t write(int descriptor, const void *buffer, std::size_t length,
              OnSignal onSignal = OnSignal::repeat) noexcept;
/// Writes everything, in as many writes as it takes; returns 0. After -1 any part may have been written.
int writeAll(int descriptor, const void *buffer, std::size_t length) noexcept;
/// As above, but returns how many bytes were written: fewer, with errno set, after an error.
std::size_t writeMost(int descriptor, const void *buffer, std::size_t length) noexcept;
/// Moves the offset; returns the new one.
off_t lseek(int descriptor, off_t offset, int whence) noexcept;
/// Copies within the kernel from file to file, once; null offsets use and move those of the descriptors.
ssize_t copy_file_range(int source, off64_t *sourceOffset, int target, off64_t *targetOffset,
                        std::size_t length) noexcept;
/// Copies within the kernel from a file to any descriptor, once.
ssize_t sendfile(int target, int source, off_t *offset, std::size_t length) noexcept;
/// Sets the file's length.
int ftruncate(int descriptor, off_t length) noexcept;
/// Takes away an open file's content; what has no length, such as a pipe, stays as it is.
int makeEmpty(int descriptor) noexcept;
/// Waits until data and metadata are on the disk.
int fsync(int descriptor) noexcept;
/// Waits until the directory's entries are on the disk; success where the file system can't sync directories,
/// and where the directory may not be read.
int syncDirectory(const char *path) noexcept;

// --- Names and attributes ---

/// Fills `info` for what `path` leads to, links followed.
int stat(const char *path, struct stat *info) noexcept;
/// Fills `info` for an open file.
int fstat(int descriptor, struct stat *info) noexcept;
/// Fills `info` for `path` itself, a link not followed.
int lstat(const char *path, struct stat *info) noexcept;
/// Tests the real user's rights (F_OK, R_OK, W_OK, X_OK).
int access(const char *path, int mode) noexcept;
/// Stores the link's text without a terminator; returns its length, `size` when it may be cut.
ssize_t readlink(const char *path, char *buffer, std::size_t size) noexcept;
/// Renames, replacing what stands at `target`.
int rename(const char *source, const char *target) noexcept;
/// Removes a name.
int unlink(const char *path) noexcept;
/// Removes an empty directory.
int rmdir(const char *path) noexcept;
/// Creates a directory with `mode` less the umask.
int mkdir(const char *path, mode_t mode) noexcept;
/// Creates the symbolic link `path` with `text`.
int symlink(const char *text, const char *path) noexcept;
/// Gives the file `source` the further name `target`; a link as source is not followed.
int link(const char *source, const char *target) noexcept;
/// Sets the permissions of what `path` leads to.
int chmod(const char *path, mode_t mode) noexcept;
/// Sets the permissions of an open file.
int fchmod(int descriptor, mode_t mode) noexcept;
/// Sets access and modification time (null: both to now).
int utimensat(const char *path, const timespec times[2]) noexcept;

// --- Directories ---

/// Opens a directory for `readdir`.
DIR *opendir(const char *path) noexcept;
/// Returns the directory's descriptor, which stays the directory's.
int dirfd(DIR *directory) noexcept;
/// Returns the next entry, valid until the next call; null with errno 0 at the end, null with an error
/// otherwise.
dirent *readdir(DIR *directory) noexcept;
/// Closes the directory; it is gone even after a failure.
int closedir(DIR *directory) noexcept;
/// Stores the working directory's path; ERANGE when it is too long for the buffer.
char *getcwd(char *buffer, std::size_t size) noexcept;
/// Changes the working directory.
int chdir(const char *path) noexcept;
/// Expands a pattern; returns 0, GLOB_NOMATCH, GLOB_NOSPACE or, with errno set, GLOB_ABORTED: when a
/// directory or name could have been looked at, but for want of memory or descriptors or an error of the
/// disk. Always to be followed by `globfree`.
int glob(const char *pattern, int flags, glob_t *matches) noexcept;
/// Frees what `glob` stored, after a failure too.
void globfree(glob_t *matches) noexcept;

} // namespace qb::sys

#endif
