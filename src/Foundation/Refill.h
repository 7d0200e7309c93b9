// New contents for a hash table.
#ifndef QBFOUNDATION_FOUNDATION_REFILL_H
#define QBFOUNDATION_FOUNDATION_REFILL_H

#include <QBFoundation/Foundation/HashTable.h>

#include <cstdint>

namespace qb {

/// Empties `table` and lets `fill` fill it. What it held is given back last, because a destructor may come
/// back to the table; when `fill` throws, it stands in the table again. Both exchanges count as mutations.
template <class Fill>
void refill(HashTable &table, std::uint32_t &mutations, Fill &&fill) {
    HashTable before;
    before.swap(table);
    ++mutations;
    try {
        fill();
    } catch (...) {
        before.swap(table);
        ++mutations;
        throw;
    }
}

} // namespace qb

#endif
