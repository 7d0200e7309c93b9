#include "Text/Uudecode.h"

#include <array>

namespace qb::text {

namespace {

constexpr unsigned char kNoValue = 0xFF;

constexpr auto kValues = [] {
    std::array<unsigned char, 256> values{};
    for (unsigned i = 0; i < 256; ++i)
        values[i] = i < 32 || i > 127 ? kNoValue : static_cast<unsigned char>((i - 32) % 64);
    values['~'] = 62;
    return values;
}();

unsigned char valueOf(char character) {
    return kValues[static_cast<unsigned char>(character)];
}

} // namespace

std::size_t uudecodedLength(std::string_view line) {
    const unsigned char count = line.empty() ? 0 : valueOf(line.front());
    return count == kNoValue ? 0 : count;
}

UudecodedLine uudecodeLine(std::string_view line, char *target) {
    if (line.empty())
        return {target, UudecodedLine::kWhole};
    if (valueOf(line.front()) == kNoValue)
        return {target, 0};
    const std::size_t count = uudecodedLength(line);
    unsigned bits = 0;
    for (std::size_t written = 0, place = 1; written < count; ++place) {
        const unsigned char value = place < line.size() ? valueOf(line[place]) : 0;
        if (value == kNoValue)
            return {target, place};
        bits = bits << 6 | value;
        const std::size_t inGroup = place % 4; // the first character of a group completes no byte
        if (inGroup == 1)
            continue;
        const unsigned unused = inGroup == 2 ? 4 : inGroup == 3 ? 2 : 0;
        *target++ = static_cast<char>(bits >> unused);
        ++written;
    }
    return {target, UudecodedLine::kWhole};
}

} // namespace qb::text
