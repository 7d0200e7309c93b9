#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    // The plug-ins stand beside the program, in files such as libReadingTime.so.
    auto *program = static_cast<NSString *>(NSProcessInfo::processInfo()->arguments()->firstObject());
    NSString *directory =
        program->stringByDeletingLastPathComponent()->stringByAppendingPathComponent("plugins"_ns);

    OSUserIO::printLn(NSClassFromString("ReadingTime"_ns) ? "there already"_ns : "no such class yet"_ns);
    OSDynamicLoader::loadLibrary("ReadingTime"_ns, directory);
    Class *plugin = NSClassFromString("ReadingTime"_ns);

    id values = send<id>(plugin, "valuesForPage:body:"_sel, nullptr, "<p>Four words of text</p>"_ns);
    OSUserIO::printLn(values->description());
}
