#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Send.h>

#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

using NSStringFileTest = PoolFixture;

TEST_F(NSStringFileTest, AnyBytesAreWrittenAndReadBack) {
    const TemporaryDirectory directory;
    NSString *const path = directory.string("a");
    for (BOOL atomically : {NO, YES}) {
        NSString *const text = NSString::stringWith(std::string_view("é\0\xFF\n", 5));
        EXPECT_TRUE(text->writeToFile(path, atomically));
        EXPECT_EQ(NSString::stringWithContentsOfFile(path)->view(), text->view());
        EXPECT_TRUE(""_ns->writeToFile(path, atomically));
        EXPECT_EQ(NSMutableString::stringWithContentsOfFile(path)->view(), "");
    }
    const id made = send(NSMutableString::cls(), "stringWithContentsOfFile:"_sel, path);
    EXPECT_EQ(made->classObject(), NSMutableString::cls());
}

TEST_F(NSStringFileTest, FailuresAreRaisedAndLeaveEarlierErrorsInFront) {
    const TemporaryDirectory directory;
    const std::string missing = directory / "missing";
    {
        ErrorExpectation error(qb::kErrorFileMissing);
        EXPECT_EQ(NSString::stringWithContentsOfFile(NSString::stringWith(missing)), nullptr);
        EXPECT_EQ(error.values(), missing);
    }
    {
        ErrorExpectation error(qb::kErrorCannotRead);
        EXPECT_EQ(NSString::stringWithContentsOfFile(NSString::stringWith(std::string_view("a\0b", 3))),
                  nullptr);
        EXPECT_NE(error.values().find("Invalid argument"), std::string::npos);
    }
    {
        ErrorExpectation error(qb::kErrorCannotWrite);
        EXPECT_FALSE("x"_ns->writeToFile(directory.string("."), NO)); // a directory
    }
    qb::raiseError("test", 1, qb::kErrorOutOfMemory);
    NSString *const path = directory.string("b");
    EXPECT_TRUE("x"_ns->writeToFile(path, YES));
    EXPECT_EQ(NSString::stringWithContentsOfFile(path)->view(), "x");
    ERRORHANDLER->clearErrorStack();
    EXPECT_THROW("x"_ns->writeToFile(nullptr, NO), InvalidArgumentException);
    EXPECT_THROW(NSString::initWithContentsOfFile(nullptr), InvalidArgumentException);
}
