#include <QBFoundation/OSAdaptor/OSProcess.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Memory.h"
#include "System/Process.h"

Class *OSProcess::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"getCurrentPid">(&OSProcess::getCurrentPid),
        qb::classMethod<"getDataSegmentSize">(&OSProcess::getDataSegmentSize),
    };
    static Class *const self = new Class("OSProcess", OSObject::cls(), methods, qb::construct<OSProcess>);
    return self;
}

// --- This process ---

std::int32_t OSProcess::getCurrentPid() {
    return qb::sys::getpid();
}

std::int64_t OSProcess::getDataSegmentSize() {
    return qb::sys::dataSegmentEnd();
}
