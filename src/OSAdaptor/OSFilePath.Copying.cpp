// Copies of trees.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSFilePath.FileCopy.h"
#include "OSFilePath.Support.h"
#include "System/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <optional>
#include <utility>

namespace {

using qb::files::CopyFailure;
using qb::files::Directory;
using qb::files::EntryNames;
using qb::files::Identity;
using qb::files::join;
using qb::files::kFile;
using qb::files::raiseSystemError;
namespace sys = qb::sys;

// As many links in a row as the kernel follows.
constexpr unsigned kMostLinks = 40;

// Above this debug level the paths of each copy are traced.
constexpr int kLevelOfPaths = 5;

bool failsLooping(const std::string &path) {
    errno = ELOOP;
    raiseSystemError(__LINE__, qb::kErrorCannotStat, path.c_str());
    return false;
}

bool isTooLong(std::string_view name) {
    constexpr std::size_t kLongestName = 254;
    return name.size() > kLongestName;
}

bool checkName(std::string_view name) {
    if (!isTooLong(name))
        return true;
    qb::raiseError(kFile, __LINE__, qb::kErrorNameTooLong, std::string(name).c_str());
    return false;
}

std::string_view nameOf(std::string_view path) {
    return path.substr(path.rfind(qb::files::kSeparator) + 1);
}

void tracePaths(const std::string &source, const std::string &target) {
    qb::files::trace(kLevelOfPaths, __LINE__, "%s:%d: sourcePath: %s, targetPath: %s", source.c_str(),
                     target.c_str());
}

// Makes the directory for a copy if need be. Returns false when an error is pending.
bool prepareDirectory(std::string directory) {
    if (directory.empty())
        directory = ".";
    struct stat status;
    if (sys::stat(directory.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return qb::files::makeDirectories(directory.c_str());
        raiseSystemError(__LINE__, qb::kErrorCannotStat, directory.c_str());
        return false;
    }
    if (S_ISDIR(status.st_mode))
        return !qb::isErrorPending();
    qb::raiseError(kFile, __LINE__, qb::kErrorNotADirectory, directory.c_str());
    return false;
}

// Makes `target`, the directory for a copy or its new name, the copy's path, with a directory to stand in.
// Returns false when an error is pending.
bool prepareTarget(const std::string &source, std::string &target, bool isNewName) {
    tracePaths(source, target);
    if (!isNewName) {
        const bool isReady = prepareDirectory(target);
        target = join(target, nameOf(source));
        return isReady;
    }
    struct stat status;
    if (sys::stat(target.c_str(), &status) != 0)
        return prepareDirectory(std::string(qb::files::directoryOf(target)));
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorWithDefaultFormat(
            NSString::stringWithCString(qb::errorNumber(qb::kErrorCopyTargetExists)->format),
            qb::kErrorCopyTargetExists, source.c_str(), target.c_str());
    return false;
}

// Makes the directory of a copy whose parent was there a moment ago.
bool makeCopiedDirectory(const std::string &path) {
    if (sys::mkdir(path.c_str(), 0777) == 0 || errno == EEXIST)
        return !qb::isErrorPending();
    if (errno == ENOENT)
        return qb::files::makeDirectories(path.c_str());
    raiseSystemError(__LINE__, qb::kErrorCannotMakeDirectory, path.c_str());
    return false;
}

// Returns the absolute or relative path, simplified, that a link with that text means.
std::string resolve(const std::string &link, const std::string &text) {
    const bool isAbsolute = text.starts_with(qb::files::kSeparator);
    return qb::files::simplified(isAbsolute ? text : join(qb::files::directoryOf(link), text));
}

/// A walk that copies what it meets, with two directories open at most and a stack of its own, so that depth
/// costs neither descriptors nor C stack.
///
/// The plain files of a directory are copied while it is read, by names relative to the two directories,
/// which is where the time goes; whatever is unusual about one sends it the general way, which has all the
/// rules.
class TreeCopy {
public:
    void copyPath(const std::string &source, std::string target, bool isNewName) {
        if (isNewName && copyPlainFile(source, target))
            return;
        if (prepareTarget(source, target, isNewName) && copyEntry(source, target))
            finish();
    }

    void copyDirectory(const std::string &source, const std::string &target) {
        if (enter(source, target))
            finish();
    }

private:
    struct Level {
        std::string source;
        std::string target;
        Identity sourceIdentity;
        Identity targetIdentity;
        bool hasTarget;  // whether there is a directory at `target`
        EntryNames rest; // what is still to be copied
    };

    void finish() {
        while (!levels_.empty() && !qb::isErrorPending()) {
            Level &level = levels_.back();
            const char *const name = level.rest.next();
            if (!name)
                levels_.pop_back();
            else if (!copyEntry(level, name))
                return;
        }
    }

    bool copyEntry(const Level &level, const char *name) {
        if (root_ && levels_.size() <= levelsAtRoot_)
            root_.reset();
        if (!level.hasTarget && !prepareDirectory(level.target))
            return false;
        std::string source = join(level.source, name);
        tracePaths(source, level.target);
        return copyEntry(std::move(source), join(level.target, name));
    }

    // Copies a file or a link, or enters a directory. Returns false with an error raised.
    bool copyEntry(std::string source, std::string target) {
        if (!root_) {
            root_ = qb::files::simplified(source);
            levelsAtRoot_ = levels_.size();
        }
        for (unsigned links = 0;; ++links) {
            struct stat status;
            if (sys::lstat(source.c_str(), &status) != 0) {
                raiseSystemError(__LINE__, qb::kErrorCannotStat, source.c_str());
                return false;
            }
            if (!S_ISLNK(status.st_mode))
                return copyByType(source, status, target);
            std::string text;
            if (!qb::files::readLink(source.c_str(), text))
                return false;
            std::string resolved = resolve(source, text);
            if (_isPathSubpathOfPath(resolved.c_str(), root_->c_str()) ||
                resolved + qb::files::kSeparator == *root_)
                return makeLink(resolved, source, target);
            if (links == kMostLinks)
                return failsLooping(source);
            if (!prepareTarget(resolved, target, /*isNewName=*/true))
                return false;
            source = std::move(resolved);
        }
    }

    bool copyByType(const std::string &source, const struct stat &status, const std::string &target) {
        if (S_ISDIR(status.st_mode))
            return checkName(nameOf(target)) && enter(source, target);
        if (S_ISREG(status.st_mode))
            return checkName(nameOf(target)) && qb::files::copyFile(source, status, target);
        return true; // devices, pipes and sockets are left out
    }

    bool makeLink(const std::string &resolved, const std::string &source, const std::string &target) {
        if (!checkName(nameOf(target)))
            return false;
        const std::string link = qb::files::simplified(source);
        const std::string directory(qb::files::directoryOf(link));
        const qb::files::Buffer way(_pathRelativeToDir(resolved.c_str(), directory.c_str()));
        if (!way)
            return false;
        const char *const text = *way.get() ? way.get() : "."; // to the directory that it stands in
        if (sys::symlink(text, target.c_str()) == 0)
            return true;
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotMakeLink, text, target.c_str(), std::strerror(errno));
        return false;
    }

    bool isInside(Identity identity) const {
        return std::any_of(levels_.begin(), levels_.end(), [&](const Level &level) {
            return level.sourceIdentity == identity || level.targetIdentity == identity;
        });
    }

    bool enter(const std::string &source, const std::string &target) {
        const Directory directory(sys::opendir(source.c_str()));
        struct stat status;
        if (!directory || sys::fstat(sys::dirfd(directory.get()), &status) != 0) {
            raiseSystemError(__LINE__, qb::kErrorCannotOpenDirectory, source.c_str());
            return false;
        }
        const Identity identity(status);
        if (isInside(identity))
            return failsLooping(source);
        if (!makeCopiedDirectory(target))
            return false;
        const sys::Descriptor copy(sys::open(target.c_str(), O_PATH | O_DIRECTORY));
        const bool hasTarget = copy && sys::fstat(copy.get(), &status) == 0;
        const bool isKnown = hasTarget || sys::stat(target.c_str(), &status) == 0; // for want of descriptors
        const Identity targetIdentity = isKnown ? Identity(status) : Identity();
        if (targetIdentity == identity)
            return failsLooping(source);
        levels_.push_back({source, target, identity, targetIdentity, hasTarget, {}});
        return copyFiles(levels_.back(), directory.get(), copy.get());
    }

    // Copies the directory's plain files and notes all other entries.
    bool copyFiles(Level &level, DIR *directory, int target) {
        provenMode_.reset();
        const bool isGeneral = !level.hasTarget || qb::files::isTracing(kLevelOfPaths);
        while (const dirent *entry = sys::readdir(directory)) {
            if (EntryNames::isSelfOrParent(entry->d_name))
                continue;
            if (entry->d_type != DT_REG || isGeneral)
                level.rest.add(entry->d_name);
            else if (!copyFile(level, sys::dirfd(directory), target, entry->d_name))
                return false;
        }
        if (errno == 0 || errno == ENOENT) // the directory was removed meanwhile
            return true;
        raiseSystemError(__LINE__, qb::kErrorCannotReadDirectory, level.source.c_str());
        return false;
    }

    bool copyFile(const Level &level, int sourceDirectory, int targetDirectory, const char *name) {
        if (isTooLong(name))
            return copyEntry(level, name);
        const auto failure = copyToNewFile(sourceDirectory, name, targetDirectory, name);
        if (!failure)
            return copyEntry(level, name);
        return *failure == CopyFailure::none ||
               qb::files::report(*failure, join(level.source, name), join(level.target, name));
    }

    // Copies a plain file to a new name without a look at the name and its directory: when the file can be
    // made, nothing was wrong with them. Returns false, with nothing done, when the general way has to go.
    bool copyPlainFile(const std::string &source, const std::string &target) {
        struct stat status;
        if (qb::files::isTracing(kLevelOfPaths) || qb::isErrorPending() || isTooLong(nameOf(target)) ||
            sys::lstat(source.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
            return false;
        const auto failure = copyToNewFile(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str());
        if (failure)
            qb::files::report(*failure, source, target);
        return failure.has_value();
    }

    // Copies what is known as a plain file. Nothing is done, and no failure told, when it is none any more or
    // either file can't be opened, the new one also because there is one.
    std::optional<CopyFailure> copyToNewFile(int sourceDirectory, const char *sourceName, int targetDirectory,
                                             const char *targetName) {
        constexpr int kNoSurprise = O_NOFOLLOW | O_NONBLOCK; // nor a wait, should it have been replaced
        const sys::Descriptor source(sys::openat(sourceDirectory, sourceName, O_RDONLY | kNoSurprise));
        struct stat status;
        if (!source || sys::fstat(source.get(), &status) != 0 || !S_ISREG(status.st_mode))
            return std::nullopt;
        const mode_t mode = qb::files::creationMode(status.st_mode);
        sys::Descriptor target(sys::openat(targetDirectory, targetName, O_WRONLY | O_CREAT | O_EXCL, mode));
        if (!target)
            return std::nullopt;
        const CopyFailure failure = qb::files::copyContent(source.get(), target.get(), status);
        if (failure != CopyFailure::none)
            return failure;
        return giveMode(target.get(), status.st_mode) && target.close() == 0 ? CopyFailure::none
                                                                             : CopyFailure::writing;
    }

    // Spares most files of a directory the call: when one that was created with its own mode has just that,
    // so have the others of this mode.
    bool giveMode(int target, mode_t sourceMode) {
        const mode_t mode = sourceMode & qb::files::kPermissionBits;
        if (mode == provenMode_)
            return true;
        struct stat status;
        if (mode == qb::files::creationMode(sourceMode) && sys::fstat(target, &status) == 0 &&
            (status.st_mode & qb::files::kPermissionBits) == mode) {
            provenMode_ = mode;
            return true;
        }
        return sys::fchmod(target, mode) == 0;
    }

    std::deque<Level> levels_;        // whose elements stay where they are when others come
    std::optional<std::string> root_; // links into it stay links
    std::size_t levelsAtRoot_ = 0;    // when the root was set; back at them it is over
    std::optional<mode_t> provenMode_;
};

bool arePaths(const char *source, const char *target) {
    if (source && target)
        return true;
    errno = EFAULT;
    raiseSystemError(__LINE__, qb::kErrorCannotStat, source ? target : source);
    return false;
}

} // namespace

void OSFilePath::copyPath(NSString *source, NSString *toPath, BOOL renameSource) {
    for (NSString *path : {source, toPath}) {
        if (!qb::files::systemPath(path)) {
            raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
            return;
        }
    }
    _copyPath(source->cString(), toPath->cString(), renameSource);
}

void _copyPath(const char *source, const char *target, BOOL targetIsNewName) {
    if (arePaths(source, target))
        TreeCopy().copyPath(source, target, targetIsNewName);
}

void _copyFile(const char *source, const char *targetDir, const char *name) {
    if (!arePaths(source, targetDir))
        return;
    if (!name)
        name = _basename(source);
    if (!checkName(name))
        return;
    struct stat status;
    if (sys::stat(source, &status) == 0)
        qb::files::copyFile(source, status, join(targetDir, name));
    else if (errno == ENOENT)
        qb::raiseError(kFile, __LINE__, qb::kErrorFileMissing, source);
    else
        raiseSystemError(__LINE__, qb::kErrorCannotStat, source);
}

void _copyDir(const char *source, const char *targetDir, const char *name) {
    if (!arePaths(source, targetDir))
        return;
    if (!name)
        name = _basename(source);
    if (checkName(name))
        TreeCopy().copyDirectory(source, join(targetDir, name));
}

void _copyLink(const char *source, const char *targetDir, const char *name) {
    std::string text;
    if (!arePaths(source, targetDir) || !qb::files::linkText(source, text))
        return;
    // No tree is being copied that the link could point into.
    const std::string resolved = resolve(source, text);
    if (name)
        TreeCopy().copyPath(resolved, join(targetDir, name), /*isNewName=*/true);
    else
        TreeCopy().copyPath(resolved, targetDir, /*isNewName=*/false);
}
