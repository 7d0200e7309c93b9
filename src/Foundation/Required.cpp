#include "Foundation/Required.h"

#include <QBFoundation/Foundation/NSException.h>

#include <string>

void qb::throwMissing(const char *operation, const char *what) {
    throw InvalidArgumentException(std::string(operation) + " must have " + what + " that is not nil.");
}

void qb::throwTooMany(const char *operation) {
    throw InvalidArgumentException(std::string(operation) + " must have less than 2^32 objects.");
}

void qb::requireLength(std::uint64_t bytes, const char *operation) {
    if (bytes >= UINT32_MAX)
        throw InvalidArgumentException(std::string(operation) +
                                       " must have a result of less than 2^32 - 1 bytes.");
}
