// Reading a socket.
#ifndef QBFOUNDATION_OSADAPTOR_OSSOCKETINPUTSTREAM_H
#define QBFOUNDATION_OSADAPTOR_OSSOCKETINPUTSTREAM_H

#include <QBFoundation/QBInputStream.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

class OSSocket;

/// Reads from a socket, which it retains, through the socket's buffer; several streams on one socket share
/// it.
///
/// Reads wait for all bytes that they ask for, and deliver fewer at the end, where the socket would block,
/// and when a signal interrupts them. Those with a time-out, in milliseconds, also deliver fewer when nothing
/// has come for so long; see `bufferedReceiveWithBuffer:…` of `OSSocket`, whose errors they raise.
class QB_EXPORT OSSocketInputStream : public QBInputStream {
public:
    OSSocketInputStream() noexcept;
    ~OSSocketInputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InvalidArgumentException when `socket` is nil.
    static OSSocketInputStream *streamWithSocket(OSSocket *socket) {
        return initWithSocket(socket).autorelease();
    }
    static Ref<OSSocketInputStream> initWithSocket(OSSocket *socket) {
        return qb::init<OSSocketInputStream>(&OSSocketInputStream::setUpWithSocket, socket);
    }

    virtual OSSocket *socket() const { return socket_; }
    /// NO until it is set.
    BOOL isBinary() const override { return isBinary_; }
    virtual void setIsBinary(BOOL isBinary) { isBinary_ = isBinary; }
    /// Closes the socket.
    void close() override;

    using QBInputStream::readBuffer;
    /// Throws InvalidArgumentException when `buffer` is null, also for a length of 0.
    std::int32_t readBuffer(void *buffer, std::uint32_t length, std::int64_t timeout) {
        return readBuffer(buffer, length, timeout, /*performPeek=*/NO);
    }
    /// As above; with `performPeek` the bytes can be read again. A peek that finds none delivers 0.
    virtual std::int32_t readBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                    BOOL performPeek);
    /// Returns the next byte, 0 to 255, or -1 when there is none.
    std::int32_t readByte() override { return readByteWithTimeout(0, /*performPeek=*/NO); }
    std::int32_t readByteWithTimeout(std::int64_t timeout) {
        return readByteWithTimeout(timeout, /*performPeek=*/NO);
    }
    virtual std::int32_t readByteWithTimeout(std::int64_t timeout, BOOL performPeek);

    // --- For subclasses ---

    using QBInputStream::_readBuffer;
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;
    virtual std::int32_t _readBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                     BOOL performPeek);

protected:
    BOOL setUp() override;
    /// The initialiser `initWithSocket:`.
    virtual BOOL setUpWithSocket(OSSocket *socket);

private:
    Ref<OSSocket> socket_;
    BOOL isBinary_ = NO;
};

#endif
