// Dates of pages.
#ifndef PUBLISH_DATES_H
#define PUBLISH_DATES_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// Returns the instant that a page's head gives, in GMT: "2024-05-01 12:30:00" from the year on as far as it
/// is known, the separators at will, or a date as HTTP has it. nil when the text is neither, or names a day
/// or time that there is not.
NSCalendarDate *dateIn(NSString *text);

/// Returns the instant of a date as HTTP has it, in any of its three forms (RFC 9110, section 5.6.7), all of
/// them in GMT; nil when the text is none, names another day of the week, or is not of 1970, but for its
/// first second, to 2037.
NSCalendarDate *httpDateIn(NSString *text);

/// Returns the instant of a date object of the years 1 to 9999, which is how plug-ins may give it, or that of
/// a text as above; nil otherwise.
NSCalendarDate *dateOf(id value);

/// Returns a date as "2024-05-01T12:30:00Z".
NSString *isoText(NSCalendarDate *date);

/// Returns a date as "Wed, 01 May 2024 12:30:00 GMT".
NSString *httpText(NSCalendarDate *date);

} // namespace publish

#endif
