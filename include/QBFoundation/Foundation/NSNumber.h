// Numbers as objects.
#ifndef QBFOUNDATION_FOUNDATION_NSNUMBER_H
#define QBFOUNDATION_FOUNDATION_NSNUMBER_H

#include <QBFoundation/Foundation/NSValue.h>

#include <compare>
#include <cstdint>

/// A number that does not change: a truth value, an integer of 32 bits, or a floating-point number; integers
/// of 64 bits are `NSLongLongNumber`s. Numbers are equal when their values are, whatever their types; -128 to
/// 1023 are shared.
///
/// Conversions to a narrower integer take the low bits, those from a floating-point number cut towards zero
/// and stop at the ends of the target's range; not-a-number becomes 0.
class QB_EXPORT NSNumber : public NSValue {
public:
    NSNumber() noexcept { setUpInteger(Type::int32, 0); }

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static NSNumber *numberWithBool(BOOL value);
    static NSNumber *numberWithChar(char value) { return numberWithInt(value); }
    static NSNumber *numberWithUnsignedChar(std::uint8_t value) { return numberWithInt(value); }
    static NSNumber *numberWithShort(std::int16_t value) { return numberWithInt(value); }
    static NSNumber *numberWithUnsignedShort(std::uint16_t value) { return numberWithInt(value); }
    static NSNumber *numberWithInt(std::int32_t value);
    static NSNumber *numberWithUnsignedInt(std::uint32_t value);
    /// A long has 64 bits here, whatever the machine's has.
    static NSNumber *numberWithLong(std::int64_t value) { return numberWithLongLong(value); }
    static NSNumber *numberWithUnsignedLong(std::uint64_t value) { return numberWithUnsignedLongLong(value); }
    static NSNumber *numberWithLongLong(std::int64_t value);
    static NSNumber *numberWithUnsignedLongLong(std::uint64_t value);
    /// The text of a float has the digits that tell it from other floats: 0.1f is "0.1".
    static NSNumber *numberWithFloat(float value);
    static NSNumber *numberWithDouble(double value);

    static Ref<NSNumber> initWithBool(BOOL value) { return numberWithBool(value); }
    static Ref<NSNumber> initWithInt(std::int32_t value) { return numberWithInt(value); }
    static Ref<NSNumber> initWithUnsignedInt(std::uint32_t value) { return numberWithUnsignedInt(value); }
    static Ref<NSNumber> initWithLongLong(std::int64_t value) { return numberWithLongLong(value); }
    static Ref<NSNumber> initWithUnsignedLongLong(std::uint64_t value) {
        return numberWithUnsignedLongLong(value);
    }
    static Ref<NSNumber> initWithFloat(float value) { return numberWithFloat(value); }
    static Ref<NSNumber> initWithDouble(double value) { return numberWithDouble(value); }

    virtual BOOL boolValue() const;
    virtual char charValue() const;
    virtual std::uint8_t unsignedCharValue() const;
    virtual std::int16_t shortValue() const;
    virtual std::uint16_t unsignedShortValue() const;
    virtual std::int32_t intValue() const;
    virtual std::uint32_t unsignedIntValue() const;
    virtual std::int64_t longValue() const { return longLongValue(); }
    virtual std::uint64_t unsignedLongValue() const { return unsignedLongLongValue(); }
    virtual std::int64_t longLongValue() const;
    virtual std::uint64_t unsignedLongLongValue() const;
    virtual float floatValue() const { return static_cast<float>(doubleValue()); }
    virtual double doubleValue() const;

    BOOL isEqual(id other) const override;
    BOOL isEqualToValue(NSValue *other) const override { return isEqual(other); }
    virtual BOOL isEqualToNumber(NSNumber *other) const;
    std::uint32_t hash() const override;
    /// Orders by value. Throws InvalidArgumentException when `other` is no number.
    NSComparisonResult compare(id other) const override;
    friend std::weak_ordering operator<=>(const NSNumber &a, const NSNumber &b) {
        return a.compare(b.self()) <=> 0;
    }

    NSString *stringValue() const override;
    NSString *description() const override { return stringValue(); }
    NSString *descriptionWithLocale(NSDictionary *locale) const override;
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }
    /// Returns the path that is the number's text.
    QBPath *asQbPath() const override;

    // --- asNumberSupport ---

    NSNumber *asNumber() const override { return static_cast<NSNumber *>(self()); }
    /// YES: a number always counts as data, zero included.
    BOOL containsData() const override { return YES; }

    // --- PhpString ---

    NSString *asPhpString() const override { return stringValue(); }

protected:
    virtual BOOL setUpWithBool(BOOL value);
    virtual BOOL setUpWithChar(char value) { return setUpWithInt(value); }
    virtual BOOL setUpWithUnsignedChar(std::uint8_t value) { return setUpWithInt(value); }
    virtual BOOL setUpWithShort(std::int16_t value) { return setUpWithInt(value); }
    virtual BOOL setUpWithUnsignedShort(std::uint16_t value) { return setUpWithInt(value); }
    virtual BOOL setUpWithInt(std::int32_t value);
    virtual BOOL setUpWithUnsignedInt(std::uint32_t value);
    virtual BOOL setUpWithLongLong(std::int64_t value);
    virtual BOOL setUpWithUnsignedLongLong(std::uint64_t value);
    virtual BOOL setUpWithFloat(float value);
    virtual BOOL setUpWithDouble(double value);
    BOOL setUpWithCoder(NSCoder *coder) override;

private:
    void setUpInteger(Type type, std::int64_t value) {
        type_ = type;
        integer_ = value;
    }
    bool isReal() const { return type_ == Type::real32 || type_ == Type::real64; }
    template <class Integer>
    Integer integerValue() const;
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

template <>
struct std::hash<NSNumber> : qb::ValueHash {};
template <>
struct std::hash<NSLongLongNumber> : qb::ValueHash {};

#endif
