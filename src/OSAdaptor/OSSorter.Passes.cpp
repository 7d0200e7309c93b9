#include "OSAdaptor/OSSorter.Passes.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

namespace {

// An item on its way through the passes. The order is that of the places.
struct Placed {
    std::uint32_t place;
    std::uint32_t index;

    bool operator<(const Placed &other) const { return place < other.place; }
};

// Between these counts it pays to sort by counting.
constexpr std::size_t kLeastToCount = 5;
constexpr std::size_t kMostToCount = 32;
constexpr std::uint32_t kSign = UINT32_C(1) << 31;

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

// Sorts a few without a branch that depends on them, as all orders are equally likely.
void sortByCounting(std::span<Placed> items) {
    const auto signedPlace = [](const Placed &item) { return static_cast<std::int32_t>(item.place ^ kSign); };
    std::array<std::int32_t, kMostToCount> places; // which the processor compares several at once
    places.fill(INT32_MAX);
    std::array<Placed, kMostToCount> before;
    std::ranges::copy(items, before.begin());
    std::ranges::transform(items, places.begin(), signedPlace);
    for (const Placed &item : std::span(before).first(items.size())) {
        const std::int32_t own = signedPlace(item);
        std::int32_t countBefore = 0;
        for (const std::int32_t place : places)
            countBefore += place < own;
        items[static_cast<std::size_t>(countBefore)] = item;
    }
}

void sort(std::span<Placed> items) {
    if (items.size() < kLeastToCount || items.size() > kMostToCount)
        std::sort(items.begin(), items.end());
    else
        sortByCounting(items);
}

// What remains of a division, at a multiplication's cost.
class Divisor {
public:
    explicit Divisor(std::uint32_t value) : value_(value), inverse_(1.0 / value) {}

    std::uint32_t remainderOf(std::uint32_t dividend) const {
        const std::uint32_t rest = dividend - static_cast<std::uint32_t>(dividend * inverse_) * value_;
        return rest < value_ ? rest : rest - value_; // the inverse may be a little too small
    }

private:
    std::uint32_t value_;
    double inverse_;
};

// A pass sorts each chain of items that are a gap apart, without changing the order of equal ones. So going
// over all items in ascending order, equal ones in the order of their places, each takes the next place of
// its chain.
void makePass(std::vector<Placed> &items, const std::vector<Tie> &ties, std::size_t gap) {
    for (const Tie &tie : ties)
        sort(std::span(items).subspan(tie.begin, tie.end - tie.begin));
    std::vector<std::uint32_t> nextPlaces(gap);
    std::iota(nextPlaces.begin(), nextPlaces.end(), 0U);
    const auto step = static_cast<std::uint32_t>(gap);
    const Divisor divisor(step);
    for (Placed &item : items) {
        std::uint32_t &next = nextPlaces[divisor.remainderOf(item.place)];
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
