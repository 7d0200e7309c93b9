#include "Server.h"

#include "../Interruption.h"
#include "../Messages.h"
#include "SiteFile.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <new>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace publish::serving {

namespace {

using namespace std::chrono_literals;

constexpr rlim_t kMostConnections = 256;

// So many descriptors, if there are enough, clients leave to publishing again.
constexpr rlim_t kForPublishing = 16;

constexpr auto kPauseInNeed = 1s; // of descriptors or memory

// Each may need a descriptor for its file too, and those of the sockets have to have room in a set. Clients
// beyond wait in the listener's queue.
std::size_t mostConnectionsAt(OSSocket *listener) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t end = std::min<rlim_t>(limit.rlim_cur, FD_SETSIZE);
    const auto used = static_cast<rlim_t>(listener->socketHandle()) + 1; // all below were taken before
    const rlim_t left = end - std::min(used, end);
    return std::clamp<rlim_t>((left - std::min(left / 4, kForPublishing)) / 2, 1, kMostConnections);
}

// The end of an answer is not kept back until its beginning has arrived.
void sendAtOnce(OSSocket *socket) {
    const int isOn = 1;
    if (socket->socketType() == OSSocket::kInternet)
        socket->setSockOptWithLevel(IPPROTO_TCP, TCP_NODELAY, &isOn, sizeof isOn);
}

// The descriptors that something is waited for at.
class Waiting {
public:
    Waiting() {
        FD_ZERO(&readable_);
        FD_ZERO(&writable_);
    }

    void add(OSSocket *socket, bool forWriting) {
        const int descriptor = socket->socketHandle();
        if (descriptor >= FD_SETSIZE) // the wait reports it
            return static_cast<void>(greatest_ = descriptor);
        FD_SET(descriptor, forWriting ? &writable_ : &readable_);
        greatest_ = std::max(greatest_, descriptor);
    }

    // Returns false after an error; an interruption is none.
    bool wait() {
        timeval time{1, 0};
        const std::int32_t count =
            OSSocket::selectWithMaxSocket(greatest_, &readable_, &writable_, nullptr, &time);
        if (count <= 0) {
            FD_ZERO(&readable_);
            FD_ZERO(&writable_);
        }
        return !hasFailed();
    }

    bool isReady(OSSocket *socket) const {
        return FD_ISSET(socket->socketHandle(), &readable_) || FD_ISSET(socket->socketHandle(), &writable_);
    }

private:
    fd_set readable_;
    fd_set writable_;
    int greatest_ = -1;
};

} // namespace

Server::Server(OSSocket *listener, NSString *root)
    : listener_(listener), directory_(root), root_(realDirectory(root)),
      mostConnections_(mostConnectionsAt(listener)) {
    listener_->setNonBlocking();
}

bool Server::run(const std::function<void()> &eachSecond) {
    if (root_.empty())
        return fail(__LINE__, kErrorDirectoryUnreadable, directory_.get());
    auto next = Clock::now() + 1s;
    while (!wasInterrupted()) {
        const NSAutoreleasePool pool;
        try {
            if (!step(Clock::now()))
                return false;
            if (Clock::now() < next)
                continue;
            next = Clock::now() + 1s;
            eachSecond();
        } catch (const std::bad_alloc &) { // no reason to stop: there may be some again
            ERRORHANDLER->clearErrorStack();
            nextAccept_ = Clock::now() + kPauseInNeed;
        }
    }
    return true;
}

bool Server::step(Clock::time_point now) {
    Waiting waiting;
    const bool accepts = canAccept(now);
    if (accepts)
        waiting.add(listener_, /*forWriting=*/false);
    for (const Connection &connection : connections_)
        waiting.add(connection.socket(), connection.isSending());
    if (!waiting.wait())
        return wasInterrupted();
    now = Clock::now();
    connections_.remove_if([&](Connection &connection) {
        return (waiting.isReady(connection.socket()) && !connection.proceed(now)) ||
               !connection.checkTime(now);
    });
    if (accepts && waiting.isReady(listener_))
        accept(now);
    return true;
}

bool Server::canAccept(Clock::time_point now) const {
    return connections_.size() < mostConnections_ && now >= nextAccept_;
}

// Takes all clients that wait.
void Server::accept(Clock::time_point now) {
    const qb::SavedErrors errors(qb::SavedErrors::kDiscard);
    while (canAccept(now)) {
        const Ref<OSSocket> socket = OSSocket::initAcceptSocketFromListener(listener_);
        if (!socket) {
            if (hasFailed())
                nextAccept_ = now + kPauseInNeed;
            return;
        }
        sendAtOnce(socket);
        const bool hasRoom = socket->socketHandle() < FD_SETSIZE; // or it is closed at once
        if (hasRoom && socket->setNonBlocking())
            connections_.emplace_back(socket, root_, now);
    }
}

// --- Listening ---

namespace {

// The five clients that the library lets wait are fewer than connections that one browser opens at once.
Ref<OSSocket> withLongQueue(Ref<OSSocket> listener) {
    if (listener)
        ::listen(listener->socketHandle(), SOMAXCONN);
    return listener;
}

// Whether another program has the socket there, also one that is busy, of another kind or not to be asked.
bool isServed(NSString *path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path->view().size() >= sizeof address.sun_path)
        return false;
    path->view().copy(address.sun_path, sizeof address.sun_path);
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int result = ::connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    const bool isLeft = result != 0 && (errno == ECONNREFUSED || errno == ENOENT);
    if (probe >= 0)
        ::close(probe);
    return !isLeft;
}

} // namespace

Ref<OSSocket> listenOnPort(std::int32_t port) {
    return withLongQueue(OSSocket::initServerSocketOnHost(nullptr, port));
}

Ref<OSSocket> listenAt(NSString *path) {
    struct stat info;
    if (::lstat(path->cString(), &info) == 0 && (!S_ISSOCK(info.st_mode) || isServed(path))) {
        fail(__LINE__, kErrorInTheWay, path);
        return nullptr;
    }
    const mode_t before = ::umask(0077);
    Ref<OSSocket> listener = OSSocket::initServerSocketWithName(path);
    ::umask(before);
    return withLongQueue(std::move(listener));
}

SocketPlace::SocketPlace(NSString *path) : path_(path) {
    ::lstat(path_->cString(), &socket_);
}

SocketPlace::~SocketPlace() {
    struct stat now {};
    if (::lstat(path_->cString(), &now) == 0 && S_ISSOCK(now.st_mode) && now.st_ino == socket_.st_ino &&
        now.st_dev == socket_.st_dev)
        ::unlink(path_->cString());
}

NSString *addressOf(OSSocket *listener) {
    if (NSString *const path = listener->socketName())
        return path;
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(listener->socketHandle(), reinterpret_cast<sockaddr *>(&address), &length);
    char host[INET_ADDRSTRLEN] = "";
    ::inet_ntop(AF_INET, &address.sin_addr, host, sizeof host);
    return NSString::stringWithFormat("http://%s:%d"_ns, host, ntohs(address.sin_port));
}

} // namespace publish::serving
