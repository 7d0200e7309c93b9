#include "support/Faults.h"
#include "support/PoolFixture.h"

#include <netdb.h>

using OSNameServiceTest = PoolFixture;

static void expectUnknown(int number, NSString *value, auto act) {
    expectError(number, describe(value), [&] { EXPECT_TRUE(act()); });
}

TEST_F(OSNameServiceTest, HostsAreFoundByNameAndByAddress) {
    EXPECT_EQ(describe(OSNameService::addressForHost("localhost"_ns)), "127.0.0.1");
    EXPECT_EQ(describe(OSNameService::addressForHost("192.0.2.1"_ns)), "192.0.2.1");
    EXPECT_EQ(describe(OSNameService::addressForHost("255.255.255.255"_ns)), "255.255.255.255");
    EXPECT_EQ(describe(OSNameService::addressesForHost("localhost"_ns)), "(127.0.0.1)");
    EXPECT_EQ(describe(OSNameService::hostForAddress("127.0.0.1"_ns)), "localhost");
    for (NSString *host : {static_cast<NSString *>(nullptr), ""_ns, "no such host"_ns,
                           NSString::stringWith({"localhost\0x", 11})}) {
        expectUnknown(100086, host, [&] { return !OSNameService::addressForHost(host); });
        expectUnknown(100086, host, [&] { return !OSNameService::addressesForHost(host); });
        expectUnknown(100086, host, [&] { return !OSNameService::hostForAddress(host); });
    }
    {
        const Fault fault(Call::getaddrinfo, 0, 1, ENOMEM);
        expectUnknown(100086, "localhost"_ns, [] { return !OSNameService::addressForHost("localhost"_ns); });
    }
    const Fault fault(Call::getnameinfo, 0, 1, ENOMEM);
    expectUnknown(100086, "127.0.0.1"_ns, [] { return !OSNameService::hostForAddress("127.0.0.1"_ns); });
}

TEST_F(OSNameServiceTest, ServicesAreFoundByNameAndByPort) {
    if (const servent *service = ::getservbyname("http", "tcp")) { // a system may come without a list of them
        EXPECT_EQ(OSNameService::portForService("http"_ns),
                  ntohs(static_cast<std::uint16_t>(service->s_port)));
        EXPECT_EQ(describe(OSNameService::serviceForPort(80)), "http");
    }
    EXPECT_EQ(OSNameService::portForService("8080"_ns), 8080);
    EXPECT_EQ(OSNameService::portForService("65535"_ns), 65535);
    for (NSString *service : {static_cast<NSString *>(nullptr), ""_ns, "no such service"_ns, "65536"_ns,
                              "80x"_ns, "-1"_ns, "4294967376"_ns})
        expectUnknown(900053, service, [&] { return OSNameService::portForService(service) == -1; });
    for (const int port : {-1, 65536, 65534})
        expectUnknown(900053, NSString::stringWithRestrictedFormat("%d", port),
                      [&] { return !OSNameService::serviceForPort(port); });
}
