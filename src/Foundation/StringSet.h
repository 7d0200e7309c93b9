// Sets of strings, for going over large arrays.
#ifndef QB_FOUNDATION_STRINGSET_H
#define QB_FOUNDATION_STRINGSET_H

#include <QBFoundation/Foundation/NSString.h>

#include "Foundation/PlainClasses.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <vector>

namespace qb {

/// Different strings of the library's own classes, in the order in which they came.
///
/// They are not retained: whoever adds them sees to it that they stay, and that no string changes meanwhile.
/// A large array's strings and their places lie all over the memory, which is what the time goes for.
/// `expect`, called for each element in front of the others, has them fetched ahead while earlier ones are
/// looked up (group prefetching as in Chen, Ailamaki, Gibbons and Mowry, "Improving hash join performance
/// through prefetching", 2004).
class StringSet {
public:
    /// `capacity`: how many strings are added at most. Throws std::bad_alloc.
    explicit StringSet(std::uint64_t capacity) : slots_(slotCount(capacity)), mask_(slots_.size() - 1) {}

    /// Adds the string unless an equal one is there; returns whether it did.
    bool add(id string) {
        const std::uint32_t hash = hashOf(string);
        Slot &slot = slots_[find(string, hash)];
        if (slot.number)
            return false;
        strings_.push_back(string);
        slot = {hash, static_cast<std::uint32_t>(strings_.size())};
        return true;
    }
    bool contains(id string) const { return slots_[find(string, hashOf(string))].number != 0; }
    std::span<const id> strings() const { return strings_; }

    /// Fetches what will be looked at for elements some places behind `index`.
    void expect(std::span<const id> elements, std::size_t index) const {
        if (index + kObjectsAhead < elements.size())
            __builtin_prefetch(elements[index + kObjectsAhead]);
        if (const id string = stringAt(elements, index + kSlotsAhead))
            __builtin_prefetch(&slots_[hashOf(string) & mask_]);
        if (const id string = stringAt(elements, index + kEqualsAhead)) {
            const Slot &slot = slots_[hashOf(string) & mask_];
            if (slot.number && slot.hash == hashOf(string))
                __builtin_prefetch(strings_[slot.number - 1]);
        }
    }

private:
    // Each step's memory has arrived when the next step wants it; farther ahead is no better.
    static constexpr std::size_t kObjectsAhead = 40;
    static constexpr std::size_t kSlotsAhead = 24;
    static constexpr std::size_t kEqualsAhead = 12;

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

    static std::uint32_t hashOf(id string) { return static_cast<NSString *>(string)->ownHash(); }
    static std::string_view viewOf(id string) { return static_cast<NSString *>(string)->view(); }

    static id stringAt(std::span<const id> elements, std::size_t index) {
        return index < elements.size() && isPlainString(elements[index]) ? elements[index] : nullptr;
    }

    // Returns the place of the string, or the free one where it belongs.
    std::size_t find(id string, std::uint32_t hash) const {
        std::size_t place = hash & mask_;
        while (slots_[place].number && !(slots_[place].hash == hash && isAt(place, string)))
            place = (place + 1) & mask_;
        return place;
    }
    bool isAt(std::size_t place, id string) const {
        return viewOf(strings_[slots_[place].number - 1]) == viewOf(string);
    }

    std::vector<Slot> slots_; // a string is between its hash's place and the next free one
    std::size_t mask_;
    std::vector<id> strings_;
};

} // namespace qb

#endif
