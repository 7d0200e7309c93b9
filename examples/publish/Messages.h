// The errors of the program, beside those of the library.
#ifndef PUBLISH_MESSAGES_H
#define PUBLISH_MESSAGES_H

#include <QBFoundation/QBErrorCatalogue.h>

#include <cerrno>
#include <cstring>

namespace publish {

constexpr int kErrorUsage = 910001;
constexpr int kErrorMissingKey = 910002;
constexpr int kErrorUnknownTemplate = 910003;
constexpr int kErrorTemplateLoop = 910004;
constexpr int kErrorMalformedTemplate = 910005;
constexpr int kErrorNoHead = 910006;
constexpr int kErrorNotUtf8 = 910007;
constexpr int kErrorNotAList = 910008;
constexpr int kErrorBusy = 910009;
constexpr int kErrorInterrupted = 910010;
constexpr int kErrorWrittenTwice = 910011;
constexpr int kErrorUnsafePath = 910012;
constexpr int kErrorDirectoryUnreadable = 910013;
constexpr int kErrorMalformedFile = 910014;
constexpr int kErrorInTheWay = 910015;
constexpr int kErrorNotApart = 910016;
constexpr int kErrorNotAFile = 910017;
constexpr int kErrorNotADictionary = 910018;
constexpr int kErrorUnfinished = 910019;
constexpr int kErrorNotASetting = 910020;
constexpr int kErrorNoSmallImage = 910021;
constexpr int kErrorNotSortable = 910022;
constexpr int kErrorNoDate = 910023;
constexpr int kErrorNoAddress = 910024;
constexpr int kErrorNoPlugin = 910025;
constexpr int kErrorThrown = 910026;
constexpr int kErrorNoKey = 910030;
constexpr int kErrorKeyNeeded = 910031;
constexpr int kErrorNotDeciphered = 910032;
constexpr int kErrorFilterCutOff = 910033;

/// The library's catalogue with the program's own texts.
class ErrorHandler : public QBErrorCatalogue {
public:
    NSString *formatStringForErrorId(int error, NSString *withDefaultFormat) override;
};

/// Returns a text without NULs, which would end a message.
NSString *shown(NSString *text);
template <class V>
const V &shown(const V &value) {
    return value;
}

/// Raises one of the program's errors. Returns false, so that a caller can end with it.
template <class... V>
bool fail(int line, int error, const V &...values) {
    ERRORHANDLER->raiseErrorInFile("examples/publish", line, error, shown(values)...);
    return false;
}

/// Raises one of the library's errors for a path, with the system's text. Returns false.
inline bool failWith(int line, int error, NSString *path) {
    return fail(line, error, path, std::strerror(errno));
}

/// Whether an error was raised since the run began.
inline bool hasFailed() {
    return ERRORHANDLER->errorState() != ERRORSTATE_OK;
}

} // namespace publish

#endif
