// Look-ups without errors raised.
#ifndef QBFOUNDATION_OSADAPTOR_OSNAMESERVICE_LOOKUP_H
#define QBFOUNDATION_OSADAPTOR_OSNAMESERVICE_LOOKUP_H

#include <netinet/in.h>
#include <vector>

class NSString;

namespace qb::names {

/// Returns the addresses of a host, none twice; none when there is no such host, and for nil. A dotted
/// address is not looked up.
std::vector<in_addr> addressesOf(NSString *host);

} // namespace qb::names

#endif
