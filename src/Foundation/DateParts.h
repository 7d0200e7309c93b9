// From dates to the seconds that the calendar reckons with, and back.
#ifndef QBFOUNDATION_FOUNDATION_DATEPARTS_H
#define QBFOUNDATION_FOUNDATION_DATEPARTS_H

#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Foundation/NSString.h>

#include "Calendar/FixedFormat.h"
#include "Calendar/Format.h"

#include <cstdint>
#include <string_view>

namespace qb {

/// The form of a date's description.
inline constexpr std::string_view kDefaultDateFormat = "%Y-%m-%d %H:%M:%S %z";

/// Returns the whole seconds from 1970 to the second that the interval since the reference date lies in; of
/// an interval that no calendar reaches, the nearest that one does.
std::int64_t utcSecondsOf(NSTimeInterval interval);

/// Returns the millisecond within that second.
int millisecondOf(NSTimeInterval interval);

/// The seconds from 1970 to the reference date.
inline constexpr std::int64_t kReferenceSeconds = 978307200;

/// Returns the interval since the reference date; seconds before what 64 bits count from there are the first.
inline NSTimeInterval intervalOf(std::int64_t utcSeconds, int millisecond = 0) {
    std::int64_t counted;
    if (__builtin_sub_overflow(utcSeconds, kReferenceSeconds, &counted)) [[unlikely]]
        counted = INT64_MIN;
    const auto seconds = static_cast<NSTimeInterval>(counted);
    return millisecond == 0 ? seconds : seconds + millisecond / 1000.0;
}

/// Returns what the clocks of `zone` show.
calendar::Moment momentOf(NSTimeInterval interval, const NSTimeZone *zone);

/// Returns the text of a local time in the form of `format`, which suits it, autoreleased.
inline NSString *fixedText(std::int64_t localSeconds, const calendar::FixedFormat &format) {
    const auto write = [&](char *target) { format.write(localSeconds, target); };
    return NSString::initFilled(format.length(), write).autorelease();
}

/// Returns the date in the form of `format`, autoreleased.
NSString *dateText(NSTimeInterval interval, const NSTimeZone *zone, std::string_view format);

} // namespace qb

#endif
