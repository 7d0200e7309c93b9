// Replacing a value wherever it stands inside arrays and dictionaries.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/DeepWalk.h"
#include "Foundation/NSArray.Tables.h"
#include "Foundation/NSDictionary.Tables.h"
#include "Foundation/Nesting.h"

#include <utility>
#include <vector>

namespace {

constexpr const char *kFile = "src/QBCollections";

struct Replacing {
    static constexpr unsigned kDeepest = 256; // takes up to 100 KiB of stack
};
using Nesting = qb::Nesting<Replacing>;

/// What is to be replaced by what. Both are kept, for an element's comparison may let go of them.
struct Replacement {
    Ref<NSObject> object, by;
    BOOL isRecursive;

    // Returns what stands in a container for `value` afterwards, nil when it is nested too deeply. The
    // value's own operations may take it out of there.
    Ref<NSObject> valueFor(const Ref<NSObject> &value) const {
        if (value->isEqual(object))
            return by ? by
                      : throw InvalidArgumentException(
                            "replace:with:recursive: must have an object that is not nil.");
        switch (isRecursive ? qb::containerKindOf(value) : qb::ContainerKind::none) {
        case qb::ContainerKind::array:
            return static_cast<NSArray *>(value.get())->asArrayWith(object, by, isRecursive);
        case qb::ContainerKind::dictionary:
            return static_cast<NSDictionary *>(value.get())->asDictionaryWith(object, by, isRecursive);
        default:
            return value;
        }
    }
};

// Returns a copy of the container in which that is done.
template <class Container>
auto replacedCopy(const Container *container, const Replacement &replacement) {
    auto copy = container->mutableCopy();
    const Nesting nesting(kFile, __LINE__);
    if (!nesting.isTooDeep())
        copy->replace(replacement.object, replacement.by, replacement.isRecursive);
    return nesting.isTooDeep() ? nullptr : copy.autorelease();
}

} // namespace

std::span<const qb::Method> qb::tables::arrayReplacing() {
    static const qb::Method methods[] = {
        qb::method<"asArrayWith:replacedBy:", NSMutableArray *(id, id)>(&NSArray::asArrayWith),
        qb::method<"asArrayWith:replacedBy:recursive:", NSMutableArray *(id, id, BOOL)>(
            &NSArray::asArrayWith),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableArrayReplacing() {
    static const qb::Method methods[] = {
        qb::method<"replace:with:recursive:">(&NSMutableArray::replace),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::dictionaryReplacing() {
    static const qb::Method methods[] = {
        qb::method<"asDictionaryWith:replacedBy:", NSMutableDictionary *(id, id)>(
            &NSDictionary::asDictionaryWith),
        qb::method<"asDictionaryWith:replacedBy:recursive:", NSMutableDictionary *(id, id, BOOL)>(
            &NSDictionary::asDictionaryWith),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableDictionaryReplacing() {
    static const qb::Method methods[] = {
        qb::method<"replace:with:recursive:">(&NSMutableDictionary::replace),
    };
    return methods;
}

NSMutableArray *NSArray::asArrayWith(id object, id replacedBy, BOOL recursive) const {
    return replacedCopy(this, {object, replacedBy, recursive});
}

NSMutableDictionary *NSDictionary::asDictionaryWith(id object, id replacedBy, BOOL recursive) const {
    return replacedCopy(this, {object, replacedBy, recursive});
}

// The new values are all made before one of them is stored, so that a failure changes nothing.

void NSMutableArray::replace(id object, id with, BOOL recursive) {
    const Replacement replacement{object, with, recursive};
    struct Change {
        std::uint32_t index;
        Ref<NSObject> old, value; // no destructor comes back before the last one is made
    };
    std::vector<Change> changes;
    std::uint32_t index = 0;
    for (id element : *this) {
        const Ref<NSObject> kept = element;
        const Ref<NSObject> value = replacement.valueFor(kept);
        if (!value)
            return;
        if (value.get() != kept.get())
            changes.push_back({index, kept, value});
        ++index;
    }
    for (const auto &[at, old, value] : changes)
        replaceObjectAtIndex(at, value);
}

void NSMutableDictionary::replace(id object, id with, BOOL recursive) {
    const Replacement replacement{object, with, recursive};
    std::vector<std::pair<Ref<NSObject>, Ref<NSObject>>> changes; // keys with their new values
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> keptKey = key, kept = value;
        const Ref<NSObject> newValue = replacement.valueFor(kept);
        if (!newValue)
            return;
        if (newValue.get() != kept.get())
            changes.emplace_back(keptKey, newValue);
    }
    for (const auto &[key, value] : changes)
        setObjectForKey(value, key);
}
