#include "support/DirectoryFixture.h"

using QBInputStreamTest = DirectoryFixture;

namespace {

// A client's stream that has the one operation it must have.
struct Countdown : QBInputStream {
    explicit Countdown(int from) : left(from) {}
    std::int32_t readByte() override { return left > 0 ? left-- : -1; }
    void close() override { left = 0; }
    int left;
};

// The results of reading by `length` up to the end or an error.
std::vector<int> counts(QBInputStream *stream, std::uint32_t length) {
    std::array<char, 256> buffer;
    std::vector<int> results;
    do
        results.push_back(stream->readBuffer(buffer.data(), length));
    while (results.back() > 0);
    return results;
}

std::vector<int> characters(QBInputStream *stream, int count) {
    std::vector<int> results;
    for (int i = 0; i < count; ++i)
        results.push_back(i % 2 ? stream->getByte() : stream->readByte());
    return results;
}

std::string readInPieces(QBInputStream *stream, Random &random) {
    std::string all;
    for (;;) {
        char piece[3000];
        const int count = stream->readBuffer(piece, random.length(11) + 1);
        if (count < 1)
            return all;
        all.append(piece, static_cast<std::size_t>(count));
    }
}

// A client's stream, which sees each read.
template <class Stream>
struct Watched : Stream {
    void setUpWith(NSData *data) { Stream::setUpWithData(data); }
    void setUpWith(NSString *file) { Stream::setUpWithFile(file); }
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override {
        ++reads;
        return Stream::_readBuffer(buffer, length);
    }
    int reads = 0;
};

template <class Stream>
void expectEachReadToBeSeen(auto *source) {
    const auto stream = Ref<Watched<Stream>>::adopt(new Watched<Stream>);
    stream->setUpWith(source);
    EXPECT_EQ(stream->getByte(), 'a');
    EXPECT_EQ(counts(stream, 2), (std::vector<int>{2, -1}));
    EXPECT_EQ(stream->reads, 3);
}

// A client's stream, which claims to be longer than it is.
template <class Stream>
struct Longer : Stream {
    void setUpWith(NSData *data) { Stream::setUpWithData(data); }
    void setUpWith(NSString *text) { Stream::setUpWithString(text); }
    std::uint32_t byteLength() const override { return Stream::byteLength() + 10; }
};

template <class Stream>
void expectSource(auto *source) {
    const auto longer = Ref<Longer<Stream>>::adopt(new Longer<Stream>);
    longer->setUpWith(source);
    EXPECT_EQ(longer->byteLength(), 12u);
    EXPECT_EQ(counts(longer, 8), (std::vector<int>{2, -1}));
    longer->reset();
    EXPECT_EQ(characters(longer, 3), (std::vector<int>{'a', 'b', -1}));
}

} // namespace

TEST_F(QBInputStreamTest, PrimitiveOfTheBaseReadsBytesUpToTheEndAndAFilterHandsThemOn) {
    Ref<Countdown> stream = Ref<Countdown>::adopt(new Countdown(5));
    EXPECT_EQ(stream->_readBuffer(nullptr, 0), -1);
    EXPECT_EQ(counts(stream, 3), (std::vector<int>{3, 2, -1}));
    stream->left = 9;
    QBInputFilter *filter = QBInputFilter::streamWithSource(stream);
    EXPECT_EQ(filter->readByte(), 9);
    EXPECT_EQ(counts(filter, 5), (std::vector<int>{5, 3, -1}));
    stream->left = 9;
    filter->close();
    EXPECT_EQ(stream->left, 0);
}

TEST_F(QBInputStreamTest, ReadingNothingAnswersZeroAndNoBufferThrows) {
    QBDataInputStream *stream = QBDataInputStream::streamWithData(dataOf("abc"));
    char byte = 0;
    EXPECT_EQ(stream->readBuffer(&byte, 0), 0);
    EXPECT_REASON(stream->readBuffer(nullptr, 0),
                  "QBInputStream readBuffer:length: must have a buffer that is not NULL.");
}

TEST_F(QBInputStreamTest, DataThatChangesWhileItIsReadIsReadAsItIs) {
    NSMutableData *data = NSMutableData::dataWithBytes("ab", 2);
    QBDataInputStream *stream = QBDataInputStream::streamWithData(data);
    EXPECT_EQ(stream->readByte(), 'a');
    const std::string more(100000, 'c');
    data->appendBytes(more.data(), 100000);
    EXPECT_EQ(characters(stream, 2), (std::vector<int>{'b', 'c'}));
    EXPECT_EQ(stream->byteLength(), 100002u);
}

TEST_F(QBInputStreamTest, StringGivesBytesInBulkAndCharactersOneByOne) {
    // Umlaut, euro sign, a character of two units, a letter: 10 bytes, 5 units.
    const std::vector<int> expected = {0xE4, 0x20AC, 0xD83D, 0xDE00, 'z', -1, -1};
    NSString *text = NSString::stringWith("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z");
    QBStringInputStream *stream = QBStringInputStream::streamWithString(text);
    EXPECT_EQ(stream->byteLength(), 10u);
    EXPECT_EQ(characters(stream, 7), expected);
    stream->reset();
    char bytes[3];
    EXPECT_EQ(stream->readBuffer(bytes, 3), 3);
    EXPECT_EQ(stream->readByte(), 0xDE00); // the same position, now as that of a unit
    EXPECT_EQ(characters(QBStringInputStream::streamWithString(text->mutableCopy().autorelease()), 7),
              expected);
}

TEST_F(QBInputStreamTest, ALengthThatASubclassTellsIsNotThatOfTheSource) {
    for (NSString *text : {"ab"_ns, static_cast<NSString *>(NSMutableString::stringWith("ab"))})
        expectSource<QBStringInputStream>(text);
    expectSource<QBDataInputStream>(dataOf("ab"));
}

TEST_F(QBInputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    Random random;
    for (int round = 0; round < 20; ++round) {
        const std::string whole = randomBytes(random, random.below(100000));
        QBDataInputStream *datas = QBDataInputStream::streamWithData(dataOf(whole));
        EXPECT_EQ(readInPieces(datas, random), whole);
        datas->reset();
        for (const char byte : whole)
            ASSERT_EQ(datas->getByte(), static_cast<signed char>(byte));
        EXPECT_EQ(datas->getByte(), -1);
        NSString *text = NSString::stringWith(whole);
        QBStringInputStream *stream = QBStringInputStream::streamWithString(text);
        for (std::uint32_t i = 0; i < std::min(text->length(), 100u); ++i)
            ASSERT_EQ(stream->readByte(), text->characterAtIndex(i)) << i << " in round " << round;
        stream->reset();
        EXPECT_EQ(readInPieces(stream, random), whole);
    }
}

TEST_F(QBInputStreamTest, SubclassSeesEachRead) {
    directory_.write("file", "abc");
    expectEachReadToBeSeen<QBDataInputStream>(dataOf("abc"));
    expectEachReadToBeSeen<QBFileInputStream>(path("file"));
}

TEST_F(QBInputStreamTest, ContentsAreCompared) {
    const std::string longText(70000, 'x');
    const std::tuple<std::string, std::string, BOOL> rows[] = {
        {"abcde", "abcdef", NO}, {longText, longText, YES}, {longText + "x", longText + "y", NO}};
    for (const auto &[one, other, isEqual] : rows) {
        auto *data = QBDataInputStream::streamWithData(dataOf(one));
        auto *text = QBStringInputStream::streamWithString(NSString::stringWith(other));
        EXPECT_EQ(data->providesSameDataAs(text), isEqual);
        EXPECT_EQ(data->readByte(), one[0]); // back at the start
        EXPECT_EQ(text->readByte(), other[0]);
        EXPECT_TRUE(text->providesSameDataAs(text));
        EXPECT_EQ(text->readByte(), other[0]);
        QBDataInputStream *const same = QBDataInputStream::streamWithData(dataOf(one));
        const Fault fault(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
        EXPECT_ERROR(100156, "", EXPECT_FALSE(data->providesSameDataAs(same)));
    }
}

TEST_F(QBInputStreamTest, ComparisonEndsAtAStreamThatDeliversLessThanItsLength) {
    struct Liar : QBInputStreamWithKnownLength {
        std::uint32_t byteLength() const override { return 3; }
        void reset() override { ++resets; }
        std::int32_t _readBuffer(void *, std::uint32_t) override { return answer; }
        int resets = 0;
        std::int32_t answer = -1;
    };
    auto *stream = QBDataInputStream::streamWithData(dataOf("abc"));
    Ref<Liar> liar = Ref<Liar>::adopt(new Liar);
    EXPECT_FALSE(stream->providesSameDataAs(liar));
    EXPECT_TRUE(liar->providesSameDataAs(stream)); // what ends first is equal so far
    EXPECT_EQ(liar->resets, 4);
    EXPECT_FALSE(liar->providesSameDataAs(QBDataInputStream::streamWithData(dataOf("abcd"))));
    EXPECT_EQ(liar->resets, 4); // other lengths: not touched
    liar->answer = 1 << 20;     // more than it was asked for
    EXPECT_FALSE(stream->providesSameDataAs(liar));
    EXPECT_FALSE(liar->providesSameDataAs(stream));
}

TEST_F(QBInputStreamTest, FilePointerIsReadToItsEndAndRewound) {
    std::FILE *file = std::tmpfile();
    std::fputs("\xFF-cde", file);
    QBFilePointerInputStream *stream = QBFilePointerInputStream::streamWithFilePointer(file);
    stream->reset();
    EXPECT_EQ(stream->readByte(), -1);
    EXPECT_EQ(counts(stream, 3), (std::vector<int>{3, 1, -1}));
    stream->close();
    stream->close();
    EXPECT_ERROR(100023, "<unknown> Bad file descriptor", EXPECT_EQ(stream->readByte(), 0));
}

TEST_F(QBInputStreamTest, ResetForgetsTheEndOfAPipe) {
    OSPipe *const pipe = OSPipe::pipe();
    std::FILE *const file = ::fdopen(::dup(pipe->readHandle()), "rb");
    ::fcntl(pipe->readHandle(), F_SETFL, O_NONBLOCK);
    QBFilePointerInputStream *const stream = QBFilePointerInputStream::streamWithFilePointer(file);
    EXPECT_ERROR(100023, "<unknown> Resource temporarily unavailable", EXPECT_EQ(stream->readByte(), 0));
    ASSERT_EQ(::write(pipe->writeHandle(), "a", 1), 1);
    stream->reset();
    EXPECT_EQ(stream->readByte(), 'a');
    pipe->closeWriteHandle();
    EXPECT_EQ(stream->readByte(), -1); // the end, and no error of before
    stream->close();
}

TEST_F(QBInputStreamTest, FilePointerThatCannotBeReadRaises) {
    QBFilePointerInputStream *stream = QBFilePointerInputStream::streamWithFilePointer(std::tmpfile());
    const Fault fault(Call::fread, /*skip=*/0, /*times=*/1, EIO);
    char byte;
    EXPECT_ERROR_AT("src/QBFilePointerInputStream:96", 100023, "<unknown> Input/output error",
                    EXPECT_EQ(stream->readBuffer(&byte, 1), 0));
    const ErrorExpectation error(100023);
    EXPECT_EQ(stream->readByte(), 0); // the end, but the C stream still has its error
    stream->close();
}
