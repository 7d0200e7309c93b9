#include "Foundation/UnitModel.h"
#include "support/PoolFixture.h"

using NSStringSearchingTest = PoolFixture;

constexpr NSRange kNowhere = {NSNotFound, 0};

// The places where `needle` stands in `text`, as the options want the first of them.
static NSRange plainRange(const UnitModel &text, const UnitModel &needle, std::uint32_t options) {
    for (std::size_t i = 0; i + needle.count() <= text.count() && needle.count(); ++i) {
        const std::size_t index = options & NSBackwardsSearch ? text.count() - needle.count() - i : i;
        if (text.holds(needle, index))
            return {text.starts[index], text.starts[index + needle.count()] - text.starts[index]};
        if (options & NSAnchoredSearch)
            break;
    }
    return kNowhere;
}

// The pieces between the places where `needle` stands.
static Strings plainPieces(const UnitModel &text, const UnitModel &needle) {
    Strings pieces;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.count() && needle.count();) {
        if (!text.holds(needle, i)) {
            ++i;
            continue;
        }
        pieces.push_back(text.bytes(start, i));
        i += needle.count();
        start = i;
    }
    pieces.push_back(text.bytes(start, text.count()));
    return pieces;
}

static std::string joined(const Strings &pieces, const std::string &by) {
    std::string text = pieces[0];
    for (std::size_t i = 1; i < pieces.size(); ++i)
        text += by + pieces[i];
    return text;
}

TEST_F(NSStringSearchingTest, FindingSplittingAndReplacingFollowAPlainModel) {
    Random random;
    for (int round = 0; round < 3000; ++round) {
        const std::string bytes = UnitModel::randomText(random, 60);
        const std::string wanted = UnitModel::randomText(random, 1 + random.below(6));
        SCOPED_TRACE(testing::PrintToString(bytes) + " " + testing::PrintToString(wanted));
        const UnitModel text(bytes), needle(wanted);
        NSString *const string = NSString::stringWith(bytes);
        NSString *const target = NSString::stringWith(wanted);
        for (std::uint32_t options : {0, 4, 8, 12})
            ASSERT_EQ(string->rangeOfString(target, options | NSLiteralSearch),
                      plainRange(text, needle, options))
                << options;
        const std::size_t from = random.below(text.count() + 1);
        const std::size_t end = from + random.below(text.count() - from + 1);
        NSRange inside = plainRange(UnitModel(text.bytes(from, end)), needle, 0);
        if (inside.location != NSNotFound)
            inside.location += text.starts[from];
        ASSERT_EQ(string->rangeOfString(target, 0, {text.starts[from], text.starts[end] - text.starts[from]}),
                  inside);
        ASSERT_EQ(string->hasPrefix(target), text.holds(needle, 0));
        ASSERT_EQ(string->hasSuffix(target),
                  needle.count() <= text.count() && text.holds(needle, text.count() - needle.count()));
        const Strings pieces = plainPieces(text, needle);
        ASSERT_EQ(string->containsString(target), wanted.empty() || pieces.size() > 1);
        ASSERT_EQ(describe(string->componentsSeparatedByString(target)), "(" + joined(pieces, ", ") + ")");
        ASSERT_EQ(string->stringByReplacingOccurrencesOfString(target, "<é>"_ns)->view(),
                  joined(pieces, "<é>"));
        ASSERT_EQ(string->stringByReplacingSubstring(target, nullptr)->view(), joined(pieces, ""));
        NSMutableString *const changed = NSMutableString::stringWith(bytes);
        ASSERT_EQ(changed->replaceOccurrencesOfString(target, "€"_ns, 0, {0, changed->length()}),
                  pieces.size() - 1);
        ASSERT_EQ(changed->view(), joined(pieces, "€"));
        ASSERT_EQ(changed->length(), UnitModel(joined(pieces, "€")).units.size());
    }
}

TEST_F(NSStringSearchingTest, IgnoringCaseFindsTextsOfOtherLengthsToo) {
    const std::tuple<const char *, const char *, NSRange, NSRange> rows[] = {
        {"😀ÉTÉ été", "été", {2, 3}, {6, 3}},
        {"5 \xE2\x84\xAA, 6 k", "K", {2, 1}, {7, 1}}, // the kelvin's sign is three bytes long
        {"ΟΔΟΣ οδος", "ΟΔΟσ", {0, 4}, {5, 4}},
        {"\xC9z", "é", kNowhere, kNowhere}, // a malformed byte is no letter
    };
    for (const auto &[content, wanted, first, last] : rows) {
        NSString *const text = NSString::stringWith(content);
        NSString *const needle = NSString::stringWith(wanted);
        EXPECT_EQ(text->rangeOfString(needle, NSCaseInsensitiveSearch), first) << content;
        EXPECT_EQ(text->rangeOfString(needle, NSCaseInsensitiveSearch | NSBackwardsSearch), last) << content;
    }
    EXPECT_EQ("Übung"_ns->rangeOfString("üB"_ns, NSCaseInsensitiveSearch | NSAnchoredSearch),
              NSMakeRange(0, 2));
    NSMutableString *const text = NSMutableString::stringWith("aAaAa");
    EXPECT_EQ(text->replaceOccurrencesOfString("AA"_ns, "-"_ns, 1 | 4, {0, 5}), 2u);
    EXPECT_EQ(text->view(), "a--"); // from the back
    EXPECT_EQ("Straße"_ns->commonPrefixWithString("STRASSE"_ns, NSCaseInsensitiveSearch)->view(), "Stra");
    EXPECT_EQ("a€b"_ns->commonPrefixWithString("a\xE2\x82\xAD"_ns)->view(), "a");
}

TEST_F(NSStringSearchingTest, NilIsRefusedOrNothingAndPiecesMayBeFew) {
    NSString *const text = "abc"_ns;
    EXPECT_REASON(text->hasPrefix(nullptr), "NSString hasPrefix: must have an argument that is not nil.");
    EXPECT_EQ(text->stringByAppendingString(nullptr), text);
    EXPECT_EQ(text->stringByReplacingCharactersInRange({1, 0}, nullptr), text);
    EXPECT_EQ(text->stringByAppendingFormat("-%d"_ns, 1)->view(), "abc-1");
    const auto split = [](NSString *whole, std::uint32_t count) {
        return describe(send<id>(whole, "componentsSeparatedByString:count:"_sel, "."_ns, count));
    };
    EXPECT_EQ(split("a.b.c"_ns, 0) + split("a.b.c"_ns, 1) + split("a."_ns, 1), "(a.b.c)(a, b.c)(a, )");
}

// In quadratic time each of these would take minutes.
TEST_F(NSStringSearchingTest, NoTextMakesSearchesSlow) {
    const std::string cut = "\xC2\x80";
    NSString *const many = NSString::stringWith(times(400000, "ab, é"));
    EXPECT_EQ(many->componentsSeparatedByString(", "_ns)->count(), 400001u);
    NSString *const periodic = NSString::stringWith(times(500000, "a"));
    NSString *const nearly = NSString::stringWith(std::string(20000, 'a') + "b");
    EXPECT_EQ(periodic->rangeOfString(nearly), kNowhere);
    EXPECT_EQ(periodic->rangeOfString(nearly, NSBackwardsSearch), kNowhere);
    // Bytes that match everywhere, but always across a character.
    NSString *const halves = NSString::stringWith(times(10000, cut) + "\xC2");
    EXPECT_EQ(NSString::stringWith(times(500000, cut))->rangeOfString(halves), kNowhere);
    NSString *const units = NSString::stringWith(times(50000, "é\x80"));
    for (std::uint32_t i = 0; i < 100000; ++i)
        ASSERT_EQ(units->characterAtIndex(i), i % 2 ? 0x80 : 0xE9);
    for (std::uint32_t i = 100000; i-- > 0;)
        ASSERT_EQ(units->characterAtIndex(i), i % 2 ? 0x80 : 0xE9);
    NSMutableString *const grown = NSMutableString::string();
    for (int i = 0; i < 200000; ++i) {
        grown->appendString("ab"_ns);
        ASSERT_EQ(grown->length(), 2u * static_cast<std::uint32_t>(i) + 2);
    }
}

TEST_F(NSStringSearchingTest, CharacterSetsFindSplitAndTrim) {
    NSCharacterSet *const blanks = NSCharacterSet::whitespaceAndNewlineCharacterSet();
    NSCharacterSet *const some = NSCharacterSet::characterSetWithCharactersInString(",;é😀\xFF"_ns);
    NSString *const text = "a,é😀b;c"_ns;
    EXPECT_EQ(describe(text->componentsSeparatedByCharactersInSet(some)), "(a, , , b, c)");
    EXPECT_EQ(text->rangeOfCharacterFromSet(some), NSMakeRange(1, 1));
    EXPECT_EQ(text->rangeOfCharacterFromSet(some, NSBackwardsSearch), NSMakeRange(6, 1));
    EXPECT_EQ(text->rangeOfCharacterFromSet(some, NSBackwardsSearch, {0, 5}), NSMakeRange(3, 2));
    EXPECT_EQ(text->rangeOfCharacterFromSet(some->invertedSet(), NSAnchoredSearch), NSMakeRange(0, 1));
    EXPECT_EQ(" \t\u00A0x y\r\n\u2028"_ns->stringByTrimmingCharactersInSet(blanks)->view(), "x y");
    EXPECT_EQ("\xA0x\x85"_ns->stringByTrimmingCharactersInSet(blanks)->view(),
              "\xA0x\x85"); // malformed: in no set
}

TEST_F(NSStringSearchingTest, CharacterClassesKnowOtherScripts) {
    const auto setOf = [](const char *characters) {
        return NSCharacterSet::characterSetWithCharactersInString(NSString::stringWith(characters));
    };
    const std::tuple<NSCharacterSet *, const char *, const char *> rows[] = {
        {NSCharacterSet::whitespaceCharacterSet(), " \t\u3000", "\na\u200B"},
        {NSCharacterSet::newlineCharacterSet(), "\v\f\r\n\u0085\u2029\u2028", " \u0084"},
        {NSCharacterSet::decimalDigitCharacterSet(), "09\u0663", "a\u00B2/:"},
        {NSCharacterSet::letterCharacterSet(), "aZéЖ中\u0301\U00020000", "1_×@"},
        {NSCharacterSet::alphanumericCharacterSet(), "a5½α", "- \u2028"},
        {NSCharacterSet::uppercaseLetterCharacterSet(), "AÉЖ\u01C4", "aß1中"},
        {NSCharacterSet::lowercaseLetterCharacterSet(), "zßς\u01C6", "A!中"},
        {NSCharacterSet::punctuationCharacterSet(), "!_¿\u3001", "+$a"},
        {NSCharacterSet::symbolCharacterSet(), "+$€", "!a"},
        {NSCharacterSet::controlCharacterSet(), "\n\x7F\u200D", " a"},
        {NSCharacterSet::nonBaseCharacterSet(), "\u0301", "aé"},
        {NSCharacterSet::capitalizedLetterCharacterSet(), "\u01C5", "A\u01C4"},
        {NSCharacterSet::characterSetWithRange({0x60, 3}), "`b", "_c"},
        {setOf("caab€"), "abc€", "d\u20AB\u20AD"},
    };
    for (const auto &[set, members, others] : rows) {
        EXPECT_TRUE(set->isSupersetOfSet(setOf(members))) << members;
        EXPECT_TRUE(set->invertedSet()->isSupersetOfSet(setOf(others))) << members;
    }
    EXPECT_FALSE(setOf("\v\f\r\n\u2029")->isEqual(NSCharacterSet::newlineCharacterSet()));
    EXPECT_THROW(NSCharacterSet::characterSetWithRange({0x110000, 1}), InvalidArgumentException);
}
