#include "Text/Hash.h"

#include "RandomText.h"

#include <cmath>
#include <set>
#include <string_view>

using qb::text::hashBytes;
using namespace std::string_view_literals;

// The values hold for both word sizes, so the rows are the comparison.
TEST(HashTest, ValuesAreTheSameOnEveryMachine) {
    const struct {
        std::string_view text;
        std::uint32_t hash;
    } rows[] = {
        {"", 0x00000000u},
        {"a", 0x4C1A93E7u},
        {"abcd", 0x4D1E77B0u},
        {"abcdefg", 0x95D98164u},
        {"abcdefgh", 0xA6E87D28u},
        {"abcdefghi", 0x56697350u},
        {"0123456789abcdef", 0x6CCF262Cu},
        {"0123456789abcdef0", 0x9FBF8628u},
        {"The quick brown fox jumps over the lazy dog", 0xB3BAED84u},
    };
    for (const auto &row : rows)
        EXPECT_EQ(hashBytes(row.text.data(), row.text.size()), row.hash) << row.text;
}

TEST(HashTest, OnlyTheBytesOfTheTextCount) {
    Random random;
    for (std::size_t length = 0; length <= 100; ++length) {
        std::string text(length, '\0');
        for (char &byte : text)
            byte = static_cast<char>(random.bits());
        const std::uint32_t expected = hashBytes(text.data(), length);
        for (std::size_t alignment = 0; alignment < 8; ++alignment) {
            ExactCopy copy(text, alignment);
            EXPECT_EQ(hashBytes(copy.begin(), length), expected);
        }
    }
}

TEST(HashTest, EachBitOfTheTextFlipsEachBitOfTheHashHalfTheTime) {
    Random random;
    for (const std::size_t length : {1u, 4u, 7u, 8u, 9u, 16u, 17u, 31u, 40u}) {
        constexpr int kRounds = 2000;
        std::string text(length, '\0');
        for (std::size_t bit = 0; bit < 8 * length; ++bit) {
            int flips[32] = {};
            for (int round = 0; round < kRounds; ++round) {
                for (char &byte : text)
                    byte = static_cast<char>(random.bits());
                const std::uint32_t before = hashBytes(text.data(), length);
                text[bit / 8] = static_cast<char>(text[bit / 8] ^ (1 << bit % 8));
                const std::uint32_t changed = before ^ hashBytes(text.data(), length);
                for (int i = 0; i < 32; ++i)
                    flips[i] += changed >> i & 1;
            }
            // Half of the rounds, give or take eight standard deviations; a text of one byte has only 128
            // pairs.
            const double tolerance = length == 1 ? 0.25 : 8 * std::sqrt(kRounds / 4.0) / kRounds;
            for (const int flip : flips)
                ASSERT_NEAR(double(flip) / kRounds, 0.5, tolerance) << "length " << length << " bit " << bit;
        }
    }
}

TEST(HashTest, NumberedNamesCollideNoMoreThanByChance) {
    std::set<std::uint32_t> hashes;
    constexpr int kNames = 200000;
    for (int i = 0; i < kNames; ++i) {
        const std::string name = "section.element" + std::to_string(i);
        hashes.insert(hashBytes(name.data(), name.size()));
    }
    EXPECT_GT(hashes.size(), kNames - 25u); // chance gives 4.7 collisions
}
