// Random trees of values.
#ifndef QBFOUNDATION_TESTS_SUPPORT_RANDOMVALUES_H
#define QBFOUNDATION_TESTS_SUPPORT_RANDOMVALUES_H

#include <QBFoundation/QBFoundation.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

/// Makes trees of all classes of the value model, with edge values, and with objects that stand in several
/// places. For the length of one pool.
class RandomValues {
public:
    explicit RandomValues(std::uint32_t seed) : random_(seed) {}

    /// Returns a value, autoreleased, with at most `depth` containers inside each other.
    id value(unsigned depth) {
        if (!earlier_.empty() && upTo(7) == 0)
            return earlier_[upTo(static_cast<std::uint32_t>(earlier_.size() - 1))];
        const id made = depth == 0 || upTo(2) == 0 ? leaf() : container(depth);
        earlier_.push_back(made);
        return made;
    }

private:
    id leaf() {
        const auto kind = upTo(7);
        return kind == 0   ? QBNil::value()
               : kind <= 2 ? number()
               : kind == 3 ? date()
               : kind == 4 ? range()
                           : text();
    }

    id range() {
        const NSRange range = NSMakeRange(upTo(0x10FFFF), upTo(UINT32_MAX));
        NSCharacterSet *const set =
            upTo(1) ? NSCharacterSet::letterCharacterSet()
                    : NSCharacterSet::characterSetWithCharactersInString(NSString::stringWith("ac€😀\xFF"));
        const id ranges[] = {NSValue::valueWithRange(range), set, set->mutableCopy().autorelease(),
                             set->invertedSet()};
        return ranges[upTo(3)];
    }

    id number() {
        static constexpr std::int64_t kEdges[] = {0,         1,          -1,        INT32_MIN,
                                                  INT32_MAX, UINT32_MAX, INT64_MIN, INT64_MAX};
        const std::int64_t edge = kEdges[upTo(7)];
        const double real = upTo(9) ? std::ldexp(upTo(1000), static_cast<int>(upTo(60)) - 30)
                                    : std::numeric_limits<double>::infinity();
        const id numbers[] = {NSNumber::numberWithBool(edge != 0),
                              NSNumber::numberWithInt(static_cast<std::int32_t>(edge)),
                              NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(edge)),
                              NSNumber::numberWithLongLong(edge),
                              NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(edge)),
                              NSNumber::numberWithDouble(real)};
        return numbers[upTo(5)];
    }

    id text() {
        std::string bytes(upTo(2) ? upTo(12) : upTo(700), '\0');
        for (char &byte : bytes)
            byte = static_cast<char>(upTo(255));
        NSString *const string = NSString::stringWith(bytes);
        NSData *const data = NSData::dataWith(std::as_bytes(std::span(bytes)));
        const id texts[] = {string, NSMutableString::stringWithString(string), data,
                            data->mutableCopy().autorelease()};
        return texts[upTo(3)];
    }

    id date() {
        NSTimeZone *const zones[] = {NSTimeZone::gmt(), NSTimeZone::timeZoneWithName("Europe/Berlin"_ns),
                                     NSTimeZone::timeZoneWithAbbreviation("CEST"_ns),
                                     NSTimeZone::timeZoneForSecondsFromGMT(-5400),
                                     NSTimeZone::timeZoneWithName("EST DST"_ns)};
        NSTimeZone *const zone = zones[upTo(4)];
        const double interval = std::ldexp(upTo(UINT32_MAX), -2) - 5e8;
        NSCalendarDate *const shown = NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(interval);
        shown->setTimeZone(zone);
        shown->setCalendarFormat(upTo(1) ? "%H:%M"_ns : nullptr);
        const id dates[] = {zone, NSDate::dateWithTimeIntervalSinceReferenceDate(interval), shown};
        return dates[upTo(2)];
    }

    id container(unsigned depth) {
        NSMutableArray *const elements = NSMutableArray::array();
        for (std::uint32_t count = upTo(5); count > 0; --count)
            elements->addObject(value(depth - 1));
        NSMutableDictionary *const entries = NSMutableDictionary::dictionary();
        for (id element : *elements)
            entries->setObjectForKey(element, leaf());
        const id containers[] = {elements,
                                 NSArray::arrayWithArray(elements),
                                 NSSet::setWithArray(elements),
                                 NSMutableSet::setWithArray(elements),
                                 entries,
                                 NSDictionary::dictionaryWithDictionary(entries)};
        return containers[upTo(5)];
    }

    std::uint32_t upTo(std::uint32_t limit) {
        return std::uniform_int_distribution<std::uint32_t>(0, limit)(random_);
    }

    std::mt19937 random_;
    std::vector<id> earlier_; // to be mentioned again
};

#endif
