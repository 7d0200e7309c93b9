#include "Stdio.h"

#include "Attempt.h"
#include "Descriptor.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <stdio_ext.h>

// How the C library goes over its streams; no header declares it any more.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's
extern "C" {
std::FILE *_IO_iter_begin();
std::FILE *_IO_iter_end();
std::FILE *_IO_iter_next(std::FILE *place);
std::FILE *_IO_iter_file(std::FILE *place);
}
// NOLINTEND(bugprone-reserved-identifier): as above

namespace qb::sys {

namespace {

// The stream on which a fault last struck: its own error flag can't be set from outside.
std::FILE *faultedStream = nullptr;

bool failsOn(std::FILE *file, Call call, std::size_t *length = nullptr) {
    if (!fails(call, length))
        return false;
    faultedStream = file;
    return true;
}

void forget(std::FILE *file) {
    if (faultedStream == file)
        faultedStream = nullptr;
}

// Of such a stream the C library keeps nothing, and so loses nothing.
bool isUnbuffered(std::FILE *file) {
    return ::__fbufsize(file) <= 1;
}

// Whether a signal has cut the last transfer; the stream is then ready to go on.
bool interrupted(std::FILE *file) {
    if (errno != EINTR || (!::ferror_unlocked(file) && faultedStream != file))
        return false;
    sys::clearerr(file);
    errno = 0;
    return true;
}

// Whether what is written to the stream are bytes for a descriptor.
bool isPlain(std::FILE *file) {
    return ::__fwritable(file) && std::fwide(file, 0) <= 0 && ::fileno(file) >= 0;
}

// Whether there is nothing in the stream's buffer but what is to be written.
bool isWriting(std::FILE *file) {
    const char *const start = file->_IO_buf_base;
    return ::__fwriting(file) && start && file->_IO_write_base == start && file->_IO_read_end == start;
}

bool isPlainSink(std::FILE *file) {
    return isWriting(file) && isPlain(file);
}

// Turns a plain stream, which may have been read, to writing. The descriptor is moved back to the stream's
// place: behind it is what was read ahead.
bool startWriting(std::FILE *file) {
    // A byte that was pushed back has memory of its own, which a seek gives back, also one that fails.
    if (file->_IO_save_base)
        ::fseeko(file, 0, SEEK_CUR);
    if (!file->_IO_save_base && ::fflush_unlocked(file) == 0 && file->_IO_read_ptr == file->_IO_read_end) {
        file->_IO_read_base = file->_IO_read_ptr = file->_IO_read_end = file->_IO_buf_base;
        if (::__overflow(file, EOF) == 0)
            return true;
    }
    file->_flags |= _IO_ERR_SEEN; // with ESPIPE where there is no way back
    return false;
}

// Writes to the descriptor of a plain sink; returns whether all was written. The stream remembers a failure.
bool writePast(std::FILE *file, const char *bytes, std::size_t length, std::size_t &done) {
    done = writeMost(::fileno(file), bytes, length);
    file->_offset = -1; // moved behind the stream's back: it asks when it needs to know
    if (done < length)
        file->_flags |= _IO_ERR_SEEN;
    return done == length;
}

// Writes what a plain sink has collected, whatever signals come: the C library drops it when a call is
// interrupted, and of a stream that is flushed with each line it doesn't even tell that a write has failed.
bool writeCollected(std::FILE *file) {
    const std::size_t length = ::__fpending(file);
    std::size_t done = 0;
    const bool isWritten = length == 0 || writePast(file, file->_IO_write_base, length, done);
    ::__fpurge(file); // what can't be written is lost
    return isWritten;
}

int flushAll() {
    bool isWritten = true;
    for (std::FILE *at = ::_IO_iter_begin(); at != ::_IO_iter_end(); at = ::_IO_iter_next(at))
        if (std::FILE *const file = ::_IO_iter_file(at); isPlainSink(file))
            isWritten = writeCollected(file) && isWritten;
    return ::fflush_unlocked(nullptr) == 0 && isWritten ? 0 : EOF;
}

// How many of the bytes a plain sink writes at once: whole lines, and what its buffer has no room for.
std::size_t lengthAtOnce(std::FILE *file, const char *bytes, std::size_t length) {
    const std::size_t size = ::__fbufsize(file);
    const std::size_t room = size - std::min(size, ::__fpending(file));
    const auto *const lineEnd =
        ::__flbf(file) ? static_cast<const char *>(::memrchr(bytes, '\n', length)) : nullptr;
    const std::size_t lines = lineEnd ? static_cast<std::size_t>(lineEnd - bytes) + 1 : 0;
    return length - lines < (lines ? size : room) ? lines : length;
}

// Returns how many of the bytes were written or collected.
std::size_t putInto(std::FILE *file, const char *bytes, std::size_t length) {
    if (!isPlain(file))
        return ::fwrite_unlocked(bytes, 1, length, file);
    if (!isWriting(file) && !startWriting(file))
        return 0;
    const std::size_t atOnce = lengthAtOnce(file, bytes, length);
    std::size_t done = 0;
    if (atOnce > 0 && !(writeCollected(file) && writePast(file, bytes, atOnce, done)))
        return done;
    return done + ::fwrite_unlocked(bytes + done, 1, length - done, file);
}

// Such a stream stays a valid one when it is closed, but in some C libraries a seek there frees its buffer
// anew.
bool isClosedStandard(std::FILE *file) {
    return (file == stdin || file == stdout || file == stderr) && ::fileno(file) < 0; // with EBADF
}

// Bytes of `count` items; errno and SIZE_MAX when they are more than an address space holds.
std::size_t byteCount(std::size_t size, std::size_t count) {
    std::size_t total = 0;
    return __builtin_mul_overflow(size, count, &total) ? (errno = EOVERFLOW, SIZE_MAX) : total;
}

} // namespace

std::FILE *fopen(const char *path, const char *mode) noexcept {
    const int flags = openingFlags(mode);
    if (flags < 0 || fails(Call::fopen))
        return nullptr;
    Descriptor descriptor(openAtPlace(path, flags & ~O_TRUNC)); // the content stays until there is a stream
    std::FILE *const file = descriptor ? sys::fdopen(descriptor.get(), mode) : nullptr;
    if (file)
        static_cast<void>(descriptor.release());
    if (!file || !(flags & O_TRUNC) || makeEmpty(::fileno(file)) == 0)
        return file;
    const int error = errno;
    ::fclose(file);
    return errno = error, nullptr;
}

std::FILE *fdopen(int descriptor, const char *mode) noexcept {
    return attempt(Call::fdopen, [&] { return ::fdopen(descriptor, mode); });
}

std::FILE *freopen(const char *path, const char *mode, std::FILE *file) noexcept {
    forget(file);
    return attempt(Call::freopen, [&] { return ::freopen(path, mode, file); });
}

int fclose(std::FILE *file) noexcept {
    forget(file);
    const bool isWritten = !isPlainSink(file) || writeCollected(file);
    const bool isAllOut = isWritten && ::__fpending(file) == 0;
    const bool isClosed = ::fclose(file) == 0;
    if (!fails(Call::fclose) && isClosed)
        return isWritten ? 0 : EOF;
    return isAllOut && errno == EINTR ? 0 : EOF; // as for `close`
}

std::size_t fread(void *buffer, std::size_t size, std::size_t count, std::FILE *file) noexcept {
    const std::size_t length = byteCount(size, count);
    if (length == 0 || length == SIZE_MAX)
        return 0;
    errno = 0;
    std::size_t done = 0;
    do {
        std::size_t rest = length - done;
        if (!failsOn(file, Call::fread, &rest))
            done += ::fread_unlocked(static_cast<char *>(buffer) + done, 1, rest, file);
    } while (done < length && interrupted(file));
    return done / size;
}

std::size_t fwrite(const void *buffer, std::size_t size, std::size_t count, std::FILE *file) noexcept {
    const std::size_t length = byteCount(size, count);
    if (length == 0 || length == SIZE_MAX)
        return 0;
    std::size_t done = 0;
    do {
        std::size_t rest = length - done;
        if (!failsOn(file, Call::fwrite, &rest))
            done += putInto(file, static_cast<const char *>(buffer) + done, rest);
    } while (done < length && isUnbuffered(file) && interrupted(file));
    return done / size;
}

int fflush(std::FILE *file) noexcept {
    return attempt(Call::fflush, [&] {
        if (!file)
            return flushAll();
        const bool isWritten = !isPlainSink(file) || writeCollected(file);
        return isWritten ? ::fflush_unlocked(file) : EOF;
    });
}

std::size_t readLine(char *buffer, std::size_t size, std::FILE *file) noexcept {
    if (size == 0)
        return 0;
    errno = 0;
    while (failsOn(file, Call::fgets)) {
        if (!interrupted(file))
            return buffer[0] = '\0', 0;
    }
    std::size_t length = 0;
    while (length < size - 1) {
        const int byte = ::getc_unlocked(file);
        if (byte == EOF && interrupted(file))
            continue;
        if (byte == EOF)
            break;
        buffer[length++] = static_cast<char>(byte);
        if (byte == '\n')
            break;
    }
    buffer[length] = '\0';
    return length;
}

int fgetc(std::FILE *file) noexcept {
    errno = 0;
    int byte = EOF;
    do
        byte = failsOn(file, Call::fgetc) ? EOF : ::getc_unlocked(file);
    while (byte == EOF && interrupted(file));
    return byte;
}

void print(const void *bytes, std::size_t length, std::FILE *file) noexcept {
    sys::fwrite(bytes, 1, length, file);
    sys::fflush(file);
}

int fseeko(std::FILE *file, off_t offset, int whence) noexcept {
    if (isClosedStandard(file))
        return -1;
    return attempt(Call::fseeko, [&] { return ::fseeko(file, offset, whence); });
}

int rewind(std::FILE *file) noexcept {
    if (isClosedStandard(file))
        return -1;
    const int outcome = sys::fseeko(file, 0, SEEK_SET);
    sys::clearerr(file); // of a pipe too, whose next writer may have come
    return outcome;
}

bool ferror(std::FILE *file) noexcept {
    return ::ferror_unlocked(file) != 0 || (kFaultInjection && faultedStream == file);
}

void clearerr(std::FILE *file) noexcept {
    forget(file);
    ::clearerr_unlocked(file);
}

void setUnbuffered(std::FILE *file) noexcept {
    std::setvbuf(file, nullptr, _IONBF, 0);
}

int fileno(std::FILE *file) noexcept {
    return ::fileno(file);
}

} // namespace qb::sys
