#include <QBFoundation/OSAdaptor/OSObject.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include <cerrno>
#include <cstring>

Class *OSObject::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"getErrorCode">(&OSObject::getErrorCode),
        qb::classMethod<"errorDescription">(&OSObject::errorDescription),
        qb::classMethod<"_getWindowsErrorCode">(&OSObject::_getWindowsErrorCode),
        qb::Method::ofFunction(
            "getErrorCode"_sel, +[](id) { return OSObject::getErrorCode(); }),
        qb::Method::ofFunction(
            "errorDescription"_sel, +[](id) { return OSObject::errorDescription(); }),
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
