// Reading from a pipe.
#ifndef QBFOUNDATION_OSADAPTOR_OSPIPEINPUTSTREAM_H
#define QBFOUNDATION_OSADAPTOR_OSPIPEINPUTSTREAM_H

#include <QBFoundation/OSAdaptor/OSPipe.h>
#include <QBFoundation/QBInputStream.h>

#include <cstdint>

/// Reads from a pipe, which it keeps, and closes that end when it is closed itself.
///
/// The end of the data is what the system answers, 0. A signal that comes first ends a read with -1, as any
/// error does, unless its handler lets calls go on, as those that `OSProcess` registers do; `errno` tells
/// them apart.
class QB_EXPORT OSPipeInputStream : public QBInputStream {
public:
    OSPipeInputStream() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InternalInconsistencyException when the pipe's read end is not open, or there is no pipe.
    static OSPipeInputStream *streamWithPipe(OSPipe *pipe) { return initWithPipe(pipe).autorelease(); }
    static Ref<OSPipeInputStream> initWithPipe(OSPipe *pipe) {
        return qb::init<OSPipeInputStream>(&OSPipeInputStream::setUpWithPipe, pipe);
    }

    /// What `setIsBinary` stored last, NO at first; the stream itself makes no difference.
    BOOL isBinary() const override { return isBinary_; }
    virtual void setIsBinary(BOOL isBinary) { isBinary_ = isBinary; }
    void close() override;
    /// Returns the next byte, 0 to 255; -1 at the end, after an error and after `close`.
    std::int32_t readByte() override;
    /// Reads once; returns what `OSPipe` `read:length:` does, and -1 when the end is closed.
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;

protected:
    /// The initialiser `initWithPipe:`.
    virtual BOOL setUpWithPipe(OSPipe *pipe);

private:
    Ref<OSPipe> pipe_; // null only in an object that was never set up
    BOOL isBinary_ = NO;
};

#endif
