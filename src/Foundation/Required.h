// Arguments that must not be nil.
#ifndef QBFOUNDATION_FOUNDATION_REQUIRED_H
#define QBFOUNDATION_FOUNDATION_REQUIRED_H

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

} // namespace qb

#endif
