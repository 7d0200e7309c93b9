#include <QBFoundation/QBFoundation.h>

/// Everything that can still be read from the pipe.
static NSString *contentOf(OSPipe *pipe) {
    OSPipeInputStream *source = pipe->getInputStream();
    QBStringOutputStream *text = QBStringOutputStream::stream();
    char block[4096];
    for (int count; (count = source->readBuffer(block, sizeof block)) > 0;)
        text->writeBuffer(block, count);
    return text->targetString();
}

static void show(const char *what) {
    OSUserIO::printLn(NSString::stringWithFormat("%s: %@"_ns, what, ERRORHANDLER->errorMessage()));
    ERRORHANDLER->clearErrorStack();
}

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    // A child: its output comes through a pipe, its environment has one variable more.
    OSPipe *output = OSPipe::pipe();
    int end = output->writeHandle();
    OSProcess *greeter = OSProcess::subProcessWithCommand(
        "sh"_ns, NSArray::arrayWith({"-c"_ns, "echo \"Good morning, $NAME\"; exit 3"_ns}),
        NSDictionary::dictionaryWith({{"NAME"_ns, "Ada"_ns}}), /*stdinHandle=*/nullptr, &end,
        /*stderrHandle=*/nullptr);
    output->closeWriteHandle(); // or the end of the output would never come
    OSUserIO::print(contentOf(output));
    int exitCode = 0;
    greeter->waitForProcessDoHang(/*doHang=*/YES, &exitCode);
    OSUserIO::printLn(NSString::stringWithFormat("exit code %d"_ns, exitCode));

    // A filter for both directions, which nobody has to wait for.
    OSPipe *sorted = OSPipe::pipe();
    OSPipe *unsorted = OSPipe::pipe();
    OSProcess::createCoprocessWithPipeForRead(sorted, unsorted, "sort"_ns, nullptr, nullptr,
                                              /*stderrHandle=*/nullptr);
    unsorted->getOutputStream()->writeObject("pear\napple\nmedlar\n"_ns);
    unsorted->closeWriteHandle();
    OSUserIO::print(contentOf(sorted));

    // A command that only has to succeed.
    OSProcess::runExternalCmd("sh"_ns, NSArray::arrayWith({"-c"_ns, "echo no paper >&2; exit 1"_ns}),
                              nullptr);
    show("printing");

    // A program that is not there is found out when its process has ended.
    OSProcess *nothing = OSProcess::subProcessWithCommand("/no/such/program"_ns, nullptr, nullptr);
    nothing->waitForProcessDoHang(YES);
    show("nothing");

    // The first of several.
    NSArray *racers = NSArray::arrayWith(
        {OSProcess::subProcessWithCommand("sleep"_ns, NSArray::arrayWith({"60"_ns}), nullptr),
         OSProcess::subProcessWithCommand("true"_ns, nullptr, nullptr)});
    if (OSProcess::waitForProcesses(racers, /*timeout=*/30, /*waitForAll=*/NO) == 1)
        OSUserIO::printLn("one has come in"_ns);
    static_cast<OSProcess *>(racers->objectAtIndex(0))->sendTermSignal();
}
