#include <QBFoundation/QBFileInputStream.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSFilePath.Support.h"
#include "System/Files.h"
#include "System/Memory.h"
#include "Text/Scan.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace sys = qb::sys;

namespace {
constexpr const char *kFile = "src/QBFileInputStream";

constexpr int kLineOfExistence = 78;
constexpr int kLineOfOpening = 86;
constexpr int kLineOfReading = 123;
constexpr int kLineOfReadingLine = 171;

// Small enough to stay in the processor's cache, large enough that system calls don't count.
constexpr std::uint32_t kWindowLength = 65536;
// A read of this length costs more by way of the window than a system call of its own.
constexpr std::uint32_t kLongRead = 16384;
constexpr std::ptrdiff_t kLongestLine = 999;

// Reads until at least `least` bytes are there, as a pipe or a terminal brings them. Returns how many are;
// fewer at the end, with errno 0, and after an error.
std::uint32_t readAtLeast(int descriptor, char *buffer, std::uint32_t least, std::uint32_t most) {
    std::uint32_t done = 0;
    while (done < least) {
        const ssize_t count = sys::read(descriptor, buffer + done, most - done);
        if (count == 0)
            errno = 0;
        if (count <= 0)
            break;
        done += static_cast<std::uint32_t>(count);
    }
    return done;
}

// Whether those bytes of a file are all that one line may hold.
bool isWholeLine(std::string_view bytes) {
    return bytes.size() == kLongestLine || (!bytes.empty() && bytes.back() == '\n');
}

/// A line as it stands in a file, and what of it is its text.
struct Line {
    std::string_view bytes, text;
};

// Returns the line that begins at `start`, up to `limit` when its end is not there.
Line lineAt(const char *start, const char *limit) {
    const char *const stop = qb::text::findLineStop(start, limit);
    if (stop != start && stop != limit && *stop == '\n')
        return {{start, stop + 1}, {start, stop}};
    const char *const lineFeed = qb::text::findByte(stop, limit, '\n');
    const char *const end = lineFeed == limit ? limit : lineFeed + 1;
    // The text ends at a NUL and at the first line end behind another character.
    const auto isLineEnd = [](char byte) { return byte == '\r' || byte == '\n'; };
    const char *const first = std::find_if_not(start, end, isLineEnd);
    return {{start, end}, {start, qb::text::findLineStop(first, end)}};
}

} // namespace

Class *QBFileInputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithFile:">(&QBFileInputStream::setUpWithFile),
        qb::initialiser<"initWithFile:">(&QBFileInputStream::setUpWithFile),
        qb::method<"filename">(&QBFileInputStream::filename),
        qb::method<"setIsBinary:">(&QBFileInputStream::setIsBinary),
        qb::method<"readLine">(&QBFileInputStream::readLine),
    };
    static Class *const self = new Class("QBFileInputStream", QBInputStreamWithKnownLength::cls(), methods,
                                         qb::construct<QBFileInputStream>);
    return self;
}

QBFileInputStream::~QBFileInputStream() {
    QBFileInputStream::close();
}

BOOL QBFileInputStream::setUpWithFile(NSString *file) {
    OSFileInfo info;
    OSFilePath::fileInfo(&info, file);
    if (qb::isErrorPending())
        return NO;
    if (!info.exists) {
        qb::raiseError(kFile, kLineOfExistence, qb::kErrorFileMissing, qb::files::shown(file));
        return NO;
    }
    bytesRemaining_ = fileSize_ = static_cast<std::uint32_t>(info.size);
    descriptor_ = sys::open(file->cString(), O_RDONLY);
    if (descriptor_ < 0) {
        qb::raiseError(kFile, kLineOfOpening, qb::kErrorCannotRead, file->cString(), std::strerror(errno));
        return NO;
    }
    filename_ = file->copy(); // the caller may change it
    window_ = static_cast<char *>(sys::allocate(kWindowLength));
    if (!window_)
        qb::raiseError(kFile, __LINE__, qb::kErrorOutOfMemory);
    emptyWindow();
    isDirect_ = typeid(*this) == typeid(QBFileInputStream);
    return window_ != nullptr;
}

void QBFileInputStream::close() {
    if (descriptor_ >= 0)
        sys::close(std::exchange(descriptor_, -1));
    sys::release(std::exchange(window_, nullptr));
    emptyWindow();
    QBInputStreamWithKnownLength::close();
}

void QBFileInputStream::reset() {
    if (descriptor_ < 0)
        return;
    if (sys::lseek(descriptor_, 0, SEEK_SET) == 0)
        emptyWindow(); // of a pipe it has what can't be read again
    bytesRemaining_ = fileSize_;
}

void QBFileInputStream::emptyWindow() {
    next_ = directEnd_ = end_ = filled_ = window_;
}

// --- Bytes ---

std::int32_t QBFileInputStream::readByteByBuffer() {
    signed char byte = 0;
    return _readBuffer(&byte, 1) < 0 ? -1 : byte;
}

std::int32_t QBFileInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    if (descriptor_ < 0)
        return raiseReadError(kLineOfReading, EBADF);
    const std::uint32_t most = std::min<std::uint32_t>(length, INT32_MAX);
    const auto ready = std::min(most, static_cast<std::uint32_t>(end_ - next_));
    const std::uint32_t rest = std::min(most - ready, bytesRemaining_);
    if (ready + rest == 0)
        return -1;
    std::memcpy(buffer, next_, ready);
    next_ += ready;
    if (rest > 0 && !fetch(static_cast<char *>(buffer) + ready, rest))
        return raiseReadError(kLineOfReading, errno);
    return static_cast<std::int32_t>(ready + rest);
}

// Reads exactly `length` of the remaining bytes, the window being empty. Returns false, with errno set, when
// the file doesn't have them; they count as read.
bool QBFileInputStream::fetch(char *buffer, std::uint32_t length) {
    emptyWindow();
    if (length >= kLongRead) {
        bytesRemaining_ -= length;
        return readAtLeast(descriptor_, buffer, length, length) == length;
    }
    const std::uint32_t wanted = std::min(kWindowLength, bytesRemaining_);
    const std::uint32_t got = readAtLeast(descriptor_, window_, length, wanted);
    bytesRemaining_ -= std::max(got, length);
    if (got < length)
        return false;
    std::memcpy(buffer, window_, length);
    next_ = window_ + length;
    end_ = filled_ = window_ + got;
    allowDirectReads();
    return true;
}

// A file that ends too early has no error of its own.
std::int32_t QBFileInputStream::raiseReadError(int line, int error) {
    qb::raiseError(kFile, line, qb::kErrorCannotRead, qb::files::shown(filename_),
                   std::strerror(error ? error : EIO));
    return 0;
}

// --- Lines ---

NSString *QBFileInputStream::readLine() {
    if (descriptor_ < 0) {
        raiseReadError(kLineOfReadingLine, EBADF);
        return nullptr;
    }
    const auto lineInWindow = [this] {
        return lineAt(next_, next_ + std::min(filled_ - next_, kLongestLine));
    };
    int error = 0;
    Line line = lineInWindow();
    for (bool goesOn = true; goesOn && !isWholeLine(line.bytes);) {
        goesOn = fetchForLine(error);
        line = lineInWindow(); // the fetch has moved it, also at the end of the file
    }
    NSString *const text = line.bytes.empty() ? nullptr : NSString::stringWith(line.text);
    next_ += line.bytes.size();
    end_ = std::max(end_, next_);
    allowDirectReads();
    if (error != 0)
        raiseReadError(kLineOfReadingLine, error);
    return text;
}

// Puts more of the file behind what the window still holds. Returns false at the end and after an error.
bool QBFileInputStream::fetchForLine(int &error) {
    const auto kept = static_cast<std::uint32_t>(filled_ - next_);
    std::memmove(window_, next_, kept);
    end_ -= next_ - window_;
    filled_ = window_ + kept;
    next_ = window_;
    const std::uint32_t room = kWindowLength - kept;
    const std::uint32_t wanted = bytesRemaining_ > 0 ? std::min(room, bytesRemaining_) : room;
    const std::uint32_t got = readAtLeast(descriptor_, filled_, 1, wanted);
    filled_ += got;
    if (bytesRemaining_ > 0) {
        bytesRemaining_ -= got;
        end_ = filled_;
    }
    allowDirectReads();
    if (got == 0)
        error = errno;
    return got > 0;
}
