// Removal of files and trees.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSFilePath.Support.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using qb::files::Directory;
using qb::files::EntryNames;
using qb::files::Identity;
using qb::files::raiseSystemError;
namespace sys = qb::sys;

bool fails(int line, int error, const std::string &path) {
    raiseSystemError(line, error, path.c_str());
    return false;
}

// Calls visit(entry) for what stands in the directory. Returns false with an error raised.
template <class Visit>
bool forEachEntry(const std::string &path, Visit visit) {
    const Directory directory(sys::opendir(path.c_str()));
    if (!directory)
        return fails(__LINE__, qb::kErrorCannotRemove, path);
    while (const dirent *entry = sys::readdir(directory.get()))
        if (!EntryNames::isSelfOrParent(entry->d_name))
            visit(*entry);
    return errno == 0 || fails(__LINE__, qb::kErrorCannotReadDirectory, path);
}

// Some file systems leave it to us to ask.
unsigned char typeOf(const std::string &directory, const dirent &entry) {
    struct stat status;
    if (entry.d_type != DT_UNKNOWN ||
        sys::lstat((directory + qb::files::kSeparator + entry.d_name).c_str(), &status) != 0)
        return entry.d_type;
    return static_cast<unsigned char>(IFTODT(status.st_mode));
}

/// Finds the links below directories that lead to something other than a directory. It does not look below
/// links.
class LinkSearch {
public:
    struct Found {
        std::string directory;
        EntryNames links;
    };

    bool hasLookedInto(Identity directory) const { return seen_.contains(directory); }
    /// Looks below a directory, for `found`. Returns false with an error raised.
    bool run(const std::string &path) {
        found_.clear();
        path_ = path;
        bool goesOn = enter();
        while (goesOn && !levels_.empty()) {
            Level &level = levels_.back();
            path_.resize(level.pathLength);
            if (const char *const name = level.directories.next()) {
                path_.append(1, qb::files::kSeparator).append(name);
                goesOn = enter();
            } else {
                levels_.pop_back();
            }
        }
        return goesOn;
    }

    std::vector<Found> &found() { return found_; }

private:
    struct Level {
        std::size_t pathLength;
        EntryNames directories;
    };

    // What has gone meanwhile, or can't be asked, is for the walk to tell.
    bool enter() {
        struct stat status;
        if (sys::stat(path_.c_str(), &status) != 0 || !seen_.insert(Identity(status)).second)
            return true;
        Level level{path_.size(), {}};
        EntryNames links;
        const auto sort = [&](const dirent &entry) {
            const unsigned char type = typeOf(path_, entry);
            if (type == DT_DIR)
                level.directories.add(entry.d_name);
            else if (type == DT_LNK && leadsToFile(entry))
                links.add(entry.d_name);
        };
        if (!forEachEntry(path_, sort))
            return false;
        if (!links.isEmpty())
            found_.push_back({path_, std::move(links)});
        levels_.push_back(std::move(level));
        return true;
    }

    bool leadsToFile(const dirent &link) const {
        struct stat status;
        return sys::stat((path_ + qb::files::kSeparator + link.d_name).c_str(), &status) == 0 &&
               !S_ISDIR(status.st_mode);
    }

    std::string path_;
    std::vector<Level> levels_;
    std::vector<Found> found_;
    std::set<Identity> seen_; // directories
};

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
            return fails(__LINE__, qb::kErrorCannotStat, path_);
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
            return fails(__LINE__, qb::kErrorCannotStat, path_);
        }
        if (!search_.hasLookedInto(identity) && !removeLinks())
            return false;
        // Links to directories go first, so that they still lead there.
        EntryNames links, others;
        const auto sort = [&](const dirent &entry) {
            (typeOf(path_, entry) == DT_LNK ? links : others).add(entry.d_name);
        };
        if (!forEachEntry(path_, sort))
            return false;
        links.add(others);
        levels_.push_back({path_.size(), identity, std::move(links)});
        return true;
    }

    // A link that outlives what it points to counts as missing, so that it would stay: all below the top, or
    // below the target of a link that the walk follows, go before anything else there. Returns false with an
    // error pending.
    bool removeLinks() {
        if (qb::isErrorPending() || !search_.run(path_))
            return false;
        const std::string top = path_;
        for (LinkSearch::Found &found : search_.found())
            while (const char *const name = found.links.next()) {
                path_ = found.directory + qb::files::kSeparator + name;
                trace(__LINE__, "file '%s' exists: %d", path_.c_str(), 1);
                trace(__LINE__, "file is directory: %d", 0);
                const bool isGone = sys::unlink(path_.c_str()) == 0 || errno == ENOENT;
                if (!succeeds(isGone ? 0 : -1) || qb::isErrorPending())
                    return false;
            }
        path_ = top;
        return true;
    }

    template <class... V>
    static void trace(int line, const char *format, const V &...values) {
        if (qb::files::isTracing(2)) [[unlikely]]
            qb::trace(DEBUG_CHANNEL_FILEIO, {qb::files::kFile, line, &OSFilePath::cls, "_removePath:"},
                      format, values...);
    }

    bool succeeds(int outcome) { return outcome == 0 || fails(__LINE__, qb::kErrorCannotRemove, path_); }

    std::string path_;
    std::vector<Level> levels_;
    LinkSearch search_;
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
    if (qb::files::rename(path, moved) && !qb::isErrorPending())
        removePath(moved);
}
