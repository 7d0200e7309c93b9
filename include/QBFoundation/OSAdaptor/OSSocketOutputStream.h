// Writing to a socket.
#ifndef QBFOUNDATION_OSADAPTOR_OSSOCKETOUTPUTSTREAM_H
#define QBFOUNDATION_OSADAPTOR_OSSOCKETOUTPUTSTREAM_H

#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

class OSSocket;

/// Sends what is written at once to a socket, which it retains.
///
/// Each write is sent whole, by as many of the socket's `sendBuffer:length:` as it takes; the first one that
/// fails raises its error and ends the write.
class QB_EXPORT OSSocketOutputStream : public QBOutputStream {
public:
    OSSocketOutputStream() noexcept;
    ~OSSocketOutputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InvalidUseOfMethodException: the stream needs a socket.
    static OSSocketOutputStream *stream() {
        return qb::init<OSSocketOutputStream>(&OSSocketOutputStream::setUp).autorelease();
    }
    /// Throws InvalidArgumentException when `socket` is nil.
    static OSSocketOutputStream *streamWithSocket(OSSocket *socket) {
        return initWithSocket(socket).autorelease();
    }
    static Ref<OSSocketOutputStream> initWithSocket(OSSocket *socket) {
        return qb::init<OSSocketOutputStream>(&OSSocketOutputStream::setUpWithSocket, socket);
    }

    virtual OSSocket *socket() const { return socket_; }
    /// Closes the socket.
    void close() override;
    void writeByte(char byte) override { _writeBuffer(&byte, 1); }
    void _writeBuffer(const void *buffer, std::uint32_t length) override;

protected:
    BOOL setUp() override;
    /// The initialiser `initWithSocket:`.
    virtual BOOL setUpWithSocket(OSSocket *socket);

private:
    Ref<OSSocket> socket_;
};

#endif
