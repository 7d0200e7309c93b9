#include "support/RandomValues.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSCharacterSet.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Foundation/NSTimeZone.h>
#include <QBFoundation/Foundation/NSValue.h>
#include <QBFoundation/QBNil.h>

#include <cmath>
#include <limits>
#include <string>

id RandomValues::value(unsigned depth) {
    if (!earlier_.empty() && upTo(7) == 0)
        return earlier_[upTo(static_cast<std::uint32_t>(earlier_.size() - 1))];
    const id made = depth == 0 || upTo(2) == 0 ? leaf() : container(depth);
    earlier_.push_back(made);
    return made;
}

id RandomValues::leaf() {
    switch (upTo(7)) {
    case 0:
        return QBNil::value();
    case 1:
    case 2:
        return number();
    case 3:
        return date();
    case 4:
        return range();
    default:
        return text();
    }
}

id RandomValues::range() {
    const NSRange range = NSMakeRange(upTo(0x10FFFF), upTo(1));
    NSCharacterSet *const sets[] = {
        NSCharacterSet::letterCharacterSet(), NSCharacterSet::characterSetWithRange(range),
        NSCharacterSet::characterSetWithCharactersInString(NSString::stringWith("ac€😀\xFF"))};
    switch (upTo(3)) {
    case 0:
        return NSValue::valueWithRange({range.location, upTo(UINT32_MAX)});
    case 1:
        return sets[upTo(2)];
    case 2:
        return sets[upTo(2)]->mutableCopy().autorelease();
    default:
        return sets[upTo(2)]->invertedSet();
    }
}

id RandomValues::number() {
    static constexpr std::int64_t kEdges[] = {0,         1,          -1,        INT32_MIN,
                                              INT32_MAX, UINT32_MAX, INT64_MIN, INT64_MAX};
    const std::int64_t edge = kEdges[upTo(7)];
    switch (upTo(5)) {
    case 0:
        return NSNumber::numberWithBool(upTo(1) != 0);
    case 1:
        return NSNumber::numberWithInt(static_cast<std::int32_t>(edge));
    case 2:
        return NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(edge));
    case 3:
        return NSNumber::numberWithLongLong(edge);
    case 4:
        return NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(edge));
    default:
        return NSNumber::numberWithDouble(upTo(9) ? std::ldexp(upTo(1000), static_cast<int>(upTo(60)) - 30)
                                                  : std::numeric_limits<double>::infinity());
    }
}

id RandomValues::text() {
    std::string bytes(upTo(2) ? upTo(12) : upTo(700), '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(upTo(255));
    switch (upTo(3)) {
    case 0:
        return NSMutableString::stringWithString(NSString::stringWith(bytes));
    case 1:
        return NSData::dataWith(std::as_bytes(std::span(bytes)));
    case 2:
        return NSMutableData::dataWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    default:
        return NSString::stringWith(bytes);
    }
}

id RandomValues::date() {
    NSTimeZone *const zones[] = {NSTimeZone::gmt(), NSTimeZone::timeZoneWithName("Europe/Berlin"_ns),
                                 NSTimeZone::timeZoneWithAbbreviation("CEST"_ns),
                                 NSTimeZone::timeZoneForSecondsFromGMT(-5400),
                                 NSTimeZone::timeZoneWithName("EST DST"_ns)};
    NSTimeZone *const zone = zones[upTo(4)];
    const double interval = std::ldexp(upTo(UINT32_MAX), -2) - 5e8;
    switch (upTo(2)) {
    case 0:
        return zone;
    case 1:
        return NSDate::dateWithTimeIntervalSinceReferenceDate(interval);
    default: {
        NSCalendarDate *const shown = NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(interval);
        shown->setTimeZone(zone);
        shown->setCalendarFormat(upTo(1) ? "%H:%M"_ns : nullptr);
        return shown;
    }
    }
}

id RandomValues::container(unsigned depth) {
    NSMutableArray *const elements = NSMutableArray::array();
    for (std::uint32_t count = upTo(5); count > 0; --count)
        elements->addObject(value(depth - 1));
    switch (upTo(5)) {
    case 0:
        return NSArray::arrayWithArray(elements);
    case 1:
        return NSSet::setWithArray(elements);
    case 2:
        return NSMutableSet::setWithArray(elements);
    case 3:
    case 4: {
        NSMutableDictionary *const entries = NSMutableDictionary::dictionary();
        for (id element : *elements) {
            const id key = leaf();
            entries->setObjectForKey(element, key);
        }
        return upTo(1) ? entries : NSDictionary::dictionaryWithDictionary(entries);
    }
    default:
        return elements;
    }
}
