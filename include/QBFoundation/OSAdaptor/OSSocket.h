// Stream sockets.
#ifndef QBFOUNDATION_OSADAPTOR_OSSOCKET_H
#define QBFOUNDATION_OSADAPTOR_OSSOCKET_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <sys/select.h>

class NSArray;
class NSData;
class OSSocketInputStream;
class OSSocketOutputStream;

/// What a process says, asked by an operation that has been waiting for a while: NO ends the waiting.
using OSContinueBlockingOperationCallback = BOOL (*)();

/// A stream socket of the Unix domain, named by a path, or of the internet domain (IP version 4): a server
/// that listens, a client that is connected, or a connection that a server has accepted.
///
/// Bytes are received into a buffer of the socket, so that exact amounts, lines and single bytes cost few
/// calls of the system, and so that they can be looked at before they are taken. Time-outs are milliseconds
/// on a clock that nobody sets; one of 0 or less does not wait, so that receiving blocks as the descriptor
/// does. A peer that is gone is an error, never a signal.
///
/// The object owns its descriptor, which is closed at its end. After `close` its operations fail with the
/// text for EBADF.
class QB_EXPORT OSSocket : public OSObject {
public:
    /// What `socketType` answers.
    enum Type : std::int32_t { kUnix = 0, kInternet = 1 };
    /// What `selectSockets:…` waits for; values are added up.
    enum Activation : std::int32_t { kReadable = 1, kWritable = 2, kExceptional = 4 };

    /// How many bytes the buffer holds.
    static constexpr std::uint32_t kBufferSize = 65536;
    /// The longest name of a Unix-domain socket, in bytes.
    static constexpr std::uint32_t kLongestName = 107;

    OSSocket() noexcept = default;
    /// Ends the connection and closes the descriptor.
    ~OSSocket() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---
    //
    // Each returns nil after an error; a half-made socket is closed again. Ports are numbers from 0 to 65535,
    // others are errors with the text for EINVAL. A host is nil for this machine (127.0.0.1), the null object
    // for all of its addresses (0.0.0.0), a dotted address, or a name to be looked up; 100086 (host) when
    // there is no such host.

    /// Returns a socket that is neither bound nor connected: of the Unix domain for type 0, of the internet
    /// domain for any other. Raises 100061 (system text).
    static Ref<OSSocket> initWithSocketType(std::int32_t type) {
        return qb::init<OSSocket>(&OSSocket::setUpWithSocketType, type);
    }

    /// Returns a server that listens, up to 5 clients waiting; a port of 0 lets the system choose one.
    /// Raises 100087 (host, port, system text) when it can't be bound, and 100073 (system text).
    static OSSocket *serverSocketOnHost(id host, std::int32_t port) {
        return initServerSocketOnHost(host, port).autorelease();
    }
    static Ref<OSSocket> initServerSocketOnHost(id host, std::int32_t port) {
        return qb::init<OSSocket>(&OSSocket::setUpServerSocketOnHost, host, port);
    }
    /// As above, for an address in network byte order; `host` only stands in error texts.
    static Ref<OSSocket> _initServerSocketOnAddr(std::uint32_t addr, id host, std::int32_t port) {
        return qb::init<OSSocket>(&OSSocket::setUpServerSocketOnAddr, addr, host, port);
    }

    /// Returns a connected socket.
    /// Raises 100087 (host, port, system text) when it can't be bound to a port of its own, and 100090 (host,
    /// port, system text) when it can't be connected.
    static OSSocket *clientSocketToHost(id host, std::int32_t port) {
        return initClientSocketToHost(host, port).autorelease();
    }
    static Ref<OSSocket> initClientSocketToHost(id host, std::int32_t port) {
        return qb::init<OSSocket>(&OSSocket::setUpClientSocketToHost, host, port);
    }

    /// Returns a server that listens under a path, where it replaces a file, but no directory. The file stays
    /// when the socket is closed. Raises 100065 for an empty name and for nil, 100066 for one of more than
    /// 107 bytes, 100203 (path, system text) for a file that can't be removed, 100064 (name, system text) and
    /// 100073 (system text).
    static OSSocket *serverSocketWithName(NSString *name) {
        return initServerSocketWithName(name).autorelease();
    }
    static Ref<OSSocket> initServerSocketWithName(NSString *name) {
        return qb::init<OSSocket>(&OSSocket::setUpServerSocketWithName, name);
    }

    /// Returns a socket that is connected to the server of that path.
    /// Raises 100065, 100066, and 100090 (name, 0, system text).
    static OSSocket *clientSocketWithName(NSString *name) {
        return initClientSocketWithName(name).autorelease();
    }
    static Ref<OSSocket> initClientSocketWithName(NSString *name) {
        return qb::init<OSSocket>(&OSSocket::setUpClientSocketWithName, name);
    }

    /// Waits for the next connection to a server and returns its socket, of the listener's type and name.
    ///
    /// Returns nil without an error when nobody is waiting at a non-blocking listener, and when the callback
    /// has ended the waiting. Raises 900052 (socket, system text). Throws InvalidArgumentException when
    /// `listener` is nil.
    static OSSocket *acceptSocketFromListener(OSSocket *listener) {
        return initAcceptSocketFromListener(listener).autorelease();
    }
    static Ref<OSSocket> initAcceptSocketFromListener(OSSocket *listener) {
        return qb::init<OSSocket>(&OSSocket::setUpAcceptSocketFromListener, listener);
    }

    /// Returns a path that no socket has yet, for a Unix-domain server that nobody needs to know by name.
    static NSString *makeNameForSocket();

    // --- Sending ---

    /// Sends once; returns how many of the bytes were taken, which may be fewer than `length`.
    ///
    /// Returns -1 after 100238 when the socket would block, and 100206 (system text) for other failures,
    /// among them a peer that is gone. Throws InvalidArgumentException when `buffer` is null.
    virtual std::int32_t sendBuffer(const void *buffer, std::uint32_t length);
    /// Sends the string's bytes and the line end of network protocols, 13 and 10, whole unless there is an
    /// error (that of `sendBuffer:length:`). Nil: the line end alone.
    virtual void writeLine(NSString *line);

    // --- Receiving ---
    //
    // Buffers are null or too short at the caller's risk but for null, which throws InvalidArgumentException.
    // One call delivers at most 2^31 - 1 bytes.

    /// Receives once, past the socket's buffer, after waiting up to `timeout` for something to come; with
    /// `performPeek` the bytes can be received again.
    ///
    /// Returns how many bytes there are; 0 when the socket would block; -1 when nothing more can be had now,
    /// because the peer has closed, time is out, or a signal has interrupted. Raises 100207 (socket), and
    /// returns -1, for failures.
    virtual std::int32_t receiveWithBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                           BOOL performPeek);
    /// Receives through the socket's buffer until `length` bytes are there, waiting up to `timeout` each time
    /// that the buffer is empty; with `performPeek` it copies what can be had at once and takes nothing.
    ///
    /// Returns how many bytes were delivered, fewer than `length` at the end, at the time-out and when the
    /// socket would block. Instead of none it returns -1, but 0 from a socket that would block and from a
    /// peek. After a peek that met the end or the time-out, further peeks find only what the buffer holds,
    /// and the next read that needs more tells of the end once; the one after it tries the socket again.
    /// Returns -1 when an error is pending after bytes were received, be it one from before: they stay in the
    /// socket's buffer, as when the callback throws. They are delivered where memory for that is missing.
    virtual std::int32_t bufferedReceiveWithBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                                   BOOL performPeek);
    /// Copies what the socket's buffer holds, up to `length` bytes, to `buffer` from `offset` on (0 for a
    /// negative one); takes them unless `performPeek`. Returns how many there are.
    virtual std::int32_t _copyBytesFromInternalBufferIntoBuffer(void *buffer, std::uint32_t length,
                                                                std::int32_t offset, BOOL performPeek);
    /// Returns `count` bytes, fewer at the end, at the time-out and after an error, as
    /// `bufferedReceiveWithBuffer:…` delivers them; empty data for none. Without memory for all of them it
    /// raises 100156, and returns those that had come; before any has, it throws std::bad_alloc.
    NSData *readBytes(std::uint32_t count) { return readBytes(count, /*withTimeout=*/0); }
    virtual NSData *readBytes(std::uint32_t count, std::int64_t withTimeout);
    /// Returns the bytes up to the next line feed, which is taken, too, without carriage returns.
    ///
    /// What is there counts as a line at the end, at the time-out, where the socket would block, and when a
    /// signal interrupts the wait: an empty string, if there is nothing. So it is, and nothing is taken,
    /// while an error is pending. Where it throws, what was taken goes back into the buffer, as
    /// `bufferedReceiveWithBuffer:…` delivered it: a class that changes bytes there changes them twice.
    NSString *readLine() { return readLineWithTimeout(0); }
    virtual NSString *readLineWithTimeout(std::int64_t timeout);

    // --- State ---

    /// Sets an option of the descriptor. Returns NO after 900050 (option, system text).
    virtual BOOL setSockOptWithLevel(std::int32_t level, std::int32_t optionName, const void *optionValue,
                                     std::uint32_t optionLength);
    /// Lets operations on the descriptor answer at once. Returns NO after 900051 (socket, system text).
    virtual BOOL setNonBlocking();
    /// Keeps the descriptor from programs that are started; all sockets are kept so from the beginning.
    /// Returns NO after 900051 (socket, system text).
    virtual BOOL setCloseOnExec();
    /// Ends the connection in both directions: the peer reads its end. What was received already can still be
    /// read.
    virtual void shutdown();
    /// Closes the descriptor and drops what was received; harmless when it is closed already.
    virtual void close();

    /// The descriptor, which stays the socket's; -1 when it is closed.
    virtual std::int32_t socketHandle() const { return socketHandle_; }
    virtual std::int32_t socketType() const { return type_; }
    /// A mark for the owner; the socket itself does not look at it.
    virtual BOOL wantToBeClosed() const { return wantToBeClosed_; }
    virtual void setWantToBeClosed(BOOL wantToBeClosed) { wantToBeClosed_ = wantToBeClosed; }
    /// The path of a Unix-domain socket; nil for others.
    virtual NSString *socketName() const { return socketName_; }
    virtual void setSocketName(NSString *name) { socketName_ = name; }
    /// Whether the other is a socket with the same open descriptor.
    BOOL isEqual(id other) const override;
    /// Writes handle, type, marks, address and the pending error, which the system forgets thereby, to the
    /// logger "error".
    virtual void writeStateToErrorLog();

    // --- Streams ---

    /// Returns a new stream that reads from the socket through its buffer.
    virtual OSSocketInputStream *getInputStream();
    /// Returns a new stream that sends to the socket.
    virtual OSSocketOutputStream *getOutputStream();

    // --- Waiting for several sockets ---

    /// Waits until one of the sockets is ready in one of the ways of `activation` (kReadable …), at most the
    /// sum of the two times, for ever when one of them is negative. A socket whose buffer holds bytes is
    /// readable, as is one whose other end has been closed; one that has failed, or whose connection has
    /// ended in both directions, is ready in any way.
    ///
    /// Returns those that are ready, in their order; none at the time-out, after an interruption, and when
    /// the callback has ended the waiting. The number of sockets and their descriptors have no limit but the
    /// system's. Returns nil after 100207 (socket; -1 when it is none of them) for a socket that is closed
    /// and for other failures. Throws InvalidArgumentException when an element is no socket and when
    /// `activation` is 0.
    static NSArray *selectSockets(NSArray *sockets, std::int32_t activation, std::int64_t timeoutSecs,
                                  std::int64_t timeoutMilliSecs);
    /// Waits as `select` does for descriptors up to `maxSocket`; null sets are left out, a null `timeVal`
    /// waits for ever, otherwise it becomes what is left of it. Buffers of sockets are not looked at.
    ///
    /// Returns how many are ready, 0 at the time-out, -1 after an interruption. Raises 100207 (maxSocket),
    /// and returns -1, for failures, among them a descriptor that no set can hold (`FD_SETSIZE` and above).
    ///
    /// On 32 bits `_TIME_BITS` decides how large a `timeval` is: this one fits the program that calls it, and
    /// programs of either kind have a function of their own (`TimeSize`). Who sends the message hands over
    /// one with times of 64 bits, as the library was built.
    template <std::size_t TimeSize = sizeof(timeval)>
    static std::int32_t selectWithMaxSocket(std::int32_t maxSocket, fd_set *readfds, fd_set *writefds,
                                            fd_set *exceptfds, timeval *timeVal) {
        if (!timeVal)
            return selectForTime(maxSocket, readfds, writefds, exceptfds, nullptr);
        Time time{timeVal->tv_sec, timeVal->tv_usec};
        const std::int32_t ready = selectForTime(maxSocket, readfds, writefds, exceptfds, &time);
        timeVal->tv_sec = static_cast<decltype(timeVal->tv_sec)>(time.seconds);
        timeVal->tv_usec = static_cast<decltype(timeVal->tv_usec)>(time.microseconds);
        return ready;
    }
    /// Registers what is asked whether to go on by operations that wait for a peer: accepting, receiving and
    /// selecting sockets, but not connecting and sending. Null: nobody is asked.
    ///
    /// It is asked each time that an operation has waited for 200 milliseconds in vain, and when a signal has
    /// interrupted it; never for non-blocking sockets without a time-out. YES lets it wait on for the rest of
    /// its time, NO ends it as a time-out does. Without a callback an interruption ends receiving and
    /// selecting so, and accepting goes on. A signal handler that sets a flag and a callback that returns it
    /// stop a server within that time. The callback must leave the socket alone that waits; it may throw.
    ///
    /// The descriptor of a listener that has waited so answers at once from then on, in all processes that
    /// share it; here `acceptSocketFromListener:` waits as before, unless `setNonBlocking` was asked for.
    static void registerContinueBlockingOperationCallback(OSContinueBlockingOperationCallback callback);

    /// Does nothing on this system.
    static void startup() {}
    static void cleanup() {}

protected:
    virtual BOOL setUpWithSocketType(std::int32_t type);
    virtual BOOL setUpServerSocketOnHost(id host, std::int32_t port);
    virtual BOOL setUpServerSocketOnAddr(std::uint32_t addr, id host, std::int32_t port);
    virtual BOOL setUpClientSocketToHost(id host, std::int32_t port);
    virtual BOOL setUpServerSocketWithName(NSString *name);
    virtual BOOL setUpClientSocketWithName(NSString *name);
    virtual BOOL setUpAcceptSocketFromListener(OSSocket *listener);

private:
    class CollectedBytes;

    /// A `timeval` that is the same for every program.
    struct Time {
        std::int64_t seconds, microseconds;
    };

    static std::int32_t selectForTime(std::int32_t maxSocket, fd_set *readfds, fd_set *writefds,
                                      fd_set *exceptfds, Time *time);
    BOOL startListening(const char *selector, const char *traceFormat);
    BOOL setServerOptions();
    bool waitsForConnections();
    int acceptNext();
    std::int32_t bufferedCount() const { return numberOfBytesInBuffer_ - currentPositionInBuffer_; }
    void traceBuffer(const char *format, std::int32_t count, std::int32_t limit) const;
    std::int32_t receive(void *buffer, std::uint32_t length, std::int64_t timeout, BOOL performPeek);
    std::int32_t copyBuffered(char *buffer, std::uint32_t length, bool performPeek);
    std::int32_t fillBuffer(std::int64_t timeout);
    std::int32_t peek(char *buffer, std::uint32_t length, std::int64_t timeout);
    std::int32_t take(char *buffer, std::uint32_t length, std::int64_t timeout);
    bool putBack(const void *bytes, std::uint32_t count);
    void putBack(CollectedBytes &bytes);
    void replaceBuffer(char *buffer, std::uint32_t count);
    NSString *takeBufferedLine();
    NSString *collectLine(std::int64_t timeout);
    std::span<char> takePiece(std::int64_t timeout);

    std::int32_t socketHandle_ = -1;
    std::int32_t type_ = kUnix;
    BOOL wantToBeClosed_ = NO;
    char *internalBuffer_ = nullptr; // made when something is received
    std::int32_t currentPositionInBuffer_ = 0;
    std::int32_t numberOfBytesInBuffer_ = 0;
    BOOL isEofReached_ = NO; // the last peek has met the end or the time-out
    enum class Waiting : std::uint8_t { asDescriptor, never, byPolling } waiting_ = Waiting::asDescriptor;
    Ref<NSString> socketName_;
};

#endif
