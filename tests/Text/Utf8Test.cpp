#include "Text/Utf8.h"

#include "CpuLevels.h"
#include "RandomText.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

using namespace std::string_view_literals;
namespace text = qb::text;

namespace {

// Decodes by the table of RFC 3629, section 4, as slowly and plainly as can be; nothing when malformed.
std::optional<std::size_t> referenceLength(std::string_view rest) {
    const auto at = [&](std::size_t i) { return i < rest.size() ? static_cast<unsigned char>(rest[i]) : 0u; };
    const auto in = [&](std::size_t i, unsigned low, unsigned high) { return at(i) >= low && at(i) <= high; };
    const auto tail = [&](std::size_t i) { return in(i, 0x80, 0xBF); };
    if (in(0, 0, 0x7F))
        return 1;
    if (in(0, 0xC2, 0xDF) && tail(1))
        return 2;
    const bool three = (in(0, 0xE0, 0xE0) && in(1, 0xA0, 0xBF)) || (in(0, 0xE1, 0xEC) && tail(1)) ||
                       (in(0, 0xED, 0xED) && in(1, 0x80, 0x9F)) || (in(0, 0xEE, 0xEF) && tail(1));
    if (three && tail(2))
        return 3;
    const bool four = (in(0, 0xF0, 0xF0) && in(1, 0x90, 0xBF)) || (in(0, 0xF1, 0xF3) && tail(1)) ||
                      (in(0, 0xF4, 0xF4) && in(1, 0x80, 0x8F));
    if (four && tail(2) && tail(3))
        return 4;
    return std::nullopt;
}

text::Utf8Run referenceRun(std::string_view bytes) {
    text::Utf8Run run;
    while (run.bytes < bytes.size()) {
        const auto length = referenceLength(bytes.substr(run.bytes));
        if (!length)
            break;
        run.bytes += *length;
        run.characters += 1;
        run.units += *length == 4 ? 2 : 1;
    }
    return run;
}

std::vector<std::size_t> referenceUnitOffsets(std::string_view bytes) {
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = referenceLength(bytes.substr(i)).value_or(1);
        offsets.insert(offsets.end(), length == 4 ? 2 : 1, i);
        i += length;
    }
    return offsets;
}

int structuralLength(std::string_view bytes, std::uint32_t *codePoint = nullptr) {
    const auto *start = reinterpret_cast<const unsigned char *>(bytes.data());
    return text::sequenceLength(start, start + bytes.size(), codePoint);
}

const std::string kValid[] = {"a", "plain ascii text, ", "ü",          "ß",      "ऄ",     "語", "\uFFFD",
                              "𝄞", "\U0010FFFF",         "\U00010000", "\u0800", "\u0080"};
const std::string kFaults[] = {"\xFF",
                               "\x80",
                               "\xC3",
                               "\xED\xA0\x80",
                               "\xE0\x80\x80",
                               "\xF4\x90\x80\x80",
                               "\xF0\x80\x80\x80",
                               "\xC0\x80",
                               "\xE4\xBA",
                               "\xF8\x88\x80\x80\x80",
                               "\xFC\x84\x80\x80\x80\x80",
                               "\xF5\x80\x80\x80"};

std::string randomUtf8(Random &random, std::size_t length) {
    std::string text = randomText(random, length, kValid);
    if (length && random.below(2)) { // faults anywhere, few of them
        for (std::size_t faults = random.below(3) + 1; faults; --faults)
            text.insert(random.below(text.size()), random.oneOf(kFaults));
        text.resize(length);
    }
    return text;
}

void expectSame(const text::Utf8Run &run, const text::Utf8Run &expected) {
    EXPECT_EQ(run.bytes, expected.bytes);
    EXPECT_EQ(run.characters, expected.characters);
    EXPECT_EQ(run.units, expected.units);
}

} // namespace

TEST(Utf8Test, EachVersionEqualsTheGrammarAtEachLengthAndAlignment) {
    Random random;
    for (std::size_t length = 0; length <= 300 && !HasFailure(); ++length)
        for (std::size_t alignment = 0; alignment < 32; ++alignment) {
            ExactCopy copy(randomUtf8(random, length), alignment);
            const auto isBelow80 = [](char byte) { return (byte & 0x80) == 0; };
            const bool isAscii = std::all_of(copy.begin(), copy.end(), isBelow80);
            const text::Utf8Run expected = referenceRun({copy.begin(), length});
            forEachCpuLevel([&] {
                expectSame(text::validRun(copy.begin(), length), expected);
                EXPECT_EQ(text::validPrefix(copy.begin(), length), expected.bytes);
                EXPECT_EQ(text::isAscii(copy.begin(), length), isAscii);
            });
        }
}

// Every lead byte with every second byte, with followers that complete it or not, at the places where vectors
// and blocks begin and end.
TEST(Utf8Test, EveryBeginningOfASequenceIsJudgedAsTheGrammarSays) {
    const std::string followers[] = {"", "\x80", "\x80\x80", "\x80\x80\x80", "\xBF\xBF\xBF\xBF", "a"};
    for (unsigned pair = 0xBF00; pair < 0x10000 && !HasFailure(); ++pair)
        for (const std::string &follower : followers) {
            const std::string sequence =
                std::string{static_cast<char>(pair >> 8), static_cast<char>(pair)} + follower;
            const std::size_t valid = referenceRun(sequence).bytes;
            for (const std::size_t before : {0u, 31u, 63u, 125u, 126u}) {
                const std::string bytes = std::string(before, 'a') + sequence;
                const std::string longer = bytes + std::string(130, 'z');
                const std::size_t all = valid == sequence.size() ? longer.size() : before + valid;
                forEachCpuLevel([&] {
                    ASSERT_EQ(text::validPrefix(bytes.data(), bytes.size()), before + valid)
                        << std::hex << pair;
                    ASSERT_EQ(text::validPrefix(longer.data(), longer.size()), all) << std::hex << pair;
                });
            }
        }
}

TEST(Utf8Test, OneByteIsFoundWhereverItStandsInALongAsciiText) {
    std::string bytes(300, 'x');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = '\x80';
        EXPECT_FALSE(text::isAscii(bytes.data(), bytes.size())) << i;
        EXPECT_EQ(text::validPrefix(bytes.data(), bytes.size()), i);
        bytes[i] = 'x';
    }
    EXPECT_TRUE(text::isAscii(bytes.data(), bytes.size()));
}

TEST(Utf8Test, StructuralSequencesAndTheirCodePoints) {
    const struct {
        std::string_view bytes;
        int length;
        std::uint32_t codePoint;
    } rows[] = {
        {"", 0, 0},
        {"\0a"sv, 0, 0},
        {"a", 1, 'a'},
        {"\x7F\x80", 1, 0x7F},
        {"\xC3\xA9", 2, 0xE9},
        {"\xC0\x80", 2, 0},          // overlong
        {"\xED\xA0\x80", 3, 0xD800}, // surrogate
        {"\xEF\xBF\xBF", 3, 0xFFFF},
        {"\xF0\x9D\x84\x9E", 4, 0x1D11E},
        {"\xF7\xBF\xBF\xBF", 4, 0x1FFFFF},
        {"\xF8\x88\x80\x80\x80", 5, 0x200000},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", 6, 0x7FFFFFFF},
    };
    for (const auto &row : rows) {
        std::uint32_t codePoint = 0x12345;
        EXPECT_EQ(structuralLength(row.bytes, &codePoint), row.length) << row.bytes;
        EXPECT_EQ(codePoint, row.codePoint);
    }
    for (const std::string_view bad :
         {"\x80"sv, "\xBF"sv, "\xFE\x80\x80\x80\x80\x80\x80"sv, "\xFF"sv, "\xC3"sv, "\xC3\0"sv, "\xC3z"sv,
          "\xE2\x82"sv, "\xE2\x82z"sv, "\xFD\xBF\xBF\xBF\xBF"sv, "\xFD\xBF\xBF\xBF\xBF\x3F"sv})
        EXPECT_EQ(structuralLength(bad), -1) << bad;
}

TEST(Utf8Test, StructuralPrefixEqualsTheDecoderSequenceBySequence) {
    Random random;
    for (std::size_t length = 0; length <= 400; ++length) {
        ExactCopy copy(randomUtf8(random, length), length % 32);
        std::size_t bytes = 0;
        std::size_t characters = 0;
        while (bytes < length) {
            const std::string_view rest(copy.begin() + bytes, length - bytes);
            const int used = rest[0] == '\0' ? 1 : structuralLength(rest);
            if (used < 0)
                break;
            bytes += static_cast<std::size_t>(used);
            ++characters;
        }
        std::size_t counted = 0;
        EXPECT_EQ(text::structuralPrefix(copy.begin(), length, &counted), bytes);
        EXPECT_EQ(counted, characters);
    }
}

TEST(Utf8Test, UnitsAreCountedAndFoundInLenientText) {
    Random random;
    for (std::size_t length = 0; length <= 400; length += 1 + random.below(3)) {
        ExactCopy copy(randomUtf8(random, length), length % 32);
        const std::vector<std::size_t> offsets = referenceUnitOffsets({copy.begin(), length});
        ASSERT_EQ(text::utf16Units(copy.begin(), length), offsets.size());
        for (std::size_t unit = 0; unit < offsets.size(); ++unit) {
            bool isSecond = false;
            ASSERT_EQ(text::byteOffsetOfUnit(copy.begin(), length, unit, &isSecond), offsets[unit]);
            ASSERT_EQ(isSecond, unit > 0 && offsets[unit - 1] == offsets[unit]);
        }
        EXPECT_EQ(text::byteOffsetOfUnit(copy.begin(), length, offsets.size()), length);
        EXPECT_EQ(text::byteOffsetOfUnit(copy.begin(), length, SIZE_MAX), length);
    }
}

TEST(Utf8Test, EncodedCodePointsAreShortestAndDecodeAgain) {
    for (const std::uint64_t edge :
         {0x80u, 0x800u, 0xD800u, 0xE000u, 0x10000u, 0x110000u, 0x200000u, 0x4000000u, 0x80000000u})
        for (std::uint64_t value = edge - 1; value <= edge + 1; ++value) {
            const auto codePoint = static_cast<std::uint32_t>(value);
            char bytes[text::kLongestSequence];
            const std::size_t length = text::encode(codePoint, bytes);
            if (codePoint > 0x7FFFFFFF) {
                EXPECT_EQ(length, 0u);
                continue;
            }
            const std::uint32_t limits[] = {0, 0x80, 0x800, 0x10000, 0x200000, 0x4000000};
            ASSERT_GE(length, 1u);
            EXPECT_GE(codePoint, limits[length - 1]); // a shorter form would not have held it
            std::uint32_t decoded = 0;
            EXPECT_EQ(structuralLength({bytes, length}, &decoded), static_cast<int>(length));
            EXPECT_EQ(decoded, codePoint);
            const bool isUnicode = codePoint < 0xD800 || (codePoint >= 0xE000 && codePoint <= 0x10FFFF);
            EXPECT_EQ(text::decodeLenient(bytes, bytes + length, &decoded), isUnicode ? length : 1);
            EXPECT_EQ(decoded, isUnicode ? codePoint : static_cast<unsigned char>(bytes[0]));
        }
}
