// UTF-8 on plain bytes: validation, counting, decoding.
//
// Two notions of "valid" are in use. Strict is RFC 3629. Structural looks at lead and following bytes only,
// so that overlong forms, surrogates and the five- and six-byte forms of RFC 2279 pass. Lenient decoding
// takes the strict sequences and, for every other byte, the byte itself as a character.
#ifndef QB_TEXT_UTF8_H
#define QB_TEXT_UTF8_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Returns whether the `length` bytes are all below 0x80.
bool isAscii(const char *bytes, std::size_t length);

/// A run of strictly valid text: its bytes, characters and UTF-16 units. All are ASCII when `units == bytes`.
struct Utf8Run {
    std::size_t bytes = 0;
    std::size_t characters = 0;
    std::size_t units = 0;
};

/// Returns the longest strictly valid beginning of the `length` bytes; a NUL is an ordinary character.
///
/// The vector version follows J. Keiser and D. Lemire, "Validating UTF-8 In Less Than One Instruction Per
/// Byte" (Software: Practice and Experience, 2021).
Utf8Run validRun(const char *bytes, std::size_t length);

/// As `validRun`, for callers that want the number of bytes only: `length` when all are valid.
std::size_t validPrefix(const char *bytes, std::size_t length);

/// Returns the length in bytes (1 to 6) of the sequence that begins with `lead`, 0 when none does.
int structuralLength(unsigned char lead);

/// Returns the length in bytes (1 to 6) of the structurally valid sequence at `position`, 0 at the end of the
/// text (a NUL or `end`), -1 for an invalid or truncated sequence.
///
/// `codePoint`, unless null, takes the character (31 bits), 0 at the end of the text; it is left alone on -1.
int sequenceLength(const unsigned char *position, const unsigned char *end, std::uint32_t *codePoint);

/// Returns how many of the `length` bytes form structurally valid characters from the beginning on, and their
/// number in `characters`.
///
/// A NUL is an ordinary character; a caller whose text ends at the first NUL passes the length up to it.
std::size_t structuralPrefix(const char *bytes, std::size_t length, std::size_t *characters);

/// Decodes one character leniently; `position` must be before `end`.
///
/// Returns the bytes used (1 to 4). A byte that begins no strictly valid sequence gives 1 and its own value,
/// 0x80 to 0xFF, in `codePoint`.
std::size_t decodeLenient(const char *position, const char *end, std::uint32_t *codePoint);

/// Decodes the character in front of `position`, which must be behind `begin` and at a character's beginning.
///
/// Returns the bytes used and the code point as `decodeLenient` does.
std::size_t decodeLenientBefore(const char *begin, const char *position, std::uint32_t *codePoint);

/// Returns whether a character begins at `position`, or the text ends there, decoded leniently.
bool isCharacterStart(const char *begin, const char *end, const char *position);

/// Returns the number of UTF-16 units of the `length` bytes, decoded leniently.
std::size_t utf16Units(const char *bytes, std::size_t length);

/// Returns the byte offset of the character that holds the UTF-16 unit with index `unit`, decoded leniently;
/// `length` when there are not so many.
///
/// `isSecondHalf`, unless null, tells whether that unit is the second of a surrogate pair.
std::size_t byteOffsetOfUnit(const char *bytes, std::size_t length, std::size_t unit,
                             bool *isSecondHalf = nullptr);

/// The most bytes that `encode` writes.
constexpr std::size_t kLongestSequence = 6;

/// Writes the shortest sequence for `codePoint` (31 bits; six bytes in the form of RFC 2279) to `target`.
///
/// Returns the bytes written, 0 for a value above 31 bits. Surrogates are written as any other value.
std::size_t encode(std::uint32_t codePoint, char *target);

namespace plain {
bool isAscii(const char *bytes, std::size_t length);
Utf8Run validRun(const char *bytes, std::size_t length);
} // namespace plain

} // namespace qb::text

#endif
