// This process and others.
#ifndef QBFOUNDATION_OSADAPTOR_OSPROCESS_H
#define QBFOUNDATION_OSADAPTOR_OSPROCESS_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

/// A process.
class QB_EXPORT OSProcess : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- This process ---

    /// Returns the id of this process.
    static std::int32_t getCurrentPid();
    /// Returns the address of the end of the data segment, from which its growth can be seen.
    static std::int64_t getDataSegmentSize();
};

#endif
