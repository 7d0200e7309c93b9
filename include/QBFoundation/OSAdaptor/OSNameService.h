// Names of hosts and services.
#ifndef QBFOUNDATION_OSADAPTOR_OSNAMESERVICE_H
#define QBFOUNDATION_OSADAPTOR_OSNAMESERVICE_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdint>

class NSArray;
class NSString;

/// Asks the system for the addresses of hosts and the ports of services, and the other way round.
///
/// Addresses are those of the internet protocol's version 4, as dotted texts; services are those of TCP. A
/// look-up may wait for name servers as long as the system does.
class QB_EXPORT OSNameService : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the host's first address, "192.0.2.1"; a dotted address is its own.
    /// Returns nil after 100086 (host) when there is no such host, and for nil.
    static NSString *addressForHost(NSString *host);
    /// Returns all addresses of the host, none twice. Returns nil after 100086 (host).
    static NSArray *addressesForHost(NSString *host);
    /// Returns the name of the host with that dotted address.
    /// Returns nil after 100086 (address) when it has none, and for a text that is no dotted address.
    static NSString *hostForAddress(NSString *address);
    /// Returns the port of the service, "http"; a number from 0 to 65535 is its own.
    /// Returns -1 after 900053 (service) when there is no such service.
    static std::int32_t portForService(NSString *service);
    /// Returns the name of the service with that port. Returns nil after 900053 (port) when it has none.
    static NSString *serviceForPort(std::int32_t port);
};

#endif
