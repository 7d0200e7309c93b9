// The root of all classes.
#ifndef QBFOUNDATION_FOUNDATION_NSOBJECT_H
#define QBFOUNDATION_FOUNDATION_NSOBJECT_H

#include <QBFoundation/Runtime/Memory.h>
#include <QBFoundation/Runtime/Ref.h>
#include <QBFoundation/Runtime/Types.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <string_view> // has std::hash

class NSArray;
class NSCoder;
class NSData;
class NSDictionary;
class NSInvocation;
class NSNumber;
class NSString;
class Protocol;
class QBOutputStream;
class QBPath;

namespace qb {
class Method;
class Value;

/// Runs the destructor of an object whose last reference was released. A chain of objects that own each other
/// is taken apart step by step when it has taken 128 KiB of stack, so that its length never meets the end.
QB_EXPORT void destroy(NSObject *object) noexcept;

/// Makes a default-constructed `T` and lets `setUp` set it up with the arguments: the one place where objects
/// come into being. Returns null, with the object destroyed, when `setUp` answers NO.
template <class T, class Base, class Result, class... Parameters, class... Arguments>
Ref<T> init(Result (Base::*setUp)(Parameters...), Arguments &&...arguments) {
    Ref<T> object = Ref<T>::adopt(new T);
    Base *base = object.get();
    if (!(base->*setUp)(static_cast<Arguments &&>(arguments)...))
        return {};
    return object;
}
} // namespace qb

/// How two values are ordered.
enum NSComparisonResult : std::int32_t {
    NSOrderedAscending = -1,
    NSOrderedSame = 0,
    NSOrderedDescending = 1
};

/// The root of all classes: a reference count, and what every object answers.
///
/// A new object has one reference. `Ref` and the pools do the counting; retain and release are for them, for
/// subclasses and for tests. Each class overrides `classObject` and has a static `cls`.
class QB_EXPORT NSObject {
public:
    NSObject() noexcept = default;
    NSObject(const NSObject &) = delete;
    NSObject &operator=(const NSObject &) = delete;
    virtual ~NSObject() = default;

    static void *operator new(std::size_t size) { return qb::allocateObject(size); }
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *memory, std::size_t size) noexcept { qb::freeObject(memory, size); }
    // For classes that need more alignment than the free lists give.
    static void *operator new(std::size_t size, std::align_val_t alignment) {
        return ::operator new(size, alignment);
    }
    static void operator delete(void *memory, std::align_val_t alignment) noexcept {
        ::operator delete(memory, alignment);
    }

    static Class *cls();

    /// Returns a new object of this class.
    static Ref<NSObject> init();

    // --- Class ---

    /// Returns the object's class (selector `class`).
    virtual Class *classObject() const { return cls(); }
    /// Returns the superclass of the object's class; nil for the root.
    virtual Class *superclass() const;
    BOOL isKindOfClass(Class *other) const;
    BOOL isMemberOfClass(Class *other) const;
    /// Whether a message with that selector finds an operation of this object.
    virtual BOOL respondsToSelector(SEL selector) const;
    /// Whether the object's class or a superclass of it has adopted `protocol`.
    virtual BOOL conformsToProtocol(Protocol *protocol) const;
    /// Returns the operation that a message with that selector runs; null when there is none. All objects of
    /// a class answer alike: a place that sends the message asks one of them and remembers it for the class.
    virtual const qb::Method *methodForSelector(SEL selector) const;

    // --- Memory ---

    /// Adds a reference. A count that reaches 2^31 stays there, and the object lives for ever.
    id retain() noexcept {
        if (referenceCount_ < kImmortal)
            ++referenceCount_;
        return this;
    }
    /// Gives back a reference; the last one destroys the object.
    void release() noexcept {
        if (referenceCount_ < kImmortal && --referenceCount_ == 0)
            qb::destroy(this);
    }
    /// Hands a reference of the caller to the current pool, which gives it back at its end. Returns the
    /// object.
    id autorelease();
    std::uint32_t retainCount() const noexcept { return referenceCount_; }

    // --- Identity and copies ---

    /// Whether both are the same value; the same object unless a class says otherwise. Equal objects have
    /// equal hashes.
    virtual BOOL isEqual(id other) const;
    virtual std::uint32_t hash() const;
    /// Orders the values. Only classes with an order respond to the selector; here it throws
    /// InvalidArgumentException.
    virtual NSComparisonResult compare(id other) const;
    /// Returns an immutable object of equal value, the object itself when it is immutable.
    /// Throws InvalidUseOfMethodException when the class has no copies.
    Ref<NSObject> copy() const { return copyWithZone(nullptr); }
    /// Returns a mutable object of equal value; else as `copy`.
    Ref<NSObject> mutableCopy() const { return mutableCopyWithZone(nullptr); }
    /// What `copy` returns. `zone` is ignored.
    virtual Ref<NSObject> copyWithZone(void *zone) const;
    virtual Ref<NSObject> mutableCopyWithZone(void *zone) const;
    /// Returns the object itself when it is mutable or has no mutable copies, else a mutable copy,
    /// autoreleased.
    virtual id makeMutable() const;

    // --- Messages ---

    /// Sends the message; see `send`.
    id performSelector(SEL selector);
    id performSelector(SEL selector, id withObject);
    id performSelector(SEL selector, id withObject, id withObject2);
    /// Called for a message that the object does not respond to. Throws InvalidArgumentException unless
    /// overridden.
    virtual void forwardInvocation(NSInvocation *invocation);
    /// Throws InvalidArgumentException: the object has no operation of that name.
    virtual void doesNotRecognizeSelector(SEL selector) const;
    /// Throws InvalidUseOfMethodException: the operation is one that each subclass must have for itself.
    virtual void subclassResponsibility(SEL selector) const;

    // --- Values ---

    virtual BOOL isNil() const { return NO; }
    virtual BOOL isNotNil() const { return YES; }
    /// Whether there is something in the value: characters, bytes, elements, entries. YES here.
    virtual BOOL containsData() const;
    /// Returns a text for people, autoreleased: "<" class name, address ">" unless a class says
    /// otherwise; nil for the null object alone.
    virtual NSString *description() const;
    /// Returns the description as `locale` wants it. No class of the library depends on the locale.
    virtual NSString *descriptionWithLocale(NSDictionary *locale) const;
    /// Returns the value as text; the description unless a class says otherwise.
    virtual NSString *stringValue() const;
    /// Returns the C string of `stringValue`, valid as long as the current pool.
    virtual const char *cStringValue() const;
    /// Returns the text's bytes, autoreleased; of data the data itself.
    virtual NSData *asData() const;
    /// Returns the text as a number object; see the strings and numbers.
    virtual NSNumber *asNumber() const;
    virtual BOOL isIsoDateTimeString() const { return NO; }
    /// Returns the `standardizedISODateTimeString` of the value as text.
    virtual id standardizedISODateTimeString() const;

    // --- ArrayAndEnumeratorCompatibility ---

    /// Returns an array of this object alone, autoreleased; an array returns itself.
    virtual NSArray *asArray() const;
    /// Returns the next element of an enumerator; nil for other objects.
    virtual id nextObject() { return nullptr; }

    // --- PhpString ---

    /// Returns the value as the text of a PHP literal, autoreleased: numbers as they are, arrays and
    /// dictionaries as "array(…)" with their elements in order.
    ///
    /// All else has none: strings, and objects by way of theirs, are "not implemented correctly".
    /// Returns nil after 900003 (depth) when containers are nested more than 512 levels deep.
    virtual NSString *asPhpString() const;

    // --- Key access ---

    // A dictionary's keys are those of its entries. The keys of other objects are the names of their
    // operations: `title` answers the key "title", `setTitle:` stores under it. What takes arguments or
    // returns nothing is no value, nor are the operations that `NSObject` itself has.

    /// Returns the value under `key`, a text: the object that the operation returns, or a number object or
    /// string of what it returns; borrowed or autoreleased. nil after 900010 (class, key, selector) when
    /// there is no such operation, and whenever the value is nil.
    virtual id objectForKey(id key) const;
    /// Stores `object` under `key`; numbers, number texts and `QBBool`s serve where the operation takes a
    /// number.
    ///
    /// Raises 900010 (class, key, selector) when there is no such operation, 900011 (class, key, the object's
    /// class) when it does not take the object; nothing is stored then.
    virtual void setObjectForKey(id object, id key);
    /// Stores nil under `key`, as `setObject:forKey:` does.
    virtual void removeObjectForKey(id key);

    // --- deepAccess ---

    // A dotted key names a value inside values: its first component, up to the first ".", is a key of the
    // receiver, the rest is a dotted key of the value there. Components for arrays are indexes, digits only;
    // the empty one is 0. There is no way to name a key that has a "." in it. Subclasses' own forms are asked
    // for the rest of the key, but not when 64 such questions are inside each other already.

    /// Returns the value at `key`; nil when there is none, without an error unless an object on the way has
    /// no such key: see `objectForKey:`.
    virtual id deepObjectForKey(NSString *key) const;
    /// Stores `object` at `key`: under the last component's key, or in a mutable array in front of the
    /// element with that index, or behind the last one.
    ///
    /// Values on the way are made mutable (`makeMutable`) and stored back, but elements of arrays only when
    /// they have no mutable copies. Nothing is stored when a component is no index of a mutable array. Raises
    /// 30010 (the dotted key that was asked of the receiver where it happened) when there is no value on the
    /// way; missing dictionaries are not made.
    virtual void setDeepObject(id object, NSString *forKey);
    /// Removes the value at `key`. Values on the way are made mutable as above; nothing happens when one is
    /// missing.
    virtual void removeDeepObjectForKey(NSString *key);

    // --- Paths ---

    /// Returns the value as a path; see `QBPath`. Only paths, strings, numbers and arrays respond to the
    /// selector; here it throws InvalidArgumentException.
    virtual QBPath *asQbPath() const;

    // --- OutputStreaming ---

    /// Writes the value on `stream` by the stream's operation for its type; `_writeNSObject` for those that
    /// have none. Nothing on nil. Every object conforms to the protocol of this name, and of the next.
    virtual void writeOnOutputStream(QBOutputStream *stream);

    // --- PropertyListOutputStreaming ---

    /// Writes the value on a stream of property-list text: as above, and data as its `description`.
    virtual void writeOnPropertyListOutputStream(QBOutputStream *stream);

    // --- Archiving ---

    /// Writes the object's state. Throws InvalidUseOfMethodException when the class has no archived form, and
    /// InvalidArgumentException when `coder` is nil.
    virtual void encodeWithCoder(NSCoder *coder) const;

protected:
    /// The initialiser `init`: NO means that the object is released and the result nil.
    virtual BOOL setUp() { return YES; }
    /// The initialiser `initWithCoder:`.
    virtual BOOL setUpWithCoder(NSCoder *coder);

    /// The object as an argument or result; operations that only look at the object are const all the same.
    id self() const { return const_cast<NSObject *>(this); }
    /// Excepts the object from counting: constants, shared instances and objects on the stack.
    constexpr void makeImmortal() noexcept { referenceCount_ = kImmortal; }

private:
    static constexpr std::uint32_t kImmortal = 0x80000000U;

    std::uint32_t referenceCount_ = 1;
};

namespace qb {

/// Returns `object` as a `T`; nil when it is nil or of another class, as the null object is for each `T` but
/// NSObject.
template <class T>
T *castOrNil(id object) {
    return object && object->isKindOfClass(T::cls()) ? static_cast<T *>(object) : nullptr;
}

/// The `std::hash` of a class whose objects are values: `hash`.
struct ValueHash {
    std::size_t operator()(const NSObject &value) const { return value.hash(); }
};

} // namespace qb

/// Writes the description of `object`, or "(null)".
QB_EXPORT std::ostream &operator<<(std::ostream &stream, const NSObject &object);

#endif
