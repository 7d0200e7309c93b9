#include "Library.h"

#include "Attempt.h"
#include "Descriptor.h"
#include "Files.h"

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

namespace qb::sys {

namespace {

template <class Header>
bool readAt(int file, std::uint64_t place, Header &header) {
    const auto offset = static_cast<off64_t>(place);
    return ::lseek64(file, offset, SEEK_SET) == offset &&
           readAll(file, &header, sizeof header) == static_cast<ssize_t>(sizeof header);
}

// The size that its parts must lie in. Where somebody took the table of sections off, and with it the zeros
// in front of it, the rest of the last page is zeros.
std::uint64_t sizeForParts(const struct stat &status, const ElfW(Ehdr) & header) {
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    return header.e_shoff != 0 ? size : (size + page - 1) / page * page;
}

// Whether the C library may wait for what comes from there, as from a pipe or a terminal.
bool mayWait(const char *path) noexcept {
    struct stat status;
    return sys::stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

// Whether the file is the beginning of a library only, as one that is just being copied is: the C library
// maps what is not there, and the process ends at the first touch.
bool isCutOff(const char *path) noexcept {
    const Descriptor file(sys::open(path, O_RDONLY | O_NONBLOCK));
    struct stat status;
    ElfW(Ehdr) header;
    if (!file || sys::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        !readAt(file.get(), 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_phentsize != sizeof(ElfW(Phdr)))
        return false;
    const std::uint64_t size = sizeForParts(status, header);
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) part;
        if (!readAt(file.get(), header.e_phoff + i * sizeof part, part) ||
            (part.p_type == PT_LOAD && part.p_filesz != 0 &&
             (part.p_offset > size || part.p_filesz > size - part.p_offset)))
            return true;
    }
    return false;
}

void *refuse() noexcept {
    ::dlerror(); // of an earlier one
    errno = ENOEXEC;
    return nullptr;
}

} // namespace

void *dlopen(const char *path, int flags) noexcept {
    const bool isFile = path && std::strchr(path, '/');
    if (isFile && mayWait(path))
        return refuse();
    if (isFile && isCutOff(path)) {
        void *const loaded = ::dlopen(path, flags | RTLD_NOLOAD); // it may have been whole once
        return loaded ? loaded : refuse();
    }
    return attempt(Call::dlopen, [&] { return ::dlopen(path, flags); });
}

const char *dlerror() noexcept {
    const int error = errno;
    const char *text = ::dlerror();
    return text ? text : std::strerror(error);
}

} // namespace qb::sys
