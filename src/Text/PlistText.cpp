#include "Text/PlistText.h"

#include "Text/Scan.h"
#include "Text/Utf8.h"

#include <cstring>

namespace qb::text {

namespace {

// The letter behind the backslash; 0 for bytes that are written as digits.
char escapeLetter(char byte) {
    switch (byte) {
    case '"':
    case '\\':
        return byte;
    case '\a':
        return 'a';
    case '\b':
        return 'b';
    case '\t':
        return 't';
    case '\n':
        return 'n';
    case '\v':
        return 'v';
    case '\f':
        return 'f';
    case '\r':
        return 'r';
    default:
        return 0;
    }
}

// As `kPlistSpecial`, for text that is known to be valid UTF-8.
constexpr ByteSet kEscaped = ByteSet("\"\\\x7F").with(0x00, 0x1F);

// Goes over the text, calling `plain(from, end)` for what stands as it is and `special(byte)` for the rest.
template <class Plain, class Special>
void forEachPart(const char *position, const char *end, Plain &&plain, Special &&special) {
    const char *validEnd = position; // so far the text is known to be valid
    while (position != end) {
        const char *stop = findIn(position, end, kPlistSpecial);
        if (stop != end && static_cast<unsigned char>(*stop) >= 0x80) {
            if (stop >= validEnd)
                validEnd = stop + validPrefix(stop, static_cast<std::size_t>(end - stop));
            stop = findIn(stop, validEnd, kEscaped);
        }
        plain(position, stop);
        position = stop;
        if (position != end)
            special(*position++);
    }
}

} // namespace

std::uint64_t plistTextLength(const char *bytes, std::size_t length) {
    if (isPlistBare(bytes, length))
        return length;
    std::uint64_t result = 2;
    forEachPart(
        bytes, bytes + length,
        [&result](const char *from, const char *end) { result += static_cast<std::size_t>(end - from); },
        [&result](char byte) { result += escapeLetter(byte) ? 2 : 4; });
    return result;
}

char *writePlistText(const char *bytes, std::size_t length, char *target) {
    const auto plain = [&target](const char *from, const char *end) {
        const auto size = static_cast<std::size_t>(end - from);
        std::memcpy(target, from, size);
        target += size;
    };
    if (isPlistBare(bytes, length)) {
        plain(bytes, bytes + length);
        return target;
    }
    *target++ = '"';
    forEachPart(bytes, bytes + length, plain, [&target](char byte) {
        *target++ = '\\';
        if (const char letter = escapeLetter(byte)) {
            *target++ = letter;
            return;
        }
        const auto value = static_cast<unsigned char>(byte);
        *target++ = static_cast<char>('0' + (value >> 6));
        *target++ = static_cast<char>('0' + (value >> 3 & 7));
        *target++ = static_cast<char>('0' + (value & 7));
    });
    *target++ = '"';
    return target;
}

} // namespace qb::text
