// Changes files in the working directory, for the script that kills it at each of its calls.
#include <QBFoundation/QBFoundation.h>

#include <cstdio>
#include <string_view>

namespace {

// Gives "out" the content of "new": lines, short and long pieces.
void write(BOOL atomically) {
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

struct Change {
    std::string_view name;
    void (*make)();
};

const Change kChanges[] = {
    {"overwrite", [] { write(/*atomically=*/NO); }},
    {"replace", [] { write(/*atomically=*/YES); }},
    {"remove", [] { OSFilePath::removePath("tree"_ns, "away"_ns); }},
};

} // namespace

int main(int argc, char **argv) {
    const NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    for (const Change &change : kChanges)
        if (argc == 2 && change.name == argv[1])
            change.make();
    if (ERRORHANDLER->errorState() == ERRORSTATE_OK)
        return 0;
    std::fprintf(stderr, "%s\n", ERRORHANDLER->errorStackMessagesStringWithIndent(nullptr)->cString());
    return 1;
}
