// One conversion of a format, "%-10s" or "%06d", and its rendering.
#ifndef QBFOUNDATION_FOUNDATION_CONVERSION_H
#define QBFOUNDATION_FOUNDATION_CONVERSION_H

#include <QBFoundation/Runtime/Value.h>

#include <string>
#include <string_view>

namespace qb {

/// A conversion as it was read: its flags, width and precision as they stand, and its letter.
///
/// It renders as the C library's printf does, except that an integer prints in full whatever its width, so
/// that no length letter is needed, and that a value is never read as another kind than it is.
struct Conversion {
    std::string_view modifiers; // "-10", "+.3", "06"
    char letter = 0;

    /// A width or precision of more digits than this makes a format invalid, so that no text grows beyond
    /// measure.
    static constexpr std::size_t kMostModifiers = 8;

    /// Appends an integer for d, i, o, u, x, X.
    void appendInteger(std::string &target, const Value &value) const;
    /// Appends a floating-point number for e, E, f, F, g, G.
    void appendReal(std::string &target, double value) const;
    /// Appends a character for c.
    void appendCharacter(std::string &target, char value) const;
    /// Appends a text for s; a precision cuts it.
    void appendText(std::string &target, std::string_view text) const;
};

/// Whether the value serves an integer conversion: integers, and addresses for o, u, x, X.
bool servesInteger(const Value &value);

/// The text of a value that serves "%s": a C string or an NSString that is not null. Returns whether it does.
bool textOf(const Value &value, std::string_view &text);

} // namespace qb

#endif
