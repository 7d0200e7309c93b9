// Errors that a test expects.
#ifndef QBFOUNDATION_TESTS_SUPPORT_ERROREXPECTATION_H
#define QBFOUNDATION_TESTS_SUPPORT_ERROREXPECTATION_H

#include <QBFoundation/QBErrorHandler.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qb {
struct ErrorNumber;
}

/// How many values the catalogue lists for the number.
std::uint32_t listedValueCount(const qb::ErrorNumber &error);

/// An error handler that keeps what each raise came with, and expects of the library's numbers the values
/// that the catalogue lists and words.
class RecordingErrorHandler : public QBErrorHandler {
public:
    struct Raised {
        std::string file;
        int line;
        int number;
        std::string values; // joined by blanks
    };

    using QBErrorHandler::raiseErrorInFileWithArgList;
    void raiseErrorInFileWithArgList(const char *file, int line, int error, const qb::ArgList &argList,
                                     NSArray *objects, NSString *defaultFormat) override;

    std::vector<Raised> raised;
};

/// The handler that `PoolFixture` installs.
RecordingErrorHandler *recordingErrorHandler();

/// Expects that exactly one error is raised in its scope, of that number, and takes it off the error stack.
class ErrorExpectation {
public:
    explicit ErrorExpectation(int number);
    ~ErrorExpectation();
    ErrorExpectation(const ErrorExpectation &) = delete;
    ErrorExpectation &operator=(const ErrorExpectation &) = delete;

    /// The values of the error that was raised, joined by blanks; "none" without one.
    std::string values() const;
    /// "src/QBFileOutputStream:183".
    std::string place() const;

private:
    int number_;
    std::size_t before_;
};

/// Expects that the operation raises exactly one error, of that number and with those values.
inline void expectError(int number, std::string_view values, auto operation) {
    const ErrorExpectation error(number);
    operation();
    EXPECT_EQ(error.values(), values);
}

/// Expects it at that place, "src/QBFileOutputStream:183", too.
inline void expectErrorAt(std::string_view place, int number, std::string_view values, auto operation) {
    const ErrorExpectation error(number);
    operation();
    EXPECT_EQ(error.values() + " at " + error.place(), std::string(values) + " at " + std::string(place));
}

/// What those expect of a single statement.
#define EXPECT_ERROR(number, values, statement) expectError(number, values, [&] { statement; })
#define EXPECT_ERROR_AT(place, number, values, statement)                                                    \
    expectErrorAt(place, number, values, [&] { statement; })

/// The numbers of the errors on the stack, the last one first, "(100024, 100168)"; takes all of them off.
std::string takenErrors();

/// Expects an exception of class NSException, or a subclass, with that reason.
#define EXPECT_REASON(expression, text)                                                                      \
    try {                                                                                                    \
        static_cast<void>(expression);                                                                       \
        ADD_FAILURE() << #expression " throws nothing";                                                      \
    } catch (const NSException &exception) {                                                                 \
        EXPECT_STREQ(exception.what(), text);                                                                \
    }

#endif
