#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

Class *NSMutableData::cls() {
    static const qb::Method methods[] = {
        qb::maker<"dataWithCapacity:">(&NSMutableData::setUpWithCapacity),
        qb::maker<"dataWithLength:">(&NSMutableData::setUpWithLength),
        qb::initialiser<"initWithCapacity:">(&NSMutableData::setUpWithCapacity),
        qb::initialiser<"initWithLength:">(&NSMutableData::setUpWithLength),
        qb::method<"mutableBytes">(&NSMutableData::mutableBytes),
        qb::method<"appendBytes:length:">(&NSMutableData::appendBytes),
        qb::method<"appendData:">(&NSMutableData::appendData),
        qb::method<"setLength:">(&NSMutableData::setLength),
        qb::method<"increaseLengthBy:">(&NSMutableData::increaseLengthBy),
        qb::method<"setData:">(&NSMutableData::setData),
        qb::method<"replaceBytesInRange:withBytes:", void(NSRange, const void *)>(
            &NSMutableData::replaceBytesInRange),
        qb::method<"replaceBytesInRange:withBytes:length:", void(NSRange, const void *, std::uint32_t)>(
            &NSMutableData::replaceBytesInRange),
        qb::method<"resetBytesInRange:">(&NSMutableData::resetBytesInRange),
    };
    static Class *const self =
        new Class("NSMutableData", NSData::cls(), {methods}, qb::construct<NSMutableData>);
    return self;
}

Ref<NSMutableData> NSMutableData::init() {
    return Ref<NSMutableData>::adopt(new NSMutableData);
}

Ref<NSMutableData> NSMutableData::initWithBytes(const void *bytes, std::uint32_t length) {
    return qb::init<NSMutableData>(&NSMutableData::setUpWithBytes, bytes, length);
}

Ref<NSMutableData> NSMutableData::initWith(std::span<const std::byte> bytes) {
    return NSData::initWith(bytes)->mutableCopy();
}

Ref<NSMutableData> NSMutableData::initWithData(NSData *other) {
    return other ? other->mutableCopy() : init();
}

NSMutableData *NSMutableData::dataWithData(NSData *other) {
    return initWithData(other).autorelease();
}

Ref<NSMutableData> NSMutableData::initWithCapacity(std::uint32_t capacity) {
    return qb::init<NSMutableData>(&NSMutableData::setUpWithCapacity, capacity);
}

Ref<NSMutableData> NSMutableData::initWithLength(std::uint32_t length) {
    return qb::init<NSMutableData>(&NSMutableData::setUpWithLength, length);
}

BOOL NSMutableData::setUpWithCapacity(std::uint32_t capacity) {
    reserve(capacity);
    return YES;
}

BOOL NSMutableData::setUpWithLength(std::uint32_t length) {
    setLength(length);
    return YES;
}

// --- Changes ---

void NSMutableData::appendBytes(const void *bytes, std::uint32_t length) {
    if (!bytes && length != 0)
        throw InvalidArgumentException(
            "NSMutableData appendBytes:length: must have bytes that are not NULL.");
    append(bytes, length);
}

void NSMutableData::setLength(std::uint32_t length) {
    if (length > length_) {
        reserveGrowing(length);
        std::memset(bytes_ + length_, 0, length - length_);
    }
    length_ = length;
}

void NSMutableData::increaseLengthBy(std::uint32_t extraLength) {
    const std::uint64_t length = std::uint64_t{length_} + extraLength;
    reserveGrowing(length);
    setLength(static_cast<std::uint32_t>(length));
}

void NSMutableData::setData(NSData *other) {
    if (other == this)
        return;
    reserveGrowing(other ? other->length_ : 0); // first, because it may throw
    length_ = 0;
    appendData(other);
}

void NSMutableData::replaceBytesInRange(NSRange range, const void *withBytes) {
    // Bytes beyond the end stand in place of none.
    const auto replaced =
        std::min<std::uint64_t>(range.length, length_ - std::min<std::uint64_t>(range.location, length_));
    replaceBytesInRange({range.location, static_cast<std::uint32_t>(replaced)}, withBytes, range.length);
}

void NSMutableData::replaceBytesInRange(NSRange range, const void *withBytes, std::uint32_t length) {
    requireRange(range, "replaceBytesInRange:withBytes:length:");
    if (!withBytes && length != 0)
        throw InvalidArgumentException(
            "NSMutableData replaceBytesInRange:withBytes:length: must have bytes that are not NULL.");
    const auto *source = static_cast<const std::byte *>(withBytes);
    std::vector<std::byte> copy;
    if (std::less_equal<>()(bytes_, source) && std::less<>()(source, bytes_ + length_)) {
        copy.assign(source, source + length); // a part of this data, which moves
        source = copy.data();
    }
    const std::uint32_t rest = length_ - static_cast<std::uint32_t>(NSMaxRange(range));
    const std::uint64_t newLength = std::uint64_t{range.location} + length + rest;
    reserveGrowing(newLength);
    if (rest != 0)
        std::memmove(bytes_ + range.location + length, bytes_ + NSMaxRange(range), rest);
    if (length != 0)
        std::memcpy(bytes_ + range.location, source, length);
    length_ = static_cast<std::uint32_t>(newLength);
}

void NSMutableData::resetBytesInRange(NSRange range) {
    if (range.location > length_)
        requireRange(range, "resetBytesInRange:");
    if (NSMaxRange(range) > length_)
        increaseLengthBy(static_cast<std::uint32_t>(NSMaxRange(range) - length_));
    if (range.location < length_) // a subclass may not have grown
        std::memset(bytes_ + range.location, 0, std::min(range.length, length_ - range.location));
}

void NSMutableData::appendData(NSData *other) {
    if (other)
        append(other->bytes_, other->length_);
}

Ref<NSObject> NSMutableData::copyWithZone(void *) const {
    return NSData::initWithBytes(bytes_, length_);
}
