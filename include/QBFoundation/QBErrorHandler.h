// Errors: numbered, recorded, looked at when the caller likes.
#ifndef QBFOUNDATION_QBERRORHANDLER_H
#define QBFOUNDATION_QBERRORHANDLER_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Value.h>

class QBErrorHandler;

/// Whether errors are recorded. The fatal state is never left.
enum ErrorState : int { ERRORSTATE_OK = 0, ERRORSTATE_ERROR = 1, ERRORSTATE_FATAL = 2 };

/// The process's error handler. The program makes it before anything can fail, retains it and stores it here;
/// the library only reads it. Without a handler an error is dropped; operations that look at their own errors
/// on the way have one of theirs here until they end.
extern "C" QB_EXPORT QBErrorHandler *ERRORHANDLER;

/// Records the errors of the process: a stack of descriptions, the newest first.
///
/// An operation that fails raises a numbered error and returns a neutral value; the caller looks at
/// `errorState`. A description is a mutable array of the finished message, the number as a number object, and
/// the objects that came with the error. Programs that want texts for numbers override
/// `formatStringForErrorId`.
class QB_EXPORT QBErrorHandler : public NSObject {
public:
    QBErrorHandler() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<QBErrorHandler> init() { return qb::init<QBErrorHandler>(&QBErrorHandler::setUp); }
    /// Returns a new handler, autoreleased.
    static QBErrorHandler *errorHandler() { return init().autorelease(); }

    // --- State ---

    virtual int errorState() const { return errorState_; }
    /// Stores the state unchecked.
    virtual void _setErrorState(int state) { errorState_ = state; }
    /// Stores 0, 1 or 2, and 1 for any other value; does nothing in the fatal state.
    virtual void setErrorState(int state);
    /// Whether an error is being recorded, in which time others are dropped.
    virtual BOOL isRaisingError() const { return isRaisingError_; }
    virtual void setIsRaisingError(BOOL isRaising) { isRaisingError_ = isRaising; }
    /// Returns the error stack itself, made if there is none.
    virtual NSMutableArray *stackTrace();

    // --- Raising ---

    /// Records error `error` of that place, its format filled with the values. Goes to `ERRORHANDLER`,
    /// whichever the receiver, as all forms do that do not say otherwise.
    template <class... V>
    void raiseErrorInFile(const char *file, int line, int error, const V &...values) {
        qb::withArgList(
            [&](const qb::ArgList &list) { raiseErrorInFileWithArgList(file, line, error, list); },
            values...);
    }
    virtual void raiseErrorInFileWithArgList(const char *file, int line, int error,
                                             const qb::ArgList &argList);
    /// As the full form, on this handler, without a default format.
    virtual void raiseErrorInFileWithArgList(const char *file, int line, int error,
                                             const qb::ArgList &argList, NSArray *objects);
    /// The one full form: records the error on this handler. `objects` (or nil) are attached to the
    /// description, `defaultFormat` (or nil) serves when the number has no format. An error raised meanwhile
    /// is dropped.
    virtual void raiseErrorInFileWithArgList(const char *file, int line, int error,
                                             const qb::ArgList &argList, NSArray *objects,
                                             NSString *defaultFormat);
    template <class... V>
    void raiseErrorWithObjects(NSArray *objects, int error, const V &...values) {
        qb::withArgList(
            [&](const qb::ArgList &list) { raiseErrorWithObjectsWithArgList(objects, error, list); },
            values...);
    }
    virtual void raiseErrorWithObjectsWithArgList(NSArray *objects, int error, const qb::ArgList &argList);
    template <class... V>
    void raiseErrorWithDefaultFormat(NSString *format, int error, const V &...values) {
        qb::withArgList(
            [&](const qb::ArgList &list) { raiseErrorWithDefaultFormatWithArgList(format, error, list); },
            values...);
    }
    virtual void raiseErrorWithDefaultFormatWithArgList(NSString *format, int error,
                                                        const qb::ArgList &argList);
    template <class... V>
    void raiseErrorWithDefaultFormatWithObjects(NSString *format, NSArray *objects, int error,
                                                const V &...values) {
        qb::withArgList(
            [&](const qb::ArgList &list) {
                raiseErrorWithDefaultFormatWithObjectsWithArgList(format, objects, error, list);
            },
            values...);
    }
    virtual void raiseErrorWithDefaultFormatWithObjectsWithArgList(NSString *format, NSArray *objects,
                                                                   int error, const qb::ArgList &argList);
    template <class... V>
    void raiseFatalError(int error, const V &...values) {
        qb::withArgList([&](const qb::ArgList &list) { raiseFatalErrorWithArgList(error, list); }, values...);
    }
    virtual void raiseFatalErrorWithArgList(int error, const qb::ArgList &argList);
    template <class... V>
    void raiseFatalErrorWithDefaultFormat(NSString *format, int error, const V &...values) {
        qb::withArgList(
            [&](const qb::ArgList &list) {
                raiseFatalErrorWithDefaultFormatWithArgList(format, error, list);
            },
            values...);
    }
    virtual void raiseFatalErrorWithDefaultFormatWithArgList(NSString *format, int error,
                                                             const qb::ArgList &argList);
    /// Records a fatal error on this handler, logs the error stack and ends the process with exit status 255,
    /// even without the memory for either.
    virtual void raiseFatalErrorWithArgList(int error, const qb::ArgList &argList, NSArray *objects,
                                            NSString *defaultFormat);

    // --- Messages ---

    /// Returns the format of an error's message; `defaultFormat` here. Programs with texts of their own
    /// override it.
    virtual NSString *formatStringForErrorId(int error, NSString *withDefaultFormat);
    /// Returns "[%06d] " and the error's format, filled with the values; "unknown error" without a format.
    virtual NSString *errorMsgForError(int error, const qb::ArgList &withArgList,
                                       NSString *withDefaultFormat);
    virtual NSString *errorMsgForError(int error, const qb::ArgList &withArgList);
    virtual NSString *errorMsgForErrorWithObjects(int error, NSArray *objects);

    // --- The newest error ---

    /// Returns the newest description; an empty array when there is none.
    virtual NSArray *errorDescr();
    /// Returns the newest message; the empty string when there is none.
    virtual NSString *errorMessage();
    /// Returns the newest number as a number object; the empty string when there is none.
    virtual id errorId();
    /// Returns the numbers of all errors, the newest first, a fatal one in front.
    virtual NSArray *errorIds();
    /// Returns the objects attached to the newest error; nil when there are none.
    virtual NSArray *errorInfo();
    /// Puts a description on the stack.
    virtual void addErrorDescr(NSArray *description);

    // --- The stack ---

    /// Takes the stack away and sets the state to OK. Returns the stack, autoreleased; nil, with nothing
    /// changed, when `ERRORHANDLER` has no error.
    virtual NSMutableArray *clearErrorStack();
    /// Makes `stack` the error stack, copied unless it is mutable; the state follows from whether it holds
    /// errors.
    virtual void replaceErrorStack(NSArray *stack);
    /// Puts an earlier stack in front of the current one; nothing happens when it is empty or nil.
    virtual void insertOldErrorStack(NSArray *stack);
    virtual void removeLastError();
    /// Returns the messages, the newest first, a line each, with `indent` (or nil) in front of each.
    virtual NSString *errorStackMessagesStringWithIndent(NSString *indent);
    /// Logs the messages for the category "alert" and ends the process with exit status 255.
    virtual void terminateBecauseOfFatalError();

protected:
    BOOL setUp() override;

private:
    NSString *prefixedFormat(int error, NSString *defaultFormat);

    int errorState_ = ERRORSTATE_OK;
    Ref<NSMutableArray> fatalErrorDescr_;
    Ref<NSMutableArray> stackTrace_; // descriptions, the newest first; null until the first use
    BOOL isRaisingError_ = NO;
    bool isMakingMessage_ = false;
};

namespace qb {

/// Raises an error of the library: the one way from its modules to the handler.
template <class... V>
void raiseError(const char *file, int line, int error, const V &...values) {
    if (ERRORHANDLER)
        ERRORHANDLER->raiseErrorInFile(file, line, error, values...);
}

/// Whether an error is pending.
inline bool isErrorPending() {
    return ERRORHANDLER && ERRORHANDLER->errorState() != ERRORSTATE_OK;
}

/// Takes the pending errors aside for a section whose own errors are looked at separately.
///
/// At its end the earlier errors stand in front of those of the section, or, with `kDiscard` or where memory
/// is missing to join them, alone. An exception on the way out loses none of them. Where there is no error
/// handler, the section has one of its own, which goes with its errors.
class QB_EXPORT SavedErrors {
public:
    enum Then { kKeep, kDiscard };

    explicit SavedErrors(Then then = kKeep);
    ~SavedErrors();
    SavedErrors(const SavedErrors &) = delete;
    SavedErrors &operator=(const SavedErrors &) = delete;

private:
    Ref<NSMutableArray> earlier_;
    Ref<QBErrorHandler> ownHandler_;
    Then then_;
};

} // namespace qb

#endif
