#include <QBFoundation/OSAdaptor/OSLogger.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/RestrictedFormat.h"
#include "OSAdaptor/OSTime.Text.h"
#include "OSAdaptor/OSUserIO.Print.h"
#include "System/Stdio.h"
#include "Text/Numbers.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace sys = qb::sys;

namespace {

constexpr const char *kFile = "src/OSAdaptor/OSLogger";
constexpr int kLineOfOpen = 236;

// Never destroyed, because lines are written until the end of the process.
struct Defaults {
    Ref<NSString> prefix;
    Ref<NSString> fileName;
};

Defaults &defaults() {
    static Defaults &theDefaults = *new Defaults;
    return theDefaults;
}

OSLogger *tableEntry(NSString *category) {
    return qb::castOrNil<OSLogger>(OSLogger::_loggers()->objectForKey(category));
}

OSLogger *defaultLogger() {
    return tableEntry(""_ns);
}

bool differs(NSString *one, NSString *other) {
    return one != other && !(one && other && one->isEqualToString(other));
}

std::FILE *openForAppending(NSString *name) {
    if (name->view().find('\0') != std::string_view::npos)
        return errno = EINVAL, nullptr;
    return sys::fopen(name->cString(), "a");
}

// Pieces, one behind the other. Those of most lines need no memory from the heap.
class Line {
public:
    template <class... Pieces>
    explicit Line(const Pieces &...pieces) {
        length_ = (std::string_view(pieces).size() + ...);
        if (length_ > sizeof short_)
            long_ = std::make_unique_for_overwrite<char[]>(length_);
        char *end = long_ ? long_.get() : short_;
        ((end = copied(pieces, end)), ...);
    }

    std::string_view text() const { return {long_ ? long_.get() : short_, length_}; }

private:
    static char *copied(std::string_view piece, char *target) {
        std::memcpy(target, piece.data(), piece.size());
        return target + piece.size();
    }

    char short_[500];
    std::unique_ptr<char[]> long_;
    std::size_t length_ = 0;
};

} // namespace

std::uint8_t _defaultLogLevel = 0;
BOOL _duplicateLogToStderr = YES;

Class *OSLogger::cls() {
    using Level = std::uint8_t;
    static const qb::Method methods[] = {
        qb::classMethod<"_loggers">(&OSLogger::_loggers),
        qb::classMethod<"createLoggerForCategory:", void(Class *, NSString *)>(
            &OSLogger::createLoggerOfClass),
        qb::classMethod<"createLoggerForCategory:withLogLevel:logPrefix:andLogFileName:",
                        void(Class *, NSString *, Level, NSString *, NSString *)>(
            &OSLogger::createLoggerOfClass),
        qb::classMethod<"loggerForCategory:">(&OSLogger::loggerOfClass),
        qb::classMethod<"setDefaultLogFileName:">(&OSLogger::setDefaultLogFileName),
        qb::classMethod<"setDefaultLogPrefix:">(&OSLogger::setDefaultLogPrefix),
        qb::classMethod<"setDefaultLogLevel:">(&OSLogger::setDefaultLogLevel),
        qb::classMethod<"disableDuplicateLogToStderr">(&OSLogger::disableDuplicateLogToStderr),
        qb::initialiser<"initWithCategory:logLevel:logPrefix:andLogFileName:">(&OSLogger::setUpWithCategory),
        qb::method<"setLogFileName:">(&OSLogger::setLogFileName),
        qb::method<"setLogPrefix:">(&OSLogger::setLogPrefix),
        qb::method<"setLogLevel:">(&OSLogger::setLogLevel),
        qb::method<"wouldLogLevel:">(&OSLogger::wouldLogLevel),
        qb::method<"logWithLevel:message:">(&OSLogger::logWithLevelMessage),
        qb::method<"logWithLevel:format:andArglist:">(&OSLogger::logWithLevelFormatAndArglist),
        qb::method<"logWithLevel:format:">(&OSLogger::logWithLevelFormatAndArglist),
    };
    static Class *const self = new Class("OSLogger", OSObject::cls(), methods, qb::construct<OSLogger>);
    return self;
}

OSLogger::~OSLogger() {
    closeStream();
}

BOOL OSLogger::setUpWithCategory(NSString *category, std::uint8_t logLevel, NSString *logPrefix,
                                 NSString *logFileName) {
    level_ = logLevel;
    category_ = category;
    prefix_ = logPrefix ? logPrefix : defaults().prefix.get();
    fileName_ = logFileName;
    return YES;
}

// --- Loggers by category ---

NSMutableDictionary *OSLogger::_loggers() {
    static NSMutableDictionary *const loggers = NSMutableDictionary::init().detach();
    return loggers;
}

void OSLogger::createLoggerOfClass(Class *asked, NSString *category) {
    if (!category)
        throw InvalidArgumentException(
            "OSLogger createLoggerForCategory: must have a category that is not nil.");
    createLoggerOfClass(asked, category, _defaultLogLevel, nullptr, nullptr);
}

void OSLogger::createLoggerOfClass(Class *asked, NSString *category, std::uint8_t withLogLevel,
                                   NSString *logPrefix, NSString *logFileName) {
    if (!category)
        throw InvalidArgumentException("OSLogger createLoggerForCategory:withLogLevel:andLogFileName: must "
                                       "have a category that is not nil.");
    const Ref<NSObject> made = asked->construct();
    auto *logger = static_cast<OSLogger *>(made.get());
    if (logger->setUpWithCategory(category, withLogLevel, logPrefix, logFileName))
        _loggers()->setObjectForKey(logger, category);
}

OSLogger *OSLogger::loggerOfClass(Class *asked, NSString *category) {
    if (OSLogger *const logger = tableEntry(category))
        return logger;
    if (!defaultLogger())
        createLoggerOfClass(asked, ""_ns);
    return defaultLogger();
}

// --- The default logger ---

void OSLogger::setDefaultLogFileName(NSString *fileName) {
    if (differs(defaults().fileName, fileName))
        defaults().fileName = fileName;
    if (OSLogger *const logger = defaultLogger())
        logger->setLogFileName(fileName);
}

void OSLogger::setDefaultLogPrefix(NSString *prefix) {
    if (differs(defaults().prefix, prefix))
        defaults().prefix = prefix;
    if (OSLogger *const logger = defaultLogger())
        logger->setLogPrefix(prefix);
}

void OSLogger::setDefaultLogLevel(std::uint8_t level) {
    _defaultLogLevel = level;
    if (OSLogger *const logger = defaultLogger())
        logger->setLogLevel(level);
}

// --- One logger ---

void OSLogger::setLogFileName(NSString *fileName) {
    closeStream();
    if (differs(fileName_, fileName))
        fileName_ = fileName;
}

// Goes by the name alone, so that a logger that fell back to standard error closes that.
void OSLogger::closeStream() {
    std::FILE *const file = std::exchange(file_, nullptr);
    if (fileName_ && file && sys::fileno(file) >= 0)
        sys::fclose(file);
}

void OSLogger::openStream() {
    if (!fileName_)
        fileName_ = defaults().fileName;
    if (!fileName_) {
        file_ = stderr;
        return;
    }
    file_ = openForAppending(fileName_);
    if (file_)
        return;
    const char *const reason = errorDescription();
    file_ = stderr; // before the error, whose trace may be the next line
    qb::raiseError(kFile, kLineOfOpen, qb::kErrorCannotWrite, fileName_, reason);
}

void OSLogger::logWithLevelMessage(std::int32_t level, NSString *message) {
    if (level_ < level)
        return;
    // The program's error handler may give this logger another file, or the category another logger.
    const Ref<OSLogger> logger(this);
    if (!file_)
        openStream();
    if (!file_) // it has given it one, and has closed standard error so
        openStream();
    std::FILE *const file = file_ ? file_ : stderr;
    char pid[qb::text::kLongestInteger];
    const std::size_t pidLength = qb::text::formatInteger(OSProcess::getCurrentPid(), pid);
    const std::string_view prefix = prefix_ ? prefix_->cString() : "";
    const std::string_view category = category_ ? category_->cString() : "";
    const std::string_view text = message ? message->cString() : "<nil>";
    const Line line("[", qb::currentTimeText(), "] (", std::string_view(pid, pidLength), ") [", prefix,
                    std::string_view(" ", prefix_ ? 1 : 0), category, "] ", text, "\n");
    if (file != stderr)
        qb::printText(line.text(), qb::Printed::line,
                      sys::fileno(file)); // past the stream: a line of any length is one write
    if (file == stderr || _duplicateLogToStderr)
        qb::printText(line.text(), qb::Printed::line, stderr);
}

void OSLogger::logWithLevelFormatAndArglist(std::int32_t level, NSString *format,
                                            const qb::ArgList &argList) {
    if (level_ < level)
        return;
    const Ref<NSString> message = qb::restrictedText(format, argList);
    logWithLevelMessage(level, message);
}
