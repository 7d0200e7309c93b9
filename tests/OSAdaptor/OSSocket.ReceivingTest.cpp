#include "System/Clock.h"
#include "support/Faults.h"
#include "support/PoolFixture.h"
#include "support/SocketPair.h"

#include <thread>

namespace {

class OSSocketReceivingTest : public PoolFixture {
protected:
    // What a read of up to `length` bytes answers, and the bytes: "4 abcd", "-1".
    std::string read(std::uint32_t length, std::int64_t timeout = 0, BOOL performPeek = NO) {
        std::string bytes(length, '\0');
        const int count = pair_.client->bufferedReceiveWithBuffer(bytes.data(), length, timeout, performPeek);
        return counted(count, bytes);
    }
    std::string peek(std::uint32_t length, std::int64_t timeout = 0) { return read(length, timeout, YES); }
    std::string receive(std::uint32_t length, std::int64_t timeout = 0, BOOL performPeek = NO) {
        std::string bytes(length, '\0');
        const int count = pair_.client->receiveWithBuffer(bytes.data(), length, timeout, performPeek);
        return counted(count, bytes);
    }
    static std::string counted(int count, const std::string &bytes) {
        return std::to_string(count) +
               (count > 0 ? " " + bytes.substr(0, static_cast<std::size_t>(count)) : "");
    }
    std::string line(std::int64_t timeout = 0) {
        return describe(pair_.client->readLineWithTimeout(timeout));
    }

    const SocketPair pair_;
};

} // namespace

TEST_F(OSSocketReceivingTest, ReadsDeliverWhatThereIsUpToTheEnd) {
    pair_.feed("abcd");
    pair_.peer->close();
    EXPECT_EQ(read(0), "0");
    EXPECT_EQ(read(10), "4 abcd");
    EXPECT_EQ(read(10), "-1");
    EXPECT_EQ(read(10), "-1");
    EXPECT_EQ(receive(10), "-1");
    EXPECT_EQ(describe(pair_.client->readBytes(10)), "<>");
}

TEST_F(OSSocketReceivingTest, TimeOutsEndReadsThatAreTriedAgain) {
    const std::int64_t start = sys::monotonicNanoseconds();
    EXPECT_EQ(receive(1, 30), "-1");
    EXPECT_GE(sys::monotonicNanoseconds() - start, 30'000'000);
    pair_.feed("abcd");
    EXPECT_EQ(read(10, 20), "4 abcd");
    EXPECT_EQ(read(1, 20), "-1");
    pair_.feed("ef");
    EXPECT_EQ(read(2, 20), "2 ef");
    pair_.feed("gh");
    EXPECT_EQ(receive(1, INT64_MAX, YES), "1 g");
    EXPECT_EQ(describe(pair_.client->readBytes(3, /*withTimeout=*/20)), "<6768>");
}

TEST_F(OSSocketReceivingTest, PeeksTakeNothing) {
    pair_.feed("abc");
    EXPECT_EQ(receive(2, 0, YES), "2 ab");
    EXPECT_EQ(peek(3), "3 abc"); // from the system
    EXPECT_EQ(read(1), "1 a");
    pair_.feed("de");
    EXPECT_EQ(peek(2), "2 bc");   // from the buffer
    EXPECT_EQ(peek(9), "4 bcde"); // from both
    EXPECT_EQ(read(3), "3 bcd");
    EXPECT_EQ(peek(9, 20), "1 e"); // time out
    pair_.feed("f");
    EXPECT_EQ(peek(9), "1 e"); // which is kept in mind
    EXPECT_EQ(read(9), "1 e"); // until a read has told of it
    EXPECT_EQ(read(1), "1 f");
    EXPECT_EQ(peek(1, 20), "0");
    EXPECT_EQ(read(1), "-1");
    pair_.feed("g");
    EXPECT_EQ(read(1), "1 g");
}

TEST_F(OSSocketReceivingTest, NonBlockingSocketsDeliverNothingRatherThanWait) {
    pair_.client->setNonBlocking();
    EXPECT_EQ(receive(1), "0");
    EXPECT_EQ(read(1), "0");
    EXPECT_EQ(peek(1), "0");
    EXPECT_EQ(line(), "");
    EXPECT_EQ(pair_.client->getInputStream()->readByte(), -1);
    pair_.feed("ab");
    EXPECT_EQ(read(9), "2 ab");
    EXPECT_EQ(receive(1, 20), "-1");
}

TEST_F(OSSocketReceivingTest, InterruptionsEndAReceiveWithoutAnError) {
    pair_.feed("abc");
    {
        const Fault fault(Call::poll, 0, 1, EINTR);
        EXPECT_EQ(receive(1, 1000), "-1");
    }
    const Fault fault(Call::recv, 0, 2, EINTR);
    EXPECT_EQ(receive(1), "-1");
    EXPECT_EQ(read(1), "-1");
    EXPECT_EQ(read(3), "3 abc");
}

TEST_F(OSSocketReceivingTest, PendingErrorsEndReadsAndBytesStay) {
    pair_.feed("abc\n");
    {
        ErrorExpectation error(100207);
        const Fault fault(Call::recv, 0, 1, EIO);
        EXPECT_EQ(read(1), "-1");
        EXPECT_EQ(read(1), "-1"); // was received and is in the buffer
        EXPECT_EQ(read(1), "1 a");
        EXPECT_EQ(line(), "");
        EXPECT_EQ(error.values(), std::to_string(pair_.client->socketHandle()));
    }
    EXPECT_EQ(line(), "bc");
}

TEST_F(OSSocketReceivingTest, BufferedBytesAreCopiedToAnOffset) {
    pair_.feed("abcd");
    EXPECT_EQ(read(1), "1 a");
    char bytes[] = "......";
    const auto copy = [&](std::uint32_t length, std::int32_t offset, BOOL performPeek) {
        return pair_.client->_copyBytesFromInternalBufferIntoBuffer(bytes, length, offset, performPeek);
    };
    EXPECT_EQ(copy(2, 1, YES), 2);
    EXPECT_EQ(copy(1, -5, NO), 1);
    EXPECT_EQ(copy(UINT32_MAX, 3, NO), 2);
    EXPECT_EQ(copy(1, 0, NO), 0);
    EXPECT_STREQ(bytes, "bbccd.");
    const std::pair<const char *, int (*)(OSSocket *)> rows[] = {
        {"receiveWithBuffer:length:timeout:performPeek:",
         [](OSSocket *socket) { return socket->receiveWithBuffer(nullptr, 1, 0, NO); }},
        {"bufferedReceiveWithBuffer:length:timeout:performPeek:",
         [](OSSocket *socket) { return socket->bufferedReceiveWithBuffer(nullptr, 1, 0, NO); }},
        {"_copyBytesFromInternalBufferIntoBuffer:length:offset:performPeek:",
         [](OSSocket *socket) { return socket->_copyBytesFromInternalBufferIntoBuffer(nullptr, 1, 0, NO); }},
    };
    for (const auto &[selector, act] : rows)
        EXPECT_REASON(
            act(pair_.client),
            (std::string("OSSocket ") + selector + " must have a buffer that is not NULL.").c_str());
}

TEST_F(OSSocketReceivingTest, LinesEndAtLineFeedsAndLoseCarriageReturns) {
    pair_.feed("one\r\n\n\rt\rwo\r\r\nthree");
    EXPECT_EQ(line(), "one");
    EXPECT_EQ(line(), "");
    EXPECT_EQ(line(), "two");
    EXPECT_EQ(line(20), "three"); // time out
    pair_.feed({"a\0b\n", 4});
    EXPECT_EQ(pair_.client->readLine()->view(), std::string_view("a\0b", 3));
    pair_.peer->writeLine("four"_ns);
    pair_.peer->writeLine(nullptr);
    EXPECT_EQ(peek(8), "8 four\r\n\r\n");
    EXPECT_EQ(line(), "four");
    pair_.peer->close();
    EXPECT_EQ(line(), "");
    EXPECT_EQ(line(), "");
}

TEST_F(OSSocketReceivingTest, LongLinesAndManyBytesComeWhole) {
    std::string text;
    while (text.size() < 200000)
        text += "some text \r" + std::to_string(text.size());
    std::thread writer([&] {
        const std::string all = text + "\n" + text;
        for (std::size_t done = 0; done < all.size();)
            done += static_cast<std::size_t>(
                ::send(pair_.peer->socketHandle(), all.data() + done, all.size() - done, 0));
        ::shutdown(pair_.peer->socketHandle(), SHUT_WR);
    });
    const std::string read = line();
    NSData *const rest = pair_.client->readBytes(UINT32_MAX - 1);
    writer.join();
    EXPECT_EQ(rest->length(), text.size());
    EXPECT_EQ(std::string(static_cast<const char *>(rest->bytes()), rest->length()), text);
    std::erase(text, '\r');
    EXPECT_EQ(read, text);
}

// --- Streams ---

TEST_F(OSSocketReceivingTest, StreamsReadAndWriteTheSocket) {
    OSSocketInputStream *const input = pair_.client->getInputStream();
    OSSocketOutputStream *const output = pair_.peer->getOutputStream();
    EXPECT_EQ(input->socket(), pair_.client.get());
    EXPECT_EQ(input->isBinary(), NO);
    input->setIsBinary(YES);
    EXPECT_EQ(input->isBinary(), YES);
    {
        const Fault fault(Call::send, 0, 0, sys::ShortTransfer{3});
        output->writeObject("\xFFtext"_ns);
        output->writeByte('!');
    }
    char bytes[8] = "";
    EXPECT_EQ(input->readByteWithTimeout(10, /*performPeek=*/YES), 0xFF);
    EXPECT_EQ(input->readByte(), 0xFF);
    EXPECT_EQ(send<std::int32_t>(input, "readBuffer:length:timeout:performPeek:"_sel,
                                 static_cast<void *>(bytes), 2, 10, YES),
              2);
    EXPECT_EQ(input->readBuffer(bytes, 8, /*timeout=*/10), 5);
    EXPECT_STREQ(bytes, "text!");
    EXPECT_EQ(input->readBuffer(bytes, 0, 0), 0);
    EXPECT_EQ(input->readByteWithTimeout(10), -1);
    output->close();
    EXPECT_EQ(pair_.peer->socketHandle(), -1);
    EXPECT_EQ(input->readBuffer(bytes, 8), -1);
    input->close();
    EXPECT_EQ(pair_.client->socketHandle(), -1);
}

TEST_F(OSSocketReceivingTest, StreamsNeedSocketsAndBuffers) {
    EXPECT_REASON(OSSocketOutputStream::stream(), "OSSocketOutputStream init: must be made with a socket.");
    EXPECT_REASON(send<id>(OSSocketInputStream::cls(), "init"_sel),
                  "OSSocketInputStream init: must be made with a socket.");
    EXPECT_REASON(OSSocketOutputStream::streamWithSocket(nullptr),
                  "OSSocketOutputStream initWithSocket: must have a socket that is not nil.");
    EXPECT_REASON(OSSocketInputStream::streamWithSocket(nullptr),
                  "OSSocketInputStream initWithSocket: must have a socket that is not nil.");
    EXPECT_REASON(
        pair_.client->getInputStream()->readBuffer(nullptr, 0, 0),
        "OSSocketInputStream readBuffer:length:timeout:performPeek: must have a buffer that is not NULL.");
    pair_.client->close();
    expectError(100206, "Broken pipe", [&] { pair_.peer->getOutputStream()->writeObject("text"_ns); });
}
