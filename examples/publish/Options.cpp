#include "Options.h"

#include "Messages.h"

#include <string_view>

namespace publish {

const char *const kUsage =
    "Usage: publish [OPTIONS] SITE OUT\n"
    "       publish --key-file FILE --encipher | --decipher FILE\n"
    "Renders the site in the directory SITE into the directory OUT.\n"
    "\n"
    "  --set KEY=VALUE      replace a setting of the site; KEY leads into dictionaries, as in a.b.c\n"
    "  --plugins DIRECTORY  load page plug-ins from DIRECTORY, shared libraries that give pages more values\n"
    "  --filter COMMAND     run COMMAND by the shell for each page: from its standard input to its standard "
    "output\n"
    "  --serve PORT         then serve OUT over HTTP to programs of this machine; 0 takes any port that is "
    "free\n"
    "  --serve-socket PATH  then serve OUT over HTTP at a socket of the file system\n"
    "  --watch              while serving, publish again when something in SITE has changed\n"
    "  --key-file FILE      the key of enciphered pages, up to 72 bytes\n"
    "  --encipher FILE      write FILE enciphered to standard output, for a page's source\n"
    "  --decipher FILE      write what the enciphered FILE holds to standard output\n"
    "  --log FILE           log to FILE instead of standard error\n"
    "  --log-level N        log lines up to level N (0 to 255; default 0)\n"
    "  --debug CHANNELS     trace these channels, separated by commas; 'help' lists them\n"
    "  --debug-level N      how much is traced (default 0)\n"
    "  --profile CHANNELS   time these channels\n"
    "  --statistics         show what is left in the pools\n"
    "  --quiet              say nothing but errors and warnings, and where OUT is served\n"
    "  --help, --version    say this, or the version, and end\n"
    "\n"
    "The exit status is 0 when the site was published; 1 when it was not, and the old site is whole then or\n"
    "the next run completes the new one, when OUT/.publish stayed beside the new one, or when nobody could\n"
    "be told; 2 when the command line was wrong; 255 when a plug-in could not be loaded.\n";

namespace {

// The arguments that are left.
class Arguments {
public:
    Arguments(int count, char **arguments) : next_(arguments + 1), end_(arguments + count) {}

    bool isEmpty() const { return next_ == end_; }
    std::string_view take() { return *next_++; }

    // The value of an option; null, with an error raised, when there is none or an empty one.
    NSString *valueOf(std::string_view option) {
        const std::string_view value = isEmpty() ? std::string_view() : take();
        if (!value.empty())
            return NSString::stringWith(value);
        fail(__LINE__, kErrorUsage, NSString::stringWith(std::string(option) + " wants a value"));
        return nullptr;
    }

private:
    char **next_;
    char **end_;
};

bool readNumber(NSString *text, std::int64_t greatest, std::int64_t &number) {
    if (!text)
        return false;
    const std::string_view digits = text->view();
    if (digits.empty() || digits.size() > 9 ||
        digits.find_first_not_of("0123456789") != std::string_view::npos || text->longLongValue() > greatest)
        return fail(__LINE__, kErrorUsage,
                    NSString::stringWith("'" + std::string(digits) + "' is no number that fits"));
    number = text->longLongValue();
    return true;
}

bool readList(NSString *text, Ref<NSArray> &list) {
    if (!text)
        return false;
    list = text->componentsSeparatedByString(","_ns);
    return true;
}

bool readSetting(NSString *text, NSMutableArray *settings) {
    if (!text)
        return false;
    const std::size_t end = text->view().find('=');
    if (end == 0 || end == std::string_view::npos)
        return fail(__LINE__, kErrorUsage, "--set wants KEY=VALUE");
    settings->addObject(NSString::stringWith(text->view().substr(0, end)));
    settings->addObject(NSString::stringWith(text->view().substr(end + 1)));
    return true;
}

bool readText(NSString *text, Ref<NSString> &value) {
    value = text;
    return text;
}

bool readOption(std::string_view option, Arguments &arguments, Options &options) {
    std::int64_t number = 0;
    if (option == "--set")
        return readSetting(arguments.valueOf(option), options.settings);
    if (option == "--log")
        return readText(arguments.valueOf(option), options.logFile);
    if (option == "--key-file")
        return readText(arguments.valueOf(option), options.keyFile);
    if (option == "--filter")
        return readText(arguments.valueOf(option), options.filter);
    if (option == "--serve-socket")
        return readText(arguments.valueOf(option), options.socket);
    if (option == "--serve") {
        const bool isRead = readNumber(arguments.valueOf(option), 65535, number);
        options.port = static_cast<std::int32_t>(number);
        return isRead;
    }
    if (option == "--plugins")
        return readText(arguments.valueOf(option), options.plugins);
    if (option == "--encipher" || option == "--decipher") {
        options.action = option == "--encipher" ? Options::Action::encipher : Options::Action::decipher;
        return readText(arguments.valueOf(option), options.converted);
    }
    if (option == "--log-level") {
        const bool isRead = readNumber(arguments.valueOf(option), 255, number);
        options.logLevel = static_cast<std::uint8_t>(number);
        return isRead;
    }
    if (option == "--debug-level") {
        const bool isRead = readNumber(arguments.valueOf(option), 100, number);
        options.debugLevel = static_cast<std::int32_t>(number);
        return isRead;
    }
    if (option == "--debug")
        return readList(arguments.valueOf(option), options.debugChannels);
    if (option == "--profile")
        return readList(arguments.valueOf(option), options.profileChannels);
    if (option == "--statistics")
        options.showsStatistics = true;
    else if (option == "--watch")
        options.watches = true;
    else if (option == "--quiet")
        options.isQuiet = true;
    else if (option == "--help")
        options.action = Options::Action::help;
    else if (option == "--version")
        options.action = Options::Action::version;
    else
        return fail(__LINE__, kErrorUsage, NSString::stringWith("There is no option " + std::string(option)));
    return true;
}

} // namespace

bool readOptions(int count, char **arguments, Options &options) {
    Arguments left(count, arguments);
    while (!left.isEmpty()) {
        const std::string_view argument = left.take();
        if (argument.starts_with('-')) {
            if (!readOption(argument, left, options))
                return false;
        } else if (!options.site) {
            options.site = NSString::stringWith(argument);
        } else if (!options.target) {
            options.target = NSString::stringWith(argument);
        } else {
            return fail(__LINE__, kErrorUsage, "There is an argument too many");
        }
    }
    const bool wantsHelp = options.debugChannels->containsObject("help"_ns) ||
                           options.profileChannels->containsObject("help"_ns);
    if (wantsHelp && options.action == Options::Action::publish)
        options.action = Options::Action::listChannels;
    if (options.action == Options::Action::publish &&
        (!options.target || options.site->view().empty() || options.target->view().empty()))
        return fail(__LINE__, kErrorUsage, "The directories SITE and OUT are needed");
    if (options.converted && options.site)
        return fail(__LINE__, kErrorUsage, "There is an argument too many");
    if (options.port != Options::kNoPort && options.socket)
        return fail(__LINE__, kErrorUsage, "A site is served at one place");
    if (options.watches && !options.serves())
        return fail(__LINE__, kErrorUsage, "--watch goes with --serve or --serve-socket");
    return true;
}

} // namespace publish
