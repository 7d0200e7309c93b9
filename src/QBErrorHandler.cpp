#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/QBErrorHandler.h>

#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"

#include <new>
#include <utility>

QBErrorHandler *ERRORHANDLER = nullptr;

Class *QBErrorHandler::cls() {
    using qb::ArgList;
    using File = const char *;
    using Handler = QBErrorHandler;
    static const qb::Method methods[] = {
        qb::maker<"errorHandler">(&Handler::setUp),
        qb::method<"errorState">(&Handler::errorState),
        qb::method<"_setErrorState:">(&Handler::_setErrorState),
        qb::method<"setErrorState:">(&Handler::setErrorState),
        qb::method<"isRaisingError">(&Handler::isRaisingError),
        qb::method<"setIsRaisingError:">(&Handler::setIsRaisingError),
        qb::method<"stackTrace">(&Handler::stackTrace),
        qb::method<"raiseErrorInFile:inLine:error:", void(File, int, int, const ArgList &)>(
            &Handler::raiseErrorInFileWithArgList),
        qb::method<"raiseErrorInFile:inLine:error:withArgList:andObjects:",
                   void(File, int, int, const ArgList &, NSArray *)>(&Handler::raiseErrorInFileWithArgList),
        qb::method<"raiseErrorInFile:inLine:error:withArgList:andObjects:withDefaultFormat:",
                   void(File, int, int, const ArgList &, NSArray *, NSString *)>(
            &Handler::raiseErrorInFileWithArgList),
        qb::method<"raiseErrorWithObjects:error:">(&Handler::raiseErrorWithObjectsWithArgList),
        qb::method<"raiseErrorWithDefaultFormat:error:">(&Handler::raiseErrorWithDefaultFormatWithArgList),
        qb::method<"raiseErrorWithDefaultFormat:withObjects:error:">(
            &Handler::raiseErrorWithDefaultFormatWithObjectsWithArgList),
        qb::method<"raiseFatalError:", void(int, const ArgList &)>(&Handler::raiseFatalErrorWithArgList),
        qb::method<"raiseFatalErrorWithDefaultFormat:error:">(
            &Handler::raiseFatalErrorWithDefaultFormatWithArgList),
        qb::method<"raiseFatalError:withArgList:andObjects:withDefaultFormat:",
                   void(int, const ArgList &, NSArray *, NSString *)>(&Handler::raiseFatalErrorWithArgList),
        qb::method<"formatStringForErrorId:withDefaultFormat:">(&Handler::formatStringForErrorId),
        qb::method<"errorMsgForError:withArgList:withDefaultFormat:",
                   NSString *(int, const ArgList &, NSString *)>(&Handler::errorMsgForError),
        qb::method<"errorMsgForError:withArgList:", NSString *(int, const ArgList &)>(
            &Handler::errorMsgForError),
        qb::method<"errorMsgForError:withObjects:">(&Handler::errorMsgForErrorWithObjects),
        qb::method<"errorDescr">(&Handler::errorDescr),
        qb::method<"errorMessage">(&Handler::errorMessage),
        qb::method<"errorId">(&Handler::errorId),
        qb::method<"errorIds">(&Handler::errorIds),
        qb::method<"errorInfo">(&Handler::errorInfo),
        qb::method<"addErrorDescr:">(&Handler::addErrorDescr),
        qb::method<"clearErrorStack">(&Handler::clearErrorStack),
        qb::method<"replaceErrorStack:">(&Handler::replaceErrorStack),
        qb::method<"insertOldErrorStack:">(&Handler::insertOldErrorStack),
        qb::method<"removeLastError">(&Handler::removeLastError),
        qb::method<"errorStackMessagesStringWithIndent:">(&Handler::errorStackMessagesStringWithIndent),
        qb::method<"terminateBecauseOfFatalError">(&Handler::terminateBecauseOfFatalError),
    };
    static Class *const self =
        new Class("QBErrorHandler", NSObject::cls(), methods, qb::construct<QBErrorHandler>);
    return self;
}

BOOL QBErrorHandler::setUp() {
    setErrorState(ERRORSTATE_OK);
    return YES;
}

void QBErrorHandler::setErrorState(int state) {
    if (errorState_ == ERRORSTATE_FATAL)
        return;
    _setErrorState(static_cast<unsigned>(state) > ERRORSTATE_FATAL ? ERRORSTATE_ERROR : state);
}

NSMutableArray *QBErrorHandler::stackTrace() {
    if (!stackTrace_)
        stackTrace_ = NSMutableArray::init();
    return stackTrace_;
}

// --- Messages ---

NSString *QBErrorHandler::formatStringForErrorId(int, NSString *withDefaultFormat) {
    return withDefaultFormat;
}

NSString *QBErrorHandler::errorMsgForError(int error, const qb::ArgList &withArgList,
                                           NSString *withDefaultFormat) {
    return NSString::stringWithRestrictedFormatAndArglist(prefixedFormat(error, withDefaultFormat),
                                                          withArgList);
}

NSString *QBErrorHandler::errorMsgForError(int error, const qb::ArgList &withArgList) {
    return errorMsgForError(error, withArgList, nullptr);
}

NSString *QBErrorHandler::errorMsgForErrorWithObjects(int error, NSArray *objects) {
    return NSString::stringWithRestrictedFormatAndObjects(prefixedFormat(error, nullptr), objects);
}

// The number stands in the text before the values do, so that a "%" of the format is read when they are
// filled in.
NSString *QBErrorHandler::prefixedFormat(int error, NSString *defaultFormat) {
    NSString *format = formatStringForErrorId(error, defaultFormat);
    if (IsNil(format))
        format = "unknown error"_ns;
    return NSString::stringWithRestrictedFormat("[%06d] %s", error, format->cString());
}

// --- The newest error ---

NSArray *QBErrorHandler::errorDescr() {
    if (errorState() == ERRORSTATE_OK)
        return NSArray::array();
    if (errorState() == ERRORSTATE_FATAL)
        return fatalErrorDescr_ ? fatalErrorDescr_.get() : NSArray::array();
    auto *newest = stackTrace()->count() ? qb::castOrNil<NSArray>(stackTrace()->objectAtIndex(0)) : nullptr;
    return newest ? newest : NSArray::array(); // a stack that a caller put in may hold anything
}

NSString *QBErrorHandler::errorMessage() {
    NSArray *const description = errorDescr();
    auto *message = description->count() ? qb::castOrNil<NSString>(description->objectAtIndex(0)) : nullptr;
    if (!message)
        return NSString::string();
    message->retain();
    message->autorelease();
    return message;
}

id QBErrorHandler::errorId() {
    NSArray *const description = errorDescr();
    return description->count() > 1 ? description->objectAtIndex(1) : NSString::string();
}

NSArray *QBErrorHandler::errorIds() {
    NSMutableArray *const ids = NSMutableArray::array();
    if (fatalErrorDescr_ && fatalErrorDescr_->count() > 1)
        ids->addObject(fatalErrorDescr_->objectAtIndex(1));
    for (id description : *stackTrace())
        if (auto *array = qb::castOrNil<NSArray>(description); array && array->count() > 1)
            ids->addObject(array->objectAtIndex(1));
    return ids;
}

// In the fatal state the source is the fatal description itself, whose first element is its message: no
// objects are found there. The process ends before anyone can ask.
NSArray *QBErrorHandler::errorInfo() {
    if (errorState() == ERRORSTATE_OK)
        return nullptr;
    NSArray *const source = errorState() == ERRORSTATE_FATAL ? fatalErrorDescr_.get() : stackTrace_.get();
    auto *description =
        source && source->count() ? qb::castOrNil<NSArray>(source->objectAtIndex(0)) : nullptr;
    if (!description || description->count() < 3)
        return nullptr;
    return NSArray::arrayWith(description->view().subspan(2));
}

void QBErrorHandler::addErrorDescr(NSArray *description) {
    stackTrace()->insertObject(description, 0);
}

// --- The stack ---

NSMutableArray *QBErrorHandler::clearErrorStack() {
    if (!ERRORHANDLER || ERRORHANDLER->errorState() == ERRORSTATE_OK)
        return nullptr;
    NSMutableArray *const taken = Ref(stackTrace_).autorelease(); // first, because it may throw
    setErrorState(ERRORSTATE_OK);
    stackTrace_ = nullptr;
    return taken;
}

void QBErrorHandler::replaceErrorStack(NSArray *stack) {
    const Ref<NSArray> kept(stack); // which may be a part of what is replaced
    stackTrace_ = stack ? static_cast<NSMutableArray *>(stack->makeMutable()) : nullptr;
    setErrorState(stack && stack->containsData() ? ERRORSTATE_ERROR : ERRORSTATE_OK);
}

void QBErrorHandler::insertOldErrorStack(NSArray *stack) {
    if (!stack || !stack->containsData())
        return;
    Ref<NSMutableArray> joined = stack->mutableCopy();
    joined->addObjectsFromArray(stackTrace_);
    stackTrace_ = joined;
    setErrorState(ERRORSTATE_ERROR);
}

void QBErrorHandler::removeLastError() {
    if (stackTrace()->containsData())
        stackTrace()->removeObjectAtIndex(0);
    if (!stackTrace()->containsData())
        setErrorState(ERRORSTATE_OK);
}

NSString *QBErrorHandler::errorStackMessagesStringWithIndent(NSString *indent) {
    NSMutableString *const text = NSMutableString::string();
    const Ref<NSArray> stack(stackTrace()); // whatever is done to make its texts
    bool isFirst = true;
    for (id element : *stack) {
        const qb::Kept kept(element);
        auto *description = qb::castOrNil<NSArray>(element);
        if (!description || !description->count())
            continue;
        if (!std::exchange(isFirst, false))
            text->append("\n");
        text->appendString(indent);
        const qb::Kept message(description->objectAtIndex(0));
        text->appendString(message.get()->stringValue());
    }
    if (errorState() != ERRORSTATE_FATAL)
        return text;
    return NSString::stringWithRestrictedFormat("%s%s\n%s", indent ? indent : NSString::string(),
                                                errorMessage(), text);
}

// --- Saving errors ---

qb::SavedErrors::SavedErrors(Then then) : then_(then) {
    if (ERRORHANDLER)
        earlier_ = ERRORHANDLER->clearErrorStack();
    else
        ERRORHANDLER = ownHandler_ = QBErrorHandler::init();
}

qb::SavedErrors::~SavedErrors() {
    if (ownHandler_ && ERRORHANDLER == ownHandler_)
        ERRORHANDLER = nullptr;
    if (ownHandler_ || !ERRORHANDLER)
        return;
    if (then_ == kKeep) {
        try {
            ERRORHANDLER->insertOldErrorStack(earlier_);
            return;
        } catch (...) { // where they can't be joined, be it for want of memory, the earlier ones stay
        }
    }
    try {
        ERRORHANDLER->replaceErrorStack(earlier_);
    } catch (...) { // of a client's handler
    }
}
