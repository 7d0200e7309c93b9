#include "Foundation/FileTree.h"

#include "System/Descriptor.h"
#include "System/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

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
    const auto block = std::make_unique_for_overwrite<char[]>(kBlockSize);
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

// What makes a second one of a file, link or other thing that is no directory.
using LeafCopier = bool (*)(const std::string &source, const std::string &target, mode_t mode);

bool linkLeaf(const std::string &source, const std::string &target, mode_t) {
    return sys::link(source.c_str(), target.c_str()) == 0;
}

bool copyLeaf(const std::string &source, const std::string &target, mode_t mode) {
    if (S_ISLNK(mode))
        return copyLink(source, target);
    if (S_ISREG(mode))
        return copyFile(source, target);
    errno = EINVAL; // sockets, pipes and devices have no content to copy
    return false;
}

// Copies what stands at one place of a tree; of a directory itself only, and `walk` enters it.
bool copyEntry(const std::string &source, const std::string &target, LeafCopier copyLeaf, Walk &walk,
               std::vector<mode_t> &modes) {
    struct stat info;
    if (sys::lstat(source.c_str(), &info) != 0)
        return false;
    if (!S_ISDIR(info.st_mode))
        return copyLeaf(source, target, info.st_mode);
    std::vector<std::string> names;
    if (!list(source, names) || sys::mkdir(target.c_str(), 0700) != 0)
        return false;
    walk.enter(std::move(names));
    modes.push_back(info.st_mode & kPermissionBits);
    return true;
}

// Directories get their permissions when all is in them.
bool copyTree(const std::string &source, const std::string &target, LeafCopier copyLeaf) {
    Walk walk;
    std::vector<mode_t> modes; // of the directories that are entered
    if (!copyEntry(source, target, copyLeaf, walk, modes))
        return false;
    for (;;)
        switch (walk.step()) {
        case Walk::Step::entry:
            if (!copyEntry(source + walk.below(), target + walk.below(), copyLeaf, walk, modes))
                return false;
            break;
        case Walk::Step::directoryEnd:
            if (sys::chmod((target + walk.below()).c_str(), modes.back()) != 0)
                return false;
            modes.pop_back();
            break;
        case Walk::Step::end:
            return true;
        }
}

/// Returns EINVAL when `path`, where nothing is yet, lies in the directory `top` or below it; 0 when not; or
/// why that can't be told.
int errorOfPlace(const std::string &path, const struct stat &top) {
    const std::size_t end = path.find_last_not_of('/');
    const std::size_t slash = end == std::string::npos ? end : path.rfind('/', end);
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    constexpr int kFlags = O_PATH | O_DIRECTORY;
    sys::Descriptor open(sys::open(directory.c_str(), kFlags));
    for (struct stat info, below{};; below = info) {
        if (!open || sys::fstat(open.get(), &info) != 0)
            return errno;
        if (isSame(info, top))
            return EINVAL;
        if (isSame(info, below))
            return 0;
        open = sys::Descriptor(sys::openat(open.get(), "..", kFlags));
    }
}

bool canCopy(const std::string &source, const std::string &target) {
    struct stat info;
    if (sys::lstat(target.c_str(), &info) == 0) {
        errno = EEXIST;
        return false;
    }
    if (sys::lstat(source.c_str(), &info) != 0)
        return false;
    if (!S_ISDIR(info.st_mode))
        return true;
    errno = errorOfPlace(target, info);
    return errno == 0;
}

bool haveEqualBytes(const std::string &a, const std::string &b) {
    const sys::Descriptor one(sys::open(a.c_str(), O_RDONLY)), other(sys::open(b.c_str(), O_RDONLY));
    if (!one || !other)
        return false;
    const auto block = std::make_unique_for_overwrite<char[]>(2 * kBlockSize);
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

bool haveEqualTexts(const std::string &a, const std::string &b) {
    std::string text, otherText;
    return readLink(a, text) && readLink(b, otherText) && text == otherText;
}

// Whether two directories have the same names; `walk` enters both.
bool haveEqualNames(const std::string &a, const std::string &b, Walk &walk) {
    std::vector<std::string> names, otherNames;
    if (!list(a, names) || !list(b, otherNames))
        return false;
    std::sort(names.begin(), names.end());
    std::sort(otherNames.begin(), otherNames.end());
    errno = 0;
    const bool isEqual = names == otherNames;
    walk.enter(std::move(names));
    return isEqual;
}

bool areEntriesEqual(const std::string &a, const std::string &b, Walk &walk) {
    struct stat one, other;
    if (sys::lstat(a.c_str(), &one) != 0 || sys::lstat(b.c_str(), &other) != 0)
        return false;
    errno = 0;
    if (isSame(one, other))
        return true;
    if ((one.st_mode & S_IFMT) != (other.st_mode & S_IFMT))
        return false;
    if (S_ISDIR(one.st_mode))
        return haveEqualNames(a, b, walk);
    if (S_ISREG(one.st_mode))
        return one.st_size == other.st_size && haveEqualBytes(a, b);
    return S_ISLNK(one.st_mode) && haveEqualTexts(a, b);
}

// The first error is the one that tells why something is left.
void note(std::vector<int> &errors, int error) {
    if (errors.back() == 0)
        errors.back() = error;
}

// Removes what is no directory; `walk` enters one, whose errors are noted apart.
void removeEntry(const std::string &path, Walk &walk, std::vector<int> &errors) {
    struct stat info;
    if (sys::lstat(path.c_str(), &info) != 0)
        return note(errors, errno);
    if (!S_ISDIR(info.st_mode)) {
        if (sys::unlink(path.c_str()) != 0)
            note(errors, errno);
        return;
    }
    std::vector<std::string> names;
    errors.push_back(list(path, names) ? 0 : errno);
    walk.enter(std::move(names));
}

// Removes a directory that was walked through.
void removeDirectory(const std::string &path, std::vector<int> &errors) {
    const int inside = errors.back();
    errors.pop_back();
    if (sys::rmdir(path.c_str()) != 0)
        note(errors, inside != 0 ? inside : errno);
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

void Walk::enter(std::vector<std::string> names) {
    open_.push_back({std::move(names), 0, below_.size()});
}

void Walk::leave() {
    below_.resize(open_.back().length);
    open_.pop_back();
}

Walk::Step Walk::step() {
    if (open_.empty())
        return Step::end;
    Directory &directory = open_.back();
    if (directory.next == directory.names.size()) {
        leave();
        return Step::directoryEnd;
    }
    below_.resize(directory.length);
    below_ += '/';
    below_ += directory.names[directory.next++];
    return Step::entry;
}

bool copy(const std::string &source, const std::string &target) {
    return canCopy(source, target) && copyTree(source, target, &copyLeaf);
}

bool link(const std::string &source, const std::string &target) {
    return canCopy(source, target) && copyTree(source, target, &linkLeaf);
}

bool remove(const std::string &path) {
    Walk walk;
    std::vector<int> errors{0}; // of the whole, and of each directory that is entered
    removeEntry(path, walk, errors);
    for (Walk::Step step; (step = walk.step()) != Walk::Step::end;)
        if (step == Walk::Step::entry)
            removeEntry(path + walk.below(), walk, errors);
        else
            removeDirectory(path + walk.below(), errors);
    errno = errors.front();
    return errors.front() == 0;
}

bool areEqual(const std::string &a, const std::string &b) {
    Walk walk;
    if (!areEntriesEqual(a, b, walk))
        return false;
    for (Walk::Step step; (step = walk.step()) != Walk::Step::end;)
        if (step == Walk::Step::entry && !areEntriesEqual(a + walk.below(), b + walk.below(), walk))
            return false;
    return true;
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
