// The time of day as the log wants it.
#ifndef QBFOUNDATION_OSADAPTOR_OSTIME_TEXT_H
#define QBFOUNDATION_OSADAPTOR_OSTIME_TEXT_H

#include <string_view>

namespace qb {

/// Returns the local time as "%Y-%m-%d %H:%M:%S", valid until the next call. Made once a second: a busy log
/// asks for it more often than for anything else.
std::string_view currentTimeText();

} // namespace qb

#endif
