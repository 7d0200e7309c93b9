#include "OSAdaptor/OSSorter.Collation.h"

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSObject.h>

#include "Foundation/Sort.h"
#include "Text/Collation.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
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

// The keys for the first level, each with a copy of the text behind it: objects that make their text anew
// each time are asked only once.
class Keys {
public:
    Keys(std::span<const id> objects, qb::text::CollationKeys &maker) {
        const NSAutoreleasePool pool; // for the texts
        entries_.reserve(objects.size() + 1);
        bytes_.reserve(objects.size() * kUsualSize);
        for (id object : objects) {
            const char *const cString = object->cStringValue();
            const std::string_view text = cString ? cString : "";
            entries_.push_back({bytes_.size(), 0});
            maker.appendFirstLevel(text, bytes_);
            entries_.back().middle = bytes_.size();
            bytes_.insert(bytes_.end(), text.data(), text.data() + text.size() + 1);
        }
        entries_.push_back({bytes_.size(), 0}); // the end of the last one
        bytes_.resize(bytes_.size() + kBytes);  // for reading beyond the last one
    }

    std::uint64_t bytesAt(std::uint32_t index, std::size_t offset) const {
        const std::size_t begin = entries_[index].begin + offset;
        const std::size_t left = entries_[index].middle - begin;
        std::uint64_t bytes;
        std::memcpy(&bytes, bytes_.data() + begin, kBytes);
        bytes = __builtin_bswap64(bytes);
        return left >= kBytes ? bytes : left == 0 ? 0 : bytes & ~UINT64_C(0) << (kBytes - left) * 8;
    }

    // With a NUL behind it.
    std::string_view text(std::uint32_t index) const {
        const std::size_t middle = entries_[index].middle;
        return {bytes_.data() + middle, entries_[index + std::size_t{1}].begin - 1 - middle};
    }

private:
    struct Entry {
        std::size_t begin;
        std::size_t middle; // where the text begins
    };

    static constexpr std::size_t kUsualSize = 32; // of a key with its text

    std::vector<char> bytes_;
    std::vector<Entry> entries_;
};

// An object whose key for the first level others have too.
struct Tied {
    std::string_view text;
    std::size_t begin, end; // of the key for the next levels
    std::uint32_t index;
};

class Order {
public:
    explicit Order(std::span<const id> objects)
        : maker_(qb::text::CollationKeys::inForce()), keys_(objects, *maker_), sorted_(objects.size()),
          buffer_(objects.size()), isBehind_(objects.size()) {
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
            rank += isBehind_[i];
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

    void sort(const Group &group) {
        const std::span values = std::span(sorted_).subspan(group.begin, group.end - group.begin);
        for (Keyed &value : values)
            value.bytes = keys_.bytesAt(value.index, group.offset);
        if (values.size() >= kLeastForDigits)
            sortByDigits(values, std::span(buffer_).first(values.size()));
        else
            std::sort(values.begin(), values.end(),
                      [](const Keyed &a, const Keyed &b) { return a.bytes < b.bytes; });
        for (std::size_t begin = group.begin, end = begin; begin < group.end; begin = end) {
            while (end < group.end && sorted_[end].bytes == sorted_[begin].bytes)
                ++end;
            if (begin != group.begin)
                isBehind_[begin] = true;
            if (end - begin == 1)
                continue;
            if ((sorted_[begin].bytes & kLastByte) == 0)
                sortTied(begin, end);
            else
                groups_.push_back({begin, end, group.offset + kBytes});
        }
    }

    // Sorts those whose keys for the first level are the same.
    void sortTied(std::size_t begin, std::size_t end) {
        tied_.clear();
        bool isOneText = true;
        for (std::size_t i = begin; i < end; ++i) {
            tied_.push_back({keys_.text(sorted_[i].index), 0, 0, sorted_[i].index});
            isOneText = isOneText && tied_.back().text == tied_.front().text;
        }
        if (isOneText)
            return;
        makeNextKeys();
        tiedBuffer_.resize(tied_.size());
        const auto isAfter = [this](const Tied &a, const Tied &b) { return this->isAfter(a, b); };
        qb::mergeSort(std::span(tied_), std::span(tiedBuffer_), isAfter);
        for (std::size_t i = 0; i < tied_.size(); ++i) {
            sorted_[begin + i].index = tied_[i].index;
            if (i != 0)
                isBehind_[begin + i] = isAfter(tied_[i], tied_[i - 1]);
        }
    }

    // None unless all can have one.
    void makeNextKeys() {
        nextKeys_.clear();
        for (Tied &tied : tied_) {
            tied.begin = nextKeys_.size();
            if (!maker_->appendNextLevels(tied.text, nextKeys_))
                return nextKeys_.clear();
            tied.end = nextKeys_.size();
        }
    }

    bool isAfter(const Tied &a, const Tied &b) const {
        if (a.text == b.text)
            return false;
        const auto key = [this](const Tied &tied) {
            return std::string_view(nextKeys_.data() + tied.begin, tied.end - tied.begin);
        };
        const int order = nextKeys_.empty() ? 0 : key(a).compare(key(b));
        return order != 0 ? order > 0 : std::strcoll(a.text.data(), b.text.data()) > 0;
    }

    const std::shared_ptr<qb::text::CollationKeys> maker_; // objects may sort others to make their texts
    Keys keys_;
    std::vector<Keyed> sorted_;
    std::vector<Keyed> buffer_;
    std::vector<char> isBehind_; // whether an object is not equal to the one before it
    std::vector<Group> groups_;  // to be sorted
    std::vector<Tied> tied_;
    std::vector<Tied> tiedBuffer_;
    std::vector<char> nextKeys_;
};

} // namespace

std::vector<qb::Ranked> qb::rankedByCollation(std::span<const id> objects) {
    return Order(objects).ranked();
}
