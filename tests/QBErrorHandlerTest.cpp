#include "support/ServicesFixture.h"

namespace {

// A handler with texts for two numbers, and trouble with a third.
struct WordingHandler : QBErrorHandler {
    NSString *formatStringForErrorId(int error, NSString *withDefaultFormat) override {
        if (error == 100)
            return "%s failed %d times"_ns;
        if (error == 103)
            throw InvalidArgumentException("no text");
        return error == 101 ? "100%"_ns : withDefaultFormat;
    }

    NSString *errorStackMessagesStringWithIndent(NSString *indent) override {
        if (isOutOfMemory)
            throw std::bad_alloc();
        return QBErrorHandler::errorStackMessagesStringWithIndent(indent);
    }

    void insertOldErrorStack(NSArray *stack) override {
        if (isOutOfMemory)
            throw std::bad_alloc();
        QBErrorHandler::insertOldErrorStack(stack);
    }

    bool isOutOfMemory = false;
};

// Puts a handler in the place of the test's.
struct QBErrorHandlerTest : ServicesFixture {
    QBErrorHandlerTest() { ERRORHANDLER = handler_.get(); }
    ~QBErrorHandlerTest() override { ERRORHANDLER = recordingErrorHandler(); }

    void raise(int error) { handler_->raiseErrorInFile("src/A", 1, error); }

    const Ref<WordingHandler> handler_ = Ref<WordingHandler>::adopt(new WordingHandler);
};

} // namespace

TEST_F(QBErrorHandlerTest, MessagesCarryTheirNumber) {
    raise(7);
    handler_->raiseErrorInFile("src/A", 1, 100, "disk"_ns, 2);
    handler_->raiseErrorWithDefaultFormat("own %s"_ns, 8, "text");
    handler_->raiseErrorWithDefaultFormat("own"_ns, 101); // the number's own format goes before
    handler_->raiseErrorInFile("src/A", 1, 100, 2);       // not the values that the format wants
    EXPECT_EQ(handler_->errorMessage()->view(), "[000100] %s failed %d times");
    EXPECT_EQ(describe(handler_->errorIds()), "(100, 101, 8, 100, 7)");
    EXPECT_EQ(handler_->errorInfo(), nullptr);
    EXPECT_EQ(handler_->errorStackMessagesStringWithIndent("- "_ns)->view(),
              "- [000100] %s failed %d times\n- [000101] 100\n- [000008] own text\n"
              "- [000100] disk failed 2 times\n- [000007] unknown error");
    NSArray *const objects = NSArray::arrayWithObjects("disk"_ns, number(3));
    EXPECT_EQ(handler_->errorMsgForErrorWithObjects(100, objects)->view(), "[000100] disk failed 3 times");
    EXPECT_EQ(handler_->errorMsgForError(101, {})->view(), "[000101] 100");
    EXPECT_EQ(QBErrorHandler::init()->formatStringForErrorId(5, "own"_ns)->view(), "own");
}

TEST_F(QBErrorHandlerTest, ShortFormsGoToTheProcesssHandlerUnderTheirOwnLines) {
    activateChannel("utils");
    NSArray *const objects = NSArray::arrayWithObjects("a"_ns, "b"_ns);
    QBErrorHandler *const other = QBErrorHandler::errorHandler();
    CapturedOutput output;
    raise(1); // not traced at level 0
    debug = 1;
    other->raiseErrorInFile(nullptr, 6, 3);
    other->raiseErrorWithObjects(objects, 4);
    other->raiseErrorWithDefaultFormat("100%% %d"_ns, 5, 50);
    other->raiseErrorWithDefaultFormatWithObjects("%s"_ns, objects, 6, "%d"_ns);
    const std::string start =
        "[T] (P) [] [utils(1) ERROR] src/QBErrorHandler:282(QBErrorHandler): "
        "-raiseErrorInFile:inLine:error:withArgList:andObjects:withDefaultFormat: -> raised error ";
    EXPECT_EQ(logLines(output.end()), start + "3 in <null>:6: [000003] unknown error\n" + start +
                                          "4 in src/QBErrorHandler:301: [000004] unknown error\n" + start +
                                          "5 in src/QBErrorHandler:311:  50\n" + start +
                                          "6 in src/QBErrorHandler:321: [000006] %d\n");
    EXPECT_EQ(other->errorState(), ERRORSTATE_OK);
    EXPECT_EQ(describe(handler_->errorDescr()), "([000006] %d, 6, a, b)");
    EXPECT_EQ(describe(handler_->errorInfo()), "(a, b)");
}

TEST_F(QBErrorHandlerTest, StatesAreCheckedUnlessForced) {
    const std::pair<int, int> rows[] = {{0, 0}, {1, 1}, {5, 1}, {0, 0}, {2, 2}, {0, 2}};
    for (const auto &[given, stored] : rows) {
        handler_->setErrorState(given);
        EXPECT_EQ(handler_->errorState(), stored) << given;
    }
    handler_->_setErrorState(-7);
    EXPECT_EQ(handler_->errorState(), -7);
}

TEST_F(QBErrorHandlerTest, WhatIsRaisedWhileRaisingIsDropped) {
    handler_->setIsRaisingError(YES);
    raise(1);
    handler_->raiseFatalError(2);
    EXPECT_EQ(handler_->errorState(), ERRORSTATE_OK);
    EXPECT_EQ(describe(handler_->stackTrace()), "()");
}

TEST_F(QBErrorHandlerTest, StacksAreTakenAsideAndPutBack) {
    raise(1);
    raise(2);
    NSMutableArray *const saved = handler_->clearErrorStack();
    EXPECT_EQ(handler_->errorState(), ERRORSTATE_OK);
    EXPECT_EQ(handler_->clearErrorStack(), nullptr);
    raise(3);
    handler_->insertOldErrorStack(saved);
    EXPECT_EQ(describe(handler_->errorIds()), "(2, 1, 3)");
    handler_->replaceErrorStack(saved);
    EXPECT_EQ(handler_->stackTrace(), saved);
    for (int left : {1, 0, 0}) {
        handler_->removeLastError();
        EXPECT_EQ(handler_->stackTrace()->count(), static_cast<unsigned>(left));
        EXPECT_EQ(handler_->errorState(), left ? ERRORSTATE_ERROR : ERRORSTATE_OK);
    }
    handler_->replaceErrorStack(NSArray::arrayWithObjects("no description"_ns)); // queries survive it
    EXPECT_EQ(handler_->errorMessage()->view(), "");
    EXPECT_EQ(handler_->errorInfo(), nullptr);
    handler_->replaceErrorStack(NSArray::array());
    EXPECT_EQ(handler_->errorState(), ERRORSTATE_OK);
    raise(4);
    inOwnPool([&] { handler_->addErrorDescr(NSArray::arrayWith({"a part of the old stack"_ns})); });
    handler_->replaceErrorStack(handler_->errorDescr());
    EXPECT_EQ(handler_->errorState(), ERRORSTATE_ERROR);
    handler_->clearErrorStack();
}

TEST_F(QBErrorHandlerTest, ErrorsThatCannotBeTakenAsideStay) {
    raise(1);
    inOwnPool([&] {
        const Fault fault(Call::allocate, /*skip=*/0, /*times=*/0, ENOMEM);
        EXPECT_THROW(for (;;) Ref(handler_).autorelease(), std::bad_alloc);
        EXPECT_THROW(const qb::SavedErrors saved, std::bad_alloc);
    });
    EXPECT_EQ(handler_->errorMessage()->view(), "[000001] unknown error");
    handler_->clearErrorStack();
}

TEST_F(QBErrorHandlerTest, SavedErrorsComeBackInFrontOrAlone) {
    for (const auto then : {qb::SavedErrors::kKeep, qb::SavedErrors::kDiscard}) {
        handler_->replaceErrorStack(nullptr);
        raise(1);
        {
            const qb::SavedErrors saved(then);
            EXPECT_FALSE(qb::isErrorPending());
            raise(2);
        }
        EXPECT_EQ(describe(handler_->errorIds()), then == qb::SavedErrors::kKeep ? "(1, 2)" : "(1)");
    }
    {
        const qb::SavedErrors saved;
        raise(2);
        handler_->isOutOfMemory = true;
    }
    EXPECT_EQ(describe(handler_->errorIds()), "(1)");
}

TEST_F(QBErrorHandlerTest, WithoutAHandlerErrorsAreDropped) {
    ERRORHANDLER = nullptr;
    qb::raiseError("src/A", 1, 1);
    handler_->raiseFatalError(1);
    EXPECT_FALSE(qb::isErrorPending());
    EXPECT_EQ(handler_->errorState(), ERRORSTATE_OK);
}

TEST_F(QBErrorHandlerTest, FatalErrorsLogTheStackAndEndTheProcess) {
    raise(1);
    OSLogger::createLoggerForCategory("alert"_ns, /*withLogLevel=*/0, "web"_ns, nullptr);
    const ChildEnd end = runInChild([&] {
        handler_->raiseFatalErrorWithDefaultFormat("no library %s, 5%d %s"_ns, 100241, "x", 0, "100%");
    });
    EXPECT_EQ(end.status, 255);
    EXPECT_EQ(logLines(end.standardError, end.process),
              "[T] (P) [web alert] [100241] no library x, 50 100%\n[000001] unknown error\n");
    handler_->_setErrorState(ERRORSTATE_FATAL);
    handler_->raiseFatalError(3); // fatal already: nothing happens
    EXPECT_FALSE(handler_->isRaisingError());
    handler_->clearErrorStack();
}

TEST_F(QBErrorHandlerTest, FatalErrorsEndTheProcessWhateverFailsMeanwhile) {
    const auto expectEnd = [&](int number, const char *said) {
        const ChildEnd end = runInChild([&] { handler_->raiseFatalError(number); });
        EXPECT_EQ(end.status, 255) << number;
        EXPECT_EQ(logLines(end.standardError, end.process), said);
    };
    expectEnd(103, "[000103] unknown error\n[T] (P) [] \n\n"); // it has no message
    OSLogger::setDefaultLogFileName("/no/such/directory/log"_ns);
    expectEnd(5, "[T] (P) [] [000005] unknown error\n\n");
    handler_->isOutOfMemory = true;
    expectEnd(4, "A fatal error has ended the process and could not be logged.\n");
}
