#include <QBFoundation/QBErrorHandler.h>

#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>

#include "OSAdaptor/StandardError.h"
#include "System/Process.h"

#include <cstdio>

namespace {

constexpr const char *kFile = "src/QBErrorHandler";

constexpr int kLineOfTrace = 282;

// The lines that the forms without a place of their own name as theirs.
constexpr int kLineWithObjects = 301;
constexpr int kLineWithDefaultFormat = 311;
constexpr int kLineWithDefaultFormatAndObjects = 321;

Ref<NSMutableArray> descriptionOf(int error, NSString *message) {
    auto description = NSMutableArray::init();
    description->addObject(message ? message : NSString::string());
    description->addObject(NSNumber::numberWithInt(error));
    return description;
}

// Marks that an error is being recorded, an exception on the way out included.
class Raising {
public:
    explicit Raising(QBErrorHandler *handler) : handler_(handler) { handler_->setIsRaisingError(YES); }
    ~Raising() { handler_->setIsRaisingError(NO); }
    Raising(const Raising &) = delete;
    Raising &operator=(const Raising &) = delete;

private:
    QBErrorHandler *handler_;
};

// Sets a mark for as long as it lives.
class Marked {
public:
    explicit Marked(bool &mark) : mark_(mark) { mark_ = true; }
    ~Marked() { mark_ = false; }
    Marked(const Marked &) = delete;
    Marked &operator=(const Marked &) = delete;

private:
    bool &mark_;
};

} // namespace

// --- Errors ---

void QBErrorHandler::raiseErrorInFileWithArgList(const char *file, int line, int error,
                                                 const qb::ArgList &argList) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorInFileWithArgList(file, line, error, argList, nullptr, nullptr);
}

void QBErrorHandler::raiseErrorInFileWithArgList(const char *file, int line, int error,
                                                 const qb::ArgList &argList, NSArray *objects) {
    raiseErrorInFileWithArgList(file, line, error, argList, objects, nullptr);
}

void QBErrorHandler::raiseErrorInFileWithArgList(const char *file, int line, int error,
                                                 const qb::ArgList &argList, NSArray *objects,
                                                 NSString *defaultFormat) {
    if (isRaisingError() || isMakingMessage_)
        return;
    NSString *message;
    {
        const Marked making(isMakingMessage_); // clients' code, which may raise errors of its own
        message = errorMsgForError(error, argList, defaultFormat);
    }
    const Ref<NSMutableArray> description = descriptionOf(error, message);
    {
        const Raising raising(this);
        description->addObjectsFromArray(objects);
        addErrorDescr(description);
        setErrorState(ERRORSTATE_ERROR);
    }
    if (debug >= 1)
        qb::trace(DEBUG_CHANNEL_UTILS,
                  {kFile, kLineOfTrace, this,
                   "raiseErrorInFile:inLine:error:withArgList:andObjects:withDefaultFormat:"},
                  "raised error %d in %s:%d: %s", error, file ? file : "<null>", line,
                  message ? message->cString() : "<nil>");
}

void QBErrorHandler::raiseErrorWithObjectsWithArgList(NSArray *objects, int error,
                                                      const qb::ArgList &argList) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorInFileWithArgList(kFile, kLineWithObjects, error, argList, objects, nullptr);
}

void QBErrorHandler::raiseErrorWithDefaultFormatWithArgList(NSString *format, int error,
                                                            const qb::ArgList &argList) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorInFileWithArgList(kFile, kLineWithDefaultFormat, error, argList, nullptr,
                                                  format);
}

void QBErrorHandler::raiseErrorWithDefaultFormatWithObjectsWithArgList(NSString *format, NSArray *objects,
                                                                       int error,
                                                                       const qb::ArgList &argList) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorInFileWithArgList(kFile, kLineWithDefaultFormatAndObjects, error, argList,
                                                  objects, format);
}

// --- Fatal errors ---

void QBErrorHandler::raiseFatalErrorWithArgList(int error, const qb::ArgList &argList) {
    raiseFatalErrorWithDefaultFormatWithArgList(nullptr, error, argList);
}

void QBErrorHandler::raiseFatalErrorWithDefaultFormatWithArgList(NSString *format, int error,
                                                                 const qb::ArgList &argList) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseFatalErrorWithArgList(error, argList, nullptr, format);
}

void QBErrorHandler::raiseFatalErrorWithArgList(int error, const qb::ArgList &argList, NSArray *objects,
                                                NSString *defaultFormat) {
    if (isRaisingError())
        return;
    const Raising raising(this);
    if (errorState() == ERRORSTATE_FATAL)
        return;
    setErrorState(ERRORSTATE_FATAL);
    try {
        fatalErrorDescr_ = descriptionOf(error, errorMsgForError(error, argList, defaultFormat));
        fatalErrorDescr_->addObjectsFromArray(objects);
    } catch (...) { // without memory, say; the process ends all the same
        char text[32];
        const int length = std::snprintf(text, sizeof text, "[%06d] unknown error\n", error);
        qb::writeStandardError({text, static_cast<std::size_t>(length)});
    }
    terminateBecauseOfFatalError();
}

// The messages are the format themselves: a "%" in them is read as a conversion.
void QBErrorHandler::terminateBecauseOfFatalError() {
    qb::sys::ignoreSignalsOfWriting();
    try {
        NSString *const messages = errorStackMessagesStringWithIndent(nullptr);
        OSLogger::loggerForCategory("alert"_ns)->logWithLevelFormat(0, messages);
    } catch (...) {
        qb::writeStandardError("A fatal error has ended the process and could not be logged.\n");
    }
    qb::sys::exit(-1);
}
