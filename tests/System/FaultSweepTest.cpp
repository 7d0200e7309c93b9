#include "support/FaultSweep.h"
#include "support/SocketPair.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Place = TemporaryDirectory;

// More than the streams' windows hold.
const std::string &longText() {
    static const std::string text = [] {
        std::string lines;
        for (int line = 0; lines.size() < 150000; ++line)
            lines += "line " + std::to_string(line) + std::string(line % 990, '.') + "\n";
        return lines;
    }();
    return text;
}

void nothing(const Place &) {}

void oldFile(const Place &place) {
    place.write("out", "old");
    fs::permissions(place / "out", fs::perms(0606));
}

void longFile(const Place &place) {
    place.write("in", longText());
}

NSDictionary *settings() {
    static const Ref<NSDictionary> settings(NSDictionary::dictionaryWith(
        {{"name"_ns, "a text"_ns},
         {"list"_ns, NSArray::arrayWithObjects("x"_ns, "y"_ns, NSArray::arrayWithObjects("z"_ns))},
         {"bytes"_ns, NSData::dataWithBytes("\0\xFF", 2)},
         {"long"_ns, NSString::stringWith(longText())}}));
    return settings;
}

// --- Streams ---

void writeInSteps(QBFileOutputStream *stream) {
    if (!stream)
        return;
    const std::string text = longText();
    stream->writeFormat("%d %@\n"_ns, 5, "five"_ns);
    for (std::size_t i = 0; i < 70000; ++i)
        stream->writeByte(text[i]);
    stream->flush();
    stream->writeBuffer(text.data(), 100000);
    stream->writeObject(settings());
    stream->close();
}

const Use kStreams[] = {
    {"AtomicFileInSteps", oldFile,
     [](const Place &place) { writeInSteps(QBFileOutputStream::streamWithFile(place.string("out"), YES)); }},
    {"NewFileInNewDirectories", nothing,
     [](const Place &place) { writeInSteps(QBFileOutputStream::streamWithFile(place.string("a/b/out"))); },
     Leaves::parts},
    {"FileWithoutClose", oldFile,
     [](const Place &place) {
         if (auto stream = QBFileOutputStream::initWithFile(place.string("out"), YES))
             stream->writeObject("new"_ns);
     }},
    {"LinesOfAFile", longFile,
     [](const Place &place) {
         std::string lines;
         auto *stream = QBFileInputStream::streamWithFile(place.string("in"));
         while (NSString *line = stream ? stream->readLine() : nullptr)
             lines += std::string(line->view()) + "|";
         return lines;
     }},
    {"BlocksOfAFile", longFile,
     [](const Place &place) {
         std::string blocks;
         auto *stream = QBFileInputStream::streamWithFile(place.string("in"));
         char block[20000];
         for (std::uint32_t length = 1; stream; length = length * 7 % 20000) {
             const int count = stream->readBuffer(block, length);
             if (count <= 0)
                 break;
             blocks.append(block, static_cast<std::size_t>(count));
         }
         return blocks;
     }},
    {"EncipheredFile", longFile,
     [](const Place &place) {
         auto *source = QBFileInputStream::streamWithFile(place.string("in"));
         auto *target = source ? QBFileOutputStream::streamWithFile(place.string("out")) : nullptr;
         if (!target)
             return;
         auto *filter = QBBlowfishOutputFilter::streamWithTarget(target, /*randomSeed=*/5);
         QBCopyShop::copyShop()->copyFrom(source, filter);
         filter->close();
     },
     Leaves::parts},
};
QB_FAULT_SWEEP(Streams, kStreams);

// --- Files and trees ---

void tree(const Place &place) {
    place.write("tree/a", "a");
    place.write("tree/deep/er/b", std::string(5000, 'b'));
    place.write("tree/deep/empty", "");
    place.link("../a", "tree/deep/link");
    place.makeDirectory("tree/hollow");
    fs::permissions(place / "tree/a", fs::perms(0640));
}

const Use kFiles[] = {
    {"FileCopy", longFile,
     [](const Place &place) { OSFilePath::copyPath(place.string("in"), place.string("copy"), YES); },
     Leaves::parts},
    {"TreeCopy", tree,
     [](const Place &place) { OSFilePath::copyPath(place.string("tree"), place.string("copy"), YES); },
     Leaves::parts},
    {"TreeRemoval", tree, [](const Place &place) { OSFilePath::removePath(place.string("tree")); }},
    {"TreeRemovalByWayOfADirectory",
     [](const Place &place) {
         tree(place);
         place.makeDirectory("tmp");
     },
     [](const Place &place) { OSFilePath::removePath(place.string("tree"), place.string("tmp")); },
     Leaves::anything},
    {"Rename", oldFile,
     [](const Place &place) { OSFilePath::renamePath(place.string("out"), place.string("new")); }},
    {"Touch", nothing,
     [](const Place &place) { OSFilePath::touchFileAtPath(place.string("new"), 1000000000); }},
    {"LinkToADirectory", tree,
     [](const Place &place) { OSFilePath::symlink(place.string("link"), place.string("tree/deep")); }},
    {"Directories", nothing, [](const Place &place) { OSFilePath::makePath(place.string("a/b/c")); },
     Leaves::parts},
};
QB_FAULT_SWEEP(Files, kFiles);

// --- Values in files ---

const Use kValues[] = {
    {"PropertyListToFile", oldFile,
     [](const Place &place) { return settings()->writeToFile(place.string("out"), YES) ? "yes" : "no"; }},
    {"PropertyListFromFile", [](const Place &place) { settings()->writeToFile(place.string("in"), NO); },
     [](const Place &place) {
         return describe(NSDictionary::dictionaryWithContentsOfFile(place.string("in")));
     }},
    {"ArchiveToFile", oldFile,
     [](const Place &place) {
         return NSKeyedArchiver::archiveRootObject(settings(), place.string("out")) ? "yes" : "no";
     }},
    {"ArchiveFromFile",
     [](const Place &place) { NSArchiver::archiveRootObject(settings(), place.string("in")); },
     [](const Place &place) { return describe(NSUnarchiver::unarchiveObjectWithFile(place.string("in"))); }},
    {"TextFromFile", longFile,
     [](const Place &place) { return describe(NSString::stringWithContentsOfFile(place.string("in"))); }},
};
QB_FAULT_SWEEP(Values, kValues);

// --- Sockets ---

// Milliseconds to wait for what is there already, unless a fault has kept it back.
constexpr int kShortTime = 20;

// What a client and a server say to each other.
std::string conversation(OSSocket *server, OSSocket *client) {
    OSSocket *const peer = server && client ? OSSocket::acceptSocketFromListener(server) : nullptr;
    if (!peer)
        return "";
    client->writeLine(NSString::stringWith(std::string(300, 'x')));
    client->getOutputStream()->writeObject("a line\n and more"_ns);
    NSArray *const ready =
        OSSocket::selectSockets(NSArray::arrayWithObject(peer), OSSocket::kReadable, 0, kShortTime);
    std::string text = ready && ready->count() == 1 ? "ready " : "";
    text += describe(peer->readLineWithTimeout(kShortTime));
    text += describe(peer->readLineWithTimeout(kShortTime));
    char bytes[4];
    const int peeked = peer->bufferedReceiveWithBuffer(bytes, sizeof bytes, kShortTime, /*performPeek=*/YES);
    client->close();
    return text + std::to_string(peeked) + describe(peer->readBytes(100, kShortTime));
}

// A signal that interrupts receiving ends it without an error; a storm of them may go on until the sockets
// close.
const std::vector<Call> kInterruptible = {Call::recv, Call::poll, Call::close};

const Use kSockets[] = {
    {"InternetSockets", nothing,
     [](const Place &) {
         OSSocket *const server = OSSocket::serverSocketOnHost("127.0.0.1"_ns, 0);
         return server ? conversation(server,
                                      OSSocket::clientSocketToHost("localhost"_ns, boundTo(server).second))
                       : "";
     },
     Leaves::oldOrNew, kInterruptible},
    {"Names", nothing,
     [](const Place &) {
         return describe(OSNameService::addressesForHost("localhost"_ns)) +
                describe(OSNameService::hostForAddress("127.0.0.1"_ns)) +
                std::to_string(OSNameService::portForService("80"_ns));
     }},
};

QB_FAULT_SWEEP(Sockets, kSockets);

// --- A full disk ---

using FullDiskTest = PoolFixture;

} // namespace

TEST_F(FullDiskTest, IsToldByAllThatWritesInPlace) {
    const Act acts[] = {
        [](const Place &) { writeInSteps(QBFileOutputStream::streamWithFile("/dev/full"_ns)); },
        [](const Place &) {
            QBFileOutputStream::streamWithFilePointer(std::fopen("/dev/full", "w"))->writeNL();
        },
        [](const Place &) { EXPECT_FALSE("x"_ns->writeToFile("/dev/full"_ns, NO)); },
        [](const Place &place) { _copyFile((place / "in").c_str(), "/dev", "full"); },
    };
    const TemporaryDirectory directory;
    longFile(directory);
    for (const Act &act : acts) {
        inOwnPool([&] { act(directory); });
        const auto row = &act - acts;
        EXPECT_EQ(takenErrors().substr(0, 7), "(100024") << "row " << row;
        EXPECT_NE(recordingErrorHandler()->raised.back().values.find("No space left"), std::string::npos)
            << row;
    }
}
