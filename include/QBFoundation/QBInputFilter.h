// The base of streams that read from another stream.
#ifndef QBFOUNDATION_QBINPUTFILTER_H
#define QBFOUNDATION_QBINPUTFILTER_H

#include <QBFoundation/QBInputStream.h>
#include <QBFoundation/Runtime/Ref.h>

/// Reads from a source, which the filter keeps. Subclasses change the bytes on their way: they override
/// `readBuffer` and `readByte`, which here hand on what the source delivers.
class QB_EXPORT QBInputFilter : public QBInputStream {
public:
    QBInputFilter() noexcept = default;
    ~QBInputFilter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Throws InvalidArgumentException when `source` is nil.
    static QBInputFilter *streamWithSource(QBInputStream *source) {
        return initWithSource(source).autorelease();
    }
    static Ref<QBInputFilter> initWithSource(QBInputStream *source) {
        return qb::init<QBInputFilter>(&QBInputFilter::setUpWithSource, source);
    }

    virtual QBInputStream *source() const { return source_.get(); }
    /// Closes the source.
    void close() override;
    std::int32_t readBuffer(void *buffer, std::uint32_t length) override;
    std::int32_t readByte() override;

protected:
    /// The initialiser `initWithSource:`.
    virtual BOOL setUpWithSource(QBInputStream *source);

private:
    Ref<QBInputStream> source_;
};

#endif
