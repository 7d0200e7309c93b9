// What the file system knows of a path.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSFilePath.Support.h"

#include <cerrno>
#include <limits>
#include <utility>

namespace {

using qb::files::kFile;
using qb::files::raiseSystemError;
namespace sys = qb::sys;

// Stores a number in a field of fixed width; returns false when it does not fit.
template <class Field, class Number>
bool store(Field &field, Number number) {
    field = static_cast<Field>(number);
    return std::in_range<Field>(number);
}

bool fill(OSFileInfo &info, const struct stat &status) {
    info.exists = YES;
    info.isDirectory = S_ISDIR(status.st_mode);
    info.mode = status.st_mode;
    return store(info.size, status.st_size) && store(info.accessTime, status.st_atime) &&
           store(info.modificationTime, status.st_mtime) && store(info.changeTime, status.st_ctime);
}

// Returns false, with errno set, when the path can't be asked.
bool ask(NSString *path, struct stat &status) {
    const char *const name = qb::files::systemPath(path);
    return name && sys::stat(name, &status) == 0;
}

struct FreeMatches {
    void operator()(glob_t *matches) const { sys::globfree(matches); }
};

// Returns nil, with the error raised, when the expansion failed.
NSArray *matchesOf(int outcome, const glob_t &matches, NSString *pattern) {
    if (outcome == GLOB_NOSPACE) {
        qb::raiseError(kFile, __LINE__, qb::kErrorOutOfMemory);
        return nullptr;
    }
    if (outcome != 0 && outcome != GLOB_NOMATCH) {
        raiseSystemError(__LINE__, qb::kErrorGlobAborted, pattern);
        return nullptr;
    }
    NSMutableArray *const paths = NSMutableArray::array();
    for (std::size_t i = 0; i < matches.gl_pathc; ++i)
        paths->addObject(NSString::stringWithCString(matches.gl_pathv[i]));
    return paths;
}

} // namespace

void OSFilePath::fileInfo(OSFileInfo *info, NSString *path) {
    if (!info)
        throw InvalidArgumentException("OSFilePath fileInfo:atPath: must have a file info that is not NULL.");
    *info = OSFileInfo();
    struct stat status;
    if (!ask(path, status)) {
        if (errno != ENOENT)
            raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
    } else if (!fill(*info, status)) {
        *info = OSFileInfo();
        errno = EOVERFLOW;
        raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
    }
}

BOOL OSFilePath::fileExistsAtPath(NSString *path) {
    return fileExistsAtPath(path, nullptr);
}

BOOL OSFilePath::fileExistsAtPath(NSString *path, BOOL *isDirectory) {
    struct stat status;
    const bool exists = ask(path, status);
    if (isDirectory)
        *isDirectory = exists && S_ISDIR(status.st_mode);
    return exists;
}

BOOL OSFilePath::directoryExistsAtPath(NSString *path) {
    BOOL isDirectory;
    fileExistsAtPath(path, &isDirectory);
    return isDirectory;
}

std::int32_t OSFilePath::fileSizeAtPath(NSString *path) {
    struct stat status;
    std::int32_t size = 0;
    if (ask(path, status) && !store(size, status.st_size))
        return std::numeric_limits<std::int32_t>::max();
    return size;
}

BOOL OSFilePath::fileContainsDataAtPath(NSString *path) {
    struct stat status;
    if (ask(path, status))
        return !S_ISDIR(status.st_mode) && status.st_size > 0;
    if (errno != ENOENT)
        raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
    return NO;
}

NSString *OSFilePath::symlinkTarget(NSString *path) {
    if (!path || path->view().empty())
        return nullptr;
    const char *const name = qb::files::systemPath(path);
    if (!name) {
        raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
        return nullptr;
    }
    std::string text;
    return qb::files::linkText(name, text) ? NSString::stringWith(text) : nullptr;
}

NSString *OSFilePath::getcwd() {
    constexpr std::size_t kLongestPath = 4096;
    char path[kLongestPath];
    if (sys::getcwd(path, sizeof path))
        return NSString::stringWithCString(path);
    raiseSystemError(__LINE__, qb::kErrorCannotOpenDirectory, "getcwd()");
    return nullptr;
}

NSArray *OSFilePath::glob(NSString *pattern) {
    const char *const text = qb::files::systemPath(pattern);
    if (!text) {
        raiseSystemError(__LINE__, qb::kErrorGlobAborted, pattern);
        return nullptr;
    }
    glob_t matches;
    const int outcome = sys::glob(text, GLOB_NOSORT, &matches);
    const std::unique_ptr<glob_t, FreeMatches> freeing(&matches);
    return matchesOf(outcome, matches, pattern);
}

NSArray *OSFilePath::glob(NSString *pattern, NSString *dir) {
    if (!pattern || !dir || !dir->containsData())
        return glob(pattern);
    return glob(NSString::stringWithRestrictedFormat("%s%c%s", dir, pathSeparator(), pattern));
}
