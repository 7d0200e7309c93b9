#include <QBFoundation/QBFileOutputStream.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/IdCreator.h>
#include <QBFoundation/Runtime/Send.h>

#include "System/Clock.h"
#include "System/Faults.h"
#include "System/Files.h"
#include "support/ErrorExpectation.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sys = qb::sys;
using sys::Call;
using sys::Fault;

namespace {

class QBFileOutputStreamTest : public PoolFixture {
protected:
    std::string describeFiles() const {
        std::string all;
        for (const std::string &name : directory_.names())
            all += name + ": " + directory_.read(name) + "\n";
        return all;
    }
    std::string values(const char *name, int error) const {
        return (directory_ / name) + " " + std::strerror(error);
    }

    TemporaryDirectory directory_;
};

mode_t modeOf(const std::string &path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

std::string bytesOf(std::uint32_t count) {
    std::string bytes(count, '\0');
    std::mt19937 random(count);
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

void write(QBOutputStream *stream, const std::string &text) {
    stream->writeBuffer(text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string isoTime(std::int64_t milliseconds) {
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm fields;
    char text[32];
    const std::size_t length =
        std::strftime(text, sizeof text, "%Y%m%d%H%M%S", ::gmtime_r(&seconds, &fields));
    std::snprintf(text + length, sizeof text - length, "%03d", static_cast<int>(milliseconds % 1000));
    return text;
}

// Plants links with those texts, in turn, under the names that the temporary file for `path` may get when it
// is made within that time: all but the time in them is known.
void plantLinks(const std::string &path, const std::string (&texts)[2], int milliseconds) {
    std::srand(7);
    const std::string start = std::to_string(std::rand()) + std::to_string(::getpid());
    const std::string nextStart = std::to_string(std::rand()) + std::to_string(::getpid());
    std::srand(7);
    const std::string id(IdCreator::createId()->view());
    const std::string number = id.substr(start.size(), id.size() - start.size() - isoTime(0).size());
    const std::string name = path + "." + nextStart + std::to_string(std::stoi(number) + 1);
    const std::int64_t now = sys::wallMilliseconds();
    for (int i = 0; i < milliseconds; ++i)
        ASSERT_EQ(::symlink(texts[i % 2].c_str(), (name + isoTime(now + i)).c_str()), 0);
}

// Runs `act` in a child process and returns how that ended.
template <class F>
int statusOfChild(F act) {
    const pid_t child = ::fork();
    if (child == 0) {
        act();
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

} // namespace

// --- Opening ---

TEST_F(QBFileOutputStreamTest, WritesInPlaceAndMakesTheDirectoriesAbove) {
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("a/b/out"));
    write(stream, "text");
    EXPECT_EQ(directory_.read("a/b/out"), ""); // collected
    stream->flush();
    EXPECT_EQ(directory_.read("a/b/out"), "text");
    EXPECT_TRUE(stream->tmpFilename()->isEqual(stream->filename()));
    stream->close();
    stream->close();
    EXPECT_EQ(directory_.read("a/b/out"), "text");
    EXPECT_EQ(modeOf(directory_ / "a/b/out"), 0666 & ~sys::currentUmask());
}

TEST_F(QBFileOutputStreamTest, AtomicStreamReplacesTheTargetAtClose) {
    directory_.write("out", "old");
    ASSERT_EQ(::chmod((directory_ / "out").c_str(), 0606), 0);
    QBFileOutputStream *stream =
        QBFileOutputStream::streamWithFile(directory_.string("out"), /*atomically=*/YES);
    write(stream, "new");
    stream->flush();
    const std::string temporary(stream->tmpFilename()->view());
    EXPECT_EQ(temporary.compare(0, directory_.path().size() + 5, directory_ / "out."), 0);
    EXPECT_EQ(directory_.read("out"), "old");
    EXPECT_EQ(directory_.read(temporary.substr(directory_.path().size() + 1)), "new");
    stream->close();
    EXPECT_EQ(describeFiles(), "out: new\n");
    EXPECT_EQ(modeOf(directory_ / "out"), 0606u);
}

TEST_F(QBFileOutputStreamTest, AtomicFileThatIsNewGetsTheModeOfTheUmask) {
    const mode_t before = ::umask(027);
    QBFileOutputStream::writeToFile("x"_ns, directory_.string("new"), /*atomically=*/YES);
    ::umask(before);
    EXPECT_EQ(describeFiles(), "new: x\n");
    EXPECT_EQ(modeOf(directory_ / "new"), 0640u);
}

TEST_F(QBFileOutputStreamTest, OnlyExactlyYesIsAtomic) {
    QBFileOutputStream *stream =
        QBFileOutputStream::streamWithFile(directory_.string("out"), static_cast<BOOL>(2));
    EXPECT_TRUE(stream->tmpFilename()->isEqual(stream->filename()));
    stream->close();
}

TEST_F(QBFileOutputStreamTest, WritesAnObjectToAFile) {
    NSArray *array = NSArray::arrayWithObjects("a"_ns, "b"_ns);
    QBFileOutputStream::writeToFile(array, directory_.string("one"), /*atomically=*/NO);
    send<void>(QBFileOutputStream::cls(), "write:toFile:atomically:"_sel, array, directory_.string("two"),
               YES);
    EXPECT_EQ(describeFiles(), "one: ab\ntwo: ab\n");
    ErrorExpectation error(100024);
    QBFileOutputStream::writeToFile(array, directory_.string("."), /*atomically=*/NO);
    EXPECT_EQ(error.values(), values(".", EISDIR));
}

TEST_F(QBFileOutputStreamTest, FileThatCannotBeOpenedIsAnError) {
    directory_.write("file", "");
    ErrorExpectation error(100024);
    EXPECT_EQ(QBFileOutputStream::initWithFile(directory_.string("file/out"), /*atomically=*/NO), nullptr);
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:183");
    EXPECT_EQ(error.values(), values("file/out", ENOTDIR));
}

TEST_F(QBFileOutputStreamTest, NameWithoutRoomForTheTemporaryOneIsWrittenInPlaceOnly) {
    const std::string name(255, '\xFF');
    QBFileOutputStream::writeToFile("old"_ns, directory_.string(name), /*atomically=*/NO);
    ErrorExpectation error(100024);
    QBFileOutputStream::writeToFile("new"_ns, directory_.string(name), /*atomically=*/YES);
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:183");
    EXPECT_NE(error.values().find(std::strerror(ENAMETOOLONG)), std::string::npos);
    EXPECT_EQ(describeFiles(), name + ": old\n");
}

TEST_F(QBFileOutputStreamTest, PathThatIsNoneIsAnError) {
    {
        ErrorExpectation error(100024);
        NSString *path = NSString::stringWith(directory_ / std::string_view("a\0b", 3));
        EXPECT_EQ(QBFileOutputStream::streamWithFile(path), nullptr);
        EXPECT_EQ(error.values(), values("a", EINVAL));
    }
    ErrorExpectation error(100024);
    EXPECT_EQ(QBFileOutputStream::initWithFile(nullptr, /*atomically=*/YES), nullptr);
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:183");
    EXPECT_TRUE(directory_.names().empty());
}

TEST_F(QBFileOutputStreamTest, DirectoryThatCannotBeMadeLeavesItsErrorToo) {
    Fault fault(Call::mkdir, /*skip=*/0, /*times=*/1, EACCES);
    EXPECT_EQ(QBFileOutputStream::streamWithFile(directory_.string("a/out")), nullptr);
    EXPECT_EQ(describe(ERRORHANDLER->errorIds()), "(100024, 100168)");
    ERRORHANDLER->clearErrorStack();
}

TEST_F(QBFileOutputStreamTest, EarlierErrorGivesNoStreamButAnEmptyFile) {
    for (BOOL atomically : {NO, YES}) {
        directory_.write("out", "old");
        ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900999);
        EXPECT_EQ(QBFileOutputStream::initWithFile(directory_.string("out"), atomically), nullptr);
        EXPECT_EQ(describeFiles(), "out: \n");
        EXPECT_EQ(describe(ERRORHANDLER->errorIds()), "(900999)");
        ERRORHANDLER->clearErrorStack();
    }
}

TEST_F(QBFileOutputStreamTest, FileStreamNeedsAFile) {
    EXPECT_THROW(QBFileOutputStream::stream(), InvalidUseOfMethodException);
    EXPECT_THROW(send<id>(QBFileOutputStream::cls(), "stream"_sel), InvalidUseOfMethodException);
    EXPECT_REASON(
        QBFileOutputStream::initWithFilePointer(nullptr),
        "QBFileOutputStream initWithFilePointer: must have a file pointer argument that is not NULL.");
}

// --- Writing ---

TEST_F(QBFileOutputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    std::mt19937 random(99);
    for (int round = 0; round < 8; ++round) {
        const bool hasWindow = round % 2 == 0;
        const Fault fault(Call::allocate, /*skip=*/hasWindow ? 1000000 : 0, /*times=*/1, ENOMEM);
        std::FILE *file = round > 5 ? std::fopen((directory_ / "out").c_str(), "wb") : nullptr;
        Ref<QBFileOutputStream> stream = file
                                             ? QBFileOutputStream::initWithFilePointer(file)
                                             : QBFileOutputStream::initWithFile(directory_.string("out"), NO);
        const std::string whole = bytesOf(300000 + random() % 1000);
        for (std::size_t done = 0; done < whole.size();) {
            const auto length = std::min<std::size_t>(whole.size() - done, random() % (1u << random() % 18));
            length == 1 ? stream->putByte(whole[done]) : write(stream, whole.substr(done, length));
            done += length;
        }
        stream = nullptr; // destruction closes
        EXPECT_TRUE(directory_.read("out") == whole) << "round " << round;
    }
}

TEST_F(QBFileOutputStreamTest, SubclassSeesEachWrite) {
    class Counter : public QBFileOutputStream {
    public:
        static Ref<Counter> initWithFile(NSString *file) {
            return qb::init<Counter>(&Counter::setUpWithFile, file, NO);
        }
        void _writeBuffer(const void *buffer, std::uint32_t length) override {
            ++writes;
            QBFileOutputStream::_writeBuffer(buffer, length);
        }
        int writes = 0;
    };
    Ref<Counter> stream = Counter::initWithFile(directory_.string("out"));
    write(stream, "ab");
    stream->writeByte('c'); // has its own way to the file
    write(stream, "d");
    EXPECT_EQ(stream->writes, 2);
    stream->close();
    EXPECT_EQ(directory_.read("out"), "abcd");
}

TEST_F(QBFileOutputStreamTest, ResetEmptiesTheFile) {
    for (BOOL atomically : {NO, YES}) {
        directory_.write("out", "old");
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"), atomically);
        write(stream, "first");
        stream->reset();
        write(stream, "2nd");
        stream->close();
        EXPECT_EQ(describeFiles(), "out: 2nd\n");
    }
}

TEST_F(QBFileOutputStreamTest, ClosedStreamTakesNothing) {
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"));
    write(stream, "text");
    stream->close();
    {
        ErrorExpectation error(100024);
        write(stream, "more");
        EXPECT_EQ(error.place(), "src/QBFileOutputStream:231");
        EXPECT_EQ(error.values(), values("out", EBADF));
    }
    {
        ErrorExpectation error(100024);
        stream->writeByte('x');
        EXPECT_EQ(error.place(), "src/QBFileOutputStream:246");
    }
    EXPECT_REASON(stream->flush(), "QBFileOutputStream flush: file is not open");
    try {
        stream->flush();
    } catch (const NSFileHandleOperationException &exception) {
        EXPECT_EQ(exception.name()->view(), "NotOpen");
    }
    EXPECT_EQ(directory_.read("out"), "text");
}

TEST_F(QBFileOutputStreamTest, FilePointerIsWrittenInOrderWithOthersAndClosed) {
    std::FILE *file = std::fopen((directory_ / "out").c_str(), "wb");
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFilePointer(file);
    EXPECT_EQ(stream->filename()->view(), "<filehandle>");
    EXPECT_EQ(stream->tmpFilename()->view(), "<filehandle>");
    stream->writeByte('a');
    std::fputc('b', file);
    write(stream, "c");
    EXPECT_THROW(stream->reset(), InvalidUseOfMethodException);
    stream->close();
    EXPECT_EQ(directory_.read("out"), "abc");
}

TEST_F(QBFileOutputStreamTest, StandardStreamsAreClosed) {
    const std::string output = directory_ / "output";
    const int status = statusOfChild([&] {
        if (!std::freopen(output.c_str(), "wb", stdout))
            ::_exit(1);
        QBFileOutputStream::streamForStdout()->writeFormat("%d\n"_ns, 5);
        QBFileOutputStream *stream =
            send<QBFileOutputStream *>(QBFileOutputStream::cls(), "streamForStdout"_sel);
        stream->close();
        ::_exit(::fcntl(1, F_GETFD) == -1 ? 17 : 2);
    });
    EXPECT_EQ(WEXITSTATUS(status), 17);
    EXPECT_EQ(directory_.read("output"), "5\n");
}

// --- Failures ---

TEST_F(QBFileOutputStreamTest, ShortWriteIsAFailedWrite) {
    QBFileOutputStream *stream =
        QBFileOutputStream::streamWithFile(directory_.string("out"), /*atomically=*/YES);
    {
        Fault fault(Call::fwrite, /*skip=*/0, /*times=*/1, sys::ShortTransfer{5000});
        ErrorExpectation error(100024);
        write(stream, bytesOf(5001));
        EXPECT_EQ(error.place(), "src/QBFileOutputStream:231");
    }
    stream->close();
    EXPECT_EQ(describeFiles(), "");
}

TEST_F(QBFileOutputStreamTest, LateFailureLeavesTheOldFileAndNoOther) {
    struct Row {
        Call call;
        const char *place;
        void (*act)(QBOutputStream *stream);
    };
    const auto flush = [](QBOutputStream *stream) { stream->flush(); };
    const auto close = [](QBOutputStream *stream) { stream->close(); };
    const Row rows[] = {{Call::fwrite, "src/QBFileOutputStream:285", flush},
                        {Call::fflush, "src/QBFileOutputStream:285", flush},
                        {Call::fwrite, "src/QBFileOutputStream:260", close},
                        {Call::fflush, "src/QBFileOutputStream:260", close},
                        {Call::fsync, "src/QBFileOutputStream:260", close},
                        {Call::fclose, "src/QBFileOutputStream:260", close}};
    for (const Row &row : rows) {
        directory_.write("out", "old");
        QBFileOutputStream *stream =
            QBFileOutputStream::streamWithFile(directory_.string("out"), /*atomically=*/YES);
        write(stream, "new");
        {
            Fault fault(row.call, /*skip=*/0, /*times=*/1, EIO);
            ErrorExpectation error(100024);
            row.act(stream);
            EXPECT_EQ(error.place(), row.place) << sys::nameOfCall(row.call);
            EXPECT_EQ(error.values(), std::string(stream->tmpFilename()->view()) + " " + std::strerror(EIO));
        }
        stream->close();
        EXPECT_EQ(describeFiles(), "out: old\n") << sys::nameOfCall(row.call);
    }
}

TEST_F(QBFileOutputStreamTest, FailedRenameLeavesTheOldFileAndNoOther) {
    directory_.makeDirectory("out/full");
    QBFileOutputStream *stream =
        QBFileOutputStream::streamWithFile(directory_.string("out"), /*atomically=*/YES);
    const std::string temporary(stream->tmpFilename()->view());
    ErrorExpectation error(100202);
    stream->close();
    EXPECT_EQ(error.values(), temporary + " " + values("out", EISDIR));
    EXPECT_EQ(directory_.names(), std::vector<std::string>{"out"});
}

TEST_F(QBFileOutputStreamTest, FailureOfTheDirectorySyncIsReported) {
    QBFileOutputStream *stream =
        QBFileOutputStream::streamWithFile(directory_.string("out"), /*atomically=*/YES);
    Fault fault(Call::fsync, /*skip=*/1, /*times=*/1, EIO);
    ErrorExpectation error(100024);
    stream->close();
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:260");
    EXPECT_EQ(describeFiles(), "out: \n");
}

TEST_F(QBFileOutputStreamTest, FailedResetClosesTheStream) {
    for (BOOL atomically : {NO, YES}) {
        directory_.write("out", "old");
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"), atomically);
        {
            Fault fault(Call::freopen, /*skip=*/0, /*times=*/1, EMFILE);
            ErrorExpectation error(100024);
            stream->reset();
            EXPECT_EQ(error.place(), "src/QBFileOutputStream:303");
        }
        EXPECT_THROW(stream->flush(), NSFileHandleOperationException);
        stream->close();
        EXPECT_EQ(describeFiles(), atomically ? "out: old\n" : "out: \n");
    }
}

TEST_F(QBFileOutputStreamTest, FileThatCannotBePreparedIsNotLeftBehind) {
    directory_.write("out", "old");
    for (Call call : {Call::open, Call::fchmod, Call::fdopen}) {
        Fault fault(call, /*skip=*/0, /*times=*/1, EPERM);
        ErrorExpectation error(100024);
        EXPECT_EQ(QBFileOutputStream::initWithFile(directory_.string("out"), /*atomically=*/YES), nullptr);
        EXPECT_EQ(error.place(), "src/QBFileOutputStream:183");
        EXPECT_EQ(describeFiles(), "out: old\n") << sys::nameOfCall(call);
    }
}

TEST_F(QBFileOutputStreamTest, PlantedNameIsNeverFollowed) {
    const std::string links[] = {directory_ / "victim", directory_ / "absent"};
    directory_.write("victim", "precious");
    directory_.write("out", "old");
    ErrorExpectation error(100024);
    Ref<QBFileOutputStream> stream;
    // Again, for a longer time, should the first one be over before all links stand.
    for (int milliseconds = 500; error.values() == "none" && milliseconds < 100000; milliseconds *= 2) {
        plantLinks(directory_ / "out", links, milliseconds);
        stream = QBFileOutputStream::initWithFile(directory_.string("out"), /*atomically=*/YES);
    }
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:183");
    EXPECT_EQ(error.values().substr(error.values().find(' ')), std::string(" ") + std::strerror(EEXIST));
    EXPECT_EQ(directory_.read("victim"), "precious");
    EXPECT_FALSE(directory_.has("absent"));
}

TEST_F(QBFileOutputStreamTest, FailedWriteIsAnErrorAndLeavesTheOldFile) {
    struct Row {
        const char *place;
        void (*write)(QBOutputStream *stream);
    };
    const Row rows[] = {
        {"src/QBFileOutputStream:231", [](QBOutputStream *stream) { write(stream, "text"); }},
        {"src/QBFileOutputStream:246", [](QBOutputStream *stream) { stream->writeByte('x'); }}};
    for (const Row &row : rows) {
        directory_.write("out", "old");
        QBFileOutputStream *stream =
            QBFileOutputStream::streamWithFile(directory_.string("out"), /*atomically=*/YES);
        const Fault fault(Call::fwrite, /*skip=*/0, /*times=*/1, EDQUOT);
        ErrorExpectation error(100024);
        for (int i = 0; fault.hits() == 0 && i < 1000000; ++i) // short writes are collected
            row.write(stream);
        EXPECT_EQ(error.place(), row.place);
        EXPECT_EQ(error.values(), std::string(stream->tmpFilename()->view()) + " " + std::strerror(EDQUOT));
        row.write(stream); // the next ones succeed, which doesn't make it whole
        stream->close();
        EXPECT_EQ(describeFiles(), "out: old\n");
    }
}

TEST_F(QBFileOutputStreamTest, FullDiskShowsInALongWriteOrAtFlush) {
    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile("/dev/full"_ns);
    {
        ErrorExpectation error(100024);
        write(stream, bytesOf(5000));
        EXPECT_EQ(error.place(), "src/QBFileOutputStream:231");
        EXPECT_EQ(error.values(), "/dev/full No space left on device");
    }
    stream->close();
    ERRORHANDLER->clearErrorStack(); // what the C library still held may fail again
    stream = QBFileOutputStream::streamWithFile("/dev/full"_ns);
    write(stream, "abc");
    ErrorExpectation error(100024);
    stream->close();
    EXPECT_EQ(error.place(), "src/QBFileOutputStream:260");
}

TEST_F(QBFileOutputStreamTest, LimitOfTheFileSizeLeavesTheOldFile) {
    directory_.write("out", "old");
    const int status = statusOfChild([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{10000, 10000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"), YES);
        for (int i = 0; i < 30000; ++i)
            stream->writeByte('x');
        stream->close();
        ::_exit(static_cast<int>(ERRORHANDLER->errorIds()->count()));
    });
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(describeFiles(), "out: old\n");
}

TEST_F(QBFileOutputStreamTest, SyncingCanBeSwitchedOff) {
    for (BOOL synchronizes : {YES, NO}) {
        QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"), YES);
        EXPECT_TRUE(stream->synchronizes());
        stream->setSynchronizes(synchronizes);
        sys::CallCounter counter;
        stream->close();
        EXPECT_EQ(counter.calls(Call::fsync), synchronizes ? 2u : 0u); // the file, then its directory
    }
}

TEST_F(QBFileOutputStreamTest, DeathAtAnyCallLeavesTheOldFileOrTheNewOne) {
    const std::string oldText = bytesOf(150000), newText = bytesOf(200000);
    bool isDone = false;
    unsigned calls = 0;
    bool sawNew = false;
    for (; !isDone && calls < 200; ++calls) {
        directory_.write("out", oldText);
        const int status = statusOfChild([&] {
            Fault fault(Call::any, calls, sys::KillProcess());
            QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(directory_.string("out"), YES);
            write(stream, newText.substr(0, 3000));
            write(stream, newText.substr(3000, 100000));
            for (std::size_t i = 103000; i < newText.size(); ++i)
                stream->writeByte(newText[i]);
            stream->close();
        });
        const std::string text = directory_.read("out");
        ASSERT_TRUE(text == oldText || text == newText) << "killed at call " << calls;
        isDone = WIFEXITED(status);
        sawNew = sawNew || (!isDone && text == newText);
    }
    EXPECT_TRUE(isDone);
    EXPECT_TRUE(sawNew); // there is a call behind the rename, the directory's sync
    EXPECT_GT(calls, 12u);
}
