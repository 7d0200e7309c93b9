#include "System/Files.h"
#include "support/ServicesFixture.h"

struct QBFileOutputStreamTest : DirectoryFixture {
    std::string describeFiles() const {
        std::string all;
        for (const std::string &name : directory_.names())
            all += name + ": " + directory_.read(name) + "\n";
        return all;
    }
};

// --- Opening ---

TEST_F(QBFileOutputStreamTest, WritesInPlaceMakesTheDirectoriesAboveAndTakesNothingOnceClosed) {
    QBFileOutputStream *stream =
        QBFileOutputStream::streamWithFile(path("a/b/out"), static_cast<BOOL>(2)); // not YES
    write(stream, "text");
    EXPECT_EQ(directory_.read("a/b/out"), ""); // collected
    stream->flush();
    EXPECT_EQ(directory_.read("a/b/out"), "text");
    EXPECT_TRUE(stream->tmpFilename()->isEqual(stream->filename()));
    stream->close();
    stream->close();
    const std::string error = directory_ / "a/b/out Bad file descriptor";
    EXPECT_ERROR_AT("src/QBFileOutputStream:231", 100024, error, write(stream, "more"));
    EXPECT_ERROR_AT("src/QBFileOutputStream:246", 100024, error, stream->writeByte('x'));
    try {
        stream->flush();
        ADD_FAILURE() << "flush throws nothing";
    } catch (const NSFileHandleOperationException &exception) {
        EXPECT_EQ(exception.name()->view(), "NotOpen");
    }
}

TEST_F(QBFileOutputStreamTest, AtomicStreamReplacesTheTargetAtClose) {
    directory_.write("out", "old");
    ASSERT_EQ(::chmod((directory_ / "out").c_str(), 0606), 0);
    NSMutableString *const name = NSMutableString::stringWithString(path("out"));
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(name, YES);
    name->setString(path("other"));
    write(stream, "new");
    stream->flush();
    const std::string temporary(stream->tmpFilename()->view());
    EXPECT_TRUE(temporary.starts_with(directory_ / "out.")) << temporary;
    EXPECT_EQ(directory_.read("out"), "old");
    EXPECT_EQ(directory_.read(temporary.substr(directory_.path().size() + 1)), "new");
    stream->close();
    EXPECT_EQ(describeFiles(), "out: new\n");
    EXPECT_EQ(mode("out"), 0606u);
}

TEST_F(QBFileOutputStreamTest, FileThatIsNewGetsTheModeOfTheUmask) {
    const mode_t before = ::umask(027);
    for (const BOOL atomically : {YES, NO})
        QBFileOutputStream::writeToFile("x"_ns, path(atomically ? "whole" : "new"), atomically);
    ::umask(before);
    EXPECT_EQ(describeFiles(), "new: x\nwhole: x\n");
    EXPECT_TRUE(mode("new") == 0640 && mode("whole") == 0640);
}

TEST_F(QBFileOutputStreamTest, FileThatCannotBeMadeIsAnErrorAndLeavesTheOldOne) {
    const std::string longest(255, '\xFF'); // without room for the temporary name
    directory_.write(longest, "old");
    {
        ErrorExpectation error(100024);
        QBFileOutputStream::writeToFile("new"_ns, path(longest), /*atomically=*/YES);
        EXPECT_EQ(error.place(), "src/QBFileOutputStream:183");
        EXPECT_TRUE(error.values().ends_with(" File name too long")) << error.values();
        EXPECT_EQ(directory_.read(longest), "old");
    }
    const Fault fault(Call::mkdir, /*skip=*/0, /*times=*/1, EACCES);
    EXPECT_EQ(QBFileOutputStream::streamWithFile(path("a/out")), nullptr);
    EXPECT_EQ(takenErrors(), "(100024, 100168)"); // the directory's error stays, too
}

TEST_F(QBFileOutputStreamTest, OldFileStaysWhenTheObjectIsNotWrittenWholeAndIsEmptiedByAnEarlierError) {
    directory_.write("out", "old");
    const Ref<NSMutableArray> endless = NSMutableArray::init();
    endless->addObject(endless.get());
    QBFileOutputStream::writeToFile(endless, path("out"), /*atomically=*/YES);
    EXPECT_EQ(takenErrors(), "(900003)");
    EXPECT_EQ(describeFiles(), "out: old\n");
    endless->removeAllObjects();
    ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900999);
    EXPECT_EQ(QBFileOutputStream::initWithFile(path("out"), /*atomically=*/YES), nullptr);
    EXPECT_EQ(describeFiles(), "out: \n");
    EXPECT_EQ(takenErrors(), "(900999)");
}

TEST_F(QBFileOutputStreamTest, LinkThatLeadsNowhereIsReplaced) {
    directory_.write("file", "");
    directory_.link("file/x", "out");
    QBFileOutputStream::writeToFile("new"_ns, path("out"), /*atomically=*/YES);
    EXPECT_EQ(describeFiles(), "file: \nout: new\n");
}

// --- Writing ---

TEST_F(QBFileOutputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    Random random;
    for (int round = 0; round < 8; ++round) {
        const Fault fault(Call::allocate, /*skip=*/round % 2 ? 0 : 1000000, /*times=*/1, ENOMEM); // no window
        auto stream =
            round > 5
                ? QBFileOutputStream::initWithFilePointer(std::fopen((directory_ / "out").c_str(), "wb"))
                : QBFileOutputStream::initWithFile(path("out"), NO);
        const std::string whole = randomBytes(random, 300000 + random.below(1000));
        writeInPieces(stream.get(), whole, random, round % 4 < 2 ? 18 : 4);
        stream = nullptr; // destruction closes
        EXPECT_TRUE(directory_.read("out") == whole) << "round " << round;
    }
}

TEST_F(QBFileOutputStreamTest, SubclassSeesEachWriteButNoSingleBytes) {
    struct Watched : QBFileOutputStream {
        using QBFileOutputStream::setUpWithFile;
        void _writeBuffer(const void *buffer, std::uint32_t length) override {
            ++writes;
            QBFileOutputStream::_writeBuffer(buffer, length);
        }
        int writes = 0;
    };
    const auto stream = Ref<Watched>::adopt(new Watched);
    stream->setUpWithFile(path("out"), NO);
    write(stream, "ab");
    stream->writeByte('c'); // has its own way to the file
    write(stream, "d");
    stream->close();
    EXPECT_EQ(stream->writes, 2);
    EXPECT_EQ(directory_.read("out"), "abcd");
}

TEST_F(QBFileOutputStreamTest, ResetEmptiesTheFile) {
    for (const BOOL atomically : {YES, NO}) {
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"), atomically);
        write(stream, "first");
        expectError(100024, describe(stream->tmpFilename()) + " Input/output error", [&] {
            const Fault fault(Call::fflush, /*skip=*/0, /*times=*/1, EIO), alarm(Call::open, 0, 3, EINTR);
            stream->reset(); // nothing is missing after it
            EXPECT_EQ(alarm.hits(), atomically ? 0u : 3u);
        });
        const Fault signals(Call::fwrite, /*skip=*/0, /*times=*/3, EINTR), last(Call::fclose, 0, 1, EINTR);
        write(stream, "2nd");
        stream->close();
        EXPECT_EQ(describeFiles(), "out: 2nd\n");
    }
    struct Lazy : QBFileOutputStream {
        using QBFileOutputStream::setUpWithFile;
        void flush() override {}
    };
    for (const unsigned round : {0, 1, 2, 3}) {
        const Fault fault(Call::allocate, /*skip=*/round / 2 ? 0 : 1000000, /*times=*/1, ENOMEM); // no window
        const auto lazy = Ref<Lazy>::adopt(new Lazy);
        lazy->setUpWithFile(path("out"), round % 2 ? YES : NO);
        write(lazy, "first");
        lazy->reset();
        const char *const again = round == 1 ? "" : "2nd";
        write(lazy, again);
        lazy->close();
        EXPECT_EQ(directory_.read("out"), again);
    }
    directory_.write("victim", "precious");
    QBFileOutputStream *const stream = QBFileOutputStream::streamWithFile(directory_.string("out"), YES);
    std::filesystem::remove(stream->tmpFilename()->cString());
    std::filesystem::create_symlink("victim", stream->tmpFilename()->cString());
    stream->reset();
    write(stream, "3rd");
    stream->close();
    EXPECT_EQ(directory_.read("victim"), "precious");
}

TEST_F(QBFileOutputStreamTest, FilePointerLosesNothingToSignalsAndTellsOfAFullDiskWhateverItsModeAndBuffer) {
    const std::tuple<const char *, std::string, int> rows[] = {
        {"wb", "", _IOFBF},   {"wb", "", _IOLBF},     {"wb", "", _IONBF},   {"w+b", "", _IOLBF},
        {"r+b", "o", _IOFBF}, {"a+b", "old", _IOFBF}, {"r+b", "o", _IOLBF}, {"a+b", "old", _IOLBF}};
    for (const auto &[mode, kept, buffering] : rows) {
        directory_.write("out", "old");
        std::FILE *file = std::fopen((directory_ / "out").c_str(), mode);
        std::setvbuf(file, nullptr, buffering, 0);
        if (!kept.empty()) // reads more into the buffer, and is given back another byte
            std::fgetc(file), std::fgetc(file), std::ungetc('X', file);
        const std::string first = kept.empty() || buffering == _IOLBF ? "first" : "";
        std::fputs(first.c_str(), file);
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFilePointer(file);
        const std::string text = "line\n" + std::string(BUFSIZ, 'x') + "\ntail";
        const Fault signals(Call::write, /*skip=*/0, /*times=*/3, EINTR);
        write(stream, text);
        stream->flush();
        EXPECT_EQ(signals.hits(), 3u) << mode << buffering;
        EXPECT_EQ(std::ftell(file), static_cast<long>((kept + first + text).size())) << mode << buffering;
        stream->writeByte('e');
        std::fputc('n', file); // others' bytes keep their place
        write(stream, "d");
        EXPECT_THROW(stream->reset(), InvalidUseOfMethodException);
        stream->close();
        EXPECT_EQ(directory_.read("out"), kept + first + text + "end") << mode << buffering;

        file = std::fopen("/dev/full", mode);
        std::setvbuf(file, nullptr, buffering, 0);
        std::fputs("half a ", file);
        stream = QBFileOutputStream::streamWithFilePointer(file);
        expectErrorAt(buffering == _IOFBF ? "src/QBFileOutputStream:285" : "src/QBFileOutputStream:231",
                      100024, "<filehandle> No space left on device",
                      [&] { write(stream, "line\n"), stream->flush(); });
        stream->close();
    }
}

TEST_F(QBFileOutputStreamTest, StandardStreamsAreClosed) {
    const std::string output = directory_ / "output";
    const ChildEnd end = runInChild([&] {
        if (!std::freopen(output.c_str(), "wb", stdout))
            ::_exit(1);
        QBFileOutputStream::streamForStdout()->writeFormat("%d\n"_ns, 5);
        QBFileOutputStream::streamForStdout()->close();
        ::_exit(::fcntl(1, F_GETFD) == -1 ? 17 : 2);
    });
    EXPECT_EQ(end.status, 17);
    EXPECT_EQ(directory_.read("output"), "5\n");
}

TEST_F(QBFileOutputStreamTest, EndOfTheProgramWritesOutWhatWasCollected) {
    static QBFileOutputStream *first; // not released before the end
    const ChildEnd end = runInChild([&] {
        std::atexit([] { write(first, "z"); }); // before or behind what the library does then
        first = QBFileOutputStream::initWithFile(path("first"), NO).detach();
        write(first, "a");
        QBFileOutputStream::streamWithFile(path("closed"))->close();
        write(QBFileOutputStream::streamWithFile(path("second")), "b");
        ERRORHANDLER->raiseFatalError(900999);
    });
    EXPECT_EQ(end.status, 255);
    EXPECT_EQ(describeFiles(), "closed: \nfirst: az\nsecond: b\n");
}

// --- Failures ---

TEST_F(QBFileOutputStreamTest, FailureAtAnyStepIsAnErrorAndLeavesTheOldFile) {
    const auto writeText = [](QBOutputStream *stream) { write(stream, "text"); };
    const auto writeByte = [](QBOutputStream *stream) { stream->writeByte('x'); };
    const auto flush = [](QBOutputStream *stream) { stream->flush(); };
    const auto close = [](QBOutputStream *stream) { stream->close(); };
    const std::tuple<Call, int, void (*)(QBOutputStream *)> rows[] = {
        {Call::fwrite, 231, writeText}, {Call::fwrite, 246, writeByte}, {Call::fwrite, 285, flush},
        {Call::fflush, 285, flush},     {Call::fwrite, 260, close},     {Call::fflush, 260, close},
        {Call::fsync, 260, close},      {Call::fclose, 260, close}};
    for (const auto &[call, line, act] : rows) {
        directory_.write("out", "old");
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(path("out"), /*atomically=*/YES);
        write(stream, "new");
        expectErrorAt(
            "src/QBFileOutputStream:" + std::to_string(line), 100024,
            describe(stream->tmpFilename()) + " Input/output error", [&stream, act = act, call = call] {
                const Fault fault(call, /*skip=*/0, /*times=*/1, EIO);
                for (int i = 0; i < 1'000'000 && fault.hits() == 0; ++i) // short writes are collected
                    act(stream);
                act(stream); // succeeds, which doesn't make it whole
            });
        stream->close();
        EXPECT_EQ(describeFiles(), "out: old\n") << sys::nameOfCall(call) << " " << line;
    }
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(path("out"), YES);
    const Fault directorySync(Call::fsync, /*skip=*/1, /*times=*/1, EIO); // told, but the new file is there
    ErrorExpectation error(100024);
    stream->close();
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:260");
    EXPECT_EQ(describeFiles(), "out: \n");
}

TEST_F(QBFileOutputStreamTest, FailedResetClosesTheFile) {
    directory_.write("out", "old");
    for (const auto &[call, atomically] : {std::pair(Call::ftruncate, YES), std::pair(Call::open, NO)}) {
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(path("out"), atomically);
        const std::string name = describe(stream->tmpFilename());
        const Fault fault(call, /*skip=*/0, /*times=*/1, EIO);
        EXPECT_ERROR_AT("src/QBFileOutputStream:303", 100024, name + " Input/output error", stream->reset());
        EXPECT_ERROR_AT("src/QBFileOutputStream:246", 100024, name + " Bad file descriptor",
                        stream->writeByte('x'));
        EXPECT_EQ(describeFiles(), atomically ? "out: old\n" : "out: \n");
    }
}

TEST_F(QBFileOutputStreamTest, FailedRenameLeavesTheOldFileAndNoOther) {
    directory_.makeDirectory("out/full");
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(path("out"), /*atomically=*/YES);
    const std::string temporary(stream->tmpFilename()->view());
    ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900999);
    stream->close();
    EXPECT_EQ(recordingErrorHandler()->raised.back().values,
              temporary + " " + directory_ / "out Is a directory");
    EXPECT_EQ(takenErrors(), "(100202, 900999)"); // the newest one first
    EXPECT_EQ(directory_.names(), Strings{"out"});
}

TEST_F(QBFileOutputStreamTest, ErrorHandlerThatThrowsLeavesNoFileBehindAndNoneOpen) {
    struct Throwing : QBErrorHandler {
        using QBErrorHandler::raiseErrorInFileWithArgList;
        void raiseErrorInFileWithArgList(const char *, int, int error, const qb::ArgList &, NSArray *,
                                         NSString *) override {
            throw error;
        }
    } handler;
    QBErrorHandler *const before = std::exchange(ERRORHANDLER, &handler);
    directory_.makeDirectory("out/full");
    const auto open = openDescriptors();
    EXPECT_THROW(QBFileOutputStream::streamWithFile(path("out"), /*atomically=*/YES)->close(), int);
    QBFileOutputStream *const stream = QBFileOutputStream::streamWithFile(path("new"), /*atomically=*/YES);
    const Fault fault(Call::fsync, /*skip=*/0, /*times=*/1, EIO);
    EXPECT_THROW(stream->close(), int);
    QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(
        QBFileOutputStream::streamWithFile(path("decoded")), /*decode=*/YES);
    write(filter, "TWFuTW");
    EXPECT_THROW(filter->close(), int);
    EXPECT_EQ(openDescriptors(), open);
    EXPECT_EQ(directory_.names(), (Strings{"decoded", "out"}));
    ERRORHANDLER = before;
}

TEST_F(QBFileOutputStreamTest, PlantedNameIsNeverFollowed) {
    const TemporaryDirectory memory("planted"); // where many names are soon made
    memory.write("victim", "precious");
    std::string made; // of which all but the time is known
    do {
        std::srand(7);
        made = IdCreator::createId()->view();
    } while (made[made.size() - 18] == '9'); // so that the next one's number has another last digit
    ++made[made.size() - 18];
    std::srand(7);
    const auto now = static_cast<std::int32_t>(std::time(nullptr));
    for (int i = 0; i < 5000; ++i) { // milliseconds
        NSCalendarDate *const second = NSCalendarDate::dateWithCTime(now + i / 1000);
        memory.link("victim", "out." + made.substr(0, made.size() - 17) +
                                  describe(second->asISODateTimeString()) +
                                  std::to_string(1000 + i % 1000).substr(1));
    }
    ErrorExpectation error(100024);
    EXPECT_EQ(QBFileOutputStream::initWithFile(memory.string("out"), /*atomically=*/YES), nullptr);
    EXPECT_TRUE(error.values().ends_with(" File exists")) << error.values();
    EXPECT_EQ(memory.read("victim"), "precious");
}

TEST_F(QBFileOutputStreamTest, SyncingCanBeSwitchedOffAndAFileMayHaveANameOnly) {
    NSString *const before = OSFilePath::getcwd();
    OSFilePath::chdir(path("."));
    for (BOOL synchronizes : {YES, NO}) {
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile("out"_ns, YES);
        stream->setSynchronizes(synchronizes);
        CallCounter counter;
        stream->close();
        EXPECT_EQ(counter.calls(Call::fsync), synchronizes ? 2u : 0u); // the file, then its directory
    }
    OSFilePath::chdir(before);
    EXPECT_EQ(describeFiles(), "out: \n");
}

TEST_F(QBFileOutputStreamTest, DeathAtAnyCallLeavesTheOldFileOrTheNewOne) {
    Random random;
    const std::string oldText = randomBytes(random, 150000), newText = randomBytes(random, 200000);
    bool isDone = false, sawNew = false;
    unsigned calls = 0;
    for (; !isDone && calls < 200; ++calls) {
        directory_.write("out", oldText);
        const ChildEnd end = runInChild([&] {
            Fault fault(Call::any, calls, sys::KillProcess());
            QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(path("out"), YES);
            write(stream, newText.substr(0, 3000));
            write(stream, newText.substr(3000, 100000));
            for (std::size_t i = 103000; i < newText.size(); ++i)
                stream->writeByte(newText[i]);
            stream->close();
        });
        const std::string text = directory_.read("out");
        ASSERT_TRUE(text == oldText || text == newText) << "killed at call " << calls;
        isDone = end.status == 0;
        sawNew = sawNew || (!isDone && text == newText);
    }
    EXPECT_TRUE(isDone);
    EXPECT_TRUE(sawNew); // there is a call behind the rename, the directory's sync
    EXPECT_GT(calls, 12u);
}
