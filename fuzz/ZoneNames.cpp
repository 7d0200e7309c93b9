// Looks any name up as that of a time zone, aliases among them.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Foundation/NSTimeZone.h>
#include <QBFoundation/OSAdaptor/OSTime.h>
#include <QBFoundation/QBErrorHandler.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    const NSAutoreleasePool pool;
    NSString *const name = NSString::stringWith({reinterpret_cast<const char *>(data), size});
    NSTimeZone *const zone = OSTime::timeZoneWithName(name);
    require(handler->errorState() == ERRORSTATE_OK, "an unknown name is no error");
    if (!zone)
        return 0;
    require(zone->isEqual(OSTime::timeZoneWithName(name)), "a name always means the same zone");
    require(std::abs(zone->secondsFromGMT()) <= 26 * 3600, "clocks are never further ahead or behind");
    require(zone->name()->containsData() && zone->name()->view().find('\0') == std::string_view::npos,
            "a zone has a name");
    return 0;
}
