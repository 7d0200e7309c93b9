// Collections of different objects.
#ifndef QBFOUNDATION_FOUNDATION_NSSET_H
#define QBFOUNDATION_FOUNDATION_NSSET_H

#include <QBFoundation/Foundation/HashTable.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <span>

class NSMutableSet;

/// Objects of which no two are equal, in the order in which they were first put in; it does not change.
///
/// Elements are retained, not copied, and compared with `isEqual:`. Equality of sets ignores the order.
/// Makers that meet a nil element throw InvalidArgumentException.
class QB_EXPORT NSSet : public NSObject {
public:
    NSSet() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns a set of those elements, owned; of equal ones the first counts.
    static Ref<NSSet> initWith(std::span<const id> elements);
    static Ref<NSSet> initWith(std::initializer_list<id> elements) {
        return initWith(std::span(elements.begin(), elements.size()));
    }
    /// Returns a set of those elements, autoreleased.
    static NSSet *setWith(std::initializer_list<id> elements) { return initWith(elements).autorelease(); }
    static NSSet *setWith(std::span<const id> elements) { return initWith(elements).autorelease(); }

    static NSSet *set() { return init().autorelease(); }
    static NSSet *setWithObject(id object) { return setWith({object}); }
    template <class... T>
    static NSSet *setWithObjects(T... objects) {
        return setWith({static_cast<id>(objects)...});
    }
    static NSSet *setWithArray(NSArray *array) { return initWithArray(array).autorelease(); }
    static NSSet *setWithSet(NSSet *other) { return initWithSet(other).autorelease(); }
    static Ref<NSSet> init() { return initWith(std::span<const id>()); }
    static Ref<NSSet> initWithArray(NSArray *array);
    static Ref<NSSet> initWithSet(NSSet *other);
    /// Returns a set of copies of the elements when `copyItems` is YES.
    static Ref<NSSet> initWithSet(NSSet *other, BOOL copyItems);

    // --- Elements ---

    std::uint32_t count() const noexcept { return table_.count(); }
    /// Returns the set's element that is equal to `object`; nil when there is none.
    virtual id member(id object) const;
    virtual BOOL containsObject(id object) const { return member(object) != nullptr; }
    /// The elements in their order, autoreleased.
    virtual NSArray *allObjects() const;
    /// Returns the first element; nil of an empty set.
    virtual id anyObject() const;
    virtual NSEnumerator *objectEnumerator() const;
    /// The elements as they lie in memory, as long as the set lives and does not change.
    const qb::HashTable &table() const noexcept { return table_; }
    /// Sends each element the message.
    virtual void makeObjectsPerformSelector(SEL selector) const;
    virtual void makeObjectsPerformSelector(SEL selector, id withObject) const;

    // --- Comparison ---

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToSet(NSSet *other) const;
    /// Whether `other` has all elements of this set.
    virtual BOOL isSubsetOfSet(NSSet *other) const;
    /// Whether the sets have an element in common.
    virtual BOOL intersectsSet(NSSet *other) const;
    /// All elements count, and a bounded number of those inside containers among them.
    std::uint32_t hash() const override;
    friend bool operator==(const NSSet &a, const NSSet &b) { return a.isEqual(b.self()); }

    // --- Further sets ---

    /// Returns a set of the elements and `object`, autoreleased.
    virtual NSSet *setByAddingObject(id object) const;
    virtual NSSet *setByAddingObjectsFromSet(NSSet *other) const;
    virtual NSSet *setByAddingObjectsFromArray(NSArray *other) const;

    // --- What every value answers ---

    BOOL containsData() const override { return count() != 0; }
    /// Returns the elements as those of an array are described.
    NSString *description() const override;
    Ref<NSObject> copyWithZone(void *zone) const override;
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override;
    Ref<NSSet> copy() const;
    Ref<NSMutableSet> mutableCopy() const;

    // --- Range-for ---

    /// Goes over the elements.
    using Iterator = qb::TableIterator<NSSet>;
    Iterator begin() const { return Iterator(this); }
    std::default_sentinel_t end() const { return {}; }

protected:
    /// The initialisers of this class and its subclasses.
    virtual BOOL setUpWithObjects(const id *objects, std::uint32_t count);
    virtual BOOL setUpWithObjectList(const qb::ArgList &objects);
    virtual BOOL setUpWithObject(id object);
    virtual BOOL setUpWithArray(NSArray *array);
    virtual BOOL setUpWithSet(NSSet *other);
    virtual BOOL setUpWithCopies(NSSet *other, BOOL copyItems);
    BOOL setUpWithCoder(NSCoder *coder) override;
    /// Adds an element that is not equal to one that is there.
    void insert(id object);

    friend Iterator;
    static id elementOf(const qb::HashTable::Entry &entry) { return entry.key; }
    [[noreturn]] static void throwMutated();

    std::uint32_t mutations_ = 0; // counted, so that enumerations notice them
    qb::HashTable table_;
};

/// Objects of which no two are equal; it can change.
class QB_EXPORT NSMutableSet : public NSSet {
public:
    NSMutableSet() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableSet> initWith(std::span<const id> elements);
    static Ref<NSMutableSet> initWith(std::initializer_list<id> elements) {
        return initWith(std::span(elements.begin(), elements.size()));
    }
    static NSMutableSet *setWith(std::initializer_list<id> elements) {
        return initWith(elements).autorelease();
    }
    static NSMutableSet *setWith(std::span<const id> elements) { return initWith(elements).autorelease(); }
    static NSMutableSet *set() { return init().autorelease(); }
    static NSMutableSet *setWithObject(id object) { return setWith({object}); }
    template <class... T>
    static NSMutableSet *setWithObjects(T... objects) {
        return setWith({static_cast<id>(objects)...});
    }
    static NSMutableSet *setWithArray(NSArray *array) { return initWithArray(array).autorelease(); }
    static NSMutableSet *setWithSet(NSSet *other) { return initWithSet(other).autorelease(); }
    /// Returns an empty set with room for `capacity` elements.
    static NSMutableSet *setWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<NSMutableSet> init() { return initWith(std::span<const id>()); }
    static Ref<NSMutableSet> initWithCapacity(std::uint32_t capacity);
    static Ref<NSMutableSet> initWithArray(NSArray *array);
    static Ref<NSMutableSet> initWithSet(NSSet *other);
    static Ref<NSMutableSet> initWithSet(NSSet *other, BOOL copyItems);

    /// Adds `object` unless an equal element is there. Throws InvalidArgumentException when it is nil.
    virtual void addObject(id object);
    virtual void addObjectsFromArray(NSArray *array);
    /// Removes the element that is equal to `object`; one that is not there changes nothing, nil neither.
    virtual void removeObject(id object);
    virtual void removeAllObjects();
    /// Adds the elements of `other`; nil adds nothing.
    virtual void unionSet(NSSet *other);
    /// Removes the elements that `other` has; nil removes nothing.
    virtual void minusSet(NSSet *other);
    /// Removes the elements that `other` does not have; nil removes all.
    virtual void intersectSet(NSSet *other);
    /// Replaces the elements by those of `other`; nil removes all.
    virtual void setSet(NSSet *other);

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);
};

template <>
struct std::hash<NSSet> : qb::ValueHash {};
template <>
struct std::hash<NSMutableSet> : qb::ValueHash {};

#endif
