#include "Text/Url.h"

#include "Text/Bytes.h"

#include <algorithm>
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

char *writeByte(unsigned high, unsigned low, char *target) {
    *target = static_cast<char>(high * 16 + low);
    return target + 1;
}

// Copies what nothing changes, `run` to `runEnd`, out of a text that ends at `end`; the target has at least
// as much room as the text has from here on. Runs are short as a rule.
char *copyRun(const char *run, const char *runEnd, const char *end, char *target) {
    const auto length = static_cast<std::size_t>(runEnd - run);
    if (length <= 16 && end - run >= 16)
        std::memcpy(target, run, 16); // what is too much is written over
    else
        std::memcpy(target, run, length);
    return target + length;
}

} // namespace

char *escapeUrl(const char *position, const char *end, const ByteSet &escaped, char *target) {
    for (MemberRuns runs(position, end, escaped); runs.next(); position = runs.end()) {
        target = copyRun(position, runs.begin(), end, target);
        for (const char *byte = runs.begin(); byte != runs.end(); ++byte, target += 3) {
            const auto value = static_cast<unsigned char>(*byte);
            target[0] = '%';
            target[1] = static_cast<char>('0' + value / 16);
            target[2] = static_cast<char>('0' + value % 16);
        }
    }
    return copyRun(position, end, end, target);
}

char *unescapeUrl(const char *position, const char *end, char *target) {
    for (MemberRuns runs(position, end, kUrlMarks); runs.next();) {
        if (runs.end() <= position) // digits, in a manner of speaking
            continue;
        const char *const mark = std::max(position, runs.begin());
        target = copyRun(position, mark, end, target);
        position = mark;
        while (position < runs.end()) {
            if (*position == '+') {
                *target++ = ' ';
                ++position;
                continue;
            }
            if (end - position < 3) // cut
                return end - position == 2 ? writeByte(digitAt(position + 1), 0, target) : target;
            do { // also those of the runs to come
                target = writeByte(digitAt(position + 1), digitAt(position + 2), target);
                position += 3;
            } while (end - position >= 3 && *position == '%');
        }
    }
    return copyRun(position, end, end, target);
}

} // namespace qb::text
