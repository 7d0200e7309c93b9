#include "support/ServicesFixture.h"
#include "support/SocketPair.h"

using OSSocketTest = ServicesFixture;

TEST_F(OSSocketTest, UnixServersReplaceFilesAndTakeClients) {
    std::filesystem::create_symlink("nowhere", directory_ / "socket");
    NSString *const name = path("socket");
    ASSERT_TRUE(OSSocket::serverSocketWithName(name));
    std::filesystem::remove(directory_ / "socket");
    directory_.write("socket", "an old file");
    OSSocket *const server = OSSocket::serverSocketWithName(name);
    ASSERT_TRUE(server);
    OSSocket *const client = OSSocket::clientSocketWithName(name);
    OSSocket *const accepted = OSSocket::acceptSocketFromListener(server);
    for (const OSSocket *socket : {server, client, accepted}) {
        ASSERT_TRUE(socket);
        EXPECT_EQ(socket->socketType(), OSSocket::kUnix);
        EXPECT_EQ(describe(socket->socketName()), name->cString());
    }
    EXPECT_TRUE(client->isEqual(client) && !client->isEqual(accepted));
    client->setSocketName("other"_ns);
    EXPECT_EQ(describe(client->socketName()), "other");
    server->setNonBlocking();
    EXPECT_EQ(OSSocket::acceptSocketFromListener(server), nullptr); // nobody is waiting
}

TEST_F(OSSocketTest, NamesOfUnixSocketsAreChecked) {
    const std::string longest(107 - directory_.path().size() - 1, 'x');
    EXPECT_TRUE(OSSocket::serverSocketWithName(path(longest)));
    EXPECT_TRUE(OSSocket::clientSocketWithName(path(longest)));
    NSString *const tooLong = path(longest + "x");
    directory_.write("tree/file", "");
    NSString *const tree = path("tree");
    const auto makeServer = [](NSString *name) { return [=] { OSSocket::serverSocketWithName(name); }; };
    const auto makeClient = [](NSString *name) { return [=] { OSSocket::clientSocketWithName(name); }; };
    expectError(100065, "", makeServer(nullptr));
    expectError(100066, "", makeClient(tooLong));
    expectError(100090, describe("a\0b"_ns) + " 0 Invalid argument", makeClient("a\0b"_ns));
    expectError(100064, describe(tree) + " Address already in use", makeServer(tree));
    for (const auto &[error, number, text] : {std::tuple(EACCES, 100203, "Permission denied"),
                                              std::tuple(ENOENT, 100064, "Address already in use")}) {
        const Fault fault(Call::unlink, /*skip=*/0, /*times=*/1, error);
        expectError(number, describe(path(longest)) + " " + text, makeServer(path(longest)));
    }
    EXPECT_TRUE(directory_.has("tree/file")); // a directory isn't replaced
    EXPECT_NE(describe(OSSocket::makeNameForSocket()), describe(OSSocket::makeNameForSocket()));
}

TEST_F(OSSocketTest, InternetServersTakeClientsOfTheirHost) {
    const std::pair<id, const char *> hosts[] = {{nullptr, "127.0.0.1"}, {QBNil::value(), "0.0.0.0"}};
    for (const auto &[host, address] : hosts) {
        OSSocket *const server = OSSocket::serverSocketOnHost(host, 0);
        ASSERT_TRUE(server);
        EXPECT_EQ(boundTo(server).first, address);
        int isReused = -1;
        socklen_t length = sizeof isReused;
        ::getsockopt(server->socketHandle(), SOL_SOCKET, SO_REUSEADDR, &isReused, &length);
        EXPECT_EQ(isReused, 1);
        const Fault signal(Call::connect, /*skip=*/0, /*times=*/1, EINTR); // the kernel goes on connecting
        OSSocket *const client = OSSocket::clientSocketToHost(host, boundTo(server).second);
        ASSERT_TRUE(client);
        OSSocket *const accepted = OSSocket::acceptSocketFromListener(server);
        EXPECT_EQ(accepted->socketType(), OSSocket::kInternet);
        EXPECT_EQ(accepted->sendBuffer("ab", 2), 2);
        EXPECT_EQ(describe(client->readBytes(2)), "<6162>");
        EXPECT_ERROR(100087, "nil " + std::to_string(boundTo(server).second) + " Address already in use",
                     OSSocket::serverSocketOnHost(nullptr, boundTo(server).second));
    }
    EXPECT_ERROR(100087, "nil 65536 Invalid argument", OSSocket::serverSocketOnHost(nullptr, 65536));
    EXPECT_ERROR(100087, "192.0.2.1 0 Cannot assign requested address",
                 OSSocket::serverSocketOnHost("192.0.2.1"_ns, 0)); // an address of nobody's
    EXPECT_ERROR(100090, "127.1 1 Connection refused", OSSocket::clientSocketToHost("127.1"_ns, 1));
    EXPECT_ERROR(100090, "/no/socket 0 No such file or directory",
                 OSSocket::clientSocketWithName("/no/socket"_ns));
    const Fault noPort(Call::bind, /*skip=*/0, /*times=*/1, EADDRINUSE);
    EXPECT_ERROR(100087, "127.1 1 Address already in use", OSSocket::clientSocketToHost("127.1"_ns, 1));
    EXPECT_ERROR(100086, "no such host", OSSocket::clientSocketToHost("no such host"_ns, 1));
}

TEST_F(OSSocketTest, FailedCallsRaiseTheirNumbersAndLeaveNoDescriptor) {
    const std::tuple<Call, int, int, std::string> rows[] = {
        {Call::socket, EMFILE, 100061, "Too many open files"},
        {Call::setsockopt, ENOMEM, 900050, std::to_string(SO_LINGER) + " Cannot allocate memory"},
        {Call::listen, ENOBUFS, 100073, "No buffer space available"},
    };
    const std::ptrdiff_t before = openDescriptors();
    for (const auto &[call, error, number, values] : rows) {
        const NSAutoreleasePool pool;
        const Fault fault(call, /*skip=*/0, /*times=*/1, error);
        EXPECT_ERROR(number, values, EXPECT_FALSE(OSSocket::serverSocketOnHost(nullptr, 0)));
    }
    NSString *const name = path("socket");
    const Fault fault(Call::listen, /*skip=*/0, /*times=*/1, ENOBUFS);
    EXPECT_ERROR(100073, "No buffer space available", OSSocket::initServerSocketWithName(name));
    EXPECT_FALSE(directory_.has("socket"));
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(OSSocketTest, ClosedSocketsAnswerWithTheirNumbers) {
    const SocketPair pair;
    pair.feed("ab\n");
    pair.client->readBytes(1); // the rest is in the buffer
    pair.client->close();
    pair.client->shutdown();
    char byte = 0;
    const std::tuple<int, const char *, std::function<void()>> rows[] = {
        {100206, "Bad file descriptor", [&] { pair.client->writeLine("a"_ns); }},
        {100207, "-1", [&] { pair.client->receiveWithBuffer(&byte, 1, 10, NO); }},
        {100207, "-1", [&] { pair.client->readLine(); }},
        {900051, "-1 Bad file descriptor", [&] { pair.client->setNonBlocking(); }},
        {900051, "-1 Bad file descriptor", [&] { pair.client->setCloseOnExec(); }},
        {900052, "-1 Bad file descriptor", [&] { OSSocket::acceptSocketFromListener(pair.client); }},
        {100206, "Broken pipe", [&] { pair.peer->sendBuffer("a", 1); }}, // and no signal
    };
    for (const auto &[number, values, act] : rows)
        expectError(number, values, act);
}

TEST_F(OSSocketTest, FullPeersBlockSendersThatMayNotWait) {
    const SocketPair pair;
    ASSERT_TRUE(pair.client->setNonBlocking());
    const std::string block(1 << 20, 'x');
    const int sent = pair.client->sendBuffer(block.data(), 1 << 20);
    EXPECT_TRUE(sent > 0 && sent < 1 << 20) << sent;
    ErrorExpectation error(100238);
    while (pair.client->sendBuffer(block.data(), 1 << 20) > 0) {
    }
}

TEST_F(OSSocketTest, StateIsWrittenToTheErrorLog) {
    const SocketPair pair;
    pair.server->setWantToBeClosed(YES);
    EXPECT_TRUE(pair.server->wantToBeClosed() && !pair.client->wantToBeClosed());
    CapturedOutput output;
    pair.server->writeStateToErrorLog();
    pair.server->close();
    pair.server->writeStateToErrorLog();
    const std::string lines = replaced(logLines(output.end()), "handle=[0-9]+", "handle=N");
    const std::string closed = ": Bad file descriptor\n", start = "[T] (P) [] ";
    const std::string option = start + "Could not get socket option ", state = start + "socket information: ";
    EXPECT_EQ(lines, state + "handle=N; type=0; wants to be closed=1; address=" +
                         describe(pair.server->socketName()) + "; accepts connections=1; socket error=0\n" +
                         start + "Could not get socket address" + closed + option +
                         std::to_string(SO_ACCEPTCONN) + closed + option + std::to_string(SO_ERROR) + closed +
                         state +
                         "handle=-1; type=0; wants to be closed=1; address unknown; accepts connections=-1; "
                         "socket error=-1\n");
}

TEST_F(OSSocketTest, StepsAreTracedAndWorkOfTheNetworkIsMeasured) {
    activateChannel("socket");
    OSDebugPrinter::globalDebugPrinter()->setProfileChannelsActive(NSArray::arrayWithObject("netio"_ns));
    CapturedOutput output;
    const Ref<OSSocket> server = OSSocket::initServerSocketOnHost(nullptr, 0);
    const Ref<OSSocket> client = OSSocket::initClientSocketToHost(nullptr, boundTo(server).second);
    Ref<OSSocket> named = OSSocket::initServerSocketWithName(path("named"));
    OSSocket::clientSocketWithName(path("named"))->sendBuffer("ab", 2);
    named = nullptr;
    debug = 9;
    char byte;
    client->bufferedReceiveWithBuffer(&byte, 1, /*timeout=*/5, NO);
    const std::string text = output.end();
    const std::string namedHere = describe(path("named"));
    for (const std::string &line : std::initializer_list<std::string>{
             "initWithSocketType: -> Creating new socket with domain 2, sockType 1, and protocol 0.\n",
             "New socket handle is ", "_initServerSocketOnAddr:host:port: -> Binding internet socket ",
             " -> Listening on socket ", " with backlog 5.\n", "Binding client socket ",
             "initClientSocketToHost:onPort: -> Connecting client socket ",
             "[start:netio] connecting to a host", "[end  :netio] connecting to a host",
             "Creating new socket with domain 1, sockType 1, and protocol 0.",
             " with name " + namedHere + ".\n", "Listening on Unix socket ",
             "Initializing client socket with name '" + namedHere + "'\n", "sent bytes: 2 of 2\n",
             "dealloc -> Deallocing socket ",
             "receiveWithBuffer:length:timeout:performPeek: -> waiting max 5 milliseconds for input\n",
             "performPeek: -> bytes received into the buffer: -1 of 65536\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "is missing in " << text;
}
