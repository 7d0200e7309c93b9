#include "Text/Utf8.h"

#include "Text/Bytes.h"
#include "Text/Cpu.h"
#include "Text/Utf8.Vector.h"

#include <algorithm>

namespace qb::text {

namespace {

constexpr std::uint64_t kTopBits = 0x8080808080808080u;

// Bad text comes in stretches: after an error so many characters are decoded one by one before vectors are
// tried again, because a vector run costs as much as a dozen characters even if it ends at once.
constexpr int kCharactersAfterError = 16;

// Text shorter than a block of the vector versions is mostly ASCII, which they would not notice.
constexpr std::size_t kShort = 128;

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Returns the length of the strictly valid sequence at `position` (`available` bytes, at least one), or 0.
std::size_t strictLength(const char *position, std::size_t available) {
    const auto lead = static_cast<unsigned char>(position[0]);
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4 || available < 2 || !isContinuation(position[1]))
        return 0;
    if (lead < 0xE0)
        return 2;
    const auto second = static_cast<unsigned char>(position[1]);
    if (available < 3 || !isContinuation(position[2]))
        return 0;
    if (lead < 0xF0) {
        const bool overlong = lead == 0xE0 && second < 0xA0;
        const bool surrogate = lead == 0xED && second >= 0xA0;
        return overlong || surrogate ? 0 : 3;
    }
    const bool overlong = lead == 0xF0 && second < 0x90;
    const bool tooLarge = lead == 0xF4 && second >= 0x90;
    return available < 4 || !isContinuation(position[3]) || overlong || tooLarge ? 0 : 4;
}

// Adds one lenient character to `run`.
void addLenient(const char *bytes, std::size_t length, Utf8Run &run) {
    const std::size_t used = std::max<std::size_t>(strictLength(bytes + run.bytes, length - run.bytes), 1);
    run.bytes += used;
    run.characters += 1;
    run.units += used == 4 ? 2 : 1;
}

void addRun(Utf8Run &run, const Utf8Run &more) {
    run.bytes += more.bytes;
    run.characters += more.characters;
    run.units += more.units;
}

} // namespace

int structuralLength(unsigned char lead) {
    if (lead < 0xC0 || lead >= 0xFE)
        return lead < 0x80 ? 1 : 0;
    return __builtin_clz(~(std::uint32_t{lead} << 24));
}

void CheckedText::dropCutSequence(const char *text) {
    for (std::size_t back = 1; back <= 3 && back <= bytes; ++back) {
        const auto byte = static_cast<unsigned char>(text[bytes - back]);
        if (byte < 0x80)
            return;
        if (byte < 0xC0)
            continue;
        const std::size_t wanted = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        if (wanted <= back)
            return;
        bytes -= back;
        continuations -= back - 1;
        supplementary -= wanted == 4;
        return;
    }
}

bool plain::isAscii(const char *bytes, std::size_t length) {
    std::size_t position = 0;
    for (; length - position >= 32; position += 32) {
        const char *block = bytes + position;
        const std::uint64_t low = loadWord<std::uint64_t>(block) | loadWord<std::uint64_t>(block + 8);
        const std::uint64_t high = loadWord<std::uint64_t>(block + 16) | loadWord<std::uint64_t>(block + 24);
        if ((low | high) & kTopBits)
            return false;
    }
    for (; length - position >= 8; position += 8)
        if (loadWord<std::uint64_t>(bytes + position) & kTopBits)
            return false;
    return (loadShort(bytes + position, length - position) & kTopBits) == 0;
}

Utf8Run plain::validRun(const char *bytes, std::size_t length) {
    Utf8Run run;
    while (run.bytes < length) {
        std::size_t ascii = 0;
        while (length - run.bytes - ascii >= 8 &&
               (loadWord<std::uint64_t>(bytes + run.bytes + ascii) & kTopBits) == 0)
            ascii += 8;
        addRun(run, {ascii, ascii, ascii});
        // What made the word above end is among the next eight bytes.
        const std::size_t stop = std::min(length, run.bytes + 8);
        while (run.bytes < stop) {
            const std::size_t used = strictLength(bytes + run.bytes, length - run.bytes);
            if (used == 0)
                return run;
            addRun(run, {used, 1, used == 4 ? 2u : 1u});
        }
    }
    return run;
}

bool isAscii(const char *bytes, std::size_t length) {
    // A shorter text is done before vectors are set up.
    return length >= 64 && hasAvx2() ? avx2::isAscii(bytes, length) : plain::isAscii(bytes, length);
}

Utf8Run validRun(const char *bytes, std::size_t length) {
    if (length < kShort && isAscii(bytes, length))
        return {length, length, length};
    if (!hasAvx2())
        return plain::validRun(bytes, length);
    const CheckedText text = hasAvx512() ? avx512::checkText(bytes, length) : avx2::checkText(bytes, length);
    Utf8Run run{text.bytes, text.bytes - text.continuations,
                text.bytes - text.continuations + text.supplementary};
    if (run.bytes < length)
        addRun(run, plain::validRun(bytes + run.bytes, length - run.bytes));
    return run;
}

std::size_t validPrefix(const char *bytes, std::size_t length) {
    if (length < kShort && isAscii(bytes, length))
        return length;
    if (!hasAvx2())
        return plain::validRun(bytes, length).bytes;
    const std::size_t checked =
        hasAvx512() ? avx512::checkTextOnly(bytes, length) : avx2::checkTextOnly(bytes, length);
    return checked == length ? length : checked + plain::validRun(bytes + checked, length - checked).bytes;
}

int sequenceLength(const unsigned char *position, const unsigned char *end, std::uint32_t *codePoint) {
    if (position == end || *position == 0) {
        if (codePoint)
            *codePoint = 0;
        return 0;
    }
    const int length = structuralLength(*position);
    if (length == 0 || end - position < length)
        return -1;
    std::uint32_t value = length == 1 ? *position : *position & (0x7Fu >> length);
    for (int i = 1; i < length; ++i) {
        if ((position[i] & 0xC0) != 0x80)
            return -1;
        value = value << 6 | (position[i] & 0x3F);
    }
    if (codePoint)
        *codePoint = value;
    return length;
}

std::size_t structuralPrefix(const char *bytes, std::size_t length, std::size_t *characters) {
    const auto *end = reinterpret_cast<const unsigned char *>(bytes) + length;
    Utf8Run run;
    bool isValid = true;
    while (isValid && run.bytes < length) {
        addRun(run, validRun(bytes + run.bytes, length - run.bytes));
        for (int i = 0; isValid && i < kCharactersAfterError && run.bytes < length; ++i) {
            const auto *position = reinterpret_cast<const unsigned char *>(bytes) + run.bytes;
            const int used = *position == 0 ? 1 : sequenceLength(position, end, nullptr);
            isValid = used > 0;
            if (isValid)
                addRun(run, {static_cast<std::size_t>(used), 1, 1});
        }
    }
    *characters = run.characters;
    return run.bytes;
}

std::size_t decodeLenient(const char *position, const char *end, std::uint32_t *codePoint) {
    const auto byteAt = [position](std::size_t index) {
        return std::uint32_t{static_cast<unsigned char>(position[index])};
    };
    const std::size_t length = strictLength(position, static_cast<std::size_t>(end - position));
    if (length <= 1) {
        *codePoint = byteAt(0);
        return 1;
    }
    std::uint32_t value = byteAt(0) & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i)
        value = value << 6 | (byteAt(i) & 0x3F);
    *codePoint = value;
    return length;
}

std::size_t decodeLenientBefore(const char *begin, const char *position, std::uint32_t *codePoint) {
    const char *start = position - 1;
    while (isContinuation(*start) && start != begin && position - start < 4)
        --start;
    if (decodeLenient(start, position, codePoint) == static_cast<std::size_t>(position - start))
        return static_cast<std::size_t>(position - start);
    return decodeLenient(position - 1, position, codePoint);
}

bool isCharacterStart(const char *begin, const char *end, const char *position) {
    if (position == begin || position == end || !isContinuation(*position))
        return true;
    const char *start = position - 1;
    while (isContinuation(*start) && start != begin && position - start < 3)
        --start;
    // A lead byte is never part of another character, so that decoding from there is the text's own.
    return strictLength(start, static_cast<std::size_t>(end - start)) <=
           static_cast<std::size_t>(position - start);
}

std::size_t utf16Units(const char *bytes, std::size_t length) {
    Utf8Run run;
    while (run.bytes < length) {
        addRun(run, validRun(bytes + run.bytes, length - run.bytes));
        for (int i = 0; i < kCharactersAfterError && run.bytes < length; ++i)
            addLenient(bytes, length, run);
    }
    return run.units;
}

std::size_t byteOffsetOfUnit(const char *bytes, std::size_t length, std::size_t unit, bool *isSecondHalf) {
    Utf8Run run;
    Utf8Run before; // up to the last character decoded alone
    while (run.units <= unit && run.bytes < length) {
        // No unit takes less than a byte, so a run of as many bytes as there are units left never goes too
        // far.
        const std::size_t ahead = std::min(unit - run.units, length - run.bytes);
        if (ahead >= 64)
            addRun(run, validRun(bytes + run.bytes, ahead));
        for (int i = 0; i < kCharactersAfterError && run.units <= unit && run.bytes < length; ++i) {
            before = run;
            addLenient(bytes, length, run);
        }
    }
    const bool isFound = run.units > unit;
    if (isSecondHalf)
        *isSecondHalf = isFound && before.units < unit;
    return isFound ? before.bytes : length;
}

std::size_t encode(std::uint32_t codePoint, char *target) {
    if (codePoint < 0x80) {
        target[0] = static_cast<char>(codePoint);
        return 1;
    }
    if (codePoint > 0x7FFFFFFF)
        return 0;
    std::size_t length = 2; // holds 11 bits; each further byte holds five more
    while (codePoint >> (5 * length + 1))
        ++length;
    for (std::size_t i = length - 1; i > 0; --i, codePoint >>= 6)
        target[i] = static_cast<char>(0x80 | (codePoint & 0x3F));
    target[0] = static_cast<char>((0xFF00u >> length) | codePoint);
    return length;
}

} // namespace qb::text
