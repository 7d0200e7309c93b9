#include "OSFilePath.FileCopy.h"

#include <QBFoundation/ErrorNumbers.h>

#include "OSFilePath.Support.h"
#include "System/Descriptor.h"

#include <algorithm>
#include <cerrno>

namespace qb::files {

namespace {

// From this size on a file system that can share blocks between files is asked to; below, the plainer call is
// faster.
constexpr std::int64_t kWorthSharing = 65536;

// The kernel copies this much in one call, so that signals get their turn.
constexpr std::int64_t kKernelBlock = std::int64_t{1} << 30;

// Copies as much as the kernel does by itself; returns what is left of `length`. It can't say which side a
// failure was on, so that every failure is left to be met again by those who can.
std::int64_t copyInKernel(int source, int target, std::int64_t length) {
    const bool isSmall = length < kWorthSharing;
    while (length > 0) {
        const auto block = static_cast<std::size_t>(std::min(length, kKernelBlock));
        const ssize_t count = isSmall ? sys::sendfile(target, source, nullptr, block)
                                      : sys::copy_file_range(source, nullptr, target, nullptr, block);
        if (count <= 0)
            break;
        length -= count;
    }
    return length;
}

CopyFailure copyBlocks(int source, int target, std::int64_t length) {
    const auto size = static_cast<std::size_t>(std::min<std::int64_t>(length, kBlockSize));
    const Buffer buffer(allocate(size));
    if (!buffer)
        return CopyFailure::memory;
    while (length > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(length, kBlockSize));
        const ssize_t count = sys::read(source, buffer.get(), wanted);
        if (count < 0)
            return CopyFailure::reading;
        if (count == 0) // it has become shorter meanwhile
            break;
        if (sys::writeAll(target, buffer.get(), static_cast<std::size_t>(count)) != 0)
            return CopyFailure::writing;
        length -= count;
    }
    return CopyFailure::none;
}

CopyFailure copyRange(int source, int target, std::int64_t length) {
    const std::int64_t left = copyInKernel(source, target, length);
    return left > 0 ? copyBlocks(source, target, left) : CopyFailure::none;
}

// Gives the copy of a file that ends in a hole its length.
CopyFailure endInHole(int source, int target, std::int64_t size) {
    const off_t end = sys::lseek(source, 0, SEEK_END); // it may have become shorter meanwhile
    if (end < 0)
        return CopyFailure::reading;
    return sys::ftruncate(target, std::min<off_t>(end, size)) == 0 ? CopyFailure::none : CopyFailure::writing;
}

// Copies the pieces that hold data, so that the copy has the source's holes.
CopyFailure copySparse(int source, int target, std::int64_t size) {
    for (off_t position = 0; position < size;) {
        const off_t data = sys::lseek(source, position, SEEK_DATA);
        if (data >= size || (data < 0 && errno == ENXIO))
            return endInHole(source, target, size);
        if (data < 0 && position == 0) // a file system that does not tell
            return copyRange(source, target, size);
        const off_t hole = data < 0 ? data : std::min<off_t>(sys::lseek(source, data, SEEK_HOLE), size);
        if (hole < 0 && errno == ENXIO) // it ends before that meanwhile
            return endInHole(source, target, size);
        if (hole < 0 || sys::lseek(source, data, SEEK_SET) < 0)
            return CopyFailure::reading;
        if (sys::lseek(target, data, SEEK_SET) < 0)
            return CopyFailure::writing;
        if (const CopyFailure failure = copyRange(source, target, hole - data); failure != CopyFailure::none)
            return failure;
        position = hole;
    }
    return CopyFailure::none;
}

// Empties a copy's file that was there before; fails with ELOOP when it is the source.
int empty(int target, const struct stat &source) {
    struct stat status;
    if (sys::fstat(target, &status) != 0)
        return -1;
    if (Identity(status) == Identity(source)) {
        errno = ELOOP;
        return -1;
    }
    return sys::makeEmpty(target);
}

bool isRegular(int descriptor) {
    struct stat status;
    return sys::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

mode_t creationMode(mode_t sourceMode) {
    return (sourceMode & 0777) | S_IWUSR;
}

CopyFailure copyContent(int source, int target, const struct stat &status) {
    constexpr std::int64_t kUnitOfBlocks = 512; // in which stat counts
    const bool isSparse = S_ISREG(status.st_mode) && status.st_blocks < status.st_size / kUnitOfBlocks;
    return isSparse && isRegular(target) ? copySparse(source, target, status.st_size)
                                         : copyRange(source, target, status.st_size);
}

bool report(CopyFailure failure, const std::string &source, const std::string &target) {
    if (failure == CopyFailure::reading)
        raiseSystemError(__LINE__, kErrorCannotRead, source.c_str());
    else if (failure == CopyFailure::writing)
        raiseSystemError(__LINE__, kErrorCannotWrite, target.c_str());
    return failure == CopyFailure::none;
}

bool copyFile(const std::string &source, const struct stat &status, const std::string &target) {
    // What is no plain file must not keep us waiting for somebody at its other end.
    const int flags = S_ISREG(status.st_mode) ? O_RDONLY : O_RDONLY | O_NONBLOCK;
    const sys::Descriptor from(sys::open(source.c_str(), flags));
    struct stat opened;
    if (!from || sys::fstat(from.get(), &opened) != 0)
        return report(CopyFailure::reading, source, target);
    const mode_t mode = creationMode(opened.st_mode);
    sys::Descriptor to(sys::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode));
    const bool existed = !to && errno == EEXIST;
    if (existed)
        to = sys::Descriptor(sys::open(target.c_str(), O_WRONLY | O_CREAT, mode));
    if (!to)
        return report(CopyFailure::writing, source, target);
    if (existed && empty(to.get(), opened) != 0) {
        if (errno != ELOOP)
            return report(CopyFailure::writing, source, target);
        raiseSystemError(__LINE__, kErrorCannotStat, source.c_str());
        return false;
    }
    CopyFailure failure = copyContent(from.get(), to.get(), opened);
    if (failure == CopyFailure::none &&
        (sys::fchmod(to.get(), opened.st_mode & kPermissionBits) != 0 || to.close() != 0))
        failure = CopyFailure::writing;
    return report(failure, source, target);
}

} // namespace qb::files
