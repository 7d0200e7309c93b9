// Sorting that keeps the order of equal values.
#ifndef QB_FOUNDATION_SORT_H
#define QB_FOUNDATION_SORT_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Send.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qb {

namespace detail {

// Short runs are sorted by insertion, which takes fewer steps there than merging.
constexpr std::size_t kRunLength = 12;

template <class T, class IsAfter>
void sortRun(T *values, std::size_t count, IsAfter &isAfter) {
    for (std::size_t i = 1; i < count; ++i) {
        const T value = values[i];
        std::size_t place = i;
        for (; place != 0 && isAfter(values[place - 1], value); --place)
            values[place] = values[place - 1];
        values[place] = value;
    }
}

// Merges [left, middle) and [middle, end) into `target`.
template <class T, class IsAfter>
void mergeRuns(const T *left, const T *middle, const T *end, T *target, IsAfter &isAfter) {
    if (middle == end || !isAfter(middle[-1], *middle)) {
        std::copy(left, end, target);
        return;
    }
    const T *right = middle;
    while (left != middle && right != end) {
        const bool takesRight = isAfter(*left, *right);
        *target++ = *(takesRight ? right : left);
        right += takesRight;
        left += !takesRight;
    }
    std::copy(right, end, std::copy(left, middle, target));
}

} // namespace detail

/// Sorts plain values in ascending order; equal ones keep their order. `isAfter(a, b)`: whether `a` belongs
/// behind `b`. Whatever it answers, and if it throws, no memory but that of `values` and of `buffer`, which
/// is as large, is touched; values may be missing or doubled after an exception.
template <class T, class IsAfter>
void mergeSort(std::span<T> values, std::span<T> buffer, IsAfter isAfter) {
    const std::size_t count = values.size();
    for (std::size_t i = 0; i < count; i += detail::kRunLength)
        detail::sortRun(values.data() + i, std::min(detail::kRunLength, count - i), isAfter);
    T *source = values.data();
    T *target = buffer.data();
    for (std::size_t width = detail::kRunLength; width < count; width *= 2) {
        for (std::size_t i = 0; i < count; i += 2 * width)
            detail::mergeRuns(source + i, source + std::min(i + width, count),
                              source + std::min(i + 2 * width, count), target + i, isAfter);
        std::swap(source, target);
    }
    if (source != values.data())
        std::copy(source, source + count, values.data());
}

/// Sorts objects by a comparison, which returns a number below, at or above 0 and may throw.
template <class Compare>
void sortObjects(std::span<id> objects, Compare &&compare) {
    std::vector<id> buffer(objects.size());
    mergeSort(objects, std::span(buffer), [&compare](id a, id b) { return compare(a, b) > 0; });
}

/// Compares by a message, as `compare:` is one; an operation without result finds all equal. Throws
/// InvalidArgumentException when the receiver does not answer, or with something else than a number.
inline std::int32_t compareByMessage(id a, SEL selector, id b) {
    return send<std::int32_t>(a, selector, b);
}

/// Sorts objects that are all strings of the library's own classes by their bytes, as `compare:` orders them.
void sortStrings(std::span<id> strings);

} // namespace qb

#endif
