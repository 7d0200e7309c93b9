// Base64 on its way to another stream.
#ifndef QBFOUNDATION_QBBASE64OUTPUTFILTER_H
#define QBFOUNDATION_QBBASE64OUTPUTFILTER_H

#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

/// Encodes or decodes what is written to it, and writes the result to its target, which it keeps (RFC 4648,
/// section 4, without line ends).
///
/// Each group of the result is one write of the target's primitive, four characters or up to three bytes; a
/// target that only collects bytes may get many groups at once. What is written is complete after `flush`.
class QB_EXPORT QBBase64OutputFilter : public QBOutputStream {
public:
    QBBase64OutputFilter() noexcept = default;
    ~QBBase64OutputFilter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a filter that encodes. Throws InvalidArgumentException when `target` is nil, as all makers do.
    static QBBase64OutputFilter *streamWithTarget(QBOutputStream *target) {
        return initWithTarget(target).autorelease();
    }
    static Ref<QBBase64OutputFilter> initWithTarget(QBOutputStream *target) {
        return qb::init<QBBase64OutputFilter>(&QBBase64OutputFilter::setUpWithTarget, target);
    }
    /// Returns a filter that decodes, whatever `decode` is.
    static QBBase64OutputFilter *streamWithTarget(QBOutputStream *target, BOOL decode) {
        return initWithTargetDecode(target, decode).autorelease();
    }
    static Ref<QBBase64OutputFilter> initWithTargetDecode(QBOutputStream *target, BOOL decode) {
        return qb::init<QBBase64OutputFilter>(&QBBase64OutputFilter::setUpWithTargetDecode, target, decode);
    }

    virtual QBOutputStream *target() const { return target_.get(); }

    /// Encodes or decodes the bytes. When decoding, white space is skipped, and the first group that is no
    /// base64 raises 50052 behind the errors that were pending; what follows it in this write is dropped, as
    /// it is after an error of the target.
    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    /// Completes the group that was begun, then flushes the target. Raises 50052 when decoding ends within a
    /// group, which is dropped.
    void flush() override;
    /// Flushes, then closes the target, also after an error.
    void close() override;

protected:
    /// The initialiser `init`: throws InvalidUseOfMethodException, for there is no filter without a target.
    BOOL setUp() override;
    /// The initialiser `initWithTarget:`.
    virtual BOOL setUpWithTarget(QBOutputStream *target);
    /// The initialiser `initWithTarget:decode:`.
    virtual BOOL setUpWithTargetDecode(QBOutputStream *target, BOOL decode);

private:
    void encode(const char *bytes, std::uint32_t length);
    void fillGroups(const char *&bytes, std::uint32_t &length);
    void fillGroup(const char *&bytes, std::uint32_t &length);
    void encodeGroups(const char *bytes, std::uint32_t count);
    void completeGroup();
    void decode(const char *position, const char *end);
    void decodeOneByOne(const char *position, const char *end);
    const char *decodeGroups(const char *position, const char *end);
    bool decodePending();

    char pending_[4] = {}; // bytes to encode, up to two, or characters to decode, up to three
    std::int32_t pendingCount_ = 0;
    bool isDecoding_ = false;
    Ref<QBOutputStream> target_;
};

#endif
