#include "SiteFile.h"

#include "../ContentType.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace publish::serving {

namespace {

// A descriptor that is closed at the end, unless a stream has taken it over.
class OpenFile {
public:
    explicit OpenFile(const std::string &path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
    ~OpenFile() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    bool readInfo(struct stat &info) const { return isOpen() && ::fstat(descriptor_, &info) == 0; }

    // Where the file is that was opened, whatever stands at its path by now; empty when that is unknown.
    std::string realPath() const {
        char path[PATH_MAX];
        const std::string link = "/proc/self/fd/" + std::to_string(descriptor_);
        const ssize_t length = ::readlink(link.c_str(), path, sizeof path);
        return length > 0 && length < static_cast<ssize_t>(sizeof path)
                   ? std::string(path, static_cast<std::size_t>(length))
                   : std::string();
    }

    QBInputStream *takeStream() {
        std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(::fdopen(descriptor_, "rb"), std::fclose);
        if (!file)
            return nullptr;
        descriptor_ = -1;
        QBInputStream *const stream = QBFilePointerInputStream::streamWithFilePointer(file.get());
        static_cast<void>(file.release());
        return stream;
    }

private:
    int descriptor_;
};

// Whether it says nothing about the file.
bool isOfTheSystem(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO || error == EINTR;
}

// Whether each component of a relative path has a name that does not begin with a dot.
bool isPublic(std::string_view path) {
    for (;;) {
        const std::string_view component = path.substr(0, path.find('/'));
        if (component.empty() || component.front() == '.')
            return false;
        if (component.size() == path.size())
            return true;
        path.remove_prefix(component.size() + 1);
    }
}

bool isPublicPlace(std::string_view place, std::string_view root) {
    return place.starts_with(root) && isPublic(place.substr(root.size()));
}

} // namespace

std::string realDirectory(NSString *path) {
    char *const resolved = ::realpath(path->cString(), nullptr);
    std::string directory = resolved ? resolved : "";
    std::free(resolved);
    return directory.empty() || directory.ends_with('/') ? directory : directory + '/';
}

SiteFile openSiteFile(const std::string &root, NSString *path) {
    SiteFile found;
    const std::string_view text = path->view();
    if (text.find('\0') != std::string_view::npos)
        return found;
    const bool isDirectory = text.empty() || text.ends_with('/');
    const std::string relative = std::string(text) + (isDirectory ? "index.html" : "");
    if (!isPublic(relative))
        return found;

    errno = 0;
    OpenFile file(root + relative);
    struct stat info {};
    const std::string place = file.readInfo(info) ? file.realPath() : std::string();
    if (place.empty() && isOfTheSystem(errno))
        found.status = Status::serviceUnavailable;
    if (!isPublicPlace(place, root))
        return found;
    if (S_ISDIR(info.st_mode) && !isDirectory)
        found.status = Status::movedPermanently;
    if (!S_ISREG(info.st_mode))
        return found;
    found.content = file.takeStream();
    found.status = found.content ? Status::ok : Status::serviceUnavailable;
    if (!found.content)
        return found;
    found.type = contentTypeOf(NSString::stringWith(relative));
    found.size = static_cast<std::uint64_t>(info.st_size);
    found.modified = info.st_mtime;
    return found;
}

} // namespace publish::serving
