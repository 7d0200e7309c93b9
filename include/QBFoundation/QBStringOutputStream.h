// Writing a text.
#ifndef QBFOUNDATION_QBSTRINGOUTPUTSTREAM_H
#define QBFOUNDATION_QBSTRINGOUTPUTSTREAM_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBBufferOutputStream.h>

/// A memory sink whose content is a string.
class QB_EXPORT QBStringOutputStream : public QBBufferOutputStream {
public:
    QBStringOutputStream() noexcept = default;
    ~QBStringOutputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBStringOutputStream *stream() { return init().autorelease(); }
    static QBStringOutputStream *streamWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<QBStringOutputStream> init() {
        return qb::init<QBStringOutputStream>(&QBStringOutputStream::setUp);
    }
    static Ref<QBStringOutputStream> initWithCapacity(std::uint32_t capacity) {
        return qb::init<QBStringOutputStream>(&QBStringOutputStream::setUpWithCapacity, capacity);
    }

    /// Returns what was written so far, the same object until the next write; nil when the stream has no
    /// buffer because an allocation failed.
    virtual NSString *targetString() const;

    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    void reset() override;

protected:
    BOOL setUpWithCapacity(std::uint32_t capacity) override;

private:
    mutable Ref<NSString> targetString_; // null: to be made from the buffer
};

#endif
