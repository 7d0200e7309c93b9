#include <QBFoundation/Foundation/HashTable.h>

#include <QBFoundation/Foundation/NSException.h>

#include "Foundation/Buffer.h"
#include "Foundation/PlainString.h"
#include "Text/Bytes.h"

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

std::uint32_t hashOf(const NSObject *key) {
    return isPlainString(key) ? static_cast<const NSString *>(key)->ownHash() : key->hash();
}

// Whether two strings have the same bytes, without a call for the short ones that keys mostly are.
bool haveEqualBytes(const NSString *a, const NSString *b) {
    const std::string_view left = a->view();
    const std::string_view right = b->view();
    return left.size() == right.size() && text::areEqual(left.data(), right.data(), left.size());
}

} // namespace

HashTable::~HashTable() {
    removeAll();
}

std::size_t HashTable::bytesFor(std::uint32_t capacity, std::uint32_t slots) {
    return capacity * sizeof(Entry) + slots * sizeof(Slot);
}

// Returns the slot of the key with that hash which `isEqual` takes, else the empty one where it would be
// looked for last.
template <class IsEqual>
HashTable::Slot *HashTable::slotWith(std::uint32_t hash, IsEqual isEqual) const {
    for (std::uint32_t i = hash & mask_;; i = (i + 1) & mask_) {
        Slot &slot = slots_[i];
        if (!slot.entry ||
            (slot.hash == hash && slot.entry != kRemoved && isEqual(entries_[slot.entry - 1].key)))
            return &slot;
    }
}

HashTable::Slot *HashTable::slotOf(const NSObject *key, std::uint32_t hash) const {
    if (!isPlainString(key))
        return slotWith(hash, [key](NSObject *other) { return other == key || key->isEqual(other); });
    return slotWith(hash, [string = static_cast<const NSString *>(key)](NSObject *other) {
        return other == string ||
               (isPlainString(other) ? haveEqualBytes(string, static_cast<NSString *>(other))
                                     : string->isEqual(other));
    });
}

HashTable::Entry *HashTable::find(const NSObject *key) const {
    if (count_ == 0)
        return nullptr;
    const Slot *slot = slotOf(key, hashOf(key));
    return slot->entry ? &entries_[slot->entry - 1] : nullptr;
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
    const std::uint32_t hash = hashOf(key);
    Slot *slot = entries_ ? slotOf(key, hash) : nullptr;
    if (slot && slot->entry)
        return entries_[slot->entry - 1];
    if (used_ == capacity_) {
        rebuild(count_ + count_ / 4 < capacity_ ? capacity_ : capacity_ * 2);
        slot = slotWith(hash, [](NSObject *) { return false; });
    }
    entries_[used_] = {key, nullptr};
    key->retain();
    *slot = {hash, ++used_};
    ++count_;
    return entries_[used_ - 1];
}

HashTable::Entry &HashTable::entryForCopyOf(NSObject *key) {
    if (dispatchKey(key) == plainStringKeys[0]) // its copy is itself
        return entryFor(key);
    if (Entry *const entry = find(key))
        return *entry;
    return entryFor(key->copy().get());
}

bool HashTable::remove(const NSObject *key) {
    Slot *const slot = count_ == 0 ? nullptr : slotOf(key, hashOf(key));
    if (!slot || !slot->entry)
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
                enter(hashOf(oldEntries[i].key), kept);
        }
    if (!hasHoles)
        for (std::uint32_t i = 0; i <= oldMask; ++i)
            if (oldSlots[i].entry)
                enter(oldSlots[i].hash, oldSlots[i].entry);
    used_ = kept;
    freeBuffer(oldEntries, oldBytes);
}

} // namespace qb
