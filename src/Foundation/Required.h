// Arguments that must not be nil.
#ifndef QBFOUNDATION_FOUNDATION_REQUIRED_H
#define QBFOUNDATION_FOUNDATION_REQUIRED_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>
#include <span>

namespace qb {

/// Throws InvalidArgumentException: "`operation` must have `what` that is not nil."
[[noreturn]] void throwMissing(const char *operation, const char *what);

/// Returns `object`, an argument of `operation`: class and selector. Throws when it is nil.
template <class T>
T *required(T *object, const char *operation, const char *what = "an argument") {
    if (!object)
        throwMissing(operation, what);
    return object;
}

/// Returns a copy of the object, of its kind. Throws when its class's `copyWithZone:` has made none.
template <class T>
Ref<T> requiredCopy(const T *object, const char *operation) {
    const Ref<NSObject> copy = object->copyWithZone(nullptr);
    return required(castOrNil<T>(copy), operation, "a copy of its kind");
}

/// Throws InvalidArgumentException: "`operation` must have less than 2^32 objects."
[[noreturn]] void throwTooMany(const char *operation);

/// Returns how many `objects` there are, an argument of `operation`. Throws for more than 32 bits count.
inline std::uint32_t countOf(std::span<const id> objects, const char *operation) {
    const std::uint64_t count = objects.size();
    if (count > UINT32_MAX)
        throwTooMany(operation);
    return static_cast<std::uint32_t>(count);
}

/// Throws InvalidArgumentException for more `bytes` than strings and data have: "`operation` must have a
/// result of less than 2^32 - 1 bytes."
void requireLength(std::uint64_t bytes, const char *operation);

} // namespace qb

#endif
