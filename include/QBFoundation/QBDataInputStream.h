// Reading binary data.
#ifndef QBFOUNDATION_QBDATAINPUTSTREAM_H
#define QBFOUNDATION_QBDATAINPUTSTREAM_H

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBInputStreamWithKnownLength.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>
#include <cstring>

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

    std::int32_t readBuffer(void *buffer, std::uint32_t length) override {
        if (buffer && std::uint64_t{position_} + length < directEnd_) [[likely]] {
            std::memcpy(buffer, bytes_ + position_, length);
            position_ += length;
            return static_cast<std::int32_t>(length);
        }
        return QBInputStream::readBuffer(buffer, length);
    }
    /// The next byte as a signed value.
    std::int32_t readByte() override {
        return position_ < directEnd_ ? bytes_[position_++] : readByteByBuffer();
    }
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;
    std::uint32_t byteLength() const override;
    void reset() override { position_ = 0; }

protected:
    /// The initialiser `initWithData:`.
    virtual BOOL setUpWithData(NSData *data);

private:
    std::int32_t readByteByBuffer();

    Ref<NSData> sourceData_;
    std::uint32_t position_ = 0;
    // Bytes below `directEnd_` are read without the primitive. 0 for a subclass, which may have its own, and
    // for data that may change.
    std::uint32_t directEnd_ = 0;
    const signed char *bytes_ = nullptr;
};

#endif
