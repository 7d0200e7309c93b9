#include <QBFoundation/IdCreator.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Process.h"

namespace {
std::uint32_t nextNumber = 0; // unsigned, so that it may wrap
} // namespace

Class *IdCreator::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"createId">(&IdCreator::createId),
    };
    static Class *const self = new Class("IdCreator", NSObject::cls(), methods, qb::construct<IdCreator>);
    return self;
}

NSString *IdCreator::createId() {
    const auto number = static_cast<std::int32_t>(nextNumber++);
    return NSString::stringWithRestrictedFormat("%d%d%d%s", qb::sys::rand(), OSProcess::getCurrentPid(),
                                                number,
                                                NSString::currentDateAsISODateTimeStringWithMilliSeconds());
}
