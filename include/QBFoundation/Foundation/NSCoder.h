// Writing and reading the state of objects.
#ifndef QBFOUNDATION_FOUNDATION_NSCODER_H
#define QBFOUNDATION_FOUNDATION_NSCODER_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Value.h>

#include <cstdint>

/// What objects write their state to in `encodeWithCoder:`, and read it from in `initWithCoder:`
/// (`setUpWithCoder`); abstract.
///
/// A value is written from, and read into, a variable of the type that a code names: c C s S i I l L q Q for
/// signed and unsigned char, short, int, long and 64 bits, B for bool, f float, d double, * a C string, @ an
/// object, # a class, : a selector. Another code throws InvalidArgumentException. An integer may be read into
/// another type than it was written from, if it fits.
///
/// Values with keys are for coders that `allowsKeyedCoding`; with others these operations throw
/// InvalidUseOfMethodException, as all operations do for which a subclass is needed.
class QB_EXPORT NSCoder : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- In order ---

    /// Throws InvalidArgumentException when the variable is null, as the other operations with one do.
    virtual void encodeValueOfObjCType(const char *type, const void *at);
    /// Objects that are read belong to the pool, and C strings and bytes are valid as long as it.
    virtual void decodeValueOfObjCType(const char *type, void *at);
    virtual void encodeArrayOfObjCType(const char *type, std::uint32_t count, const void *at);
    virtual void decodeArrayOfObjCType(const char *type, std::uint32_t count, void *at);
    /// Write the values that the pointers behind `types` point to, one for each letter of it, and read them.
    /// Throws InvalidArgumentException when there are not as many pointers.
    template <class... T>
    void encodeValuesOfObjCTypes(const char *types, const T *...at) {
        qb::withArgList([&](const qb::ArgList &list) { encodeValuesOfObjCTypesWithArgList(types, list); },
                        at...);
    }
    template <class... T>
    void decodeValuesOfObjCTypes(const char *types, T *...at) {
        qb::withArgList([&](const qb::ArgList &list) { decodeValuesOfObjCTypesWithArgList(types, list); },
                        at...);
    }
    virtual void encodeValuesOfObjCTypesWithArgList(const char *types, const qb::ArgList &argList);
    virtual void decodeValuesOfObjCTypesWithArgList(const char *types, const qb::ArgList &argList);
    virtual void encodeBytes(const void *bytes, std::uint32_t length);
    /// Returns the bytes and stores how many; null and 0 when there are none or after an error.
    virtual const void *decodeBytesWithReturnedLength(std::uint32_t *length);
    virtual void encodeObject(id object);
    virtual id decodeObject();
    /// Writes the object that all others hang on.
    virtual void encodeRootObject(id object) { encodeObject(object); }
    /// Write and read data, and a value of a property list, as the objects that they are. What is read as
    /// data and is none is nil; what is read as a property list may be any object.
    virtual void encodeDataObject(NSData *data);
    virtual NSData *decodeDataObject();
    virtual void encodePropertyList(id propertyList) { encodeObject(propertyList); }
    virtual id decodePropertyList() { return decodeObject(); }
    /// Writes the object only if it is also written otherwise; else it reads as nil. For references to the
    /// owner.
    virtual void encodeConditionalObject(id object) { encodeObject(object); }

    // --- By key ---

    virtual BOOL allowsKeyedCoding() const { return NO; }
    /// Throws InvalidArgumentException when the object has written a value with that key already, or the key
    /// is nil.
    virtual void encodeValueOfObjCType(const char *type, const void *at, NSString *key);
    /// Without a value of that key it stores zero.
    virtual void decodeValueOfObjCType(const char *type, void *at, NSString *key);
    virtual void encodeBytes(const void *bytes, std::uint32_t length, NSString *key);
    virtual const void *decodeBytesForKey(NSString *key, std::uint32_t *returnedLength);
    virtual BOOL containsValueForKey(NSString *key) const;
    virtual void encodeConditionalObject(id object, NSString *key);

    virtual void encodeObject(id object, NSString *key);
    virtual void encodeBool(BOOL value, NSString *key);
    virtual void encodeInt(std::int32_t value, NSString *key);
    virtual void encodeInt32(std::int32_t value, NSString *key) { encodeInt(value, key); }
    virtual void encodeInt64(std::int64_t value, NSString *key);
    virtual void encodeFloat(float value, NSString *key);
    virtual void encodeDouble(double value, NSString *key);
    virtual id decodeObjectForKey(NSString *key);
    virtual BOOL decodeBoolForKey(NSString *key);
    virtual std::int32_t decodeIntForKey(NSString *key);
    virtual std::int32_t decodeInt32ForKey(NSString *key) { return decodeIntForKey(key); }
    virtual std::int64_t decodeInt64ForKey(NSString *key);
    virtual float decodeFloatForKey(NSString *key);
    virtual double decodeDoubleForKey(NSString *key);

    // --- Coder additions ---

    // Selectors and classes in the place of objects, by their names.

    virtual void encodeSelector(SEL selector);
    /// Returns the selector of the name that comes next, made if there is none; null when no name does.
    virtual SEL decodeSelector();
    virtual void encodeClass(Class *cls);
    /// Returns the class of the name that comes next, which is looked up only: no object is made of it. nil
    /// when there is none of that name, or no name comes.
    virtual Class *decodeClass();

protected:
    NSCoder() = default;
};

#endif
