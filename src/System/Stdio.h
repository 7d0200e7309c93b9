// C streams. The library has one thread, so nothing here takes the stream's lock.
//
// A full disk shows at the latest in `fflush` or `fclose`. Reading and writing are repeated after a signal
// and lose nothing. Writing of wide characters, and on streams without a descriptor, can't be: the C library
// drops what it had buffered when a write fails, so an interruption, possible only on pipes, sockets and
// terminals and under handlers without the restart flag, is an error like any other there.
#ifndef QBFOUNDATION_SYSTEM_STDIO_H
#define QBFOUNDATION_SYSTEM_STDIO_H

#include <cstddef>
#include <cstdio>
#include <sys/types.h>

namespace qb::sys {

/// Opens as `open` does, with its close-on-exec; a null `mode` is EINVAL.
std::FILE *fopen(const char *path, const char *mode) noexcept;
/// Makes a stream that owns `descriptor`; after null the descriptor is still the caller's.
std::FILE *fdopen(int descriptor, const char *mode) noexcept;
/// Opens `path` in place of a standard stream's file, on the same descriptor, for programs started to
/// inherit. After null the stream is closed.
std::FILE *freopen(const char *path, const char *mode, std::FILE *file) noexcept;
/// Writes out and closes; EOF when either failed, other than by an interruption of the closing. The stream is
/// gone in any case.
int fclose(std::FILE *file) noexcept;

/// Reads whole items; fewer at the end of the file, with errno 0, or after an error (`ferror`).
std::size_t fread(void *buffer, std::size_t size, std::size_t count, std::FILE *file) noexcept;
/// Writes whole items; fewer after an error, where a part may have been written.
std::size_t fwrite(const void *buffer, std::size_t size, std::size_t count, std::FILE *file) noexcept;
/// Writes out what is buffered (null: of all streams).
int fflush(std::FILE *file) noexcept;
/// Reads up to and including a line feed, at most `size` - 1 bytes, and adds a NUL; embedded NULs count.
///
/// Returns how many bytes were read: 0 at the end (errno 0) or after an error (`ferror`).
std::size_t readLine(char *buffer, std::size_t size, std::FILE *file) noexcept;
/// `readLine` that answers `buffer`, or null when nothing was read.
char *fgets(char *buffer, std::size_t size, std::FILE *file) noexcept;
/// Reads one byte, 0..255, or EOF at the end (errno 0) and after an error.
int fgetc(std::FILE *file) noexcept;
/// Writes the bytes at once, behind what the stream has buffered. `ferror` tells of a failure.
void print(const void *bytes, std::size_t length, std::FILE *file) noexcept;

/// Moves the position; -1 after an error.
int fseeko(std::FILE *file, off_t offset, int whence) noexcept;
/// Moves to the start, and forgets end and errors; unlike the C function it answers -1 when it can't move.
int rewind(std::FILE *file) noexcept;
/// Returns whether reading has met the end.
bool feof(std::FILE *file) noexcept;
/// Returns whether a call has failed on this stream.
bool ferror(std::FILE *file) noexcept;
/// Forgets end and errors.
void clearerr(std::FILE *file) noexcept;
/// Lets the stream write at once, before anything was written.
void setUnbuffered(std::FILE *file) noexcept;
/// Returns the stream's descriptor.
int fileno(std::FILE *file) noexcept;

} // namespace qb::sys

#endif
