// Servers and clients of both domains.
#include <QBFoundation/OSAdaptor/OSSocket.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/IdCreator.h>
#include <QBFoundation/QBNil.h>

#include "Foundation/Kept.h"
#include "OSAdaptor/OSNameService.Lookup.h"
#include "OSAdaptor/OSSocket.Support.h"
#include "System/Files.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <sys/un.h>

namespace sys = qb::sys;
using qb::sockets::kFile;

namespace {

constexpr int kBacklog = 5;
constexpr std::int32_t kGreatestPort = 65535;

// Network work for the profile channel.
class NetworkAction {
public:
    explicit NetworkAction(const char *name) : name_(name) {
        profile_beginAction(PROFILE_CHANNEL_NET_IO, "%s", name_);
    }
    ~NetworkAction() {
        try {
            profile_endAction(PROFILE_CHANNEL_NET_IO, "%s", name_);
        } catch (...) { // the line is lost
        }
    }
    NetworkAction(const NetworkAction &) = delete;
    NetworkAction &operator=(const NetworkAction &) = delete;

private:
    const char *const name_;
};

template <class Address>
const sockaddr *generic(const Address &address) {
    return reinterpret_cast<const sockaddr *>(&address);
}

// Returns the host as a name and as an error's value.
NSString *nameOf(id host) {
    const qb::Kept kept(host); // whatever it does for its text
    NSString *const name = host ? host->stringValue() : nullptr;
    return name ? name : "nil"_ns;
}

std::optional<in_addr> addressOf(id host) {
    if (!host)
        return in_addr{htonl(INADDR_LOOPBACK)};
    if (IsNil(host))
        return in_addr{htonl(INADDR_ANY)};
    const NetworkAction action("looking a host up");
    const std::vector<in_addr> addresses = qb::names::addressesOf(nameOf(host));
    if (!addresses.empty())
        return addresses.front();
    qb::raiseError(kFile, __LINE__, qb::kErrorHostMissing, nameOf(host));
    return std::nullopt;
}

// Returns none, with errno set, when the port is no port.
std::optional<sockaddr_in> internetAddress(in_addr host, std::int32_t port) {
    if (port < 0 || port > kGreatestPort)
        return errno = EINVAL, std::nullopt;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr = host;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

// Returns none with 100065 or 100066 raised, or `error` for a name that would end at a NUL.
template <class... V>
std::optional<sockaddr_un> unixAddress(NSString *name, int error, const V &...values) {
    const std::string_view path = name ? name->view() : "";
    if (path.empty())
        qb::raiseError(kFile, __LINE__, qb::kErrorSocketNameEmpty);
    else if (path.size() > OSSocket::kLongestName)
        qb::raiseError(kFile, __LINE__, qb::kErrorSocketNameTooLong);
    else if (path.find('\0') != std::string_view::npos)
        qb::raiseError(kFile, __LINE__, error, name, values..., std::strerror(EINVAL));
    else {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.data(), path.size());
        return address;
    }
    return std::nullopt;
}

// A directory stays, for a name is not worth a tree; a link goes itself, wherever it leads. What somebody
// else has removed is no failure.
bool removeFile(NSString *path) {
    struct stat status;
    if (sys::lstat(path->cString(), &status) != 0 || S_ISDIR(status.st_mode) ||
        sys::unlink(path->cString()) == 0 || errno == ENOENT)
        return true;
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotRemove, path, std::strerror(errno));
    return false;
}

} // namespace

BOOL OSSocket::setUpWithSocketType(std::int32_t type) {
    const int domain = type == kUnix ? AF_UNIX : AF_INET;
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, "initWithSocketType:"},
              "Creating new socket with domain %d, sockType %d, and protocol %d.", domain, SOCK_STREAM, 0);
    socketHandle_ = sys::socket(domain, SOCK_STREAM, 0);
    if (socketHandle_ < 0) {
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotMakeSocket, errorDescription());
        return NO;
    }
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, "initWithSocketType:"},
              "New socket handle is %d.", socketHandle_);
    type_ = type;
    return setCloseOnExec();
}

BOOL OSSocket::startListening(const char *selector, const char *traceFormat) {
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, selector}, traceFormat, socketHandle_);
    if (sys::listen(socketHandle_, kBacklog) == 0)
        return YES;
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotListen, errorDescription());
    return NO;
}

// --- Internet domain ---

BOOL OSSocket::setUpServerSocketOnHost(id host, std::int32_t port) {
    const std::optional<in_addr> address = addressOf(host);
    return address && setUpServerSocketOnAddr(address->s_addr, host, port);
}

BOOL OSSocket::setServerOptions() {
    const linger noLinger{};
    const int yes = 1, no = 0;
    return setSockOptWithLevel(SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger) &&
           setSockOptWithLevel(SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) &&
           setSockOptWithLevel(SOL_SOCKET, SO_KEEPALIVE, &no, sizeof no);
}

BOOL OSSocket::setUpServerSocketOnAddr(std::uint32_t addr, id host, std::int32_t port) {
    static constexpr const char *kSelector = "_initServerSocketOnAddr:host:port:";
    if (!setUpWithSocketType(kInternet) || !setServerOptions())
        return NO;
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, kSelector}, "Binding internet socket %d.",
              socketHandle_);
    const std::optional<sockaddr_in> address = internetAddress({addr}, port);
    if (address && sys::bind(socketHandle_, generic(*address), sizeof *address) == 0)
        return startListening(kSelector, "Listening on socket %d with backlog 5.");
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotBindToPort, nameOf(host), port, errorDescription());
    return NO;
}

BOOL OSSocket::setUpClientSocketToHost(id host, std::int32_t port) {
    static constexpr const char *kSelector = "initClientSocketToHost:onPort:";
    if (!setUpWithSocketType(kInternet))
        return NO;
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, kSelector}, "Binding client socket %d.",
              socketHandle_);
    const std::optional<sockaddr_in> own = internetAddress({htonl(INADDR_ANY)}, 0);
    if (sys::bind(socketHandle_, generic(*own), sizeof *own) != 0) {
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotBindToPort, nameOf(host), port, errorDescription());
        return NO;
    }
    const std::optional<in_addr> hostAddress = addressOf(host);
    if (!hostAddress)
        return NO;
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, kSelector}, "Connecting client socket %d.",
              socketHandle_);
    const NetworkAction action("connecting to a host");
    const std::optional<sockaddr_in> address = internetAddress(*hostAddress, port);
    if (address && sys::connect(socketHandle_, generic(*address), sizeof *address) == 0)
        return YES;
    qb::raiseError(kFile, __LINE__, qb::kErrorCannotConnect, nameOf(host), port, errorDescription());
    return NO;
}

// --- Unix domain ---

BOOL OSSocket::setUpServerSocketWithName(NSString *name) {
    static constexpr const char *kSelector = "initServerSocketWithName:";
    const std::optional<sockaddr_un> address = unixAddress(name, qb::kErrorCannotBindToName);
    if (!address || !setUpWithSocketType(kUnix) || !removeFile(name))
        return NO;
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, kSelector},
              "Binding Unix socket %d with name %s.", socketHandle_, name);
    if (sys::bind(socketHandle_, generic(*address), sizeof *address) != 0) {
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotBindToName, name, errorDescription());
        return NO;
    }
    if (!startListening(kSelector, "Listening on Unix socket %d with backlog 5.")) {
        sys::unlink(address->sun_path); // a name that refuses everybody
        return NO;
    }
    setSocketName(name);
    return YES;
}

BOOL OSSocket::setUpClientSocketWithName(NSString *name) {
    qb::trace(DEBUG_CHANNEL_SOCKET, {kFile, __LINE__, this, "initClientSocketWithName:"},
              "Initializing client socket with name '%s'", nameOf(name));
    const std::optional<sockaddr_un> address = unixAddress(name, qb::kErrorCannotConnect, /*port=*/0);
    if (!address || !setUpWithSocketType(kUnix))
        return NO;
    if (sys::connect(socketHandle_, generic(*address), sizeof *address) != 0) {
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotConnect, name, 0, errorDescription());
        return NO;
    }
    setSocketName(name);
    return YES;
}

// Where everybody may make files, and short enough for a name.
NSString *OSSocket::makeNameForSocket() {
    return NSString::stringWithRestrictedFormat("/tmp/qb-%s.socket", IdCreator::createId());
}

// --- Connections of a server ---

// A process that shares the descriptor may be faster to take what a wait has told of. So it never blocks from
// the first wait on, for all of them, and is not changed back under those that still wait.
bool OSSocket::waitsForConnections() {
    if (waiting_ == Waiting::asDescriptor && qb::sockets::hasCallback() &&
        qb::sockets::makeNonBlocking(socketHandle()))
        waiting_ = Waiting::byPolling;
    return waiting_ == Waiting::byPolling;
}

// Returns the next connection's descriptor, or -1; EAGAIN says that there is none to be waited for.
int OSSocket::acceptNext() {
    const bool waits = waitsForConnections();
    pollfd descriptor{socketHandle(), POLLIN, 0};
    for (;;) {
        const int ready = waits ? qb::sockets::waitFor({&descriptor, 1}, sys::Deadline::never()) : 1;
        if (ready < 0)
            return -1;
        if (ready == 0 && qb::sockets::hasCallback()) // which has said NO
            return errno = EAGAIN, -1;
        const int accepted = sys::accept(descriptor.fd, nullptr, nullptr);
        if (accepted < 0 && errno == EAGAIN && (descriptor.revents & POLLHUP))
            return errno = EINVAL, -1; // it listens no more, which is not told of by all kinds of sockets
        if (accepted >= 0 || errno != EAGAIN || !waits)
            return accepted;
    }
}

BOOL OSSocket::setUpAcceptSocketFromListener(OSSocket *listener) {
    if (!listener)
        throw InvalidArgumentException(
            "OSSocket initAcceptSocketFromListener: must have a listener that is not nil.");
    const Ref<OSSocket> server(listener);
    socketHandle_ = server->acceptNext();
    if (socketHandle_ < 0) {
        if (errno != EAGAIN)
            qb::raiseError(kFile, __LINE__, qb::kErrorCannotAccept, server->socketHandle(),
                           errorDescription());
        return NO;
    }
    type_ = server->socketType();
    setSocketName(server->socketName());
    return YES;
}
