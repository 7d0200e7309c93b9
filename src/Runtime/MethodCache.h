// What a class remembers of the selectors that it was asked for.
#ifndef QBFOUNDATION_RUNTIME_METHODCACHE_H
#define QBFOUNDATION_RUNTIME_METHODCACHE_H

#include <QBFoundation/Runtime/Method.h>
#include <QBFoundation/Runtime/Selector.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace qb {

/// A hash table from selector to operation; an operation of null says that there is none.
class MethodCache {
public:
    struct Slot {
        SEL selector = nullptr;
        const Method *method = nullptr;
    };

    /// Returns the slot of `selector`, empty when it was not entered in this generation.
    Slot &slotFor(SEL selector, std::uint32_t generation) {
        if (generation != generation_)
            clear(generation);
        if (count_ * 2 >= slots_.size())
            grow();
        Slot &slot = find(selector);
        if (!slot.selector)
            ++count_; // the caller fills it
        return slot;
    }

private:
    Slot &find(SEL selector) {
        const std::size_t mask = slots_.size() - 1;
        std::size_t index = selector->hash() & mask;
        while (slots_[index].selector && slots_[index].selector != selector)
            index = (index + 1) & mask;
        return slots_[index];
    }

    void clear(std::uint32_t generation) {
        slots_.assign(slots_.size(), Slot());
        count_ = 0;
        generation_ = generation;
    }

    void grow() {
        const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(slots_.size() * 2));
        for (const Slot &slot : old)
            if (slot.selector)
                find(slot.selector) = slot;
    }

    std::vector<Slot> slots_ = std::vector<Slot>(32);
    std::size_t count_ = 0;
    std::uint32_t generation_ = 0;
};

} // namespace qb

#endif
