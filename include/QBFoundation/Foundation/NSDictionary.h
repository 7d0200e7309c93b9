// Collections of values by key.
#ifndef QBFOUNDATION_FOUNDATION_NSDICTIONARY_H
#define QBFOUNDATION_FOUNDATION_NSDICTIONARY_H

#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Value.h>

#include <cstdint>
#include <initializer_list>
#include <utility>

class NSMutableDictionary;

namespace qb {
class PropertyListReader;
}

/// Values by key, in the order in which the keys were first put in; it does not change.
///
/// Keys are copied (the copy of an immutable value is the value itself) and compared with `isEqual:`; values
/// are retained. Equality of dictionaries ignores the order. Makers that meet a nil key or value throw
/// InvalidArgumentException.
class QB_EXPORT NSDictionary : public NSObject {
public:
    /// A value and its key.
    using Pair = std::pair<id, id>;

    NSDictionary() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns a dictionary of {key, value} pairs, owned; the last value of a key that stands twice counts.
    static Ref<NSDictionary> initWith(std::initializer_list<Pair> keysAndValues);
    static NSDictionary *dictionaryWith(std::initializer_list<Pair> keysAndValues) {
        return initWith(keysAndValues).autorelease();
    }

    static NSDictionary *dictionary() { return dictionaryWith({}); }
    static NSDictionary *dictionaryWithObjectForKey(id object, id key) {
        return dictionaryWith({{key, object}});
    }
    static NSDictionary *dictionaryWithDictionary(NSDictionary *other) {
        return initWithDictionary(other).autorelease();
    }
    /// Returns a dictionary of each object under the key at its place.
    /// Throws InvalidArgumentException when there are more of the ones than of the others.
    static NSDictionary *dictionaryWithObjectsForKeys(NSArray *objects, NSArray *forKeys) {
        return initWithObjectsForKeys(objects, forKeys).autorelease();
    }
    static NSDictionary *dictionaryWithObjectsForKeys(const id *objects, const id *forKeys,
                                                      std::uint32_t count) {
        return initWithObjectsForKeys(objects, forKeys, count).autorelease();
    }
    /// Returns a dictionary of the arguments: an object, its key, the next object, its key …
    template <class... T>
    static NSDictionary *dictionaryWithObjectsAndKeys(const T &...objectsAndKeys) {
        return initWithObjectsAndKeys(objectsAndKeys...).autorelease();
    }
    static Ref<NSDictionary> init() { return initWith({}); }
    static Ref<NSDictionary> initWithDictionary(NSDictionary *other);
    /// Returns a dictionary with copies of the values when `copyItems` is YES.
    static Ref<NSDictionary> initWithDictionary(NSDictionary *other, BOOL copyItems);
    static Ref<NSDictionary> initWithObjectsForKeys(NSArray *objects, NSArray *forKeys);
    static Ref<NSDictionary> initWithObjectsForKeys(const id *objects, const id *forKeys,
                                                    std::uint32_t count);
    template <class... T>
    static Ref<NSDictionary> initWithObjectsAndKeys(const T &...objectsAndKeys) {
        return qb::withArgList(
            [](const qb::ArgList &list) {
                return qb::init<NSDictionary>(&NSDictionary::setUpWithObjectsAndKeys, list);
            },
            objectsAndKeys...);
    }

    // --- Entries ---

    std::uint32_t count() const noexcept { return table_.count(); }
    /// Returns the value of `key`; nil when there is none, and for nil.
    id objectForKey(id key) const override;
    /// Returns the values of `keys`, in that order, with `notFoundMarker` for keys that are not there.
    /// Throws InvalidArgumentException when the marker is wanted and nil.
    virtual NSArray *objectsForKeys(NSArray *keys, id notFoundMarker) const;
    /// The keys in their order, autoreleased.
    virtual NSArray *allKeys() const;
    /// The keys whose values are equal to `object`, autoreleased, never nil.
    virtual NSArray *allKeysForObject(id object) const;
    /// The keys in the ascending order of their values, autoreleased; see `NSArray`
    /// `sortedArrayUsingSelector:`.
    virtual NSArray *keysSortedByValueUsingSelector(SEL comparator) const;
    /// The values in the order of their keys, autoreleased.
    virtual NSArray *allValues() const;
    virtual NSEnumerator *keyEnumerator() const;
    virtual NSEnumerator *objectEnumerator() const;
    /// The entries as they lie in memory, as long as the dictionary lives and does not change.
    const qb::HashTable &table() const noexcept { return table_; }

    // --- Comparison ---

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToDictionary(NSDictionary *other) const;
    std::uint32_t hash() const override { return count(); }

    // --- Files ---

    /// Returns the dictionary whose property-list text the file holds. Returns nil after 100039 (path) for a
    /// file that is not there, 100023 (path, system text) for one that can't be read, and 900004 (path, line,
    /// column, what was expected) for a malformed one or another value. Throws InvalidArgumentException when
    /// `path` is nil, as `writeToFile` does.
    static NSDictionary *dictionaryWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSDictionary> initWithContentsOfFile(NSString *path) {
        return qb::init<NSDictionary>(&NSDictionary::setUpWithContentsOfFile, path);
    }
    /// Writes the dictionary's property-list text through a `QBFileOutputStream`.
    ///
    /// Returns NO after its errors, and after 900003 (depth) when the dictionary is nested too deeply; the
    /// file then is as it was.
    virtual BOOL writeToFile(NSString *path, BOOL atomically) const;

    // --- What every value answers ---

    BOOL containsData() const override { return count() != 0; }
    NSString *asPhpString() const override;
    NSString *description() const override;
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override;
    Ref<NSDictionary> copy() const;
    Ref<NSMutableDictionary> mutableCopy() const;
    void encodeWithCoder(NSCoder *coder) const override;
    void writeOnOutputStream(QBOutputStream *stream) override;

    // --- Range-for ---

    /// Goes over the entries as {key, value} pairs. Throws InvalidUseOfMethodException when the dictionary
    /// was changed meanwhile.
    class Iterator {
    public:
        explicit Iterator(const NSDictionary *dictionary)
            : next_(dictionary->table_.begin()), end_(dictionary->table_.end()), dictionary_(dictionary),
              mutations_(dictionary->mutations_) {
            skipHoles();
        }
        Pair operator*() const { return {next_->key, next_->value}; }
        Iterator &operator++() {
            if (dictionary_->mutations_ != mutations_)
                throwMutated();
            ++next_;
            skipHoles();
            return *this;
        }
        bool atEnd() const { return next_ == end_; }
        bool operator!=(const Iterator &) const { return !atEnd(); }

    private:
        void skipHoles() {
            while (next_ != end_ && !next_->key)
                ++next_;
        }

        const qb::HashTable::Entry *next_, *end_; // of the table as it was; looked at as long as it is
        const NSDictionary *dictionary_;
        std::uint32_t mutations_;
    };
    Iterator begin() const { return Iterator(this); }
    Iterator end() const { return Iterator(this); }

protected:
    /// The initialiser `initWithDictionary:`.
    virtual BOOL setUpWithDictionary(NSDictionary *other);
    /// The initialiser `initWithContentsOfFile:`.
    virtual BOOL setUpWithContentsOfFile(NSString *path);
    BOOL setUpWithCoder(NSCoder *coder) override;
    virtual BOOL setUpWithCopies(NSDictionary *other, BOOL copyItems);
    virtual BOOL setUpWithObjectForKey(id object, id key);
    virtual BOOL setUpWithObjectsForKeys(NSArray *objects, NSArray *forKeys);
    virtual BOOL setUpWithBuffers(const id *objects, const id *forKeys, std::uint32_t count);
    virtual BOOL setUpWithObjectsAndKeys(const qb::ArgList &objectsAndKeys);
    /// Stores a value; `key` is copied when it is new.
    void store(id key, id value);

    [[noreturn]] static void throwMutated();

private:
    friend class NSMutableDictionary;
    friend class qb::PropertyListReader; // which fills the table without looking each key up twice

    std::uint32_t mutations_ = 0; // of keys, counted so that enumerations notice them
    qb::HashTable table_;
};

/// Values by key that can change.
class QB_EXPORT NSMutableDictionary : public NSDictionary {
public:
    NSMutableDictionary() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableDictionary> initWith(std::initializer_list<Pair> keysAndValues);
    static NSMutableDictionary *dictionaryWith(std::initializer_list<Pair> keysAndValues) {
        return initWith(keysAndValues).autorelease();
    }
    static NSMutableDictionary *dictionary() { return init().autorelease(); }
    static NSMutableDictionary *dictionaryWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static NSMutableDictionary *dictionaryWithDictionary(NSDictionary *other) {
        return initWithDictionary(other).autorelease();
    }
    static Ref<NSMutableDictionary> init() { return initWith({}); }
    /// Returns an empty dictionary with room for `capacity` keys.
    static Ref<NSMutableDictionary> initWithCapacity(std::uint32_t capacity);
    static Ref<NSMutableDictionary> initWithDictionary(NSDictionary *other);
    static NSMutableDictionary *dictionaryWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSMutableDictionary> initWithContentsOfFile(NSString *path) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithContentsOfFile, path);
    }
    static Ref<NSMutableDictionary> initWithObjectsForKeys(NSArray *objects, NSArray *forKeys);
    static NSMutableDictionary *dictionaryWithObjectForKey(id object, id key) {
        return dictionaryWith({{key, object}});
    }
    static NSMutableDictionary *dictionaryWithObjectsForKeys(NSArray *objects, NSArray *forKeys) {
        return initWithObjectsForKeys(objects, forKeys).autorelease();
    }
    template <class... T>
    static NSMutableDictionary *dictionaryWithObjectsAndKeys(const T &...objectsAndKeys) {
        return qb::withArgList(
            [](const qb::ArgList &list) {
                return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithObjectsAndKeys, list)
                    .autorelease();
            },
            objectsAndKeys...);
    }

    /// Stores `object` under `key`. Throws InvalidArgumentException when one of them is nil.
    void setObjectForKey(id object, id key) override;
    /// Removes the key and its value; a key that is not there changes nothing, nil neither.
    void removeObjectForKey(id key) override;
    virtual void removeAllObjects();
    virtual void removeObjectsForKeys(NSArray *keys);
    /// Stores each entry of `other`; nil stores nothing.
    virtual void addEntriesFromDictionary(NSDictionary *other);
    /// Replaces all entries by those of `other`; nil removes them.
    virtual void setDictionary(NSDictionary *other);

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);
};

#endif
