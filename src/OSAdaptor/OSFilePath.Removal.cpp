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
        if (levels_.empty() && !removeLinks())
            return false;
        EntryNames names;
        if (!forEachEntry([&](const dirent &entry) { names.add(entry.d_name); }))
            return false;
        levels_.push_back({path_.size(), identity, std::move(names)});
        return true;
    }

    // Calls visit(entry) for what stands in the directory at `path_`. Returns false with an error raised.
    template <class Visit>
    bool forEachEntry(Visit visit) {
        const Directory directory(sys::opendir(path_.c_str()));
        if (!directory)
            return fails(__LINE__, qb::kErrorCannotRemove);
        while (const dirent *entry = sys::readdir(directory.get()))
            if (!EntryNames::isSelfOrParent(entry->d_name))
                visit(*entry);
        return errno == 0 || fails(__LINE__, qb::kErrorCannotReadDirectory);
    }

    // Removes the links below `path_` that lead to something other than a directory. A link that outlives
    // what it points to counts as missing, so that it would stay: all are asked before the first one goes.
    bool removeLinks() {
        const std::string top = path_;
        std::vector<std::string> links, directories = {top};
        const auto sort = [&](const dirent &entry) {
            std::string name = path_ + qb::files::kSeparator + entry.d_name;
            if (const unsigned char type = typeOf(name, entry); type == DT_DIR)
                directories.push_back(std::move(name));
            else if (type == DT_LNK && leadsToAFile(name))
                links.push_back(std::move(name));
        };
        while (!directories.empty()) {
            path_ = std::exchange(directories.back(), {});
            directories.pop_back();
            if (!forEachEntry(sort))
                return false;
        }
        for (std::string &link : links) {
            path_ = std::move(link);
            if (!succeeds(sys::unlink(path_.c_str())))
                return false;
        }
        path_ = top;
        return true;
    }

    // Some file systems leave it to us to ask.
    static unsigned char typeOf(const std::string &path, const dirent &entry) {
        struct stat status;
        if (entry.d_type != DT_UNKNOWN || sys::lstat(path.c_str(), &status) != 0)
            return entry.d_type;
        return static_cast<unsigned char>(IFTODT(status.st_mode));
    }

    static bool leadsToAFile(const std::string &link) {
        struct stat status;
        return sys::stat(link.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
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
