#include "Files.h"

#include "Attempt.h"
#include "Descriptor.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <sys/sendfile.h>
#include <unistd.h>

namespace qb::sys {

namespace {

int globError = 0; // why the last expansion is not whole

// Notes the failure of a call for an expansion. What isn't there or can't be read has no matches, as in a
// shell; what could have been read has, and the C library would leave them out without a word.
template <class Result>
Result noted(Result result) {
    constexpr int kLost[] = {ENOMEM, EMFILE, ENFILE, EIO};
    if (result == failure<Result>() && std::ranges::find(kLost, errno) != std::end(kLost))
        globError = errno;
    return result;
}

int answerOfGlob(int error) {
    errno = error;
    return error == ENOMEM ? GLOB_NOSPACE : GLOB_ABORTED;
}

} // namespace

int aboveStandardStreams(int descriptor) noexcept {
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return moved;
}

int open(const char *path, int flags, mode_t mode) noexcept {
    return openat(AT_FDCWD, path, flags, mode);
}

int openat(int directory, const char *path, int flags, mode_t mode) noexcept {
    const int firstFlags = (flags & ~O_TRUNC) | O_CLOEXEC;
    const int opened = repeat(Call::open, [&] { return ::openat(directory, path, firstFlags, mode); });
    Descriptor descriptor(aboveStandardStreams(opened));
    if (opened >= 0 && !descriptor && (flags & O_CREAT) && (flags & O_EXCL)) {
        const int error = errno;
        ::unlinkat(directory, path, 0);
        errno = error;
    }
    return descriptor && (flags & O_TRUNC) && makeEmpty(descriptor.get()) != 0 ? -1 : descriptor.release();
}

int openingFlags(const char *mode) noexcept {
    const std::string_view letters = mode ? mode : "";
    const bool isBoth = letters.find('+') != letters.npos, isNew = letters.find('x') != letters.npos;
    const int writing = (isBoth ? O_RDWR : O_WRONLY) | O_CREAT | (isNew ? O_EXCL : 0);
    if (letters.starts_with('r'))
        return isBoth ? O_RDWR : O_RDONLY;
    if (letters.starts_with('w'))
        return writing | O_TRUNC;
    if (letters.starts_with('a'))
        return writing | O_APPEND;
    return errno = EINVAL, -1;
}

int openAtPlace(const char *path, int flags) noexcept {
    const int descriptor = open(path, flags);
    if (descriptor >= 0 && (flags & O_APPEND) && (flags & O_ACCMODE) == O_WRONLY)
        ::lseek(descriptor, 0, SEEK_END); // a pipe has no end
    return descriptor;
}

int openExclusive(const char *path, mode_t mode) noexcept {
    return open(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
}

int close(int descriptor) noexcept {
    // Not repeated: the kernel has let go of the descriptor whatever it answers, and the number may be in use
    // again.
    int result = ::close(descriptor);
    if (fails(Call::close))
        result = -1;
    return result == -1 && errno == EINTR ? 0 : result;
}

int fcntl(int descriptor, int command, int argument) noexcept {
    return repeat(Call::fcntl, [&] { return ::fcntl(descriptor, command, argument); });
}

ssize_t read(int descriptor, void *buffer, std::size_t length, OnSignal onSignal) noexcept {
    return repeat(
        Call::read, [&] { return ::read(descriptor, buffer, length); }, &length, onSignal);
}

ssize_t readAll(int descriptor, void *buffer, std::size_t length) noexcept {
    std::size_t done = 0;
    while (done < length) {
        const ssize_t count = read(descriptor, static_cast<char *>(buffer) + done, length - done);
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

ssize_t write(int descriptor, const void *buffer, std::size_t length, OnSignal onSignal) noexcept {
    return repeat(
        Call::write, [&] { return ::write(descriptor, buffer, length); }, &length, onSignal);
}

std::size_t writeMost(int descriptor, const void *buffer, std::size_t length) noexcept {
    std::size_t done = 0;
    while (done < length) {
        const ssize_t count = write(descriptor, static_cast<const char *>(buffer) + done, length - done);
        if (count == 0)
            errno = EIO; // a device that takes nothing and reports nothing would keep us here for ever
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

int writeAll(int descriptor, const void *buffer, std::size_t length) noexcept {
    return writeMost(descriptor, buffer, length) == length ? 0 : -1;
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept {
    return repeat(Call::lseek, [&] { return ::lseek(descriptor, offset, whence); });
}

ssize_t copy_file_range(int source, off64_t *sourceOffset, int target, off64_t *targetOffset,
                        std::size_t length) noexcept {
    const auto copy = [&] {
        return ::copy_file_range(source, sourceOffset, target, targetOffset, length, 0);
    };
    return repeat(Call::copy_file_range, copy, &length);
}

ssize_t sendfile(int target, int source, off_t *offset, std::size_t length) noexcept {
    return repeat(
        Call::sendfile, [&] { return ::sendfile(target, source, offset, length); }, &length);
}

int ftruncate(int descriptor, off_t length) noexcept {
    return repeat(Call::ftruncate, [&] { return ::ftruncate(descriptor, length); });
}

int makeEmpty(int descriptor) noexcept {
    return ftruncate(descriptor, 0) == 0 || errno == EINVAL ? 0 : -1;
}

int fsync(int descriptor) noexcept {
    return repeat(Call::fsync, [&] { return ::fsync(descriptor); });
}

int syncDirectory(const char *path) noexcept {
    const int descriptor = open(path, O_RDONLY | O_DIRECTORY);
    if (descriptor < 0)
        return errno == EACCES ? 0 : -1; // whoever may change it but not read it has no way to sync it
    // EINVAL is a file system's way to say that it has nothing to sync for a directory.
    const int error = fsync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
    const int closed = close(descriptor);
    return error ? (errno = error, -1) : closed;
}

int stat(const char *path, struct stat *info) noexcept {
    return repeat(Call::stat, [&] { return ::stat(path, info); });
}

int fstat(int descriptor, struct stat *info) noexcept {
    return repeat(Call::fstat, [&] { return ::fstat(descriptor, info); });
}

int lstat(const char *path, struct stat *info) noexcept {
    return repeat(Call::lstat, [&] { return ::lstat(path, info); });
}

int access(const char *path, int mode) noexcept {
    return repeat(Call::access, [&] { return ::access(path, mode); });
}

ssize_t readlink(const char *path, char *buffer, std::size_t size) noexcept {
    return repeat(Call::readlink, [&] { return ::readlink(path, buffer, size); });
}

int rename(const char *source, const char *target) noexcept {
    return repeat(Call::rename, [&] { return ::rename(source, target); });
}

int unlink(const char *path) noexcept {
    return repeat(Call::unlink, [&] { return ::unlink(path); });
}

int rmdir(const char *path) noexcept {
    return repeat(Call::rmdir, [&] { return ::rmdir(path); });
}

int mkdir(const char *path, mode_t mode) noexcept {
    return repeat(Call::mkdir, [&] { return ::mkdir(path, mode); });
}

int symlink(const char *text, const char *path) noexcept {
    return repeat(Call::symlink, [&] { return ::symlink(text, path); });
}

int link(const char *source, const char *target) noexcept {
    return repeat(Call::link, [&] { return ::link(source, target); });
}

int chmod(const char *path, mode_t mode) noexcept {
    return repeat(Call::chmod, [&] { return ::chmod(path, mode); });
}

int fchmod(int descriptor, mode_t mode) noexcept {
    return repeat(Call::fchmod, [&] { return ::fchmod(descriptor, mode); });
}

int utimensat(const char *path, const timespec times[2]) noexcept {
    return repeat(Call::utimensat, [&] { return ::utimensat(AT_FDCWD, path, times, 0); });
}

DIR *opendir(const char *path) noexcept {
    return repeat(Call::opendir, [&] { return ::opendir(path); });
}

int dirfd(DIR *directory) noexcept {
    return ::dirfd(directory);
}

dirent *readdir(DIR *directory) noexcept {
    const auto next = [&] {
        errno = 0; // what tells the end from an error
        return ::readdir(directory);
    };
    return repeat(Call::readdir, next);
}

int closedir(DIR *directory) noexcept {
    int result = ::closedir(directory);
    if (fails(Call::closedir))
        result = -1;
    return result == -1 && errno == EINTR ? 0 : result;
}

char *getcwd(char *buffer, std::size_t size) noexcept {
    return attempt(Call::getcwd, [&] { return ::getcwd(buffer, size); });
}

int chdir(const char *path) noexcept {
    return repeat(Call::chdir, [&] { return ::chdir(path); });
}

int glob(const char *pattern, int flags, glob_t *matches) noexcept {
    *matches = glob_t{};
    if (fails(Call::glob))
        return answerOfGlob(errno);
    matches->gl_opendir = [](const char *path) { return static_cast<void *>(noted(sys::opendir(path))); };
    matches->gl_readdir = [](void *directory) { return noted(sys::readdir(static_cast<DIR *>(directory))); };
    matches->gl_closedir = [](void *directory) {
        static_cast<void>(sys::closedir(static_cast<DIR *>(directory)));
    };
    matches->gl_stat = [](const char *path, struct stat *info) { return noted(sys::stat(path, info)); };
    matches->gl_lstat = [](const char *path, struct stat *info) { return noted(sys::lstat(path, info)); };
    globError = 0;
    const int result =
        ::glob(pattern, (flags & ~(GLOB_APPEND | GLOB_DOOFFS)) | GLOB_ALTDIRFUNC, nullptr, matches);
    return globError != 0 ? answerOfGlob(globError) : result;
}

void globfree(glob_t *matches) noexcept {
    ::globfree(matches);
}

} // namespace qb::sys
