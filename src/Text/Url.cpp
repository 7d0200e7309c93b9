#include "Text/Url.h"

#include "Text/Bytes.h"

#include <array>
#include <cstdint>

namespace qb::text {

namespace {

constexpr auto kDigits = [] {
    std::array<std::uint8_t, 256> digits{};
    for (unsigned i = 0; i < 256; ++i) {
        const bool isDecimal = i >= '0' && i <= '9';
        const bool isCapital = i >= 'A' && i <= 'F';
        digits[i] = static_cast<std::uint8_t>(i - (isDecimal ? '0' : isCapital ? 'A' - 10 : 87));
    }
    return digits;
}();

unsigned digitAt(const char *position) {
    return kDigits[static_cast<unsigned char>(*position)];
}

// Copies the run of a text that nothing changes. Runs are short as a rule.
char *copyRun(const char *position, const char *end, char *target) {
    const auto length = static_cast<std::size_t>(end - position);
    if (length <= 64)
        copyShort(target, position, length);
    else
        std::memcpy(target, position, length);
    return target + length;
}

} // namespace

char *escapeUrl(const char *position, const char *end, const ByteSet &escaped, char *target) {
    while (position != end) {
        const char *const hit = findIn(position, end, escaped);
        target = copyRun(position, hit, target);
        for (position = hit; position != end; ++position) {
            const auto byte = static_cast<unsigned char>(*position);
            if (!escaped.contains(byte))
                break;
            target[0] = '%';
            target[1] = static_cast<char>('0' + byte / 16);
            target[2] = static_cast<char>('0' + byte % 16);
            target += 3;
        }
    }
    return target;
}

char *unescapeUrl(const char *position, const char *end, char *target) {
    while (position != end) {
        const char *const hit = findIn(position, end, kUrlMarks);
        target = copyRun(position, hit, target);
        for (position = hit; end - position >= 3 && *position == '%'; position += 3)
            *target++ = static_cast<char>(digitAt(position + 1) << 4 | digitAt(position + 2));
        if (position == end)
            break;
        if (*position == '+') {
            *target++ = ' ';
            ++position;
        } else if (*position == '%') { // cut
            if (end - position == 2)
                *target++ = static_cast<char>(digitAt(position + 1) << 4);
            position = end;
        }
    }
    return target;
}

} // namespace qb::text
