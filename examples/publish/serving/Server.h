// Serving a directory over HTTP to many clients at once.
#ifndef PUBLISH_SERVING_SERVER_H
#define PUBLISH_SERVING_SERVER_H

#include "Connection.h"

#include <cstddef>
#include <functional>
#include <list>
#include <string>
#include <sys/stat.h>

namespace publish::serving {

class Server {
public:
    /// Takes over a socket that listens, and whose connections are to be served from the directory `root`.
    Server(OSSocket *listener, NSString *root);

    /// Serves until the program is interrupted; calls `eachSecond` about that often. Returns false, with an
    /// error raised, when it can't go on.
    bool run(const std::function<void()> &eachSecond);

private:
    using Clock = Connection::Clock;

    bool step(Clock::time_point now);
    bool canAccept(Clock::time_point now) const;
    void accept(Clock::time_point now);

    Ref<OSSocket> listener_;
    Ref<NSString> directory_; // as it was given
    std::string root_;        // where it is
    std::size_t mostConnections_;
    std::list<Connection> connections_;
    Clock::time_point nextAccept_; // later, after there were no descriptors
};

/// Returns a socket that listens for connections from this machine on a port, or on one that is free for 0;
/// null after an error.
Ref<OSSocket> listenOnPort(std::int32_t port);

/// Returns a socket that listens at a path, for this user alone; null after an error. It replaces a socket
/// that a program has left there, but nothing else.
Ref<OSSocket> listenAt(NSString *path);

/// The place of a socket in the file system.
class SocketPlace {
public:
    /// Remembers the socket that stands there now.
    explicit SocketPlace(NSString *path);
    /// Removes that socket, and nothing else that has come there meanwhile.
    ~SocketPlace();
    SocketPlace(const SocketPlace &) = delete;
    SocketPlace &operator=(const SocketPlace &) = delete;

private:
    Ref<NSString> path_;
    struct stat socket_ {};
};

/// Returns the address that a socket listens at, for people.
NSString *addressOf(OSSocket *listener);

} // namespace publish::serving

#endif
