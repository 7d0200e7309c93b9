#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/Class.h>

#include "Foundation/VariadicValues.h"

#include <cerrno>
#include <cstdarg>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const char *kPlaceFormat = "%s:%d(%s): %c%s -> ";

// So many traces may be inside each other: what writes them may fail, or do what is traced too, for each line
// again.
constexpr unsigned kMostTraces = 4;

class Traced {
public:
    Traced() { ++open_; }
    ~Traced() { --open_; }
    Traced(const Traced &) = delete;
    Traced &operator=(const Traced &) = delete;

    static bool areTooMany() { return open_ > kMostTraces; }

private:
    static inline constinit unsigned open_ = 0;
};

// The channel's and the state's text become part of the format, as they stand in front of it.
void writeTrace(int channel, const char *format, const qb::ArgList &argList) {
    const Traced traced;
    if (Traced::areTooMany())
        return;
    NSString *const whole = NSString::stringWithRestrictedFormat(
        "[%s(%d) %s] %s", OSDebugPrinter::globalDebugPrinter()->debugChannelName(channel), debug,
        qb::isErrorPending() ? "ERROR" : "OK", format ? format : "");
    OSLogger::loggerForCategory("debug"_ns)->logWithLevelFormatAndArglist(0, whole, argList);
}

// What is traced goes on as if it were not, errno included, also where there is no memory for the line: it
// may have sent bytes already, or failed, and nobody would learn of that.
void beside(auto write) {
    const int error = errno;
    try {
        const NSAutoreleasePool pool;
        write();
    } catch (const std::bad_alloc &) { // the line is left out
    }
    errno = error;
}

// Apart, so that the arguments of a silent trace are not even stored.
[[gnu::cold, gnu::noinline]] void writeTraceOfArguments(int channel, const char *format,
                                                        std::va_list arguments) {
    beside([&] {
        // Taken by the caller's format alone: a "%" in the channel's name has no argument.
        writeTrace(channel, format, qb::ArgList(qb::variadicValues(format ? format : "", arguments)));
    });
}

const char *orNil(const char *text) {
    return text ? text : "<nil>";
}

// The values that kPlaceFormat wants.
std::vector<qb::Value> valuesOf(const qb::TracePlace &place) {
    const Class *cls = place.receiver ? place.receiver->classObject() : nullptr;
    if (place.receiverClass)
        cls = place.receiverClass();
    return {orNil(place.file), place.line, orNil(cls ? cls->name()->cString() : nullptr),
            place.receiverClass ? '+' : '-', orNil(place.selector)};
}

} // namespace

void debug_printf(int channel, const char *format, ...) {
    if (!qb::isDebugChannelActive(channel))
        return;
    std::va_list arguments;
    va_start(arguments, format);
    writeTraceOfArguments(channel, format, arguments);
    va_end(arguments);
}

void qb::traceWithArgList(int channel, const char *format, const ArgList &argList) {
    if (!isDebugChannelActive(channel))
        return;
    beside([&] { writeTrace(channel, format, argList); });
}

void qb::traceWithArgList(int channel, const TracePlace &place, const char *format, const ArgList &argList) {
    if (!isDebugChannelActive(channel))
        return;
    beside([&] {
        std::vector<Value> values = valuesOf(place);
        values.insert(values.end(), argList.begin(), argList.end());
        const std::string whole = std::string(kPlaceFormat) + (format ? format : "");
        writeTrace(channel, whole.c_str(), ArgList(std::move(values)));
    });
}
