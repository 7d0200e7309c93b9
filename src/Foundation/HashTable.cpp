#include <QBFoundation/Foundation/HashTable.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>

#include "Foundation/Buffer.h"
#include "Foundation/Kept.h"
#include "Foundation/PlainClasses.h"
#include "Text/ByteGroup.h"
#include "Text/Bytes.h"
#include "Text/Hash.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace qb {

namespace {

// Of a table that grows; one whose entries are known in advance takes as little as it needs.
constexpr std::uint32_t kLeastCapacity = 8;

// How many entries a group has on average when the table is full. Groups fill unevenly, so that this leaves
// room in nearly all of them; a table of one group fills it.
constexpr std::uint32_t kEntriesAGroup = 8;

// The hash's upper bits; the lower ones choose the group. The bit that says that the place is taken stands
// above them.
std::uint8_t tagOf(std::uint32_t hash) {
    return static_cast<std::uint8_t>(hash >> 25 | 0x80);
}

// From here on the keys are too many to stay in the processor's near caches. A table keeps their short texts
// then beside its entries, so that finding a key needs none of the key's own memory.
constexpr std::uint32_t kLargeCapacity = 4096;

std::uint32_t hashOf(const NSObject *key) {
    return isPlainString(key) ? static_cast<const NSString *>(key)->ownHash() : key->hash();
}

// How often keys have come to a table or moved inside it, in all tables.
constinit std::uint32_t moves = 0;

// What is to be kept of a key while its own operations run; those of plain strings let go of nothing.
NSObject *keptOf(const NSObject *key) {
    return isPlainString(key) ? nullptr : const_cast<NSObject *>(key);
}

inline bool areEqualShortTexts(const NSObject *a, const NSObject *b) {
    const std::string_view left = static_cast<const NSString *>(a)->view();
    const std::string_view right = static_cast<const NSString *>(b)->view();
    return left.size() == right.size() && left.size() <= text::kShortRun &&
           text::areShortRunsEqual(left.data(), right.data(), left.size());
}

} // namespace

// Some places of the index. In a large table it is one cache line, for what is far away is to be fetched
// once.
struct alignas(16) HashTable::Group {
    static constexpr std::uint32_t kPlaces = 12;

    std::uint8_t tags[kPlaces];     // 0: free; sixteen bytes together with the next
    std::uint32_t passedBy;         // how many keys found no free place here and stand in a later group
    std::uint32_t indexes[kPlaces]; // the numbers of the entries in the places

    // Returns a mask of the places that have that tag.
    std::uint32_t placesWith(std::uint8_t tag) const {
        return text::bytesThatAre(reinterpret_cast<const std::uint8_t *>(this), tag) & ((1U << kPlaces) - 1);
    }

    // Writes the tag of a free place.
    void take(int place, std::uint8_t tag) {
        text::setByte(reinterpret_cast<std::uint8_t *>(this), place, tag);
    }
};

constinit HashTable::Group HashTable::noGroup{};

// A string of up to fifteen bytes that can't change, in two words: eight bytes, then the others and the
// length.
struct HashTable::ShortText {
    static constexpr std::size_t kLongest = 15;

    std::uint64_t first, rest;

    static ShortText of(std::string_view text) {
        const std::uint64_t length = std::uint64_t{text.size()} << 56;
        if (text.size() <= 8)
            return {text::loadShort(text.data(), text.size()), length};
        const auto last = text::loadWord<std::uint64_t>(text.data() + text.size() - 8);
        return {text::loadWord<std::uint64_t>(text.data()), last >> 8 * (16 - text.size()) | length};
    }
    // For a key that is none, what differs from each.
    static ShortText ofKey(const NSObject *key) {
        if (dispatchKey(const_cast<NSObject *>(key)) == plainStringKeys.immutable)
            if (const std::string_view text = static_cast<const NSString *>(key)->view();
                text.size() <= kLongest)
                return of(text);
        return {0, UINT64_MAX};
    }
    // Whether it is the text of the string `key`.
    bool isOf(const NSObject *key) const {
        const std::string_view text = static_cast<const NSString *>(key)->view();
        if (text.size() > kLongest)
            return false;
        const ShortText other = of(text);
        return first == other.first && rest == other.rest;
    }
};

// The number of the entry in a place of the group that the hash leads to.
inline std::uint32_t &HashTable::indexAt(std::uint32_t hash, int place) const {
    return groups_[hash & mask_].indexes[place];
}

HashTable::~HashTable() {
    removeAll();
}

// Looks for a key with that hash. What is usual is decided here without a loop or a call: there is no
// candidate in the group where the key should be, or the first one is a short string as the key is.
__attribute__((always_inline)) inline HashTable::Entry *HashTable::lookUp(const NSObject *key,
                                                                          std::uint32_t hash) const {
    const Group &group = groups_[hash & mask_];
    const std::uint32_t places = group.placesWith(tagOf(hash));
    if (places == 0) {
        if (group.passedBy == 0) [[likely]]
            return nullptr;
    } else {
        const std::uint32_t index = indexAt(hash, std::countr_zero(places));
        Entry *const entry = &entries_[index];
        if (entry->key == key)
            return entry;
        if (texts_)
            return findByText(key, hash, index);
        if (isPlainString(key) && isPlainString(entry->key) && areEqualShortTexts(key, entry->key)) [[likely]]
            return entry;
    }
    return findWithHash(key, hash);
}

// As above in a large table, the first candidate being the entry at `index`.
HashTable::Entry *HashTable::findByText(const NSObject *key, std::uint32_t hash, std::uint32_t index) const {
    if (isPlainString(key) && texts_[index].isOf(key)) [[likely]]
        return &entries_[index];
    return findWithHash(key, hash);
}

HashTable::Entry *HashTable::findWithHash(const NSObject *key, std::uint32_t hash) const {
    std::uint32_t place = 0;
    while (Entry *const entry = nextWithHash(hash, place)) {
        // The comparison may be a client's code, which may change the table.
        NSObject *const candidate = entry->key;
        const auto index = static_cast<std::uint32_t>(entry - entries_);
        const Kept kept(isPlainString(key) ? keptOf(candidate) : candidate);
        if (candidate == key || key->isEqual(candidate))
            return index < used_ && entries_[index].key == candidate ? &entries_[index]
                                                                     : entryOf(candidate, hash);
    }
    return nullptr;
}

// The entry of that very key, wherever it stands now; null when it is gone.
HashTable::Entry *HashTable::entryOf(const NSObject *key, std::uint32_t hash) const {
    std::uint32_t place = 0;
    Entry *entry = nextWithHash(hash, place);
    while (entry && entry->key != key)
        entry = nextWithHash(hash, place);
    return entry;
}

HashTable::Entry *HashTable::findUnhashed(const NSObject *key) const {
    const Kept kept(keptOf(key));
    return lookUp(key, hashOf(key));
}

__attribute__((always_inline)) inline HashTable::Entry *HashTable::findHere(const NSObject *key) const {
    if (isPlainString(key)) [[likely]]
        if (const std::uint32_t hash = static_cast<const NSString *>(key)->knownHash()) [[likely]]
            return lookUp(key, hash);
    return findUnhashed(key);
}

HashTable::Entry *HashTable::find(const NSObject *key) const {
    return findHere(key);
}

NSObject *HashTable::valueFor(const NSObject *key) const {
    const Entry *const entry = findHere(key);
    return entry ? entry->value : nullptr;
}

namespace {

// Looks at all keys with the text's hash. A string to compare with is made for keys of other classes only.
[[gnu::noinline]] HashTable::Entry *findTextSlowly(const HashTable &table, std::string_view text) {
    const std::uint32_t hash = text::hashBytes(text.data(), text.size());
    std::uint32_t place = 0;
    while (HashTable::Entry *const entry = table.nextWithHash(hash, place)) {
        if (!isPlainString(entry->key))
            return table.find(NSString::initWith(text).get());
        if (static_cast<const NSString *>(entry->key)->view() == text)
            return entry;
    }
    return nullptr;
}

} // namespace

// The few hashes of a small table are looked through one by one. Which one it will be is predicted, so that
// the processor goes on to what is found without waiting, as it must for what it computes.
HashTable::Entry *HashTable::findText(std::string_view text) const {
    constexpr std::uint32_t kFew = 16;
    if (used_ > kFew || text.size() > sizeof(std::uint64_t))
        return findTextSlowly(*this, text);
    const std::uint64_t word = text::loadShort(text.data(), text.size());
    std::uint32_t *const end = hashes_ + used_;
    const std::uint32_t *const hash = std::find(hashes_, end, text::hashWord(word, text.size()));
    if (hash == end)
        return nullptr;
    Entry *const entry = &entries_[hash - hashes_];
    if (!entry->key || !isPlainString(entry->key))
        return findTextSlowly(*this, text);
    const std::string_view key = static_cast<const NSString *>(entry->key)->view();
    const bool isText = key.size() == text.size() && text::loadShort(key.data(), key.size()) == word;
    return isText ? entry : findTextSlowly(*this, text);
}

HashTable::Entry *HashTable::nextWithHash(std::uint32_t hash, std::uint32_t &place) const {
    // The place in the first group and in those behind it, all counted as if a group had sixteen places.
    constexpr std::uint32_t kStep = 16;
    if (count_ == 0)
        return nullptr;
    while (place / kStep <= mask_) {
        const std::uint32_t from = hash + place / kStep;
        const Group &group = groups_[from & mask_];
        std::uint32_t places = group.placesWith(tagOf(hash)) & ~0U << place % kStep;
        for (; places; places &= places - 1) {
            const int at = std::countr_zero(places);
            const std::uint32_t index = indexAt(from, at);
            if (hashes_[index] != hash)
                continue;
            place = place / kStep * kStep + static_cast<std::uint32_t>(at) + 1;
            return &entries_[index];
        }
        place = group.passedBy ? (place / kStep + 1) * kStep : (mask_ + 1) * kStep;
    }
    return nullptr;
}

// Notes in the index that the key with that hash stands in the entry; there is room.
void HashTable::enter(std::uint32_t hash, std::uint32_t index) noexcept {
    for (std::uint32_t i = hash;; ++i) {
        Group &group = groups_[i & mask_];
        const std::uint32_t free = group.placesWith(0);
        if (!free) {
            ++group.passedBy;
            continue;
        }
        const int place = std::countr_zero(free);
        group.take(place, tagOf(hash));
        indexAt(i, place) = index;
        return;
    }
}

// Takes the entry out of the index.
void HashTable::leave(std::uint32_t hash, std::uint32_t index) noexcept {
    for (std::uint32_t i = hash;; ++i) {
        Group &group = groups_[i & mask_];
        for (std::uint32_t places = group.placesWith(tagOf(hash)); places; places &= places - 1) {
            const int place = std::countr_zero(places);
            if (indexAt(i, place) == index) {
                group.tags[place] = 0;
                return;
            }
        }
        --group.passedBy;
    }
}

HashTable::Entry &HashTable::entryFor(NSObject *key, bool *isNew) {
    const Kept kept(keptOf(key));
    const std::uint32_t hash = hashOf(key);
    const std::uint32_t before = moves;
    Entry *entry = lookUp(key, hash);
    // An equal key that came or moved while others were compared may have been passed by. It is looked for
    // once more only, because comparisons that always change the table would have no end.
    if (!entry && moves != before) [[unlikely]]
        entry = findWithHash(key, hash);
    if (entry)
        return *entry;
    if (isNew)
        *isNew = true;
    if (used_ == capacity_) {
        const bool staysAsLarge = count_ + count_ / 4 < capacity_; // without its holes
        growCapacity(staysAsLarge ? capacity_ / 2 : capacity_, std::max(count_ + 1, kLeastCapacity),
                     kMostEntries,
                     [this](std::uint64_t capacity) { rebuild(static_cast<std::uint32_t>(capacity)); });
    }
    const std::uint32_t index = used_++;
    entries_[index] = {key->retain(), nullptr};
    hashes_[index] = hash;
    if (texts_)
        texts_[index] = ShortText::ofKey(key);
    enter(hash, index);
    ++count_;
    ++moves;
    return entries_[index];
}

HashTable::Entry &HashTable::entryForCopyOf(NSObject *key) {
    if (dispatchKey(key) == plainStringKeys.immutable) // its copy is itself
        return entryFor(key);
    const Kept kept(keptOf(key));
    if (Entry *const entry = find(key))
        return *entry;
    const Kept copy(key->copy());
    if (!copy.get())
        throw InvalidArgumentException(
            "NSDictionary setObject:forKey: must have a key whose copy is not nil.");
    return entryFor(copy.get());
}

void HashTable::remove(Entry *entry) {
    const Entry removed = *entry;
    const auto index = static_cast<std::uint32_t>(entry - entries_);
    *entry = {nullptr, nullptr};
    leave(hashes_[index], index);
    --count_;
    if (index == first_)
        while (first_ < used_ && !entries_[first_].key)
            ++first_;
    // Last, because a destructor may come back to this table.
    removed.key->release();
    if (removed.value)
        removed.value->release();
}

void HashTable::removeAll() noexcept {
    Entry *const entries = std::exchange(entries_, nullptr);
    const std::uint32_t used = std::exchange(used_, 0);
    const std::size_t bytes = bytesFor(capacity_, mask_ + 1);
    hashes_ = nullptr;
    texts_ = nullptr;
    groups_ = &noGroup;
    mask_ = capacity_ = count_ = first_ = 0;
    for (std::uint32_t i = 0; i < used; ++i) {
        if (!entries[i].key) // NOLINT(clang-analyzer-core.NullDereference): there are as many entries as used
            continue;
        entries[i].key->release();
        if (entries[i].value)
            entries[i].value->release();
    }
    freeBuffer(entries, bytes);
}

void HashTable::swap(HashTable &other) noexcept {
    ++moves;
    std::swap(entries_, other.entries_);
    std::swap(hashes_, other.hashes_);
    std::swap(texts_, other.texts_);
    std::swap(groups_, other.groups_);
    std::swap(mask_, other.mask_);
    std::swap(capacity_, other.capacity_);
    std::swap(used_, other.used_);
    std::swap(count_, other.count_);
    std::swap(first_, other.first_);
}

void HashTable::reserve(std::uint32_t count) {
    if (count > capacity_)
        rebuild(count);
}

// Throws std::bad_alloc for more than an object can have, which 32 bits couldn't count either.
std::size_t HashTable::bytesFor(std::uint32_t capacity, std::uint32_t groups) {
    const std::size_t bytesAnEntry =
        sizeof(Entry) + sizeof *hashes_ + (capacity < kLargeCapacity ? 0 : sizeof(ShortText));
    const std::size_t rounding = capacity < kLargeCapacity ? 0 : sizeof(Group) - alignof(Group);
    const std::uint64_t bytes =
        std::uint64_t{capacity} * bytesAnEntry + std::uint64_t{groups} * sizeof(Group) + rounding;
    if (bytes > PTRDIFF_MAX)
        throw std::bad_alloc();
    return static_cast<std::size_t>(bytes);
}

// Begins an empty table for `capacity` entries, an even number; the old one's memory is the caller's to free.
void HashTable::allocate(std::uint32_t capacity) {
    const std::uint32_t groups =
        capacity <= Group::kPlaces ? 1 : std::bit_ceil((capacity + kEntriesAGroup - 1) / kEntriesAGroup);
    entries_ = static_cast<Entry *>(allocateBuffer(bytesFor(capacity, groups)));
    auto groupsAt = reinterpret_cast<std::uintptr_t>(entries_ + capacity);
    if (capacity >= kLargeCapacity)
        groupsAt = (groupsAt + sizeof(Group) - 1) & ~(sizeof(Group) - 1);
    groups_ = reinterpret_cast<Group *>(groupsAt);
    texts_ = capacity < kLargeCapacity ? nullptr : reinterpret_cast<ShortText *>(groups_ + groups);
    hashes_ =
        reinterpret_cast<std::uint32_t *>(texts_ ? static_cast<void *>(texts_ + capacity) : groups_ + groups);
    std::memset(static_cast<void *>(groups_), 0, groups * sizeof(Group));
    mask_ = groups - 1;
    capacity_ = capacity;
    used_ = first_ = 0;
}

// Moves the entries into a table for `capacity` of them, without the holes.
void HashTable::rebuild(std::uint32_t capacity) {
    if (capacity > kMostEntries)
        throw InvalidArgumentException("NSMutableDictionary must have fewer entries.");
    Entry *const oldEntries = entries_;
    const std::uint32_t *const oldHashes = hashes_;
    const ShortText *const oldTexts = texts_;
    const std::uint32_t oldUsed = used_;
    const std::size_t oldBytes = bytesFor(capacity_, mask_ + 1);
    allocate((capacity + 1) & ~1U);
    ++moves;
    for (std::uint32_t i = 0; i < oldUsed; ++i) {
        NSObject *const key =
            oldEntries[i].key; // NOLINT(clang-analyzer-core.NullDereference): there are so many
        if (!key)
            continue;
        entries_[used_] = oldEntries[i];
        hashes_[used_] = oldHashes[i];
        if (texts_)
            texts_[used_] = oldTexts ? oldTexts[i] : ShortText::ofKey(key);
        enter(oldHashes[i], used_++);
    }
    freeBuffer(oldEntries, oldBytes);
}

} // namespace qb
