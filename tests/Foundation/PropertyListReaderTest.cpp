#include "Foundation/PropertyListReader.h"

#include "support/PoolFixture.h"

using PropertyListReaderTest = PoolFixture;
using namespace std::string_view_literals;

static std::string read(std::string_view text) {
    return describe(NSString::stringWith(text)->propertyList());
}

// An array inside an array ... `depth` levels.
static std::string nested(unsigned depth) {
    return std::string(depth, '(') + std::string(depth, ')');
}

TEST_F(PropertyListReaderTest, ReadsEachKindOfValueAndOfEscape) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {" \t\r\n\v\fa\n", "a"},
        {"\xEF\xBB\xBF/usr/lib-1.2:$x_y", "/usr/lib-1.2:$x_y"},
        {"\"a b=c;\"", "a b=c;"},
        {"< 0fBD7771 c2 >", "<0fbd7771 c2>"},
        {"(\n\n)", "()"},
        {"(a, (b, \"c d\"), <>, {}, )", "(a, (b, c d), <>, {})"},
        {"{b=1;a=2;}", "{b = 1; a = 2; }"},
        {"{ \"k k\" = {c = (d)}; e = f }", "{k k = {c = (d); }; e = f; }"},
        {"/* one */ ( // two\na, /* , b */ c // three\n)", "(a, c)"},
        {"/**/a/* / **/", "a"},
        {"({a/ = 1;}, {a/ = 2;}, {a/*c*/ = 3;})", "({a/ = 1; }, {a/ = 2; }, {a = 3; })"},
        // Escapes stand for bytes and characters.
        {R"("\a\b\f\n\r\t\v\"\\\q")", "\a\b\f\n\r\t\v\"\\q"},
        {R"("\0\18\0011\377x\7")", "\0\1"
                                   "8\001"
                                   "1\xFFx\7"sv},
        {R"("\U00e9\u20AC.")", "\xC3\xA9\xE2\x82\xAC."},
        {R"("\Ud83d\UDE00")", "\xF0\x9F\x98\x80"},
        {R"("\U0000")", "\0"sv},
        {"\"a\\\nb\"", "a\nb"},
        {"\"line\nline \xFF\xC3\xA9\"", "line\nline \xFF\xC3\xA9"},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(read(text), expected) << text;
}

TEST_F(PropertyListReaderTest, MalformedTextTellsLineColumnAndWhatIsMissing) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"", "1 1 a value"},
        {"\"a\"b", "1 4 the end of the text"},
        {"a\0"sv, "1 2 the end of the text"},
        {"(a,", "1 4 a value or ')'"},
        {"a/*", "1 2 a comment that is closed"},
        {"(a,\n  b c)", "2 5 ',' or ')'"},
        {"\xEF\xBB\xBF(a b)", "1 4 ',' or ')'"},
        {"{a}", "1 3 '='"},
        {"{a=b c", "1 6 ';' or '}'"},
        {"{ a = 1;\n  b = 2;\n  \"a\" = 3; }", "3 3 a key that does not stand in the dictionary already"},
        {"\"a\nbc", "2 3 '\"'"},
        {"\"\xC3\xA9\xF0\x9F\x98\x80\xFF\\", "1 7 a character behind '\\'"},
        {R"("\400")", "1 3 an octal number of at most 377"},
        {R"("\U12g4")", "1 6 four hexadecimal digits"},
        {R"("\Ud83dx")", "1 8 the second half of a surrogate pair"},
        {R"("\Ud83d\Ue000")", "1 14 the second half of a surrogate pair"},
        {R"("\Ude00")", "1 8 the first half of a surrogate pair"},
        {"<0f1>", "1 5 hexadecimal digits in pairs and '>'"},
        {"<0f/>", "1 4 hexadecimal digits in pairs and '>'"}, // the neighbours of the digits in ASCII
        {"<0f:>", "1 4 hexadecimal digits in pairs and '>'"},
        {"<0f@>", "1 4 hexadecimal digits in pairs and '>'"},
        {"<0fg>", "1 4 hexadecimal digits in pairs and '>'"},
    };
    for (const auto &[text, expected] : rows)
        expectError(900001, expected, [&text = text] { EXPECT_EQ(read(text), "nil") << text; });
}

TEST_F(PropertyListReaderTest, NestingEndsAt512Levels) {
    const unsigned deepest = qb::PropertyListReader::kDeepestNesting;
    EXPECT_EQ(deepest, 512u);
    EXPECT_EQ(read(nested(deepest)), nested(deepest));
    for (const std::string &tooDeep : {nested(deepest + 1), std::string(1'000'000, '(')})
        EXPECT_ERROR(900001, "1 513 less deep nesting", EXPECT_EQ(read(tooDeep), "nil"));
}

TEST_F(PropertyListReaderTest, DataReadsItsBytes) {
    EXPECT_EQ(describe(NSData::dataWithBytes("(a,\xC3\xA9)", 6)->propertyList()), "nil");
    ERRORHANDLER->clearErrorStack();
    EXPECT_EQ(describe(NSData::dataWithBytes("(a,\"\xC3\xA9\")", 8)->propertyList()), "(a, \xC3\xA9)");
    EXPECT_ERROR(900001, "1 1 a value", EXPECT_EQ(NSData::data()->propertyList(), nullptr));
}
