// Writing files.
#ifndef QBFOUNDATION_QBFILEOUTPUTSTREAM_H
#define QBFOUNDATION_QBFILEOUTPUTSTREAM_H

#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

/// Writes a file, in place or atomically, or an open C stream.
///
/// An atomic stream writes to a file of its own beside the target, with the target's permissions, or those of
/// a new file without one. `close`, which destruction does too, syncs it to the disk and renames it onto the
/// target, so that the target is the old file or the complete new one at any moment. The name of its own
/// file is the target's with up to 46 bytes more, which have to fit. When anything could not be written, or
/// an exception takes the stream along before it was closed, the temporary file is removed, and the old one
/// stays. A program that ends before leaves both.
///
/// Failures are error 100024 (the opened file's path, system text). As with the C library, short writes are
/// collected, so that a full disk may show as late as in `flush` or `close`, and what a program that ends has
/// not flushed is written out then.
class QB_EXPORT QBFileOutputStream : public QBOutputStream {
public:
    QBFileOutputStream() noexcept;
    ~QBFileOutputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Writes the object to a file and closes it; a file that can't be opened leaves its error, nothing more.
    /// With YES an error that is raised while the object is written leaves the old file.
    static void writeToFile(id object, NSString *file, BOOL atomically) {
        writeToFile(cls(), object, file, atomically);
    }
    static void writeToFile(Class *asked, id object, NSString *file, BOOL atomically);

    /// Throws InvalidUseOfMethodException: a file stream needs a file.
    static QBFileOutputStream *stream() {
        return qb::init<QBFileOutputStream>(&QBFileOutputStream::setUp).autorelease();
    }
    static QBFileOutputStream *streamWithFile(NSString *file) {
        return streamWithFile(file, /*atomically=*/NO);
    }
    static QBFileOutputStream *streamWithFile(NSString *file, BOOL atomically) {
        return initWithFile(file, atomically).autorelease();
    }
    /// The C stream is closed with this one, which destruction does too.
    /// Throws InvalidArgumentException when `filePointer` is null.
    static QBFileOutputStream *streamWithFilePointer(std::FILE *filePointer) {
        return initWithFilePointer(filePointer).autorelease();
    }
    /// Writes the process's standard output (error), which is closed with the stream.
    static QBFileOutputStream *streamForStdout() { return streamWithFilePointer(stdout); }
    static QBFileOutputStream *streamForStderr() { return streamWithFilePointer(stderr); }

    /// Creates or empties the file, and creates the directories above it; with YES it is written atomically.
    ///
    /// Returns nil when an error is pending afterwards, be it one from before: an atomic stream has then
    /// replaced the target by an empty file. Raises 100168 for a directory that can't be created and 100024
    /// when the file can't be opened.
    static Ref<QBFileOutputStream> initWithFile(NSString *file, BOOL atomically) {
        return qb::init<QBFileOutputStream>(&QBFileOutputStream::setUpWithFile, file, atomically);
    }
    static Ref<QBFileOutputStream> initWithFilePointer(std::FILE *filePointer) {
        return qb::init<QBFileOutputStream>(&QBFileOutputStream::setUpWithFilePointer, filePointer);
    }

    /// The path that was asked for; "<filehandle>" for a C stream.
    virtual NSString *filename() const { return filename_.get(); }
    /// The path that is written; `filename` unless the stream is atomic.
    virtual NSString *tmpFilename() const { return tmpFilename_.get(); }
    /// Whether an atomic stream waits until file and directory are on the disk. YES until it is set: without
    /// it the target may be an empty file after a loss of power. For callers that write many files and sync
    /// once.
    virtual BOOL synchronizes() const { return synchronizes_; }
    virtual void setSynchronizes(BOOL synchronizes) { synchronizes_ = synchronizes; }

    /// Writes out and closes, and makes an atomic file the target. Does nothing when it is closed already.
    ///
    /// Raises 100024, also when the directory could not be synced after the rename, and 100202 when the
    /// rename failed.
    void close() override;
    /// Throws an exception of the name "NotOpen" after `close`.
    void flush() override;
    /// Empties the file and starts anew. The stream is closed when that fails.
    /// Throws InvalidUseOfMethodException for a C stream.
    void reset() override;

    QB_EXPORT void writeBuffer(const void *buffer, std::uint32_t length) override {
        if (buffer && length < kLongWrite && static_cast<std::int32_t>(length) < directEnd_ - next_)
            [[likely]] {
            std::memcpy(next_, buffer, length);
            next_ += length;
        } else {
            QBOutputStream::writeBuffer(buffer, length);
        }
    }
    QB_EXPORT void writeByte(char byte) override {
        if (next_ < directEnd_) [[likely]]
            *next_++ = byte;
        else
            putByteByPrimitive(byte);
    }
    void _writeBuffer(const void *buffer, std::uint32_t length) override;

protected:
    BOOL setUp() override;
    /// The initialiser `initWithFile:atomically:`.
    virtual BOOL setUpWithFile(NSString *file, BOOL atomically);
    /// The initialiser `initWithFilePointer:`.
    virtual BOOL setUpWithFilePointer(std::FILE *filePointer);

private:
    // Small enough to stay in the processor's cache, large enough that system calls don't count.
    static constexpr std::uint32_t kWindowLength = 65536;
    // Writes of this length, that of the C library's buffers, are not collected: they fail at once.
    static constexpr std::uint32_t kLongWrite = 4096;

    struct OpenStreams;

    BOOL setUpWithFileInPlace(NSString *file) { return setUpWithFile(file, /*atomically=*/NO); }
    BOOL setUpForStdout() { return setUpWithFilePointer(stdout); }
    BOOL setUpForStderr() { return setUpWithFilePointer(stderr); }
    bool isAtomic() const;
    bool open();
    bool reopen();
    bool truncate();
    void openWindow();
    void closeWindow();
    void putByteByPrimitive(char byte);
    bool put(const void *buffer, std::uint32_t length);
    bool writeOut();
    bool synchronize();
    int finish();
    void commit();
    void discard();
    void fail(int line, int error);

    Ref<NSString> filename_;
    Ref<NSString> tmpFilename_;
    std::FILE *filePtr_ = nullptr; // null once closed
    // Short writes are collected in the window, for files that nobody else writes: null for C streams. The
    // writes of subclasses are not stored without `_writeBuffer`.
    char *window_ = nullptr;
    QBFileOutputStream *nextOpen_ = nullptr; // another one with a window
    BOOL synchronizes_ = YES;
    bool hasFailed_ = false; // something that was written is missing
    int exceptionsBefore_;   // how many were on their way when the stream was made
};

#endif
