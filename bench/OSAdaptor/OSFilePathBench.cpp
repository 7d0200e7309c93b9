// Copies of files and trees, beside the standard library and the calls that `cp -a` makes.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <linux/fs.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <stdexcept>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// A directory of its own in a place: in memory, /dev/shm, or on a disk.
class BenchDirectory {
public:
    explicit BenchDirectory(const std::string &place) : path_(place + "/qb-bench-XXXXXX") {
        if (!::mkdtemp(path_.data()))
            throw std::runtime_error("no directory can be made: " + path_);
    }
    ~BenchDirectory() { fs::remove_all(path_); }

    std::string operator/(const char *name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

void write(const std::string &path, std::size_t size) {
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
}

/// Measures copies of `source` to a new name.
template <class Copy>
void measure(benchmark::State &state, const BenchDirectory &directory, Copy copy) {
    const std::string source = directory / "source", target = directory / "target";
    for (auto _ : state) {
        copy(source.c_str(), target.c_str());
        state.PauseTiming();
        if (fs::remove_all(target) == 0)
            state.SkipWithError("nothing was copied");
        state.ResumeTiming();
    }
}

void copyOurs(const char *source, const char *target) {
    _copyPath(source, target, /*targetIsNewName=*/true);
}

void copyStandard(const char *source, const char *target) {
    fs::copy(source, target, fs::copy_options::recursive);
}

// Gives a file the permissions as an access list, which is how `cp -a` does it.
void setPermissions(int file, mode_t mode) {
    struct {
        posix_acl_xattr_header header{POSIX_ACL_XATTR_VERSION};
        posix_acl_xattr_entry entries[3];
    } list{.entries = {{ACL_USER_OBJ, static_cast<__le16>(mode >> 6 & 7), ~0U},
                       {ACL_GROUP_OBJ, static_cast<__le16>(mode >> 3 & 7), ~0U},
                       {ACL_OTHER, static_cast<__le16>(mode & 7), ~0U}}};
    if (::fsetxattr(file, "system.posix_acl_access", &list, sizeof list, 0) != 0)
        ::fchmod(file, mode);
}

// Owner, permissions, times and attributes included: the calls that `cp -a` of coreutils 9.1 makes for a file
// and a new name.
void copyWithCpCalls(const char *source, const char *target) {
    if (const int directory = ::open(target, O_RDONLY | O_PATH | O_DIRECTORY); directory >= 0)
        ::close(directory);
    struct stat status;
    ::lstat(source, &status);
    const int from = ::open(source, O_RDONLY | O_NOFOLLOW);
    ::fstat(from, &status);
    const int to = ::open(target, O_WRONLY | O_CREAT | O_EXCL, status.st_mode & 0700);
    struct stat made;
    if (::ioctl(to, FICLONE, from) != 0) {
        ::fstat(to, &made);
        ::posix_fadvise(from, 0, 0, POSIX_FADV_SEQUENTIAL);
        constexpr std::size_t kAll = std::size_t{1} << 30;
        while (::copy_file_range(from, nullptr, to, nullptr, kAll, 0) > 0)
            ;
    }
    const timespec times[2] = {status.st_atim, status.st_mtim};
    ::futimens(to, times);
    char names[256], list[132];
    if (::flistxattr(from, nullptr, 0) == 0 && ::flistxattr(from, names, sizeof names) == 0 &&
        ::fgetxattr(from, "system.posix_acl_access", list, sizeof list) < 0 && ::fstat(from, &status) == 0)
        setPermissions(to, status.st_mode & 0777);
    ::close(to);
    ::close(from);
}

template <void (*copy)(const char *, const char *)>
void copyFile(benchmark::State &state) {
    const BenchDirectory directory("/dev/shm");
    write(directory / "source", static_cast<std::size_t>(state.range(0)));
    measure(state, directory, copy);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(copyFile<copyOurs>)->Name("Files/copy/ours")->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);
BENCHMARK(copyFile<copyStandard>)->Name("Files/copy/std-filesystem")->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);
BENCHMARK(copyFile<copyWithCpCalls>)->Name("Files/copy/cp-calls")->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);

void makeTree(const std::string &directory) {
    fs::create_directory(directory);
    for (int i = 0; i < 1000; ++i)
        write(directory + "/file" + std::to_string(i), 4096);
}

template <void (*copy)(const char *, const char *)>
void copyTree(benchmark::State &state) {
    const BenchDirectory directory("/dev/shm");
    makeTree(directory / "source");
    measure(state, directory, copy);
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(copyTree<copyOurs>)->Name("Files/copy-tree-of-1000/ours");
BENCHMARK(copyTree<copyStandard>)->Name("Files/copy-tree-of-1000/std-filesystem");

// All copies stay until the program ends: what a file system does about names and inodes that were given back
// a moment ago would be measured otherwise.
template <void (*copy)(const char *, const char *)>
void copyTreeOnDisk(benchmark::State &state) {
    static const BenchDirectory directory("/var/tmp");
    static int copies = 0;
    const std::string source = directory / "source";
    if (copies == 0)
        makeTree(source);
    for (auto _ : state)
        copy(source.c_str(), (directory / "target" + std::to_string(copies++)).c_str());
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(copyTreeOnDisk<copyOurs>)->Name("Files/copy-tree-of-1000-on-disk/ours")->Iterations(20);
BENCHMARK(copyTreeOnDisk<copyStandard>)
    ->Name("Files/copy-tree-of-1000-on-disk/std-filesystem")
    ->Iterations(20);

} // namespace
