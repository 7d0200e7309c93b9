#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "Foundation/NSDate.Tables.h"

#include <algorithm>

namespace {

constexpr const char *kFile = "src/QBDateAdditions";

// The debug levels from which the array is traced as it came and as it went.
constexpr int kLeastDebugOfInput = 2;
constexpr int kLeastDebugOfResult = 7;

// Of a year in two digits, the last one after 2000 and the first one after 1900.
constexpr std::int32_t kLastYearOf21st = 35;
constexpr std::int32_t kFirstYearOf20th = 70;

constexpr std::int32_t kFirstYear = 1971;
constexpr std::int32_t kLastYear = 2019;

constexpr std::uint32_t kDay = 0, kMonth = 1, kYear = 2, kHour = 3, kParts = 4;

/// Cuts a run of characters into day, month and year.
NSArray *partsOfRun(NSString *run) {
    NSMutableArray *const parts = NSMutableArray::array();
    const std::uint32_t length = run->length();
    if (length != 2 && length != 4 && length != 6 && length != 8)
        return parts;
    parts->addObject(run->substringToIndex(2));
    if (length > 2)
        parts->addObject(run->substringWithRange({2, 2}));
    if (length > 4)
        parts->addObject(run->substringFromIndex(4));
    return parts;
}

NSArray *partsOf(NSString *text) {
    for (NSString *const separator : {"."_ns, "/"_ns, "-"_ns})
        if (text->containsString(separator))
            return text->componentsSeparatedByString(separator);
    return partsOfRun(text);
}

/// Returns the number that the digits of the element are, not more than a million; -1 when there is anything
/// else in it.
std::int32_t numberAt(NSArray *array, std::uint32_t index) {
    constexpr std::int32_t kMost = 1'000'000;
    NSString *const text = array->objectAtIndex(index)->stringValue();
    std::int32_t number = 0;
    for (const char byte : text ? text->view() : std::string_view()) {
        if (byte < '0' || byte > '9')
            return -1;
        number = std::min(number * 10 + (byte - '0'), kMost);
    }
    return number;
}

std::int32_t widened(std::int32_t year) {
    if (year >= 0 && year <= kLastYearOf21st)
        return year + 2000;
    return year >= kFirstYearOf20th && year <= 99 ? year + 1900 : year;
}

bool isBetween(std::int32_t value, std::int32_t least, std::int32_t most) {
    return value >= least && value <= most;
}

void removeEmptyLast(NSMutableArray *array, std::uint32_t ofCount) {
    if (array->count() == ofCount && !array->lastObject()->containsData())
        array->removeLastObject();
}

void trace(int leastDebug, int line, const char *name, NSArray *array) {
    if (debug >= leastDebug)
        qb::trace(DEBUG_CHANNEL_MISC, {kFile, line, &NSDate::cls, "_completeDateArray:"}, "%s==%s", name,
                  array ? array->description()->cString() : "<nil>");
}

} // namespace

std::span<const qb::Method> qb::tables::dateQBDatabaseDate() {
    static const qb::Method methods[] = {
        qb::classMethod<"obsolete_dateWithString:">(&NSDate::obsolete_dateWithString),
        qb::classMethod<"_completeDateArray:">(&NSDate::_completeDateArray),
        qb::classMethod<"_dateWithArray:">(&NSDate::_dateWithArray),
    };
    return methods;
}

NSCalendarDate *NSDate::obsolete_dateWithString(id string) {
    const qb::Kept kept(string); // whatever it does for its text
    NSString *const text = IsNil(string) ? nullptr : string->stringValue();
    return text && text->containsData() ? _dateWithArray(partsOf(text)) : nullptr;
}

NSMutableArray *NSDate::_completeDateArray(NSArray *array) {
    trace(kLeastDebugOfInput, __LINE__, "input array", array);
    NSMutableArray *const parts = NSMutableArray::arrayWithArray(array);
    removeEmptyLast(parts, /*ofCount=*/3);
    removeEmptyLast(parts, /*ofCount=*/2);
    NSCalendarDate *const now = NSCalendarDate::calendarDate();
    if (parts->count() == 1)
        parts->addObject(NSString::stringWithRestrictedFormat("%02i", now->monthOfYear()));
    if (parts->count() == 2)
        parts->addObject(NSString::stringWithRestrictedFormat("%i", now->yearOfCommonEra()));
    parts->addObject("0"_ns);
    trace(kLeastDebugOfResult, __LINE__, "completed date array", parts);
    return parts;
}

NSCalendarDate *NSDate::_dateWithArray(NSArray *array) {
    NSArray *const parts = _completeDateArray(array);
    if (parts->count() != kParts)
        return nullptr;
    const std::int32_t day = numberAt(parts, kDay), month = numberAt(parts, kMonth);
    const std::int32_t year = widened(numberAt(parts, kYear)), hour = numberAt(parts, kHour);
    if (!isBetween(day, 1, 31) || !isBetween(month, 1, 12) || !isBetween(year, kFirstYear, kLastYear) ||
        !isBetween(hour, 0, 23))
        return nullptr;
    return NSCalendarDate::dateWithYear(year, month, day, hour, 0, 0, nullptr);
}
