#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/OSAdaptor/OSTime.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Sort.h"
#include "System/Memory.h"

#include <span>
#include <utility>
#include <vector>

namespace {

constexpr std::int32_t kSilent[OSDebugPrinter::kGreatestChannel + 1] = {};

constinit OSDebugPrinter *globalPrinter = nullptr;

bool isChannelNumber(std::int32_t channel) {
    return static_cast<std::uint32_t>(channel) <= OSDebugPrinter::kGreatestChannel;
}

} // namespace

int debug = 0;
int DEBUG_CHANNEL_UTILS = 0;
int DEBUG_CHANNEL_MISC = 0;
int DEBUG_CHANNEL_PROCESS = 0;
int DEBUG_CHANNEL_FILEIO = 0;
int DEBUG_CHANNEL_SOCKET = 0;
int PROFILE_CHANNEL_NET_IO = 0;

constinit const std::int32_t *qb::debugChannelActivity = kSilent;

Class *OSDebugPrinter::cls() {
    using Printer = OSDebugPrinter;
    static const qb::Method methods[] = {
        qb::classMethod<"globalDebugPrinter">(&Printer::globalDebugPrinter),
        qb::method<"registerDebugChannel:">(&Printer::registerDebugChannel),
        qb::method<"registerProfileChannel:">(&Printer::registerProfileChannel),
        qb::method<"setDebugChannelsActive:">(&Printer::setDebugChannelsActive),
        qb::method<"setProfileChannelsActive:">(&Printer::setProfileChannelsActive),
        qb::method<"isDebugChannelActive:">(&Printer::isDebugChannelActive),
        qb::method<"isProfileChannelActive:">(&Printer::isProfileChannelActive),
        qb::method<"debugChannelName:">(&Printer::debugChannelName),
        qb::method<"profileChannelName:">(&Printer::profileChannelName),
        qb::method<"debugChannelNames">(&Printer::debugChannelNames),
        qb::method<"profileChannelNames">(&Printer::profileChannelNames),
        qb::method<"activeDebugChannelNames">(&Printer::activeDebugChannelNames),
        qb::method<"getHelpForDebugChannels">(&Printer::getHelpForDebugChannels),
        qb::method<"getHelpForProfileChannels">(&Printer::getHelpForProfileChannels),
        qb::method<"profileStackLevel">(&Printer::profileStackLevel),
        qb::method<"setProfileStackLevel:">(&Printer::setProfileStackLevel),
        qb::method<"incrementProfileStackLevel">(&Printer::incrementProfileStackLevel),
        qb::method<"decrementProfileStackLevel">(&Printer::decrementProfileStackLevel),
        qb::method<"profileLastTime">(&Printer::profileLastTime),
        qb::method<"setProfileLastTime:">(&Printer::setProfileLastTime),
        qb::method<"profileDataSegmentSizeAtStart">(&Printer::profileDataSegmentSizeAtStart),
        qb::method<"profileDataSegmentLastTime">(&Printer::profileDataSegmentLastTime),
        qb::method<"setProfileDataSegmentLastTime:">(&Printer::setProfileDataSegmentLastTime),
        qb::method<"messageFromProfileStackItem:">(&Printer::messageFromProfileStackItem),
        qb::method<"setMessage:forProfileStackItem:">(&Printer::setMessage),
        qb::method<"channelFromProfileStackItem:">(&Printer::channelFromProfileStackItem),
        qb::method<"setChannel:forProfileStackItem:">(&Printer::setChannel),
        qb::method<"startTimeFromProfileStackItem:">(&Printer::startTimeFromProfileStackItem),
        qb::method<"setStartTime:forProfileStackItem:">(&Printer::setStartTime),
    };
    static Class *const self =
        new Class("OSDebugPrinter", OSObject::cls(), methods, qb::construct<OSDebugPrinter>);
    return self;
}

OSDebugPrinter *OSDebugPrinter::globalDebugPrinter() {
    if (!globalPrinter) {
        globalPrinter = init().detach();
        qb::debugChannelActivity = globalPrinter->debugChannels_.active.data();
    }
    return globalPrinter;
}

OSDebugPrinter::OSDebugPrinter() = default;

OSDebugPrinter::~OSDebugPrinter() {
    for (ProfileStackItem &item : profileStack_)
        qb::sys::release(item.message);
    qb::debugChannelActivity = kSilent;
    OSDebugPrinter *const global = std::exchange(globalPrinter, nullptr);
    if (global && global != this)
        global->release();
}

BOOL OSDebugPrinter::setUp() {
    profileLastTime_ = OSTime::currentTimeMillis();
    dataSegmentSizeAtStart_ = OSProcess::getDataSegmentSize();
    dataSegmentLastTime_ = OSProcess::getDataSegmentSize();
    registerDebugChannel("all"_ns);
    return YES;
}

// --- Channels ---

OSDebugPrinter::Channels::Channels() : numbers(NSMutableDictionary::init()) {}
OSDebugPrinter::Channels::~Channels() = default;

std::int32_t OSDebugPrinter::Channels::add(NSString *name) {
    if (auto *known = qb::castOrNil<NSNumber>(numbers->objectForKey(name)))
        return known->intValue();
    if (count > kGreatestChannel)
        return -1;
    numbers->setObjectForKey(NSNumber::numberWithInt(count), name);
    // The map has copied the name.
    names[static_cast<std::size_t>(count)] = numbers->allKeys()->lastObject()->stringValue()->cString();
    return count++;
}

void OSDebugPrinter::Channels::activate(NSArray *chosen) {
    for (id name : *chosen)
        if (auto *number = qb::castOrNil<NSNumber>(numbers->objectForKey(name)))
            active[static_cast<std::size_t>(number->intValue())] = 1;
}

const char *OSDebugPrinter::Channels::nameOf(std::int32_t channel) const {
    return isChannelNumber(channel) ? names[static_cast<std::size_t>(channel)] : nullptr;
}

bool OSDebugPrinter::Channels::isActive(std::int32_t channel) const {
    return isChannelNumber(channel) && active[static_cast<std::size_t>(channel)] == 1;
}

NSArray *OSDebugPrinter::Channels::sortedNames() const {
    NSArray *const all = numbers->allKeys();
    std::vector<id> sorted(all->view().begin(), all->view().end());
    qb::sortObjects(std::span(sorted), [](id a, id b) { return a->compare(b); });
    return NSArray::arrayWith(sorted);
}

NSString *OSDebugPrinter::Channels::help(const char *format) const {
    return NSString::stringWithRestrictedFormat(format,
                                                sortedNames()->componentsJoinedByString("\n       "_ns));
}

std::int32_t OSDebugPrinter::registerDebugChannel(NSString *name) {
    return debugChannels_.add(name);
}

std::int32_t OSDebugPrinter::registerProfileChannel(NSString *name) {
    return profileChannels_.add(name);
}

void OSDebugPrinter::setDebugChannelsActive(NSArray *names) {
    const Ref<NSArray> kept = names; // whatever the names do when they are compared
    if (names)
        debugChannels_.activate(names->containsObject("all"_ns) ? debugChannels_.numbers->allKeys() : names);
}

void OSDebugPrinter::setProfileChannelsActive(NSArray *names) {
    if (names)
        profileChannels_.activate(names);
}

BOOL OSDebugPrinter::isDebugChannelActive(std::int32_t channel) const {
    return debugChannels_.isActive(channel);
}

BOOL OSDebugPrinter::isProfileChannelActive(std::int32_t channel) const {
    return profileChannels_.isActive(channel);
}

const char *OSDebugPrinter::debugChannelName(std::int32_t channel) const {
    return debugChannels_.nameOf(channel);
}

const char *OSDebugPrinter::profileChannelName(std::int32_t channel) const {
    return profileChannels_.nameOf(channel);
}

NSArray *OSDebugPrinter::debugChannelNames() const {
    return debugChannels_.sortedNames();
}

NSArray *OSDebugPrinter::profileChannelNames() const {
    return profileChannels_.sortedNames();
}

NSArray *OSDebugPrinter::activeDebugChannelNames() const {
    NSMutableArray *const names = NSMutableArray::array();
    for (const auto &[name, number] : *debugChannels_.numbers)
        if (debugChannels_.isActive(static_cast<NSNumber *>(number)->intValue()))
            names->addObject(name);
    return names;
}

NSString *OSDebugPrinter::getHelpForDebugChannels() const {
    return debugChannels_.help("\n     Possible debug channels are:\n       %s");
}

NSString *OSDebugPrinter::getHelpForProfileChannels() const {
    return profileChannels_.help("\n     Possible profile channels are:\n       %s");
}

// --- Profile stack ---

// Levels are set by callers too, so they may be any number.
std::int32_t OSDebugPrinter::incrementProfileStackLevel() {
    if (profileStackLevel_ < INT32_MAX)
        ++profileStackLevel_;
    return profileStackLevel_;
}

std::int32_t OSDebugPrinter::decrementProfileStackLevel() {
    if (profileStackLevel_ > INT32_MIN)
        --profileStackLevel_;
    return profileStackLevel_;
}

const OSDebugPrinter::ProfileStackItem *OSDebugPrinter::itemAt(std::int32_t item) const {
    return item >= 0 && item < PROFILE_STACK_SIZE ? &profileStack_[static_cast<std::size_t>(item)] : nullptr;
}

const char *OSDebugPrinter::messageFromProfileStackItem(std::int32_t item) const {
    const ProfileStackItem *const found = itemAt(item);
    return found ? found->message : nullptr;
}

void OSDebugPrinter::setMessage(char *message, std::int32_t profileStackItem) {
    if (ProfileStackItem *const found = itemAt(profileStackItem))
        found->message = message;
}

std::int32_t OSDebugPrinter::channelFromProfileStackItem(std::int32_t item) const {
    const ProfileStackItem *const found = itemAt(item);
    return found ? found->channel : 0;
}

void OSDebugPrinter::setChannel(std::int32_t channel, std::int32_t profileStackItem) {
    if (ProfileStackItem *const found = itemAt(profileStackItem))
        found->channel = channel;
}

std::int64_t OSDebugPrinter::startTimeFromProfileStackItem(std::int32_t item) const {
    const ProfileStackItem *const found = itemAt(item);
    return found ? found->startTime : 0;
}

void OSDebugPrinter::setStartTime(std::int64_t milliseconds, std::int32_t profileStackItem) {
    if (ProfileStackItem *const found = itemAt(profileStackItem))
        found->startTime = milliseconds;
}
