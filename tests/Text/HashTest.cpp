#include "Text/Hash.h"

#include "RandomText.h"

using qb::text::hashBytes;

// The values hold for both word sizes, so the rows are the comparison.
TEST(HashTest, ValuesAreTheSameOnEveryMachine) {
    const std::pair<std::string_view, std::uint32_t> rows[] = {
        {"", 0x00000000u},
        {"a", 0x4C1A93E7u},
        {"abcdefgh", 0xA6E87D28u},
        {"abcdefghi", 0x56697350u},
        {"0123456789abcdef0", 0x9FBF8628u},
        {"The quick brown fox jumps over the lazy dog", 0xB3BAED84u},
    };
    for (const auto &[text, hash] : rows)
        EXPECT_EQ(hashBytes(text.data(), text.size()), hash) << text;
}

TEST(HashTest, OnlyTheBytesOfTheTextCount) {
    Random random;
    for (std::size_t length = 0; length <= 100; ++length) {
        const std::string text = randomBytes(random, length);
        const std::uint32_t expected = hashBytes(text.data(), length);
        for (std::size_t alignment = 0; alignment < 8; ++alignment) {
            ExactCopy copy(text, alignment);
            EXPECT_EQ(hashBytes(copy.begin(), length), expected);
        }
    }
}
