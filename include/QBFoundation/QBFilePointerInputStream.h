// Reading an open C stream.
#ifndef QBFOUNDATION_QBFILEPOINTERINPUTSTREAM_H
#define QBFOUNDATION_QBFILEPOINTERINPUTSTREAM_H

#include <QBFoundation/QBInputStream.h>

#include <cstdint>
#include <cstdio>

/// Reads from a C stream, which it closes when it is closed itself, and not when it is destroyed.
class QB_EXPORT QBFilePointerInputStream : public QBInputStream {
public:
    QBFilePointerInputStream() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InvalidArgumentException when `filePointer` is null.
    static QBFilePointerInputStream *streamWithFilePointer(std::FILE *filePointer) {
        return initWithFilePointer(filePointer).autorelease();
    }
    /// Reads the process's standard input, which is closed with the stream.
    static QBFilePointerInputStream *streamForStdin() { return streamWithFilePointer(stdin); }
    static Ref<QBFilePointerInputStream> initWithFilePointer(std::FILE *filePointer) {
        return qb::init<QBFilePointerInputStream>(&QBFilePointerInputStream::setUpWithFilePointer,
                                                  filePointer);
    }

    /// NO until it is set.
    BOOL isBinary() const override { return isBinary_; }
    virtual void setIsBinary(BOOL isBinary) { isBinary_ = isBinary; }
    void close() override;
    /// Goes back to the first byte, if the C stream can.
    virtual void reset();
    /// The next byte as a signed value; 0 after an error.
    std::int32_t readByte() override;
    /// Raises 100023 ("<unknown>", system text) when nothing could be read because of an error; with the text
    /// for EBADF after `close`.
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;

protected:
    /// The initialiser `initWithFilePointer:`.
    virtual BOOL setUpWithFilePointer(std::FILE *filePointer);

private:
    BOOL setUpForStdin() { return setUpWithFilePointer(stdin); }

    std::FILE *filePtr_ = nullptr;
    BOOL isBinary_ = NO;
};

#endif
