// Sets of strings, for going over large arrays.
#ifndef QB_FOUNDATION_STRINGSET_H
#define QB_FOUNDATION_STRINGSET_H

#include <QBFoundation/Foundation/NSString.h>

#include "Foundation/Buffer.h"
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
/// A large array's strings and their places lie all over the memory, which is what the time goes for; so what
/// a string will need is fetched while those before it are looked up (software pipelining as in Chen,
/// Ailamaki, Gibbons and Mowry, "Improving hash join performance through prefetching", 2004).
class StringSet {
public:
    /// `capacity`: how many strings are added at most. Throws std::bad_alloc.
    explicit StringSet(std::uint64_t capacity) : slots_(slotCount(capacity)), mask_(slots_.size() - 1) {}

    /// Calls visit(string) for each string, in no order.
    template <class Visit>
    void forEach(Visit visit) const {
        for (const Slot slot : slots_)
            if (!slot.isFree())
                visit(slot.string());
    }

    /// Looks up the elements that stand in front of the first one that is no string of the library's own
    /// classes, and adds them if `adds`. Calls visit(string, wasThere) for each. Returns how many they are.
    template <bool adds, class Visit>
    std::size_t lookUp(std::span<const id> elements, Visit visit) {
        std::uint32_t hashes[4 * kAhead]; // of the elements whose number is the same modulo their count
        const auto hashOf = [&](std::size_t i) -> std::uint32_t & { return hashes[i % std::size(hashes)]; };
        std::size_t count = elements.size();
        for (std::size_t i = 0; i < count + 2 * kAhead; ++i) {
            if (i + kAhead < count)
                __builtin_prefetch(elements[i + kAhead]);
            if (i < count && !isPlainString(elements[i]))
                count = i;
            if (i < count)
                fetchSlot(hashOf(i) = asString(elements[i])->ownHash());
            if (i >= kAhead && i - kAhead < count)
                fetchString(hashOf(i - kAhead));
            if (i < 2 * kAhead)
                continue;
            const std::size_t next = i - 2 * kAhead;
            visit(elements[next], find<adds>(elements[next], hashOf(next)));
        }
        return count;
    }

private:
    // A string, and the upper half of its hash where addresses have no bits (they have 47).
    class Slot {
    public:
        constexpr Slot() = default;
        Slot(id string, std::uint32_t hash)
            : bits_(std::uint64_t{hash >> 16} << 48 | reinterpret_cast<std::uintptr_t>(string)) {}

        bool isFree() const { return bits_ == 0; }
        bool hasHash(std::uint32_t hash) const { return bits_ != 0 && bits_ >> 48 == hash >> 16; }
        id string() const { return reinterpret_cast<id>(static_cast<std::uintptr_t>(bits_ << 16 >> 16)); }

    private:
        std::uint64_t bits_ = 0;
    };

    static constexpr std::size_t kAhead = 16;

    // Half of the slots are always free, so that one is found soon.
    static std::size_t slotCount(std::uint64_t capacity) {
        const std::uint64_t count = std::bit_ceil(2 * capacity + 1);
        if (count > SIZE_MAX / sizeof(Slot))
            throw std::bad_alloc();
        return static_cast<std::size_t>(count);
    }

    static NSString *asString(id string) { return static_cast<NSString *>(string); }

    // From `place` on the first one that is free or has a string with that hash.
    std::size_t nextPlace(std::size_t place, std::uint32_t hash) const {
        while (!slots_[place].isFree() && !slots_[place].hasHash(hash))
            place = (place + 1) & mask_;
        return place;
    }

    // Inlined by order: g++ takes a function that only fetches for one without an effect, and drops its call.
    [[gnu::always_inline]] void fetchSlot(std::uint32_t hash) const {
        __builtin_prefetch(&slots_[hash & mask_]);
    }
    [[gnu::always_inline]] void fetchString(std::uint32_t hash) const {
        const Slot slot = slots_[nextPlace(hash & mask_, hash)];
        if (slot.isFree())
            return;
        const auto *const string = reinterpret_cast<const char *>(slot.string());
        __builtin_prefetch(string);
        __builtin_prefetch(string + sizeof(NSString)); // its bytes may begin another line
    }

    // Returns whether the string is there, which is added if it is not and `adds`.
    template <bool adds>
    bool find(id string, std::uint32_t hash) {
        std::size_t place = nextPlace(hash & mask_, hash);
        for (; !slots_[place].isFree(); place = nextPlace((place + 1) & mask_, hash))
            if (areEqual(slots_[place].string(), string))
                return true;
        if (adds)
            slots_[place] = Slot(string, hash);
        return false;
    }
    static bool areEqual(id a, id b) {
        const std::string_view left = asString(a)->view();
        const std::string_view right = asString(b)->view();
        return left.size() == right.size() && text::areEqual(left.data(), right.data(), left.size());
    }

    // A string is between its hash's place and the next free one.
    std::vector<Slot, BufferAllocator<Slot>> slots_;
    std::size_t mask_;
};

} // namespace qb

#endif
