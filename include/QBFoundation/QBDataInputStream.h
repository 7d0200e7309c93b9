// Reading binary data.
#ifndef QBFOUNDATION_QBDATAINPUTSTREAM_H
#define QBFOUNDATION_QBDATAINPUTSTREAM_H

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBInputStreamWithKnownLength.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

/// Reads the bytes of a data object, which the stream keeps.
class QB_EXPORT QBDataInputStream : public QBInputStreamWithKnownLength {
public:
    QBDataInputStream() noexcept = default;
    ~QBDataInputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBDataInputStream *streamWithData(NSData *data) { return initWithData(data).autorelease(); }
    static Ref<QBDataInputStream> initWithData(NSData *data) {
        return qb::init<QBDataInputStream>(&QBDataInputStream::setUpWithData, data);
    }

    /// The next byte as a signed value.
    QB_EXPORT std::int32_t readByte() override {
        return next_ < directEnd_ ? static_cast<signed char>(*next_++) : readByteByBuffer();
    }
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;
    const void *takeBuffer(std::uint32_t length, std::int32_t *count) override;
    std::uint32_t byteLength() const override;
    void reset() override;

protected:
    /// The initialiser `initWithData:`.
    virtual BOOL setUpWithData(NSData *data);

private:
    std::int32_t readByteByBuffer();
    void moveTo(std::uint32_t position);
    void openWindow();
    const char *start() const { return static_cast<const char *>(sourceData_->bytes()); }
    std::uint32_t position() const { return next_ ? static_cast<std::uint32_t>(next_ - start()) : position_; }

    Ref<NSData> sourceData_;
    // Where `next_` is null, as for a subclass, which may have a primitive of its own, and for data that may
    // change.
    std::uint32_t position_ = 0;
    const char *end_ = nullptr; // of the data, where `next_` is used
};

#endif
