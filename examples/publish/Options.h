// The command line.
#ifndef PUBLISH_OPTIONS_H
#define PUBLISH_OPTIONS_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// What the command line asks for.
struct Options {
    enum class Action { publish, encipher, decipher, help, version, listChannels };

    static constexpr std::int32_t kNoPort = -1;

    bool serves() const { return port != kNoPort || socket; }

    Action action = Action::publish;
    Ref<NSString> site;
    Ref<NSString> target;
    Ref<NSMutableArray> settings = NSMutableArray::init(); // dotted keys, each followed by its value
    std::int32_t port = kNoPort;                           // to serve the site at; 0 for any that is free
    Ref<NSString> socket;                                  // to serve the site at; null when it is not wanted
    bool watches = false;                                  // publishes again when the source has changed
    Ref<NSString> plugins;                                 // their directory; null when there are none
    Ref<NSString> filter;                                  // a command for each page; null when there is none
    Ref<NSString> keyFile;
    Ref<NSString> converted; // the file to encipher or decipher
    Ref<NSString> logFile;
    std::uint8_t logLevel = 0;
    std::int32_t debugLevel = 0;
    Ref<NSArray> debugChannels = NSArray::init();
    Ref<NSArray> profileChannels = NSArray::init();
    bool showsStatistics = false;
    bool isQuiet = false;
};

/// Reads the command line into `options`. Returns false, with an error raised, when it can't be understood.
bool readOptions(int count, char **arguments, Options &options);

/// The usage, for --help.
extern const char *const kUsage;

} // namespace publish

#endif
