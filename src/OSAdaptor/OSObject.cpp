#include <QBFoundation/OSAdaptor/OSObject.h>

#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include <cerrno>
#include <cstring>

Class *OSObject::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"getErrorCode">(&OSObject::getErrorCode),
        qb::classMethod<"errorDescription">(&OSObject::errorDescription),
        qb::classMethod<"_getWindowsErrorCode">(&OSObject::_getWindowsErrorCode),
        qb::Method::ofFunction(
            "getErrorCode"_sel,
            +[](id self) { return send<std::uint32_t>(self->classObject(), "getErrorCode"_sel); }),
        qb::Method::ofFunction(
            "errorDescription"_sel,
            +[](id self) { return send<const char *>(self->classObject(), "errorDescription"_sel); }),
    };
    static Class *const self = new Class("OSObject", NSObject::cls(), methods, qb::construct<OSObject>);
    return self;
}

std::uint32_t OSObject::getErrorCode() {
    return static_cast<std::uint32_t>(errno);
}

const char *OSObject::errorDescription() {
    return std::strerror(errno);
}
