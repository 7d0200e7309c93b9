// Dictionaries made from others.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

std::span<const qb::Method> NSDictionary::makingMethods() {
    static const qb::Method methods[] = {
        qb::maker<"dictWithObjects:">(&NSDictionary::setUpWithObjects),
        qb::maker<"dictFrom:withKeys:">(&NSDictionary::setUpFrom),
        qb::maker<"dictFromDict:withKeys:">(&NSDictionary::setUpFromDictWithKeys),
        qb::maker<"dictFromDict:withGoodKeys:">(&NSDictionary::setUpFromDictWithGoodKeys),
        qb::maker<"dictFromDict:withGoodKeys:withSelector:">(&NSDictionary::setUpFromAnswers),
        qb::maker<"stringDictFromDict:withGoodKeys:">(&NSDictionary::setUpFromTexts),
        qb::method<"goodDict">(&NSDictionary::goodDict),
        qb::method<"stringDict">(&NSDictionary::stringDict),
        qb::method<"subDictWithKeys:">(&NSDictionary::subDictWithKeys),
        qb::method<"subDictWithoutKeys:">(&NSDictionary::subDictWithoutKeys),
        qb::method<"dictByPrefixingKeysWith:">(&NSDictionary::dictByPrefixingKeysWith),
        qb::method<"dictByAddingDict:">(&NSDictionary::dictByAddingDict),
    };
    return methods;
}

BOOL NSDictionary::setUpFrom(NSDictionary *dict, NSArray *keys) {
    if (!dict || !keys)
        return YES;
    const Ref<NSDictionary> kept = dict;  // whatever the keys' operations do
    for (const Ref<NSObject> key : *keys) // whose own operations may take it out of there
        if (const id value = dict->objectForKey(key))
            store(key, value);
    return YES;
}

BOOL NSDictionary::setUpFromDictWithKeys(NSDictionary *dict, NSArray *keys) {
    const Ref<NSDictionary> keptDict = dict; // whatever the keys' operations do
    const Ref<NSArray> keptKeys = keys;
    return setUpWithObjectsForKeys(dict ? dict->arrayUsingKeysFromArray(keys) : nullptr, keys);
}

BOOL NSDictionary::setUpFromDictWithGoodKeys(NSDictionary *dict, NSArray *goodKeys) {
    return setUpFromAnswers(dict, goodKeys, "objectForKey:"_sel);
}

BOOL NSDictionary::setUpFromTexts(NSDictionary *dict, NSArray *goodKeys) {
    return setUpFromAnswers(dict, goodKeys, "stringForKey:"_sel);
}

BOOL NSDictionary::setUpFromAnswers(NSDictionary *dict, NSArray *goodKeys, SEL selector) {
    if (!goodKeys)
        return YES;
    const Ref<NSDictionary> kept = dict;
    for (const Ref<NSObject> key : *goodKeys)
        if (const Ref<NSObject> answer = send<Ref<NSObject>>(dict, selector, key); !IsNil(answer))
            store(key, answer);
    return YES;
}

NSDictionary *NSDictionary::goodDict() const {
    return dictFromDictWithGoodKeys(static_cast<NSDictionary *>(self()), allKeys());
}

NSDictionary *NSDictionary::stringDict() const {
    return stringDictFromDict(static_cast<NSDictionary *>(self()), allKeys());
}

NSMutableDictionary *NSDictionary::subDictWithKeys(NSArray *keys) const {
    return NSMutableDictionary::dictFrom(static_cast<NSDictionary *>(self()), keys);
}

NSMutableDictionary *NSDictionary::subDictWithoutKeys(NSArray *keys) const {
    return subDictWithKeys(allKeys()->minus(keys));
}

NSDictionary *NSDictionary::dictByPrefixingKeysWith(NSString *prefix) const {
    if (!prefix)
        throw InvalidArgumentException(
            "NSDictionary dictByPrefixingKeysWith: must have a string that is not nil.");
    const Ref<NSString> front = prefix->copy(); // whatever the keys do for their texts
    Ref<NSDictionary> result = init();
    result->table_.reserve(count());
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> keptKey = key, kept = value;
        result->store(front->stringByAppendingString(keptKey->stringValue()), kept);
    }
    return result.autorelease();
}

NSDictionary *NSDictionary::dictByAddingDict(NSDictionary *dict) const {
    const Ref<NSDictionary> kept = dict; // whatever the keys' operations do
    Ref<NSDictionary> result = initWithDictionary(static_cast<NSDictionary *>(self()));
    if (dict)
        for (const auto &[key, value] : *dict)
            result->store(key, value);
    return result.autorelease();
}
