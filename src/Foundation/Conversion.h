// One conversion of a format, "%-10s" or "%06d", and its rendering.
#ifndef QBFOUNDATION_FOUNDATION_CONVERSION_H
#define QBFOUNDATION_FOUNDATION_CONVERSION_H

#include <QBFoundation/Runtime/Value.h>

#include "Text/Builder.h"

#include <cstdint>
#include <string_view>

namespace qb {

/// Some letters.
class Letters {
public:
    explicit consteval Letters(std::string_view letters) {
        for (const char letter : letters)
            bits_ |= std::uint64_t{1} << (letter & 63);
    }
    bool contains(char character) const { return character >= '@' && (bits_ >> (character & 63) & 1) != 0; }

private:
    std::uint64_t bits_ = 0;
};

/// A conversion as it was read: its flags, width and precision, and its letter.
///
/// It renders as the C library's printf does, except that an integer prints in full whatever its width, so
/// that no length letter is needed, and that a value is never read as another kind than it is.
class Conversion {
public:
    /// A larger width or precision makes a format invalid, so that no text grows beyond measure.
    static constexpr std::uint32_t kLargestWidth = 1 << 20;

    /// Reads what stands behind a "%", from `position` to behind the first character that is neither a flag,
    /// a digit, a "." nor one of `skipped`; that is the letter then, 0 when the format ends before it.
    ///
    /// Flags count wherever they stand. Returns false when the width or the precision is too large.
    bool read(std::string_view format, std::size_t &position, Letters skipped);

    /// Takes a value for the "*" that was read as the letter: the precision behind a ".", else the width.
    /// Returns false when it is no integer, or too large.
    bool takeStar(const Value &value);

    char letter() const { return letter_; }

    /// Appends the value as the letter wants it: d i o u x X, e E f F g G a A, c, s.
    ///
    /// Returns false, with `target` as it was, when the letter is another, or the value of another kind:
    /// integers and addresses serve the integer conversions, characters and integers c, C strings and strings
    /// that are not null s.
    bool appendValue(text::Builder &target, const Value &value) const;

    /// Appends an integer for d, i, o, u, x, X.
    void appendInteger(text::Builder &target, const Value &value) const;
    /// Appends a floating-point number for e, E, f, F, g, G, a, A.
    void appendReal(text::Builder &target, double value) const;
    /// Appends an address for p.
    void appendAddress(text::Builder &target, const void *address) const;
    /// Appends a character for c.
    void appendCharacter(text::Builder &target, char value) const { appendPadded(target, {&value, 1}); }
    /// Appends a text for s; a precision cuts it.
    void appendText(text::Builder &target, std::string_view text) const {
        appendPadded(target, text.substr(0, precision_));
    }

private:
    enum Flag : std::uint8_t { kLeft = 1, kPlus = 2, kBlank = 4, kAlternate = 8, kZero = 16 };

    bool isPlain() const { return width_ == 0 && precision_ == kNone && flags_ == 0; }
    bool readModifier(char character);
    bool addDigit(std::uint32_t digit);
    void appendPadded(text::Builder &target, std::string_view text) const;
    void appendDigits(text::Builder &target, std::string_view sign, std::string_view digits) const;

    static constexpr std::uint32_t kNone = UINT32_MAX;

    std::uint32_t width_ = 0;
    std::uint32_t precision_ = kNone;
    std::uint8_t flags_ = 0;
    char letter_ = 0;
};

/// Whether the letter is d, i, o, u, x or X; e, E, f, F, g, G, a or A.
bool isIntegerLetter(char letter);
bool isRealLetter(char letter);

/// The text of a value that serves "%s": a C string, of which `most` bytes are looked at, or an NSString that
/// is not null. Returns whether it does.
bool textOf(const Value &value, std::string_view &text, std::size_t most);

} // namespace qb

#endif
