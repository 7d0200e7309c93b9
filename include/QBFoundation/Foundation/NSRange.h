// Ranges of positions.
#ifndef QBFOUNDATION_FOUNDATION_NSRANGE_H
#define QBFOUNDATION_FOUNDATION_NSRANGE_H

#include <QBFoundation/Runtime/Types.h>

#include <algorithm>
#include <cstdint>

class NSString;

/// `length` places from `location` on.
struct NSRange {
    std::uint32_t location = 0;
    std::uint32_t length = 0;

    friend bool operator==(const NSRange &, const NSRange &) = default;
};

/// The location of a range that was not found.
constexpr std::uint32_t NSNotFound = 0x7fffffff;

constexpr NSRange NSMakeRange(std::uint32_t location, std::uint32_t length) {
    return {location, length};
}

/// The first place behind the range, in more bits so that it never wraps.
constexpr std::uint64_t NSMaxRange(NSRange range) {
    return std::uint64_t{range.location} + range.length;
}

constexpr BOOL NSLocationInRange(std::uint32_t location, NSRange range) {
    return location >= range.location && location < NSMaxRange(range);
}

constexpr BOOL NSEqualRanges(NSRange a, NSRange b) {
    return a == b;
}

/// The places that both ranges hold; {0, 0} when they have none in common.
constexpr NSRange NSIntersectionRange(NSRange a, NSRange b) {
    const std::uint64_t start = std::max(a.location, b.location);
    const std::uint64_t end = std::min(NSMaxRange(a), NSMaxRange(b));
    if (end <= start)
        return {};
    return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(end - start)};
}

/// The smallest range that reaches from the start of either to the end of either, also when one of them is
/// empty; 2^32 - 1 places at most.
constexpr NSRange NSUnionRange(NSRange a, NSRange b) {
    const std::uint32_t start = std::min(a.location, b.location);
    const std::uint64_t length = std::max(NSMaxRange(a), NSMaxRange(b)) - start;
    return {start, static_cast<std::uint32_t>(std::min<std::uint64_t>(length, UINT32_MAX))};
}

/// Returns "{location, length}", autoreleased.
QB_EXPORT NSString *NSStringFromRange(NSRange range);

/// Returns the range that `text` names in the form of `NSStringFromRange`; missing numbers are 0.
QB_EXPORT NSRange NSRangeFromString(NSString *text);

#endif
