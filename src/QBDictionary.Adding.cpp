// Storing values that may be absent, and many at once.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSDictionary.Tables.h"

namespace {

bool hasOneOf(NSArray *prefixes, NSString *text) {
    if (text)
        for (id prefix : *prefixes)
            if (text->hasPrefix(qb::Value(prefix).as<NSString *>()))
                return true;
    return false;
}

} // namespace

std::span<const qb::Method> qb::tables::mutableDictionaryAdding() {
    using Dictionary = NSMutableDictionary;
    static const qb::Method methods[] = {
        qb::method<"setObjectIfNotNil:forKey:">(&Dictionary::setObjectIfNotNil),
        qb::method<"setObjectIfNotQBNil:forKey:">(&Dictionary::setObjectIfNotQBNil),
        qb::method<"setObjectAndQBNilIfIsNil:forKey:">(&Dictionary::setObjectAndQBNilIfIsNil),
        qb::method<"setObjects:forKeys:">(&Dictionary::setObjects),
        qb::method<"setObject:forKeys:">(&Dictionary::setObjectForKeys),
        qb::method<"removeObjectsForKeysWithPrefixes:">(&Dictionary::removeObjectsForKeysWithPrefixes),
    };
    return methods;
}

// --- safeAdding ---

void NSMutableDictionary::setObjectIfNotNil(id object, id forKey) {
    if (object)
        setObjectForKey(object, forKey);
    else
        removeObjectForKey(forKey);
}

void NSMutableDictionary::setObjectIfNotQBNil(id object, id forKey) {
    const Ref<NSObject> keptObject = object, keptKey = forKey; // whatever the object does when it is asked
    setObjectIfNotNil(IsNil(object) ? nullptr : object, forKey);
}

void NSMutableDictionary::setObjectAndQBNilIfIsNil(id object, id forKey) {
    const Ref<NSObject> keptObject = object, keptKey = forKey;
    setObjectForKey(IsNil(object) ? QBNil::value() : object, forKey);
}

// --- arrayAdding ---

void NSMutableDictionary::setObjects(NSArray *objects, NSArray *forKeys) {
    const std::uint32_t count = objects ? objects->count() : 0;
    if (count != (forKeys ? forKeys->count() : 0))
        throw InvalidArgumentException(
            "NSMutableDictionary setObjects:forKeys: must have both arguments of the same size");
    const Ref<NSArray> keptObjects = objects, keptKeys = forKeys; // which an old value may own
    for (std::uint32_t i = 0; i < count; ++i)
        setObjectForKey(objects->objectAtIndex(i), forKeys->objectAtIndex(i));
}

void NSMutableDictionary::setObjectForKeys(id object, NSArray *forKeys) {
    if (!forKeys)
        return;
    const Ref<NSObject> keptObject = object; // which an old value may own
    const Ref<NSArray> keptKeys = forKeys;
    for (id key : *forKeys)
        setObjectForKey(object, key);
}

// --- QBDictAdditions ---

void NSMutableDictionary::removeObjectsForKeysWithPrefixes(NSArray *prefixes) {
    if (!prefixes)
        return;
    const Ref<NSArray> kept = prefixes; // which a removed value may own
    const Ref<NSArray> keys = allKeys();
    for (id key : *keys)
        if (hasOneOf(prefixes, qb::castOrNil<NSString>(key)))
            removeObjectForKey(key);
}
