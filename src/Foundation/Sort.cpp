#include "Foundation/Sort.h"

#include <QBFoundation/Foundation/NSString.h>

#include "Text/Bytes.h"

#include <cstdint>
#include <string_view>

namespace qb {

namespace {

constexpr std::size_t kWindow = 8;

// From so many strings on that share a window, the next one is worth its making.
constexpr std::size_t kLeastForWindows = 24;

// A string with eight of its bytes as a number, the first byte on top and zeros behind the end, so that most
// comparisons need not look at the string.
struct Key {
    std::uint64_t window;
    NSString *string;
};

// Keys of strings of at least `depth` bytes, which share all in front of it.
struct Range {
    std::size_t begin, end, depth;
};

std::uint64_t windowAt(std::string_view text, std::size_t depth) {
    if (text.size() <= depth)
        return 0;
    return __builtin_bswap64(text::loadShort(text.data() + depth, std::min(kWindow, text.size() - depth)));
}

class StringSorter {
public:
    explicit StringSorter(std::span<id> strings) : keys_(strings.size()), buffer_(strings.size()) {
        for (std::size_t i = 0; i < strings.size(); ++i)
            keys_[i].string = static_cast<NSString *>(strings[i]);
        ranges_.push_back({0, strings.size(), 0});
        while (!ranges_.empty()) {
            const Range range = ranges_.back();
            ranges_.pop_back();
            sortByWindow(range);
        }
        for (std::size_t i = 0; i < strings.size(); ++i)
            strings[i] = keys_[i].string;
    }

private:
    void sortByWindow(const Range &range) {
        for (std::size_t i = range.begin; i < range.end; ++i)
            keys_[i].window = windowAt(keys_[i].string->view(), range.depth);
        sort(range.begin, range.end, [](const Key &a, const Key &b) { return a.window > b.window; });
        for (std::size_t begin = range.begin, end; begin < range.end; begin = end) {
            for (end = begin + 1; end < range.end && keys_[end].window == keys_[begin].window;)
                ++end;
            if (end - begin > 1)
                sortEqualWindows({begin, end, range.depth});
        }
    }

    void sortEqualWindows(const Range &range) {
        if (range.end - range.begin < kLeastForWindows) {
            return sort(range.begin, range.end, [&range](const Key &a, const Key &b) {
                return a.string->view().substr(range.depth) > b.string->view().substr(range.depth);
            });
        }
        // A string that ends in the window stands in front of those that go on, and behind shorter ones; only
        // NUL bytes can make windows of strings of different length equal.
        const std::size_t next = range.depth + kWindow;
        const auto lengthInWindow = [next](const Key &key) {
            return std::min<std::size_t>(key.string->cStringLength(), next + 1);
        };
        sort(range.begin, range.end,
             [&lengthInWindow](const Key &a, const Key &b) { return lengthInWindow(a) > lengthInWindow(b); });
        const auto begin = keys_.begin() + static_cast<std::ptrdiff_t>(range.begin);
        const auto end = keys_.begin() + static_cast<std::ptrdiff_t>(range.end);
        const auto longer =
            std::find_if(begin, end, [&](const Key &key) { return lengthInWindow(key) > next; });
        if (end - longer > 1)
            ranges_.push_back({static_cast<std::size_t>(longer - keys_.begin()), range.end, next});
    }

    template <class IsAfter>
    void sort(std::size_t begin, std::size_t end, IsAfter isAfter) {
        mergeSort(std::span(keys_).subspan(begin, end - begin), std::span(buffer_).first(end - begin),
                  isAfter);
    }

    std::vector<Key> keys_, buffer_;
    std::vector<Range> ranges_; // still to be sorted
};

} // namespace

void sortStrings(std::span<id> strings) {
    StringSorter sorter(strings);
}

} // namespace qb
