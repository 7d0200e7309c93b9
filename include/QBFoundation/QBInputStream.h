// Where bytes are read from.
#ifndef QBFOUNDATION_QBINPUTSTREAM_H
#define QBFOUNDATION_QBINPUTSTREAM_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>
#include <cstring>

/// A source of bytes.
///
/// A concrete stream has `readByte` and, for speed, the primitive `_readBuffer`; callers use `readByte` and
/// `readBuffer`. Reading answers how many bytes were delivered, -1 at the end of the stream, and 0 only for a
/// request of 0 bytes or after an error that was raised, unless a class says otherwise. One call delivers at
/// most 2^31 - 1 bytes.
class QB_EXPORT QBInputStream : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Whether the bytes are raw ones rather than text. YES unless a class says otherwise.
    virtual BOOL isBinary() const { return YES; }
    /// Gives up what the stream holds; nothing here.
    virtual void close() {}
    /// Reads up to `length` bytes.
    /// Throws InvalidArgumentException when `buffer` is null, also for a length of 0.
    QB_EXPORT virtual std::int32_t readBuffer(void *buffer, std::uint32_t length) {
        if (buffer && std::int64_t{length} < directEnd_ - next_) [[likely]] {
            std::memcpy(buffer, next_, length);
            next_ += length;
            return static_cast<std::int32_t>(length);
        }
        return readBufferByPrimitive(buffer, length);
    }
    /// Returns the next byte, or -1 at the end.
    ///
    /// Most sources deliver it as a signed value, so that 0xFF looks like the end: bytes that may have any
    /// value are read with `readBuffer`. Throws InvalidUseOfMethodException here.
    virtual std::int32_t readByte();
    /// `readByte` for loops over single bytes: bytes that the stream has at hand come without a virtual call.
    std::int32_t getByte() { return next_ < directEnd_ ? static_cast<signed char>(*next_++) : readByte(); }
    /// Returns the stream itself, so that it can stand where the owner of a stream is expected.
    virtual QBInputStream *getInputStream() { return this; }

    // --- For subclasses ---

    /// The primitive: reads up to `length` bytes. Here it asks `readByte` for each, up to the first -1; for a
    /// length of 0 it is -1.
    virtual std::int32_t _readBuffer(void *buffer, std::uint32_t length);

    // --- For copies ---

    /// Reads up to `length` bytes, more than 0, without a copy: returns where they are, as long as the stream
    /// is there, and stores how many, 0 at its end.
    ///
    /// Null, as here, when none are in memory that doesn't change, or when a subclass may want to see each
    /// read: `readBuffer` delivers then what there is.
    virtual const void *takeBuffer(std::uint32_t length, std::int32_t *count);

protected:
    // A stream with bytes at hand has them from `next_` on; those below `directEnd_` are read without a call
    // of `readByte` or `_readBuffer`. There are none of them in a subclass, which may want to see each read.
    const char *next_ = nullptr;
    const char *directEnd_ = nullptr;

private:
    std::int32_t readBufferByPrimitive(void *buffer, std::uint32_t length);
};

#endif
