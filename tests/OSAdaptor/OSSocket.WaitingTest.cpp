#include "support/PoolFixture.h"
#include "support/SocketPair.h"

#include <fcntl.h>

constexpr int kPatience = 3;
static int questions = 0;
static BOOL goesOn = NO;

struct OSSocketWaitingTest : PoolFixture {
    OSSocketWaitingTest() { questions = 0; }
    ~OSSocketWaitingTest() override { OSSocket::registerContinueBlockingOperationCallback(nullptr); }

    // The answer of the callback, which is NO after so many questions in any case.
    static void registerAnswer(BOOL given) {
        goesOn = given;
        OSSocket::registerContinueBlockingOperationCallback(
            [] { return ++questions > kPatience ? NO : goesOn; });
    }

    // Which of the pair are ready: "server client", "none", "nil".
    std::string ready(std::int32_t activation, std::int64_t milliseconds = 0) const {
        const char *const names[] = {"server ", "client ", "peer "};
        NSArray *const all =
            NSArray::arrayWithObjects(pair_.server.get(), pair_.client.get(), pair_.peer.get());
        NSArray *const found = OSSocket::selectSockets(all, activation, 0, milliseconds);
        if (!found)
            return "nil";
        std::string text;
        for (id socket : *found)
            text += names[all->indexOfObjectIdenticalTo(socket)];
        return text;
    }

    const SocketPair pair_;
};

constexpr int kReadable = OSSocket::kReadable, kWritable = OSSocket::kWritable,
              kExceptional = OSSocket::kExceptional;

TEST_F(OSSocketWaitingTest, SelectionTellsWhichSocketsAreReady) {
    EXPECT_EQ(ready(kReadable, 10), "");
    EXPECT_EQ(ready(kWritable), "client peer ");
    EXPECT_EQ(ready(kExceptional), "");
    pair_.feed("ab");
    EXPECT_EQ(ready(kReadable, -1), "client ");
    char byte;
    pair_.client->bufferedReceiveWithBuffer(&byte, 1, 0, NO);
    EXPECT_EQ(ready(kReadable, -1), "client "); // what is buffered can be read
    pair_.client->bufferedReceiveWithBuffer(&byte, 1, 0, NO);
    const Ref<OSSocket> other = OSSocket::initClientSocketWithName(pair_.server->socketName());
    EXPECT_EQ(ready(kReadable), "server ");
    pair_.client->shutdown();
    EXPECT_EQ(ready(kReadable), "server client peer ");
}

TEST_F(OSSocketWaitingTest, SelectionOfWhatCannotBeSelected) {
    const Fault fault(Call::poll, 0, 1, ENOMEM);
    EXPECT_ERROR(100207, "-1", EXPECT_EQ(ready(kWritable, -1), "nil"));
    pair_.client->close();
    EXPECT_ERROR(100207, "-1", EXPECT_EQ(ready(kReadable, -1), "nil"));
    EXPECT_REASON(
        OSSocket::selectSockets(NSArray::arrayWithObject("text"_ns), kReadable, 0, 0),
        "OSSocket selectSockets:activation:timeoutSecs:timeoutMilliSecs: must have an array of sockets.");
    EXPECT_REASON(ready(/*activation=*/8),
                  "OSSocket selectSockets:activation:timeoutSecs:timeoutMilliSecs: must "
                  "have an activation that is not 0.");
}

TEST_F(OSSocketWaitingTest, DescriptorsMayBeLargerThanSetsHold) {
    rlimit limit;
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit raised{std::max<rlim_t>(limit.rlim_cur, FD_SETSIZE + 100), limit.rlim_max};
    if (::setrlimit(RLIMIT_NOFILE, &raised) != 0)
        GTEST_SKIP() << "no more descriptors are allowed";
    std::vector<int> used;
    while (used.empty() || used.back() < FD_SETSIZE)
        used.push_back(::dup(STDERR_FILENO));
    {
        const SocketPair pair;
        EXPECT_GT(pair.client->socketHandle(), FD_SETSIZE);
        NSArray *const sockets = NSArray::arrayWithObject(pair.client.get());
        EXPECT_EQ(OSSocket::selectSockets(sockets, kReadable, 0, 10)->count(), 0u);
        pair.feed("a");
        EXPECT_EQ(OSSocket::selectSockets(sockets, kReadable, 10, 0)->count(), 1u);
    }
    for (const int descriptor : used)
        ::close(descriptor);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

TEST_F(OSSocketWaitingTest, SetsOfDescriptorsAreSelected) {
    const int handle = pair_.client->socketHandle();
    fd_set set;
    struct {
        timeval left;
        std::int64_t behind;
    } time;
    const auto select = [&] {
        FD_ZERO(&set);
        FD_SET(handle, &set);
        time = {{0, 1000}, -1};
        return OSSocket::selectWithMaxSocket(handle, &set, nullptr, nullptr, &time.left);
    };
    EXPECT_EQ(select(), 0);
    EXPECT_EQ(time.left.tv_usec, 0);
    EXPECT_EQ(time.behind, -1); // also where times are smaller than the library's
    pair_.feed("a");
    EXPECT_EQ(select(), 1);
    EXPECT_NE(time.left.tv_usec, 0);
    EXPECT_TRUE(FD_ISSET(handle, &set));
    EXPECT_ERROR(100207, std::to_string(FD_SETSIZE),
                 EXPECT_EQ(OSSocket::selectWithMaxSocket(FD_SETSIZE, &set, nullptr, nullptr, nullptr), -1));
    const Fault fault(Call::select, 0, 1, EINTR);
    EXPECT_EQ(select(), -1);
}

TEST_F(OSSocketWaitingTest, WaitingGoesOnAsLongAsTheCallbackSays) {
    char byte;
    const auto receive = [&](std::int64_t timeout) {
        return pair_.client->receiveWithBuffer(&byte, 1, timeout, NO);
    };
    registerAnswer(NO);
    EXPECT_EQ(receive(0), -1); // would wait for ever
    EXPECT_EQ(ready(kReadable, -1), "");
    EXPECT_EQ(questions, 2);
    const auto interrupted = [&](unsigned times, auto act) {
        const Fault fault(Call::poll, 0, times, EINTR);
        questions = 0;
        return act();
    };
    EXPECT_EQ(interrupted(1, [&] { return OSSocket::acceptSocketFromListener(pair_.server); }), nullptr);
    EXPECT_EQ(questions, 1);
    registerAnswer(YES);
    EXPECT_EQ(interrupted(9, [&] { return receive(0); }), -1);
    EXPECT_EQ(questions, kPatience + 1);
    pair_.feed("a");
    EXPECT_EQ(interrupted(2, [&] { return receive(0); }), 1);
    EXPECT_EQ(questions, 2);
    pair_.client->setNonBlocking();
    EXPECT_EQ(interrupted(1, [&] { return receive(0); }), 0);
    EXPECT_EQ(questions, 0);
}

TEST_F(OSSocketWaitingTest, OtherProcessesMayBeFasterThanAWait) {
    char bytes[2];
    const auto receive = [&] { return pair_.client->receiveWithBuffer(bytes, 2, /*timeout=*/1000, NO); };
    pair_.feed("a");
    const Fault nothing(Call::recv, 0, 1, EAGAIN);
    EXPECT_EQ(receive(), 1);
    const int two = 2; // for which the system would block
    pair_.client->setSockOptWithLevel(SOL_SOCKET, SO_RCVLOWAT, &two, sizeof two);
    pair_.feed("b");
    EXPECT_EQ(receive(), 1);
    const SocketPair shared;
    ::fcntl(shared.server->socketHandle(), F_SETFL, O_RDWR | O_NONBLOCK); // by one that waits already
    registerAnswer(NO);
    EXPECT_EQ(OSSocket::acceptSocketFromListener(shared.server), nullptr);
    EXPECT_EQ(questions, 1);
    const Ref<OSSocket> client = OSSocket::initClientSocketWithName(pair_.server->socketName());
    const Fault fault(Call::accept, 0, 1, EAGAIN);
    EXPECT_TRUE(OSSocket::acceptSocketFromListener(pair_.server));
    EXPECT_TRUE(::fcntl(pair_.server->socketHandle(), F_GETFL) & O_NONBLOCK);
}
