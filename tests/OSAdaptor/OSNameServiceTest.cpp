#include "support/PoolFixture.h"

#include <netdb.h>

using OSNameServiceTest = PoolFixture;

static void expectUnknown(int number, NSString *value, auto act) {
    EXPECT_ERROR(number, describe(value), EXPECT_TRUE(act()));
}

TEST_F(OSNameServiceTest, HostsAreFoundByNameAndByAddress) {
    EXPECT_EQ(describe(OSNameService::addressForHost("localhost"_ns)), "127.0.0.1");
    EXPECT_EQ(describe(OSNameService::addressForHost("255.255.255.255"_ns)), "255.255.255.255");
    EXPECT_EQ(describe(OSNameService::addressesForHost("localhost"_ns)), "(127.0.0.1)");
    EXPECT_EQ(describe(OSNameService::hostForAddress("127.0.0.1"_ns)), "localhost");
    for (NSString *host : {""_ns, "no such host"_ns, NSString::stringWith({"localhost\0x", 11})}) {
        expectUnknown(100086, host, [&] { return !OSNameService::addressForHost(host); });
        expectUnknown(100086, host, [&] { return !OSNameService::addressesForHost(host); });
        expectUnknown(100086, host, [&] { return !OSNameService::hostForAddress(host); });
    }
}

TEST_F(OSNameServiceTest, ServicesAreFoundByNameAndByPort) {
    if (const servent *service = ::getservbyname("http", "tcp")) { // a system may come without a list of them
        EXPECT_EQ(OSNameService::portForService("http"_ns),
                  ntohs(static_cast<std::uint16_t>(service->s_port)));
        EXPECT_EQ(describe(OSNameService::serviceForPort(80)), "http");
    }
    EXPECT_EQ(OSNameService::portForService("65535"_ns), 65535);
    for (NSString *service : {""_ns, "no such service"_ns, "65536"_ns, "80x"_ns, "-1"_ns, "4294967376"_ns})
        expectUnknown(900053, service, [&] { return OSNameService::portForService(service) == -1; });
    for (const int port : {-1, 65536, 65534})
        expectUnknown(900053, NSString::stringWithRestrictedFormat("%d", port),
                      [&] { return !OSNameService::serviceForPort(port); });
}
