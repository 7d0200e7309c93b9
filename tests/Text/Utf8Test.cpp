#include "Text/Utf8.h"

#include "CpuLevels.h"
#include "RandomText.h"

#include <algorithm>

using namespace std::string_view_literals;
namespace text = qb::text;

static text::Utf8Run referenceRun(std::string_view bytes) {
    text::Utf8Run run;
    while (run.bytes < bytes.size()) {
        const std::size_t length = wellFormedLength(bytes, run.bytes);
        if (length == 0)
            break;
        run.bytes += length;
        run.characters += 1;
        run.units += length == 4 ? 2 : 1;
    }
    return run;
}

static int structuralLength(std::string_view bytes, std::uint32_t *codePoint = nullptr) {
    const auto *start = reinterpret_cast<const unsigned char *>(bytes.data());
    return text::sequenceLength(start, start + bytes.size(), codePoint);
}

const std::string kValid[] = {"a", "plain ascii text, ", "ü",          "ß",      "ऄ",     "語", "\uFFFD",
                              "𝄞", "\U0010FFFF",         "\U00010000", "\u0800", "\u0080"};
const std::string kFaults[] = {
    "\xFF", "\x80", "\xC0\x80", "\xE4\xBA", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};

static std::string randomUtf8(Random &random, std::size_t length) {
    std::string text = randomText(random, length, kValid);
    if (length && random.below(2)) { // faults anywhere, few of them
        for (std::size_t faults = random.below(3) + 1; faults; --faults)
            text.insert(random.below(text.size()), random.oneOf(kFaults));
        text.resize(length);
    }
    return text;
}

TEST(Utf8Test, EachVersionEqualsTheGrammarAtEachLengthAndAlignment) {
    Random random;
    for (std::size_t length = 0; length <= 300 && !HasFailure(); ++length)
        for (std::size_t alignment = 0; alignment < 32; ++alignment) {
            ExactCopy copy(randomUtf8(random, length), alignment);
            const auto isBelow80 = [](char byte) { return (byte & 0x80) == 0; };
            const bool isAscii = std::all_of(copy.begin(), copy.end(), isBelow80);
            const text::Utf8Run expected = referenceRun({copy.begin(), length});
            forEachCpuLevel([&] {
                const text::Utf8Run run = text::validRun(copy.begin(), length);
                EXPECT_TRUE(run.bytes == expected.bytes && run.characters == expected.characters &&
                            run.units == expected.units);
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

TEST(Utf8Test, StructuralSequencesAndTheirCodePoints) {
    const std::tuple<std::string_view, int, std::uint32_t> rows[] = {
        {"\0a"sv, 0, 0},
        {"\xC3\xA9", 2, 0xE9},
        {"\xC0\x80", 2, 0},          // overlong
        {"\xED\xA0\x80", 3, 0xD800}, // surrogate
        {"\xF7\xBF\xBF\xBF", 4, 0x1FFFFF},
        {"\xF8\x88\x80\x80\x80", 5, 0x200000},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", 6, 0x7FFFFFFF},
    };
    for (const auto &[bytes, length, wanted] : rows) {
        std::uint32_t codePoint = 0x12345;
        EXPECT_EQ(structuralLength(bytes, &codePoint), length) << bytes;
        EXPECT_EQ(codePoint, wanted);
    }
    for (const std::string_view bad : {"\x80"sv, "\xFE\x80\x80\x80\x80\x80\x80"sv, "\xFF"sv, "\xC3"sv,
                                       "\xC3\0"sv, "\xFD\xBF\xBF\xBF\xBF"sv, "\xFD\xBF\xBF\xBF\xBF\x3F"sv})
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

TEST(Utf8Test, EncodedCodePointsDecodeAgain) {
    for (const std::uint32_t edge :
         {0x80u, 0x800u, 0xD800u, 0xE000u, 0x10000u, 0x110000u, 0x200000u, 0x4000000u, 0x7FFFFFFFu})
        for (const std::uint32_t codePoint : {edge - 1, edge}) {
            char bytes[text::kLongestSequence];
            const std::size_t length = text::encode(codePoint, bytes);
            std::uint32_t decoded = 0;
            EXPECT_EQ(structuralLength({bytes, length}, &decoded), static_cast<int>(length));
            EXPECT_EQ(decoded, codePoint);
            const bool isUnicode = codePoint < 0xD800 || (codePoint >= 0xE000 && codePoint <= 0x10FFFF);
            EXPECT_EQ(text::decodeLenient(bytes, bytes + length, &decoded), isUnicode ? length : 1);
        }
    char bytes[text::kLongestSequence];
    EXPECT_EQ(text::encode(0x80000000, bytes), 0u);
    EXPECT_EQ(text::encode(0xFFFF, bytes), 3u); // the shortest form
}
