#include "Text/Base64.h"

#include "Text/Base64.Vector.h"
#include "Text/Bytes.h"
#include "Text/Cpu.h"

namespace qb::text {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two characters for each value of twelve bits.
struct PairTable {
    char pairs[4096][2] = {};

    constexpr PairTable() {
        for (unsigned value = 0; value < 4096; ++value) {
            pairs[value][0] = kAlphabet[value >> 6];
            pairs[value][1] = kAlphabet[value & 63];
        }
    }
};

struct ValueTable {
    unsigned char values[256] = {};

    constexpr ValueTable() {
        for (unsigned char &value : values)
            value = kNoBase64Value;
        for (unsigned char i = 0; i < 64; ++i)
            values[static_cast<unsigned char>(kAlphabet[i])] = i;
    }
};

constexpr PairTable kPairs;
constexpr ValueTable kValues;

inline void encodeGroup(const unsigned char *bytes, char *target) {
    const unsigned high = static_cast<unsigned>(bytes[0] << 4 | bytes[1] >> 4);
    const unsigned low = static_cast<unsigned>((bytes[1] & 15) << 8 | bytes[2]);
    std::memcpy(target, kPairs.pairs[high], 2);
    std::memcpy(target + 2, kPairs.pairs[low], 2);
}

} // namespace

unsigned base64Value(char character) {
    return kValues.values[static_cast<unsigned char>(character)];
}

char *encodeBase64Rest(const void *bytes, std::size_t length, char *target) {
    unsigned char group[3] = {};
    std::memcpy(group, bytes, length);
    encodeGroup(group, target);
    target[3] = '=';
    if (length == 1)
        target[2] = '=';
    return target + 4;
}

char *plain::encodeBase64Groups(const void *bytes, std::size_t length, char *target) {
    const auto *position = static_cast<const unsigned char *>(bytes);
    for (; length >= 3; length -= 3, position += 3, target += 4)
        encodeGroup(position, target);
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

// The vector versions leave what is too short for their loads and stores to the next narrower one.

char *encodeBase64Groups(const void *bytes, std::size_t length, char *target) {
    Base64Input input{static_cast<const char *>(bytes), length};
    if (hasAvx2())
        target = avx2::encodeBase64(input, target);
    if (hasSse41())
        target = sse41::encodeBase64(input, target);
    return plain::encodeBase64Groups(input.bytes, input.length, target);
}

Base64Result decodeBase64Groups(const char *position, const char *end, char *target) {
    Base64Result result{position, target};
    if (hasAvx2())
        result = avx2::decodeBase64(result, end);
    if (hasSse41())
        result = sse41::decodeBase64(result, end);
    return plain::decodeBase64Groups(result.next, end, result.end);
}

} // namespace qb::text
