// Dates as HTTP headers have them.
#ifndef QBFOUNDATION_CALENDAR_HTTPDATE_H
#define QBFOUNDATION_CALENDAR_HTTPDATE_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace qb::calendar {

/// Whether `text` has the form of `dateTemplate`, in which # stands for a digit, @ for an upper-case letter,
/// $ for a lower-case letter, & for a hexadecimal digit, ~ for a blank or a digit, and * for the whole rest
/// of the text; anything else stands for itself. Not more than 255 characters are compared.
bool hasDateForm(std::string_view text, std::string_view dateTemplate);

/// Returns the seconds since 1970 of a date in one of the forms of RFC 9110, section 5.6.7; none when it has
/// another form, or says a day that the calendar has not or a year outside of 1970 to 2037. What stands in
/// front of the first blank, the day of the week, is not looked at, nor is what follows the seconds.
std::optional<std::int32_t> parseHttpDate(std::string_view text);

} // namespace qb::calendar

#endif
