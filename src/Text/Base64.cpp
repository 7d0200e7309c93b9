#include "Text/Base64.h"

#include "Text/Base64.Vector.h"
#include "Text/Bytes.h"
#include "Text/Cpu.h"

#include <array>

namespace qb::text {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr auto kValues = [] {
    std::array<unsigned char, 256> values{};
    values.fill(kNoBase64Value);
    for (unsigned char i = 0; i < 64; ++i)
        values[static_cast<unsigned char>(kAlphabet[i])] = i;
    return values;
}();

// Two characters for each value of twelve bits.
constexpr auto kPairs = [] {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (unsigned value = 0; value < 4096; ++value)
        pairs[value] = {kAlphabet[value >> 6], kAlphabet[value & 63]};
    return pairs;
}();

void encodeGroup(const char *bytes, char *target) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    const auto second = static_cast<unsigned char>(bytes[1]);
    const auto third = static_cast<unsigned char>(bytes[2]);
    std::memcpy(target, kPairs[first << 4 | second >> 4].data(), 2);
    std::memcpy(target + 2, kPairs[(second & 15) << 8 | third].data(), 2);
}

} // namespace

const Base64Tables kBase64Tables = {
    .spread = {1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10},
    .spreadLast = {5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14},
    .oddBits = {0x0FC0FC00, 0x0FC0FC00, 0x0FC0FC00, 0x0FC0FC00},
    .oddShifts = {0x04000040, 0x04000040, 0x04000040, 0x04000040},
    .evenBits = {0x003F03F0, 0x003F03F0, 0x003F03F0, 0x003F03F0},
    .evenShifts = {0x01000010, 0x01000010, 0x01000010, 0x01000010},
    .capitals = {26, 26, 26, 26, 26, 26, 26, 26, 26, 26, 26, 26, 26, 26, 26, 26},
    .letters = {51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 51},
    .isCapital = {13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13},
    .distances = {'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                  '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0},
    .slash = {'/', '/', '/', '/', '/', '/', '/', '/', '/', '/', '/', '/', '/', '/', '/', '/'},
    .highs = {0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10},
    .lows = {0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A},
    .back = {0, 16, 19, 4, -65, -65, -71, -71},
    .pairs = {0x01400140, 0x01400140, 0x01400140, 0x01400140},
    .groups = {0x00011000, 0x00011000, 0x00011000, 0x00011000},
    .pack = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1},
};

unsigned base64Value(char character) {
    return kValues[static_cast<unsigned char>(character)];
}

char *encodeBase64Rest(const char *bytes, std::size_t length, char *target) {
    const char group[3] = {bytes[0], length == 2 ? bytes[1] : '\0'};
    encodeGroup(group, target);
    target[3] = '=';
    if (length == 1)
        target[2] = '=';
    return target + 4;
}

char *plain::encodeBase64Groups(const char *bytes, std::size_t count, char *target) {
    for (; count != 0; --count, bytes += 3, target += 4)
        encodeGroup(bytes, target);
    return target;
}

Base64Result plain::decodeBase64Groups(const char *position, const char *end, char *target) {
    for (; end - position >= 4; position += 4, target += 3) {
        const unsigned first = base64Value(position[0]);
        const unsigned second = base64Value(position[1]);
        const unsigned third = base64Value(position[2]);
        const unsigned fourth = base64Value(position[3]);
        if ((first | second | third | fourth) > 63)
            break;
        target[0] = static_cast<char>(first << 2 | second >> 4);
        target[1] = static_cast<char>(second << 4 | third >> 2);
        target[2] = static_cast<char>(third << 6 | fourth);
    }
    return {position, target};
}

char *encodeBase64Groups(const char *bytes, std::size_t count, char *target) {
    if (count >= avx2::kLeastToEncode && hasAvx2())
        return avx2::encodeBase64(bytes, count, target);
    if (count >= sse41::kLeastToEncode && hasSse41())
        return sse41::encodeBase64(bytes, count, target);
    return plain::encodeBase64Groups(bytes, count, target);
}

Base64Result decodeBase64Groups(const char *position, const char *end, char *target) {
    if (position != end && end[-1] == '=')
        end -= 4; // it would stop there
    Base64Result result{position, target};
    const auto length = static_cast<std::size_t>(end - position);
    if (length >= avx2::kLeastToDecode && hasAvx2())
        result = avx2::decodeBase64(position, end, target);
    else if (length >= sse41::kLeastToDecode && hasSse41())
        result = sse41::decodeBase64(position, end, target);
    return result.next == end ? result : plain::decodeBase64Groups(result.next, end, result.end);
}

char *decodeBase64Last(const char *group, char *target) {
    const int count = group[3] != '=' ? 3 : group[2] != '=' ? 2 : 1;
    const unsigned first = base64Value(group[0]);
    const unsigned second = base64Value(group[1]);
    const unsigned third = count > 1 ? base64Value(group[2]) : 0;
    const unsigned fourth = count > 2 ? base64Value(group[3]) : 0;
    if ((first | second | third | fourth) > 63)
        return nullptr;
    target[0] = static_cast<char>(first << 2 | second >> 4);
    if (count > 1)
        target[1] = static_cast<char>(second << 4 | third >> 2);
    if (count > 2)
        target[2] = static_cast<char>(third << 6 | fourth);
    return target + count;
}

} // namespace qb::text
