// What a process knows about itself.
#ifndef QBFOUNDATION_FOUNDATION_NSPROCESSINFO_H
#define QBFOUNDATION_FOUNDATION_NSPROCESSINFO_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>

/// The process: its arguments, environment, name and host.
class QB_EXPORT NSProcessInfo final : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the one object of the process.
    static NSProcessInfo *processInfo();

    /// Returns the program's arguments, its own name first, as the process was started with.
    NSArray *arguments() const;
    /// Returns the environment as it is now, autoreleased: values by name, strings both, in its own order.
    NSDictionary *environment() const;
    /// Returns the last component of the first argument, or what was set.
    NSString *processName() const;
    /// Sets what `processName` returns; nil changes nothing. The system does not see it.
    void setProcessName(NSString *name);
    std::int32_t processIdentifier() const;
    /// Returns the host's name, autoreleased; "localhost" when the system does not tell.
    NSString *hostName() const;
    /// Returns "Linux".
    NSString *operatingSystemName() const;
    /// Returns the kernel's release, such as "6.1.0-18-amd64", autoreleased; the empty string when the system
    /// does not tell.
    NSString *operatingSystemVersionString() const;
    /// Returns an identifier of letters, digits, ".", "-" and "_", autoreleased, that no other call returns,
    /// in this process or another, on this host or another.
    NSString *globallyUniqueString() const;

private:
    NSProcessInfo();

    Ref<NSArray> arguments_;
    Ref<NSString> name_;
};

#endif
