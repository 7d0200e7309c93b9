#include "Text/Hex.h"

#include "RandomText.h"

#include <string_view>

namespace text = qb::text;

namespace {

std::string hexOf(const std::string &bytes) {
    std::string digits(static_cast<std::size_t>(text::hexGroupsLength(bytes.size())), '?');
    EXPECT_EQ(text::writeHexGroups(bytes.data(), bytes.size(), digits.data()), digits.data() + digits.size());
    return digits;
}

} // namespace

TEST(HexTest, ReadingEndsAtTheFirstOtherByteAndTellsALoneDigit) {
    const struct {
        std::string text;
        std::string bytes;
        std::size_t next;
        bool isComplete;
    } rows[] = {
        {"", "", 0, true},           {"0fBD>", "\x0F\xBD", 4, true}, {"0 f b\nd7", "\x0F\xBD", 8, false},
        {"4142 4>", "AB", 6, false}, {"41/", "A", 2, true}, // the neighbours of the digits in ASCII
        {"41:", "A", 2, true},       {"41@", "A", 2, true},          {"41`", "A", 2, true},
    };
    for (const auto &row : rows) {
        ExactCopy copy(row.text, 0);
        std::string bytes(row.text.size() / 2, '?');
        const auto result =
            text::readHex(copy.begin(), copy.end(), reinterpret_cast<unsigned char *>(bytes.data()));
        EXPECT_EQ(bytes.substr(0, result.length), row.bytes) << row.text;
        EXPECT_EQ(result.next, copy.begin() + row.next) << row.text;
        EXPECT_EQ(result.isComplete, row.isComplete) << row.text;
    }
}

TEST(HexTest, EveryByteComesBack) {
    Random random;
    for (std::size_t length = 0; length < 70; ++length) {
        std::string bytes;
        for (std::size_t i = 0; i < length; ++i)
            bytes += static_cast<char>(random.bits());
        ExactCopy digits(hexOf(bytes), 0);
        std::string again(length, '?');
        const auto result =
            text::readHex(digits.begin(), digits.end(), reinterpret_cast<unsigned char *>(again.data()));
        EXPECT_EQ(result.length, length);
        EXPECT_EQ(result.next, digits.end());
        EXPECT_EQ(again, bytes);
    }
}
