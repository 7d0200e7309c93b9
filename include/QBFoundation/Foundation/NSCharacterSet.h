// Sets of characters.
#ifndef QBFOUNDATION_FOUNDATION_NSCHARACTERSET_H
#define QBFOUNDATION_FOUNDATION_NSCHARACTERSET_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Foundation/NSString.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

class NSData;
class NSMutableCharacterSet;

/// A set of Unicode characters that does not change, to search, split and trim strings with.
///
/// The classes are those of the Unicode character database, whatever the locale, and are shared. A byte that
/// is no valid UTF-8 is in no set but the inverted ones.
class QB_EXPORT NSCharacterSet : public NSObject {
public:
    NSCharacterSet() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Blanks and tab.
    static NSCharacterSet *whitespaceCharacterSet();
    /// The above and line ends: U+000A to U+000D, U+0085, U+2028, U+2029.
    static NSCharacterSet *whitespaceAndNewlineCharacterSet();
    static NSCharacterSet *newlineCharacterSet();
    static NSCharacterSet *decimalDigitCharacterSet();
    /// Letters and the marks on them.
    static NSCharacterSet *letterCharacterSet();
    /// Letters, marks, and numbers of all kinds.
    static NSCharacterSet *alphanumericCharacterSet();
    /// Letters with a lower-case form.
    static NSCharacterSet *uppercaseLetterCharacterSet();
    /// Letters with an upper-case form, and U+00DF.
    static NSCharacterSet *lowercaseLetterCharacterSet();
    static NSCharacterSet *punctuationCharacterSet();
    /// Symbols of mathematics, currencies and others.
    static NSCharacterSet *symbolCharacterSet();
    /// Controls, and characters that only say how others are shown.
    static NSCharacterSet *controlCharacterSet();
    /// Marks on letters.
    static NSCharacterSet *nonBaseCharacterSet();
    /// Letters whose first part is upper-case and whose second is lower-case.
    static NSCharacterSet *capitalizedLetterCharacterSet();
    /// Returns the set of the characters of `string`, autoreleased. Throws InvalidArgumentException for nil.
    static NSCharacterSet *characterSetWithCharactersInString(NSString *string);
    /// Returns the set of the characters from `range.location` on, as many as the range is long.
    static NSCharacterSet *characterSetWithRange(NSRange range);
    /// Returns the set that the bitmap names, in the form of `bitmapRepresentation`, autoreleased; nil and
    /// empty data name the empty set.
    /// Throws InvalidArgumentException when the data are no such bitmap.
    static NSCharacterSet *characterSetWithBitmapRepresentation(NSData *data);

    /// Returns the set of all other characters, autoreleased.
    virtual NSCharacterSet *invertedSet() const;

    virtual BOOL characterIsMember(unichar character) const { return longCharacterIsMember(character); }
    virtual BOOL longCharacterIsMember(std::uint32_t character) const;
    /// Whether each character of `other` is in this set too; YES for nil.
    virtual BOOL isSupersetOfSet(NSCharacterSet *other) const;
    /// Whether one of the 65536 characters from `plane` * 65536 on is in the set.
    virtual BOOL hasMemberInPlane(std::uint8_t plane) const;
    /// Returns 8192 bytes, autoreleased: character n is in the set when bit n % 8 of byte n / 8 is set.
    /// Behind them, for each plane beyond the first with a member, its number in one byte and such 8192
    /// bytes.
    virtual NSData *bitmapRepresentation() const;

    /// Whether both have the same characters, however they were made.
    BOOL isEqual(id other) const override;
    std::uint32_t hash() const override;
    friend bool operator==(const NSCharacterSet &a, const NSCharacterSet &b) { return a.isEqual(b.self()); }
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }
    Ref<NSObject> mutableCopyWithZone(void *) const override;
    Ref<NSMutableCharacterSet> mutableCopy() const;

    /// Whether the character at `position`, which is before `end`, is in the set; `used` takes its bytes.
    bool holdsCharacterAt(const char *position, const char *end, std::size_t &used) const;

protected:
    virtual BOOL setUpWithCharactersInString(NSString *string);
    virtual BOOL setUpWithRange(NSRange range);
    virtual BOOL setUpWithBitmapRepresentation(NSData *data);
    BOOL setUpWithCoder(NSCoder *coder) override;

    /// Where the set begins and ends to hold characters, in ascending order. Bytes that are no valid UTF-8
    /// count as one character behind all others.
    using Edges = std::vector<std::uint32_t>;
    static Edges edgesOf(const NSCharacterSet &set);
    /// Makes the set hold those characters.
    void setEdges(const Edges &edges);
    /// Returns the characters for which `holds(isInA, isInB)` is true.
    static Edges combined(const Edges &a, const Edges &b, bool (*holds)(bool isInA, bool isInB));
    void copyMembers(const NSCharacterSet &other);
    Ref<NSCharacterSet> immutableCopy() const;
    void invertMembers();

    // Archives hold these numbers.
    enum class Kind : std::uint8_t {
        listed,
        whitespace,
        whitespaceAndNewline,
        newline,
        decimalDigit,
        letter,
        alphanumeric,
        uppercaseLetter,
        lowercaseLetter,
        punctuation,
        symbol,
        control,
        nonBase,
        capitalizedLetter
    };
    static constexpr std::size_t kKinds = 14;
    /// The set of that kind, of the class asked, autoreleased.
    static NSCharacterSet *named(Class *asked, Kind kind);

private:
    static NSCharacterSet *shared(Kind kind);
    static Edges others(const Edges &edges);
    bool isListed(std::uint32_t character) const;
    std::uint32_t hashOfEdges() const;
    void learnAscii();

    std::array<std::uint64_t, 2> ascii_{}; // of the first 128 characters, inversion included
    Kind kind_ = Kind::listed;
    std::vector<NSRange> ranges_; // of a listed set, sorted, none touching another
    bool isInverted_ = false;
};

/// A set of characters that can change.
class QB_EXPORT NSMutableCharacterSet : public NSCharacterSet {
public:
    NSMutableCharacterSet() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableCharacterSet> init();
    static NSMutableCharacterSet *whitespaceCharacterSet() { return made(Kind::whitespace); }
    static NSMutableCharacterSet *whitespaceAndNewlineCharacterSet() {
        return made(Kind::whitespaceAndNewline);
    }
    static NSMutableCharacterSet *newlineCharacterSet() { return made(Kind::newline); }
    static NSMutableCharacterSet *decimalDigitCharacterSet() { return made(Kind::decimalDigit); }
    static NSMutableCharacterSet *letterCharacterSet() { return made(Kind::letter); }
    static NSMutableCharacterSet *alphanumericCharacterSet() { return made(Kind::alphanumeric); }
    static NSMutableCharacterSet *uppercaseLetterCharacterSet() { return made(Kind::uppercaseLetter); }
    static NSMutableCharacterSet *lowercaseLetterCharacterSet() { return made(Kind::lowercaseLetter); }
    static NSMutableCharacterSet *punctuationCharacterSet() { return made(Kind::punctuation); }
    static NSMutableCharacterSet *symbolCharacterSet() { return made(Kind::symbol); }
    static NSMutableCharacterSet *controlCharacterSet() { return made(Kind::control); }
    static NSMutableCharacterSet *nonBaseCharacterSet() { return made(Kind::nonBase); }
    static NSMutableCharacterSet *capitalizedLetterCharacterSet() { return made(Kind::capitalizedLetter); }
    static NSMutableCharacterSet *characterSetWithCharactersInString(NSString *string);
    static NSMutableCharacterSet *characterSetWithRange(NSRange range);
    static NSMutableCharacterSet *characterSetWithBitmapRepresentation(NSData *data);

    /// Throw InvalidArgumentException as the makers do.
    virtual void addCharactersInRange(NSRange range);
    virtual void removeCharactersInRange(NSRange range);
    virtual void addCharactersInString(NSString *string);
    virtual void removeCharactersInString(NSString *string);
    /// Adds the characters of `other`; nil adds none.
    virtual void formUnionWithCharacterSet(NSCharacterSet *other);
    /// Removes what is not in `other` too; all, for nil.
    virtual void formIntersectionWithCharacterSet(NSCharacterSet *other);
    /// Makes it the set of all other characters.
    virtual void invert() { invertMembers(); }

    Ref<NSObject> copyWithZone(void *) const override;
    id makeMutable() const override { return self(); }

private:
    static NSMutableCharacterSet *made(Kind kind) {
        return static_cast<NSMutableCharacterSet *>(named(cls(), kind));
    }
};

template <>
struct std::hash<NSCharacterSet> : qb::ValueHash {};
template <>
struct std::hash<NSMutableCharacterSet> : qb::ValueHash {};

#endif
