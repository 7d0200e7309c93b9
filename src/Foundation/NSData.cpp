#include <QBFoundation/Foundation/NSData.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Buffer.h"
#include "Foundation/NSData.Tables.h"
#include "Foundation/Required.h"
#include "System/Memory.h"
#include "Text/Hash.h"
#include "Text/Hex.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace {

constexpr std::uint64_t kLongestData = UINT32_MAX - 1;

std::string_view textOf(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

} // namespace

Class *NSData::cls() {
    static const qb::Method methods[] = {
        qb::maker<"data">(&NSData::setUp),
        qb::maker<"dataWithBytes:length:">(&NSData::setUpWithBytes),
        qb::maker<"dataWithData:">(&NSData::setUpWithData),
        qb::initialiser<"initWithData:">(&NSData::setUpWithData),
        qb::initialiser<"initWithBytes:length:">(&NSData::setUpWithBytes),
        qb::classMethod<"dataWithBytesNoCopy:length:">(&NSData::dataWithBytesNoCopyOfClass),
        qb::initialiser<"initWithBytesNoCopy:length:">(&NSData::setUpWithBytesNoCopy),
        qb::maker<"dataWithContentsOfFile:">(&NSData::setUpWithContentsOfFile),
        qb::initialiser<"initWithContentsOfFile:">(&NSData::setUpWithContentsOfFile),
        qb::method<"bytes">(&NSData::bytes),
        qb::method<"length">(&NSData::length),
        qb::method<"getBytes:", void(void *)>(&NSData::getBytes),
        qb::method<"getBytes:length:", void(void *, std::uint32_t)>(&NSData::getBytes),
        qb::method<"getBytes:range:", void(void *, NSRange)>(&NSData::getBytes),
        qb::method<"subdataWithRange:">(&NSData::subdataWithRange),
        qb::method<"rangeOfData:options:range:">(&NSData::rangeOfData),
        qb::method<"isEqualToData:">(&NSData::isEqualToData),
        qb::initialiser<"initWithCoder:">(&NSData::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSData::encodeWithCoder),
    };
    static Class *const self = new Class(
        "NSData", NSObject::cls(),
        {methods, qb::tables::dataPropertyList(), qb::tables::dataFile(), qb::tables::dataHexString()},
        qb::construct<NSData>, {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

NSData::~NSData() {
    qb::sys::release(bytes_);
}

Ref<NSData> NSData::init() {
    return Ref<NSData>::adopt(new NSData);
}

Ref<NSData> NSData::initWithBytes(const void *bytes, std::uint32_t length) {
    return qb::init<NSData>(&NSData::setUpWithBytes, bytes, length);
}

Ref<NSData> NSData::initWith(std::span<const std::byte> bytes) {
    if (bytes.size() > kLongestData)
        throw InvalidArgumentException("NSData initWithBytes:length: must have less than 2^32 - 1 bytes.");
    return initWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

Ref<NSData> NSData::initWithData(NSData *other) {
    return other ? other->copy() : init();
}

NSData *NSData::dataWithData(NSData *other) {
    return initWithData(other).autorelease();
}

BOOL NSData::setUpWithBytes(const void *bytes, std::uint32_t length) {
    if (!bytes && length != 0)
        throw InvalidArgumentException("NSData initWithBytes:length: must have bytes that are not NULL.");
    if (length != 0)
        append(bytes, length);
    return YES;
}

// The pool gets the data first: without memory it destroys what it is handed.
NSData *NSData::dataWithBytesNoCopyOfClass(Class *asked, void *bytes, std::uint32_t length) {
    auto *const data = static_cast<NSData *>(asked->construct().autorelease());
    return data->setUpWithBytesNoCopy(bytes, length) ? data : nullptr;
}

BOOL NSData::setUpWithBytesNoCopy(void *bytes, std::uint32_t length) {
    if (!bytes && length != 0)
        throw InvalidArgumentException(
            "NSData initWithBytesNoCopy:length: must have bytes that are not NULL.");
    if (length > kLongestData)
        throw InvalidArgumentException(
            "NSData initWithBytesNoCopy:length: must have less than 2^32 - 1 bytes.");
    if (length == 0)
        qb::sys::release(std::exchange(bytes, nullptr));
    qb::sys::release(std::exchange(bytes_, static_cast<std::byte *>(bytes)));
    length_ = capacity_ = length;
    return YES;
}

BOOL NSData::setUpWithData(NSData *other) {
    return !other || setUpWithBytes(other->bytes(), other->length());
}

void NSData::reserve(std::uint64_t capacity) {
    if (capacity <= capacity_)
        return;
    if (capacity > kLongestData)
        throw InvalidArgumentException("NSMutableData must have less than 2^32 - 1 bytes.");
    void *const grown = qb::sys::reallocate(bytes_, static_cast<std::size_t>(capacity));
    if (!grown)
        throw std::bad_alloc();
    bytes_ = static_cast<std::byte *>(grown);
    capacity_ = static_cast<std::uint32_t>(capacity);
}

void NSData::reserveGrowing(std::uint64_t length) {
    constexpr std::uint64_t kMost = std::min<std::uint64_t>(kLongestData, PTRDIFF_MAX);
    if (length > capacity_)
        qb::growCapacity(capacity_, length, kMost, [this](std::uint64_t capacity) { reserve(capacity); });
}

void NSData::append(const void *bytes, std::uint32_t length) {
    if (length == 0)
        return;
    const auto *source = static_cast<const std::byte *>(bytes);
    const bool isOwnPart = source >= bytes_ && source < bytes_ + length_;
    const std::size_t ownOffset = isOwnPart ? static_cast<std::size_t>(source - bytes_) : 0;
    reserveGrowing(std::uint64_t{length_} + length);
    std::memmove(bytes_ + length_, isOwnPart ? bytes_ + ownOffset : source, length);
    length_ += length;
}

void NSData::requireRange(NSRange range, const char *selector) const {
    if (NSMaxRange(range) > length_)
        throw NSRangeException(std::string(classObject()->nameView()) + " " + selector +
                               " must have a range inside the " + std::to_string(length_) + " bytes.");
}

void NSData::getBytes(void *buffer) const {
    getBytes(buffer, {0, length_});
}

void NSData::getBytes(void *buffer, std::uint32_t length) const {
    getBytes(buffer, {0, std::min(length, length_)});
}

void NSData::getBytes(void *buffer, NSRange range) const {
    requireRange(range, "getBytes:range:");
    if (!buffer && range.length != 0)
        throw InvalidArgumentException("NSData getBytes:range: must have a buffer that is not NULL.");
    if (range.length != 0)
        std::memcpy(buffer, bytes_ + range.location, range.length);
}

NSData *NSData::subdataWithRange(NSRange range) const {
    requireRange(range, "subdataWithRange:");
    return dataWith(view().subspan(range.location, range.length));
}

NSRange NSData::rangeOfData(NSData *data, std::uint32_t options, NSRange range) const {
    requireRange(range, "rangeOfData:options:range:");
    const std::string_view wanted = textOf(data ? data->view() : std::span<const std::byte>());
    const std::string_view text = textOf(view()).substr(range.location, range.length);
    const bool isBackwards = options & NSBackwardsSearch;
    if (wanted.empty() || wanted.size() > text.size())
        return {NSNotFound, 0};
    std::size_t place = isBackwards ? text.size() - wanted.size() : 0;
    if (options & NSAnchoredSearch)
        place = text.substr(place, wanted.size()) == wanted ? place : std::string_view::npos;
    else
        place = isBackwards ? text.rfind(wanted) : text.find(wanted);
    if (place == std::string_view::npos)
        return {NSNotFound, 0};
    return {range.location + static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(wanted.size())};
}

BOOL NSData::isEqual(id other) const {
    return isEqualToData(qb::castOrNil<NSData>(other));
}

BOOL NSData::isEqualToData(NSData *other) const {
    return other && other->length_ == length_ &&
           (length_ == 0 || std::memcmp(bytes_, other->bytes_, length_) == 0);
}

// Of a long one so many bytes count at either end: it is not kept, and may be asked for often.
constexpr std::uint32_t kHashedAtEnd = 32 * 1024;

std::uint32_t NSData::hash() const {
    const auto *const bytes = reinterpret_cast<const char *>(bytes_);
    if (length_ <= 2 * kHashedAtEnd)
        return qb::text::hashBytes(bytes, length_);
    return qb::text::hashPair(qb::text::hashBytes(bytes, kHashedAtEnd),
                              qb::text::hashBytes(bytes + length_ - kHashedAtEnd, kHashedAtEnd));
}

NSString *NSData::description() const {
    std::string text(static_cast<std::size_t>(qb::text::hexGroupsLength(length_)) + 2, '<');
    qb::text::writeHexGroups(bytes_, length_, text.data() + 1);
    text.back() = '>';
    return NSString::stringWith(text);
}

Ref<NSObject> NSData::copyWithZone(void *) const {
    return self();
}

Ref<NSObject> NSData::mutableCopyWithZone(void *) const {
    return mutableCopy();
}

Ref<NSData> NSData::copy() const {
    return qb::requiredCopy(this, "NSData copyWithZone:");
}

Ref<NSMutableData> NSData::mutableCopy() const {
    return NSMutableData::initWithBytes(bytes_, length_);
}
