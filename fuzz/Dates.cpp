// Reads any text as a date, by each of the parsers.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSString.h>

#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

void readIsoText(NSString *text) {
    NSCalendarDate *const date = text->asDateFromISODateTimeString();
    require((date != nullptr) == (text->length() == 14), "14 characters are a date");
    if (date) {
        require(date->asISODateTimeString()->isIsoDateTimeString(), "that is written as digits");
        const auto field = [text](std::uint32_t place, std::int32_t most) {
            return std::clamp(text->substringWithRange({place, 2})->intValue(), 0, most);
        };
        require(date->hourOfDay() == field(8, 23) && date->minuteOfHour() == field(10, 59) &&
                    date->secondOfMinute() == field(12, 59),
                "each two characters are a number");
    }
    if (text->isIsoDateTimeStringWithMilliseconds() && text->length() == 17)
        require(text->asDateFromISODateTimeStringWithMilliseconds() != nullptr, "17 digits are a date");
    auto *const standard = static_cast<NSString *>(text->standardizedISODateTimeString());
    require((standard != nullptr) == (text->containsData() != NO), "any text has a standard form");
    if (standard)
        require(standard->standardizedISODateTimeString()->isEqual(standard), "which is its own");
}

void readHttpDate(NSString *text) {
    const std::int32_t seconds = text->ctimeFromHTTPDate();
    require(seconds >= 0 && seconds <= 2145916801, "HTTP dates are of 1970 to 2037");
    NSString *const written = NSDate::dateWithCTime(seconds)->descriptionWithCalendarFormat(
        "%a, %d %b %Y %H:%M:%S GMT"_ns, NSTimeZone::gmt(), nullptr);
    require(seconds > 2145916799 || written->ctimeFromHTTPDate() == seconds, "they come back");
}

void readDayFirst(NSString *text) {
    NSCalendarDate *const date = NSDate::obsolete_dateWithString(text);
    if (date)
        require(date->yearOfCommonEra() >= 1971 && date->yearOfCommonEra() <= 2019,
                "years are in their range");
}

} // namespace

// The first line may be a format; the rest, or all, is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const std::size_t line = input.find('\n');
    NSString *const text =
        NSString::stringWith(line == std::string_view::npos ? input : input.substr(line + 1));
    readIsoText(text);
    readHttpDate(text);
    readDayFirst(text);
    if (line == std::string_view::npos)
        return 0;
    NSString *const format = NSString::stringWith(input.substr(0, line));
    NSCalendarDate *const date = NSCalendarDate::dateWithString(text, format);
    if (date)
        require(date->description() != nullptr, "it has a text");
    NSDate::setStringValueFormat(format->cString());
    require(NSDate::dateWithCTime(0)->stringValue()->cStringLength() < 1024, "texts have a limit");
    return 0;
}
