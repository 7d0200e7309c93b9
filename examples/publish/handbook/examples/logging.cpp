#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    QBFoundationInitializer::initializeDebugAndProfileChannels();

    NSString *file = OSFilePath::uniqueTmpFilename();
    OSLogger::disableDuplicateLogToStderr();
    OSLogger::createLoggerForCategory("web"_ns, /*withLogLevel=*/1, /*logPrefix=*/"shop"_ns,
                                      /*logFileName=*/file);
    OSLogger *logger = OSLogger::loggerForCategory("web"_ns);
    logger->logWithLevelFormat(1, "%d visitors"_ns, 3);
    logger->logWithLevelFormat(2, "too unimportant to be written"_ns);

    // The line begins with the time and the process, which differ from run to run.
    NSString *line = QBFileInputStream::streamWithFile(file)->readLine();
    OSUserIO::printLn(line->substringFromIndex(line->rangeOfString("[shop"_ns).location));
    OSFilePath::removePath(file);

    char bytes[1024];
    OSUserIO::printLn(NSString::stringWith(profile_beautifyBytes(1536, bytes)));
}
