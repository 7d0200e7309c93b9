// Anonymous pipes.
#ifndef QBFOUNDATION_OSADAPTOR_OSPIPE_H
#define QBFOUNDATION_OSADAPTOR_OSPIPE_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

class OSPipeInputStream;
class OSPipeOutputStream;

/// A pipe of the system. Programs inherit its ends only where `OSProcess` is told to hand them on.
class QB_EXPORT OSPipe : public OSObject {
public:
    OSPipe() noexcept = default;
    /// Closes the ends that are still open.
    ~OSPipe() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a new pipe with both ends open; nil, with an `errno`, when the system has none.
    static OSPipe *pipe() { return init().autorelease(); }
    static Ref<OSPipe> init() { return qb::init<OSPipe>(&OSPipe::setUp); }

    /// Returns the descriptor to read from, or to write to, which stays the pipe's; -1 when it is closed.
    virtual std::int32_t readHandle() const { return readHandle_; }
    virtual std::int32_t writeHandle() const { return writeHandle_; }
    virtual BOOL _isReadHandleOpen() const { return isReadHandleOpen_; }
    virtual BOOL _isWriteHandleOpen() const { return isWriteHandleOpen_; }

    /// Closes that end, unless it is closed already. Returns 0; -1, with an `errno`, when closing fails: the
    /// descriptor is gone all the same, but the end counts as open.
    virtual std::int32_t closeReadHandle();
    virtual std::int32_t closeWriteHandle();
    /// Does nothing, and returns 0: here no end is inheritable.
    virtual std::int32_t makeReadHandleUninheritable() { return 0; }
    virtual std::int32_t makeWriteHandleUninheritable() { return 0; }

    /// Reads once, up to `length` bytes. Returns how many they are, 0 at the end of the data; -1, with an
    /// `errno`, after an error: EINTR when a signal came first whose handler does not let calls go on, EBADF
    /// when the end is closed. Behind a read of 4096 bytes or more that left nothing, other
    /// processes run first.
    virtual std::int32_t read(void *buffer, std::uint32_t length);
    /// Writes once. Returns how many bytes were taken, perhaps fewer than `length`; -1, with an `errno`,
    /// after an error: EINTR when such a signal came first, EPIPE (and no signal) when nobody reads any more,
    /// EBADF when the end is closed.
    virtual std::int32_t write(const void *buffer, std::uint32_t length);

    /// Returns a new stream on that end. Throws InternalInconsistencyException when the end is closed.
    virtual OSPipeInputStream *getInputStream();
    virtual OSPipeOutputStream *getOutputStream();

protected:
    BOOL setUp() override;

private:
    std::int32_t readHandle_ = -1;
    std::int32_t writeHandle_ = -1;
    BOOL isReadHandleOpen_ = NO;
    BOOL isWriteHandleOpen_ = NO;
    BOOL isDrained_ = NO; // the last read took a piece or more, and left nothing
};

#endif
