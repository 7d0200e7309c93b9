// Profile lines, each with the time and the memory since the last one.
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/OSAdaptor/OSTime.h>

#include "OSAdaptor/StandardError.h"
#include "System/Memory.h"

#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr std::size_t kMessageSize = 1024;   // with its NUL
constexpr std::size_t kBeautifulSize = 1024; // of the buffer that profile_beautifyBytes wants
constexpr int kWidestIndentation = 58;
constexpr int kIndentationBesideLevel = 50;

constexpr const char kBlanks[] = "                                                          ";
static_assert(sizeof kBlanks - 1 == kWidestIndentation);

struct Message {
    char text[kMessageSize] = "";
};

bool isActive(int channel) {
    return OSDebugPrinter::globalDebugPrinter()->isProfileChannelActive(channel);
}

// Callers set times and sizes, so that these may be any numbers.
std::int64_t difference(std::int64_t minuend, std::int64_t subtrahend) {
    std::int64_t result = 0;
    __builtin_sub_overflow(minuend, subtrahend, &result); // wraps
    return result;
}

const char *orNull(const char *text) {
    return text ? text : "(null)";
}

const char *nameOf(int channel) {
    return orNull(OSDebugPrinter::globalDebugPrinter()->profileChannelName(channel));
}

std::string indentation() {
    std::string text = qb::printed("%06lu:", static_cast<unsigned long>(OSProcess::getCurrentPid()));
    const int level = OSDebugPrinter::globalDebugPrinter()->profileStackLevel();
    if (level > kWidestIndentation / 2)
        return text.append(kIndentationBesideLevel, ' ') + qb::printed("% 5d>>>", level);
    return text.append(2 * static_cast<std::size_t>(std::max(level, 0)), ' ');
}

// What a profile line measures. Making one counts as the last profile output.
class Measurement {
public:
    Measurement()
        : now(OSTime::currentTimeMillis()), sinceLast_(difference(now, printer_->profileLastTime())),
          segment_(OSProcess::getDataSegmentSize()),
          segmentGrowth_(difference(segment_, printer_->profileDataSegmentLastTime())) {
        printer_->setProfileLastTime(OSTime::currentTimeMillis());
        printer_->setProfileDataSegmentLastTime(segment_);
    }

    std::string tail(const char *front = "") const {
        char growth[kBeautifulSize], growthFromStart[kBeautifulSize];
        profile_beautifyBytes(segmentGrowth_, growth);
        profile_beautifyBytes(segment_ - printer_->profileDataSegmentSizeAtStart(), growthFromStart);
        return qb::printed("(%s+%" PRId64 "ms #%" PRId64 " +m%s #m%s)", front, sinceLast_, now, growth,
                           growthFromStart);
    }

private:
    OSDebugPrinter *const printer_ = OSDebugPrinter::globalDebugPrinter();

public:
    const std::int64_t now; // milliseconds since the epoch

private:
    const std::int64_t sinceLast_;
    const std::int64_t segment_;
    const std::int64_t segmentGrowth_;
};

void begin(int channel, const Message &message) {
    OSDebugPrinter *const printer = OSDebugPrinter::globalDebugPrinter();
    const int level = printer->profileStackLevel();
    const Measurement measurement;
    if (level >= PROFILE_STACK_SIZE) {
        qb::writeStandardError(
            qb::printed("notice: PROFILE_STACK_SIZE (%d) exceeded %s!\n", level, measurement.tail().c_str()));
        return;
    }
    qb::writeStandardError(indentation() + qb::printed("[start:%s] %s %s\n", nameOf(channel), message.text,
                                                       measurement.tail().c_str()));
    // A level that a caller has set below 0 has no item to keep a message.
    char *const kept = level < 0 ? nullptr : static_cast<char *>(_malloc(kMessageSize));
    if (kept)
        std::memcpy(kept, message.text, kMessageSize);
    printer->setMessage(kept, level);
    printer->setChannel(channel, level);
    printer->setStartTime(printer->profileLastTime(), level);
    printer->incrementProfileStackLevel();
}

void note(int channel, const Message &message) {
    const Measurement measurement;
    qb::writeStandardError(indentation() + qb::printed("[msg  :%s] %s %s\n", nameOf(channel), message.text,
                                                       measurement.tail().c_str()));
}

void end(int channel, const Message &message) {
    OSDebugPrinter *const printer = OSDebugPrinter::globalDebugPrinter();
    const Measurement measurement;
    if (printer->profileStackLevel() < 1) {
        qb::writeStandardError("notice: profileStackLevel grew negative" + measurement.tail() + "!\n");
        printer->setProfileStackLevel(0);
        return;
    }
    const int level = printer->decrementProfileStackLevel();
    const char *const begun = printer->messageFromProfileStackItem(level);
    const int begunChannel = printer->channelFromProfileStackItem(level);
    if (begunChannel == channel && begun && std::strcmp(begun, message.text) == 0) {
        const std::int64_t time = difference(measurement.now, printer->startTimeFromProfileStackItem(level));
        qb::writeStandardError(
            indentation() +
            qb::printed("[end  :%s] %s %s\n", nameOf(channel), begun,
                        measurement.tail(qb::printed("time: %05" PRId64 "ms ", time).c_str()).c_str()));
    } else {
        qb::writeStandardError(indentation() +
                               "notice: unbalanced PROFILE_BEGIN_ACTION() ... PROFILE_END_ACTION() " +
                               measurement.tail() + "!\n");
        qb::writeStandardError(indentation() + qb::printed("        expected: (%s, '%s'), got: (%s, '%s')\n",
                                                           nameOf(begunChannel), orNull(begun),
                                                           nameOf(channel), message.text));
    }
    // Not left behind: a level that a caller sets could lead back to it.
    printer->setMessage(nullptr, level);
    qb::sys::release(const_cast<char *>(begun));
}

[[gnu::format(printf, 1, 0)]] Message messageOf(const char *format, std::va_list arguments) {
    Message message;
    if (format && std::vsnprintf(message.text, sizeof message.text, format, arguments) < 0)
        message.text[0] = '\0'; // whatever a conversion that failed has left
    return message;
}

using Profile = void (*)(int, const Message &);

void profileWithArgList(Profile profile, int channel, NSString *format, const qb::ArgList &argList) {
    if (!isActive(channel))
        return;
    const NSAutoreleasePool pool;
    Message message;
    NSString *const text = NSString::stringWithFormatWithArgList(format, argList);
    if (text)
        std::strncpy(message.text, text->cString(), sizeof message.text - 1);
    profile(channel, message);
}

} // namespace

const char *profileSpace = kBlanks;

void profile_beginAction(int channel, const char *format, ...) {
    if (!isActive(channel))
        return;
    std::va_list arguments;
    va_start(arguments, format);
    begin(channel, messageOf(format, arguments));
    va_end(arguments);
}

void profile_msg(int channel, const char *format, ...) {
    if (!isActive(channel))
        return;
    std::va_list arguments;
    va_start(arguments, format);
    note(channel, messageOf(format, arguments));
    va_end(arguments);
}

void profile_endAction(int channel, const char *format, ...) {
    if (!isActive(channel))
        return;
    std::va_list arguments;
    va_start(arguments, format);
    end(channel, messageOf(format, arguments));
    va_end(arguments);
}

void qb::profileBeginWithArgList(int channel, NSString *format, const ArgList &argList) {
    profileWithArgList(begin, channel, format, argList);
}

void qb::profileMessageWithArgList(int channel, NSString *format, const ArgList &argList) {
    profileWithArgList(note, channel, format, argList);
}

void qb::profileEndWithArgList(int channel, NSString *format, const ArgList &argList) {
    profileWithArgList(end, channel, format, argList);
}

void profile_indent() {
    qb::writeStandardError(indentation());
}

char *profile_beautifyBytes(std::int64_t count, char *buffer) {
    static constexpr const char *units[] = {"B", "KB", "MB", "GB", "TB"};
    auto value = static_cast<double>(count);
    std::size_t unit = 0;
    for (; (value > 1024 || value < -1024) && unit + 1 < std::size(units); ++unit)
        value /= 1024;
    std::snprintf(buffer, kBeautifulSize, "%0.2f%s", value, units[unit]);
    return buffer;
}
