// What a call does when a signal interrupts it.
#ifndef QBFOUNDATION_SYSTEM_ONSIGNAL_H
#define QBFOUNDATION_SYSTEM_ONSIGNAL_H

namespace qb::sys {

/// `repeat` hides an interruption from the caller; `report` answers -1 with EINTR, for operations that end on
/// it.
enum class OnSignal { repeat, report };

} // namespace qb::sys

#endif
