#include <QBFoundation/QBFileOutputStream.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/IdCreator.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSFilePath.Support.h"
#include "System/Descriptor.h"
#include "System/Memory.h"
#include "System/Process.h"
#include "System/Stdio.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <typeinfo>
#include <utility>

namespace sys = qb::sys;

namespace {
constexpr const char *kFile = "src/QBFileOutputStream";

constexpr int kLineOfOpening = 183;
constexpr int kLineOfWriting = 231;
constexpr int kLineOfWritingByte = 246;
constexpr int kLineOfClosing = 260;
constexpr int kLineOfFlushing = 285;
constexpr int kLineOfReopening = 303;

NSString *nameOfFileHandle() {
    return "<filehandle>"_ns;
}

NSString *parentOf(NSString *path) {
    return NSString::stringWith(qb::files::parentOf(path->view()));
}

void makeParent(NSString *path) {
    NSString *const parent = parentOf(path);
    if (parent->containsData() && !OSFilePath::fileExistsAtPath(parent))
        OSFilePath::makePath(parent);
}

std::FILE *openStream(sys::Descriptor descriptor) {
    std::FILE *const file = sys::fdopen(descriptor.get(), "wb");
    if (file)
        static_cast<void>(descriptor.release());
    return file;
}

// Whether the error is that of a path, which may be a link's, that leads to no file.
bool leadsNowhere(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

// Creates the file with the permissions of the one that it is to replace; never through a name that is taken.
std::FILE *createTemporary(const char *path, const char *target) {
    struct stat status;
    const bool replaces = sys::stat(target, &status) == 0;
    if (!replaces && !leadsNowhere(errno))
        return nullptr;
    const mode_t mode = replaces ? status.st_mode & 0777 : 0666;
    sys::Descriptor descriptor(sys::openExclusive(path, mode));
    if (!descriptor)
        return nullptr;
    const bool hasMode = !replaces || sys::fchmod(descriptor.get(), mode) == 0; // the umask not applied
    std::FILE *const file = hasMode ? openStream(std::move(descriptor)) : nullptr;
    if (!file) {
        const int error = errno;
        sys::unlink(path);
        errno = error;
    }
    return file;
}

} // namespace

Class *QBFileOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"write:toFile:atomically:", void(Class *, id, NSString *, BOOL)>(
            &QBFileOutputStream::writeToFile),
        qb::maker<"streamWithFile:">(&QBFileOutputStream::setUpWithFileInPlace),
        qb::maker<"streamWithFile:atomically:">(&QBFileOutputStream::setUpWithFile),
        qb::initialiser<"initWithFile:atomically:">(&QBFileOutputStream::setUpWithFile),
        qb::maker<"streamWithFilePointer:">(&QBFileOutputStream::setUpWithFilePointer),
        qb::initialiser<"initWithFilePointer:">(&QBFileOutputStream::setUpWithFilePointer),
        qb::maker<"streamForStdout">(&QBFileOutputStream::setUpForStdout),
        qb::maker<"streamForStderr">(&QBFileOutputStream::setUpForStderr),
        qb::method<"filename">(&QBFileOutputStream::filename),
        qb::method<"tmpFilename">(&QBFileOutputStream::tmpFilename),
        qb::method<"synchronizes">(&QBFileOutputStream::synchronizes),
        qb::method<"setSynchronizes:">(&QBFileOutputStream::setSynchronizes),
    };
    static Class *const self =
        new Class("QBFileOutputStream", QBOutputStream::cls(), methods, qb::construct<QBFileOutputStream>);
    return self;
}

void QBFileOutputStream::writeToFile(Class *asked, id object, NSString *file, BOOL atomically) {
    const Ref<NSObject> made = asked->construct();
    auto *const stream = static_cast<QBFileOutputStream *>(made.get());
    if (!stream->setUpWithFile(file, atomically))
        return;
    stream->writeObject(object);
    stream->hasFailed_ |= qb::isErrorPending(); // the object was not written whole
    stream->close();
}

QBFileOutputStream::~QBFileOutputStream() {
    // An exception that takes the stream along has cut its content somewhere.
    if (std::uncaught_exceptions() > exceptionsBefore_)
        hasFailed_ = true;
    try {
        QBFileOutputStream::close();
    } catch (...) { // a client's error handler may throw, which a destructor must not
    }
    closeWindow();
}

// --- Opening ---

QBFileOutputStream::QBFileOutputStream() noexcept : exceptionsBefore_(std::uncaught_exceptions()) {}

BOOL QBFileOutputStream::setUp() {
    throw InvalidUseOfMethodException("QBFileOutputStream init: must be made with a file.");
}

BOOL QBFileOutputStream::setUpWithFilePointer(std::FILE *filePointer) {
    if (!filePointer)
        throw InvalidArgumentException("QBFileOutputStream initWithFilePointer: must have a file pointer "
                                       "argument that is not NULL.");
    filePtr_ = filePointer;
    filename_ = tmpFilename_ = nameOfFileHandle();
    return YES;
}

BOOL QBFileOutputStream::setUpWithFile(NSString *file, BOOL atomically) {
    filename_ = tmpFilename_ = file ? file->copy() : nullptr; // the caller may change it
    if (file && atomically == YES)
        tmpFilename_ = NSString::stringWithRestrictedFormat("%s.%s", file, IdCreator::createId());
    if (!open())
        fail(kLineOfOpening, errno);
    return !qb::isErrorPending();
}

// Returns false, with errno set, when the file can't be opened.
bool QBFileOutputStream::open() {
    const char *const target = qb::files::systemPath(filename_);
    if (!target)
        return false;
    makeParent(filename_);
    const char *const path = tmpFilename_->cString();
    filePtr_ = isAtomic() ? createTemporary(path, target) : sys::fopen(path, "wb");
    if (!filePtr_)
        return false;
    openWindow();
    return true;
}

bool QBFileOutputStream::isAtomic() const {
    return !filename_->isEqualToString(tmpFilename_);
}

// The streams that have a window. What they have collected is written out when the program ends, as the C
// library does with its own buffers; what other ends of the program still write goes to the files at once.
struct QBFileOutputStream::OpenStreams {
    static inline QBFileOutputStream *first = nullptr;
    static inline bool isOver = false;

    static void add(QBFileOutputStream *stream) {
        [[maybe_unused]] static const int registered = std::atexit(&end);
        stream->nextOpen_ = std::exchange(first, stream);
    }
    static void remove(QBFileOutputStream *stream) {
        QBFileOutputStream **place = &first;
        while (*place && *place != stream)
            place = &(*place)->nextOpen_;
        if (*place)
            *place = std::exchange(stream->nextOpen_, nullptr);
    }
    static void end() {
        isOver = true;
        while (QBFileOutputStream *const stream = first) {
            stream->writeOut();
            stream->closeWindow();
        }
    }
};

// The window takes the place of the C stream's buffer, for nothing is called to fill it. That buffer does
// without memory for a window, and on a terminal, where it shows each line at once.
void QBFileOutputStream::openWindow() {
    if (OpenStreams::isOver || (!isAtomic() && sys::isatty(sys::fileno(filePtr_))))
        return;
    window_ = static_cast<char *>(sys::allocate(kWindowLength));
    next_ = directEnd_ = window_;
    if (!window_)
        return;
    sys::setUnbuffered(filePtr_);
    OpenStreams::add(this);
    if (typeid(*this) == typeid(QBFileOutputStream))
        directEnd_ += kWindowLength;
}

void QBFileOutputStream::closeWindow() {
    OpenStreams::remove(this);
    sys::release(std::exchange(window_, nullptr));
    next_ = directEnd_ = nullptr;
}

// --- Writing ---

void QBFileOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    if (!put(buffer, length))
        fail(kLineOfWriting, errno);
}

void QBFileOutputStream::putByteByPrimitive(char byte) {
    if (!put(&byte, 1))
        fail(kLineOfWritingByte, errno);
}

// Takes the bytes; returns false, with errno set, when some could not be written.
bool QBFileOutputStream::put(const void *buffer, std::uint32_t length) {
    if (!filePtr_)
        return errno = EBADF, false;
    if (!window_ || length >= kLongWrite)
        return writeOut() && (length == 0 || sys::fwrite(buffer, length, 1, filePtr_) == 1);
    char *const end = window_ + kWindowLength;
    const auto first = std::min(length, static_cast<std::uint32_t>(end - next_));
    std::memcpy(next_, buffer, first);
    next_ += first;
    if (next_ == end && !writeOut())
        return false;
    std::memcpy(next_, static_cast<const char *>(buffer) + first, length - first);
    next_ += length - first;
    return true;
}

// Empties the window; what could not be written is lost, as in the C library's buffers.
bool QBFileOutputStream::writeOut() {
    const auto length = static_cast<std::size_t>(std::exchange(next_, window_) - window_);
    return length == 0 || sys::fwrite(window_, length, 1, filePtr_) == 1;
}

void QBFileOutputStream::flush() {
    if (!filePtr_)
        throw NSFileHandleOperationException("NotOpen", "QBFileOutputStream flush: file is not open");
    if (!writeOut() || sys::fflush(filePtr_) != 0)
        fail(kLineOfFlushing, errno);
}

void QBFileOutputStream::reset() {
    if (!tmpFilename_ || !tmpFilename_->containsData() || tmpFilename_->isEqualToString(nameOfFileHandle()))
        throw InvalidUseOfMethodException("QBFileOutputStream reset: must have a file with a name.");
    flush();
    if (!filePtr_) // the error handler has closed it
        return;
    next_ = window_; // though a subclass has not flushed it
    hasFailed_ = false;
    if (isAtomic() ? truncate() : reopen())
        return;
    const int error = errno;
    closeWindow();
    discard();
    fail(kLineOfReopening, error);
}

// Returns false, with errno set, when the file is not open any more.
bool QBFileOutputStream::reopen() {
    sys::fclose(filePtr_); // first, for what it may still hold goes with the rest
    filePtr_ = sys::fopen(tmpFilename_->cString(), "wb");
    if (filePtr_ && window_)
        sys::setUnbuffered(filePtr_);
    return filePtr_ != nullptr;
}

// As `reopen`, but not by the temporary name, which somebody else may have taken meanwhile.
bool QBFileOutputStream::truncate() {
    // The C stream may still hold bytes, which going to the start writes out.
    if (sys::fseeko(filePtr_, 0, SEEK_SET) == 0 && sys::ftruncate(sys::fileno(filePtr_), 0) == 0)
        return true;
    const int error = errno;
    sys::fclose(std::exchange(filePtr_, nullptr));
    return errno = error, false;
}

void QBFileOutputStream::fail(int line, int error) {
    hasFailed_ = true;
    qb::raiseError(kFile, line, qb::kErrorCannotWrite, qb::files::shown(tmpFilename_), std::strerror(error));
}

// --- Closing ---

void QBFileOutputStream::close() {
    if (!filePtr_)
        return;
    const int error = finish();
    const bool isComplete = error == 0 && !hasFailed_;
    if (!isComplete)
        discard();
    if (error != 0)
        fail(kLineOfClosing, error);
    if (isComplete && isAtomic())
        commit();
}

// Writes out and closes the C stream; returns what failed, as errno, or 0.
int QBFileOutputStream::finish() {
    const bool isWritten = writeOut() && (!isAtomic() || hasFailed_ || synchronize());
    const int error = errno;
    const bool isClosed = sys::fclose(std::exchange(filePtr_, nullptr)) == 0;
    if (isWritten && isClosed) {
        closeWindow();
        return 0;
    }
    const int result = isWritten ? errno : error;
    closeWindow();
    return result;
}

bool QBFileOutputStream::synchronize() {
    return !synchronizes_ || (sys::fflush(filePtr_) == 0 && sys::fsync(sys::fileno(filePtr_)) == 0);
}

// Makes the temporary file the target.
void QBFileOutputStream::commit() {
    bool isRenamed = false;
    try {
        isRenamed = qb::files::rename(tmpFilename_, filename_);
    } catch (...) { // a client's error handler may throw
        discard();
        throw;
    }
    if (!isRenamed)
        return discard();
    NSString *const parent = parentOf(filename_);
    if (synchronizes_ && sys::syncDirectory(parent->containsData() ? parent->cString() : ".") != 0)
        fail(kLineOfClosing, errno);
}

// Removes the temporary file of an atomic stream.
void QBFileOutputStream::discard() {
    if (isAtomic())
        sys::unlink(tmpFilename_->cString());
}
