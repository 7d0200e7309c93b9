// Plain values as objects.
#ifndef QBFOUNDATION_FOUNDATION_NSVALUE_H
#define QBFOUNDATION_FOUNDATION_NSVALUE_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>

#include <cstdint>

/// A range, an address, or an object that is not retained; numbers are the subclass `NSNumber`.
///
/// A value does not change. Values are equal when they hold the same kind of value and the same value.
class QB_EXPORT NSValue : public NSObject {
public:
    /// The range {0, 0}.
    NSValue() noexcept : type_(Type::range), range_() {}

    /// What was put in.
    enum class Type : std::uint8_t {
        boolean,
        int32,
        uint32,
        int64,
        uint64,
        real32,
        real64,
        range,
        pointer,
        nonretainedObject
    };

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the value of the type `objCType` that lies at `value`: a number object for the letters of
    /// integers and floating-point numbers (see `NSCoder`), "^v", "@", and "{_NSRange=II}". Throws
    /// InvalidArgumentException for another type, and when `value` is null.
    static NSValue *valueWithBytes(const void *value, const char *objCType);
    /// The same.
    static NSValue *value(const void *value, const char *withObjCType) {
        return valueWithBytes(value, withObjCType);
    }
    static NSValue *valueWithRange(NSRange range);
    static NSValue *valueWithPointer(const void *pointer);
    /// Returns a value that refers to `object` without keeping it alive.
    static NSValue *valueWithNonretainedObject(id object);

    Type type() const { return type_; }
    /// Returns the letter of the type, as archives name it: "c", "i", "I", "q", "Q", "f", "d" for numbers
    /// (BOOL is "c"), "{_NSRange=II}", "^v", "@".
    virtual const char *objCType() const;
    /// Stores the value in a variable of the type that `objCType` tells. Throws InvalidArgumentException when
    /// it is null.
    virtual void getValue(void *variable) const;
    /// Returns the range. Throws InvalidUseOfMethodException when the value is of another type, as the next
    /// two do.
    virtual NSRange rangeValue() const;
    virtual void *pointerValue() const;
    virtual id nonretainedObjectValue() const;

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToValue(NSValue *other) const;
    std::uint32_t hash() const override;
    friend bool operator==(const NSValue &a, const NSValue &b) { return a.isEqual(b.self()); }
    /// Returns "{location, length}" of a range, and the address of pointers and objects.
    NSString *description() const override;
    /// Throws InvalidUseOfMethodException unless it is a range: an address means nothing to another program.
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }

protected:
    BOOL setUpWithCoder(NSCoder *coder) override;

    Type type_;
    union {
        std::int64_t integer_; // the bits, of unsigned 64-bit numbers too
        double real_;
        NSRange range_;
        void *pointer_;
    };

private:
    static NSValue *make(Type type);
    void requireType(Type type, const char *selector) const;
};

template <>
struct std::hash<NSValue> : qb::ValueHash {};

#endif
