#include "Dates.h"

#include <string>
#include <string_view>

namespace publish {

namespace {

// When years begin, since 1970.
constexpr NSTimeInterval kYear1 = -62'135'596'800, kYear1000 = -30'610'224'000, kYear10000 = 253'402'300'800;

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

// The digits of a text that has separators, if any, where the form has them; empty for another one.
std::string digitsOf(std::string_view text) {
    constexpr std::string_view kForm = "####-##-## ##:##:##";
    if (text.ends_with('Z'))
        text.remove_suffix(1);
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char separator = i < kForm.size() ? kForm[i] : '#';
        if (isDigit(text[i]))
            digits += text[i];
        else if (text[i] != separator && !(text[i] == 'T' && separator == ' '))
            return {};
    }
    const bool isWhole = digits.size() >= 4 && digits.size() <= 14 && digits.size() % 2 == 0;
    return isWhole && isDigit(text.back()) ? digits : std::string();
}

// A field beyond its range is moved into it; that shows, because the text has it no more.
NSCalendarDate *isoDateIn(std::string_view text) {
    NSString *const digits = NSString::stringWith(digitsOf(text));
    auto *whole = qb::castOrNil<NSString>(digits->standardizedISODateTimeString());
    return whole && whole->hasPrefix(digits) ? whole->asDateFromISODateTimeString() : nullptr;
}

NSString *shown(NSCalendarDate *date, NSString *format) {
    return static_cast<const NSDate *>(date)->descriptionWithCalendarFormat(
        format, NSTimeZone::timeZoneForSecondsFromGMT(0), nullptr);
}

NSString *httpForm() {
    return "%a, %d %b %Y %H:%M:%S GMT"_ns;
}

// The format, with the zeros that "%Y" does not write.
NSString *paddedForm(NSString *format, NSCalendarDate *date) {
    if (date->timeIntervalSince1970() >= kYear1000)
        return format;
    NSString *const zeros = "000"_ns->substringToIndex(4 - shown(date, "%Y"_ns)->length());
    return format->stringByReplacingSubstring("%Y"_ns, zeros->stringByAppendingString("%Y"_ns));
}

} // namespace

NSCalendarDate *dateIn(NSString *text) {
    NSCalendarDate *const date = isoDateIn(text->view());
    return date ? date : httpDateIn(text);
}

// The parser passes over the day of the week and all that is behind the seconds, such as another zone.
NSCalendarDate *httpDateIn(NSString *text) {
    const std::int32_t seconds = text->ctimeFromHTTPDate();
    NSCalendarDate *const date = seconds ? NSCalendarDate::dateWithCTime(seconds) : nullptr;
    const auto isWritten = [&](NSString *format) { return text->isEqual(shown(date, format)); };
    return date && (isWritten(httpForm()) || isWritten("%A, %d-%b-%y %H:%M:%S GMT"_ns) ||
                    isWritten("%a %b %e %H:%M:%S %Y"_ns))
               ? date
               : nullptr;
}

NSCalendarDate *dateOf(id value) {
    auto *const date = qb::castOrNil<NSDate>(value);
    if (!date)
        return dateIn(value->stringValue());
    const NSTimeInterval seconds = date->timeIntervalSince1970();
    return seconds >= kYear1 && seconds < kYear10000 ? NSCalendarDate::dateWithTimeIntervalSince1970(seconds)
                                                     : nullptr;
}

// The texts are sorted, too, so that each year has four digits.
NSString *isoText(NSCalendarDate *date) {
    return shown(date, paddedForm("%Y-%m-%dT%H:%M:%SZ"_ns, date));
}

NSString *httpText(NSCalendarDate *date) {
    return shown(date, paddedForm(httpForm(), date));
}

} // namespace publish
