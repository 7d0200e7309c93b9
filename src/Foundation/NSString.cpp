#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Buffer.h"
#include "Foundation/NSString.Tables.h"
#include "Foundation/PlainClasses.h"
#include "Foundation/Required.h"
#include "System/Memory.h"
#include "Text/Bytes.h"
#include "Text/Hash.h"
#include "Text/Utf8.h"

#include <cstring>
#include <new>

namespace {

std::uint32_t checkedLength(std::size_t length) {
    if (length >= UINT32_MAX)
        throw InvalidArgumentException(
            "NSString initWithCString:length: must have less than 2^32 - 1 bytes.");
    return static_cast<std::uint32_t>(length);
}

std::string_view viewOf(const char *text, const char *selector) {
    if (!text)
        throw InvalidArgumentException(std::string("NSString ") + selector +
                                       " must have a C string that is not NULL.");
    return text;
}

std::string_view viewOf(const char *bytes, std::uint32_t length, const char *selector) {
    if (!bytes)
        throw InvalidArgumentException(std::string("NSString ") + selector +
                                       " must have bytes that are not NULL.");
    return {bytes, length};
}

// The class operations, which make a string of the class that was asked.
NSString *stringOfClass(Class *asked) {
    return NSString::initOfClass(asked, {}).autorelease();
}
Ref<NSString> initOfClassEmpty(Class *asked) {
    return NSString::initOfClass(asked, {});
}
NSString *stringWithStringOfClass(Class *asked, NSString *other) {
    return NSString::initOfClass(asked, other ? other->view() : std::string_view()).autorelease();
}
NSString *stringWithCStringOfClass(Class *asked, const char *text) {
    return NSString::initOfClass(asked, viewOf(text, "stringWithCString:")).autorelease();
}
NSString *stringWithCStringLengthOfClass(Class *asked, const char *bytes, std::uint32_t length) {
    return NSString::initOfClass(asked, viewOf(bytes, length, "stringWithCString:length:")).autorelease();
}
Ref<NSString> initWithStringOfClass(Class *asked, NSString *other) {
    return NSString::initOfClass(asked, other ? other->view() : std::string_view());
}
Ref<NSString> initWithCStringOfClass(Class *asked, const char *text) {
    return NSString::initOfClass(asked, viewOf(text, "initWithCString:"));
}
Ref<NSString> initWithCStringLengthOfClass(Class *asked, const char *bytes, std::uint32_t length) {
    return NSString::initOfClass(asked, viewOf(bytes, length, "initWithCString:length:"));
}

} // namespace

Class *NSString::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"string">(&stringOfClass),
        qb::classMethod<"stringWithString:">(&stringWithStringOfClass),
        qb::classMethod<"stringWithCString:">(&stringWithCStringOfClass),
        qb::classMethod<"stringWithCString:length:">(&stringWithCStringLengthOfClass),
        qb::classMethod<"init">(&initOfClassEmpty),
        qb::classMethod<"initWithString:">(&initWithStringOfClass),
        qb::classMethod<"initWithCString:">(&initWithCStringOfClass),
        qb::classMethod<"initWithCString:length:">(&initWithCStringLengthOfClass),
        qb::method<"cString">(&NSString::cString),
        qb::method<"cStringLength">(&NSString::cStringLength),
        qb::method<"length">(&NSString::length),
        qb::method<"characterAtIndex:">(&NSString::characterAtIndex),
        qb::method<"isEqualToString:">(&NSString::isEqualToString),
        qb::method<"compare:", NSComparisonResult(id)>(&NSString::compare),
        qb::initialiser<"initWithCoder:">(&NSString::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSString::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSString", NSObject::cls(),
                  {methods,
                   qb::tables::stringCreation(),
                   qb::tables::stringComparison(),
                   qb::tables::stringFormat(),
                   qb::tables::stringRestrictedFormat(),
                   qb::tables::stringSubstrings(),
                   qb::tables::stringSearching(),
                   qb::tables::stringSplitting(),
                   qb::tables::stringCase(),
                   qb::tables::stringEncoding(),
                   qb::tables::stringLines(),
                   qb::tables::stringNumbers(),
                   qb::tables::stringPath(),
                   qb::tables::stringPathObject(),
                   qb::tables::stringFile(),
                   qb::tables::stringISODateTime(),
                   qb::tables::stringDateParsing(),
                   qb::tables::stringRegularExpression(),
                   qb::tables::stringRepresentation(),
                   qb::tables::stringHtmlEscaping(),
                   qb::tables::stringUtf8Conversion(),
                   qb::tables::stringPropertyList(),
                   qb::tables::stringUrlEscaping(),
                   qb::tables::stringMoneySupport(),
                   qb::tables::stringBinaryTexts()},
                  qb::construct<NSString>, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

NSString::NSString() noexcept : bytes_(""), flags_(kKnowsAscii | kIsAscii) {}

NSString::~NSString() {
    if (flags_ & kOwnsBytes)
        qb::sys::release(ownBytes());
}

// A short text's memory is longer than its type says.
void NSString::operator delete(void *memory, std::size_t size) noexcept {
    if (size > qb::kLargestPooledSize)
        qb::freeObject(memory, size);
    else
        qb::freeObjectOfUnknownSize(memory);
}

// Makes a string whose bytes, but for the last NUL, are still to be written.
Ref<NSString> NSString::makeUnfilled(std::size_t length, char *&bytes) {
    if (length >= qb::kLargestPooledSize - sizeof(NSString)) {
        auto string = Ref<NSString>::adopt(new NSString);
        string->reserve(checkedLength(length));
        string->byteLength_ = static_cast<std::uint32_t>(length);
        string->flags_ = kOwnsBytes;
        bytes = string->ownBytes();
        bytes[length] = '\0';
        return string;
    }
    void *const memory = qb::allocateObject(sizeof(NSString) + length + 1);
    bytes = static_cast<char *>(memory) + sizeof(NSString);
    bytes[length] = '\0';
    return Ref<NSString>::adopt(new (memory) NSString(bytes, static_cast<std::uint32_t>(length), 0));
}

// In one piece: most of the time of a short text goes for calls, and for the way of its place through memory.
[[gnu::flatten]] Ref<NSString> NSString::initWith(std::string_view bytes) {
    if (bytes.empty())
        return Ref<NSString>::adopt(new NSString);
    return initFilled(bytes.size(),
                      [&](char *target) { qb::text::copyBytes(target, bytes.data(), bytes.size()); });
}

Ref<NSString> NSString::initOfClass(Class *asked, std::string_view bytes) {
    if (asked == NSString::cls())
        return initWith(bytes);
    const Ref<NSObject> object = asked->construct();
    auto *string = static_cast<NSString *>(object.get());
    return string->setUpWithBytes(bytes.data(), checkedLength(bytes.size())) ? Ref<NSString>(string)
                                                                             : Ref<NSString>();
}

BOOL NSString::setUpWithBytes(const char *bytes, std::uint32_t length) {
    replaceBytes(0, byteLength_, {bytes, length});
    return YES;
}

Ref<NSString> NSString::initWithString(NSString *other) {
    return other ? other->copy() : init();
}

NSString *NSString::stringWithString(NSString *other) {
    return initWithString(other).autorelease();
}

NSString *NSString::stringWithCString(const char *text) {
    return stringWith(viewOf(text, "stringWithCString:"));
}

NSString *NSString::stringWithCString(const char *bytes, std::uint32_t length) {
    return stringWith(viewOf(bytes, length, "stringWithCString:length:"));
}

Ref<NSString> NSString::initWithCString(const char *text) {
    return initWith(viewOf(text, "initWithCString:"));
}

Ref<NSString> NSString::initWithCString(const char *bytes, std::uint32_t length) {
    return initWith(viewOf(bytes, length, "initWithCString:length:"));
}

void NSString::learnAscii() const {
    flags_ |= qb::text::isAscii(bytes_, byteLength_) ? kKnowsAscii | kIsAscii : kKnowsAscii;
}

BOOL NSString::isAscii() const {
    if (!(flags_ & kKnowsAscii))
        learnAscii();
    return (flags_ & kIsAscii) != 0;
}

// Returns the object when it is a string, as most are, else nil.
static NSString *asString(id object) {
    return object && qb::isPlainString(object) ? static_cast<NSString *>(object)
                                               : qb::castOrNil<NSString>(object);
}

BOOL NSString::isEqual(id other) const {
    if (other == this)
        return YES;
    auto *string = asString(other);
    return string && string->view() == view();
}

BOOL NSString::isEqualToString(NSString *other) const {
    return other && other->view() == view();
}

std::uint32_t NSString::hash() const {
    if (hash_ == 0)
        hash_ = qb::text::hashBytes(bytes_, byteLength_);
    return hash_;
}

NSComparisonResult NSString::compare(id other) const {
    auto *string = asString(other);
    if (!string)
        throw InvalidArgumentException("NSString compare: must have an argument that is a string.");
    const int order = view().compare(string->view());
    return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}

NSString *NSString::description() const {
    return static_cast<NSString *>(self());
}

NSString *NSString::stringValue() const {
    return static_cast<NSString *>(self());
}

Ref<NSObject> NSString::copyWithZone(void *) const {
    return self();
}

Ref<NSObject> NSString::mutableCopyWithZone(void *) const {
    return mutableCopy();
}

Ref<NSString> NSString::copy() const {
    return qb::requiredCopy(this, "NSString copyWithZone:");
}

Ref<NSMutableString> NSString::mutableCopy() const {
    return NSMutableString::initWith(view());
}

// Makes room for at least `byteLength` bytes of the string's own.
void NSString::reserve(std::uint64_t byteLength) {
    if ((flags_ & kOwnsBytes) && byteLength <= capacity_)
        return;
    if (byteLength > kLongestText)
        throw InvalidArgumentException("NSString must have less than 2^32 - 1 bytes.");
    void *const old = flags_ & kOwnsBytes ? ownBytes() : nullptr;
    const auto resize = [this, old](std::uint64_t capacity) {
        void *const bytes = qb::sys::reallocate(old, static_cast<std::size_t>(capacity) + 1);
        if (!bytes)
            throw std::bad_alloc();
        if (!old)
            std::memcpy(bytes, bytes_, byteLength_ + std::size_t{1});
        bytes_ = static_cast<char *>(bytes);
        capacity_ = static_cast<std::uint32_t>(capacity);
        flags_ |= kOwnsBytes;
    };
    qb::growCapacity(old ? capacity_ : 0, byteLength, kLongestText, resize);
}

// Makes a string that was filled only in part end there.
void NSString::endAt(std::size_t length) {
    byteLength_ = static_cast<std::uint32_t>(length);
    ownBytes()[length] = '\0';
    if (!(flags_ & kOwnsBytes) || length > capacity_ / 2)
        return;
    if (void *const bytes = qb::sys::reallocate(ownBytes(), length + 1)) {
        bytes_ = static_cast<char *>(bytes);
        capacity_ = byteLength_;
    }
}

void NSString::replaceBytes(std::uint32_t from, std::uint32_t length, std::string_view by) {
    // The new bytes may be a part of the old ones.
    const bool isOwnPart = by.data() >= bytes_ && by.data() <= bytes_ + byteLength_;
    const std::string copy(isOwnPart ? by : std::string_view());
    if (isOwnPart)
        by = copy;
    // Of an ASCII text that stays one nothing else must be looked at.
    const bool staysAscii = (flags_ & kIsAscii) && qb::text::isAscii(by.data(), by.size());
    const std::uint64_t newLength = std::uint64_t{byteLength_} - length + by.size();
    reserve(newLength);
    char *const place = ownBytes() + from;
    std::memmove(place + by.size(), place + length, byteLength_ - from - length + std::size_t{1});
    if (!by.empty()) // an empty view may be of no bytes at all
        std::memcpy(place, by.data(), by.size());
    byteLength_ = static_cast<std::uint32_t>(newLength);
    flags_ &= kOwnsBytes;
    hash_ = 0;
    if (staysAscii)
        flags_ |= kKnowsAscii | kIsAscii;
}
