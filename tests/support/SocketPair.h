// Two sockets that are connected with each other.
#ifndef QBFOUNDATION_TESTS_SUPPORT_SOCKETPAIR_H
#define QBFOUNDATION_TESTS_SUPPORT_SOCKETPAIR_H

#include <QBFoundation/OSAdaptor/OSSocket.h>
#include <QBFoundation/Runtime/Ref.h>

#include "support/TemporaryDirectory.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <string>
#include <string_view>
#include <utility>

/// A Unix-domain server, its client, and what the server has accepted.
class SocketPair {
public:
    SocketPair()
        : server(OSSocket::initServerSocketWithName(directory.string("socket"))),
          client(OSSocket::initClientSocketWithName(directory.string("socket"))),
          peer(OSSocket::initAcceptSocketFromListener(server)) {}

    /// Sends past the library from the peer to the client.
    void feed(std::string_view bytes) const {
        ::send(peer->socketHandle(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    const TemporaryDirectory directory;
    const Ref<OSSocket> server, client, peer;
};

/// The internet address that the socket is bound to, "127.0.0.1", and its port.
inline std::pair<std::string, int> boundTo(const OSSocket *socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(socket->socketHandle(), reinterpret_cast<sockaddr *>(&address), &length);
    return {::inet_ntoa(address.sin_addr), ntohs(address.sin_port)};
}

#endif
