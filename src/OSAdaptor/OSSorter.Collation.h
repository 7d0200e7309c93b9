// Order by the locale, with keys that are made only once.
#ifndef QBFOUNDATION_OSADAPTOR_OSSORTER_COLLATION_H
#define QBFOUNDATION_OSADAPTOR_OSSORTER_COLLATION_H

#include <QBFoundation/Runtime/Types.h>

#include <cstdint>
#include <span>
#include <vector>

namespace qb {

/// The place of an object in an order.
struct Ranked {
    std::uint32_t rank;  // the same for those that compare equal, higher for those behind them
    std::uint32_t index; // in the list that was ordered
};

/// Returns the places of the objects as `localeCompare` orders them now, in ascending order.
std::vector<Ranked> rankedByCollation(std::span<const id> objects);

} // namespace qb

#endif
