// Enciphering and deciphering on the way to another stream.
#ifndef QBFOUNDATION_QBBLOWFISHOUTPUTFILTER_H
#define QBFOUNDATION_QBBLOWFISHOUTPUTFILTER_H

#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

extern "C" {

/// The subkeys of Blowfish before a key is mixed into them: the digits of pi behind the point, in base 16.
QB_EXPORT extern const std::uint32_t initial_PArray[18];
/// What the S-boxes begin as: the digits that follow.
QB_EXPORT extern const std::uint32_t initial_SBoxes[4][256];
}

/// Enciphers or deciphers what is written to it, and writes the result to its target, which it keeps. Used
/// for one stream, which `close` ends.
///
/// The cipher is Blowfish (Schneier, 1993) in cipher-block chaining. N bytes become 8 * (N / 8 + 3): a
/// header, the whole blocks, a block with the up to 7 bytes that are left, and one that tells how many those
/// are. The header is the enciphered block of the seed and the first number that `rand` gives when it is
/// seeded with that. What fills the last two blocks comes from `rand` too, so that a stream can be made again
/// from its seed if nobody else asks for random numbers in between; it need be no secret. `close` seeds
/// `rand` with the time in nanoseconds: what the process draws from it later does not follow from the seed.
///
/// It keeps others from reading a content, not from changing it: a stream that was changed on its way
/// deciphers to something else.
///
/// A filter in front of this one flushes it when it is closed, before the end is written: a base64 filter
/// behind it then has padding in its midst. Closing this one alone gives a text in one piece.
///
/// Each block of the result is one write of the target; a target that only collects bytes may get many blocks
/// at once. Keys and blocks are wiped from memory when the stream goes.
class QB_EXPORT QBBlowfishOutputFilter : public QBOutputStream {
public:
    QBBlowfishOutputFilter() noexcept = default;
    ~QBBlowfishOutputFilter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // All makers throw InvalidArgumentException when `target` is nil. A `randomSeed` of 0 is the time in
    // seconds. The header is written at once.

    /// Returns a filter that enciphers with a key that every program has: the result can't be read at a
    /// glance, no more.
    static QBBlowfishOutputFilter *streamWithTarget(QBOutputStream *target) {
        return initWithTarget(target).autorelease();
    }
    static Ref<QBBlowfishOutputFilter> initWithTarget(QBOutputStream *target) {
        return qb::init<QBBlowfishOutputFilter>(&QBBlowfishOutputFilter::setUpWithTarget, target);
    }
    static QBBlowfishOutputFilter *streamWithTarget(QBOutputStream *target, std::uint32_t randomSeed) {
        return initWithTargetRandomSeed(target, randomSeed).autorelease();
    }
    static Ref<QBBlowfishOutputFilter> initWithTargetRandomSeed(QBOutputStream *target,
                                                                std::uint32_t randomSeed) {
        return qb::init<QBBlowfishOutputFilter>(&QBBlowfishOutputFilter::setUpWithTargetRandomSeed, target,
                                                randomSeed);
    }
    /// Returns a filter that enciphers, or deciphers, with that key: the bytes of data, or of another
    /// object's `stringValue`; those from the 73rd on don't count. Returns nil when there are none.
    static QBBlowfishOutputFilter *streamWithKey(id key, BOOL decrypt, QBOutputStream *target) {
        return initWithKey(key, decrypt, target, /*randomSeed=*/0).autorelease();
    }
    static Ref<QBBlowfishOutputFilter> initWithKey(id key, BOOL decrypt, QBOutputStream *target,
                                                   std::uint32_t randomSeed) {
        return qb::init<QBBlowfishOutputFilter>(&QBBlowfishOutputFilter::setUpWithKey, key, decrypt, target,
                                                randomSeed);
    }

    virtual QBOutputStream *target() const { return target_.get(); }

    /// Enciphers or deciphers the bytes. Up to 7 are kept back, and up to 23 when deciphering.
    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    /// Flushes the target. Bytes that are kept back stay so.
    void flush() override;
    /// Writes what was kept back and the end of the stream, then closes the target. Nothing on a second call.
    ///
    /// When deciphering, raises 100239 if the stream is too short to have an end; what was written until then
    /// stays, and a target that replaces a file replaces it. A wrong key, and most changes on the way, are no
    /// error: they give garbage.
    void close() override;

    // --- The cipher alone ---

    /// Returns the block that the operations below work on: its halves "l" and "r", whose highest byte is the
    /// first. The stream's own work leaves it as it is.
    virtual std::uint32_t *data() { return secrets_.data; }
    /// Enciphers `data` with the stream's key.
    virtual void _blowfishEncryptBlock();
    virtual void _blowfishDecryptBlock();

protected:
    /// The initialiser `init`: throws InvalidUseOfMethodException, for there is no filter without a target.
    BOOL setUp() override;
    /// The initialiser `initWithTarget:`.
    virtual BOOL setUpWithTarget(QBOutputStream *target);
    /// The initialiser `initWithTarget:randomSeed:`.
    virtual BOOL setUpWithTargetRandomSeed(QBOutputStream *target, std::uint32_t randomSeed);
    /// The initialiser `initWithKey:decrypt:target:randomSeed:`.
    virtual BOOL setUpWithKey(id key, BOOL decrypt, QBOutputStream *target, std::uint32_t randomSeed);

private:
    /// What is wiped.
    struct Secrets {
        std::uint32_t data[2];
        std::uint32_t chain[2]; // the enciphered block before the next one
        std::uint32_t subkeys[18 + 4 * 256];
        char pending[24]; // bytes that are kept back
    };

    BOOL setUpWithKeyAndTarget(id key, BOOL decrypt, QBOutputStream *target) {
        return setUpWithKey(key, decrypt, target, /*randomSeed=*/0);
    }
    bool setKey(id key);
    void writeHeader(std::uint32_t randomSeed);
    bool gather(const char *&bytes, std::uint32_t &length, std::int32_t wanted);
    void encipher(const char *bytes, std::uint32_t length);
    void decipher(const char *bytes, std::uint32_t length);
    void convert(const char *bytes, std::uint32_t count, char *target);
    void writeBlocks(const char *bytes, std::uint32_t count);
    void writePendingBlock();
    void endEnciphering();
    void endDeciphering();

    Secrets secrets_{};
    std::int32_t pendingCount_ = 0;
    bool isDeciphering_ = false;
    bool isHeaderTaken_ = false; // when deciphering
    bool isClosed_ = false;
    Ref<QBOutputStream> target_;
};

#endif
