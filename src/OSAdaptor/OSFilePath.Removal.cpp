// Removal of files and trees.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSFilePath.Support.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace {

using qb::files::Directory;
using qb::files::EntryNames;
using qb::files::Identity;
using qb::files::raiseSystemError;
namespace sys = qb::sys;

/// A walk that removes what it meets, without a directory open across its steps and with a stack of its own,
/// so that depth costs neither descriptors nor C stack.
class Removal {
public:
    explicit Removal(const char *path) : path_(path) {}

    void run() {
        bool goesOn = removeEntry();
        while (goesOn && !qb::isErrorPending() && !levels_.empty()) {
            Level &level = levels_.back();
            path_.resize(level.pathLength);
            if (const char *const name = level.rest.next()) {
                path_.append(1, qb::files::kSeparator).append(name);
                goesOn = removeEntry();
            } else {
                levels_.pop_back();
                goesOn = succeeds(sys::rmdir(path_.c_str()));
            }
        }
    }

private:
    struct Level {
        std::size_t pathLength;
        Identity identity;
        EntryNames rest;
    };

    // Removes what stands at `path_`, or enters it. Returns false with an error raised.
    bool removeEntry() {
        struct stat status;
        const bool exists = sys::stat(path_.c_str(), &status) == 0;
        if (!exists && errno != ENOENT)
            return fails(__LINE__, qb::kErrorCannotStat);
        trace(__LINE__, "file '%s' exists: %d", path_.c_str(), exists ? 1 : 0);
        if (!exists)
            return true;
        trace(__LINE__, "file is directory: %d", S_ISDIR(status.st_mode) ? 1 : 0);
        return S_ISDIR(status.st_mode) ? enter(Identity(status)) : succeeds(sys::unlink(path_.c_str()));
    }

    bool enter(Identity identity) {
        const auto isIt = [&](const Level &level) { return level.identity == identity; };
        if (std::any_of(levels_.begin(), levels_.end(), isIt)) {
            errno = ELOOP; // a link leads up again
            return fails(__LINE__, qb::kErrorCannotStat);
        }
        const Directory directory(sys::opendir(path_.c_str()));
        if (!directory)
            return fails(__LINE__, qb::kErrorCannotRemove);
        // A link that outlives what it points to counts as missing, so that it would stay: links go first,
        // and what lies deeper goes before what it may point up to.
        EntryNames links, directories, others;
        while (const dirent *entry = sys::readdir(directory.get())) {
            if (EntryNames::isSelfOrParent(entry->d_name))
                continue;
            const unsigned char type = typeOf(*entry);
            (type == DT_LNK ? links : type == DT_DIR ? directories : others).add(entry->d_name);
        }
        if (errno != 0)
            return fails(__LINE__, qb::kErrorCannotReadDirectory);
        Level level{path_.size(), identity, std::move(links)};
        level.rest.add(directories);
        level.rest.add(others);
        levels_.push_back(std::move(level));
        return true;
    }

    // Some file systems leave it to us to ask.
    unsigned char typeOf(const dirent &entry) const {
        struct stat status;
        if (entry.d_type != DT_UNKNOWN ||
            sys::lstat((path_ + qb::files::kSeparator + entry.d_name).c_str(), &status) != 0)
            return entry.d_type;
        return static_cast<unsigned char>(IFTODT(status.st_mode));
    }

    template <class... V>
    static void trace(int line, const char *format, const V &...values) {
        if (qb::files::isTracing(2)) [[unlikely]]
            qb::trace(DEBUG_CHANNEL_FILEIO, {qb::files::kFile, line, &OSFilePath::cls, "_removePath:"},
                      format, values...);
    }

    bool succeeds(int outcome) { return outcome == 0 || fails(__LINE__, qb::kErrorCannotRemove); }

    bool fails(int line, int error) {
        raiseSystemError(line, error, path_.c_str());
        return false;
    }

    std::string path_;
    std::vector<Level> levels_;
};

} // namespace

void OSFilePath::_removePath(const char *path) {
    if (path) {
        Removal(path).run();
    } else {
        errno = EFAULT;
        raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
    }
}

void OSFilePath::removePath(NSString *path) {
    const qb::SavedErrors earlier;
    if (const char *const name = qb::files::systemPath(path))
        _removePath(name);
    else
        raiseSystemError(__LINE__, qb::kErrorCannotStat, path);
}

void OSFilePath::removePath(NSString *path, NSString *atomicallyWithTmpDir) {
    struct stat status;
    const char *const name = qb::files::systemPath(path);
    if (!path || (name && sys::stat(name, &status) != 0 && errno == ENOENT))
        return;
    const std::string_view directory = atomicallyWithTmpDir ? atomicallyWithTmpDir->view() : "";
    NSString *const moved =
        NSString::stringWith(qb::files::join(directory, qb::files::lastComponentOf(path->view())));
    renamePath(path, moved);
    if (!qb::isErrorPending())
        removePath(moved);
}
