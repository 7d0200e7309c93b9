// Does the same over and over, and looks whether memory and descriptors stay as they are.
//   qb_soak processes|sockets CYCLES
#include <QBFoundation/QBFoundation.h>

#include "OSAdaptor/ProcessOutput.h"
#include "support/OpenDescriptors.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <sys/wait.h>

namespace {

// KiB, of which the allocator may need some for other reasons than a leak; and the system counts in steps.
constexpr long kMostGrowth = 1024;

struct State {
    long memory; // resident, KiB
    long descriptors;
    bool hasChildren;
};

State state() {
    long pages = 0;
    std::ifstream("/proc/self/statm").ignore(64, ' ') >> pages;
    return {pages * 4, openDescriptors(), ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD};
}

// One start of each kind, each of which must do what it is to do.
bool runProcesses() {
    const NSAutoreleasePool pool;
    OSPipe *const output = OSPipe::pipe();
    const int end = output->writeHandle();
    const Ref<OSProcess> echo = OSProcess::initWithCommand(
        "sh"_ns, script("echo $A"), NSDictionary::dictionaryWith({{"A"_ns, "b"_ns}}), nullptr, &end, nullptr);
    output->closeWriteHandle();
    bool isGood = contentOf(output) == "b\n" && echo->waitForProcessDoHang(YES) == 1;

    const Ref<OSProcess> missing = OSProcess::initWithCommand("/no/such"_ns, nullptr, nullptr);
    isGood &= missing->waitForProcessDoHang(YES) == -1 && ERRORHANDLER->clearErrorStack()->count() == 1;

    OSPipe *const written = OSPipe::pipe();
    OSProcess::createSubProcessWritingToPipe(written, "echo"_ns, NSArray::arrayWith({"c"_ns}), nullptr);
    isGood &= contentOf(written) == "c\n";

    OSPipe *const answer = OSPipe::pipe();
    OSPipe *const question = OSPipe::pipe();
    OSProcess::createCoprocessWithPipeForRead(answer, question, "cat"_ns, nullptr, nullptr, nullptr);
    question->getOutputStream()->writeObject("d"_ns);
    question->closeWriteHandle();
    isGood &= contentOf(answer) == "d";

    OSProcess::runExternalCmd("false"_ns, nullptr, nullptr);
    isGood &= ERRORHANDLER->clearErrorStack()->count() == 1;

    NSArray *const several = NSArray::arrayWith(
        {OSProcess::subProcessWithCommand("sleep"_ns, NSArray::arrayWith({"9"_ns}), nullptr),
         OSProcess::subProcessWithCommand("true"_ns, nullptr, nullptr)});
    static_cast<OSProcess *>(several->objectAtIndex(0))->sendKillSignal();
    for (id process : *several)
        isGood &= static_cast<OSProcess *>(process)->waitForProcessDoHang(YES) == 1;
    return isGood;
}

// A conversation between a client and a server, and what goes wrong with each.
bool runSockets() {
    const NSAutoreleasePool pool;
    NSString *const name = OSSocket::makeNameForSocket();
    OSSocket *const server = OSSocket::serverSocketWithName(name);
    OSSocket *const client = OSSocket::clientSocketWithName(name);
    NSArray *const waiting = OSSocket::selectSockets(NSArray::arrayWith({server}), OSSocket::kReadable, 9, 0);
    OSSocket *const peer = OSSocket::acceptSocketFromListener(server);
    OSFilePath::removePath(name);
    if (!client || !peer || waiting->count() != 1)
        return false;
    client->writeLine("a question"_ns);
    NSString *const question = peer->readLineWithTimeout(9000);
    bool isGood = question && question->view() == "a question";
    peer->getOutputStream()->writeObject("answer"_ns);
    peer->close();
    isGood &= client->readBytes(100)->length() == 6 && client->getInputStream()->readByte() == -1;

    client->writeLine("more"_ns);
    OSSocket::clientSocketWithName("/no/such/socket"_ns);
    OSSocket::clientSocketToHost(nullptr, /*port=*/0);
    return isGood && ERRORHANDLER->clearErrorStack()->count() == 3;
}

} // namespace

int main(int argumentCount, char **arguments) {
    const std::string_view kind = argumentCount == 3 ? arguments[1] : "";
    bool (*const run)() = kind == "processes" ? runProcesses : kind == "sockets" ? runSockets : nullptr;
    const long cycles = run ? std::atol(arguments[2]) : 0;
    if (cycles < 20)
        return std::fputs("usage: qb_soak processes|sockets CYCLES (at least 20)\n", stderr), 2;
    const NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    OSLogger::setDefaultLogFileName("/dev/null"_ns);
    OSLogger::disableDuplicateLogToStderr();

    State first{};
    for (long cycle = 1; cycle <= cycles; ++cycle) {
        if (!run())
            return std::fprintf(stderr, "cycle %ld went wrong\n", cycle), 1;
        if (cycle % (cycles / 10) != 0)
            continue;
        const State now = state();
        std::printf("%7ld cycles: %6ld KiB, %ld descriptors\n", cycle, now.memory, now.descriptors);
        if (first.memory == 0)
            first = now;
        if (now.memory - first.memory > kMostGrowth || now.descriptors != first.descriptors ||
            now.hasChildren)
            return std::fputs("something is left over\n", stderr), 1;
    }
}
