#include <QBFoundation/OSAdaptor/OSNameService.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSNameService.Lookup.h"
#include "System/Sockets.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <charconv>
#include <memory>
#include <string_view>

namespace sys = qb::sys;

namespace {

constexpr const char *kFile = "src/OSAdaptor/OSNameService";

struct FreeList {
    void operator()(addrinfo *list) const { sys::freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, FreeList>;

// Returns null when there is nothing of those names; one of them may be null.
AddressList lookUp(const char *host, const char *service) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *list = nullptr;
    sys::getaddrinfo(host, service, &hints, &list);
    return AddressList(list);
}

// Returns the text as a name for the system; null when it has none for it.
const char *systemName(NSString *text) {
    return text && text->view().find('\0') == std::string_view::npos ? text->cString() : nullptr;
}

// Returns the text as an error's value.
NSString *shown(NSString *text) {
    return text ? text : "nil"_ns;
}

const sockaddr_in &internetAddress(const addrinfo &entry) {
    return *reinterpret_cast<const sockaddr_in *>(entry.ai_addr);
}

NSString *dotted(in_addr address) {
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address, text, sizeof text);
    return NSString::stringWithCString(text);
}

} // namespace

std::vector<in_addr> qb::names::addressesOf(NSString *host) {
    const char *const name = systemName(host);
    const in_addr_t numeric = name ? inet_addr(name) : INADDR_NONE;
    if (numeric != INADDR_NONE)
        return {in_addr{numeric}};
    std::vector<in_addr> addresses;
    const AddressList list = name ? lookUp(name, nullptr) : nullptr;
    for (const addrinfo *entry = list.get(); entry; entry = entry->ai_next) {
        const in_addr address = internetAddress(*entry).sin_addr;
        const auto isIt = [&](in_addr other) { return other.s_addr == address.s_addr; };
        if (std::none_of(addresses.begin(), addresses.end(), isIt))
            addresses.push_back(address);
    }
    return addresses;
}

Class *OSNameService::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"addressForHost:">(&OSNameService::addressForHost),
        qb::classMethod<"addressesForHost:">(&OSNameService::addressesForHost),
        qb::classMethod<"hostForAddress:">(&OSNameService::hostForAddress),
        qb::classMethod<"portForService:">(&OSNameService::portForService),
        qb::classMethod<"serviceForPort:">(&OSNameService::serviceForPort),
    };
    static Class *const self =
        new Class("OSNameService", OSObject::cls(), methods, qb::construct<OSNameService>);
    return self;
}

// --- Hosts ---

NSString *OSNameService::addressForHost(NSString *host) {
    NSArray *const addresses = addressesForHost(host);
    return addresses ? qb::castOrNil<NSString>(addresses->objectAtIndex(0)) : nullptr;
}

NSArray *OSNameService::addressesForHost(NSString *host) {
    const std::vector<in_addr> addresses = qb::names::addressesOf(host);
    if (addresses.empty()) {
        qb::raiseError(kFile, __LINE__, qb::kErrorHostMissing, shown(host));
        return nullptr;
    }
    NSMutableArray *const texts = NSMutableArray::array();
    for (const in_addr address : addresses)
        texts->addObject(dotted(address));
    return texts;
}

NSString *OSNameService::hostForAddress(NSString *address) {
    sockaddr_in socketAddress{};
    socketAddress.sin_family = AF_INET;
    const char *const text = systemName(address);
    char host[NI_MAXHOST];
    if (text && inet_pton(AF_INET, text, &socketAddress.sin_addr) == 1 &&
        sys::getnameinfo(reinterpret_cast<const sockaddr *>(&socketAddress), sizeof socketAddress, host,
                         sizeof host, nullptr, 0, NI_NAMEREQD) == 0)
        return NSString::stringWithCString(host);
    qb::raiseError(kFile, __LINE__, qb::kErrorHostMissing, shown(address));
    return nullptr;
}

// --- Services ---

namespace {

// Returns the number that is the whole text; -1 when it is none. The system would cut one of more than 16
// bits.
std::int32_t portIn(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() ? port : -1;
}

// Names have a letter at least, numbers have none.
bool isName(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; });
}

} // namespace

std::int32_t OSNameService::portForService(NSString *service) {
    const char *const name = systemName(service);
    std::int32_t port = -1;
    if (name && !isName(name))
        port = portIn(name);
    else if (const AddressList list = name ? lookUp(nullptr, name) : nullptr)
        port = ntohs(internetAddress(*list).sin_port);
    if (port < 0)
        qb::raiseError(kFile, __LINE__, qb::kErrorServiceMissing, shown(service));
    return port;
}

NSString *OSNameService::serviceForPort(std::int32_t port) {
    NSString *const number = NSString::stringWithRestrictedFormat("%d", port);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    char service[NI_MAXSERV];
    // The system answers the number itself for a port without a name.
    if (portIn(number->view()) >= 0 &&
        sys::getnameinfo(reinterpret_cast<const sockaddr *>(&address), sizeof address, nullptr, 0, service,
                         sizeof service, 0) == 0 &&
        number->view() != service)
        return NSString::stringWithCString(service);
    qb::raiseError(kFile, __LINE__, qb::kErrorServiceMissing, number);
    return nullptr;
}
