#include "Builder.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace qb::text {

void Builder::grow(std::size_t length) {
    const std::size_t used = size();
    if (length > PTRDIFF_MAX - used)
        throw std::bad_alloc();
    const std::size_t doubled = std::min<std::size_t>(used, PTRDIFF_MAX / 2) * 2;
    const std::size_t capacity = std::max(used + length, doubled);
    std::unique_ptr<char[]> grown(new char[capacity]);
    std::memcpy(grown.get(), start_, used);
    allocated_ = std::move(grown);
    start_ = allocated_.get();
    next_ = start_ + used;
    end_ = start_ + capacity;
}

} // namespace qb::text
