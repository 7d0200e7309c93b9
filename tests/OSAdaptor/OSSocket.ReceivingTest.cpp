#include "System/Clock.h"
#include "support/PoolFixture.h"
#include "support/SocketPair.h"

struct OSSocketReceivingTest : PoolFixture {
    // What a read of up to `length` bytes answers, and the bytes: "4 abcd", "-1".
    std::string answerOf(auto operation, std::uint32_t length, std::int64_t timeout, BOOL performPeek) {
        std::string bytes(length, '\0');
        const int count = (pair_.client.get()->*operation)(bytes.data(), length, timeout, performPeek);
        return std::to_string(count) +
               (count > 0 ? " " + bytes.substr(0, static_cast<std::size_t>(count)) : "");
    }
    std::string read(std::uint32_t length, std::int64_t timeout = 0, BOOL performPeek = NO) {
        return answerOf(&OSSocket::bufferedReceiveWithBuffer, length, timeout, performPeek);
    }
    std::string peek(std::uint32_t length, std::int64_t timeout = 0) { return read(length, timeout, YES); }
    std::string receive(std::uint32_t length, std::int64_t timeout = 0, BOOL performPeek = NO) {
        return answerOf(&OSSocket::receiveWithBuffer, length, timeout, performPeek);
    }
    std::string line(std::int64_t timeout = 0) {
        return describe(pair_.client->readLineWithTimeout(timeout));
    }

    const SocketPair pair_;
};

/// A socket that changes what it receives.
struct Shouting : ClientClass<Shouting, OSSocket, "Shouting"> {
    std::int32_t bufferedReceiveWithBuffer(void *buffer, std::uint32_t length, std::int64_t timeout,
                                           BOOL performPeek) override {
        const std::int32_t count = OSSocket::bufferedReceiveWithBuffer(buffer, length, timeout, performPeek);
        for (std::int32_t index = 0; index < count; ++index)
            static_cast<char *>(buffer)[index] &= '\xDF';
        return count;
    }
};

TEST_F(OSSocketReceivingTest, ReadsDeliverWhatThereIsUpToTheEnd) {
    pair_.feed("abcd");
    pair_.peer->close();
    EXPECT_EQ(read(0), "0");
    EXPECT_EQ(read(10), "4 abcd");
    EXPECT_EQ(read(10), "-1");
    EXPECT_EQ(receive(10), "-1");
    EXPECT_EQ(describe(pair_.client->readBytes(UINT32_MAX - 1)), "<>"); // grows with what comes
    EXPECT_EQ(peek(1), "0");
    pair_.client->close(); // which forgets the end
    EXPECT_ERROR(100207, "-1", EXPECT_EQ(read(1), "-1"));
}

TEST_F(OSSocketReceivingTest, TimeOutsEndReadsThatAreTriedAgain) {
    const std::int64_t start = sys::monotonicNanoseconds();
    EXPECT_EQ(receive(1, 30), "-1");
    EXPECT_GE(sys::monotonicNanoseconds() - start, 30'000'000);
    pair_.feed("abcd");
    EXPECT_EQ(read(10, 20), "4 abcd");
    EXPECT_EQ(read(1, 20), "-1");
    pair_.feed("gh");
    EXPECT_EQ(receive(1, INT64_MAX, YES), "1 g");
    EXPECT_EQ(describe(pair_.client->readBytes(3, /*withTimeout=*/20)), "<6768>");
}

TEST_F(OSSocketReceivingTest, PeeksTakeNothing) {
    pair_.feed("abc");
    EXPECT_EQ(peek(3), "3 abc"); // from the system
    EXPECT_EQ(read(1), "1 a");
    pair_.feed("de");
    EXPECT_EQ(peek(9), "4 bcde"); // from both
    char bytes[] = "......";
    EXPECT_EQ(pair_.client->_copyBytesFromInternalBufferIntoBuffer(bytes, UINT32_MAX, /*offset=*/3, YES), 2);
    EXPECT_STREQ(bytes, "...bc.");
    EXPECT_EQ(read(3), "3 bcd");
    EXPECT_EQ(peek(9, 20), "1 e"); // time out
    pair_.feed("f");
    EXPECT_EQ(peek(9), "1 e"); // which is kept in mind
    EXPECT_EQ(read(9), "1 e"); // until a read has told of it
    EXPECT_EQ(read(1), "1 f");
}

TEST_F(OSSocketReceivingTest, NonBlockingSocketsDeliverNothingRatherThanWait) {
    pair_.client->setNonBlocking();
    EXPECT_EQ(receive(1), "0");
    EXPECT_EQ(read(1), "0");
    EXPECT_EQ(line(), "");
    EXPECT_EQ(receive(1, 20), "-1");
}

TEST_F(OSSocketReceivingTest, SignalsAndPendingErrorsEndReadsAndBytesStay) {
    pair_.feed("abc\n");
    const Fault signal(Call::recv, 0, 1, EINTR); // ends a receive without an error
    EXPECT_EQ(read(1), "-1");
    const Fault fault(Call::recv, 0, 1, EIO);
    expectError(100207, std::to_string(pair_.client->socketHandle()), [&] {
        EXPECT_EQ(read(1), "-1");
        EXPECT_EQ(read(1), "-1"); // was received and is in the buffer
        EXPECT_EQ(read(1), "1 a");
        EXPECT_EQ(line(), "");
    });
    EXPECT_EQ(line(), "bc");
}

TEST_F(OSSocketReceivingTest, WhatCameBeforeAFailureIsNotLost) {
    const std::string text = std::string(70'000, 'x') + "\ry", all = text + "z\n";
    const auto length = static_cast<std::uint32_t>(all.size());
    const std::function<std::size_t()> rows[] = {
        [&] { return read(length).size() - 2; }, // "-1"
        [&] { return std::size_t{pair_.client->readBytes(length)->length()}; },
        [&] { return line().size() + 1; }, // and the return
    };
    for (const auto &act : rows) {
        pair_.feed(text);
        std::size_t delivered = 0;
        {
            const ErrorExpectation error(100207);
            const Fault fault(Call::recv, /*skip=*/2, /*times=*/1, EIO);
            delivered = act();
            EXPECT_EQ(delivered, &act == rows ? 0 : text.size());
        }
        pair_.feed("z\n");
        EXPECT_TRUE(
            read(length - static_cast<std::uint32_t>(delivered), 100).ends_with(all.substr(delivered)));
        OSSocket::registerContinueBlockingOperationCallback([]() -> BOOL { throw NSException("A", "b"); });
        pair_.feed(text);
        const Fault fault(Call::poll, /*skip=*/2, /*times=*/1, EINTR);
        EXPECT_THROW(act(), NSException);
        OSSocket::registerContinueBlockingOperationCallback(nullptr);
        pair_.feed("z\n");
        EXPECT_TRUE(read(length, 100).ends_with(" " + all));
    }
    {
        pair_.feed(text);
        const Fault fault(Call::recv, /*skip=*/2, /*times=*/1, EIO), full(Call::allocate, 0, 0, ENOMEM);
        EXPECT_EQ(read(length).size(), 6 + text.size()); // there is no place for them but the caller's
        takenErrors();
    }
    OSSocket::registerContinueBlockingOperationCallback([]() -> BOOL { throw std::bad_alloc(); });
    {
        const Fault interrupted(Call::poll, /*skip=*/2, /*times=*/1, EINTR),
            full(Call::allocate, 0, 0, ENOMEM);
        pair_.feed(text);
        EXPECT_EQ(read(length).size(), 6 + text.size()); // so they are where memory is why it fails
        takenErrors();
    }
    {
        const Fault interrupted(Call::poll, /*skip=*/1, /*times=*/1, EINTR),
            full(Call::allocate, 0, 0, ENOMEM);
        pair_.feed("few");
        EXPECT_THROW(read(length), std::bad_alloc); // for a few there is always a place
    }
    EXPECT_EQ(read(3), "3 few");
    pair_.feed(text);
    const Fault fault(Call::poll, /*skip=*/2, /*times=*/1, EINTR);
    expectError(100156, "", [&] { EXPECT_EQ(pair_.client->readBytes(length)->length(), 65536U); });
    OSSocket::registerContinueBlockingOperationCallback(nullptr);
    EXPECT_TRUE(read(length, 100).ends_with(text.substr(65536)));
}

TEST_F(OSSocketReceivingTest, LinesAndBytesAreNotLostWhereThereIsNoMemory) {
    for (unsigned skip = 0; skip < 32; ++skip) {
        pair_.feed(std::string(70'000, 'x') + "\ry\nz\r\n");
        std::string text;
        const auto take = [&] {
            NSData *const data = skip < 16 ? nullptr : pair_.client->readBytes(200'000, 20);
            text += data ? std::string(static_cast<const char *>(data->bytes()), data->length()) : line(20);
        };
        {
            const Fault fault(skip % 2 ? Call::allocate : Call::reallocate, skip % 16 / 2, /*times=*/0,
                              ENOMEM);
            for (int i = 0; i < 2; ++i)
                try {
                    take();
                } catch (const std::bad_alloc &) {
                }
        }
        takenErrors();
        for (int i = 0; i < 3; ++i)
            take();
        std::erase_if(text, [](char byte) { return byte == '\r' || byte == '\n'; });
        EXPECT_TRUE(text == std::string(70'000, 'x') + "yz") << skip << " " << text.size();
    }
}

// Others are compared with a plain model in fuzz/SocketLines.cpp.
TEST_F(OSSocketReceivingTest, LinesLoseCarriageReturnsAndAlsoEndAtTheTimeOut) {
    pair_.feed("\rt\rwo\r\r\nplain\r\n\nunix\n\r\r\nm\rac\r\nthree");
    for (const char *const text : {"two", "plain", "", "unix", "", "mac"})
        EXPECT_EQ(line(), text);
    EXPECT_EQ(line(20), "three");
    pair_.peer->writeLine("four"_ns);
    pair_.peer->writeLine(nullptr);
    EXPECT_EQ(peek(8), "8 four\r\n\r\n");
}

TEST_F(OSSocketReceivingTest, LinesAreReadAsASubclassDeliversThem) {
    const Ref<OSSocket> client = OSSocket::initClientSocketWithName(pair_.server->socketName());
    auto *const socket =
        send<OSSocket *>(Shouting::cls(), "acceptSocketFromListener:"_sel, pair_.server.get());
    client->writeLine("loud"_ns);
    EXPECT_EQ(describe(socket->readLine()), "LOUD");
    client->writeLine(NSString::stringWith(std::string(100'000, 'x') + "\nlouder"));
    for (const unsigned skip : {2, 1, 1, 0}) { // and none is lost where there is no memory
        const Fault allocating(Call::allocate, 0, /*times=*/0, ENOMEM);
        const Fault growing(Call::reallocate, skip, /*times=*/0, ENOMEM);
        EXPECT_THROW(socket->readLineWithTimeout(20), std::bad_alloc) << skip;
    }
    EXPECT_EQ(describe(socket->readLineWithTimeout(20)), std::string(100'000, 'X'));
    EXPECT_EQ(describe(socket->readLineWithTimeout(20)), "LOUDER");
}

// --- Streams ---

TEST_F(OSSocketReceivingTest, StreamsReadAndWriteTheSocket) {
    OSSocketInputStream *const input = pair_.client->getInputStream();
    OSSocketOutputStream *const output = pair_.peer->getOutputStream();
    const Fault fault(Call::send, 0, 0, sys::ShortTransfer{3});
    output->writeObject("\xFFtext"_ns);
    output->writeByte('!');
    char bytes[8] = "";
    EXPECT_EQ(input->readByteWithTimeout(10, /*performPeek=*/YES), 0xFF);
    EXPECT_EQ(input->readByte(), 0xFF);
    EXPECT_EQ(input->readBuffer(bytes, 8, /*timeout=*/10), 5);
    EXPECT_STREQ(bytes, "text!");
    output->close();
    EXPECT_EQ(pair_.peer->socketHandle(), -1);
    EXPECT_EQ(input->readBuffer(bytes, 8), -1);
    input->close();
    EXPECT_EQ(pair_.client->socketHandle(), -1);
}

TEST_F(OSSocketReceivingTest, StreamsNeedOpenSockets) {
    EXPECT_THROW(OSSocketOutputStream::stream(), InvalidUseOfMethodException);
    EXPECT_REASON(OSSocketInputStream::streamWithSocket(nullptr),
                  "OSSocketInputStream initWithSocket: must have a socket that is not nil.");
    EXPECT_REASON(
        pair_.client->receiveWithBuffer(nullptr, 1, 0, NO),
        "OSSocket receiveWithBuffer:length:timeout:performPeek: must have a buffer that is not NULL.");
    pair_.client->close();
    EXPECT_ERROR(100206, "Broken pipe", pair_.peer->getOutputStream()->writeObject("text"_ns));
}
