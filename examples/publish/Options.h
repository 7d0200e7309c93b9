// The command line.
#ifndef PUBLISH_OPTIONS_H
#define PUBLISH_OPTIONS_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// What the command line asks for.
struct Options {
    enum class Action { publish, encipher, decipher, help, version, listChannels };

    Action action = Action::publish;
    Ref<NSString> site;
    Ref<NSString> target;
    Ref<NSMutableArray> settings = NSMutableArray::init(); // dotted keys, each followed by its value
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
