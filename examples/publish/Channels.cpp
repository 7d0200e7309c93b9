#include "Channels.h"

#include <QBFoundation/QBFoundation.h>

namespace publish {

int debugChannel = 0;
int profileChannel = 0;

void registerChannels() {
    OSDebugPrinter *const printer = OSDebugPrinter::globalDebugPrinter();
    debugChannel = printer->registerDebugChannel("publish"_ns);
    profileChannel = printer->registerProfileChannel("publish"_ns);
}

} // namespace publish
