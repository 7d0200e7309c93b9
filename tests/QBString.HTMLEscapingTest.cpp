#include "support/PoolFixture.h"

using QBStringHTMLEscapingTest = PoolFixture;

// What the skip functions below were called with, as offsets from the end that they were given.
static std::vector<std::ptrdiff_t> skipCalls;

// Skips from "[" behind the next "]".
static const char *skipBrackets(const char *position, const char *end) {
    skipCalls.push_back(end - position);
    while (position < end && *position != ']')
        ++position;
    return position < end ? position + 1 : end;
}

static const char *skipNothing(const char *position, const char *) {
    return position;
}

static std::string escapedQuotes(std::string_view text, NSString::SkipFunction skip = &skipBrackets) {
    skipCalls.clear();
    return describe(NSString::stringWith(text)->stringWithEscapedHtmlQuotesSkipWith(skip, /*on=*/'['));
}

TEST_F(QBStringHTMLEscapingTest, EachFormReplacesItsCharacters) {
    NSString *const text = "a<b> & \"c\""_ns;
    EXPECT_EQ(describe(text->stringWithEscapedHtml()), "a&lt;b&gt; &amp; &quot;c&quot;");
    EXPECT_EQ(describe(text->stringWithEscapedHtmlLTandGTandAMP()), "a&lt;b&gt; &amp; \"c\"");
    EXPECT_EQ(describe(text->stringWithEscapedHtmlQuotes()), "a<b> & &quot;c&quot;");
}

TEST_F(QBStringHTMLEscapingTest, UnescapingLeavesTheRestOfTheEntity) {
    NSString *const text = "a &lt; &gt; &amp; &quot; &auml;"_ns;
    EXPECT_EQ(describe(text->stringWithUnescapedHtml()), "a <lt; >gt; &amp; \"quot; &auml;");
    EXPECT_EQ(describe(text->stringWithUnescapedHtmlLTandGTandAMP()), "a <lt; >gt; &amp; &quot; &auml;");
    EXPECT_EQ(describe(text->stringWithUnescapedHtmlQuotes()), "a &lt; &gt; &amp; \"quot; &auml;");
}

TEST_F(QBStringHTMLEscapingTest, WithNothingToReplaceTheReceiverComesBack) {
    NSString *const text = NSMutableString::stringWith("a;b");
    EXPECT_EQ(text->stringWithEscapedHtmlQuotesSkipWith(&skipNothing, /*on=*/'a'), text);
    EXPECT_EQ(text->stringWithUnescapedHtml(), text);
    NSString *const entity = "&amp;"_ns; // replaced by itself
    EXPECT_NE(entity->stringWithUnescapedHtml(), entity);
}

TEST_F(QBStringHTMLEscapingTest, SkippedPartsStayAsTheyAre) {
    EXPECT_EQ(escapedQuotes("\"[\"]\"[\"\"]x"), "&quot;[\"]&quot;[\"\"]x");
    EXPECT_EQ(skipCalls, (std::vector<std::ptrdiff_t>{9, 5}));
    EXPECT_EQ(escapedQuotes("\"[\"\""), "&quot;[\"\"");       // never closed: the function returns the end
    EXPECT_EQ(escapedQuotes("[][\"]\""), "[][&quot;]&quot;"); // where escaping resumes nothing is skipped
    EXPECT_EQ(skipCalls, (std::vector<std::ptrdiff_t>{6}));
    EXPECT_EQ(escapedQuotes("[\"[\"]", &skipNothing), "[&quot;[&quot;]");
    const auto skipBeyondAnyEnd = [](const char *, const char *end) { return end + 100; };
    EXPECT_EQ(escapedQuotes("\"[\"]\"", skipBeyondAnyEnd), "&quot;[\"]\"");
    NSString *const quoteSkipsItself = "a\"<\""_ns;
    EXPECT_EQ(describe(quoteSkipsItself->stringWithEscapedHtmlLT(YES, NO, NO, YES, &skipNothing, '"')),
              "a&quot;&lt;&quot;");
    static NSMutableString *const changing = NSMutableString::stringWith("a@b");
    const auto append = [](const char *position, const char *) {
        changing->appendString("<"_ns);
        return position;
    };
    EXPECT_EQ(describe(changing->stringWithEscapedHtmlLT(YES, NO, NO, NO, append, '@')), "a@b");
}

TEST_F(QBStringHTMLEscapingTest, SkipFunctionGetsTheEndCountedInCharacters) {
    EXPECT_EQ(escapedQuotes("\xC3\xA9[\"]\"."), "\xC3\xA9[\"]&quot;."); // 7 bytes, 6 characters
    EXPECT_EQ(skipCalls, (std::vector<std::ptrdiff_t>{4}));
    // Where the function returns that end, escaping ends, although a byte is left behind it.
    EXPECT_EQ(escapedQuotes("\"\xC3\xA9[\"]\""), "&quot;\xC3\xA9[\"]\"");
    // Behind that end it gets the real one, so that it never runs over.
    EXPECT_EQ(escapedQuotes("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9[\"]\""),
              "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9[\"]&quot;");
    EXPECT_EQ(skipCalls, (std::vector<std::ptrdiff_t>{4}));
}
