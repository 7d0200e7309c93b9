// Sorting by the rules of a language.
#ifndef QBFOUNDATION_OSADAPTOR_OSSORTER_H
#define QBFOUNDATION_OSADAPTOR_OSSORTER_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

class NSArray;
class NSMutableArray;

/// Returns what an element is sorted by; nil counts as the null object.
using OSSorterValueFunction = id (*)(id element, void *context);
/// Returns -1, 0 or 1 when `a` belongs before, beside or behind `b`. Other numbers count as 0.
using OSSorterCompareFunction = std::int32_t (*)(id a, id b, void *context);

extern "C" {

/// Returns the name of the language's locale, "de_DE.utf-8" for "de_DE", always the same string for the same
/// language; the empty string for a language without content.
QB_EXPORT NSString *localeForLanguage(NSString *language);

/// Compares the C strings of the two objects (nil: the empty one) as the locale in force (LC_COLLATE) orders
/// them: -1, 0 or 1. `context` is ignored.
QB_EXPORT std::int32_t localeCompare(id a, id b, void *context = nullptr);
}

/// Sorts arrays by the rules of a language, or by a function of the caller's.
///
/// This is a Shell sort with the gaps 1, 4, 13, 40 … (D. E. Knuth, The Art of Computer Programming, volume 3,
/// section 5.2.1). Elements that compare equal come in the order in which its passes leave them, which is not
/// always their own. With `localeCompare`, keys are made only once, and the result is the same.
///
/// Sorting sets the process's collation (LC_COLLATE), which is that of the environment afterwards, or "C"
/// when the machine does not have that locale.
class QB_EXPORT OSSorter : public OSObject {
public:
    OSSorter() noexcept = default;
    ~OSSorter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a sorter by the texts of the elements (`cStringValue`). `language` is the name of a locale
    /// without its character set, "de_DE". Without content, and when the machine has no such locale, the
    /// order is that of the environment.
    static OSSorter *sorterForLanguage(NSString *language) {
        return qb::init<OSSorter>(&OSSorter::setUpForLanguage, language).autorelease();
    }
    /// Returns a sorter by the texts of what `valueFunction` (null: nothing else) makes of the elements.
    static OSSorter *sorterForLanguageValueFunction(NSString *language, OSSorterValueFunction valueFunction) {
        return qb::init<OSSorter>(&OSSorter::setUpForLanguageValueFunction, language, valueFunction)
            .autorelease();
    }
    /// Returns a sorter that compares the elements by `compareFunction`. Throws InvalidArgumentException when
    /// it is null, as the next two do.
    static OSSorter *sorterForLanguageCompareFunction(NSString *language,
                                                      OSSorterCompareFunction compareFunction) {
        return qb::init<OSSorter>(&OSSorter::setUpForLanguageCompareFunction, language, compareFunction)
            .autorelease();
    }
    static OSSorter *sorterForLanguage(NSString *language, OSSorterValueFunction valueFunction,
                                       OSSorterCompareFunction compareFunction) {
        return initWithLanguage(language, valueFunction, compareFunction).autorelease();
    }
    /// As above, but the caller owns the result.
    static Ref<OSSorter> initWithLanguage(NSString *language, OSSorterValueFunction valueFunction,
                                          OSSorterCompareFunction compareFunction) {
        return qb::init<OSSorter>(&OSSorter::setUpWithLanguage, language, valueFunction, compareFunction);
    }

    /// Returns the elements of `array` (nil: none) in ascending order, a new array. The functions get a null
    /// context.
    NSMutableArray *sortArrayAscending(NSArray *array) { return sortArrayAscending(array, nullptr); }
    NSMutableArray *sortArrayDescending(NSArray *array) { return sortArrayDescending(array, nullptr); }
    /// As above; both functions get `context`. The value function is called once for each element, in order.
    /// With fewer than two elements none is called.
    virtual NSMutableArray *sortArrayAscending(NSArray *array, void *withContext);
    virtual NSMutableArray *sortArrayDescending(NSArray *array, void *withContext);
    /// What those return: `direction` is -1 for ascending, 1 for descending order. A later element moves
    /// forward when comparing it with an earlier one gives that number.
    virtual NSMutableArray *_sortArray(NSArray *array, void *withContext, std::int32_t direction);

protected:
    /// The initialiser `init`: by the environment's language.
    BOOL setUp() override { return setUpForLanguage(nullptr); }
    BOOL setUpForLanguage(NSString *language);
    BOOL setUpForLanguageValueFunction(NSString *language, OSSorterValueFunction valueFunction);
    BOOL setUpForLanguageCompareFunction(NSString *language, OSSorterCompareFunction compareFunction);
    /// The initialiser `initWithLanguage:valueFunction:compareFunction:`, in which all makers end.
    virtual BOOL setUpWithLanguage(NSString *language, OSSorterValueFunction valueFunction,
                                   OSSorterCompareFunction compareFunction);

private:
    Ref<NSArray> keysOf(NSArray *elements, void *context) const;

    Ref<NSString> locale_; // empty: the environment's
    OSSorterValueFunction valueFunction_ = nullptr;
    OSSorterCompareFunction compareFunction_ = nullptr; // never null
};

#endif
