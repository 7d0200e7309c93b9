#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    QBFoundationInitializer::initializeDebugAndProfileChannels();
    OSDebugPrinter::globalDebugPrinter()->setDebugChannelsActive(NSArray::arrayWith({"fileio"_ns}));
    OSLogger::setDefaultLogPrefix("example"_ns);
    OSLogger::setDefaultLogLevel(2);
    OSUserIO::initialize();

    OSUserIO::printLn(OSDebugPrinter::globalDebugPrinter()->getHelpForDebugChannels());
    OSUserIO::printLn(IdCreator::createId()->isEqual(IdCreator::createId()) ? "one identifier twice"_ns
                                                                            : "two identifiers"_ns);
}
