#include "OSAdaptor/OSTime.Text.h"

#include "Calendar/Format.h"
#include "Calendar/Zone.h"
#include "System/Clock.h"

#include <string>

std::string_view qb::currentTimeText() {
    struct Last {
        std::int64_t second = 0;
        calendar::ZoneRef zone; // null before the first time
        std::string text;
    };
    static Last &last = *new Last;
    const std::int64_t second = sys::wallSeconds();
    calendar::ZoneRef zone = calendar::systemZone(); // another one as soon as TZ has changed
    if (second != last.second || zone != last.zone) {
        last.text = calendar::formatted("%Y-%m-%d %H:%M:%S", calendar::momentAt(second, 0, *zone));
        last.second = second;
        last.zone = std::move(zone);
    }
    return last.text;
}
