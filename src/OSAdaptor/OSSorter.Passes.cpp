#include "OSAdaptor/OSSorter.Passes.h"

#include <algorithm>
#include <numeric>

namespace {

// An item on its way through the passes. The order is that of the places.
struct Placed {
    std::uint32_t place;
    std::uint32_t index;

    bool operator<(const Placed &other) const { return place < other.place; }
};

struct Tie {
    std::size_t begin;
    std::size_t end;
};

std::vector<Tie> tiesIn(const std::vector<qb::Ranked> &ranked) {
    std::vector<Tie> ties;
    for (std::size_t begin = 0, end = 0; begin < ranked.size(); begin = end) {
        while (end < ranked.size() && ranked[end].rank == ranked[begin].rank)
            ++end;
        if (end - begin > 1)
            ties.push_back({begin, end});
    }
    return ties;
}

// A pass sorts each chain of items that are a gap apart, without changing the order of equal ones. So going
// over all items in ascending order, equal ones in the order of their places, each takes the next place of
// its chain.
void makePass(std::vector<Placed> &items, const std::vector<Tie> &ties, std::size_t gap) {
    for (const Tie &tie : ties)
        std::sort(items.data() + tie.begin, items.data() + tie.end);
    std::vector<std::uint32_t> nextPlaces(gap);
    std::iota(nextPlaces.begin(), nextPlaces.end(), 0U);
    const auto step = static_cast<std::uint32_t>(gap);
    for (Placed &item : items) {
        std::uint32_t &next = nextPlaces[item.place % step];
        item.place = next;
        next += step;
    }
}

} // namespace

void qb::orderTiesByPasses(std::vector<Ranked> &ranked) {
    const std::vector<Tie> ties = tiesIn(ranked);
    std::vector<Placed> items(ranked.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        items[i] = {ranked[i].index, ranked[i].index};
    for (std::size_t gap = firstGap(items.size()); gap > 0; gap /= 3)
        makePass(items, ties, gap);
    for (const Placed &item : items)
        ranked[item.place].index = item.index;
}
