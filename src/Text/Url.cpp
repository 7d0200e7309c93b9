#include "Text/Url.h"

#include "Text/Bytes.h"
#include "Text/Cpu.h"
#include "Text/Url.Vector.h"

#include <algorithm>
#include <array>
#include <bit>
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

// What stands behind "%" for each byte.
constexpr auto kHalves = [] {
    std::array<std::array<char, 2>, 256> halves{};
    for (unsigned i = 0; i < 256; ++i)
        halves[i] = {static_cast<char>('0' + i / 16), static_cast<char>('0' + i % 16)};
    return halves;
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

using Escape = char *(*)(const char *position, std::size_t length, std::uint64_t escaped, char *target);

// What escapes a block behind which the text has so many bytes, or null.
Escape escapeFor(std::ptrdiff_t behind) {
    if (hasAvx512Vbmi2())
        return &avx512::escapeUrl;
    return hasAvx2() && behind >= 16 ? &avx2::escapeUrl : nullptr;
}

// Unescapes what vectors can.
UrlResult unescapeMost(const char *position, const char *end, char *target) {
    if (hasAvx512Vbmi2())
        return avx512::unescapeUrl(position, end, target);
    return hasAvx2() ? avx2::unescapeUrl(position, end, target) : UrlResult{position, target};
}

} // namespace

// So many of a block's 64 bytes are better escaped one by one.
constexpr int kFew = 10;

char *escapeUrl(const char *position, const char *end, const ByteSet &escaped, char *target) {
    std::size_t length = 0;
    for (const char *block = position; block != end; block += length) {
        length = std::min<std::size_t>(64, static_cast<std::size_t>(end - block));
        std::uint64_t members = membersAmong(block, length, escaped);
        const char *const blockEnd = block + length;
        if (const Escape escape = std::popcount(members) > kFew ? escapeFor(end - blockEnd) : nullptr) {
            target = copyRun(position, block, end, target);
            target = escape(block, length, members, target);
            position = blockEnd;
            continue;
        }
        for (; members; members &= members - 1) {
            const char *const member = block + std::countr_zero(members);
            target = copyRun(position, member, end, target);
            *target = '%';
            std::memcpy(target + 1, kHalves[static_cast<unsigned char>(*member)].data(), 2);
            target += 3;
            position = member + 1;
        }
    }
    return copyRun(position, end, end, target);
}

char *unescapeUrl(const char *position, const char *end, char *target) {
    const UrlResult most = unescapeMost(position, end, target);
    position = most.next;
    target = most.end;
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
