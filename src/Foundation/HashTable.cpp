#include <QBFoundation/Foundation/HashTable.h>

#include <QBFoundation/Foundation/NSException.h>

#include "Foundation/Buffer.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qb {

namespace {

constexpr std::uint32_t kLeastCapacity = 8;

// Slots for `capacity` entries: a power of two, at most two thirds full.
std::uint32_t slotsFor(std::uint32_t capacity) {
    return std::bit_ceil(capacity + capacity / 2 + 1);
}

bool equalKeys(const NSObject *a, NSObject *b) {
    return a == b || a->isEqual(b);
}

} // namespace

HashTable::~HashTable() {
    removeAll();
}

std::size_t HashTable::bytesFor(std::uint32_t capacity, std::uint32_t slots) {
    return capacity * sizeof(Entry) + slots * sizeof(Slot);
}

HashTable::Slot *HashTable::slotOf(const NSObject *key, std::uint32_t hash) const {
    for (std::uint32_t i = hash & mask_; slots_[i].entry; i = (i + 1) & mask_) {
        const Slot &slot = slots_[i];
        if (slot.hash == hash && slot.entry != kRemoved && equalKeys(key, entries_[slot.entry - 1].key))
            return &slots_[i];
    }
    return nullptr;
}

HashTable::Entry *HashTable::find(const NSObject *key) const {
    if (count_ == 0)
        return nullptr;
    const Slot *slot = slotOf(key, key->hash());
    return slot ? &entries_[slot->entry - 1] : nullptr;
}

HashTable::Entry *HashTable::nextWithHash(std::uint32_t hash, std::uint32_t &place) const {
    if (count_ == 0)
        return nullptr;
    for (;;) {
        const Slot &slot = slots_[(hash + place) & mask_];
        if (!slot.entry)
            return nullptr;
        ++place;
        if (slot.hash == hash && slot.entry != kRemoved)
            return &entries_[slot.entry - 1];
    }
}

void HashTable::enter(std::uint32_t hash, std::uint32_t entry) noexcept {
    std::uint32_t i = hash & mask_;
    while (slots_[i].entry)
        i = (i + 1) & mask_;
    slots_[i] = {hash, entry};
}

HashTable::Entry &HashTable::entryFor(NSObject *key) {
    const std::uint32_t hash = key->hash();
    if (count_ != 0)
        if (const Slot *slot = slotOf(key, hash))
            return entries_[slot->entry - 1];
    if (used_ == capacity_)
        rebuild(count_ + count_ / 4 < capacity_ ? capacity_ : capacity_ * 2);
    entries_[used_] = {key, nullptr};
    key->retain();
    enter(hash, ++used_);
    ++count_;
    return entries_[used_ - 1];
}

bool HashTable::remove(const NSObject *key) {
    Slot *const slot = count_ == 0 ? nullptr : slotOf(key, key->hash());
    if (!slot)
        return false;
    Entry &entry = entries_[slot->entry - 1];
    const Entry removed = entry;
    entry = {nullptr, nullptr};
    slot->entry = kRemoved;
    --count_;
    // Last, because a destructor may come back to this table.
    removed.key->release();
    if (removed.value)
        removed.value->release();
    return true;
}

void HashTable::removeAll() noexcept {
    Entry *const entries = std::exchange(entries_, nullptr);
    const std::uint32_t used = std::exchange(used_, 0);
    const std::size_t bytes = entries ? bytesFor(capacity_, mask_ + 1) : 0;
    slots_ = nullptr;
    mask_ = capacity_ = count_ = 0;
    for (std::uint32_t i = 0; i < used; ++i) {
        if (!entries[i].key)
            continue;
        entries[i].key->release();
        if (entries[i].value)
            entries[i].value->release();
    }
    freeBuffer(entries, bytes);
}

void HashTable::swap(HashTable &other) noexcept {
    std::swap(entries_, other.entries_);
    std::swap(slots_, other.slots_);
    std::swap(mask_, other.mask_);
    std::swap(capacity_, other.capacity_);
    std::swap(used_, other.used_);
    std::swap(count_, other.count_);
}

void HashTable::reserve(std::uint32_t count) {
    if (count > capacity_)
        rebuild(count);
}

// Moves the entries into a table for `capacity` of them, without the holes.
void HashTable::rebuild(std::uint32_t capacity) {
    capacity = std::max(capacity, kLeastCapacity);
    if (capacity > kMostEntries)
        throw InvalidArgumentException("NSMutableDictionary must have fewer entries.");
    const std::uint32_t slots = slotsFor(capacity);
    auto *const entries = static_cast<Entry *>(allocateBuffer(bytesFor(capacity, slots)));
    Entry *const oldEntries = entries_;
    const Slot *const oldSlots = slots_;
    const std::size_t oldBytes = entries_ ? bytesFor(capacity_, mask_ + 1) : 0;
    const std::uint32_t oldMask = mask_;

    entries_ = entries;
    slots_ = reinterpret_cast<Slot *>(entries + capacity);
    mask_ = slots - 1;
    capacity_ = capacity;
    std::memset(slots_, 0, slots * sizeof(Slot));
    if (!oldEntries)
        return;
    // The old index says each entry's hash, which is dearer to ask the key for; holes move the numbers down.
    std::uint32_t kept = 0;
    const bool hasHoles = used_ != count_;
    for (std::uint32_t i = 0; i < used_; ++i)
        if (oldEntries[i].key) {
            entries_[kept++] = oldEntries[i];
            if (hasHoles)
                enter(oldEntries[i].key->hash(), kept);
        }
    if (!hasHoles)
        for (std::uint32_t i = 0; i <= oldMask; ++i)
            if (oldSlots[i].entry)
                enter(oldSlots[i].hash, oldSlots[i].entry);
    used_ = kept;
    freeBuffer(oldEntries, oldBytes);
}

} // namespace qb
