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
    /// Returns the set of the characters of `string`, autoreleased.
    static NSCharacterSet *characterSetWithCharactersInString(NSString *string);
    /// Returns the set of the characters from `range.location` on, as many as the range is long.
    static NSCharacterSet *characterSetWithRange(NSRange range);

    /// Returns the set of all other characters, autoreleased.
    virtual NSCharacterSet *invertedSet() const;

    virtual BOOL characterIsMember(unichar character) const { return longCharacterIsMember(character); }
    virtual BOOL longCharacterIsMember(std::uint32_t character) const;

    /// Whether both have the same characters, however they were made.
    BOOL isEqual(id other) const override;
    std::uint32_t hash() const override;
    void encodeWithCoder(NSCoder *coder) const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }

    /// Whether the character at `position`, which is before `end`, is in the set; `used` takes its bytes.
    bool holdsCharacterAt(const char *position, const char *end, std::size_t &used) const;

protected:
    virtual BOOL setUpWithCharactersInString(NSString *string);
    virtual BOOL setUpWithRange(NSRange range);
    BOOL setUpWithCoder(NSCoder *coder) override;

private:
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
        punctuation
    };
    static constexpr std::size_t kKinds = 10;

    static NSCharacterSet *shared(Kind kind);
    bool isListed(std::uint32_t character) const;
    void learnAscii();

    std::array<std::uint64_t, 2> ascii_{}; // of the first 128 characters, inversion included
    Kind kind_ = Kind::listed;
    std::vector<NSRange> ranges_; // of a listed set, sorted, none touching another
    bool isInverted_ = false;
};

#endif
