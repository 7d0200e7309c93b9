#include "OSAdaptor/OSSorter.Collation.h"

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSObject.h>

#include "Foundation/Sort.h"
#include "Text/Collation.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace {

// An object by eight bytes of its key, of which the first is the highest. Behind a key's end they are 0.
struct Keyed {
    std::uint64_t bytes;
    std::uint32_t index;
};

constexpr std::size_t kBytes = sizeof(Keyed::bytes);
constexpr std::uint64_t kLastByte = 0xFF;

// Fewer are sorted by comparisons.
constexpr std::size_t kLeastForDigits = 1024;

std::string_view textOf(id object) {
    const char *const text = object->cStringValue();
    return text ? text : "";
}

// Sorts digit by digit from the lowest. `buffer` is as large.
void sortByDigits(std::span<Keyed> values, std::span<Keyed> buffer) {
    constexpr unsigned kDigitBits = 11;
    constexpr std::uint64_t kDigitMask = (1 << kDigitBits) - 1;
    constexpr unsigned kDigits = 6; // an even number, so that the last ones go back to where they were
    static_assert(kDigits * kDigitBits >= 64);
    for (unsigned shift = 0; shift < kDigits * kDigitBits; shift += kDigitBits) {
        std::array<std::uint32_t, kDigitMask + 1> places{};
        for (const Keyed &value : values)
            ++places[value.bytes >> shift & kDigitMask];
        std::uint32_t place = 0;
        for (std::uint32_t &count : places)
            place += std::exchange(count, place);
        for (const Keyed &value : values)
            buffer[places[value.bytes >> shift & kDigitMask]++] = value;
        std::swap(values, buffer);
    }
}

// Sorts by keys, eight bytes of them at a time, and lets `strcoll` decide where those are the same.
class Order {
public:
    explicit Order(std::span<const id> objects)
        : objects_(objects), sorted_(objects.size()), buffer_(objects.size()), begins_(objects.size()) {
        makeKeys();
        for (std::uint32_t i = 0; i < sorted_.size(); ++i)
            sorted_[i].index = i;
        groups_.push_back({0, sorted_.size(), 0});
        while (!groups_.empty()) {
            const Group group = groups_.back();
            groups_.pop_back();
            sort(group);
        }
    }

    std::vector<qb::Ranked> ranked() const {
        std::vector<qb::Ranked> ranked(sorted_.size());
        std::uint32_t rank = 0;
        for (std::size_t i = 0; i < sorted_.size(); ++i) {
            rank += begins_[i] && i != 0;
            ranked[i] = {rank, sorted_[i].index};
        }
        return ranked;
    }

private:
    // Of those whose keys are the same up to an offset.
    struct Group {
        std::size_t begin;
        std::size_t end;
        std::size_t offset;
    };

    void makeKeys() {
        const NSAutoreleasePool pool; // for the texts
        qb::text::CollationKeys maker;
        keyEnds_.reserve(objects_.size());
        for (id object : objects_) {
            maker.append(textOf(object), keys_);
            keyEnds_.push_back(keys_.size());
        }
        keys_.resize(keys_.size() + kBytes); // for reading beyond the last one
    }

    std::uint64_t bytesOf(std::uint32_t index, std::size_t offset) const {
        const std::size_t begin = (index == 0 ? 0 : keyEnds_[index - 1]) + offset;
        const std::size_t left = keyEnds_[index] - begin;
        std::uint64_t bytes;
        std::memcpy(&bytes, keys_.data() + begin, kBytes);
        bytes = __builtin_bswap64(bytes);
        return left >= kBytes ? bytes : left == 0 ? 0 : bytes & ~UINT64_C(0) << (kBytes - left) * 8;
    }

    void sort(const Group &group) {
        const std::span values = std::span(sorted_).subspan(group.begin, group.end - group.begin);
        for (Keyed &value : values)
            value.bytes = bytesOf(value.index, group.offset);
        if (values.size() >= kLeastForDigits)
            sortByDigits(values, std::span(buffer_).first(values.size()));
        else
            std::sort(values.begin(), values.end(),
                      [](const Keyed &a, const Keyed &b) { return a.bytes < b.bytes; });
        for (std::size_t begin = group.begin, end = begin; begin < group.end; begin = end) {
            while (end < group.end && sorted_[end].bytes == sorted_[begin].bytes)
                ++end;
            begins_[begin] = true;
            const bool hasEnded = (sorted_[begin].bytes & kLastByte) == 0;
            if (end - begin > 1 && hasEnded)
                sortByTexts(begin, end);
            else if (end - begin > 1)
                groups_.push_back({begin, end, group.offset + kBytes});
        }
    }

    void sortByTexts(std::size_t begin, std::size_t end) {
        const std::vector<std::string> texts = textsOf(begin, end);
        std::vector<std::uint32_t> places(end - begin), buffer(end - begin);
        for (std::uint32_t i = 0; i < places.size(); ++i)
            places[i] = i;
        const auto isAfter = [&](std::uint32_t a, std::uint32_t b) {
            return texts[a] != texts[b] && std::strcoll(texts[a].c_str(), texts[b].c_str()) > 0;
        };
        qb::mergeSort(std::span(places), std::span(buffer), isAfter);
        std::copy(sorted_.begin() + begin, sorted_.begin() + end, buffer_.begin());
        for (std::size_t i = 0; i < places.size(); ++i) {
            sorted_[begin + i] = buffer_[places[i]];
            begins_[begin + i] = i == 0 || isAfter(places[i], places[i - 1]);
        }
    }

    // Copies: some objects make their text anew each time.
    std::vector<std::string> textsOf(std::size_t begin, std::size_t end) const {
        const NSAutoreleasePool pool;
        std::vector<std::string> texts;
        texts.reserve(end - begin);
        for (std::size_t i = begin; i < end; ++i)
            texts.emplace_back(textOf(objects_[sorted_[i].index]));
        return texts;
    }

    std::span<const id> objects_;
    std::vector<char> keys_; // one behind the other
    std::vector<std::size_t> keyEnds_;
    std::vector<Keyed> sorted_;
    std::vector<Keyed> buffer_;
    std::vector<char> begins_;  // whether an object belongs behind the one before it
    std::vector<Group> groups_; // to be sorted
};

} // namespace

std::vector<qb::Ranked> qb::rankedByCollation(std::span<const id> objects) {
    return Order(objects).ranked();
}
