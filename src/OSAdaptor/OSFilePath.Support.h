// What the sources of OSFilePath share.
#ifndef QBFOUNDATION_OSADAPTOR_OSFILEPATH_SUPPORT_H
#define QBFOUNDATION_OSADAPTOR_OSFILEPATH_SUPPORT_H

#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>

#include "System/Files.h"
#include "System/Memory.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

class NSString;

namespace qb::files {

inline constexpr const char *kFile = "src/OSAdaptor/OSFilePath";
inline constexpr char kSeparator = '/';

/// How much of a file is held in memory at a time.
inline constexpr std::size_t kBlockSize = 131072;

// --- Path text ---

/// Simplifies in place; returns the new length, never more than `length`.
std::size_t simplify(char *path, std::size_t length);
/// Returns the simplified path.
std::string simplified(std::string path);
/// Returns "directory/name"; the name alone when the directory is empty, "/name" in the root.
std::string join(std::string_view directory, std::string_view name);
/// Returns the text in front of the last separator: "/" for a name in the root, empty without a separator.
std::string_view directoryOf(std::string_view path);
/// As `directoryOf`, for a path that may end in separators.
std::string_view parentOf(std::string_view path);
/// Returns the text behind the last separator of a path that may end in separators.
std::string_view lastComponentOf(std::string_view path);

// --- Memory ---

struct Release {
    void operator()(char *memory) const { sys::release(memory); }
};
using Buffer = std::unique_ptr<char, Release>;

/// Returns new memory; null, and 100156 raised, when there is none.
inline char *allocate(std::size_t size) {
    return static_cast<char *>(_malloc(size));
}

// --- Traces ---

/// Whether traces of files are written that want a debug level above `level`.
inline bool isTracing(int level) {
    return qb::isDebugChannelActive(DEBUG_CHANNEL_FILEIO) && debug > level;
}

/// Writes a trace line, if it wants no more than the debug level: the source's place, then the message.
template <class... V>
void trace(int level, int line, const char *format, const V &...values) {
    if (isTracing(level)) [[unlikely]]
        qb::trace(DEBUG_CHANNEL_FILEIO, format, kFile, line, values...);
}

// --- Names for the system ---

/// Returns the path as a C string; null, with errno set, for nil (EFAULT) and with a NUL byte in it (EINVAL).
const char *systemPath(NSString *path);
/// Returns the path as an error's value; "<null>" for null.
const char *shown(const char *path);
const char *shown(NSString *path);
/// Raises with the path and the text of errno.
void raiseSystemError(int line, int error, const char *path);
void raiseSystemError(int line, int error, NSString *path);

// --- Steps of several operations ---

/// Creates each missing directory. Returns false when an error is pending.
bool makeDirectories(const char *path);
/// Does what `renamePath:to:` does. Returns false with 100202 raised.
bool rename(NSString *source, NSString *to);
/// Reads the text of what must be a link. Returns false with 100194, 100222 or 100023 raised.
bool linkText(const char *path, std::string &text);
/// Reads a link's text. Returns false, and 100023 raised, after a failure.
bool readLink(const char *path, std::string &text);

/// Identifies a file, whatever its name.
struct Identity {
    Identity() = default;
    explicit Identity(const struct stat &status) : device(status.st_dev), number(status.st_ino) {}
    bool operator==(const Identity &) const = default;
    bool operator<(const Identity &other) const {
        return std::pair(device, number) < std::pair(other.device, other.number);
    }

    dev_t device = 0;
    ino_t number = 0;
};

/// Names of a directory's entries.
class EntryNames {
public:
    static bool isSelfOrParent(std::string_view name) { return name == "." || name == ".."; }

    void add(std::string_view name) { names_.append(name).push_back('\0'); }
    void add(const EntryNames &others) { names_.append(others.names_); }
    bool isEmpty() const { return names_.empty(); }
    /// Returns the next name; null behind the last.
    const char *next();

private:
    std::string names_; // each with a NUL behind it
    std::size_t position_ = 0;
};

/// Owns an open directory.
struct CloseDirectory {
    void operator()(DIR *directory) const;
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

} // namespace qb::files

#endif
