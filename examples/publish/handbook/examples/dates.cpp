#include <QBFoundation/QBFoundation.h>

static void show(id text) {
    OSUserIO::printLn(text ? text->stringValue() : "no date"_ns);
}

int main() {
    NSAutoreleasePool pool;
    NSTimeZone *berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);

    // One instant, as clocks show it.
    NSCalendarDate *launch = NSCalendarDate::dateWithYear(2024, 3, 30, 12, 0, 0, berlin);
    show(launch->description());
    show(launch->asISODateTimeString());
    launch->setTimeZone(NSTimeZone::timeZoneWithName("Asia/Kathmandu"_ns));
    show(launch->descriptionWithCalendarFormat("%A, %e %B %Y, %H:%M %z"_ns));
    launch->setTimeZone(berlin);

    // In the night after it the clocks go forward: a day later is 23 hours later.
    NSCalendarDate *next = launch->dateByAddingYears(0, 0, 1, 0, 0, 0);
    show(next->description());
    show(NSNumber::numberWithInt(static_cast<std::int32_t>(next->timeIntervalSinceDate(launch)) / 3600));
    show(next->midnightOfTimeZone(berlin)->description());

    // Texts of digits, and what becomes of others.
    for (NSString *text : {"20240330110000"_ns, "2004"_ns, "20041331"_ns, "20030229"_ns})
        show(text->standardizedISODateTimeString());
    show("2024-03-30"_ns->asDateFromISODateTimeString());

    // Dates of HTTP headers.
    for (NSString *text : {"Sun, 06 Nov 1994 08:49:37 GMT"_ns, "Sunday, 06-Nov-94 08:49:37 GMT"_ns,
                           "Sun Nov  6 08:49:37 1994"_ns, "Sun, 31 Feb 1994 08:49:37 GMT"_ns})
        show(NSNumber::numberWithInt(text->ctimeFromHTTPDate()));

    // Dates that people type, and any other form.
    NSCalendarDate *typed = NSDate::obsolete_dateWithString("24.12.99"_ns);
    show(typed->descriptionWithCalendarFormat("%d %b %Y"_ns));
    show(NSDate::obsolete_dateWithString("31.12.2020"_ns));
    show(NSCalendarDate::dateWithString("4 March 2025 +0100"_ns, "%d %B %Y %z"_ns)->asISODateTimeString());
}
