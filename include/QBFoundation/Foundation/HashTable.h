// The table behind dictionaries and sets.
#ifndef QBFOUNDATION_FOUNDATION_HASHTABLE_H
#define QBFOUNDATION_FOUNDATION_HASHTABLE_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace qb {

/// Keys with values, in the order in which the keys came.
///
/// The entries stand one after the other, so that going over them is a walk through memory. The index beside
/// them, in the same allocation, is made of groups of places: a key's hash chooses a group, whose tags, seven
/// bits of the hashes each, are compared all at once (open addressing by groups as in Bronson and Shi,
/// "Open-sourcing F14", 2019). A removed key leaves a hole among the entries until the table is built anew.
/// Keys and values are retained.
class QB_EXPORT HashTable {
public:
    struct Entry {
        NSObject *key; // null: a hole
        NSObject *value;
    };

    HashTable() noexcept = default;
    HashTable(const HashTable &) = delete;
    HashTable &operator=(const HashTable &) = delete;
    ~HashTable();

    std::uint32_t count() const noexcept { return count_; }

    /// Returns the entry of a key that is equal to `key`; null when there is none.
    Entry *find(const NSObject *key) const;
    /// Returns the value of the key that is equal to `key`; null when there is none.
    NSObject *valueFor(const NSObject *key) const;
    /// Returns the entry of a key that is equal to the string of those bytes, which is not made.
    Entry *findText(std::string_view text) const;

    /// Returns the entries whose keys have that hash, one a call, then null. `place` is 0 at first and is
    /// kept by the caller; the table may change from one call to the next.
    Entry *nextWithHash(std::uint32_t hash, std::uint32_t &place) const;

    /// Returns the entry of `key`, new with a null value when there is none; then `*isNew` becomes true and
    /// `key` is retained. Throws std::bad_alloc, with the table unchanged.
    Entry &entryFor(NSObject *key, bool *isNew = nullptr);
    /// As above, but a new key is copied.
    Entry &entryForCopyOf(NSObject *key);

    /// Removes an entry, which `find` has returned.
    void remove(Entry *entry);
    void removeAll() noexcept;

    /// Exchanges the contents of the tables.
    void swap(HashTable &other) noexcept;

    /// Makes room for `count` entries. Throws std::bad_alloc, with the table unchanged.
    void reserve(std::uint32_t count);

    /// The entries in their order, holes among them; the first one is none, unless all are.
    Entry *begin() const noexcept { return entries_ + first_; }
    Entry *end() const noexcept { return entries_ + used_; }
    /// All of them from the very first place on, each of which keeps its number when others go.
    Entry *entries() const noexcept { return entries_; }

private:
    struct Group;
    struct ShortText;
    static constexpr std::uint32_t kMostEntries = 0x08000000;
    static Group noGroup; // the index of an empty table, so that looking there needs no question

    inline std::uint32_t &indexAt(std::uint32_t hash, int place) const;
    inline Entry *lookUp(const NSObject *key, std::uint32_t hash) const;
    inline Entry *findHere(const NSObject *key) const;
    Entry *findUnhashed(const NSObject *key) const;
    Entry *findByText(const NSObject *key, std::uint32_t hash, std::uint32_t index) const;
    Entry *findWithHash(const NSObject *key, std::uint32_t hash) const;
    Entry *entryOf(const NSObject *key, std::uint32_t hash) const;
    void enter(std::uint32_t hash, std::uint32_t index) noexcept;
    void leave(std::uint32_t hash, std::uint32_t index) noexcept;
    void rebuild(std::uint32_t capacity);
    void allocate(std::uint32_t capacity);
    static std::size_t bytesFor(std::uint32_t capacity, std::uint32_t groups);

    Entry *entries_ = nullptr;
    std::uint32_t *hashes_ = nullptr; // of the entries' keys, which are dearer to ask
    Group *groups_ = &noGroup;
    ShortText *texts_ = nullptr; // of the entries' keys, in large tables
    std::uint32_t mask_ = 0;     // one less than the number of groups
    std::uint32_t capacity_ = 0;
    std::uint32_t used_ = 0;
    std::uint32_t count_ = 0;
    std::uint32_t first_ = 0; // entries before it are holes, which a queue would walk over each time
};

/// Goes over the elements of a container that has a table, and keeps the container. Throws
/// InvalidUseOfMethodException when that was changed meanwhile.
template <class Container>
class TableIterator {
public:
    explicit TableIterator(const Container *container)
        : next_(container->table_.begin()), left_(container->table_.count()),
          container_(const_cast<Container *>(container)), mutations_(container->mutations_) {
        if (left_ != 0)
            skipHoles();
    }
    auto operator*() const { return Container::elementOf(*next_); }
    TableIterator &operator++() {
        if (container_->mutations_ != mutations_)
            Container::throwMutated();
        ++next_;
        if (--left_ != 0)
            skipHoles();
        return *this;
    }
    bool atEnd() const { return left_ == 0; }
    bool operator==(std::default_sentinel_t) const { return atEnd(); }

private:
    void skipHoles() {
        while (!next_->key)
            ++next_;
    }

    const HashTable::Entry *next_; // of the table as it was; looked at as long as it is
    std::uint32_t left_;
    Ref<Container> container_;
    std::uint32_t mutations_;
};

} // namespace qb

#endif
