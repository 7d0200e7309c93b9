#include "support/PoolFixture.h"

using namespace std::string_literals;
using NSStringLinesTest = PoolFixture;

TEST_F(NSStringLinesTest, LinesAreFoundAroundARange) {
    const std::tuple<const char *, NSRange, const char *> rows[] = {
        {"abc", {1, 1}, "0 3 3"},
        {"ab\ncd\nef", {3, 0}, "3 6 5"}, // the place behind a line end is in the next line
        {"ab\ncd\nef", {0, 3}, "0 3 2"}, // a range that ends with a line end is not
        {"ab\ncd\nef", {1, 3}, "0 6 5"},
        {"ab\n", {3, 0}, "3 3 3"},
        {"a\r\nb", {0, 2}, "0 3 1"}, // cuts the line end
        {"a\rb", {0, 2}, "0 2 1"},
        {"é😀\u2028x\u0085y", {0, 1}, "0 4 3"},
        {"é😀\u2028x\u0085y", {4, 1}, "4 6 5"},
    };
    for (const auto &[content, range, line] : rows) {
        NSString *const text = NSString::stringWith(content);
        std::uint32_t start = 99, end = 99, contentsEnd = 99;
        text->getLineStart(&start, &end, &contentsEnd, range);
        EXPECT_EQ(NSString::stringWithFormat("%d %d %d"_ns, start, end, contentsEnd)->view(), line)
            << content;
        EXPECT_EQ(text->lineRangeForRange(range), NSMakeRange(start, end - start));
    }
}

TEST_F(NSStringLinesTest, TextsArePaddedAndCut) {
    EXPECT_EQ("abc"_ns->stringByPaddingToLength(2, "."_ns, 0)->view(), "ab");
    for (const std::uint32_t start : {0u, 1u, 3u})
        for (std::uint32_t length = 1; length < 14; ++length)
            EXPECT_EQ("a"_ns->stringByPaddingToLength(length, "ü😀x"_ns, start)->view(),
                      "a"_ns->stringByAppendingString("ü😀xü😀xü😀xü😀xü😀x"_ns->substringFromIndex(start))
                          ->substringToIndex(length)
                          ->view());
    EXPECT_THROW("a"_ns->stringByPaddingToLength(2, "xy"_ns, 2), NSRangeException);
    EXPECT_THROW("a"_ns->stringByPaddingToLength(UINT32_MAX, "€"_ns, 0), InvalidArgumentException);
}

TEST_F(NSStringLinesTest, EncodingsGoBothWays) {
    const auto textOf = [](const std::string &bytes, std::uint32_t encoding) {
        return describe(NSString::initWithData(dataOf(bytes), encoding).get());
    };
    const std::tuple<std::string, std::uint32_t, std::string> rows[] = {
        {"aé", NSISOLatin1StringEncoding, "a\xE9"},
        {"aé", NSUTF8StringEncoding, "aé"},
        {"az", NSASCIIStringEncoding, "az"},
        {"é😀", NSUnicodeStringEncoding, "\xFF\xFE\xE9\0\x3D\xD8\0\xDE"s},
    };
    for (const auto &[text, encoding, bytes] : rows) {
        EXPECT_EQ(bytesOf(NSString::stringWith(text)->dataUsingEncoding(encoding)), bytes);
        EXPECT_EQ(textOf(bytes, encoding), text);
    }
    EXPECT_EQ(bytesOf("aé€"_ns->dataUsingEncoding(NSISOLatin1StringEncoding, /*allowLossyConversion=*/YES)),
              "a\xE9?");
    EXPECT_EQ(bytesOf("€"_ns->dataUsingEncoding(NSISOLatin1StringEncoding)), "nil");
    EXPECT_TRUE("é"_ns->canBeConvertedToEncoding(NSISOLatin1StringEncoding));
    EXPECT_FALSE("é"_ns->canBeConvertedToEncoding(NSASCIIStringEncoding));
    EXPECT_EQ(textOf("\xFE\xFF\0a"s, NSUnicodeStringEncoding), "a");
    EXPECT_EQ(textOf("\xE9", NSUTF8StringEncoding) + textOf("a", 99), "nilnil");
    EXPECT_EQ(describe(NSString::availableStringEncodings()), "(1, 4, 5, 10)");
}
