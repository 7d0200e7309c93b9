#include "Text/Html.h"

#include "RandomText.h"

namespace text = qb::text;

static std::string replaced(std::string_view source, unsigned flags) {
    const std::tuple<char, unsigned, const char *> entities[] = {{'<', text::kHtmlLt, "&lt;"},
                                                                 {'>', text::kHtmlGt, "&gt;"},
                                                                 {'&', text::kHtmlAmp, "&amp;"},
                                                                 {'"', text::kHtmlQuot, "&quot;"}};
    std::string result;
    for (const char character : source) {
        result += character;
        for (const auto &[plain, flag, entity] : entities)
            if (character == plain && flags & flag)
                result.replace(result.size() - 1, 1, entity);
    }
    return result;
}

// Escapes into a target of exactly the stated length, whose end a checker of addresses guards.
template <class Length, class Escape>
static std::string escaped(ExactCopy &copy, unsigned flags, Length length, Escape escape) {
    ExactCopy target(std::string(length(copy.begin(), copy.size(), flags), '?'), copy.size() % 3);
    EXPECT_EQ(escape(copy.begin(), copy.size(), flags, target.begin()), target.end());
    return {target.begin(), target.end()};
}

TEST(HtmlTest, PlainAndVectorEscapingEqualReplacementAtEachLengthAndAlignment) {
    Random random;
    const std::string rare[] = {"harmless text without any, ", "x", "\xC3\xA9 0\xA6\xBC\xBE\xA2", "<",
                                std::string(3, '\0')};
    const std::string dense[] = {"<", ">", "&", "\"", "a", "&amp;"};
    for (std::size_t length = 0; length <= 200 && !HasFailure(); ++length)
        for (std::size_t alignment = 0; alignment < 32; ++alignment) {
            const std::string source = alignment % 3 == 0   ? randomBytes(random, length)
                                       : alignment % 3 == 1 ? randomText(random, length, rare)
                                                            : randomText(random, length, dense);
            const auto flags = static_cast<unsigned>(random.below(16));
            ExactCopy copy(source, alignment);
            const std::string expected = replaced(source, flags);
            EXPECT_EQ(escaped(copy, flags, text::escapedHtmlLength, text::escapeHtml), expected);
            EXPECT_EQ(escaped(copy, flags, text::plain::escapedHtmlLength, text::plain::escapeHtml),
                      expected);
        }
}
