#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSCharacterSet.h>
#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Foundation/NSTimeZone.h>
#include <QBFoundation/Foundation/NSValue.h>

#include "Calendar/Zone.h"
#include "Foundation/ArchiveFormat.h"
#include "Foundation/DateParts.h"
#include "Foundation/Refill.h"
#include "Text/Search.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

// How the classes of the value model write themselves. They use no keys, so that they stand in both kinds of
// archives; a reader that has failed gives them zeros and nil, which they refuse or which nobody will see.
// What is read is what was written: what the constructor of a subclass or the elements have added to it goes.

NSCoder *qb::archive::required(NSCoder *coder) {
    if (!coder)
        throw InvalidArgumentException("NSCoder must not be nil where an object is encoded or decoded.");
    return coder;
}

namespace {

using qb::archive::required;

template <class T>
void encode(NSCoder *coder, const char *type, T value) {
    required(coder)->encodeValueOfObjCType(type, &value);
}

template <class T>
T decode(NSCoder *coder, const char *type) {
    T value{};
    required(coder)->decodeValueOfObjCType(type, &value);
    return value;
}

void encodeRange(NSCoder *coder, NSRange range) {
    encode(coder, "I", range.location);
    encode(coder, "I", range.length);
}

NSRange decodeRange(NSCoder *coder) {
    NSRange range;
    range.location = decode<std::uint32_t>(coder, "I");
    range.length = decode<std::uint32_t>(coder, "I");
    return range;
}

void encodeCount(NSCoder *coder, std::uint32_t count) {
    encode(coder, "I", count);
}

/// Reads a count and as many objects. Returns false when one of them is missing.
bool decodeObjects(NSCoder *coder, std::vector<id> &objects) {
    for (auto count = decode<std::uint32_t>(coder, "I"); count > 0; --count) {
        objects.push_back(coder->decodeObject()); // a count that is too large ends at the first missing one
        if (!objects.back())
            return false;
    }
    return true;
}

// Whether the object may be what a copy was, as keys and formats are. A mutable one may be mentioned by many
// containers, and a copy for each would take memory for which the archive has no bytes.
bool isCopy(id object) {
    try {
        const Ref<NSObject> copy = object ? object->copy() : nullptr;
        return copy && copy->classObject() == object->classObject();
    } catch (const InvalidUseOfMethodException &) { // it has no copies
        return false;
    }
}

// Whether a dictionary has these entries in this order, and no others.
bool isMadeOf(const NSDictionary &dictionary, const std::vector<NSDictionary::Pair> &entries) {
    auto next = entries.begin();
    for (const NSDictionary::Pair entry : dictionary)
        if (next == entries.end() || entry != *next++)
            return false;
    return next == entries.end();
}

} // namespace

const std::vector<Class *> &qb::archive::valueClasses() {
    static const auto &classes = *new std::vector<Class *>{
        NSArray::cls(),
        NSCalendarDate::cls(),
        NSCharacterSet::cls(),
        NSData::cls(),
        NSDate::cls(),
        NSDictionary::cls(),
        NSLongLongNumber::cls(),
        NSMutableArray::cls(),
        NSMutableCharacterSet::cls(),
        NSMutableData::cls(),
        NSMutableDictionary::cls(),
        NSMutableSet::cls(),
        NSMutableString::cls(),
        NSNumber::cls(),
        NSSet::cls(),
        NSString::cls(),
        NSTimeZone::cls(),
        NSValue::cls(),
    };
    return classes;
}

bool qb::archive::isValueClass(Class *cls) {
    const std::vector<Class *> &classes = valueClasses();
    return std::find(classes.begin(), classes.end(), cls) != classes.end();
}

// --- Bytes ---

void NSString::encodeWithCoder(NSCoder *coder) const {
    required(coder)->encodeBytes(bytes_, byteLength_);
}

BOOL NSString::setUpWithCoder(NSCoder *coder) {
    std::uint32_t length = 0;
    const void *const bytes = required(coder)->decodeBytesWithReturnedLength(&length);
    return setUpWithBytes(length ? static_cast<const char *>(bytes) : "", length);
}

void NSData::encodeWithCoder(NSCoder *coder) const {
    required(coder)->encodeBytes(bytes_, length_);
}

BOOL NSData::setUpWithCoder(NSCoder *coder) {
    std::uint32_t length = 0;
    const void *const bytes = required(coder)->decodeBytesWithReturnedLength(&length);
    length_ = 0;
    return setUpWithBytes(bytes, length);
}

// --- Numbers ---

void NSNumber::encodeWithCoder(NSCoder *coder) const {
    encode(coder, "C", static_cast<std::uint8_t>(type_));
    if (type_ == Type::real32 || type_ == Type::real64)
        encode(coder, "d", real_);
    else if (type_ == Type::uint64)
        encode(coder, "Q", static_cast<std::uint64_t>(integer_));
    else
        encode(coder, "q", integer_);
}

BOOL NSNumber::setUpWithCoder(NSCoder *coder) {
    const auto type = decode<std::uint8_t>(coder, "C");
    switch (static_cast<Type>(type)) {
    case Type::boolean:
        return setUpWithBool(decode<BOOL>(coder, "c"));
    case Type::int32:
        return setUpWithInt(decode<std::int32_t>(coder, "i"));
    case Type::uint32:
        return setUpWithUnsignedInt(decode<std::uint32_t>(coder, "I"));
    case Type::int64:
        return setUpWithLongLong(decode<std::int64_t>(coder, "q"));
    case Type::uint64:
        return setUpWithUnsignedLongLong(decode<std::uint64_t>(coder, "Q"));
    case Type::real32: {
        const auto value = decode<double>(coder, "d");
        return !(std::abs(value) > std::numeric_limits<float>::max() && std::isfinite(value)) &&
               setUpWithFloat(static_cast<float>(value));
    }
    case Type::real64:
        return setUpWithDouble(decode<double>(coder, "d"));
    default:
        return NO;
    }
}

// --- Ranges ---

void NSValue::encodeWithCoder(NSCoder *coder) const {
    if (type_ != Type::range)
        return NSObject::encodeWithCoder(coder);
    encode(coder, "C", static_cast<std::uint8_t>(type_));
    encodeRange(coder, range_);
}

BOOL NSValue::setUpWithCoder(NSCoder *coder) {
    if (decode<std::uint8_t>(coder, "C") != static_cast<std::uint8_t>(Type::range))
        return NO;
    range_ = decodeRange(coder);
    return YES;
}

void NSCharacterSet::encodeWithCoder(NSCoder *coder) const {
    encode(coder, "C", static_cast<std::uint8_t>(kind_));
    encode(coder, "c", static_cast<BOOL>(isInverted_));
    encodeCount(coder, static_cast<std::uint32_t>(ranges_.size()));
    for (const NSRange range : ranges_)
        encodeRange(coder, range);
}

BOOL NSCharacterSet::setUpWithCoder(NSCoder *coder) {
    const auto kind = decode<std::uint8_t>(coder, "C");
    isInverted_ = decode<BOOL>(coder, "c") != NO;
    ranges_.clear();
    for (auto count = decode<std::uint32_t>(coder, "I"); count > 0; --count) {
        const NSRange range = decodeRange(coder);
        const bool isBehindLast = ranges_.empty() || range.location > NSMaxRange(ranges_.back());
        if (!isBehindLast || range.length == 0 || NSMaxRange(range) > qb::text::kFirstMalformed)
            return NO;
        ranges_.push_back(range);
    }
    if (kind >= kKinds || (kind != 0 && !ranges_.empty()))
        return NO;
    kind_ = static_cast<Kind>(kind);
    learnAscii();
    return YES;
}

// --- Containers ---

void NSArray::encodeWithCoder(NSCoder *coder) const {
    encodeCount(coder, count_);
    for (id element : *this)
        coder->encodeObject(element);
}

BOOL NSArray::setUpWithCoder(NSCoder *coder) {
    std::vector<id> elements;
    if (!decodeObjects(coder, elements))
        return NO;
    std::vector<Ref<NSObject>> others(count_);
    for (std::uint32_t i = 0; i < count_; ++i)
        others[i] = Ref<NSObject>::adopt(elements_[i]);
    count_ = 0;
    ++mutations_;
    return setUpWithObjects(elements.data(), static_cast<std::uint32_t>(elements.size()));
}

void NSSet::encodeWithCoder(NSCoder *coder) const {
    encodeCount(coder, count());
    for (id element : *this)
        coder->encodeObject(element);
}

BOOL NSSet::setUpWithCoder(NSCoder *coder) {
    std::vector<id> elements;
    if (!decodeObjects(coder, elements))
        return NO;
    bool isSetUp = false;
    qb::refill(table_, mutations_, [&] {
        isSetUp = setUpWithObjects(elements.data(), static_cast<std::uint32_t>(elements.size()));
    });
    return isSetUp && count() == elements.size();
}

void NSDictionary::encodeWithCoder(NSCoder *coder) const {
    encodeCount(coder, count());
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> kept = value; // whatever the key does to be encoded
        coder->encodeObject(key);
        coder->encodeObject(value);
    }
}

BOOL NSDictionary::setUpWithCoder(NSCoder *coder) {
    const auto wanted = decode<std::uint32_t>(coder, "I");
    std::vector<Pair> entries;
    qb::refill(table_, mutations_, [&] {
        while (entries.size() < wanted) {
            const id key = coder->decodeObject();
            const id value = coder->decodeObject();
            if (!value || !isCopy(key))
                return;
            entries.emplace_back(key, value);
            store(key, value); // at once: others that lead back here may compare it
        }
    });
    const bool isWhole = entries.size() == wanted;
    if (isWhole && isMadeOf(*this, entries))
        return YES;
    const auto empty = [this] { qb::refill(table_, mutations_, [] {}); };
    empty(); // a part, or what the entries have put here, would keep what leads back here
    if (!isWhole)
        return NO;
    qb::refill(table_, mutations_, [&] {
        for (const auto &[key, value] : entries)
            store(key, value);
    });
    if (count() == wanted)
        return YES;
    empty();
    return NO;
}

// --- Dates ---

void NSDate::encodeWithCoder(NSCoder *coder) const {
    encode(coder, "d", timeIntervalSinceReferenceDate());
}

BOOL NSDate::setUpWithCoder(NSCoder *coder) {
    const auto interval = decode<NSTimeInterval>(coder, "d");
    return !std::isnan(interval) && setUpWithTimeIntervalSinceReferenceDate(interval);
}

void NSCalendarDate::encodeWithCoder(NSCoder *coder) const {
    NSDate::encodeWithCoder(coder);
    coder->encodeObject(zone_);
    coder->encodeObject(format_);
}

BOOL NSCalendarDate::setUpWithCoder(NSCoder *coder) {
    if (!NSDate::setUpWithCoder(coder))
        return NO;
    auto *const zone = qb::castOrNil<NSTimeZone>(coder->decodeObject());
    const id format = coder->decodeObject();
    if (!zone || (format && !(format->isKindOfClass(NSString::cls()) && isCopy(format))))
        return NO;
    setTimeZone(zone);
    setCalendarFormat(static_cast<NSString *>(format));
    return YES;
}

void NSTimeZone::encodeWithCoder(NSCoder *coder) const {
    required(coder)->encodeObject(name());
    const BOOL isFixed = zone_->isFixed();
    encode(coder, "c", isFixed);
    if (!isFixed)
        return;
    const qb::calendar::ZoneOffset offset = zone_->offsetAt(0);
    encode(coder, "i", offset.seconds);
    encode(coder, "c", static_cast<BOOL>(offset.isDst));
}

// A system's zone may be known by its rule only, or by a file that no name in an archive leads to.
static qb::calendar::ZoneRef zoneWithName(std::string_view name) {
    using namespace qb::calendar;
    if (ZoneRef zone = zoneNamed(name))
        return zone;
    return name == systemZone()->name() ? systemZone() : zoneFromRule(name);
}

BOOL NSTimeZone::setUpWithCoder(NSCoder *coder) {
    auto *const name = qb::castOrNil<NSString>(required(coder)->decodeObject());
    const auto isFixed = decode<BOOL>(coder, "c");
    if (!name)
        return NO;
    const qb::calendar::ZoneRef zone = zoneWithName(name->view());
    if (!isFixed)
        return setUpWithRules(zone);
    const auto seconds = decode<std::int32_t>(coder, "i");
    const bool isDst = decode<BOOL>(coder, "c");
    if (zone && zone->isFixed() && zone->offsetAt(0).seconds == seconds && zone->offsetAt(0).isDst == isDst)
        return setUpWithRules(zone); // which has its abbreviation
    return name->view().size() <= qb::calendar::kLongestZoneName &&
           setUpWithRules(qb::calendar::fixedZone(seconds, name->view(), isDst));
}
