// Checks of a dictionary's keys.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSDictionary.Tables.h"

namespace {

// An array, or nil for what stands for none. Throws InvalidArgumentException for any other object.
Ref<NSArray> arrayOrNil(id keys) {
    return IsNil(keys) ? nullptr : qb::Value(keys).as<NSArray *>();
}

} // namespace

std::span<const qb::Method> qb::tables::dictionaryChecks() {
    static const qb::Method methods[] = {
        qb::method<"badKeysForGoodKeys:disallowNilForKeys:", NSArray *(id, id)>(
            &NSDictionary::badKeysForGoodKeys),
        qb::method<"badKeysForGoodKeys:", NSArray *(id)>(&NSDictionary::badKeysForGoodKeys),
        qb::method<"badKeysForDisallowNilKeys:">(&NSDictionary::badKeysForDisallowNilKeys),
        qb::method<"keysContainedBy:">(&NSDictionary::keysContainedBy),
    };
    return methods;
}

NSArray *NSDictionary::badKeysForGoodKeys(id goodKeys, id disallowNilForKeys) const {
    const Ref<NSObject> kept = goodKeys, keptToo = disallowNilForKeys; // whatever they do when asked for nil
    const Ref<NSArray> allowed = arrayOrNil(goodKeys), required = arrayOrNil(disallowNilForKeys);
    NSMutableArray *const bad = NSMutableArray::array();
    if (allowed)
        bad->addObjectsFromArray(allKeys()->badElementsForGoodElements(allowed));
    if (required)
        for (const Ref<NSObject> key : *required)
            if (const Ref<NSObject> value = objectForKey(key); IsNil(value))
                bad->addObject(key);
    return bad->containsData() ? bad : nullptr;
}

NSArray *NSDictionary::keysContainedBy(NSArray *keys) const {
    NSMutableArray *const contained = NSMutableArray::array();
    if (keys)
        for (const Ref<NSObject> key : *keys)
            if (objectForKey(key))
                contained->addObject(key);
    return contained->containsData() ? contained : nullptr;
}
