#include "support/PoolFixture.h"

using QBBufferOutputStreamTest = PoolFixture;

static void fill(QBOutputStream *stream, std::uint32_t count) {
    write(stream, std::string(count, 'x'));
}

TEST_F(QBBufferOutputStreamTest, GrowsByDoublingThenBySteps) {
    const std::uint32_t rows[][4] = {
        {10, 0, 10, 10},                          // filled exactly
        {10, 10, 1, 20},     {100, 90, 200, 300}, // the whole request on top
        {100, 90, 110, 200}, {100, 90, 111, 211}, {32769, 32769, 1, 65537}, {65536, 65536, 32769, 98305}};
    for (const auto &[capacity, used, length, grown] : rows) {
        QBBufferOutputStream *stream = QBBufferOutputStream::streamWithCapacity(capacity);
        fill(stream, used);
        EXPECT_EQ(stream->bufLength(), capacity);
        length == 1 ? stream->writeByte('b') : fill(stream, length);
        EXPECT_EQ(stream->bufLength(), grown) << capacity << " " << used << " " << length;
        EXPECT_EQ(stream->byteCounter(), used + length);
        stream->reset();
        EXPECT_EQ(stream->bufLength(), QBBufferOutputStream::stream()->bufLength()); // the default
    }
}

TEST_F(QBBufferOutputStreamTest, ContentBeyondTheFieldsEndIsAsMissingMemory) {
    if (sizeof(void *) == 4)
        GTEST_SKIP() << "needs 4 GiB of address space";
    QBBufferOutputStream *stream = QBBufferOutputStream::streamWithCapacity(UINT32_MAX);
    if (!stream)
        GTEST_SKIP() << "needs 4 GiB of address space";
    stream->writeByte('a');
    // The range is never read: a write that does not fit is refused before anything is copied.
    EXPECT_ERROR_AT("src/QBBufferOutputStream:117", 100156, "", stream->writeBuffer(stream, UINT32_MAX));
    EXPECT_EQ(stream->byteCounter(), 0u); // what was written before is gone, too
    fill(stream, 3);
    EXPECT_EQ(stream->byteCounter(), 3u);
}

TEST_F(QBBufferOutputStreamTest, MissingMemoryIsAnErrorAtEachStep) {
    QBBufferOutputStream *const stream = QBBufferOutputStream::stream();
    const Fault noMemory(Call::reallocate, /*skip=*/0, /*times=*/0, ENOMEM);
    EXPECT_ERROR_AT("src/QBBufferOutputStream:64", 100156, "",
                    EXPECT_EQ(QBBufferOutputStream::initWithCapacity(9), nullptr));
    EXPECT_ERROR_AT("src/QBBufferOutputStream:155", 100156, "", stream->reset());
    EXPECT_ERROR_AT("src/QBBufferOutputStream:117", 100156, "", stream->writeByte('a'));
}

TEST_F(QBBufferOutputStreamTest, ContentIsTheSameObjectUntilTheNextWrite) {
    QBStringOutputStream *stream = QBStringOutputStream::stream();
    stream->writeBuffer("ab", 2);
    NSString *string = stream->targetString();
    EXPECT_EQ(stream->bufLength(), 1024u);
    EXPECT_EQ(stream->targetString(), string);
    stream->writeByte('c');
    EXPECT_EQ(stream->targetString()->view(), "abc");
    stream->reset();
    EXPECT_EQ(stream->targetString()->view(), "");
    EXPECT_EQ(string->view(), "ab"); // still there, and still what it was
    stream->writeObject(string);
    stream->writeObject(inOwnPool([&] { return stream->targetString(); }));
    EXPECT_EQ(stream->targetString()->view(), "abab");
}

template <class Stream>
static void checkLargeContent(auto content) {
    const std::string bytes(100000, 'x');
    for (const bool isFull : {false, true}) {
        Stream *stream = Stream::streamWithCapacity(isFull ? 100000 : 200000);
        fill(stream, 100000);
        const auto large = (stream->*content)();
        EXPECT_EQ((stream->*content)(), large);
        const std::uint32_t capacity = stream->bufLength();
        stream->writeByte('y');
        EXPECT_EQ(stream->bufLength(), isFull ? capacity + 32768 : capacity);
        const auto more = (stream->*content)();
        stream->reset();
        EXPECT_EQ(bytesOf((stream->*content)()->asData()), "");
        stream->writeByte('a');
        EXPECT_EQ(bytesOf((stream->*content)()->asData()), "a");
        EXPECT_EQ(bytesOf(large->asData()), bytes);
        EXPECT_EQ(bytesOf(more->asData()), bytes + "y");
        EXPECT_EQ(more->cStringValue(), more->stringValue()->view());
    }
}

TEST_F(QBBufferOutputStreamTest, LargeContentIsHandedOverAndStaysWhatItWas) {
    checkLargeContent<QBDataOutputStream>(&QBDataOutputStream::targetData);
    checkLargeContent<QBStringOutputStream>(&QBStringOutputStream::targetString);
}

TEST_F(QBBufferOutputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    Random random;
    for (std::uint32_t round = 0; round < 50; ++round) {
        QBDataOutputStream *stream = QBDataOutputStream::streamWithCapacity(round * 4);
        const std::string whole = randomBytes(random, 70000);
        const std::size_t half = random.below(70000);
        writeInPieces(stream, std::string_view(whole).substr(0, half), random);
        EXPECT_EQ(bytesOf(stream->targetData()), whole.substr(0, half));
        writeInPieces(stream, std::string_view(whole).substr(half), random);
        ASSERT_EQ(bytesOf(stream->targetData()), whole);
    }
}
