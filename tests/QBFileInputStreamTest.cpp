#include "support/DirectoryFixture.h"

#include <fstream>

struct QBFileInputStreamTest : DirectoryFixture {
    QBFileInputStream *streamOf(const std::string &bytes) {
        directory_.write("file", bytes);
        return QBFileInputStream::streamWithFile(path("file"));
    }
    std::string values(int error) const { return (directory_ / "file") + " " + std::strerror(error); }
};

static Strings lines(QBFileInputStream *stream) {
    Strings result;
    while (NSString *line = stream->readLine())
        result.emplace_back(line->view());
    return result;
}

// What the C library's line reading and cutting give.
static Strings expectedLines(const std::string &bytes) {
    Strings result;
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size() - 1) + 1;
        char buffer[1000] = {};
        const std::size_t length = std::min<std::size_t>(end - start, 999);
        bytes.copy(buffer, length, start);
        std::strtok(buffer, "\r\n");
        result.emplace_back(buffer);
        start += length;
    }
    return result;
}

TEST_F(QBFileInputStreamTest, BytesAndLinesShareThePosition) {
    QBFileInputStream *stream = streamOf("\x01\xFF\ndef\nghi");
    EXPECT_EQ(stream->byteLength(), 10u);
    EXPECT_FALSE(stream->isBinary());
    EXPECT_EQ(stream->readByte(), 1);
    EXPECT_EQ(stream->readByte(), -1);
    EXPECT_EQ(stream->readLine()->view(), "\n");
    char bytes[10];
    EXPECT_EQ(stream->readBuffer(bytes, 2), 2);
    EXPECT_EQ(stream->readLine()->view(), "f");
    EXPECT_EQ(stream->readBuffer(bytes, 10), 3);
    EXPECT_EQ(stream->readBuffer(bytes, 10), -1);
    EXPECT_EQ(stream->readLine(), nullptr);
}

TEST_F(QBFileInputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    Random random;
    const std::string whole = randomBytes(random, 400000);
    QBFileInputStream *stream = streamOf(whole);
    std::string piece(1 << 16, '\0');
    for (int round = 0; round < 10; ++round) {
        std::string all;
        while (all.size() < whole.size()) {
            all += static_cast<char>(round % 2 ? stream->getByte() : stream->readByte());
            const std::uint32_t length = random.length(17);
            const int count = stream->readBuffer(piece.data(), length);
            ASSERT_LE(count, static_cast<int>(length));
            all.append(piece, 0, static_cast<std::size_t>(std::max(count, 0)));
        }
        ASSERT_TRUE(all == whole) << "round " << round;
        EXPECT_EQ(stream->readByte(), -1);
        stream->reset();
    }
}

// --- Opening ---

TEST_F(QBFileInputStreamTest, FileThatCannotBeOpenedIsAnErrorAtItsLine) {
    directory_.write("file", "x");
    const auto open = [&](const char *name) {
        EXPECT_EQ(QBFileInputStream::initWithFile(path(name)), nullptr);
    };
    EXPECT_ERROR_AT("src/QBFileInputStream:78", 100039, directory_ / "none", open("none"));
    const Fault fault(Call::open, /*skip=*/0, /*times=*/1, EACCES);
    EXPECT_ERROR_AT("src/QBFileInputStream:86", 100023, values(EACCES), open("file"));
    const Fault noWindow(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
    EXPECT_ERROR(100156, "", open("file"));
    ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900999);
    open("file");
    EXPECT_EQ(takenErrors(), "(900999)");
}

// --- Files that change or fail ---

TEST_F(QBFileInputStreamTest, LinesThatWereAppendedAreReadAndDoNotCount) {
    QBFileInputStream *stream = streamOf("abc\nde");
    std::ofstream(directory_ / "file", std::ios::app) << "f\nghi\nj";
    char bytes[10];
    EXPECT_EQ(stream->readBuffer(bytes, 10), 6); // the old size
    stream->reset();
    EXPECT_EQ(lines(stream), (Strings{"abc", "def", "ghi", "j"}));
    EXPECT_EQ(stream->readBuffer(bytes, 10), -1);
    EXPECT_EQ(stream->byteLength(), 6u);
}

TEST_F(QBFileInputStreamTest, FileThatShrankIsAReadError) {
    for (const std::uint32_t length : {90u, 60000u}) { // by way of the window, and past it
        QBFileInputStream *stream = streamOf(std::string(60000, 'x'));
        ASSERT_EQ(::truncate((directory_ / "file").c_str(), 50), 0);
        std::string bytes(60000, '\0');
        EXPECT_ERROR_AT("src/QBFileInputStream:123", 100023, values(EIO),
                        EXPECT_EQ(stream->readBuffer(bytes.data(), length), 0));
    }
}

TEST_F(QBFileInputStreamTest, FailedReadIsAnErrorAsIsAnyOfAClosedStream) {
    QBFileInputStream *stream = streamOf("abc\ndef");
    EXPECT_EQ(stream->readLine()->view(), "abc");
    const Fault fault(Call::read, /*skip=*/0, /*times=*/1, EIO);
    EXPECT_ERROR_AT("src/QBFileInputStream:171", 100023, values(EIO),
                    EXPECT_EQ(stream->readLine()->view(), "def")); // what was read before
    stream->close();
    stream->close();
    EXPECT_ERROR(100023, values(EBADF), EXPECT_EQ(stream->readByte(), 0));
    EXPECT_ERROR(100023, values(EBADF), EXPECT_EQ(stream->readLine(), nullptr));
}

// --- Lines ---

TEST_F(QBFileInputStreamTest, LinesAreThoseOfTheCLibraryOnAnyBytes) {
    std::mt19937 random(1999);
    for (int round = 0; round < 10; ++round) {
        std::string bytes(random() % 200000, 'x');
        for (char &byte : bytes) {
            const unsigned one = random() % (20u << round);
            byte = one < 4 ? std::string_view("\r\n\n\0", 4)[one] : static_cast<char>(one);
        }
        ASSERT_EQ(lines(streamOf(bytes)), expectedLines(bytes)) << "round " << round;
    }
}

// As those of a pipe or terminal, which brings the next one when the first has had its answer.
TEST_F(QBFileInputStreamTest, LineIsReadBeforeTheNextOneIsThere) {
    QBFileInputStream *stream = streamOf("ab\nc\nd");
    const Fault fault(Call::read, /*skip=*/0, /*times=*/0, sys::ShortTransfer{4});
    const CallCounter counter;
    EXPECT_EQ(stream->readLine()->view(), "ab");
    EXPECT_EQ(counter.calls(Call::read), 1u);
    EXPECT_EQ(lines(stream), (Strings{"c", "d"}));
}

TEST_F(QBFileInputStreamTest, ResetOfAPipeLosesNothing) {
    const std::string name = directory_ / "pipe";
    ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    const int end = ::open(name.c_str(), O_RDWR); // so that neither side waits
    ASSERT_EQ(::write(end, "a\nb\n", 4), 4);
    QBFileInputStream *const stream = QBFileInputStream::streamWithFile(path("pipe"));
    EXPECT_EQ(stream->readLine()->view(), "a");
    stream->reset();
    EXPECT_EQ(stream->readLine()->view(), "b");
    ::close(end);
}
