// The environment of the process.
#ifndef QBFOUNDATION_OSADAPTOR_OSENVIRONMENT_H
#define QBFOUNDATION_OSADAPTOR_OSENVIRONMENT_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

/// The environment, in C strings; `NSDictionary` `dictionaryWithEnvironment` has it as an object.
class QB_EXPORT OSEnvironment : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the value of the variable `name`, the environment's own bytes; null when there is none.
    static const char *getEnv(const char *name);
    /// Makes `nameAndValue`, "NAME=value", part of the environment, which goes on using these very bytes.
    /// Returns 0; without memory, or for null, another number and an `errno`.
    static std::int32_t putEnv(char *nameAndValue);
    /// Removes the variable. Returns 0, whether there was one or not.
    static std::int32_t unsetEnv(const char *name);
    /// Returns the environment itself, "NAME=value" each and a null at the end; null when it was cleared.
    static char **getEnvironment();
};

#endif
