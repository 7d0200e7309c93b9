// Unique identifiers.
#ifndef QBFOUNDATION_IDCREATOR_H
#define QBFOUNDATION_IDCREATOR_H

#include <QBFoundation/Foundation/NSObject.h>

/// Makes identifiers that are unique among the processes of a host.
class QB_EXPORT IdCreator : public NSObject {
public:
    IdCreator() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a new identifier, autoreleased: a number of `rand`, the process id and a counter, then the
    /// current date as ISO text with milliseconds, all digits. The counter tells calls within one millisecond
    /// apart. `rand` is never seeded here.
    static NSString *createId();
};

#endif
