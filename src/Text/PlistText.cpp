#include "Text/PlistText.h"

#include "Text/PlistBlock.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <array>
#include <bit>

namespace qb::text {

namespace {

// By byte: the letter behind the backslash; 0 for bytes that are written as digits.
constexpr std::array<char, 256> kEscapeLetters = [] {
    std::array<char, 256> letters{};
    letters['"'] = '"';
    letters['\\'] = '\\';
    letters['\a'] = 'a';
    letters['\b'] = 'b';
    letters['\t'] = 't';
    letters['\n'] = 'n';
    letters['\v'] = 'v';
    letters['\f'] = 'f';
    letters['\r'] = 'r';
    return letters;
}();

char escapeLetter(char byte) {
    return kEscapeLetters[static_cast<unsigned char>(byte)];
}

// The part of a text that lies in front, as a block takes it.
std::size_t partLength(const char *position, const char *end) {
    return std::min(static_cast<std::size_t>(end - position), plain::PlistBlock::kBytes);
}

constexpr unsigned firstBits(std::size_t count) {
    return (1U << count) - 1;
}

// Goes over what a text is written as between quotes. `plain(block, length)` gets what stands as it is, with
// the block that begins with it; `special(byte)` the rest.
template <class Block, class Plain, class Special>
inline void visitQuoted(const char *position, const char *end, Plain &&plain, Special &&special) {
    const char *validEnd = position; // so far the text is known to be valid UTF-8
    while (position != end) {
        const std::size_t length = partLength(position, end);
        const Block block(position, length);
        unsigned high = block.high();
        if (high && validEnd > position)
            high &= ~firstBits(partLength(position, validEnd));
        const unsigned stops = (block.escaped() | high) & firstBits(length);
        if (stops == 0) [[likely]] {
            plain(block, length);
            position += length;
            continue;
        }
        const auto before = static_cast<std::size_t>(std::countr_zero(stops));
        plain(block, before);
        position += before;
        if (high >> before & 1) {
            validEnd = position + validPrefix(position, static_cast<std::size_t>(end - position));
            if (validEnd != position)
                continue;
        }
        special(*position++);
    }
}

// Goes over a text that may stand bare: not empty, of bare bytes only, and without the beginnings of
// comments,
// "//" and "/*". `plain(block, length)` gets its parts. Returns false as soon as it has to be quoted.
template <class Block, class Plain>
inline bool visitBare(const char *position, const char *end, Plain &&plain) {
    if (position == end)
        return false;
    for (unsigned slashBefore = 0; position != end;) {
        const std::size_t length = partLength(position, end);
        const Block block(position, length);
        const unsigned slashes = block.slashes();
        // "*" is not bare, so that only two slashes are left to look for.
        const unsigned comments = slashes & (slashes << 1 | slashBefore);
        if ((~block.bare() & firstBits(length)) | comments)
            return false;
        slashBefore = slashes >> (Block::kBytes - 1) & 1;
        plain(block, length);
        position += length;
    }
    return true;
}

char *writeEscape(char byte, char *target) {
    *target++ = '\\';
    if (const char letter = escapeLetter(byte)) {
        *target++ = letter;
        return target;
    }
    const auto value = static_cast<unsigned char>(byte);
    *target++ = static_cast<char>('0' + (value >> 6));
    *target++ = static_cast<char>('0' + (value >> 3 & 7));
    *target++ = static_cast<char>('0' + (value & 7));
    return target;
}

template <class Block>
inline char *write(const char *bytes, std::size_t length, char *target) {
    const char *const end = bytes + length;
    char *const begin = target;
    const auto plain = [&target](const Block &block, std::size_t count) {
        block.store(target);
        target += count;
    };
    if (visitBare<Block>(bytes, end, plain))
        return target;
    target = begin;
    *target++ = '"';
    visitQuoted<Block>(bytes, end, plain, [&target](char byte) { target = writeEscape(byte, target); });
    *target++ = '"';
    return target;
}

} // namespace

std::uint64_t plistTextLength(const char *bytes, std::size_t length) {
    std::uint64_t result = 0;
    const auto plain = [&result](const PlistBlock &, std::size_t count) { result += count; };
    if (visitBare<PlistBlock>(bytes, bytes + length, plain))
        return length;
    result = 2;
    visitQuoted<PlistBlock>(bytes, bytes + length, plain,
                            [&result](char byte) { result += escapeLetter(byte) ? 2 : 4; });
    return result;
}

char *writePlistText(const char *bytes, std::size_t length, char *target) {
    return write<PlistBlock>(bytes, length, target);
}

char *plain::writePlistText(const char *bytes, std::size_t length, char *target) {
    return write<plain::PlistBlock>(bytes, length, target);
}

} // namespace qb::text
