#include "Sorting.h"

#include "Values.h"

#include <clocale>

namespace publish {

namespace {

// The value function of a sorter; its context is the key.
id valueUnder(id element, void *key) {
    return send<id>(element, "objectForKey:"_sel, static_cast<id>(static_cast<NSString *>(key)));
}

// nil where a value on the way has no keys, but an element without keys is an error.
id valueAt(id element, const KeyPath &path) {
    const id value = valueUnder(element, path.first);
    const qb::SavedErrors missingKeys(qb::SavedErrors::kDiscard);
    return value ? value->deepObjectForKey(path.rest) : nullptr;
}

bool hasLocale(NSString *language) {
    const bool isThere = std::setlocale(LC_COLLATE, localeForLanguage(language)->cString());
    std::setlocale(LC_COLLATE, "");
    return isThere;
}

// Sorts by what a key leads to that goes through dictionaries in the elements.
NSArray *sortedByPath(NSArray *list, const KeyPath &path, bool isReverse, NSString *language) {
    NSMutableArray *const pairs = NSMutableArray::array();
    for (id element : *list) {
        NSMutableDictionary *const pair = NSMutableDictionary::dictionary();
        pair->setObjectForKey(element, "element"_ns);
        if (id value = valueAt(element, path))
            pair->setObjectForKey(value, "value"_ns);
        pairs->addObject(pair);
    }
    NSMutableArray *const sorted = NSMutableArray::array();
    for (id pair : *sortedByKey(pairs, isReverse ? "value.REVERSE"_ns : "value"_ns, language))
        sorted->addObject(static_cast<NSDictionary *>(pair)->objectForKey("element"_ns));
    return sorted;
}

} // namespace

NSArray *sortedByKey(NSArray *list, NSString *key, NSString *language) {
    NSString *const reverse = ".REVERSE"_ns;
    const bool isReverse = key->uppercaseString()->hasSuffix(reverse);
    NSString *const plainKey = isReverse ? key->substringToIndex(key->length() - reverse->length()) : key;
    if (plainKey->rangeOfString("."_ns).length != 0)
        return sortedByPath(list, keyPathOf(plainKey->view()), isReverse, language);
    NSMutableArray *const texts = NSMutableArray::array(); // elements with one
    NSMutableArray *const others = NSMutableArray::array();
    bool isForLanguage = language && hasLocale(language);
    for (id element : *list) {
        const id value = isForLanguage ? valueUnder(element, plainKey) : nullptr;
        isForLanguage = isForLanguage && (!value || qb::castOrNil<NSString>(value));
        (value ? texts : others)->addObject(element);
    }
    if (!isForLanguage)
        return list->caseInsensitiveSortedArrayByKey(key);
    OSSorter *const sorter = OSSorter::sorterForLanguageValueFunction(language, valueUnder);
    NSArray *const sorted =
        sorter->sortArrayAscending(texts, plainKey)->arrayByAddingObjectsFromArray(others);
    return isReverse ? sorted->reversedArray() : sorted;
}

} // namespace publish
