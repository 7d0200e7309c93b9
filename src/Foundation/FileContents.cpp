#include "Foundation/FileContents.h"

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "System/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace qb {

namespace {

// Files of /proc state no size.
constexpr std::uint64_t kLeastRead = 4096;

int readToEnd(int descriptor, std::uint64_t statedSize, std::string &bytes) {
    std::size_t length = 0;
    for (;;) {
        // One byte more than stated, so that the end is noticed without a further read.
        const std::uint64_t wanted = std::max({statedSize + 1, length * std::uint64_t{2}, kLeastRead});
        if (wanted > std::min<std::uint64_t>(UINT32_MAX, bytes.max_size()))
            return EFBIG;
        bytes.resize(static_cast<std::size_t>(wanted));
        const ssize_t got = sys::readAll(descriptor, bytes.data() + length, bytes.size() - length);
        if (got < 0)
            return errno;
        length += static_cast<std::size_t>(got);
        if (length < bytes.size()) {
            bytes.resize(length);
            return 0;
        }
    }
}

} // namespace

int readFileContents(const char *path, std::string &bytes) {
    bytes.clear();
    const sys::Descriptor file(sys::open(path, O_RDONLY));
    struct stat info;
    if (!file || sys::fstat(file.get(), &info) != 0)
        return errno;
    if (S_ISDIR(info.st_mode))
        return EISDIR;
    const int error =
        readToEnd(file.get(), static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0)), bytes);
    if (error != 0)
        bytes.clear();
    return error;
}

bool readFileContentsOrRaise(NSString *path, std::string &bytes, const char *file, int line) {
    const bool isName = path->view().find('\0') == std::string_view::npos;
    const int error = isName ? readFileContents(path->cString(), bytes) : EINVAL;
    if (error == ENOENT)
        raiseError(file, line, kErrorFileMissing, path);
    else if (error != 0)
        raiseError(file, line, kErrorCannotRead, path, std::strerror(error));
    return error == 0;
}

} // namespace qb
