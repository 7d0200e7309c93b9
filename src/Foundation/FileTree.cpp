#include "Foundation/FileTree.h"

#include "System/Descriptor.h"
#include "System/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

// Paths end at PATH_MAX bytes, so that no recursion here is deeper than some 2000 directories; each is closed
// before those inside it are opened.
namespace qb::tree {

namespace {

constexpr std::size_t kBlockSize = 65536;
constexpr std::size_t kKernelBlock = std::size_t{1} << 30;
constexpr mode_t kPermissionBits = 07777;

struct CloseDirectory {
    void operator()(DIR *directory) const {
        const int error = errno;
        sys::closedir(directory);
        errno = error;
    }
};

bool isDots(const char *name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

std::string joined(const std::string &directory, const std::string &name) {
    return directory.ends_with('/') ? directory + name : directory + "/" + name;
}

bool isSame(const struct stat &a, const struct stat &b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool copyBytes(int source, int target) {
    ssize_t count;
    do
        count = sys::copy_file_range(source, nullptr, target, nullptr, kKernelBlock);
    while (count > 0);
    if (count == 0 && sys::lseek(source, 0, SEEK_CUR) > 0)
        return true;
    // File systems that can't do it, and files of /proc, which seem empty to it.
    const auto block = std::make_unique<char[]>(kBlockSize);
    while ((count = sys::read(source, block.get(), kBlockSize)) > 0)
        if (sys::writeAll(target, block.get(), static_cast<std::size_t>(count)) != 0)
            return false;
    return count == 0;
}

bool copyFile(const std::string &source, const std::string &target) {
    const sys::Descriptor from(sys::open(source.c_str(), O_RDONLY | O_NOFOLLOW));
    struct stat info;
    if (!from || sys::fstat(from.get(), &info) != 0)
        return false;
    sys::Descriptor to(sys::openExclusive(target.c_str(), (info.st_mode & 0777) | S_IWUSR));
    if (!to)
        return false;
    return copyBytes(from.get(), to.get()) && sys::fchmod(to.get(), info.st_mode & kPermissionBits) == 0 &&
           to.close() == 0;
}

bool copyLink(const std::string &source, const std::string &target) {
    std::string text;
    return readLink(source, text) && sys::symlink(text.c_str(), target.c_str()) == 0;
}

bool copyAny(const std::string &source, const std::string &target);

bool copyDirectory(const std::string &source, const std::string &target, const struct stat &info) {
    std::vector<std::string> names;
    if (!list(source, names) || sys::mkdir(target.c_str(), 0700) != 0)
        return false;
    for (const std::string &name : names)
        if (!copyAny(joined(source, name), joined(target, name)))
            return false;
    return sys::chmod(target.c_str(), info.st_mode & kPermissionBits) == 0;
}

bool copyAny(const std::string &source, const std::string &target) {
    struct stat info;
    if (sys::lstat(source.c_str(), &info) != 0)
        return false;
    if (S_ISDIR(info.st_mode))
        return copyDirectory(source, target, info);
    if (S_ISLNK(info.st_mode))
        return copyLink(source, target);
    if (S_ISREG(info.st_mode))
        return copyFile(source, target);
    errno = EINVAL; // sockets, pipes and devices have no content to copy
    return false;
}

/// Whether `path`, where nothing is yet, lies in the directory `top` or below it.
bool liesInside(const std::string &path, const struct stat &top) {
    const std::size_t end = path.find_last_not_of('/');
    const std::size_t slash = end == std::string::npos ? end : path.rfind('/', end);
    std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    struct stat info, below{};
    while (sys::stat(directory.c_str(), &info) == 0 && !isSame(info, below)) {
        if (isSame(info, top))
            return true;
        below = info;
        directory = joined(directory, "..");
    }
    return false;
}

bool haveEqualBytes(const std::string &a, const std::string &b) {
    const sys::Descriptor one(sys::open(a.c_str(), O_RDONLY)), other(sys::open(b.c_str(), O_RDONLY));
    if (!one || !other)
        return false;
    const auto block = std::make_unique<char[]>(2 * kBlockSize);
    for (;;) {
        const ssize_t count = sys::readAll(one.get(), block.get(), kBlockSize);
        const ssize_t otherCount = sys::readAll(other.get(), block.get() + kBlockSize, kBlockSize);
        if (count < 0 || otherCount < 0)
            return false;
        const auto length = static_cast<std::size_t>(count);
        if (count != otherCount || std::memcmp(block.get(), block.get() + kBlockSize, length) != 0) {
            errno = 0;
            return false;
        }
        if (length < kBlockSize)
            return true;
    }
}

bool haveEqualEntries(const std::string &a, const std::string &b) {
    std::vector<std::string> names, otherNames;
    if (!list(a, names) || !list(b, otherNames))
        return false;
    std::sort(names.begin(), names.end());
    std::sort(otherNames.begin(), otherNames.end());
    errno = 0;
    return names == otherNames && std::all_of(names.begin(), names.end(), [&](const std::string &name) {
               return areEqual(joined(a, name), joined(b, name));
           });
}

} // namespace

bool list(const std::string &directory, std::vector<std::string> &names) {
    const std::unique_ptr<DIR, CloseDirectory> open(sys::opendir(directory.c_str()));
    if (!open)
        return false;
    while (const dirent *entry = sys::readdir(open.get()))
        if (!isDots(entry->d_name))
            names.emplace_back(entry->d_name);
    return errno == 0;
}

bool listAll(const std::string &directory, const std::string &prefix, std::vector<std::string> &paths) {
    std::vector<std::string> names;
    if (!list(directory, names))
        return false;
    for (const std::string &name : names) {
        const std::string path = joined(directory, name);
        struct stat info;
        paths.push_back(prefix + name);
        if (sys::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode))
            listAll(path, prefix + name + "/", paths);
    }
    return true;
}

bool copy(const std::string &source, const std::string &target) {
    struct stat info;
    if (sys::lstat(target.c_str(), &info) == 0) {
        errno = EEXIST;
        return false;
    }
    if (sys::lstat(source.c_str(), &info) != 0)
        return false;
    if (S_ISDIR(info.st_mode) && liesInside(target, info)) {
        errno = EINVAL;
        return false;
    }
    return copyAny(source, target);
}

bool remove(const std::string &path) {
    struct stat info;
    if (sys::lstat(path.c_str(), &info) != 0)
        return false;
    if (!S_ISDIR(info.st_mode))
        return sys::unlink(path.c_str()) == 0;
    std::vector<std::string> names;
    int error = list(path, names) ? 0 : errno;
    for (const std::string &name : names)
        if (!remove(joined(path, name)) && error == 0)
            error = errno;
    if (sys::rmdir(path.c_str()) == 0)
        return true;
    if (error != 0)
        errno = error; // why something is left in it
    return false;
}

bool areEqual(const std::string &a, const std::string &b) {
    struct stat one, other;
    if (sys::lstat(a.c_str(), &one) != 0 || sys::lstat(b.c_str(), &other) != 0)
        return false;
    errno = 0;
    if (isSame(one, other))
        return true;
    if ((one.st_mode & S_IFMT) != (other.st_mode & S_IFMT))
        return false;
    if (S_ISDIR(one.st_mode))
        return haveEqualEntries(a, b);
    if (S_ISREG(one.st_mode))
        return one.st_size == other.st_size && haveEqualBytes(a, b);
    std::string text, otherText;
    return S_ISLNK(one.st_mode) && readLink(a, text) && readLink(b, otherText) && text == otherText;
}

bool readLink(const std::string &path, std::string &text) {
    for (text.resize(256);; text.resize(text.size() * 2)) {
        const ssize_t length = sys::readlink(path.c_str(), text.data(), text.size());
        if (length < 0)
            return false;
        if (static_cast<std::size_t>(length) < text.size()) {
            text.resize(static_cast<std::size_t>(length));
            return true;
        }
    }
}

} // namespace qb::tree
