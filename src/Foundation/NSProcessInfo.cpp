#include <QBFoundation/Foundation/NSProcessInfo.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "System/Clock.h"
#include "System/Files.h"
#include "System/Process.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The longest name that the kernel keeps has 64 bytes.
constexpr std::size_t kHostNameSize = 256;

std::string hostNameText() {
    char name[kHostNameSize];
    if (qb::sys::gethostname(name, sizeof name) != 0 || name[0] == '\0')
        return "localhost";
    return name;
}

/// Returns the arguments as the kernel keeps them, each ended by a NUL.
Ref<NSArray> readArguments() {
    std::string bytes;
    if (qb::readFileContents("/proc/self/cmdline", bytes) != 0 || bytes.empty())
        bytes.assign(program_invocation_name).push_back('\0');
    const Ref<NSMutableArray> arguments = NSMutableArray::init();
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\0', start), bytes.size());
        const Ref<NSString> argument = NSString::initWith(std::string_view(bytes).substr(start, end - start));
        arguments->addObject(argument);
        start = end + 1;
    }
    return arguments->copy();
}

/// Returns a number that tells this process from those of hosts with the same name.
std::uint64_t drawProcessNumber() {
    std::uint64_t number = 0;
    const int descriptor = qb::sys::open("/dev/urandom", O_RDONLY);
    if (descriptor >= 0) {
        if (qb::sys::readAll(descriptor, &number, sizeof number) < 0)
            number = 0;
        qb::sys::close(descriptor);
    }
    return number ^ static_cast<std::uint64_t>(qb::sys::monotonicNanoseconds());
}

bool isPlain(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') || character == '.' || character == '-';
}

} // namespace

Class *NSProcessInfo::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"processInfo">(&NSProcessInfo::processInfo),
        qb::method<"arguments">(&NSProcessInfo::arguments),
        qb::method<"environment">(&NSProcessInfo::environment),
        qb::method<"processName">(&NSProcessInfo::processName),
        qb::method<"setProcessName:">(&NSProcessInfo::setProcessName),
        qb::method<"processIdentifier">(&NSProcessInfo::processIdentifier),
        qb::method<"hostName">(&NSProcessInfo::hostName),
        qb::method<"operatingSystemName">(&NSProcessInfo::operatingSystemName),
        qb::method<"operatingSystemVersionString">(&NSProcessInfo::operatingSystemVersionString),
        qb::method<"globallyUniqueString">(&NSProcessInfo::globallyUniqueString),
    };
    static Class *const self = new Class("NSProcessInfo", NSObject::cls(), methods);
    return self;
}

NSProcessInfo::NSProcessInfo() : arguments_(readArguments()) {
    makeImmortal();
    const std::string_view program = static_cast<NSString *>(arguments_->objectAtIndex(0))->view();
    name_ = NSString::initWith(program.substr(program.rfind('/') + 1));
}

NSProcessInfo *NSProcessInfo::processInfo() {
    static NSProcessInfo *const shared = new NSProcessInfo;
    return shared;
}

NSArray *NSProcessInfo::arguments() const {
    return arguments_;
}

NSDictionary *NSProcessInfo::environment() const {
    return NSDictionary::dictionaryWithEnvironment();
}

NSString *NSProcessInfo::processName() const {
    return name_;
}

void NSProcessInfo::setProcessName(NSString *name) {
    if (name)
        name_ = name->copy();
}

std::int32_t NSProcessInfo::processIdentifier() const {
    return qb::sys::getpid();
}

NSString *NSProcessInfo::hostName() const {
    return NSString::stringWith(hostNameText());
}

NSString *NSProcessInfo::operatingSystemName() const {
    return "Linux"_ns;
}

NSString *NSProcessInfo::operatingSystemVersionString() const {
    std::string release;
    qb::readFileContents("/proc/sys/kernel/osrelease", release);
    return NSString::stringWith(std::string_view(release).substr(0, release.find('\n')));
}

NSString *NSProcessInfo::globallyUniqueString() const {
    static const std::uint64_t processNumber = drawProcessNumber();
    static std::uint64_t calls = 0;
    std::string text = hostNameText();
    for (char &character : text)
        if (!isPlain(character))
            character = '_';
    // A child that was forked shares the number and the count of calls, but neither the id nor the moment.
    char numbers[80];
    std::snprintf(numbers, sizeof numbers, "_%d_%016" PRIx64 "_%016" PRIx64 "_%" PRIu64, processIdentifier(),
                  processNumber, static_cast<std::uint64_t>(qb::sys::wallNanoseconds()), calls++);
    return NSString::stringWith(text += numbers);
}
