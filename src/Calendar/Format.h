// Dates as text and back.
#ifndef QBFOUNDATION_CALENDAR_FORMAT_H
#define QBFOUNDATION_CALENDAR_FORMAT_H

#include "Zone.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qb::calendar {

/// A local date and time with what is to be shown about its zone.
struct Moment {
    Fields fields;
    int millisecond = 0;
    std::int32_t offset = 0;           // seconds east of Greenwich
    std::string_view zoneAbbreviation; // borrowed from the zone
};

/// Returns the moment at `utcSeconds` in `zone`, which must outlive it.
Moment momentAt(std::int64_t utcSeconds, int millisecond, const Zone &zone);

/// Appends `moment` to `text` in the form of `pattern`.
///
/// Conversions, with English names whatever the locale: %a %A weekday, %b %B month, %d %e day (two digits;
/// padded with a blank), %H hour, %I hour 1 to 12 with %p AM or PM, %M minute, %S second, %F milliseconds
/// (three digits), %j day of the year, %m month, %w weekday (0 Sunday), %u weekday (1 Monday), %y year of the
/// century, %Y year (as many digits as it has), %G %V year and week of ISO 8601, %z offset (+hhmm), %Z zone
/// abbreviation, %s seconds since 1970-01-01 UTC, %c "%a %b %e %H:%M:%S %Y", %x "%m/%d/%y", %X "%H:%M:%S", %%
/// a percent sign. Anything else stands for itself, an unknown conversion with its percent sign.
void appendFormatted(std::string &text, std::string_view pattern, const Moment &moment);

/// Returns what `appendFormatted` appends.
std::string formatted(std::string_view pattern, const Moment &moment);

/// What a text says about a date. Its creator puts the values in that hold for what the text leaves out.
struct ParsedDate {
    Fields fields; // may be a date that the calendar has not, such as 30 February; see `secondsFromFields`
    int millisecond = 0;
    std::optional<std::int32_t> offset;     // %z, seconds east of Greenwich
    std::string zoneName;                   // %Z, as it stood; empty when there was none
    std::optional<std::int64_t> utcSeconds; // %s
};

/// Reads `text` by `pattern`, which has the conversions of `appendFormatted`, into `date`.
///
/// Lenient: blanks in the pattern match any blanks or none, blanks before a conversion and at the end are
/// passed over; names may be short or long, in any case; numbers may have fewer digits than usual. Two-digit
/// years from 69 are in the 20th century, the others in the 21st. Weekdays and ISO weeks are read but decide
/// nothing. Of several values for one field the most exact wins: %s over all, %Y over %y, %H over %I, month
/// and day over %j. Returns false, with `date` unchanged, when the text does not fit, a value is out of
/// range, or text is left over.
bool parseDate(std::string_view text, std::string_view pattern, ParsedDate &date);

} // namespace qb::calendar

#endif
