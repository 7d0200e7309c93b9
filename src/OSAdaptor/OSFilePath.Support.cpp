#include "OSFilePath.Support.h"

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace qb::files {

const char *systemPath(NSString *path) {
    if (path && path->view().find('\0') == std::string_view::npos)
        return path->cString();
    errno = path ? EINVAL : EFAULT;
    return nullptr;
}

const char *shown(const char *path) {
    return path ? path : "<null>";
}

const char *shown(NSString *path) {
    return shown(path ? path->cString() : nullptr);
}

void raiseSystemError(int line, int error, const char *path) {
    qb::raiseError(kFile, line, error, shown(path), std::strerror(errno));
}

void raiseSystemError(int line, int error, NSString *path) {
    raiseSystemError(line, error, shown(path));
}

bool makeDirectories(const char *path) {
    const std::size_t size = std::strlen(path) + 1;
    if (size == 1)
        return true;
    const Buffer buffer(allocate(size));
    if (!buffer)
        return false;
    std::memcpy(buffer.get(), path, size);
    for (char *end = buffer.get();;) {
        while (*end == kSeparator)
            ++end;
        if (!*end)
            return true;
        end += std::strcspn(end, "/");
        const char behind = std::exchange(*end, '\0');
        if (sys::mkdir(buffer.get(), 0777) != 0 && errno != EEXIST) {
            raiseSystemError(__LINE__, kErrorCannotMakeDirectory, buffer.get());
            return false;
        }
        *end = behind;
        if (qb::isErrorPending())
            return false;
    }
}

bool linkText(const char *path, std::string &text) {
    struct stat status;
    if (sys::lstat(path, &status) != 0) {
        raiseSystemError(__LINE__, kErrorCannotStat, path);
        return false;
    }
    if (S_ISLNK(status.st_mode))
        return readLink(path, text);
    qb::raiseError(kFile, __LINE__, kErrorNotALink, path);
    return false;
}

bool readLink(const char *path, std::string &text) {
    for (std::size_t size = 256;; size *= 2) {
        text.resize(size);
        const ssize_t length = sys::readlink(path, text.data(), size);
        if (length < 0) {
            raiseSystemError(__LINE__, kErrorCannotRead, path);
            return false;
        }
        if (static_cast<std::size_t>(length) < size) {
            text.resize(static_cast<std::size_t>(length));
            return true;
        }
    }
}

const char *EntryNames::next() {
    if (position_ == names_.size())
        return nullptr;
    const char *const name = names_.data() + position_;
    position_ += std::strlen(name) + 1;
    return name;
}

void CloseDirectory::operator()(DIR *directory) const {
    const int error = errno;
    sys::closedir(directory);
    errno = error;
}

} // namespace qb::files
