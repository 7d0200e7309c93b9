// Collections of values by key.
#ifndef QBFOUNDATION_FOUNDATION_NSDICTIONARY_H
#define QBFOUNDATION_FOUNDATION_NSDICTIONARY_H

#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Value.h>

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <iterator>
#include <span>
#include <utility>

class NSDate;
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
    /// Copies the values and the keys, not retained, to buffers with room for them; null for what is not
    /// wanted.
    virtual void getObjects(id *objects, id *andKeys) const;
    virtual NSEnumerator *keyEnumerator() const;
    virtual NSEnumerator *objectEnumerator() const;
    /// The entries as they lie in memory, as long as the dictionary lives and does not change.
    const qb::HashTable &table() const noexcept { return table_; }

    // --- QBDictAdditions: reading ---

    /// Returns the value of `key`; the default when there is none.
    virtual id objectForKey(id key, id withDefault) const;
    using NSObject::deepObjectForKey;
    /// As above, for a dotted key.
    virtual id deepObjectForKey(NSString *key, id withDefault) const;
    /// Return the value's `intValue` and `boolValue`; the default when there is none. Throw
    /// InvalidArgumentException for a value that has no such operation.
    virtual std::int32_t intValueForKey(id key, std::int32_t withDefault) const;
    virtual BOOL boolValueForKey(id key, BOOL withDefault) const;
    /// Returns the value of `key`, else the default, as a path: if it is relative, as a path below the
    /// directory under "basedir", or below `defaultBasePath` when there is none. nil without a value; one
    /// that is no string counts as its text.
    virtual NSString *pathForKey(id key, NSString *withDefault, NSString *defaultBasePath) const;
    /// Returns the value of `key`; the key itself when there is none.
    virtual id translateKey(id key) const { return objectForKey(key, key); }
    /// Returns the value's text; nil when there is none.
    virtual NSString *stringForKey(id key) const;
    /// Returns the keys, each followed by its value.
    virtual NSArray *array() const;
    /// Returns the values of `keys`, in that order; keys without a value are passed over.
    virtual NSArray *arrayUsingKeysFromArray(NSArray *keys) const;
    /// Returns the texts of all keys and values, those of dictionaries inside too, sorted.
    NSArray *allKeysAndValues() const { return allKeysAndValuesRecursive(/*recursive=*/YES, /*sorted=*/YES); }
    /// Returns the texts of all keys, then of all values, sorted by `compare:` if `sorted` is YES. If
    /// `recursive` is YES, a value that has this operation stands as its keys and values. nil after 900003
    /// (depth) when such values are nested more than 256 levels deep.
    virtual NSArray *allKeysAndValuesRecursive(BOOL recursive, BOOL sorted) const;

    // --- QBDictAdditions: making ---

    /// Returns a dictionary of each object under itself.
    static NSDictionary *dictWithObjects(NSArray *objects) {
        return qb::init<NSDictionary>(&NSDictionary::setUpWithObjects, objects).autorelease();
    }
    /// Returns the values that `dict` has for `keys`; keys without a value are passed over.
    static NSDictionary *dictFrom(NSDictionary *dict, NSArray *keys) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFrom, dict, keys).autorelease();
    }
    /// As above. Throws InvalidArgumentException when a key has no value.
    static NSDictionary *dictFromDictWithKeys(NSDictionary *dict, NSArray *keys) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFromDictWithKeys, dict, keys).autorelease();
    }
    /// As `dictFrom`; keys that have the null object are passed over too.
    static NSDictionary *dictFromDictWithGoodKeys(NSDictionary *dict, NSArray *keys) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFromDictWithGoodKeys, dict, keys).autorelease();
    }
    /// As above, with what `dict` answers to the message with the key instead of the value.
    static NSDictionary *dictFromDictWithGoodKeys(NSDictionary *dict, NSArray *keys, SEL selector) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFromAnswers, dict, keys, selector).autorelease();
    }
    /// As above, with the texts of the values.
    static NSDictionary *stringDictFromDict(NSDictionary *dict, NSArray *goodKeys) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFromTexts, dict, goodKeys).autorelease();
    }
    /// Returns a dictionary of the elements of `array`, a key and its value in turn.
    ///
    /// The last value of a key counts. A key at the end that has no value gets the null object. Each value is
    /// traced on the channel `misc`.
    static NSDictionary *dictFromArray(NSArray *array) { return dictFromArray(array, nullptr); }
    /// As above; the keys in `supportedMultiValues` have a mutable array of all their values, in order.
    static NSDictionary *dictFromArray(NSArray *array, NSArray *supportedMultiValues) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFromArray, array, supportedMultiValues)
            .autorelease();
    }
    /// As `dictFromArray`. Returns nil after 900020 (index, what was expected) when the last key has no
    /// value, or a key is there twice that is not in `supportedMultiValues`.
    static NSDictionary *dictFromCorrectArray(NSArray *array) { return dictFromCorrectArray(array, nullptr); }
    static NSDictionary *dictFromCorrectArray(NSArray *array, NSArray *supportedMultiValues) {
        return qb::init<NSDictionary>(&NSDictionary::setUpFromCorrectArray, array, supportedMultiValues)
            .autorelease();
    }
    /// Returns a dictionary of keys, each followed by its value; a key whose value is nil is left out, and
    /// the last value of a key counts. Throws InvalidArgumentException when the last key has no value.
    template <class... T>
    static NSDictionary *dictWithKeyValues(const T &...keysAndValues) {
        return qb::withArgList(
            [](const qb::ArgList &list) {
                return qb::init<NSDictionary>(&NSDictionary::setUpWithKeyValues, list).autorelease();
            },
            keysAndValues...);
    }

    /// Returns the entries whose value is not the null object.
    virtual NSDictionary *goodDict() const;
    /// As above, with the texts of the values.
    virtual NSDictionary *stringDict() const;
    /// Returns the entries of `keys`; those that are not there are passed over.
    virtual NSMutableDictionary *subDictWithKeys(NSArray *keys) const;
    /// Returns the entries of all other keys.
    virtual NSMutableDictionary *subDictWithoutKeys(NSArray *keys) const;
    /// Returns the values under their keys' texts with `prefix` in front. Throws InvalidArgumentException
    /// when it is nil.
    virtual NSDictionary *dictByPrefixingKeysWith(NSString *prefix) const;
    /// Returns the entries of both; for a key of both, that of `dict`. nil has none.
    virtual NSDictionary *dictByAddingDict(NSDictionary *dict) const;

    // --- QBDictAdditions: checks ---

    /// Returns the keys that are not in the array `goodKeys`, then those in the array `disallowNilForKeys`
    /// that have no value, or the null object; nil when there are none. nil or the null object for an array
    /// checks nothing.
    virtual NSArray *badKeysForGoodKeys(id goodKeys, id disallowNilForKeys) const;
    NSArray *badKeysForGoodKeys(id goodKeys) const { return badKeysForGoodKeys(goodKeys, nullptr); }
    NSArray *badKeysForDisallowNilKeys(id disallowNilKeys) const {
        return badKeysForGoodKeys(nullptr, disallowNilKeys);
    }
    /// Returns those of `keys` that have a value, in their order; nil when there are none.
    virtual NSArray *keysContainedBy(NSArray *keys) const;

    // --- QBDictAdditions: replacing ---

    /// Returns a mutable copy in which `replace:with:recursive:` has replaced `object`, in the containers
    /// inside it too. nil after 900003 (depth) when they are nested more than 256 levels deep.
    NSMutableDictionary *asDictionaryWith(id object, id replacedBy) const {
        return asDictionaryWith(object, replacedBy, /*recursive=*/YES);
    }
    virtual NSMutableDictionary *asDictionaryWith(id object, id replacedBy, BOOL recursive) const;

    // --- Environment ---

    /// Returns the environment of the process as it is now: values by name, strings both, in its own order.
    /// Of a name that stands there twice the first value counts, as for the C library.
    static NSDictionary *dictionaryWithEnvironment() { return initWithEnvironment().autorelease(); }
    static Ref<NSDictionary> initWithEnvironment() {
        return qb::init<NSDictionary>(&NSDictionary::setUpWithEnvironment);
    }
    /// Returns an environment that was written to a file, which is read up to and including the first empty
    /// line, or to its end.
    ///
    /// Each line is a name, "=" and a value, both with "%" and two hexadecimal digits for bytes that could
    /// not stand there, such as line ends, "%" and "+"; "+" is a blank. Of a name that stands there twice the
    /// first value counts. Returns nil after 900021 (line, what was expected) for a line without "=" or of
    /// more than 8192 bytes, and after 100023 ("<unknown>", system text) when the file can't be read. Throws
    /// InvalidArgumentException when `file` is null.
    static NSDictionary *dictionaryWithEncodedEnvironmentFromFile(std::FILE *file) {
        return initWithEncodedEnvironmentFromFile(file).autorelease();
    }
    static Ref<NSDictionary> initWithEncodedEnvironmentFromFile(std::FILE *file) {
        return qb::init<NSDictionary>(&NSDictionary::setUpWithEncodedEnvironmentFromFile, file);
    }

    // --- Comparison ---

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToDictionary(NSDictionary *other) const;
    /// All entries count, and a bounded number of those inside containers among them.
    std::uint32_t hash() const override;
    friend bool operator==(const NSDictionary &a, const NSDictionary &b) { return a.isEqual(b.self()); }

    // --- Files ---

    /// Returns the entries as lines "key = value;" without braces, strings as property lists write them and
    /// other values as their `stringValue`, autoreleased; `NSString` `propertyListFromStringsFileFormat`
    /// reads it.
    virtual NSString *descriptionInStringsFileFormat() const;
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

    // --- File attributes ---

    /// Return the entries of what `NSFileManager` `fileAttributesAtPath:traverseLink:` returns; nil and 0 for
    /// those that are not there.
    virtual std::uint64_t fileSize() const;
    virtual NSString *fileType() const;
    virtual NSDate *fileModificationDate() const;
    virtual std::uint32_t filePosixPermissions() const;
    virtual std::uint32_t fileOwnerAccountID() const;
    virtual std::uint32_t fileGroupOwnerAccountID() const;
    virtual std::uint64_t fileSystemNumber() const;
    virtual std::uint64_t fileSystemFileNumber() const;

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

    /// Goes over the entries as {key, value} pairs.
    using Iterator = qb::TableIterator<NSDictionary>;
    Iterator begin() const { return Iterator(this); }
    std::default_sentinel_t end() const { return {}; }

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

    // The makers of the additions.
    virtual BOOL setUpWithObjects(NSArray *objects) { return setUpWithObjectsForKeys(objects, objects); }
    virtual BOOL setUpFrom(NSDictionary *dict, NSArray *keys);
    virtual BOOL setUpFromDictWithKeys(NSDictionary *dict, NSArray *keys);
    virtual BOOL setUpFromDictWithGoodKeys(NSDictionary *dict, NSArray *goodKeys);
    virtual BOOL setUpFromAnswers(NSDictionary *dict, NSArray *goodKeys, SEL selector);
    virtual BOOL setUpFromTexts(NSDictionary *dict, NSArray *goodKeys);
    virtual BOOL setUpFromArray(NSArray *array, NSArray *supportedMultiValues);
    virtual BOOL setUpFromCorrectArray(NSArray *array, NSArray *supportedMultiValues);
    virtual BOOL setUpWithKeyValues(const qb::ArgList &keysAndValues);
    virtual BOOL setUpWithEnvironment();
    virtual BOOL setUpWithEncodedEnvironmentFromFile(std::FILE *file);

    /// Stores a value; `key` is copied when it is new.
    void store(id key, id value);
    /// As above, but leaves the value that the key has.
    void storeNew(id key, id value);

    static Pair elementOf(const qb::HashTable::Entry &entry) { return {entry.key, entry.value}; }
    [[noreturn]] static void throwMutated();

private:
    friend Iterator;
    friend class NSMutableDictionary;
    friend class qb::PropertyListReader; // which fills the table without looking each key up twice

    // The tables of the additions that have makers.
    static std::span<const qb::Method> makingMethods();
    static std::span<const qb::Method> keyListMethods();
    static std::span<const qb::Method> environmentMethods();

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
    static Ref<NSMutableDictionary> initWithDictionary(NSDictionary *other, BOOL copyItems);
    static NSMutableDictionary *dictionaryWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSMutableDictionary> initWithContentsOfFile(NSString *path) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithContentsOfFile, path);
    }
    static Ref<NSMutableDictionary> initWithObjectsForKeys(NSArray *objects, NSArray *forKeys);
    static Ref<NSMutableDictionary> initWithObjectsForKeys(const id *objects, const id *forKeys,
                                                           std::uint32_t count);
    static NSMutableDictionary *dictionaryWithObjectForKey(id object, id key) {
        return dictionaryWith({{key, object}});
    }
    static NSMutableDictionary *dictionaryWithObjectsForKeys(NSArray *objects, NSArray *forKeys) {
        return initWithObjectsForKeys(objects, forKeys).autorelease();
    }
    static NSMutableDictionary *dictionaryWithObjectsForKeys(const id *objects, const id *forKeys,
                                                             std::uint32_t count) {
        return initWithObjectsForKeys(objects, forKeys, count).autorelease();
    }
    template <class... T>
    static Ref<NSMutableDictionary> initWithObjectsAndKeys(const T &...objectsAndKeys) {
        return qb::withArgList(
            [](const qb::ArgList &list) {
                return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithObjectsAndKeys, list);
            },
            objectsAndKeys...);
    }
    template <class... T>
    static NSMutableDictionary *dictionaryWithObjectsAndKeys(const T &...objectsAndKeys) {
        return initWithObjectsAndKeys(objectsAndKeys...).autorelease();
    }

    /// Stores `object` under `key`, of which a new entry has a copy. Throws InvalidArgumentException when one
    /// of them, or that copy, is nil.
    void setObjectForKey(id object, id key) override;
    /// Removes the key and its value; a key that is not there changes nothing, nil neither.
    void removeObjectForKey(id key) override;
    virtual void removeAllObjects();
    virtual void removeObjectsForKeys(NSArray *keys);
    /// Stores each entry of `other`; nil stores nothing.
    virtual void addEntriesFromDictionary(NSDictionary *other);
    /// Replaces all entries by those of `other`; nil removes them.
    virtual void setDictionary(NSDictionary *other);

    // --- safeAdding ---

    /// Stores `object` under `key`; nil removes the key.
    virtual void setObjectIfNotNil(id object, id forKey);
    /// As above; the null object removes the key too.
    virtual void setObjectIfNotQBNil(id object, id forKey);
    /// Stores `object` under `key`; for nil, and any object that stands for it, the null object.
    virtual void setObjectAndQBNilIfIsNil(id object, id forKey);

    // --- arrayAdding ---

    /// Stores each object under the key at its place. Throws InvalidArgumentException, with nothing stored,
    /// when there are more of the ones than of the others.
    virtual void setObjects(NSArray *objects, NSArray *forKeys);
    /// Stores `object` under each key.
    virtual void setObjectForKeys(id object, NSArray *forKeys);

    // --- QBDictAdditions ---

    /// Replaces every value that is equal to `object`; see `NSMutableArray`.
    virtual void replace(id object, id with, BOOL recursive);
    /// Removes the keys that are strings and begin with one of the strings in `prefixes`.
    virtual void removeObjectsForKeysWithPrefixes(NSArray *prefixes);

    // The makers of the additions, typed for this class.
    static NSMutableDictionary *dictWithObjects(NSArray *objects) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithObjects, objects).autorelease();
    }
    static NSMutableDictionary *dictFrom(NSDictionary *dict, NSArray *keys) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFrom, dict, keys).autorelease();
    }
    static NSMutableDictionary *dictFromDictWithKeys(NSDictionary *dict, NSArray *keys) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFromDictWithKeys, dict, keys)
            .autorelease();
    }
    static NSMutableDictionary *dictFromDictWithGoodKeys(NSDictionary *dict, NSArray *keys) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFromDictWithGoodKeys, dict, keys)
            .autorelease();
    }
    static NSMutableDictionary *dictFromDictWithGoodKeys(NSDictionary *dict, NSArray *keys, SEL selector) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFromAnswers, dict, keys, selector)
            .autorelease();
    }
    static NSMutableDictionary *stringDictFromDict(NSDictionary *dict, NSArray *goodKeys) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFromTexts, dict, goodKeys)
            .autorelease();
    }
    static NSMutableDictionary *dictFromArray(NSArray *array) { return dictFromArray(array, nullptr); }
    static NSMutableDictionary *dictFromArray(NSArray *array, NSArray *supportedMultiValues) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFromArray, array,
                                             supportedMultiValues)
            .autorelease();
    }
    static NSMutableDictionary *dictFromCorrectArray(NSArray *array) {
        return dictFromCorrectArray(array, nullptr);
    }
    static NSMutableDictionary *dictFromCorrectArray(NSArray *array, NSArray *supportedMultiValues) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpFromCorrectArray, array,
                                             supportedMultiValues)
            .autorelease();
    }
    template <class... T>
    static NSMutableDictionary *dictWithKeyValues(const T &...keysAndValues) {
        return qb::withArgList(
            [](const qb::ArgList &list) {
                return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithKeyValues, list)
                    .autorelease();
            },
            keysAndValues...);
    }
    static NSMutableDictionary *dictionaryWithEnvironment() { return initWithEnvironment().autorelease(); }
    static Ref<NSMutableDictionary> initWithEnvironment() {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithEnvironment);
    }
    static NSMutableDictionary *dictionaryWithEncodedEnvironmentFromFile(std::FILE *file) {
        return initWithEncodedEnvironmentFromFile(file).autorelease();
    }
    static Ref<NSMutableDictionary> initWithEncodedEnvironmentFromFile(std::FILE *file) {
        return qb::init<NSMutableDictionary>(&NSMutableDictionary::setUpWithEncodedEnvironmentFromFile, file);
    }

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);
};

template <>
struct std::hash<NSDictionary> : qb::ValueHash {};
template <>
struct std::hash<NSMutableDictionary> : qb::ValueHash {};

#endif
