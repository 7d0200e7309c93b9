// Escapes between the quotes of property-list strings.
#ifndef QB_TEXT_PLISTESCAPES_H
#define QB_TEXT_PLISTESCAPES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qb::text {

/// What stands for a byte: a backslash with a letter, or with three octal digits.
struct PlistEscape {
    char bytes[4];
    std::uint32_t length;

    /// Writes it to `target`, four bytes whatever its length, and returns its end.
    char *put(char *target) const {
        std::memcpy(target, bytes, sizeof bytes);
        return target + length;
    }
};

constexpr PlistEscape plistEscapeOf(unsigned char byte) {
    constexpr std::string_view kBytes = "\"\\\a\b\t\n\v\f\r";
    constexpr std::string_view kLetters = "\"\\abtnvfr";
    const std::size_t place = kBytes.find(static_cast<char>(byte));
    if (place != std::string_view::npos)
        return {{'\\', kLetters[place]}, 2};
    const auto digit = [byte](int shift) { return static_cast<char>('0' + (byte >> shift & 7)); };
    return {{'\\', digit(6), digit(3), digit(0)}, 4};
}

inline constexpr auto kPlistEscapes = [] {
    std::array<PlistEscape, 256> escapes{};
    for (std::size_t byte = 0; byte < escapes.size(); ++byte)
        escapes[byte] = plistEscapeOf(static_cast<unsigned char>(byte));
    return escapes;
}();

/// Returns the escape of a byte, from a table.
inline const PlistEscape &plistEscape(char byte) {
    return kPlistEscapes[static_cast<unsigned char>(byte)];
}

} // namespace qb::text

#endif
