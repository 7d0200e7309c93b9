#include "support/PoolFixture.h"

#include <random>

using QBBufferOutputStreamTest = PoolFixture;

namespace {

void fill(QBOutputStream *stream, std::uint32_t count) {
    const std::string bytes(count, 'x');
    stream->writeBuffer(bytes.data(), count);
}

} // namespace

TEST_F(QBBufferOutputStreamTest, GrowsByDoublingThenBySteps) {
    const struct {
        std::uint32_t capacity, used, length, grown;
    } rows[] = {{10, 0, 10, 10},                               // filled exactly
                {10, 10, 1, 20},          {100, 90, 200, 300}, // the whole request on top
                {100, 90, 110, 200},      {100, 90, 111, 211},
                {32769, 32769, 1, 65537}, {65536, 65536, 32769, 98305}};
    for (const auto &row : rows) {
        QBBufferOutputStream *stream = QBBufferOutputStream::streamWithCapacity(row.capacity);
        fill(stream, row.used);
        EXPECT_EQ(stream->bufLength(), row.capacity);
        row.length == 1 ? stream->writeByte('b') : fill(stream, row.length);
        EXPECT_EQ(stream->bufLength(), row.grown) << row.capacity << " " << row.used << " " << row.length;
        EXPECT_EQ(stream->byteCounter(), row.used + row.length);
    }
}

TEST_F(QBBufferOutputStreamTest, ResetReturnsToTheDefaultCapacity) {
    QBDataOutputStream *stream = QBDataOutputStream::streamWithCapacity(100000);
    fill(stream, 5);
    stream->reset();
    EXPECT_EQ(stream->bufLength(), 1024u);
    EXPECT_EQ(QBBufferOutputStream::stream()->bufLength(), 1024u);
}

TEST_F(QBBufferOutputStreamTest, ContentBeyondTheFieldsEndIsAsMissingMemory) {
    if (sizeof(void *) == 4)
        GTEST_SKIP() << "needs 4 GiB of address space";
    QBBufferOutputStream *stream = QBBufferOutputStream::streamWithCapacity(UINT32_MAX);
    if (!stream)
        GTEST_SKIP() << "needs 4 GiB of address space";
    stream->writeByte('a');
    // The range is never read: a write that does not fit is refused before anything is copied.
    expectError(
        100156, "", [&] { stream->writeBuffer(stream, UINT32_MAX); }, "src/QBBufferOutputStream:117");
    EXPECT_EQ(stream->byteCounter(), 0u); // what was written before is gone, too
    fill(stream, 3);
    EXPECT_EQ(stream->byteCounter(), 3u);
}

TEST_F(QBBufferOutputStreamTest, ContentIsTheSameObjectUntilTheNextWrite) {
    QBStringOutputStream *stream = QBStringOutputStream::stream();
    stream->writeBuffer("ab", 2);
    NSString *string = stream->targetString();
    EXPECT_EQ(stream->targetString(), string);
    stream->writeByte('c');
    EXPECT_EQ(stream->targetString()->view(), "abc");
    stream->reset();
    EXPECT_EQ(stream->targetString()->view(), "");
    EXPECT_EQ(string->view(), "ab"); // still there, and still what it was
    stream->writeObject(string);
    NSString *own;
    {
        const NSAutoreleasePool pool;
        own = stream->targetString();
    }
    stream->writeObject(own);
    EXPECT_EQ(stream->targetString()->view(), "abab");
}

TEST_F(QBBufferOutputStreamTest, LargeContentIsHandedOverAndStaysWhatItWas) {
    const std::string bytes(100000, 'x');
    for (const bool isFull : {false, true}) {
        QBDataOutputStream *stream = QBDataOutputStream::streamWithCapacity(isFull ? 100000 : 200000);
        fill(stream, 100000);
        NSData *const data = stream->targetData();
        const std::uint32_t capacity = stream->bufLength();
        stream->writeByte('y');
        EXPECT_EQ(stream->bufLength(), isFull ? capacity + 32768 : capacity);
        NSData *const more = stream->targetData();
        stream->reset();
        EXPECT_EQ(stream->targetData()->length(), 0u);
        stream->writeByte('a');
        EXPECT_EQ(stream->targetData()->length(), 1u);
        EXPECT_TRUE(data->isEqualToData(NSData::dataWithBytes(bytes.data(), 100000)));
        EXPECT_TRUE(more->isEqualToData(NSData::dataWithBytes((bytes + "y").data(), 100001)));
    }
}

TEST_F(QBBufferOutputStreamTest, PiecesOfAnySizeGiveTheWhole) {
    std::mt19937 random(20240817);
    for (int round = 0; round < 50; ++round) {
        QBDataOutputStream *stream = QBDataOutputStream::streamWithCapacity(random() % 200);
        std::string whole;
        while (whole.size() < 70000) {
            std::string piece(random() % (1u << random() % 15), '\0');
            for (char &byte : piece)
                byte = static_cast<char>(random());
            piece.size() == 1 ? stream->putByte(piece[0])
                              : stream->writeBuffer(piece.data(), static_cast<std::uint32_t>(piece.size()));
            whole += piece;
            if (random() % 16 == 0) {
                EXPECT_EQ(stream->targetData()->length(), whole.size());
            }
        }
        const auto view = stream->targetData()->view();
        ASSERT_EQ(std::string(reinterpret_cast<const char *>(view.data()), view.size()), whole);
    }
}
