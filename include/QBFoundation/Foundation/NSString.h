// Text.
#ifndef QBFOUNDATION_FOUNDATION_NSSTRING_H
#define QBFOUNDATION_FOUNDATION_NSSTRING_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Runtime/Selector.h>
#include <QBFoundation/Runtime/Value.h>

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

class NSArray;

/// A text that does not change: bytes, which are UTF-8 unless somebody put other bytes in.
///
/// Positions and lengths count UTF-16 units of the leniently decoded text: a byte that is not part of valid
/// UTF-8 counts as one character. NUL bytes are kept; a C string of the text ends at the first. A short text
/// stands behind the object in the same piece of memory. Makers that can't get the memory for the bytes throw
/// std::bad_alloc, those given more than 2^32 - 2 bytes InvalidArgumentException.
class QB_EXPORT NSString : public NSObject {
public:
    NSString() noexcept;
    ~NSString() override;

    static void operator delete(void *memory, std::size_t size) noexcept;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns a string with the bytes of `bytes`, owned.
    static Ref<NSString> initWith(std::string_view bytes);
    /// Returns a string with the bytes of `bytes`, autoreleased.
    static NSString *stringWith(std::string_view bytes) { return initWith(bytes).autorelease(); }
    /// As `initWith`, of the class that was asked: the way of all makers that look at their class.
    static Ref<NSString> initOfClass(Class *asked, std::string_view bytes);

    static NSString *string() { return stringWith({}); }
    static NSString *stringWithString(NSString *other);
    /// Throws InvalidArgumentException when `text` is null, as all makers from C strings do.
    static NSString *stringWithCString(const char *text);
    static NSString *stringWithCString(const char *bytes, std::uint32_t length);
    static Ref<NSString> init() { return initWith({}); }
    static Ref<NSString> initWithString(NSString *other);
    static Ref<NSString> initWithCString(const char *text);
    static Ref<NSString> initWithCString(const char *bytes, std::uint32_t length);

    // --- Bytes and characters ---

    /// The bytes, behind which a NUL stands.
    std::string_view view() const noexcept { return {bytes_, byteLength_}; }
    /// The bytes as a C string, valid as long as the string and, if it is mutable, until it changes.
    const char *cString() const noexcept { return bytes_; }
    std::uint32_t cStringLength() const noexcept { return byteLength_; }
    /// How many UTF-16 units the text has.
    virtual std::uint32_t length() const;
    /// Returns the UTF-16 unit at `index`. Throws NSRangeException when there is none.
    virtual std::uint16_t characterAtIndex(std::uint32_t index) const;
    /// Whether all bytes are below 0x80, so that bytes, characters and units are the same.
    BOOL isAscii() const;

    // --- Comparison ---

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToString(NSString *other) const;
    std::uint32_t hash() const override;
    /// Orders by bytes, which for UTF-8 is the order of code points.
    /// Throws InvalidArgumentException when `other` is no string.
    NSComparisonResult compare(id other) const override;

    // --- What every value answers ---

    BOOL containsData() const override { return byteLength_ != 0; }
    NSString *description() const override;
    NSString *stringValue() const override;
    const char *cStringValue() const override { return bytes_; }
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override;
    Ref<NSString> copy() const;
    Ref<class NSMutableString> mutableCopy() const;
    void writeOnOutputStream(QBOutputStream *stream) override;

    // --- Formats ---

    /// Returns `format`, filled with the values as printf does, autoreleased; nil for a nil format.
    ///
    /// "%@" takes an object and writes its description, "(null)" for nil; "%%" is one per cent sign. A value
    /// of another kind than its conversion wants, or a missing one, makes the format invalid: the result is
    /// its own text then.
    template <class... V>
    static NSString *stringWithFormat(NSString *format, const V &...values) {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringWithFormatWithArgList(format, list); }, values...);
    }
    static NSString *stringWithFormatWithArgList(NSString *format, const qb::ArgList &argList);

    // --- RestrictedFormat ---

    /// Returns `format`, filled with the values, autoreleased; nil for a nil format.
    ///
    /// Conversions are d i o u x X, e E f g, c and s, with the flags, widths and precisions of printf; the
    /// length letters L Z l q are skipped. "%%" drops itself and the literal text in front of it. A value of
    /// another kind than its conversion wants, a missing one, or an unknown conversion makes the format
    /// invalid: the result is the format's own text then. "%s" takes C strings and strings.
    template <class... V>
    static NSString *stringWithRestrictedFormat(NSString *format, const V &...values) {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringWithRestrictedFormatAndArglist(format, list); },
            values...);
    }
    template <class... V>
    static NSString *stringWithRestrictedFormat(const char *format, const V &...values) {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringWithRestrictedFormatAndArglist(format, list); },
            values...);
    }
    static NSString *stringWithRestrictedFormatAndArglist(NSString *format, const qb::ArgList &argList);
    static NSString *stringWithRestrictedFormatAndArglist(const char *format, const qb::ArgList &argList);
    /// As `stringWithRestrictedFormat:`, with the values of objects: their `intValue`, `floatValue`,
    /// `cStringValue`. When the objects run out, "%s" makes the format invalid, and the other conversions
    /// write nothing.
    static NSString *stringWithRestrictedFormatAndObjects(NSString *format, NSArray *objects);

    // --- ISODateTime ---

    /// Returns now as 17 digits, autoreleased: year, month, day, hour, minute and second in GMT, then the
    /// milliseconds. Seconds and milliseconds come from two readings of the clock.
    static NSString *currentDateAsISODateTimeStringWithMilliSeconds();

protected:
    /// Takes over the text's bytes; the initialiser `initWithCString:length:` of subclasses.
    virtual BOOL setUpWithBytes(const char *bytes, std::uint32_t length);
    /// Replaces the bytes by a copy of others, for mutable subclasses.
    void replaceBytes(std::uint32_t from, std::uint32_t length, std::string_view by);

    static constexpr std::uint32_t kLongestText = UINT32_MAX - 1;

private:
    friend class NSMutableString;

    enum Flags : std::uint8_t { kKnowsAscii = 1, kIsAscii = 2, kOwnsBytes = 4, kKnowsHash = 8 };

    NSString(const char *bytes, std::uint32_t length, std::uint8_t flags) noexcept
        : bytes_(bytes), byteLength_(length), flags_(flags) {}
    static Ref<NSString> makeShort(std::string_view bytes);
    void learnAscii() const;
    void reserve(std::uint64_t byteLength);
    char *ownBytes() { return const_cast<char *>(bytes_); }

    mutable std::uint32_t hash_ = 0;
    const char *bytes_;
    std::uint32_t byteLength_ = 0;
    std::uint32_t capacity_ = 0; // of bytes that the string owns, the NUL not counted
    mutable std::uint8_t flags_ = 0;
};

/// A text that can change. Its positions are those of `NSString`.
class QB_EXPORT NSMutableString : public NSString {
public:
    NSMutableString() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableString> initWith(std::string_view bytes);
    static NSMutableString *stringWith(std::string_view bytes) { return initWith(bytes).autorelease(); }
    static NSMutableString *string() { return stringWith({}); }
    static NSMutableString *stringWithString(NSString *other);
    static NSMutableString *stringWithCString(const char *text);
    static NSMutableString *stringWithCString(const char *bytes, std::uint32_t length);
    /// Returns an empty string with room for `capacity` bytes.
    static NSMutableString *stringWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<NSMutableString> init() { return initWith({}); }
    static Ref<NSMutableString> initWithCapacity(std::uint32_t capacity);
    static Ref<NSMutableString> initWithString(NSString *other);

    /// Appends; nil appends nothing.
    virtual void appendString(NSString *string);
    /// Appends bytes as they are.
    void append(std::string_view bytes);
    virtual void setString(NSString *string);
    /// Replaces the characters of `range` by `string`; nil removes them.
    /// Throws NSRangeException when the range is not inside the text.
    virtual void replaceCharactersInRange(NSRange range, NSString *withString);

    /// Appends `format` filled with the values; see `stringWithRestrictedFormat:`.
    template <class... V>
    void appendRestrictedFormat(NSString *format, const V &...values) {
        qb::withArgList([&](const qb::ArgList &list) { appendRestrictedFormatWithArgList(format, list); },
                        values...);
    }
    virtual void appendRestrictedFormatWithArgList(NSString *format, const qb::ArgList &argList);

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }
    NSString *description() const override;
    NSString *stringValue() const override;

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);
};

/// A constant string: `"text"_ns`. It is never freed.
template <qb::FixedString Text>
NSString *operator""_ns() {
    static NSString *const constant = NSString::initWith(Text.view()).detach();
    return constant;
}

inline bool operator==(const NSString &a, const NSString &b) {
    return a.view() == b.view();
}
inline std::strong_ordering operator<=>(const NSString &a, const NSString &b) {
    return a.view() <=> b.view();
}

template <>
struct std::hash<NSString> {
    std::size_t operator()(const NSString &string) const { return string.hash(); }
};

#endif
