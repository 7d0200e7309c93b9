// Log lines.
#ifndef QBFOUNDATION_OSADAPTOR_OSLOGGER_H
#define QBFOUNDATION_OSADAPTOR_OSLOGGER_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSObject.h>
#include <QBFoundation/Runtime/Value.h>

#include <cstdint>
#include <cstdio>

class NSMutableDictionary;

extern "C" {

/// The level of loggers that are made without one, 0 at first.
QB_EXPORT extern std::uint8_t _defaultLogLevel;
/// Whether lines that go to a file also go to standard error, YES at first.
QB_EXPORT extern BOOL _duplicateLogToStderr;
}

/// Writes lines for one category to a log file or to standard error:
/// "[" time "] (" process id ") [" prefix and category "] " message.
///
/// A line of level L is written by a logger whose level is at least L; 0 is the most important. The file is
/// opened, for appending, with the first line. A line and its end reach the file in one write, so that lines
/// of several processes stay whole; a line that can't be written is lost.
class QB_EXPORT OSLogger : public OSObject {
public:
    OSLogger() = default;
    /// Closes the stream when the logger has a file name.
    ~OSLogger() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Loggers by category ---

    /// Returns the loggers by category, made on the first call.
    static NSMutableDictionary *_loggers();
    /// Makes the logger of the category, in place of an earlier one, with the default level and prefix.
    /// Throws InvalidArgumentException when the category is nil.
    static void createLoggerForCategory(NSString *category) { createLoggerOfClass(cls(), category); }
    /// As above. Without a prefix (nil) the default one is taken, without a file name the default one when
    /// the first line is written.
    static void createLoggerForCategory(NSString *category, std::uint8_t withLogLevel, NSString *logPrefix,
                                        NSString *logFileName) {
        createLoggerOfClass(cls(), category, withLogLevel, logPrefix, logFileName);
    }
    /// Returns the category's logger, or else the default one, that of the empty category, which is made
    /// when there is none. Borrowed from the table.
    static OSLogger *loggerForCategory(NSString *category) { return loggerOfClass(cls(), category); }

    // --- The default logger ---

    /// Sets the file of the default logger, and of each logger without one that has not written a line yet.
    static void setDefaultLogFileName(NSString *fileName);
    /// Sets the prefix of the default logger and of loggers made later.
    static void setDefaultLogPrefix(NSString *prefix);
    /// Sets the level of the default logger and of loggers made later.
    static void setDefaultLogLevel(std::uint8_t level);
    static void disableDuplicateLogToStderr() { _duplicateLogToStderr = NO; }

    // --- One logger ---

    /// Returns a logger that stands in no table, owned.
    static Ref<OSLogger> initWithCategory(NSString *category, std::uint8_t logLevel, NSString *logPrefix,
                                          NSString *logFileName) {
        return qb::init<OSLogger>(&OSLogger::setUpWithCategory, category, logLevel, logPrefix, logFileName);
    }

    /// Closes the stream when the logger has a file name; the next line opens the new file. Nil: standard
    /// error, or the default file.
    ///
    /// A logger whose file can't be opened writes to standard error, and it is that which is closed then.
    virtual void setLogFileName(NSString *fileName);
    virtual void setLogPrefix(NSString *prefix) { prefix_ = prefix; }
    virtual void setLogLevel(std::uint8_t level) { level_ = level; }
    /// Whether a line of that level would be written.
    virtual BOOL wouldLogLevel(std::uint8_t level) const { return level_ >= level; }
    /// Writes a line; "<nil>" for a nil message. A message ends at its first NUL.
    /// Raises 100024 (file name, system text) when the file can't be opened, with the text for EINVAL when
    /// the name has a NUL in it; the line goes to standard error.
    virtual void logWithLevelMessage(std::int32_t level, NSString *message);
    /// Writes a line with the format filled by `stringWithRestrictedFormat:`; see `logWithLevelMessage`.
    template <class... V>
    void logWithLevelFormat(std::int32_t level, NSString *format, const V &...values) {
        if (level_ >= level)
            qb::withArgList(
                [&](const qb::ArgList &list) { logWithLevelFormatAndArglist(level, format, list); },
                values...);
    }
    virtual void logWithLevelFormatAndArglist(std::int32_t level, NSString *format,
                                              const qb::ArgList &argList);

protected:
    virtual BOOL setUpWithCategory(NSString *category, std::uint8_t logLevel, NSString *logPrefix,
                                   NSString *logFileName);

    static void createLoggerOfClass(Class *asked, NSString *category);
    static void createLoggerOfClass(Class *asked, NSString *category, std::uint8_t withLogLevel,
                                    NSString *logPrefix, NSString *logFileName);
    static OSLogger *loggerOfClass(Class *asked, NSString *category);

private:
    void openStream();
    void closeStream();

    Ref<NSString> fileName_; // null: not chosen yet
    std::FILE *file_ = nullptr;
    std::uint8_t level_ = 0;
    Ref<NSString> prefix_; // null: none
    Ref<NSString> category_;
};

#endif
