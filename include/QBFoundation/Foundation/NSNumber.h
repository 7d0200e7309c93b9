// Numbers and other plain values as objects.
#ifndef QBFOUNDATION_FOUNDATION_NSNUMBER_H
#define QBFOUNDATION_FOUNDATION_NSNUMBER_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

/// A number that does not change: a truth value, an integer of 32 bits, or a floating-point number; integers
/// of 64 bits are `NSLongLongNumber`s. Numbers are equal when their values are, whatever their types; -128 to
/// 1023 are shared.
///
/// Conversions to a narrower integer take the low bits, those from a floating-point number cut towards zero
/// and stop at the ends of the target's range; not-a-number becomes 0.
class QB_EXPORT NSNumber : public NSObject {
public:
    /// What kind of number was put in.
    enum class Type : std::uint8_t { boolean, int32, uint32, int64, uint64, real };

    NSNumber() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static NSNumber *numberWithBool(BOOL value);
    static NSNumber *numberWithChar(char value) { return numberWithInt(value); }
    static NSNumber *numberWithShort(std::int16_t value) { return numberWithInt(value); }
    static NSNumber *numberWithInt(std::int32_t value);
    static NSNumber *numberWithUnsignedInt(std::uint32_t value);
    static NSNumber *numberWithLongLong(std::int64_t value);
    static NSNumber *numberWithUnsignedLongLong(std::uint64_t value);
    static NSNumber *numberWithFloat(float value) { return numberWithDouble(value); }
    static NSNumber *numberWithDouble(double value);

    Type type() const { return type_; }
    virtual BOOL boolValue() const;
    virtual char charValue() const { return static_cast<char>(integerValue()); }
    virtual std::int16_t shortValue() const { return static_cast<std::int16_t>(integerValue()); }
    virtual std::int32_t intValue() const { return static_cast<std::int32_t>(integerValue()); }
    virtual std::uint32_t unsignedIntValue() const { return static_cast<std::uint32_t>(integerValue()); }
    virtual std::int64_t longLongValue() const { return integerValue(); }
    virtual std::uint64_t unsignedLongLongValue() const;
    virtual float floatValue() const { return static_cast<float>(doubleValue()); }
    virtual double doubleValue() const;

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToNumber(NSNumber *other) const;
    std::uint32_t hash() const override;
    /// Orders by value. Throws InvalidArgumentException when `other` is no number.
    NSComparisonResult compare(id other) const override;

    NSString *stringValue() const override;
    NSString *description() const override { return stringValue(); }
    NSString *descriptionWithLocale(NSDictionary *locale) const override;
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }

    // --- asNumberSupport ---

    NSNumber *asNumber() const override { return static_cast<NSNumber *>(self()); }
    /// YES: a number always counts as data, zero included.
    BOOL containsData() const override { return YES; }

protected:
    virtual BOOL setUpWithBool(BOOL value);
    virtual BOOL setUpWithInt(std::int32_t value);
    virtual BOOL setUpWithUnsignedInt(std::uint32_t value);
    virtual BOOL setUpWithLongLong(std::int64_t value);
    virtual BOOL setUpWithUnsignedLongLong(std::uint64_t value);
    virtual BOOL setUpWithDouble(double value);
    BOOL setUpWithCoder(NSCoder *coder) override;

private:
    std::int64_t integerValue() const;

    Type type_ = Type::int32;
    union {
        std::int64_t integer_ = 0; // the bits, of unsigned 64-bit numbers too
        double real_;
    };
};

/// An integer of 64 bits.
class QB_EXPORT NSLongLongNumber : public NSNumber {
public:
    NSLongLongNumber() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Description ---

    /// Returns the value in full ("%lld"); the locale is ignored.
    NSString *descriptionWithLocale(NSDictionary *locale) const override;
};

#endif
