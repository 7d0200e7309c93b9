// Writing pieces.
#ifndef QBFOUNDATION_QBARRAYOUTPUTSTREAM_H
#define QBFOUNDATION_QBARRAYOUTPUTSTREAM_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

/// A sink that keeps each write as an element of its own: bytes as data, values as the values themselves.
class QB_EXPORT QBArrayOutputStream : public QBOutputStream {
public:
    QBArrayOutputStream() = default;
    ~QBArrayOutputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBArrayOutputStream *stream() { return init().autorelease(); }
    static Ref<QBArrayOutputStream> init() {
        return qb::init<QBArrayOutputStream>(&QBArrayOutputStream::setUp);
    }

    /// The array itself, to which further writes go.
    virtual NSMutableArray *targetArray() const { return targetArray_.get(); }

    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    /// Appends the object as it is. Throws InvalidArgumentException when it is nil.
    void writeObject(id object) override;
    /// Flushes, then empties the array.
    void reset() override;

private:
    Ref<NSMutableArray> targetArray_ = NSMutableArray::init();
};

#endif
