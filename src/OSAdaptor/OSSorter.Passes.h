// The passes of a Shell sort.
#ifndef QBFOUNDATION_OSADAPTOR_OSSORTER_PASSES_H
#define QBFOUNDATION_OSADAPTOR_OSSORTER_PASSES_H

#include "OSAdaptor/OSSorter.Collation.h"

#include <cstddef>
#include <vector>

namespace qb {

/// Returns the gap of the first pass over so many items. That of the next is a third of it; 1 is the last.
inline std::size_t firstGap(std::size_t count) {
    std::size_t gap = 1;
    while (3 * gap + 1 <= count)
        gap = 3 * gap + 1;
    return gap;
}

/// Sorts by passes, which ask `goesBefore(later, earlier)` of items a gap apart.
template <class Item, class GoesBefore>
void shellSort(std::vector<Item> &items, GoesBefore goesBefore) {
    for (std::size_t gap = firstGap(items.size()); gap > 0; gap /= 3) {
        for (std::size_t i = gap; i < items.size(); ++i) {
            const Item item = items[i];
            std::size_t place = i;
            for (; place >= gap && goesBefore(item, items[place - gap]); place -= gap)
                items[place] = items[place - gap];
            items[place] = item;
        }
    }
}

/// Brings those of one rank, in an ascending list, into the order in which `shellSort` by rank would leave
/// them, had all been in the places that their indexes tell.
void orderTiesByPasses(std::vector<Ranked> &ranked);

} // namespace qb

#endif
