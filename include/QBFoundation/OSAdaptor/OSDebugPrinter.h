// Debug channels, traces and profiles.
#ifndef QBFOUNDATION_OSADAPTOR_OSDEBUGPRINTER_H
#define QBFOUNDATION_OSADAPTOR_OSDEBUGPRINTER_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSObject.h>
#include <QBFoundation/Runtime/Value.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

class NSArray;
class NSMutableDictionary;

/// How many profile actions may be open at the same time.
constexpr int PROFILE_STACK_SIZE = 2000;

extern "C" {

/// The debug level, 0 at first. It stands in every trace line, and some traces want a least level.
QB_EXPORT extern int debug;

// The numbers of the library's channels, 0 until `QBFoundationInitializer` registers them.
QB_EXPORT extern int DEBUG_CHANNEL_UTILS;
QB_EXPORT extern int DEBUG_CHANNEL_MISC;
QB_EXPORT extern int DEBUG_CHANNEL_PROCESS;
QB_EXPORT extern int DEBUG_CHANNEL_FILEIO;
QB_EXPORT extern int DEBUG_CHANNEL_SOCKET;
QB_EXPORT extern int PROFILE_CHANNEL_NET_IO;

/// 58 blanks, from which indentations are taken.
QB_EXPORT extern const char *profileSpace;

/// Writes a line to the logger "debug" when the debug channel is active:
/// "[" channel "(" debug level ") " OK or ERROR "] " and the message.
///
/// The message is filled by the rules of `stringWithRestrictedFormat:`; the length letters say how much of
/// each argument to take.
QB_EXPORT void debug_printf(int channel, const char *format, ...) __attribute__((format(printf, 2, 3)));

/// Opens an action of the profile channel, when that is active: writes its message, cut to 1023 bytes, with
/// time and memory to standard error and keeps both until `profile_endAction`.
QB_EXPORT void profile_beginAction(int channel, const char *format, ...)
    __attribute__((format(printf, 2, 3)));
/// Writes a message with the time and memory since the last one, when the profile channel is active.
QB_EXPORT void profile_msg(int channel, const char *format, ...) __attribute__((format(printf, 2, 3)));
/// Closes the newest action, which must have been opened with the same channel and message; otherwise a
/// notice with both is written, and the action is closed all the same.
QB_EXPORT void profile_endAction(int channel, const char *format, ...) __attribute__((format(printf, 2, 3)));

/// Writes the process id and the indentation of the profile stack's depth to standard error.
QB_EXPORT void profile_indent();

/// Writes `count` in the fitting one of B, KB, MB, GB and TB, with two digits behind the point, to `buffer`,
/// which has room for 1024 characters. Returns the buffer.
QB_EXPORT char *profile_beautifyBytes(std::int64_t count, char *buffer);

/// `malloc`. Raises 100156 when there is no memory, and returns null.
QB_EXPORT void *_malloc(std::size_t size);
/// `_malloc` that tells standard error what it does for which place.
QB_EXPORT void *_dbgMalloc(std::size_t size, int line, const char *file);
/// `free` that tells standard error what it does for which place.
QB_EXPORT void _dbgFree(void *memory, int line, const char *file);

} // extern "C"

/// The channels of the process and its open profile actions.
///
/// A channel is registered once by its name, has a number from then on, and is silent until it is made
/// active; nothing makes it silent again. The numbers go from 0 to 100, and the debug channel 0 is "all".
class QB_EXPORT OSDebugPrinter : public OSObject {
public:
    /// The greatest number that a channel can have.
    static constexpr std::int32_t kGreatestChannel = 100;

    OSDebugPrinter();
    /// Gives up the process's printer as well; the next `globalDebugPrinter` makes a new one.
    ~OSDebugPrinter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the printer of the process, made on the first call.
    static OSDebugPrinter *globalDebugPrinter();
    static Ref<OSDebugPrinter> init() { return qb::init<OSDebugPrinter>(&OSDebugPrinter::setUp); }

    // --- Channels ---

    /// Returns the number of the channel `name`, which is made when it is new; -1 when there are 101 already.
    virtual std::int32_t registerDebugChannel(NSString *name);
    virtual std::int32_t registerProfileChannel(NSString *name);
    /// Makes the channels of those names active, all that there are when "all" is among them; unknown names
    /// are passed over.
    virtual void setDebugChannelsActive(NSArray *names);
    /// As `setDebugChannelsActive`, but "all" is a name like any other.
    virtual void setProfileChannelsActive(NSArray *names);
    /// Whether the channel is active; NO for a number that no channel can have.
    virtual BOOL isDebugChannelActive(std::int32_t channel) const;
    virtual BOOL isProfileChannelActive(std::int32_t channel) const;
    /// Returns the channel's name, valid as long as the printer; null for a number without a channel.
    virtual const char *debugChannelName(std::int32_t channel) const;
    virtual const char *profileChannelName(std::int32_t channel) const;
    /// Returns the names of all channels, sorted.
    virtual NSArray *debugChannelNames() const;
    virtual NSArray *profileChannelNames() const;
    /// Returns the names of the active debug channels, in the order of their numbers.
    virtual NSArray *activeDebugChannelNames() const;
    /// Returns a list of the names for the usage text of a program.
    virtual NSString *getHelpForDebugChannels() const;
    virtual NSString *getHelpForProfileChannels() const;

    // --- Profile stack ---

    /// How many actions are open.
    virtual std::int32_t profileStackLevel() const { return profileStackLevel_; }
    virtual void setProfileStackLevel(std::int32_t level) { profileStackLevel_ = level; }
    /// Returns the new level, as its opposite does.
    virtual std::int32_t incrementProfileStackLevel();
    virtual std::int32_t decrementProfileStackLevel();
    /// When something was profiled last, in milliseconds since the epoch.
    virtual std::int64_t profileLastTime() const { return profileLastTime_; }
    virtual void setProfileLastTime(std::int64_t milliseconds) { profileLastTime_ = milliseconds; }
    /// The end of the data segment when the printer was made, in bytes.
    virtual std::int64_t profileDataSegmentSizeAtStart() const { return dataSegmentSizeAtStart_; }
    virtual std::int64_t profileDataSegmentLastTime() const { return dataSegmentLastTime_; }
    virtual void setProfileDataSegmentLastTime(std::int64_t bytes) { dataSegmentLastTime_ = bytes; }

    // Items are counted by level, from 0; beyond `PROFILE_STACK_SIZE` there is none, and nothing is stored.

    /// Returns the message of an open action; null without one.
    virtual const char *messageFromProfileStackItem(std::int32_t item) const;
    /// Stores a message that comes from `malloc`: the stack frees it when the action ends. What was stored
    /// before is the caller's.
    virtual void setMessage(char *message, std::int32_t profileStackItem);
    virtual std::int32_t channelFromProfileStackItem(std::int32_t item) const;
    virtual void setChannel(std::int32_t channel, std::int32_t profileStackItem);
    /// When the action began, in milliseconds since the epoch.
    virtual std::int64_t startTimeFromProfileStackItem(std::int32_t item) const;
    virtual void setStartTime(std::int64_t milliseconds, std::int32_t profileStackItem);

protected:
    BOOL setUp() override;

private:
    struct Channels {
        Channels();
        ~Channels();
        std::int32_t add(NSString *name);
        void activate(NSArray *chosen);
        const char *nameOf(std::int32_t channel) const;
        bool isActive(std::int32_t channel) const;
        NSArray *sortedNames() const;
        NSString *help(const char *format) const;

        std::array<std::int32_t, kGreatestChannel + 1> active{}; // 1: active
        std::array<const char *, kGreatestChannel + 1> names{};  // the characters of the map's keys
        Ref<NSMutableDictionary> numbers;                        // name -> number
        std::int32_t count = 0;
    };

    struct ProfileStackItem {
        char *message = nullptr; // from malloc
        std::int32_t channel = 0;
        std::int64_t startTime = 0; // milliseconds since the epoch
    };

    const ProfileStackItem *itemAt(std::int32_t item) const;
    ProfileStackItem *itemAt(std::int32_t item) {
        return const_cast<ProfileStackItem *>(static_cast<const OSDebugPrinter *>(this)->itemAt(item));
    }

    Channels debugChannels_;
    Channels profileChannels_;
    std::int32_t profileStackLevel_ = 0;
    std::int64_t profileLastTime_ = 0;
    std::int64_t dataSegmentSizeAtStart_ = 0;
    std::int64_t dataSegmentLastTime_ = 0;
    std::array<ProfileStackItem, PROFILE_STACK_SIZE> profileStack_{};
};

namespace qb {

/// The activity of the process's debug channels by number, 1 for an active one; all zero while there is no
/// printer.
QB_EXPORT extern const std::int32_t *debugChannelActivity;

/// Whether traces on the channel are written.
inline bool isDebugChannelActive(int channel) {
    return static_cast<unsigned>(channel) <= OSDebugPrinter::kGreatestChannel &&
           debugChannelActivity[channel] == 1;
}

/// The operation that a trace comes from: an object's (given the object) or a class's (given its `cls`). What
/// is null is traced as "<nil>".
struct TracePlace {
    TracePlace(const char *sourceFile, int sourceLine, const NSObject *object, const char *selectorText)
        : file(sourceFile), line(sourceLine), receiver(object), selector(selectorText) {}
    TracePlace(const char *sourceFile, int sourceLine, Class *(*cls)(), const char *selectorText)
        : file(sourceFile), line(sourceLine), receiverClass(cls), selector(selectorText) {}

    const char *const file;
    const int line;
    const NSObject *const receiver = nullptr;
    Class *(*const receiverClass)() = nullptr; // not called unless the channel is active
    const char *const selector;
};

/// What `debug_printf` does, with checked values.
QB_EXPORT void traceWithArgList(int channel, const char *format, const ArgList &argList);
/// As above, with the place in front of the message: "%s:%d(%s): %c%s -> ".
QB_EXPORT void traceWithArgList(int channel, const TracePlace &place, const char *format,
                                const ArgList &argList);

namespace detail {

// Apart, so that a silent trace is one compare and one branch: the values become a list in here, not in the
// caller.
template <class... V>
[[gnu::cold, gnu::noinline]] void traceActive(int channel, const char *format, V... values) {
    withArgList([&](const ArgList &list) { traceWithArgList(channel, format, list); }, values...);
}
template <class... V>
[[gnu::cold, gnu::noinline]] void traceActiveAt(int channel, const TracePlace &place, const char *format,
                                                V... values) {
    withArgList([&](const ArgList &list) { traceWithArgList(channel, place, format, list); }, values...);
}

} // namespace detail

/// Writes a trace line, as `debug_printf` does, when the channel is active; one that comes from the writing
/// of four others inside each other, or for which memory is missing, is left out.
template <class... V>
inline void trace(int channel, const char *format, const V &...values) {
    if (isDebugChannelActive(channel)) [[unlikely]]
        detail::traceActive<std::decay_t<const V>...>(channel, format, values...);
}

/// Writes a trace line that names its place, when the channel is active:
///
///     qb::trace(DEBUG_CHANNEL_FILEIO, {kFile, 236, this, "close"}, "renamed to %s", path_);
///     qb::trace(DEBUG_CHANNEL_MISC, {kFile, 71, &OSProcess::cls, "kill:"}, "process %d", pid);
template <class... V>
inline void trace(int channel, const TracePlace &place, const char *format, const V &...values) {
    // A copy of its own, so that compilers put the place together only for a trace that is written.
    if (isDebugChannelActive(channel)) [[unlikely]]
        detail::traceActiveAt<std::decay_t<const V>...>(channel, TracePlace(place), format, values...);
}

/// What the profile functions do when the channel is active, with checked values and the formats of
/// `stringWithFormat:`.
QB_EXPORT void profileBeginWithArgList(int channel, NSString *format, const ArgList &argList);
QB_EXPORT void profileMessageWithArgList(int channel, NSString *format, const ArgList &argList);
QB_EXPORT void profileEndWithArgList(int channel, NSString *format, const ArgList &argList);

} // namespace qb

#if defined __OPTIMIZE__ && defined __GNUC__ && !defined __clang__
namespace qb::detail {
extern "C" QB_EXPORT void debugPrintf(int channel, const char *format, ...) __asm__("debug_printf")
    __attribute__((format(printf, 2, 3), cold));
}
// Where the compiler can hand arguments on, the channel is looked up in the caller, and a silent trace costs
// no call.
extern "C" [[gnu::gnu_inline, gnu::always_inline]] inline void debug_printf(int channel, const char *format,
                                                                            ...) {
    if (qb::isDebugChannelActive(channel)) [[unlikely]]
        qb::detail::debugPrintf(channel, format, __builtin_va_arg_pack());
}
#endif

// The C functions with checked values: the format is a string object; nil writes nothing for itself.

template <class... V>
void debug_printf(int channel, NSString *format, const V &...values) {
    qb::trace(channel, format ? format->cString() : nullptr, values...);
}
template <class... V>
void profile_beginAction(int channel, NSString *format, const V &...values) {
    qb::withArgList([&](const qb::ArgList &list) { qb::profileBeginWithArgList(channel, format, list); },
                    values...);
}
template <class... V>
void profile_msg(int channel, NSString *format, const V &...values) {
    qb::withArgList([&](const qb::ArgList &list) { qb::profileMessageWithArgList(channel, format, list); },
                    values...);
}
template <class... V>
void profile_endAction(int channel, NSString *format, const V &...values) {
    qb::withArgList([&](const qb::ArgList &list) { qb::profileEndWithArgList(channel, format, list); },
                    values...);
}

#endif
