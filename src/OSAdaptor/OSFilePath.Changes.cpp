// Changes of single names.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSFilePath.Support.h"
#include "System/Descriptor.h"

#include <cerrno>
#include <cstring>

namespace {

using qb::files::kFile;
using qb::files::raiseSystemError;
using qb::files::shown;
using qb::files::systemPath;
namespace sys = qb::sys;

// Creates the file if need be. Returns false with an error raised.
bool createFile(const char *path) {
    sys::Descriptor file(sys::open(path, O_RDWR | O_CREAT | O_APPEND));
    if (file && file.close() == 0)
        return true;
    raiseSystemError(__LINE__, qb::kErrorCannotWrite, path);
    return false;
}

// Returns 0 when `link` leads to the directory now, by way of the name `temporary`, of which nothing is left.
int replaceLink(const char *directory, const char *temporary, const char *link) {
    if (sys::symlink(directory, temporary) != 0)
        return -1;
    if (sys::rename(temporary, link) == 0)
        return 0;
    const int error = errno;
    sys::unlink(temporary);
    errno = error;
    return -1;
}

} // namespace

void OSFilePath::makePath(NSString *path) {
    if (!path || path->view().empty())
        return;
    if (const char *const name = systemPath(path))
        qb::files::makeDirectories(name);
    else
        raiseSystemError(__LINE__, qb::kErrorCannotMakeDirectory, path);
}

bool qb::files::rename(NSString *source, NSString *to) {
    const char *const oldName = systemPath(source);
    const char *const newName = oldName ? systemPath(to) : nullptr;
    if (newName && sys::rename(oldName, newName) == 0)
        return true;
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotRename, shown(source), shown(to), std::strerror(errno));
    return false;
}

void OSFilePath::renamePath(NSString *source, NSString *to) {
    qb::files::rename(source, to);
}

void OSFilePath::touchFileAtPath(NSString *path) {
    touchFileAtPath(path, 0);
}

void OSFilePath::touchFileAtPath(NSString *path, std::int64_t mtime) {
    const char *const name = systemPath(path);
    if (!name) {
        raiseSystemError(__LINE__, qb::kErrorCannotSetFileTimes, path);
        return;
    }
    static_assert(sizeof(time_t) == sizeof mtime);
    const timespec time{mtime, 0};
    const timespec times[2] = {time, time};
    const auto setTimes = [&] { return sys::utimensat(name, mtime ? times : nullptr); };
    int outcome = setTimes();
    if (outcome != 0 && errno == ENOENT) {
        if (!createFile(name) || qb::isErrorPending())
            return;
        outcome = setTimes();
    }
    if (outcome != 0)
        raiseSystemError(__LINE__, qb::kErrorCannotSetFileTimes, path);
}

void OSFilePath::symlink(NSString *link, NSString *toTargetDir) {
    if (!link || !toTargetDir)
        return;
    if (!directoryExistsAtPath(toTargetDir)) {
        qb::raiseError(kFile, __LINE__, qb::kErrorNotADirectory, toTargetDir->cString());
        return;
    }
    NSString *const parent = NSString::stringWith(qb::files::parentOf(toTargetDir->view()));
    NSString *const temporary = uniqueFilenameWithPrefix("_lnk_"_ns, parent);
    const char *const name = systemPath(link);
    if (!name || replaceLink(toTargetDir->cString(), temporary->cString(), name) != 0)
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotMakeLink, toTargetDir->cString(), link->cString(),
                       std::strerror(errno));
}

void OSFilePath::chdir(NSString *path) {
    const char *const name = systemPath(path);
    if (!name || sys::chdir(name) != 0)
        raiseSystemError(__LINE__, qb::kErrorCannotOpenDirectory,
                         NSString::stringWithRestrictedFormat("chdir(%s)", shown(path)));
}

// --- Descriptors ---

std::int32_t OSFilePath::openFile(NSString *path, const char *mode) {
    const char *const name = systemPath(path);
    const int flags = name ? sys::openingFlags(mode) : -1;
    return flags < 0 ? -1 : sys::openAtPlace(name, flags);
}

std::int32_t OSFilePath::closeFile(std::int32_t descriptor) {
    return sys::close(descriptor);
}
