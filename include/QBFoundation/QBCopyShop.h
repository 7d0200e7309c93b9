// Copies from stream to stream.
#ifndef QBFOUNDATION_QBCOPYSHOP_H
#define QBFOUNDATION_QBCOPYSHOP_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

class QBInputStream;
class QBOutputStream;

/// Copies what a source still has into a sink, piece by piece: each piece is one read and one write.
///
/// A copy ends where the source does, where it answers that nothing came in time, and after the piece with
/// which an error is raised. That error is pending afterwards, behind those of before. Neither stream is
/// flushed or closed. Raises 100156 when there is no memory for a piece; nothing is copied then. All copies
/// throw InvalidArgumentException when a stream is nil.
class QB_EXPORT QBCopyShop : public NSObject {
public:
    QBCopyShop() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBCopyShop *copyShop() { return init().autorelease(); }
    static Ref<QBCopyShop> init() { return qb::init<QBCopyShop>(&QBCopyShop::setUp); }
    /// `bufferSize`: the bytes of a piece; 0 means 65536, as `init` does.
    static QBCopyShop *copyShopWithBufferSize(std::uint32_t bufferSize) {
        return initWithBufferSize(bufferSize).autorelease();
    }
    static Ref<QBCopyShop> initWithBufferSize(std::uint32_t bufferSize) {
        return qb::init<QBCopyShop>(&QBCopyShop::setUpWithBufferSize, bufferSize);
    }

    /// Copies all. Returns how many bytes were read for it, those of a write that failed included.
    ///
    /// Raises 900030 (how many) after a copy of more than 2^31 - 1 bytes, for which it returns that number.
    virtual std::int32_t copyFrom(QBInputStream *from, QBOutputStream *to);
    /// As above, by `readBuffer:length:timeout:`, which the streams of sockets have; `timeout`: milliseconds
    /// that each read waits. Throws InvalidArgumentException when the source has no such operation.
    virtual std::int32_t copyFromToTimeout(QBInputStream *from, QBOutputStream *to, std::int64_t timeout);
    /// Copies `length` bytes, or all when there are less. Returns how many, counted as above.
    virtual std::uint32_t copyFromToLength(QBInputStream *from, QBOutputStream *to, std::uint32_t length);
    virtual std::uint32_t copyFromToLength(QBInputStream *from, QBOutputStream *to, std::uint32_t length,
                                           std::int64_t timeout);

protected:
    /// The initialiser `init`.
    BOOL setUp() override { return setUpWithBufferSize(0); }
    /// The initialiser `initWithBufferSize:`.
    virtual BOOL setUpWithBufferSize(std::uint32_t bufferSize);

private:
    std::int32_t copyAll(QBInputStream *from, QBOutputStream *to, const std::int64_t *timeout) const;
    std::uint64_t copyUpTo(std::uint64_t limit, QBInputStream *from, QBOutputStream *to,
                           const std::int64_t *timeout) const;

    static constexpr std::uint32_t kDefaultBufferSize = 65536;

    std::uint32_t bufferSize_ = kDefaultBufferSize;
};

#endif
