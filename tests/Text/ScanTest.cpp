#include "Text/Scan.h"
#include "Text/ByteGroup.h"

#include "RandomText.h"

#include <algorithm>

using namespace std::string_view_literals;
namespace text = qb::text;

constexpr text::ByteSet kMixed = text::ByteSet("<&\0\x80\xFF"sv).with(0xE0, 0xE3);
constexpr text::ByteSet kWords = text::ByteSet("_").with('a', 'z').with('0', '9');

static void expectScansEqual(ExactCopy &copy, const text::ByteSet &set) {
    const auto isIn = [&](char byte) { return set.contains(static_cast<unsigned char>(byte)); };
    const char *begin = copy.begin();
    const char *end = copy.end();
    EXPECT_EQ(text::findIn(begin, end, set), std::find_if(begin, end, isIn));
    EXPECT_EQ(text::plain::findIn(begin, end, set), std::find_if(begin, end, isIn));
    EXPECT_EQ(text::findNotIn(begin, end, set), std::find_if_not(begin, end, isIn));
    EXPECT_EQ(text::plain::findNotIn(begin, end, set), std::find_if_not(begin, end, isIn));
    const auto count = static_cast<std::size_t>(std::count_if(begin, end, isIn));
    EXPECT_EQ(text::countIn(begin, end, set), count);
    EXPECT_EQ(text::plain::countIn(begin, end, set), count);
    std::string kept;
    const char *next = begin;
    for (text::MemberRuns runs(begin, end, set); runs.next(); next = runs.end()) {
        EXPECT_LT(runs.begin(), runs.end());
        EXPECT_TRUE(std::all_of(runs.begin(), runs.end(), isIn));
        EXPECT_TRUE(std::none_of(next, runs.begin(), isIn));
        kept.append(runs.begin(), runs.end());
    }
    EXPECT_EQ(kept.size(), count);
    const std::size_t block = std::min<std::size_t>(64, copy.size());
    EXPECT_EQ(text::membersAmong(begin, block, set), text::plain::membersAmong(begin, block, set));
}

TEST(ScanTest, PlainAndVectorScansAgreeAtEachLengthAndAlignment) {
    Random random;
    const std::string pieces[] = {"harmless text ", "x",  "name_1", "<",  "&",  "\xC3\xA9",
                                  "\xE2\x82\xAC",   "\"", "\x7F",   "\r", "\n", std::string(1, '\0')};
    for (std::size_t length = 0; length <= 200 && !HasFailure(); ++length)
        for (std::size_t alignment = 0; alignment < 32; ++alignment) {
            ExactCopy copy(randomText(random, length, pieces), alignment);
            for (const text::ByteSet &set : {kMixed, kWords})
                expectScansEqual(copy, set);
            const char *const firstX = std::find(copy.begin(), copy.end(), 'x');
            EXPECT_EQ(text::findByte(copy.begin(), copy.end(), 'x'), firstX);
            EXPECT_EQ(text::findByteNearby(copy.begin(), copy.end(), 'x'), firstX);
            EXPECT_EQ(text::findLineStop(copy.begin(), copy.end()),
                      text::plain::findIn(copy.begin(), copy.end(), text::kLineStops));
        }
}

TEST(ScanTest, GroupsOfBytesTellPlacesAndTakeBytes) {
    Random random;
    for (int round = 0; round < 1000; ++round) {
        alignas(16) std::uint8_t group[16], other[16];
        for (std::uint8_t &byte : group)
            byte = static_cast<std::uint8_t>(random.below(3) * 0x7F);
        std::copy(std::begin(group), std::end(group), other);
        for (const std::uint8_t wanted : {0x00, 0x7F, 0xFE})
            EXPECT_EQ(text::bytesThatAre(group, wanted), text::plain::bytesThatAre(group, wanted));
        const auto place = static_cast<int>(random.below(16));
        group[place] = other[place] = 0;
        text::setByte(group, place, 0x81);
        text::plain::setByte(other, place, 0x81);
        EXPECT_TRUE(std::equal(std::begin(group), std::end(group), other));
    }
}
