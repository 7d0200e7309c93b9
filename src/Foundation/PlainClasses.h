// Objects that are known to be of the library's own classes, for the paths that can't wait for virtual calls.
#ifndef QB_FOUNDATION_PLAINCLASSES_H
#define QB_FOUNDATION_PLAINCLASSES_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Send.h>

#include <cstdint>

namespace qb {

/// The dispatch keys of a class and its mutable subclass; null until static objects are made.
struct PlainKeys {
    const void *immutable;
    const void *changeable;

    bool hold(const void *key) const { return key == immutable || key == changeable; }
};

// Hidden, so that compilers know that no other library's take their place and read them where they are.
[[gnu::visibility("hidden")]] extern const PlainKeys plainStringKeys, plainArrayKeys, plainDictionaryKeys;

/// Whether the object is of one of the two classes and no subclass, so that its hash, its comparisons and its
/// bytes are what `NSString` says. May be false for them too, early at the program's start.
inline bool isPlainString(const NSObject *object) {
    return plainStringKeys.hold(dispatchKey(const_cast<NSObject *>(object)));
}

/// As above, for containers.
inline bool isPlainArray(const NSObject *object) {
    return plainArrayKeys.hold(dispatchKey(const_cast<NSObject *>(object)));
}
inline bool isPlainDictionary(const NSObject *object) {
    return plainDictionaryKeys.hold(dispatchKey(const_cast<NSObject *>(object)));
}
inline bool isPlainContainer(const NSObject *object) {
    return isPlainDictionary(object) || isPlainArray(object);
}

enum class PlainKind : std::uint8_t { other, string, array, dictionary };

/// Returns which of the three kinds the object is.
inline PlainKind plainKindOf(const NSObject *object) {
    const void *const key = dispatchKey(const_cast<NSObject *>(object));
    if (plainStringKeys.hold(key))
        return PlainKind::string;
    if (plainDictionaryKeys.hold(key))
        return PlainKind::dictionary;
    return plainArrayKeys.hold(key) ? PlainKind::array : PlainKind::other;
}

} // namespace qb

#endif
