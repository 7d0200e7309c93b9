#include "Library.h"

#include "Attempt.h"
#include "Descriptor.h"
#include "Files.h"

#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <new>
#include <string>
#include <unistd.h>
#include <vector>

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

// Returns the file of a name without a slash in the directories that the system searches, or an empty text.
std::string searched(const char *name) {
    Dl_serinfo head;
    void *const program = ::dlopen(nullptr, RTLD_LAZY);
    if (!program || ::dlinfo(program, RTLD_DI_SERINFOSIZE, &head) != 0)
        return {};
    // In words, so that it is aligned.
    std::vector<std::uintptr_t> buffer(head.dls_size / sizeof(std::uintptr_t) + 1);
    auto *const list = reinterpret_cast<Dl_serinfo *>(buffer.data());
    *list = head;
    if (::dlinfo(program, RTLD_DI_SERINFO, list) != 0)
        return {};
    for (unsigned i = 0; i < head.dls_cnt; ++i) {
        std::string path = std::string(list->dls_serpath[i].dls_name) + '/' + name;
        struct stat status;
        if (sys::stat(path.c_str(), &status) == 0)
            return path;
    }
    return {};
}

// What `dlopen` will open, as far as that can be told before; null for what it knows by itself.
const char *fileOf(const char *path, std::string &place) noexcept {
    if (!path || std::strchr(path, '/'))
        return path;
    try {
        place = searched(path);
    } catch (const std::bad_alloc &) {
    }
    return place.empty() ? nullptr : place.c_str();
}

void *refuse() noexcept {
    ::dlerror(); // of an earlier one
    errno = ENOEXEC;
    return nullptr;
}

} // namespace

void *dlopen(const char *path, int flags) noexcept {
    std::string place;
    const char *const file = fileOf(path, place);
    if (file && mayWait(file))
        return refuse();
    if (file && isCutOff(file)) {
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
