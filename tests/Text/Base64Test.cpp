#include "Text/Base64.h"

#include "CpuLevels.h"
#include "RandomText.h"

namespace text = qb::text;

// One bit after the other, as the RFC draws them.
static std::string encodedBitwise(std::string_view bytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    const auto bitAt = [&](std::size_t i) {
        return static_cast<unsigned char>(bytes[i / 8]) >> (7 - i % 8) & 1;
    };
    for (std::size_t i = 0; i < bytes.size() * 8; i += 6) {
        unsigned value = 0;
        for (std::size_t bit = i; bit < i + 6; ++bit)
            value = value << 1 | (bit < bytes.size() * 8 ? static_cast<unsigned>(bitAt(bit)) : 0);
        result += alphabet[value];
    }
    return result.append((4 - result.size() % 4) % 4, '=');
}

static std::string encoded(ExactCopy &bytes) {
    const std::size_t rest = bytes.size() % 3;
    const std::size_t whole = bytes.size() - rest;
    ExactCopy target(std::string((bytes.size() + 2) / 3 * 4, '?'), bytes.size() % 5);
    char *end = text::encodeBase64Groups(bytes.begin(), whole / 3, target.begin());
    if (rest)
        end = text::encodeBase64Rest(bytes.begin() + whole, rest, end);
    EXPECT_EQ(end, target.end());
    return {target.begin(), target.end()};
}

// The decoded bytes, and where in the text decoding stopped.
static std::pair<std::string, std::size_t> decoded(std::string_view source) {
    ExactCopy copy(std::string(source), source.size() % 7);
    ExactCopy target(std::string(source.size() / 4 * 3, '?'), 1);
    const text::Base64Result result = text::decodeBase64Groups(copy.begin(), copy.end(), target.begin());
    return {{target.begin(), result.end}, static_cast<std::size_t>(result.next - copy.begin())};
}

TEST(Base64Test, EachLengthIsEncodedAsBitsSayAndDecodedBack) {
    Random random;
    forEachCpuLevel([&] {
        for (std::size_t length = 0; length < 300 && !testing::Test::HasFailure(); ++length) {
            const std::string bytes = randomBytes(random, length);
            ExactCopy copy(bytes, length % 9);
            const std::string expected = encodedBitwise(bytes);
            ASSERT_EQ(encoded(copy), expected);
            const std::size_t whole = length / 3 * 3; // groups with "=" are left to the caller
            ASSERT_EQ(decoded(expected), std::pair(bytes.substr(0, whole), whole / 3 * 4));
        }
    });
}

TEST(Base64Test, DecodingStopsAtTheFirstGroupWithAnotherByteWhateverItIs) {
    Random random;
    forEachCpuLevel([&] {
        for (int byte = 0; byte < 256; ++byte) {
            const bool isValue = text::base64Value(static_cast<char>(byte)) != text::kNoBase64Value;
            EXPECT_EQ(isValue, byte < 128 && (std::isalnum(byte) || byte == '+' || byte == '/')) << byte;
            std::string source = encodedBitwise(randomBytes(random, 150));
            const std::size_t position = random.below(source.size());
            source[position] = static_cast<char>(byte);
            EXPECT_EQ(decoded(source).second, isValue ? source.size() : position / 4 * 4) << source;
        }
    });
}
