// The state of sockets for logs.
#include <QBFoundation/OSAdaptor/OSSocket.h>

#include <QBFoundation/OSAdaptor/OSLogger.h>

#include "System/Sockets.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <sys/un.h>

namespace {

template <class... V>
void log(NSString *format, const V &...values) {
    OSLogger::loggerForCategory("error"_ns)->logWithLevelFormat(/*level=*/0, format, values...);
}

// Room for an address of either domain.
union Address {
    sockaddr generic;
    sockaddr_in internet;
    sockaddr_un local;
};

NSString *textOf(const Address &address, socklen_t length) {
    if (address.generic.sa_family == AF_INET) {
        char host[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &address.internet.sin_addr, host, sizeof host);
        return NSString::stringWithRestrictedFormat("address=%s:%d", host, ntohs(address.internet.sin_port));
    }
    // A name of full length has no NUL behind it, and a client's socket has no name.
    const std::size_t room =
        std::min<std::size_t>(length, sizeof address.local) - offsetof(sockaddr_un, sun_path);
    const std::string_view path(address.local.sun_path, ::strnlen(address.local.sun_path, room));
    return NSString::stringWithRestrictedFormat("address=%s", NSString::stringWith(path));
}

NSString *addressTextOf(std::int32_t socket) {
    Address address{};
    socklen_t length = sizeof address;
    if (qb::sys::getsockname(socket, &address.generic, &length) == 0)
        return textOf(address, length);
    log("Could not get socket address: %s"_ns, OSObject::errorDescription());
    return "address unknown"_ns;
}

std::int32_t optionOf(std::int32_t socket, int option) {
    int value = -1;
    socklen_t length = sizeof value;
    if (qb::sys::getsockopt(socket, SOL_SOCKET, option, &value, &length) != 0)
        log("Could not get socket option %d: %s"_ns, option, OSObject::errorDescription());
    return value;
}

} // namespace

void OSSocket::writeStateToErrorLog() {
    NSString *const address = addressTextOf(socketHandle_);
    const std::int32_t acceptsConnections = optionOf(socketHandle_, SO_ACCEPTCONN);
    const std::int32_t error = optionOf(socketHandle_, SO_ERROR);
    log("socket information: handle=%d; type=%d; wants to be closed=%d; %s; accepts connections=%d; socket "
        "error=%d"_ns,
        socketHandle_, type_, wantToBeClosed_, address, acceptsConnections, error);
}
