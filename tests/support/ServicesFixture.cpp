#include "support/ServicesFixture.h"

#include <regex>

void ServicesFixture::reset() {
    OSLogger::_loggers()->removeAllObjects();
    OSLogger::setDefaultLogFileName(nullptr);
    OSLogger::setDefaultLogPrefix(nullptr);
    OSLogger::setDefaultLogLevel(0);
    _duplicateLogToStderr = YES;
    OSDebugPrinter::globalDebugPrinter()->release(); // the next one knows nothing
    for (int *channel : {&DEBUG_CHANNEL_UTILS, &DEBUG_CHANNEL_MISC, &DEBUG_CHANNEL_PROCESS,
                         &DEBUG_CHANNEL_FILEIO, &DEBUG_CHANNEL_SOCKET, &PROFILE_CHANNEL_NET_IO, &debug})
        *channel = 0;
}

void ServicesFixture::activateChannel(const char *name) {
    QBFoundationInitializer::initializeDebugAndProfileChannels();
    OSDebugPrinter::globalDebugPrinter()->setDebugChannelsActive(
        NSArray::arrayWithObject(NSString::stringWithCString(name)));
}

std::string ServicesFixture::traced(const char *channel, int level, const std::function<void()> &act) {
    activateChannel(channel);
    debug = level;
    CapturedOutput output;
    act();
    const std::string state = std::string(channel) + "\\(" + std::to_string(level) + "\\) OK";
    const std::string start = R"((^|\n)\[T\] \(P\) \[\] \[)" + state + R"(\] (src/[^:]*):[0-9]+)";
    return replaced(logLines(output.end()), start, "$1$2:L");
}

std::string logLines(const std::string &text, pid_t process) {
    const std::string start =
        R"((^|\n)\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\] \()" + std::to_string(process) + R"(\) )";
    return replaced(text, start, "$1[T] (P) ");
}

std::string replaced(const std::string &text, const std::string &pattern, const std::string &by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

std::string addressOf(const void *object) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%08lx", reinterpret_cast<unsigned long>(object));
    return text;
}

ChildEnd runInChild(const std::function<void()> &work) {
    CapturedOutput output;
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        std::fflush(nullptr);
        ::_exit(0);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child)
        return {};
    return {child, WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), output.end()};
}
