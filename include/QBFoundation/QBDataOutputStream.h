// Writing binary data.
#ifndef QBFOUNDATION_QBDATAOUTPUTSTREAM_H
#define QBFOUNDATION_QBDATAOUTPUTSTREAM_H

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/QBBufferOutputStream.h>

/// A memory sink whose content is a data object.
class QB_EXPORT QBDataOutputStream : public QBBufferOutputStream {
public:
    QBDataOutputStream() noexcept = default;
    ~QBDataOutputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBDataOutputStream *stream() { return init().autorelease(); }
    static QBDataOutputStream *streamWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<QBDataOutputStream> init() { return qb::init<QBDataOutputStream>(&QBDataOutputStream::setUp); }
    static Ref<QBDataOutputStream> initWithCapacity(std::uint32_t capacity) {
        return qb::init<QBDataOutputStream>(&QBDataOutputStream::setUpWithCapacity, capacity);
    }

    /// Returns what was written so far, the same object until the next write; nil when the stream has no
    /// buffer because an allocation failed.
    virtual NSData *targetData() const;

    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    void reset() override;

protected:
    BOOL setUpWithCapacity(std::uint32_t capacity) override;

private:
    mutable Ref<NSData> targetData_; // null: to be made from the buffer
};

#endif
