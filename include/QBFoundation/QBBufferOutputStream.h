// Writing to memory.
#ifndef QBFOUNDATION_QBBUFFEROUTPUTSTREAM_H
#define QBFOUNDATION_QBBUFFEROUTPUTSTREAM_H

#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>
#include <cstring>
#include <typeinfo>

/// A sink that collects bytes in one growing buffer; its subclasses tell what was written.
///
/// The buffer doubles while it is small and then grows by 32 KiB or the whole length of a write. When the
/// memory for it is missing, or it would pass 2^32 - 1 bytes, what was collected is dropped with the write
/// that needed it, and 100156 is raised.
class QB_EXPORT QBBufferOutputStream : public QBOutputStream {
public:
    QBBufferOutputStream() noexcept = default;
    ~QBBufferOutputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a stream with room for 1024 bytes, autoreleased.
    static QBBufferOutputStream *stream() { return init().autorelease(); }
    static QBBufferOutputStream *streamWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<QBBufferOutputStream> init() {
        return qb::init<QBBufferOutputStream>(&QBBufferOutputStream::setUp);
    }
    /// Returns a stream with room for exactly `capacity` bytes. Raises 100156 when there is no memory for
    /// them.
    static Ref<QBBufferOutputStream> initWithCapacity(std::uint32_t capacity) {
        return qb::init<QBBufferOutputStream>(&QBBufferOutputStream::setUpWithCapacity, capacity);
    }

    QB_EXPORT void writeBuffer(const void *buffer, std::uint32_t length) override {
        if (buffer && std::int64_t{length} < directEnd_ - next_) [[likely]]
            append(buffer, length);
        else
            QBOutputStream::writeBuffer(buffer, length);
    }
    QB_EXPORT void writeByte(char byte) override {
        if (next_ < directEnd_) [[likely]]
            *next_++ = byte;
        else
            _writeBuffer(&byte, 1);
    }
    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    /// Drops what was written and the buffer; the new one has 1024 bytes.
    void reset() override;

    /// How many bytes the buffer has room for.
    std::uint32_t bufLength() const { return bufLength_; }
    /// How many bytes were written.
    std::uint32_t byteCounter() const { return static_cast<std::uint32_t>(next_ - buf_); }

protected:
    char *findJoinedRoom(std::uint32_t unit, std::uint32_t &count) override;
    /// The initialiser `init`: `initWithCapacity:` with 1024.
    BOOL setUp() override { return setUpWithCapacity(kDefaultCapacity); }
    /// The initialiser `initWithCapacity:`.
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);

    /// Lets `writeBuffer` and `writeByte` store without a call of `_writeBuffer` while the buffer has room,
    /// if the object is a `T` and not of a subclass, which may want to see each write. `T` calls it when it
    /// is set up.
    template <class T>
    void allowDirectWrites() {
        isDirect_ = isDirect_ || typeid(*this) == typeid(T);
        updateDirectEnd();
    }
    /// Makes the next write one of `_writeBuffer`.
    void announceNextWrite() const { directEnd_ = buf_; }
    /// From how many bytes on the buffer is worth giving away. Fewer are copied, so that no small object
    /// keeps a large buffer.
    static constexpr std::uint32_t kWorthGiving = 65536;
    /// Gives the buffer's memory to another object, which doesn't change it and keeps it until the next write
    /// or reset is done: a write takes a copy first.
    void giveBufferAway() const {
        isGivenAway_ = true;
        announceNextWrite();
    }
    /// Returns where a write of up to `length` bytes may be stored, for `endDirectWrite` to count; null when
    /// it has to go through `writeBuffer`.
    char *beginDirectWrite(std::uint64_t length) const {
        return static_cast<std::int64_t>(length) < directEnd_ - next_ ? next_ : nullptr;
    }
    void endDirectWrite(char *end) { next_ = end; }
    /// The bytes that were written, `byteCounter()` of them; null after a failed allocation.
    const char *buf() const { return buf_; }
    /// The same with a NUL behind them; null where the buffer has no room for one.
    const char *terminatedBuf() const;

private:
    static constexpr std::uint32_t kDefaultCapacity = 1024;

    bool allocate(std::uint32_t capacity);
    void freeBuffer();
    bool copyBack();
    bool grow(std::uint32_t length);
    void append(const void *buffer, std::uint32_t length) {
        // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): where there is room, there is a buffer
        std::memcpy(next_, buffer, length);
        next_ += length;
    }
    void updateDirectEnd() { directEnd_ = isDirect_ ? buf_ + bufLength_ : buf_; }

    std::uint32_t bufLength_ = 0;
    char *buf_ = nullptr;
    mutable bool isGivenAway_ = false; // the buffer is another's
    bool isDirect_ = false;            // whether `directEnd_` may be the buffer's end
};

#endif
