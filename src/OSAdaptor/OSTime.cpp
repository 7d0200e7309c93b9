#include <QBFoundation/OSAdaptor/OSTime.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSTime.Text.h"
#include "System/Clock.h"

Class *OSTime::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"currentTimeMillis">(&OSTime::currentTimeMillis),
        qb::classMethod<"timeAsStringInSystemFormat">(&OSTime::timeAsStringInSystemFormat),
    };
    static Class *const self = new Class("OSTime", OSObject::cls(), methods);
    return self;
}

std::int64_t OSTime::currentTimeMillis() {
    return qb::sys::wallMilliseconds();
}

NSString *OSTime::timeAsStringInSystemFormat() {
    return NSString::stringWith(qb::currentTimeText());
}
