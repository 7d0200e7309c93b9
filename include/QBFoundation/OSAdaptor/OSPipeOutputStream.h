// Writing to a pipe.
#ifndef QBFOUNDATION_OSADAPTOR_OSPIPEOUTPUTSTREAM_H
#define QBFOUNDATION_OSADAPTOR_OSPIPEOUTPUTSTREAM_H

#include <QBFoundation/OSAdaptor/OSPipe.h>
#include <QBFoundation/QBOutputStream.h>

#include <cstdint>

/// Writes to a pipe, which it keeps, and closes that end when it is closed itself.
///
/// Each write is one write of the pipe. What that does not take, because of an error or a signal or because
/// the pipe does not block, is lost without an error: whoever must know writes to the pipe itself.
class QB_EXPORT OSPipeOutputStream : public QBOutputStream {
public:
    OSPipeOutputStream() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InvalidUseOfMethodException: a stream needs a pipe.
    static OSPipeOutputStream *stream();
    /// Throws InternalInconsistencyException when the pipe's write end is not open, or there is no pipe.
    static OSPipeOutputStream *streamWithPipe(OSPipe *pipe) { return initWithPipe(pipe).autorelease(); }
    static Ref<OSPipeOutputStream> initWithPipe(OSPipe *pipe) {
        return qb::init<OSPipeOutputStream>(&OSPipeOutputStream::setUpWithPipe, pipe);
    }

    void close() override;
    void writeByte(char byte) override { _writeBuffer(&byte, 1); }
    /// Writes once; nothing when the end is closed.
    void _writeBuffer(const void *buffer, std::uint32_t length) override;

protected:
    /// The initialiser `initWithPipe:`.
    virtual BOOL setUpWithPipe(OSPipe *pipe);

private:
    Ref<OSPipe> pipe_; // null only in an object that was never set up
};

#endif
