#include "support/PoolFixture.h"

using QBCopyShopTest = PoolFixture;

namespace {

// A client's source: answers as it was told to, and notes what it was asked for.
struct Source : ClientClass<Source, QBInputStream, "CopyShopSource"> {
    explicit Source(std::vector<std::int32_t> results = {}) : answers(std::move(results)) {}

    static Operations operations() {
        return {qb::method<"readBuffer:length:timeout:">(&Source::readBufferTimeout)};
    }

    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override {
        asked.push_back(length);
        if (answers.empty())
            return -1;
        const std::int32_t result = answers.front();
        answers.erase(answers.begin());
        if (result > 0)
            std::memset(buffer, 'x', std::min(static_cast<std::uint32_t>(result), length));
        return result;
    }
    std::int32_t readBufferTimeout(void *buffer, std::uint32_t length, std::int64_t timeout) {
        timeouts.push_back(timeout);
        return _readBuffer(buffer, length);
    }

    std::vector<std::int32_t> answers;
    std::vector<std::uint32_t> asked;
    std::vector<std::int64_t> timeouts;
};

Ref<Source> source(std::vector<std::int32_t> answers) {
    return Ref<Source>::adopt(new Source(std::move(answers)));
}

// A sink that does what the test wants it to do at each write.
struct Sink : QBOutputStream {
    explicit Sink(std::function<void()> work) : onWrite(std::move(work)) {}
    void _writeBuffer(const void *, std::uint32_t) override { onWrite(); }
    const std::function<void()> onWrite;
};

} // namespace

TEST_F(QBCopyShopTest, TheSourceLivesUntilTheEnd) {
    Ref<Source> from = source({3, 3, -1});
    const auto target = Ref<Sink>::adopt(new Sink([&] { from = nullptr; })); // its only owner
    EXPECT_EQ(QBCopyShop::copyShopWithBufferSize(4)->copyFrom(from.get(), target), 6);
}

TEST_F(QBCopyShopTest, CopiesPieceByPiece) {
    QBArrayOutputStream *const target = QBArrayOutputStream::stream();
    QBInputStream *const from = QBStringInputStream::streamWithString("0123456789"_ns);
    EXPECT_EQ(QBCopyShop::copyShopWithBufferSize(4)->copyFrom(from, target), 10);
    EXPECT_EQ(writesOf(target), (Strings{"0123", "4567", "89"}));
}

TEST_F(QBCopyShopTest, ABoundIsKeptAndTheSourceStandsBehindIt) {
    QBDataInputStream *const from = QBDataInputStream::streamWithData(dataOf("0123456789"));
    QBArrayOutputStream *const target = QBArrayOutputStream::stream();
    QBCopyShop *const shop = QBCopyShop::copyShopWithBufferSize(4);
    EXPECT_EQ(shop->copyFromToLength(from, target, 5), 5u);
    EXPECT_EQ(from->readByte(), '5');
    EXPECT_EQ(shop->copyFromToLength(from, target, 20), 4u);
    EXPECT_EQ(writesOf(target), (Strings{"0123", "4", "6789"}));
    for (const std::int32_t end : {0, -1, -2}) { // a pipe answers its end with 0
        const Ref<Source> ending = source({3, 2, end, 7});
        EXPECT_EQ(shop->copyFromToLength(ending, target, 20), 5u);
    }
}

TEST_F(QBCopyShopTest, ASourceThatClaimsMoreThanWasAskedForHasGivenThatMuch) {
    const Ref<Source> from = source({1000, INT32_MAX, 9});
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    EXPECT_EQ(QBCopyShop::copyShopWithBufferSize(4)->copyFromToLength(from, target, 6), 6u);
    EXPECT_EQ(target->byteCounter(), 6u);
}

TEST_F(QBCopyShopTest, TimedCopiesReadWithTheTimeOutAndEndWithIt) {
    const Ref<Source> from = source({3, 0, 3, 3, -1});
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    QBCopyShop *const shop = QBCopyShop::copyShop();
    QBInputStream *const input = from.get();
    constexpr std::int64_t kLong = std::int64_t{1} << 32;
    EXPECT_EQ(send<std::int32_t>(shop, "copyFrom:to:timeout:"_sel, input, target, kLong), 3); // late
    EXPECT_EQ(send<std::uint32_t>(shop, "copyFrom:to:length:timeout:"_sel, input, target, 6u, -1L), 6u);
    EXPECT_EQ(from->timeouts, (std::vector<std::int64_t>{kLong, kLong, -1, -1}));
    EXPECT_EQ(from->asked, (std::vector<std::uint32_t>{65536, 65536, 6, 3}));
    EXPECT_EQ(target->byteCounter(), 9u);
    EXPECT_THROW(shop->copyFromToTimeout(QBDataInputStream::streamWithData(dataOf("x")), target, 1),
                 InvalidArgumentException);
}

TEST_F(QBCopyShopTest, ErrorsEndACopyAndStandBehindThoseOfTheCaller) {
    ERRORHANDLER->raiseErrorInFile("caller", 1, 100023, "f", "text");
    int writes = 0;
    const auto target = Ref<Sink>::adopt(new Sink([&writes] {
        if (++writes == 2)
            ERRORHANDLER->raiseErrorInFile("sink", 1, 100024, "f", "text");
    }));
    QBDataInputStream *const from = QBDataInputStream::streamWithData(dataOf("0123456789"));
    QBCopyShop *const shop = QBCopyShop::copyShopWithBufferSize(2);
    EXPECT_EQ(shop->copyFrom(from, target), 4); // what was read for the write that failed, too
    EXPECT_EQ(takenErrors(), "(100023, 100024)");
}

TEST_F(QBCopyShopTest, MissingMemoryIsTold) {
    const Ref<Source> from = source({3});
    const ErrorExpectation error(100156);
    const Fault noMemory(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
    EXPECT_EQ(QBCopyShop::copyShop()->copyFrom(from, QBDataOutputStream::stream()), 0);
    EXPECT_TRUE(from->asked.empty());
}

TEST_F(QBCopyShopTest, WhatIsInMemoryNeedsNoOther) {
    QBDataInputStream *const from = QBDataInputStream::streamWithData(dataOf("0123456789"));
    const auto target = Ref<Sink>::adopt(new Sink([] {}));
    const Fault noMemory(Call::allocate, /*skip=*/0, /*times=*/0, ENOMEM);
    EXPECT_EQ(QBCopyShop::copyShop()->copyFrom(from, target), 10);
    EXPECT_EQ(takenErrors(), "()");
}

TEST_F(QBCopyShopTest, ACopyLongerThanItsResultIsTold) {
    // Reads that leave the memory alone, so that it is never there.
    struct Vast : QBInputStream {
        std::int32_t _readBuffer(void *, std::uint32_t length) override {
            return left-- > 0 ? static_cast<std::int32_t>(length) : -1;
        }
        int left = 8;
    };
    const Ref<Vast> from = Ref<Vast>::adopt(new Vast);
    const auto to = Ref<Sink>::adopt(new Sink([] {}));
    QBCopyShop *const shop = QBCopyShop::copyShopWithBufferSize(1U << 28);
    EXPECT_ERROR(900030, "2147483648", EXPECT_EQ(shop->copyFrom(from, to), INT32_MAX));
    from->left = 8;
    EXPECT_EQ(shop->copyFromToLength(from, to, UINT32_MAX), 0x80000000u);
}
