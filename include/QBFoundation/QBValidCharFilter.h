// Text for XML on its way to another stream.
#ifndef QBFOUNDATION_QBVALIDCHARFILTER_H
#define QBFOUNDATION_QBVALIDCHARFILTER_H

#include <QBFoundation/QBOutputStream.h>
#include <QBFoundation/Runtime/Ref.h>

/// Hands what is written to it on to its target, which it keeps, without the bytes that XML does not allow:
/// those below 32 other than tab, line feed and carriage return. Each that it removes is logged as a
/// "warning".
class QB_EXPORT QBValidCharFilter : public QBOutputStream {
public:
    QBValidCharFilter() noexcept = default;
    ~QBValidCharFilter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InvalidArgumentException when `target` is nil.
    static QBValidCharFilter *streamWithTarget(QBOutputStream *target) {
        return initWithTarget(target).autorelease();
    }
    static Ref<QBValidCharFilter> initWithTarget(QBOutputStream *target) {
        return qb::init<QBValidCharFilter>(&QBValidCharFilter::setUpWithTarget, target);
    }

    virtual QBOutputStream *target() const { return target_.get(); }

    /// Writes the valid bytes at once; the target is flushed when there were others.
    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    /// Writes the byte when it is valid. Bytes from 128 on are not valid here, although they are inside a
    /// buffer.
    void writeByte(char byte) override;
    /// Flushes the target.
    void flush() override;
    /// Flushes, then closes the target.
    void close() override;

protected:
    /// The initialiser `init`: throws InvalidUseOfMethodException, for there is no filter without a target.
    BOOL setUp() override;
    /// The initialiser `initWithTarget:`.
    virtual BOOL setUpWithTarget(QBOutputStream *target);

private:
    Ref<QBOutputStream> target_;
};

#endif
