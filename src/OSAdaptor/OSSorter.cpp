#include <QBFoundation/OSAdaptor/OSSorter.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/PlainClasses.h"
#include "OSAdaptor/OSSorter.Collation.h"
#include "OSAdaptor/OSSorter.Passes.h"
#include "System/Iconv.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

// For fewer elements it costs more to make keys than to compare them as they are.
constexpr std::uint32_t kLeastForKeys = 200;

// Sets the collation of the environment, "C" when the machine has no locale of that name.
void setEnvironmentCollation() {
    if (!qb::sys::setlocale(LC_COLLATE, ""))
        qb::sys::setlocale(LC_COLLATE, "C");
}

// Sets the collation of the process. At its end, that of the environment is in force.
class CollationSetting {
public:
    explicit CollationSetting(NSString *locale) {
        const bool isName = locale->containsData() && locale->view().find('\0') == std::string_view::npos;
        isNamed_ = isName && qb::sys::setlocale(LC_COLLATE, locale->cString());
        if (!isNamed_)
            setEnvironmentCollation();
    }
    ~CollationSetting() {
        if (isNamed_)
            setEnvironmentCollation();
    }
    CollationSetting(const CollationSetting &) = delete;
    CollationSetting &operator=(const CollationSetting &) = delete;

private:
    bool isNamed_;
};

std::vector<id> sortedByFunction(std::span<const id> elements, std::span<const id> keys,
                                 OSSorterCompareFunction compare, void *context, std::int32_t direction) {
    struct Keyed {
        id element;
        id key;
    };
    std::vector<Keyed> items;
    items.reserve(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i)
        items.push_back({elements[i], keys[i]});
    qb::shellSort(items, [=](const Keyed &later, const Keyed &earlier) {
        return compare(later.key, earlier.key, context) == direction;
    });
    std::vector<id> sorted;
    sorted.reserve(elements.size());
    for (const Keyed &item : items)
        sorted.push_back(item.element);
    return sorted;
}

// Whether different elements are equal in the order, so that it leaves open which one comes first.
bool isOrderOpen(std::span<const id> elements, const std::vector<qb::Ranked> &ranked) {
    for (std::size_t i = 1; i < ranked.size(); ++i)
        if (ranked[i].rank == ranked[i - 1].rank &&
            elements[ranked[i].index] != elements[ranked[i - 1].index])
            return true;
    return false;
}

// Makes an ascending list a descending one.
void reverse(std::vector<qb::Ranked> &ranked) {
    std::reverse(ranked.begin(), ranked.end());
    const std::uint32_t last = ranked.front().rank;
    for (qb::Ranked &item : ranked)
        item.rank = last - item.rank;
}

std::vector<id> sortedByCollation(std::span<const id> elements, std::span<const id> keys,
                                  std::int32_t direction) {
    std::vector<qb::Ranked> ranked = qb::rankedByCollation(keys);
    if (direction > 0)
        reverse(ranked);
    if (isOrderOpen(elements, ranked))
        qb::orderTiesByPasses(ranked);
    std::vector<id> sorted;
    sorted.reserve(elements.size());
    for (const qb::Ranked &item : ranked)
        sorted.push_back(elements[item.index]);
    return sorted;
}

const char *textOf(id object) {
    const char *const text = object ? object->cStringValue() : nullptr;
    return text ? text : "";
}

} // namespace

Class *OSSorter::cls() {
    using Sorter = OSSorter;
    using Result = NSMutableArray *;
    static const qb::Method methods[] = {
        qb::maker<"sorterForLanguage:">(&Sorter::setUpForLanguage),
        qb::maker<"sorterForLanguage:valueFunction:">(&Sorter::setUpForLanguageValueFunction),
        qb::maker<"sorterForLanguage:compareFunction:">(&Sorter::setUpForLanguageCompareFunction),
        qb::maker<"sorterForLanguage:valueFunction:compareFunction:">(&Sorter::setUpWithLanguage),
        qb::initialiser<"initWithLanguage:valueFunction:compareFunction:">(&Sorter::setUpWithLanguage),
        qb::method<"sortArrayAscending:", Result(NSArray *)>(&Sorter::sortArrayAscending),
        qb::method<"sortArrayDescending:", Result(NSArray *)>(&Sorter::sortArrayDescending),
        qb::method<"sortArrayAscending:withContext:", Result(NSArray *, void *)>(&Sorter::sortArrayAscending),
        qb::method<"sortArrayDescending:withContext:", Result(NSArray *, void *)>(
            &Sorter::sortArrayDescending),
        qb::method<"_sortArray:withContext:direction:">(&Sorter::_sortArray),
    };
    static Class *const self = new Class("OSSorter", OSObject::cls(), methods, qb::construct<OSSorter>);
    return self;
}

OSSorter::~OSSorter() = default;

BOOL OSSorter::setUpForLanguage(NSString *language) {
    return setUpWithLanguage(language, nullptr, localeCompare);
}

BOOL OSSorter::setUpForLanguageValueFunction(NSString *language, OSSorterValueFunction valueFunction) {
    return setUpWithLanguage(language, valueFunction, localeCompare);
}

BOOL OSSorter::setUpForLanguageCompareFunction(NSString *language, OSSorterCompareFunction compareFunction) {
    return setUpWithLanguage(language, nullptr, compareFunction);
}

BOOL OSSorter::setUpWithLanguage(NSString *language, OSSorterValueFunction valueFunction,
                                 OSSorterCompareFunction compareFunction) {
    if (!compareFunction)
        throw InvalidArgumentException("OSSorter initWithLanguage:valueFunction:compareFunction: must have a "
                                       "compare function that is not NULL.");
    locale_ = localeForLanguage(language);
    valueFunction_ = valueFunction;
    compareFunction_ = compareFunction;
    return YES;
}

NSMutableArray *OSSorter::sortArrayAscending(NSArray *array, void *withContext) {
    return _sortArray(array, withContext, /*direction=*/-1);
}

NSMutableArray *OSSorter::sortArrayDescending(NSArray *array, void *withContext) {
    return _sortArray(array, withContext, /*direction=*/1);
}

NSMutableArray *OSSorter::_sortArray(NSArray *array, void *withContext, std::int32_t direction) {
    if (!array || array->count() < 2)
        return NSMutableArray::arrayWithArray(array);
    const Ref<NSArray> elements = array->copy(); // whatever the functions do to the array
    const Ref<NSArray> keys = valueFunction_ ? keysOf(elements, withContext) : elements;
    const CollationSetting setting(locale_);
    const bool usesKeys = compareFunction_ == &localeCompare && elements->count() >= kLeastForKeys &&
                          (direction == -1 || direction == 1);
    return NSMutableArray::initWith(usesKeys ? sortedByCollation(elements->view(), keys->view(), direction)
                                             : sortedByFunction(elements->view(), keys->view(),
                                                                compareFunction_, withContext, direction))
        .autorelease();
}

Ref<NSArray> OSSorter::keysOf(NSArray *elements, void *context) const {
    const auto keys = NSMutableArray::initWithCapacity(elements->count());
    for (id element : *elements)
        keys->addObjectAndQBNilIfNil(valueFunction_(element, context));
    return keys;
}

NSString *localeForLanguage(NSString *language) {
    static NSMutableDictionary *const locales = NSMutableDictionary::init().detach();
    if (!language || !language->containsData())
        return ""_ns;
    if (id known = locales->objectForKey(language))
        return static_cast<NSString *>(known);
    NSString *const locale = NSString::stringWithRestrictedFormat("%s.utf-8"_ns, language);
    locales->setObjectForKey(locale, language);
    return locale;
}

std::int32_t localeCompare(id a, id b, void *) {
    const char *text = textOf(a);
    std::string kept;
    if (b && !qb::isPlainString(b)) // which may do anything for its own
        text = (kept = text).c_str();
    const int order = std::strcoll(text, textOf(b));
    return order < 0 ? -1 : order > 0;
}
