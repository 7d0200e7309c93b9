// Changes files in the working directory, for the script that kills it at each of its calls.
#include <QBFoundation/QBFoundation.h>

#include <cstdio>
#include <string_view>

// Gives "out" the content of "new": lines, short and long pieces.
static void write(BOOL atomically) {
    QBFileInputStream *const source = QBFileInputStream::streamWithFile("new"_ns);
    QBFileOutputStream *const target = QBFileOutputStream::streamWithFile("out"_ns, atomically);
    if (!source || !target)
        return;
    static char piece[50000];
    for (std::uint32_t length = 1; length < sizeof piece; length += length < 100 ? 1 : 5000) {
        const int count = source->readBuffer(piece, length);
        if (count > 0)
            target->writeBuffer(piece, static_cast<std::uint32_t>(count));
    }
    target->close();
}

int main(int argc, char **argv) {
    const NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    const std::string_view change = argc == 2 ? argv[1] : "";
    if (change == "remove")
        OSFilePath::removePath("tree"_ns, "away"_ns);
    else if (change == "replace" || change == "overwrite")
        write(/*atomically=*/change == "replace");
    if (ERRORHANDLER->errorState() == ERRORSTATE_OK)
        return 0;
    std::fprintf(stderr, "%s\n", ERRORHANDLER->errorStackMessagesStringWithIndent(nullptr)->cString());
    return 1;
}
