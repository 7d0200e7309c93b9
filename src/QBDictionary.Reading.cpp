// Reading dictionaries with defaults, as paths, as texts and as arrays.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/Kept.h"
#include "Foundation/NSDictionary.Tables.h"
#include "Foundation/Nesting.h"

namespace {

constexpr const char *kFile = "src/QBDictAdditions";

struct KeysAndValues {
    static constexpr unsigned kDeepest = 256;
};

NSString *textOf(id object) {
    const qb::Kept kept(object); // whatever it does for its text
    if (auto *string = qb::castOrNil<NSString>(object))
        return string;
    return object ? object->stringValue() : nullptr;
}

} // namespace

std::span<const qb::Method> qb::tables::dictionaryReading() {
    static const qb::Method methods[] = {
        qb::method<"objectForKey:withDefault:", id(id, id)>(&NSDictionary::objectForKey),
        qb::method<"deepObjectForKey:withDefault:", id(NSString *, id)>(&NSDictionary::deepObjectForKey),
        qb::method<"intValueForKey:withDefault:">(&NSDictionary::intValueForKey),
        qb::method<"boolValueForKey:withDefault:">(&NSDictionary::boolValueForKey),
        qb::method<"pathForKey:withDefault:andDefaultBasePath:">(&NSDictionary::pathForKey),
        qb::method<"translateKey:">(&NSDictionary::translateKey),
        qb::method<"stringForKey:">(&NSDictionary::stringForKey),
        qb::method<"array">(&NSDictionary::array),
        qb::method<"arrayUsingKeysFromArray:">(&NSDictionary::arrayUsingKeysFromArray),
        qb::method<"allKeysAndValues">(&NSDictionary::allKeysAndValues),
        qb::method<"allKeysAndValuesRecursive:sorted:">(&NSDictionary::allKeysAndValuesRecursive),
    };
    return methods;
}

id NSDictionary::objectForKey(id key, id withDefault) const {
    const qb::Kept kept(withDefault); // whatever the key's operations do
    const id value = objectForKey(key);
    return value ? value : withDefault;
}

id NSDictionary::deepObjectForKey(NSString *key, id withDefault) const {
    const qb::Kept kept(withDefault); // as above
    const id value = deepObjectForKey(key);
    return value ? value : withDefault;
}

std::int32_t NSDictionary::intValueForKey(id key, std::int32_t withDefault) const {
    const qb::Kept value(objectForKey(key));
    return value.get() ? send<std::int32_t>(value.get(), "intValue"_sel) : withDefault;
}

BOOL NSDictionary::boolValueForKey(id key, BOOL withDefault) const {
    const qb::Kept value(objectForKey(key));
    return value.get() ? send<BOOL>(value.get(), "boolValue"_sel) : withDefault;
}

NSString *NSDictionary::pathForKey(id key, NSString *withDefault, NSString *defaultBasePath) const {
    const qb::Kept keptBase(defaultBasePath);
    NSString *const path = textOf(objectForKey(key, withDefault));
    const qb::Kept kept(path); // whatever makes the text of the other one
    if (!path || path->isAbsolutePath())
        return path;
    NSString *base = textOf(objectForKey("basedir"_ns, defaultBasePath));
    if (!base)
        base = ""_ns;
    return base->stringByAppendingPathComponent(path);
}

NSString *NSDictionary::stringForKey(id key) const {
    const qb::Kept value(objectForKey(key));
    return value.get() ? value.get()->stringValue() : nullptr;
}

NSArray *NSDictionary::array() const {
    const Ref<NSMutableArray> entries = NSMutableArray::init();
    for (const auto &[key, value] : *this) {
        entries->addObject(key);
        entries->addObject(value);
    }
    return NSArray::arrayWithArray(entries);
}

NSArray *NSDictionary::arrayUsingKeysFromArray(NSArray *keys) const {
    NSMutableArray *const values = NSMutableArray::array();
    if (keys)
        for (id key : *keys)
            values->addObjectIfNotNil(objectForKey(key));
    return values;
}

NSArray *NSDictionary::allKeysAndValuesRecursive(BOOL recursive, BOOL sorted) const {
    constexpr auto kThisOperation = "allKeysAndValuesRecursive:sorted:"_sel;
    const qb::Nesting<KeysAndValues> nesting(kFile, __LINE__);
    if (nesting.isTooDeep())
        return nullptr;
    NSMutableArray *const texts = NSMutableArray::array();
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> kept = key;
        texts->addObjectIfNotNil(key->stringValue());
    }
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> kept = value; // whatever its own values do for their texts
        if (recursive && value->respondsToSelector(kThisOperation))
            texts->addObjectsFromArray(send<NSArray *>(value, kThisOperation, recursive, BOOL{NO}));
        else
            texts->addObjectIfNotNil(value->stringValue());
        if (nesting.isTooDeep())
            return nullptr;
    }
    return sorted ? texts->sortedArrayUsingSelector("compare:"_sel) : texts;
}
