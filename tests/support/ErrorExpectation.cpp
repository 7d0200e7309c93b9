#include "support/ErrorExpectation.h"

#include <QBFoundation/ErrorNumbers.h>

#include "support/Describe.h"

#include <algorithm>
#include <string_view>

static void expectWorded(int number, const qb::ArgList &values) {
    const qb::ErrorNumber *const error = qb::errorNumber(number);
    if (!error)
        return;
    EXPECT_EQ(values.count(), listedValueCount(*error)) << "values of " << number;
    if (values.count() == 0)
        return;
    // A format that can't take its values answers itself.
    NSString *const text = NSString::stringWithRestrictedFormatAndArglist(error->format, values);
    EXPECT_NE(text->view(), error->format) << "the text of " << number << " can't take its values";
}

std::uint32_t listedValueCount(const qb::ErrorNumber &error) {
    const std::string_view values = error.values;
    return values.empty() ? 0 : static_cast<std::uint32_t>(std::count(values.begin(), values.end(), ',') + 1);
}

void RecordingErrorHandler::raiseErrorInFileWithArgList(const char *file, int line, int error,
                                                        const qb::ArgList &argList, NSArray *objects,
                                                        NSString *defaultFormat) {
    if (!isRaisingError()) {
        expectWorded(error, argList);
        std::string values;
        for (const qb::Value &value : argList)
            values += (values.empty() ? "" : " ") + ::describe(value);
        raised.push_back({file ? file : "", line, error, values});
    }
    QBErrorHandler::raiseErrorInFileWithArgList(file, line, error, argList, objects, defaultFormat);
}

RecordingErrorHandler *recordingErrorHandler() {
    static auto *const handler = new RecordingErrorHandler;
    return handler;
}

ErrorExpectation::ErrorExpectation(int number)
    : number_(number), before_(recordingErrorHandler()->raised.size()) {}

ErrorExpectation::~ErrorExpectation() {
    const auto &raised = recordingErrorHandler()->raised;
    EXPECT_EQ(raised.size(), before_ + 1) << "errors raised where one was expected";
    for (std::size_t i = before_; i < raised.size(); ++i) {
        EXPECT_EQ(raised[i].number, number_) << raised[i].values;
        ERRORHANDLER->removeLastError();
    }
}

std::string ErrorExpectation::values() const {
    const auto &raised = recordingErrorHandler()->raised;
    return raised.size() > before_ ? raised[before_].values : "none";
}

std::string ErrorExpectation::place() const {
    const auto &raised = recordingErrorHandler()->raised;
    return raised.size() > before_ ? raised[before_].file + ":" + std::to_string(raised[before_].line)
                                   : "none";
}

std::string takenErrors() {
    const std::string numbers = describe(ERRORHANDLER->errorIds());
    ERRORHANDLER->clearErrorStack();
    return numbers;
}
