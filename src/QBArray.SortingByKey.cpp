// Sorting of dictionaries, and of other objects with keys.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/NSArray.Tables.h"
#include "Foundation/Sort.h"

#include <algorithm>
#include <vector>

namespace {

// What the order goes by, from a key with or without ".REVERSE".
struct SortKey {
    explicit SortKey(NSString *text) : key(text ? NSString::initWith(text->view()) : nullptr) {
        NSArray *const components = key ? key->componentsSeparatedByString("."_ns) : NSArray::array();
        const std::uint32_t count = components->count();
        isReverse =
            count > 1 && static_cast<NSString *>(components->lastObject())->isCaseEqualTo("REVERSE"_ns);
        if (isReverse)
            key = components->subarrayWithRange({0, count - 1})->componentsJoinedByString("."_ns);
    }

    Ref<NSString> key; // whatever the elements do to the caller's
    bool isReverse;
};

struct Keyed {
    id element;
    id value; // nil when there is none
};

bool bothRespond(id a, id b, SEL selector) {
    return a->respondsToSelector(selector) && b->respondsToSelector(selector);
}

std::int32_t compareValues(id a, id b) {
    if (!a || !b)
        return (b ? 1 : 0) - (a ? 1 : 0);
    for (SEL selector : {SEL("caseInsensitiveCompare:"_sel), SEL("compare:"_sel)})
        if (bothRespond(a, b, selector))
            return qb::compareByMessage(a, selector, b);
    const Ref<NSString> text = a->stringValue(); // whatever the other one does for its text
    return qb::compareByMessage(text, "caseInsensitiveCompare:"_sel, b->stringValue());
}

} // namespace

std::span<const qb::Method> qb::tables::arraySortingByKey() {
    static const qb::Method methods[] = {
        qb::method<"caseInsensitiveSortedArrayByKey:">(&NSArray::caseInsensitiveSortedArrayByKey),
    };
    return methods;
}

NSArray *NSArray::caseInsensitiveSortedArrayByKey(NSString *key) const {
    const SortKey sortKey(key);
    const Ref<NSArray> elements = initWith(view()); // retained, whatever a comparison does to this array
    std::vector<Ref<NSObject>> values;
    std::vector<Keyed> sorted;
    for (id element : *elements) {
        const Ref<NSObject> value = send<Ref<NSObject>>(element, "objectForKey:"_sel, id{sortKey.key.get()});
        values.emplace_back(IsNil(value) ? nullptr : value.get());
        sorted.push_back({element, values.back()});
    }
    std::vector<Keyed> buffer(sorted.size());
    qb::mergeSort(std::span(sorted), std::span(buffer),
                  [](const Keyed &a, const Keyed &b) { return compareValues(a.value, b.value) > 0; });
    if (sortKey.isReverse)
        std::reverse(sorted.begin(), sorted.end());
    const auto result = NSMutableArray::initWithCapacity(count_);
    for (const Keyed &keyed : sorted)
        result->addObject(keyed.element);
    return arrayWithArray(result);
}
