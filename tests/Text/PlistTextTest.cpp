#include "Text/PlistText.h"

#include "CpuLevels.h"
#include "RandomText.h"

#include <cctype>
#include <vector>

namespace text = qb::text;

using Write = char *(*)(const char *, std::size_t, char *);

// What `write` makes of the text, in no more room than it is promised.
static std::string written(Write write, ExactCopy &copy) {
    const auto length = static_cast<std::size_t>(text::plistTextLength(copy.begin(), copy.size()));
    std::vector<char> target(length + text::kPlistTextSlack);
    const char *const end = write(copy.begin(), copy.size(), target.data());
    EXPECT_EQ(static_cast<std::size_t>(end - target.data()), length);
    EXPECT_LE(target.size(), text::plistTextRoom(copy.size()));
    return {target.data(), length};
}

TEST(PlistTextTest, EachByteStandsBareOrNotAlike) {
    for (int code = 0; code < 256; ++code) {
        ExactCopy copy("a" + std::string(1, static_cast<char>(code)) + "b", 0);
        const std::string plain = written(text::plain::writePlistText, copy);
        const bool isBare = code < 128 && (std::isalnum(code) || (code && std::strchr("_$.:/-", code)));
        EXPECT_EQ(plain.front() != '"', isBare) << code;
        forEachCpuLevel([&] { EXPECT_EQ(written(text::writePlistText, copy), plain) << code; });
    }
}

TEST(PlistTextTest, PlainAndVectorTextsAgreeAtEachLength) {
    Random random;
    const std::string bare[] = {"word", "/", "a", "-x_", "http:", "//", "123456789"};
    const std::string any[] = {"word", "/",         " ",        "\"",   "\\",           "\n",
                               "\x01", "\x7F",      "\xC3\xA9", "\xC3", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                               "\xFF", "plain text"};
    for (std::size_t length = 0; length <= 150 && !HasFailure(); ++length)
        for (std::size_t alignment = 0; alignment < 16; ++alignment)
            for (const bool isBare : {false, true}) {
                ExactCopy copy(isBare ? randomText(random, length, bare) : randomText(random, length, any),
                               alignment);
                const std::string expected = written(text::plain::writePlistText, copy);
                forEachCpuLevel([&] { EXPECT_EQ(written(text::writePlistText, copy), expected); });
            }
}
