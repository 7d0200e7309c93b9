#include <QBFoundation/QBFoundation.h>

/// Prints the newest line of a log. It begins with the time and the process, which differ from run to run.
void printLastLine(NSString *file, NSString *from) {
    NSArray *lines = NSString::stringWithContentsOfFile(file)->componentsSeparatedByString("\n"_ns);
    auto *line = static_cast<NSString *>(lines->objectAtIndex(lines->count() - 2));
    OSUserIO::printLn(line->substringFromIndex(line->rangeOfString(from).location));
}

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    QBFoundationInitializer::initializeDebugAndProfileChannels();
    OSLogger::disableDuplicateLogToStderr();
    NSString *file = OSFilePath::uniqueTmpFilename();

    // A log: level 2 is beyond what this logger writes.
    OSLogger::createLoggerForCategory("web"_ns, /*withLogLevel=*/1, /*logPrefix=*/"shop"_ns,
                                      /*logFileName=*/file);
    OSLogger *logger = OSLogger::loggerForCategory("web"_ns);
    logger->logWithLevelFormat(1, "%d visitors"_ns, 3);
    logger->logWithLevelFormat(2, "too unimportant to be written"_ns);
    printLastLine(file, "[shop"_ns);

    // Traces: a channel of the program's own, and the logger that all traces go to.
    OSDebugPrinter *printer = OSDebugPrinter::globalDebugPrinter();
    const int cart = printer->registerDebugChannel("cart"_ns);
    OSLogger::createLoggerForCategory("debug"_ns, 0, "shop"_ns, file);
    debug_printf(cart, "not to be seen yet");
    printer->setDebugChannelsActive(NSArray::arrayWith({"cart"_ns}));
    debug = 2;
    debug_printf(cart, "%d books, %s", 3, "paid");
    printLastLine(file, "[shop"_ns);

    // A profile: times and memory on standard error, so that nothing of it is to be seen below.
    const int shop = printer->registerProfileChannel("shop"_ns);
    printer->setProfileChannelsActive(NSArray::arrayWith({"shop"_ns}));
    profile_beginAction(shop, "order %d", 12);
    profile_endAction(shop, "order %d", 12);

    OSFilePath::removePath(file);
}
