// Sets of strings, for going over large arrays.
#ifndef QB_FOUNDATION_STRINGSET_H
#define QB_FOUNDATION_STRINGSET_H

#include <QBFoundation/Foundation/NSString.h>

#include "Foundation/PlainClasses.h"
#include "Text/Bytes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <string_view>
#include <vector>

namespace qb {

/// Different strings of the library's own classes.
///
/// They are not retained: whoever adds them sees to it that they stay, and that no string changes meanwhile.
/// A large array's strings and their places lie all over the memory, which is what the time goes for; so
/// strings are looked up by groups, whose memory is fetched at once (group prefetching as in Chen, Ailamaki,
/// Gibbons and Mowry, "Improving hash join performance through prefetching", 2004).
class StringSet {
public:
    /// `capacity`: how many strings are added at most. Throws std::bad_alloc.
    explicit StringSet(std::uint64_t capacity) : slots_(slotCount(capacity)), mask_(slots_.size() - 1) {
        strings_.reserve(static_cast<std::size_t>(capacity));
    }

    std::span<const id> strings() const { return strings_; }

    /// Looks up the elements that stand in front of the first one that is no string of the library's own
    /// classes, and adds them if `adds`. Calls visit(string, wasThere) for each. Returns how many they are.
    template <bool adds, class Visit>
    std::size_t lookUp(std::span<const id> elements, Visit visit) {
        std::uint32_t hashes[kGroup];
        for (std::size_t done = 0;; done += kGroup) {
            const auto group = elements.subspan(done, std::min(kGroup, elements.size() - done));
            const std::size_t count = fetchSlots(group, hashes);
            for (std::size_t i = 0; i < count; ++i)
                fetchEqual(hashes[i]);
            for (std::size_t i = 0; i < count; ++i)
                visit(group[i], find<adds>(group[i], hashes[i]));
            if (count < kGroup)
                return done + count;
        }
    }

private:
    static constexpr std::size_t kGroup = 32;

    struct Slot {
        std::uint32_t hash;
        std::uint32_t number; // of the string, from 1 on; 0: free
    };

    // Half of the slots are always free, so that one is found soon.
    static std::size_t slotCount(std::uint64_t capacity) {
        const std::uint64_t count = std::bit_ceil(2 * capacity + 1);
        if (count > SIZE_MAX / sizeof(Slot))
            throw std::bad_alloc();
        return static_cast<std::size_t>(count);
    }

    static NSString *asString(id string) { return static_cast<NSString *>(string); }

    std::size_t fetchSlots(std::span<const id> group, std::uint32_t *hashes) const {
        std::size_t count = 0;
        for (; count < group.size() && isPlainString(group[count]); ++count) {
            hashes[count] = asString(group[count])->ownHash();
            __builtin_prefetch(&slots_[hashes[count] & mask_]);
        }
        return count;
    }
    void fetchEqual(std::uint32_t hash) const {
        const Slot &slot = slots_[hash & mask_];
        if (slot.number && slot.hash == hash)
            __builtin_prefetch(strings_[slot.number - 1]);
    }

    // Returns whether the string is there, which is added if it is not and `adds`.
    template <bool adds>
    bool find(id string, std::uint32_t hash) {
        std::size_t place = hash & mask_;
        for (; slots_[place].number; place = (place + 1) & mask_)
            if (slots_[place].hash == hash && areEqual(strings_[slots_[place].number - 1], string))
                return true;
        if (!adds)
            return false;
        strings_.push_back(string);
        slots_[place] = {hash, static_cast<std::uint32_t>(strings_.size())};
        return false;
    }
    static bool areEqual(id a, id b) {
        const std::string_view left = asString(a)->view();
        const std::string_view right = asString(b)->view();
        return left.size() == right.size() && text::areEqual(left.data(), right.data(), left.size());
    }

    std::vector<Slot> slots_; // a string is between its hash's place and the next free one
    std::size_t mask_;
    std::vector<id> strings_;
};

} // namespace qb

#endif
