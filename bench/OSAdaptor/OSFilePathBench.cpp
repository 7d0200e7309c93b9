// Copies of files and trees, beside the standard library and the calls that `cp -a` makes.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// A directory in memory, where that is to be had, so that no disk is measured.
class BenchDirectory {
public:
    BenchDirectory() : path_(fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path().native()) {
        path_ += "/qb-bench-XXXXXX";
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

// Owner, permissions and times included, as `cp -a` copies them.
void copyWithCpCalls(const char *source, const char *target) {
    struct stat status;
    ::lstat(source, &status);
    ::fstatat(AT_FDCWD, target, &status, AT_SYMLINK_NOFOLLOW);
    const int from = ::open(source, O_RDONLY | O_NOFOLLOW);
    ::fstat(from, &status);
    const int to = ::open(target, O_WRONLY | O_CREAT | O_EXCL, status.st_mode & 0700);
    for (off_t left = status.st_size; left > 0;) {
        const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, static_cast<size_t>(left), 0);
        if (count <= 0)
            break;
        left -= count;
    }
    const timespec times[2] = {status.st_atim, status.st_mtim};
    ::futimens(to, times);
    if (::fchown(to, status.st_uid, status.st_gid) == 0)
        ::fchmod(to, status.st_mode & 07777);
    ::close(to);
    ::close(from);
}

template <void (*copy)(const char *, const char *)>
void copyFile(benchmark::State &state) {
    const BenchDirectory directory;
    write(directory / "source", static_cast<std::size_t>(state.range(0)));
    measure(state, directory, copy);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(copyFile<copyOurs>)->Name("Files/copy/ours")->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);
BENCHMARK(copyFile<copyStandard>)->Name("Files/copy/std-filesystem")->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);
BENCHMARK(copyFile<copyWithCpCalls>)->Name("Files/copy/cp-calls")->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);

template <void (*copy)(const char *, const char *)>
void copyTree(benchmark::State &state) {
    const BenchDirectory directory;
    fs::create_directory(directory / "source");
    for (int i = 0; i < 1000; ++i)
        write(directory / "source/file" + std::to_string(i), 4096);
    measure(state, directory, copy);
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(copyTree<copyOurs>)->Name("Files/copy-tree-of-1000/ours");
BENCHMARK(copyTree<copyStandard>)->Name("Files/copy-tree-of-1000/std-filesystem");

} // namespace
