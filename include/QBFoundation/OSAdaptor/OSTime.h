// The time of day.
#ifndef QBFOUNDATION_OSADAPTOR_OSTIME_H
#define QBFOUNDATION_OSADAPTOR_OSTIME_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

/// Reads the clock of the wall. All operations are the class's; there are no objects.
class QB_EXPORT OSTime final : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the milliseconds since the epoch.
    static std::int64_t currentTimeMillis();
    /// Returns the local time as "%Y-%m-%d %H:%M:%S", autoreleased.
    static NSString *timeAsStringInSystemFormat();

private:
    OSTime() = default;
};

#endif
