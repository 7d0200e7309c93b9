// The base of the classes that stand on the operating system.
#ifndef QBFOUNDATION_OSADAPTOR_OSOBJECT_H
#define QBFOUNDATION_OSADAPTOR_OSOBJECT_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

/// Tells what the last failed system call has left behind.
class QB_EXPORT OSObject : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<OSObject> init() { return qb::init<OSObject>(&OSObject::setUp); }

    /// Returns the current `errno`. Objects answer it as the class does.
    static std::uint32_t getErrorCode();
    /// Returns the system's text for the current `errno`, valid until the next call that asks for one.
    /// Objects answer it as the class does.
    static const char *errorDescription();
    /// Returns 0: this system has no such code.
    static std::uint32_t _getWindowsErrorCode() { return 0; }
};

#endif
