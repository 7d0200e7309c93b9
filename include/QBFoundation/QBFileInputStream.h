// Reading files.
#ifndef QBFOUNDATION_QBFILEINPUTSTREAM_H
#define QBFOUNDATION_QBFILEINPUTSTREAM_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBInputStreamWithKnownLength.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

/// Reads a file up to the size that it had when it was opened.
///
/// When it can't be read, or has become shorter, reading raises 100023 (path, system text) and answers 0; the
/// bytes that were asked for count as read.
class QB_EXPORT QBFileInputStream : public QBInputStreamWithKnownLength {
public:
    QBFileInputStream() noexcept = default;
    ~QBFileInputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBFileInputStream *streamWithFile(NSString *file) { return initWithFile(file).autorelease(); }
    /// Returns nil when an error is pending after the file was asked for its size, or it can't be opened.
    ///
    /// Raises 100194 (path, system text) when it can't be asked, 100039 (path) when there is none, 100023
    /// (path, system text) when it can't be opened, and 100156.
    static Ref<QBFileInputStream> initWithFile(NSString *file) {
        return qb::init<QBFileInputStream>(&QBFileInputStream::setUpWithFile, file);
    }

    virtual NSString *filename() const { return filename_.get(); }
    /// NO until it is set.
    BOOL isBinary() const override { return isBinary_; }
    virtual void setIsBinary(BOOL isBinary) { isBinary_ = isBinary; }
    /// The file's size when it was opened.
    std::uint32_t byteLength() const override { return fileSize_; }
    void reset() override;
    /// Closes the file, as destruction does.
    void close() override;

    /// Returns the next line without its end, autoreleased; nil at the end of the file.
    ///
    /// A line is read up to its line feed, or 999 bytes of it, so that what is longer comes in pieces. Of
    /// what was read, the text ends at the first carriage return or line feed behind another character, so
    /// that an empty line is its line end, or at a NUL; what stands behind that is dropped. Lines that were
    /// appended since the file was opened are read too. Raises 100023 (path, system text); what was read of
    /// the line is returned.
    virtual NSString *readLine();

    /// The next byte as a signed value; 0 after an error.
    QB_EXPORT std::int32_t readByte() override {
        return next_ < directEnd_ ? static_cast<signed char>(*next_++) : readByteByBuffer();
    }
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;

protected:
    /// The initialiser `initWithFile:`.
    virtual BOOL setUpWithFile(NSString *file);

private:
    std::int32_t readByteByBuffer();
    std::int32_t raiseReadError(int line, int error);
    bool fetch(char *buffer, std::uint32_t length);
    bool fetchForLine(int &error);
    void emptyWindow();
    void allowDirectReads() { directEnd_ = isDirect_ ? end_ : window_; }

    Ref<NSString> filename_;
    int descriptor_ = -1;              // -1 once closed
    std::uint32_t bytesRemaining_ = 0; // of the file's size, and not in the window yet
    std::uint32_t fileSize_ = 0;
    BOOL isBinary_ = NO;

    // A part of the file that is read ahead: `next_` <= `end_` <= `filled_`. Bytes from `end_` on were
    // appended since the file was opened; there are some only when no bytes remain.
    char *window_ = nullptr;
    const char *end_ = nullptr;
    char *filled_ = nullptr;
    bool isDirect_ = false; // whether `directEnd_` may be `end_`: not for subclasses
};

#endif
