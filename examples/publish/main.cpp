// Publishes a site: a property list of settings, pages, templates and assets become a directory of HTML.
//
// It shows how a program uses the library: the start-up steps, values from property lists, streams, files,
// errors that are looked at when it suits, and a result that is never seen half-made.
#include "Channels.h"
#include "Files.h"
#include "Indexes.h"
#include "Interruption.h"
#include "Messages.h"
#include "Options.h"
#include "Plugins.h"
#include "Publication.h"
#include "Renderer.h"
#include "Site.h"
#include "serving/Server.h"
#include "serving/Watching.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <unistd.h>

namespace publish {

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// The start-up steps, in the order that the library wants: errors first, then channels, then what is to be
// seen.
void startUp() {
    ERRORHANDLER = new ErrorHandler;
    QBFoundationInitializer::initializeDebugAndProfileChannels();
    OSUserIO::initialize();
    registerChannels();
}

bool areKnown(NSArray *names, NSArray *known) {
    for (id name : *names)
        if (!known->containsObject(name))
            return fail(__LINE__, kErrorUsage,
                        NSString::stringWithFormat("There is no channel '%@'"_ns, name));
    return true;
}

bool isWritable(NSString *file) {
    const std::int32_t descriptor = OSFilePath::openFile(file, "a");
    return descriptor >= 0 ? OSFilePath::closeFile(descriptor) == 0
                           : fail(__LINE__, qb::kErrorCannotWrite, file, std::strerror(errno));
}

// Returns false, with an error raised, when it can't be done.
bool configure(const Options &options) {
    OSDebugPrinter *const printer = OSDebugPrinter::globalDebugPrinter();
    if (!areKnown(options.debugChannels, printer->debugChannelNames()) ||
        !areKnown(options.profileChannels, printer->profileChannelNames()) ||
        (options.logFile && !isWritable(options.logFile)))
        return false;
    debug = options.debugLevel;
    printer->setDebugChannelsActive(options.debugChannels);
    printer->setProfileChannelsActive(options.profileChannels);
    if (options.logFile)
        OSLogger::setDefaultLogFileName(options.logFile);
    OSLogger::setDefaultLogLevel(options.logLevel);
    return true;
}

// What is read, wherever it stands.
void watchSources(const Site &site, serving::Watch &watch) {
    for (NSString *key : {"pages"_ns, "templates"_ns, "assets"_ns}) {
        watch.add(site.directoryFor(key));
        watch.addLinkedFrom(site.directoryFor(key));
    }
    for (id file : *site.textFiles)
        watch.add(static_cast<NSString *>(file));
}

bool publishSite(const Options &options, const Plugins &plugins, Counts &counts, serving::Watch *watch) {
    Site site;
    Publication publication(options.target);
    // What an earlier run left is finished even if the site can't be read any more.
    if (!isApart(options.site, options.target) || !publication.recover())
        return false;
    if (options.keyFile && !site.cipher.readKey(options.keyFile))
        return false;
    if (!readSite(options.site, options.target, options.settings, site) || !plugins.addValues(site))
        return false;
    if (watch)
        watchSources(site, *watch);
    Renderer renderer(site, publication, PageFilter(options.filter, publication.workingDirectory()));
    renderer.setShowsProgress(!options.isQuiet);
    const bool isDone = publication.begin() && renderer.renderPages() && addIndexes(site, publication) &&
                        (!site.hasAssets() || publication.addAssets(site.directoryFor("assets"_ns))) &&
                        publication.commit();
    counts = publication.counts();
    if (watch)
        for (id image : *renderer.images())
            watch->add(static_cast<NSString *>(image));
    return isDone && !hasFailed();
}

// Writes the enciphered bytes of a file, or what an enciphered one holds, to standard output.
bool convert(const Options &options) {
    Cipher cipher;
    NSData *const bytes =
        !options.keyFile || cipher.readKey(options.keyFile) ? readBytes(options.converted) : nullptr;
    if (!bytes)
        return false;
    NSData *const result = options.action == Options::Action::encipher
                               ? cipher.enciphered(bytes, options.converted)
                               : cipher.deciphered(bytes, options.converted);
    if (!result)
        return false;
    const int descriptor = ::dup(STDOUT_FILENO);
    std::FILE *const standardOutput = ::fdopen(descriptor, "wb");
    if (!standardOutput) {
        failWith(__LINE__, qb::kErrorCannotWrite, "standard output"_ns);
        ::close(descriptor);
        return false;
    }
    const Ref<QBFileOutputStream> output = QBFileOutputStream::initWithFilePointer(standardOutput);
    output->writeObject(result);
    output->close();
    return !hasFailed();
}

void sayErrors() {
    NSString *const messages = ERRORHANDLER->errorStackMessagesStringWithIndent("publish: "_ns);
    OSUserIO::eprintLn(messages);
}

// Makes an error of an exception, which a plug-in may throw.
template <class Action>
bool succeeds(Action action) {
    try {
        return action();
    } catch (const std::exception &exception) {
        return fail(__LINE__, kErrorThrown, exception.what());
    } catch (...) {
        return fail(__LINE__, kErrorThrown, "something was thrown that is none.");
    }
}

// Publishes the site and says how that went.
bool publishAndReport(const Options &options, const Plugins &plugins, serving::Watch *watch) {
    Counts counts;
    const bool isPublished = succeeds([&] { return publishSite(options, plugins, counts, watch); });
    if (options.showsStatistics)
        NSAutoreleasePool::showAllPoolStatistics();
    if (!isPublished) {
        OSLogger::loggerForCategory("publish"_ns)
            ->logWithLevelMessage(1, ERRORHANDLER->errorStackMessagesStringWithIndent(nullptr));
        sayErrors();
        return false;
    }
    NSString *const report =
        NSString::stringWithFormat("%@: %u written, %u unchanged, %u removed"_ns, options.target.get(),
                                   counts.written, counts.unchanged, counts.removed);
    OSLogger::loggerForCategory("publish"_ns)->logWithLevelMessage(2, report);
    if (!options.isQuiet)
        OSUserIO::printLn(report);
    return true;
}

// Publishes again when the source has changed, and as long as that fails; after longer and longer pauses, for
// what is wrong may lie outside of the source.
class Republishing {
public:
    Republishing(const Options &options, const Plugins &plugins, serving::Watch *watch)
        : options_(options), plugins_(plugins), watch_(watch) {}

    void actEachSecond() {
        if (watch_->hasChanged())
            pause_ = left_ = 1;
        if (left_ == 0 || --left_ != 0)
            return;
        left_ = pause_; // whatever missing memory throws meanwhile
        pause_ = std::min(2 * pause_, kLongestPause);
        if (publishOnce())
            left_ = 0;
    }

private:
    static constexpr unsigned kLongestPause = 64; // seconds

    bool publishOnce() {
        const bool isDone = publishAndReport(options_, plugins_, watch_);
        std::fflush(stdout);
        ERRORHANDLER->clearErrorStack();
        return isDone;
    }

    const Options &options_;
    const Plugins &plugins_;
    serving::Watch *const watch_;
    unsigned pause_ = 1; // in seconds, after the next failure
    unsigned left_ = 0;  // of them until the next attempt; 0 when none is due
};

// Serves what was published until the program is interrupted. A source that can't be published is told of,
// and the site stays as it is.
bool serve(const Options &options, const Plugins &plugins, OSSocket *listener, serving::Watch *watch) {
    OSUserIO::printLn(NSString::stringWithFormat("Serving %@ at %@"_ns, options.target.get(),
                                                 serving::addressOf(listener)));
    std::fflush(stdout);
    ERRORHANDLER->clearErrorStack(); // of a log that could not be written, which ends no server
    Republishing republishing(options, plugins, watch);
    return serving::Server(listener, options.target).run([&] {
        if (watch)
            republishing.actEachSecond();
    });
}

int run(const Options &options) {
    watchForInterruption();
    Plugins plugins; // once, as a library that is loaded again stays what it was
    const bool isLoaded = succeeds([&] { return plugins.load(options.plugins); });
    if (options.isQuiet || options.logFile) // a plug-in that is no library has ended the run with a log line
        OSLogger::disableDuplicateLogToStderr();
    Ref<OSSocket> listener;
    if (isLoaded && options.serves())
        listener = options.socket ? serving::listenAt(options.socket) : serving::listenOnPort(options.port);
    if (hasFailed()) {
        sayErrors();
        return kExitFailed;
    }
    std::optional<serving::SocketPlace> place;
    if (listener && options.socket)
        place.emplace(options.socket);
    std::optional<serving::Watch> watch; // from before the source is read
    if (options.watches)
        watch.emplace(options.site, options.target, options.logFile);
    bool isDone = publishAndReport(options, plugins, watch ? &*watch : nullptr);
    if (isDone && listener) {
        isDone = serve(options, plugins, listener, watch ? &*watch : nullptr);
        if (!isDone)
            sayErrors();
    }
    return isDone ? 0 : kExitFailed;
}

int act(const Options &options) {
    OSDebugPrinter *const printer = OSDebugPrinter::globalDebugPrinter();
    switch (options.action) {
    case Options::Action::help:
        OSUserIO::print(NSString::stringWith(kUsage));
        return 0;
    case Options::Action::version:
        OSUserIO::printLn("publish " PUBLISH_VERSION ""_ns);
        return 0;
    case Options::Action::listChannels:
        OSUserIO::printLn(printer->getHelpForDebugChannels());
        OSUserIO::printLn(printer->getHelpForProfileChannels());
        return 0;
    case Options::Action::encipher:
    case Options::Action::decipher:
        if (succeeds([&] { return convert(options); }))
            return 0;
        sayErrors();
        return kExitFailed;
    case Options::Action::publish:
        break;
    }
    if (configure(options))
        return run(options);
    sayErrors();
    return kExitUsage;
}

} // namespace

int main(int count, char **arguments) {
    const NSAutoreleasePool pool;
    startUp();
    Options options;
    if (!readOptions(count, arguments, options)) {
        sayErrors();
        return kExitUsage;
    }
    const int status = act(options);
    if (status != 0 || !std::ferror(stdout))
        return status;
    fail(__LINE__, qb::kErrorCannotWrite, "standard output"_ns, "some of it is lost");
    sayErrors();
    return kExitFailed;
}

} // namespace publish

int main(int count, char **arguments) {
    try {
        return publish::main(count, arguments);
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "publish: [%d] %s\n", publish::kErrorThrown, exception.what());
        return 1;
    }
}
