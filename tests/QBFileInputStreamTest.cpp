#include "support/Faults.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <cstring>
#include <fstream>
#include <random>
#include <unistd.h>

namespace {

class QBFileInputStreamTest : public PoolFixture {
protected:
    QBFileInputStream *streamOf(const std::string &bytes) {
        directory_.write("file", bytes);
        return QBFileInputStream::streamWithFile(directory_.string("file"));
    }
    void append(const std::string &bytes) {
        std::ofstream(directory_ / "file", std::ios::app | std::ios::binary) << bytes;
    }
    std::string values(int error) const { return (directory_ / "file") + " " + std::strerror(error); }

    TemporaryDirectory directory_;
};

std::vector<std::string> lines(QBFileInputStream *stream) {
    std::vector<std::string> result;
    while (NSString *line = stream->readLine())
        result.emplace_back(line->view());
    return result;
}

using Lines = std::vector<std::string>;

// What the C library's line reading and cutting give.
Lines expectedLines(const std::string &bytes) {
    Lines result;
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

} // namespace

TEST_F(QBFileInputStreamTest, DeliversTheFileInPiecesAndAgainAfterReset) {
    QBFileInputStream *stream = streamOf("\x01\xFF\x80"
                                         "defghi");
    EXPECT_EQ(stream->byteLength(), 9u);
    EXPECT_TRUE(stream->filename()->isEqual(directory_.string("file")));
    EXPECT_FALSE(stream->isBinary());
    stream->setIsBinary(YES);
    EXPECT_TRUE(stream->isBinary());
    EXPECT_EQ(stream->readByte(), 1);
    EXPECT_EQ(stream->readByte(), -1);
    EXPECT_EQ(stream->readByte(), -128);
    char bytes[10];
    EXPECT_EQ(stream->readBuffer(bytes, 4), 4);
    EXPECT_EQ(stream->readBuffer(bytes, 4), 2);
    EXPECT_EQ(stream->readBuffer(bytes, 4), -1);
    EXPECT_EQ(stream->readByte(), -1);
    stream->reset();
    EXPECT_EQ(stream->readBuffer(bytes, 10), 9);
    EXPECT_EQ(std::memcmp(bytes + 3, "defghi", 6), 0);
}

TEST_F(QBFileInputStreamTest, EmptyFileIsAtItsEnd) {
    QBFileInputStream *stream = streamOf("");
    char byte;
    EXPECT_EQ(stream->readBuffer(&byte, 1), -1);
    EXPECT_EQ(stream->readLine(), nullptr);
    EXPECT_TRUE(stream->providesSameDataAs(QBFileInputStream::streamWithFile(directory_.string("file"))));
}

TEST_F(QBFileInputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    std::mt19937 random(7);
    std::string whole(400000, '\0');
    for (char &byte : whole)
        byte = static_cast<char>(random());
    QBFileInputStream *stream = streamOf(whole);
    for (int round = 0; round < 10; ++round) {
        std::string all;
        std::string piece(80000, '\0');
        for (;;) {
            const std::uint32_t length = random() % (1u << random() % 17) + 1;
            if (length == 1 && all.size() < whole.size()) {
                all += static_cast<char>(round % 2 ? stream->getByte() : stream->readByte());
                continue;
            }
            const int count = stream->readBuffer(piece.data(), length);
            if (count < 1)
                break;
            ASSERT_LE(static_cast<std::uint32_t>(count), length);
            all.append(piece, 0, static_cast<std::size_t>(count));
        }
        ASSERT_TRUE(all == whole) << "round " << round;
        stream->reset();
    }
    EXPECT_TRUE(stream->providesSameDataAs(
        QBDataInputStream::streamWithData(NSData::dataWithBytes(whole.data(), 400000))));
}

TEST_F(QBFileInputStreamTest, SubclassSeesEachRead) {
    class Counter : public QBFileInputStream {
    public:
        static Ref<Counter> initWithFile(NSString *file) {
            return qb::init<Counter>(&Counter::setUpWithFile, file);
        }
        std::int32_t _readBuffer(void *buffer, std::uint32_t length) override {
            ++reads;
            return QBFileInputStream::_readBuffer(buffer, length);
        }
        int reads = 0;
    };
    directory_.write("file", "abcdef");
    Ref<Counter> stream = Counter::initWithFile(directory_.string("file"));
    char bytes[2];
    EXPECT_EQ(stream->readByte(), 'a');
    EXPECT_EQ(stream->getByte(), 'b');
    EXPECT_EQ(stream->readBuffer(bytes, 2), 2);
    EXPECT_EQ(stream->reads, 3);
}

// --- Opening ---

TEST_F(QBFileInputStreamTest, FileThatCannotBeOpenedIsAnErrorAtItsLine) {
    directory_.write("file", "x");
    directory_.write("long", "");
    ASSERT_EQ(::truncate((directory_ / "long").c_str(), off_t{3} << 30), 0); // beyond the fields
    const struct {
        NSString *path;
        Call fails; // any: none
        int number;
        std::string place, values;
    } rows[] = {
        {directory_.string("none"), Call::any, 100039, "src/QBFileInputStream:78", directory_ / "none"},
        {directory_.string("file"), Call::open, 100023, "src/QBFileInputStream:86", values(EACCES)},
        {directory_.string("file/x"), Call::any, 100194,
         "src/OSAdaptor/OSFilePath:", directory_ / "file/x Not a directory"},
        {directory_.string("long"), Call::any, 100194,
         "src/OSAdaptor/OSFilePath:", directory_ / "long Value too large for defined data type"},
        {nullptr, Call::any, 100194, "src/OSAdaptor/OSFilePath:", "<null> Bad address"},
    };
    for (const auto &row : rows) {
        const Fault fault(row.fails, row.fails == Call::any ? 1000000 : 0, /*times=*/1, EACCES);
        ErrorExpectation error(row.number);
        EXPECT_EQ(QBFileInputStream::initWithFile(row.path), nullptr);
        EXPECT_TRUE(error.place().starts_with(row.place)) << error.place();
        EXPECT_EQ(error.values(), row.values);
    }
    ERRORHANDLER->raiseErrorInFile("elsewhere", 1, 900999);
    EXPECT_EQ(QBFileInputStream::streamWithFile(directory_.string("file")), nullptr);
    EXPECT_EQ(takenErrors(), "(900999)");
}

// --- Files that change or fail ---

TEST_F(QBFileInputStreamTest, FileThatGrewIsReadToItsOldSize) {
    QBFileInputStream *stream = streamOf("abc");
    append("def");
    char bytes[10];
    EXPECT_EQ(stream->readBuffer(bytes, 10), 3);
    EXPECT_EQ(stream->readBuffer(bytes, 10), -1);
    EXPECT_EQ(stream->readByte(), -1);
    EXPECT_EQ(stream->byteLength(), 3u);
}

TEST_F(QBFileInputStreamTest, LinesThatWereAppendedAreReadAndDoNotCount) {
    QBFileInputStream *stream = streamOf("abc\nde");
    append("f\nghi\nj");
    EXPECT_EQ(stream->readLine()->view(), "abc");
    EXPECT_EQ(stream->readLine()->view(), "def"); // passes the old size
    char bytes[10];
    EXPECT_EQ(stream->readBuffer(bytes, 10), -1);
    EXPECT_EQ(stream->readByte(), -1);
    EXPECT_EQ(lines(stream), (Lines{"ghi", "j"}));
    stream->reset();
    EXPECT_EQ(stream->readBuffer(bytes, 10), 6);
}

TEST_F(QBFileInputStreamTest, FileThatShrankIsAReadError) {
    for (const std::uint32_t length : {90u, 60000u}) {
        QBFileInputStream *stream = streamOf(std::string(60000, 'x'));
        ASSERT_EQ(::truncate((directory_ / "file").c_str(), 50), 0);
        std::string bytes(60000, '\0');
        expectError(
            100023, values(EIO), [&] { EXPECT_EQ(stream->readBuffer(bytes.data(), length), 0); },
            "src/QBFileInputStream:123");
        if (length == 60000) {
            EXPECT_EQ(stream->readBuffer(bytes.data(), 1), -1); // all of it was asked for
            continue;
        }
        ErrorExpectation error(100023);
        EXPECT_EQ(stream->readByte(), 0);
    }
}

TEST_F(QBFileInputStreamTest, FailedReadIsAnError) {
    QBFileInputStream *stream = streamOf("abc\ndef");
    char bytes[4];
    {
        Fault fault(Call::read, /*skip=*/0, /*times=*/1, EIO);
        expectError(
            100023, values(EIO), [&] { EXPECT_EQ(stream->readBuffer(bytes, 4), 0); },
            "src/QBFileInputStream:123");
    }
    stream->reset();
    {
        Fault fault(Call::read, /*skip=*/0, /*times=*/1, EIO);
        expectError(
            100023, values(EIO), [&] { EXPECT_EQ(stream->readLine(), nullptr); },
            "src/QBFileInputStream:171");
    }
    stream->reset();
    EXPECT_EQ(stream->readLine()->view(), "abc");
    Fault fault(Call::read, /*skip=*/0, /*times=*/1, EIO);
    ErrorExpectation error(100023);
    EXPECT_EQ(stream->readLine()->view(), "def"); // what was read before the error
    EXPECT_EQ(error.place(), "src/QBFileInputStream:171");
}

TEST_F(QBFileInputStreamTest, DirectoryIsAReadError) {
    directory_.makeDirectory("file");
    QBFileInputStream *stream = QBFileInputStream::streamWithFile(directory_.string("file"));
    char byte;
    expectError(100023, values(EISDIR), [&] { EXPECT_EQ(stream->readBuffer(&byte, 1), 0); });
}

TEST_F(QBFileInputStreamTest, ClosedStreamDeliversErrors) {
    QBFileInputStream *stream = streamOf("abc");
    EXPECT_EQ(stream->readByte(), 'a');
    stream->close();
    stream->close();
    expectError(100023, values(EBADF), [&] { EXPECT_EQ(stream->readByte(), 0); });
    ErrorExpectation error(100023);
    EXPECT_EQ(stream->readLine(), nullptr);
    stream->reset();
}

// --- Lines ---

TEST_F(QBFileInputStreamTest, LinesAreCutAtTheFirstEndBehindACharacter) {
    struct Row {
        std::string bytes;
        Lines lines;
    };
    const std::string longLine(1500, 'x');
    const Row rows[] = {
        {"a\nthe last", {"a", "the last"}},
        {"\nabc\n", {"\n", "abc"}},
        {"a\r\nb\r\n\r\n", {"a", "b", "\r\n"}},
        {"\r\rab\rc\n", {"\r\rab"}},
        {std::string("ab\0cd\nef\n", 9), {"ab", "ef"}},
        {std::string("\0\n\n", 3), {"", "\n"}},
        {longLine + "\n", {longLine.substr(0, 999), longLine.substr(0, 501)}},
        {longLine.substr(0, 999) + "\nb", {longLine.substr(0, 999), "\n", "b"}},
        {longLine.substr(0, 998) + "\nb", {longLine.substr(0, 998), "b"}},
    };
    for (const Row &row : rows)
        EXPECT_EQ(lines(streamOf(row.bytes)), row.lines) << row.bytes.substr(0, 40);
}

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
    EXPECT_EQ(lines(stream), (Lines{"c", "d"}));
}

TEST_F(QBFileInputStreamTest, LinesAndBytesShareThePosition) {
    QBFileInputStream *stream = streamOf("abc\ndef\nghi");
    EXPECT_EQ(stream->readByte(), 'a');
    EXPECT_EQ(stream->readLine()->view(), "bc");
    char bytes[10];
    EXPECT_EQ(stream->readBuffer(bytes, 2), 2);
    EXPECT_EQ(std::string_view(bytes, 2), "de");
    EXPECT_EQ(send<NSString *>(stream, "readLine"_sel)->view(), "f");
    EXPECT_EQ(stream->readBuffer(bytes, 10), 3);
    EXPECT_EQ(stream->readLine(), nullptr);
}
