// Ordered collections.
#ifndef QBFOUNDATION_FOUNDATION_NSARRAY_H
#define QBFOUNDATION_FOUNDATION_NSARRAY_H

#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Foundation/NSString.h>

#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <span>

class NSDictionary;
class NSMutableArray;
class QBEnumFilter;

/// A list of objects that does not change. It retains its elements, none of which is nil.
///
/// A short list stands behind the object in the same piece of memory. Makers that meet a nil element throw
/// InvalidArgumentException.
class QB_EXPORT NSArray : public NSObject {
public:
    NSArray() noexcept = default;
    ~NSArray() override;

    using NSObject::operator new, NSObject::operator delete; // g++ wants both in one class
    static void *operator new(std::size_t size) { return NSObject::operator new(size); }
    static void operator delete(void *memory, std::size_t size) noexcept;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns an array of those elements, owned.
    static Ref<NSArray> initWith(std::span<const id> elements);
    static Ref<NSArray> initWith(std::initializer_list<id> elements) {
        return initWith(std::span(elements.begin(), elements.size()));
    }
    /// Returns an array of those elements, autoreleased.
    static NSArray *arrayWith(std::initializer_list<id> elements) { return initWith(elements).autorelease(); }
    static NSArray *arrayWith(std::span<const id> elements) { return initWith(elements).autorelease(); }
    /// As `initWith`, of the class that was asked.
    static Ref<NSArray> initOfClass(Class *asked, std::span<const id> elements);

    static NSArray *array() { return arrayWith(std::span<const id>()); }
    static NSArray *arrayWithObject(id object) { return arrayWith({object}); }
    template <class... T>
    static NSArray *arrayWithObjects(T... objects) {
        return arrayWith({static_cast<id>(objects)...});
    }
    static NSArray *arrayWithArray(NSArray *other);
    static Ref<NSArray> init() { return initWith(std::span<const id>()); }
    static Ref<NSArray> initWithArray(NSArray *other);
    /// Returns an array of copies of the elements when `copyItems` is YES, else of the elements themselves.
    static Ref<NSArray> initWithArray(NSArray *other, BOOL copyItems);

    // --- Elements ---

    std::uint32_t count() const noexcept { return count_; }
    /// Returns the element at `index`. Throws NSRangeException when there is none.
    virtual id objectAtIndex(std::uint32_t index) const;
    /// Returns the first element; nil of an empty array.
    virtual id firstObject() const { return count_ ? elements_[0] : nullptr; }
    /// Returns the last element; nil of an empty array.
    virtual id lastObject() const { return count_ ? elements_[count_ - 1] : nullptr; }
    virtual NSEnumerator *objectEnumerator() const;
    virtual NSEnumerator *reverseObjectEnumerator() const;
    /// Copies the elements, not retained, to `buffer`, which has room for them.
    virtual void getObjects(id *buffer) const;
    /// As above, those of `range`. Throws NSRangeException when the range is not inside the array, as all
    /// that take a range do.
    virtual void getObjects(id *buffer, NSRange range) const;
    /// The elements, as long as the array lives and does not change.
    std::span<const id> view() const noexcept { return {elements_, count_}; }

    // --- Searching ---

    virtual BOOL containsObject(id object) const { return indexOfObject(object) != NSNotFound; }
    /// Returns the index of the first element that is equal to `object`; NSNotFound when there is none.
    virtual std::uint32_t indexOfObject(id object) const;
    virtual std::uint32_t indexOfObject(id object, NSRange inRange) const;
    /// Returns the index of the first element that is `object` itself; NSNotFound when there is none.
    virtual std::uint32_t indexOfObjectIdenticalTo(id object) const;
    virtual std::uint32_t indexOfObjectIdenticalTo(id object, NSRange inRange) const;
    /// Returns the first element that is equal to an element of `other`; nil when there is none.
    virtual id firstObjectCommonWithArray(NSArray *other) const;

    // --- Further arrays ---

    virtual NSArray *subarrayWithRange(NSRange range) const;
    virtual NSArray *arrayByAddingObject(id object) const;
    /// Returns the elements and behind them those of `other`; nil adds none.
    virtual NSArray *arrayByAddingObjectsFromArray(NSArray *other) const;
    /// Returns the descriptions of the elements as one text with `separator` between them; nil separates
    /// nothing.
    virtual NSString *componentsJoinedByString(NSString *separator) const;

    /// Returns the strings among the elements whose `pathExtension` is one of those.
    virtual NSArray *pathsMatchingExtensions(NSArray *extensions) const;

    // --- Order ---

    /// Returns the elements in ascending order; equal ones keep their order. `comparator` is what `compare:`
    /// is: each element is sent it with another one as argument.
    virtual NSArray *sortedArrayUsingSelector(SEL comparator) const;
    /// As above; `function` returns a number below, at or above 0 and is passed `context`.
    virtual NSArray *sortedArrayUsingFunction(int (*function)(id, id, void *), void *context) const;

    // --- Messages ---

    /// Sends each element the message.
    virtual void makeObjectsPerformSelector(SEL selector) const;
    virtual void makeObjectsPerformSelector(SEL selector, id withObject) const;

    // --- QBArrayAdditions: filtering ---
    //
    // Each sends a message by a `QBEnumFilter` or a subclass of it, to the elements or, with an object given
    // first, to that object with the element as the first value; see there for operations that are missing.

    /// Returns the answers of the elements that are objects, in order.
    virtual NSArray *filterWithSelector(SEL selector) const;
    virtual NSArray *filterWithSelector(SEL selector, id withObject) const;
    virtual NSArray *filterWithSelector(SEL selector, id withObject, id withObject2) const;
    /// Returns the object's answers to the elements that are objects, in order.
    virtual NSArray *filterWithObjectSelector(id object, SEL selector) const;
    virtual NSArray *filterWithObjectSelector(id object, SEL selector, id withObject) const;
    virtual NSArray *filterWithObjectSelector(id object, SEL selector, id withObject, id withObject2) const;
    /// Returns the elements whose answer is neither 0 nor nil, in order.
    virtual NSArray *selectWithSelector(SEL selector) const;
    virtual NSArray *selectWithSelector(SEL selector, id withObject) const;
    virtual NSArray *selectWithObject(id object, SEL selector) const;
    virtual NSArray *selectWithObject(id object, SEL selector, id withObject) const;
    /// Returns the elements whose answer is 0 or nil, in order.
    virtual NSArray *rejectWithSelector(SEL selector) const;
    virtual NSArray *rejectWithSelector(SEL selector, id withObject) const;
    /// Returns the elements that answer `isNotNil` with YES: all but null objects.
    virtual NSArray *nonNil() const;
    /// Makes the array's enumerator the source of `filter` and returns the filter; nil for nil.
    virtual QBEnumFilter *objectEnumeratorFilteredWith(QBEnumFilter *filter) const;
    /// Returns what `filter` yields of the elements; nil for nil.
    virtual NSArray *objectsFilteredWith(QBEnumFilter *filter) const;

    /// Whether all answers are neither 0 nor nil. YES of an empty array, as the next two.
    virtual BOOL allTrue(SEL selector) const;
    virtual BOOL allTrue(SEL selector, id withObject, id withObject2) const;
    virtual BOOL allTrueWithObject(id object, SEL selector) const;
    /// Whether all answers are 0 or nil.
    virtual BOOL allFalse(SEL selector) const;
    virtual BOOL allFalse(SEL selector, id withObject, id withObject2) const;
    /// Whether no error is pending after any of the messages. An element without the operation makes it NO,
    /// and so does an error that was pending before.
    virtual BOOL allOk(SEL selector) const;
    virtual BOOL allOk(SEL selector, id withObject, id withObject2) const;
    virtual BOOL allOkWithObject(id object, SEL selector) const;

    // --- Comparison ---

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToArray(NSArray *other) const;
    /// All elements count, and a bounded number of those inside containers among them.
    std::uint32_t hash() const override;
    friend bool operator==(const NSArray &a, const NSArray &b) { return a.isEqual(b.self()); }

    // --- QBArrayAdditions: sets ---

    // Elements count as the same when they are equal (`isEqual:`, `hash`); of those the first one is
    // returned. Takes time in proportion to the number of elements, as long as few different ones have the
    // same hash.

    /// Returns the different elements in their order.
    virtual NSMutableArray *uniqueArray() const;
    /// As above, without the elements that are equal to `object`; nil leaves out none.
    virtual NSMutableArray *uniqueArrayWithoutObj(id object) const;
    /// As above, with those elements only whose answer to the message is neither 0 nor nil; a null selector
    /// asks none. An element that was left out leaves out those that are equal to it, unasked.
    virtual NSMutableArray *uniqueArrayWithoutObj(id object, SEL selectedWithSelector) const;
    virtual NSMutableArray *uniqueArraySelectedWithSelector(SEL selector) const;
    /// Returns the different elements of both arrays, those of `array` last; nil has none.
    virtual NSMutableArray *plus(NSArray *array) const;
    /// Returns the different elements that are not in `array`; nil has none.
    virtual NSMutableArray *minus(NSArray *array) const;
    /// Returns the elements of `array`, in its order and each as often as it stands there, that the receiver
    /// has too; nil when there are none.
    virtual NSArray *commonElementsWithArray(NSArray *array) const;
    virtual BOOL hasCommonElementsWithArray(NSArray *array) const;
    /// Returns the elements, each as often as it is there, that are not in `goodElements`; nil when there
    /// are none.
    virtual NSArray *badElementsForGoodElements(NSArray *goodElements) const;
    /// Returns the index of the first element whose answer to the message with `object` as its value is
    /// neither 0 nor nil; NSNotFound when there is none.
    virtual std::uint32_t indexOfObjectUsingSelector(SEL selector, id withObject) const;

    // --- QBArrayAdditions: reshaping ---

    /// Returns the elements behind the first one; nil when there are none.
    virtual NSArray *shift() const;
    /// Returns the elements from `index` on, the receiver itself for 0; nil when there are none.
    virtual NSArray *subarrayFromIndex(std::uint32_t index) const;
    /// Returns the elements in reverse order; the receiver itself when it is empty.
    virtual NSArray *reversedArray() const;
    /// Returns the elements with `object` between each two of them. Throws InvalidArgumentException when it
    /// is nil and there are two.
    virtual NSMutableArray *joinedBy(id object) const;
    /// Returns a dictionary of each element under the key at its place in `keys`; nil when there are more of
    /// the ones than of the others.
    virtual NSDictionary *dictWithSchema(NSArray *keys) const;
    /// Returns strings with the bytes of `count` C strings; none for a negative count. Throws
    /// InvalidArgumentException when one of them, or the list of them, is null. The selector is
    /// `arrayWithCStrings::`.
    static NSMutableArray *arrayWithCStrings(int count, const char *const *texts);
    /// Returns a mutable copy in which `replace:with:recursive:` has replaced `object`, in the containers
    /// inside it too. nil after 900003 (depth) when they are nested more than 256 levels deep.
    NSMutableArray *asArrayWith(id object, id replacedBy) const {
        return asArrayWith(object, replacedBy, /*recursive=*/YES);
    }
    virtual NSMutableArray *asArrayWith(id object, id replacedBy, BOOL recursive) const;

    // --- QBArrayAdditions: texts ---

    /// Returns the C strings of the elements with that of `separator` (nil: nothing) between them. Elements
    /// that are no strings stand with their `cStringValue`. A NUL in the first element ends the text.
    virtual NSString *stringsJoinedByString(NSString *separator) const;
    /// Returns the texts of the elements as components of a path; those without a `stringValue` are none.
    virtual NSString *pathString() const;
    /// As above, with "/" in front.
    virtual NSString *absolutePathString() const;
    /// Returns the elements as text, in parentheses and with `operatorText` between them: "(a OR b)". A
    /// single element is returned itself; nil when there are none. Nothing in the elements is escaped.
    virtual id expressionWithOperator(NSString *operatorText) const;
    id orExpression() const { return expressionWithOperator(" OR "_ns); }
    id andExpression() const { return expressionWithOperator(" AND "_ns); }
    /// Returns the elements in ascending order of what they have under `key` (`objectForKey:`), equal ones in
    /// their own order, those that have nothing last.
    ///
    /// Values are compared without regard to case when both can be, else by `compare:`, which throws
    /// InvalidArgumentException for values of different kinds, else by their texts. With ".REVERSE" behind
    /// the key, in any case, the whole order is the other way round.
    virtual NSArray *caseInsensitiveSortedArrayByKey(NSString *key) const;

    // --- Files ---

    /// Returns the array whose property-list text the file holds. Returns nil after 100039 (path) for a file
    /// that is not there, 100023 (path, system text) for one that can't be read, and 900004 (path, line,
    /// column, what was expected) for a malformed one or another value. Throws InvalidArgumentException when
    /// `path` is nil, as `writeToFile` does.
    static NSArray *arrayWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSArray> initWithContentsOfFile(NSString *path);
    /// Writes the array's property-list text through a `QBFileOutputStream`.
    ///
    /// Returns NO after its errors, and after 900003 (depth) when the array is nested too deeply; the file
    /// then is as it was.
    virtual BOOL writeToFile(NSString *path, BOOL atomically) const;

    // --- What every value answers ---

    BOOL containsData() const override { return count_ != 0; }
    NSArray *asArray() const override { return static_cast<NSArray *>(self()); }
    NSString *asPhpString() const override;
    NSString *description() const override;
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override;
    Ref<NSArray> copy() const;
    Ref<NSMutableArray> mutableCopy() const;
    void encodeWithCoder(NSCoder *coder) const override;
    void writeOnOutputStream(QBOutputStream *stream) override;
    /// Returns the absolute path of the elements as components; no directory.
    QBPath *asQbPath() const override;

    // --- Range-for ---

    /// Goes over the elements and keeps the array. Throws InvalidUseOfMethodException when it was changed
    /// meanwhile.
    class Iterator {
    public:
        Iterator(const NSArray *array, std::uint32_t index)
            : array_(const_cast<NSArray *>(array)), index_(index), mutations_(array->mutations_) {}
        id operator*() const { return array_->elements_[index_]; }
        Iterator &operator++() {
            if (array_->mutations_ != mutations_)
                throwMutated();
            ++index_;
            return *this;
        }
        bool atEnd() const { return index_ >= array_->count_; }
        bool operator==(std::default_sentinel_t) const { return atEnd(); }

    private:
        Ref<NSArray> array_;
        std::uint32_t index_;
        std::uint32_t mutations_;
    };
    Iterator begin() const { return {this, 0}; }
    std::default_sentinel_t end() const { return {}; }

protected:
    /// The initialiser of subclasses from elements that are not nil.
    virtual BOOL setUpWithObjects(const id *objects, std::uint32_t count);
    BOOL setUpWithCoder(NSCoder *coder) override;

    [[noreturn]] static void throwMutated();

    /// Moves the elements into new memory with room for `capacity` and, before them, `front`. Throws
    /// std::bad_alloc.
    void moveElements(std::size_t front, std::size_t capacity);

    std::uint32_t count_ = 0;
    std::uint32_t mutations_ = 0; // counted, so that enumerations notice them
    id *elements_ = nullptr;
    std::uint32_t capacity_ = 0; // the room from the first element on
    std::uint32_t front_ = 0;    // the room before it; without any room the elements stand behind the object

    /// Throws NSRangeException, which names `selector`, unless `range` lies inside the array.
    static void requireRange(const NSArray *array, NSRange range, const char *selector);

private:
    class ReverseEnumerator;

    static Ref<NSArray> makeShort(std::span<const id> elements);
    void freeElements() noexcept;
};

/// A list of objects that can change.
class QB_EXPORT NSMutableArray : public NSArray {
public:
    NSMutableArray() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableArray> initWith(std::span<const id> elements);
    static Ref<NSMutableArray> initWith(std::initializer_list<id> elements) {
        return initWith(std::span(elements.begin(), elements.size()));
    }
    static NSMutableArray *arrayWith(std::initializer_list<id> elements) {
        return initWith(elements).autorelease();
    }
    static NSMutableArray *arrayWith(std::span<const id> elements) {
        return initWith(elements).autorelease();
    }
    static NSMutableArray *array() { return init().autorelease(); }
    static NSMutableArray *arrayWithObject(id object) { return arrayWith({object}); }
    template <class... T>
    static NSMutableArray *arrayWithObjects(T... objects) {
        return arrayWith({static_cast<id>(objects)...});
    }
    static NSMutableArray *arrayWithArray(NSArray *other) { return initWithArray(other).autorelease(); }
    /// Returns an empty array with room for `capacity` elements.
    static NSMutableArray *arrayWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<NSMutableArray> init() { return initWith(std::span<const id>()); }
    static Ref<NSMutableArray> initWithCapacity(std::uint32_t capacity);
    static Ref<NSMutableArray> initWithArray(NSArray *other);
    static NSMutableArray *arrayWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSMutableArray> initWithContentsOfFile(NSString *path);
    static Ref<NSMutableArray> initWithArray(NSArray *other, BOOL copyItems);

    /// Appends. Throws InvalidArgumentException when `object` is nil, as all that take an element do.
    virtual void addObject(id object);
    /// Appends each element of `other`; nil appends nothing.
    virtual void addObjectsFromArray(NSArray *other);
    /// Inserts in front of the element at `index`, or behind the last at `count`. Throws NSRangeException
    /// beyond it. Of a long array the elements of the shorter side are moved, so that both ends are quick,
    /// here as in `removeObjectAtIndex:`.
    virtual void insertObject(id object, std::uint32_t atIndex);
    /// Throws NSRangeException when there is no such element, as the next ones do.
    virtual void removeObjectAtIndex(std::uint32_t index);
    virtual void replaceObjectAtIndex(std::uint32_t index, id withObject);
    virtual void exchangeObjectAtIndex(std::uint32_t index, std::uint32_t withObjectAtIndex);
    virtual void removeLastObject();
    virtual void removeAllObjects();
    /// Removes every element that is equal to `object`, in `inRange` only when it is given; nil removes none.
    virtual void removeObject(id object);
    virtual void removeObject(id object, NSRange inRange);
    /// Removes every element that is `object` itself.
    virtual void removeObjectIdenticalTo(id object);
    virtual void removeObjectIdenticalTo(id object, NSRange inRange);
    /// Removes every element that is equal to one of `other`; nil removes none.
    virtual void removeObjectsInArray(NSArray *other);
    /// Throws NSRangeException, with the array unchanged, when the range is not inside it, as the next does.
    virtual void removeObjectsInRange(NSRange range);
    /// Replaces the elements of `range` by those of `other`; nil puts none in their place.
    virtual void replaceObjectsInRange(NSRange range, NSArray *withObjectsFromArray);
    virtual void replaceObjectsInRange(NSRange range, NSArray *withObjectsFromArray, NSRange sourceRange);
    /// Replaces all elements by those of `other`; nil removes them.
    virtual void setArray(NSArray *other);

    /// Sorts as `sortedArrayUsingSelector:` does. An exception from a comparison leaves the array as it was.
    /// Throws InvalidUseOfMethodException, with nothing sorted, when a comparison changed the array.
    virtual void sortUsingSelector(SEL comparator);
    virtual void sortUsingFunction(int (*function)(id, id, void *), void *context);

    // --- QBArrayAdditions ---

    /// Appends `object` unless it is nil.
    virtual void addObjectIfNotNil(id object);
    /// Appends `object` unless it is nil or the null object.
    virtual void addObjectIfNotQBNil(id object);
    /// Appends `object`, for nil the null object.
    virtual void addObjectAndQBNilIfNil(id object);
    /// Appends each element of `array`; nil appends nothing.
    virtual void addObjectsFrom(NSArray *array) { addObjectsFromArray(array); }
    /// Removes the first element, if there is one.
    virtual void removeFirstObject();
    /// Removes every element that is equal to an earlier one; see `uniqueArray`.
    virtual void makeUnique();
    /// Replaces every element that is equal to `object`.
    ///
    /// When `recursive` is YES, arrays and dictionaries among the other elements are replaced by mutable
    /// copies of them in which it is replaced too. Raises 900003 (depth) when they are nested more than 256
    /// levels deep; throws InvalidArgumentException when there is something to replace and `with` is nil; the
    /// array is unchanged then.
    virtual void replace(id object, id with, BOOL recursive);

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);
    void reserve(std::uint64_t capacity);
    /// Makes room for `count` elements, and beyond as `addObject:` does.
    void reserveGrowing(std::uint64_t count);

private:
    bool hasRoomInFront();
    void moveBegin(std::ptrdiff_t places, std::uint32_t count);

    template <class Predicate>
    void removeWhere(NSRange range, Predicate isRemoved);
    template <class Sort>
    void sortInPlace(Sort sort);
};

template <>
struct std::hash<NSArray> : qb::ValueHash {};
template <>
struct std::hash<NSMutableArray> : qb::ValueHash {};

#endif
