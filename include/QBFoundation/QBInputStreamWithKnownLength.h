// Sources whose length is known before they are read.
#ifndef QBFOUNDATION_QBINPUTSTREAMWITHKNOWNLENGTH_H
#define QBFOUNDATION_QBINPUTSTREAMWITHKNOWNLENGTH_H

#include <QBFoundation/QBInputStream.h>

/// A source that knows its length and can be read again from its start.
class QB_EXPORT QBInputStreamWithKnownLength : public QBInputStream {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// How many bytes the whole stream has. Throws InvalidUseOfMethodException here, as does `reset`.
    virtual std::uint32_t byteLength() const;
    /// Goes back to the first byte.
    virtual void reset();
    /// Whether both streams have the same bytes. Streams of different lengths are not read; others stand at
    /// their first byte afterwards.
    ///
    /// A stream that fails while it is read counts as one that ends there, its error is pending. NO for nil.
    /// Raises 100156 and answers NO when there is no memory for two buffers of 64 KiB.
    virtual BOOL providesSameDataAs(QBInputStreamWithKnownLength *other);
};

#endif
