#include <QBFoundation/OSAdaptor/OSEnvironment.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Process.h"

#include <cerrno>

Class *OSEnvironment::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"getEnv:">(&OSEnvironment::getEnv),
        qb::classMethod<"putEnv:">(&OSEnvironment::putEnv),
        qb::classMethod<"unsetEnv:">(&OSEnvironment::unsetEnv),
        qb::classMethod<"getEnvironment">(&OSEnvironment::getEnvironment),
    };
    static Class *const self =
        new Class("OSEnvironment", OSObject::cls(), methods, qb::construct<OSEnvironment>);
    return self;
}

const char *OSEnvironment::getEnv(const char *name) {
    return name ? qb::sys::getenv(name) : nullptr;
}

std::int32_t OSEnvironment::putEnv(char *nameAndValue) {
    if (nameAndValue)
        return qb::sys::putenv(nameAndValue);
    errno = EINVAL;
    return -1;
}

std::int32_t OSEnvironment::unsetEnv(const char *name) {
    if (name)
        qb::sys::unsetenv(name);
    return 0;
}

char **OSEnvironment::getEnvironment() {
    return qb::sys::environment();
}
