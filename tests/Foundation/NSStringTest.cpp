#include "Foundation/UnitModel.h"
#include "support/PoolFixture.h"

#include <iomanip>
#include <sstream>

using NSStringTest = PoolFixture;

TEST_F(NSStringTest, PositionsAreThoseOfAPlainModelInAnyOrderOfAsking) {
    Random random;
    for (int round = 0; round < 200; ++round) {
        const std::string bytes = UnitModel::randomText(random, 300);
        const UnitModel model(bytes);
        NSString *const text = NSString::stringWith(bytes);
        const std::array others = {NSString::stringWith(bytes + "€"), NSString::stringWith(bytes + "€€")};
        ASSERT_EQ(text->length(), model.units.size());
        const auto index = [&] { return static_cast<std::uint32_t>(random.below(model.units.size() + 1)); };
        for (int i = 0; i < 20 && !model.units.empty(); ++i) {
            const std::uint32_t at = index() % text->length();
            ASSERT_EQ(text->characterAtIndex(at), model.units[at]);
            const std::uint32_t from = index();
            const std::uint32_t end = std::max(from, index());
            const std::size_t first = model.characterOfUnit(from), last = model.characterOfUnit(end);
            ASSERT_EQ(text->substringWithRange({from, end - from})->view(), model.bytes(first, last));
            ASSERT_EQ(text->substringFromIndex(from)->view(), model.bytes(first, model.count()));
            ASSERT_EQ(text->substringToIndex(end)->view(), model.bytes(0, last));
            std::u16string units(end - from + 1, u'#'); // of a range that may cut pairs
            text->getCharacters(reinterpret_cast<unichar *>(units.data()), {from, end - from});
            ASSERT_EQ(units, model.units.substr(from, end - from) + u'#');
            // They take the notes of the last place over, one or both.
            for (std::size_t used = random.below(3); used > 0; --used)
                ASSERT_EQ(others[used - 1]->characterAtIndex(others[used - 1]->length() - 1), 0x20AC);
        }
    }
}

TEST_F(NSStringTest, PositionsAreForgottenWhenTextsChangeOrGo) {
    NSMutableString *const text = NSMutableString::stringWith("äbcd");
    EXPECT_EQ(text->characterAtIndex(3), 'd');
    text->setString("€€cd"_ns);
    EXPECT_EQ(text->characterAtIndex(3), 'd');
    for (const char *bytes : {"ääbd", "aäcde"}) // one in the other's place
        EXPECT_EQ(NSString::initWith(bytes)->characterAtIndex(3), 'd');
}

TEST_F(NSStringTest, PositionsBeyondTheEndThrowAndNothingChanges) {
    NSMutableString *const text = NSMutableString::stringWith("a€"); // two characters
    EXPECT_REASON(text->characterAtIndex(2), "NSString characterAtIndex: must have an index below 2.");
    EXPECT_REASON(text->substringFromIndex(3),
                  "NSMutableString substringFromIndex: must have a range inside the "
                  "text, which has 2 characters.");
    EXPECT_THROW(text->deleteCharactersInRange({1, 2}), NSRangeException);
    EXPECT_THROW(text->insertString("x"_ns, 3), NSRangeException);
    EXPECT_EQ(text->view(), "a€");
    text->replaceCharactersInRange({0, 1}, "bc"_ns);
    EXPECT_EQ(text->view(), "bc€");
}

TEST_F(NSStringTest, StringsAreMadeFromOtherFormsOfTheClassAsked) {
    const unichar units[] = {'a', 0xD83D, 0xDE00, 0xDE00, 0, 0xD83D};
    EXPECT_EQ(NSString::stringWithCharacters(units, 6)->view(), std::string_view("a😀\uFFFD\0\uFFFD", 12));
    EXPECT_EQ(NSString::initWithData(NSData::dataWithBytes("\xFF\0z", 3))->view(),
              std::string_view("\xFF\0z", 3));
    NSArray *const names = NSArray::arrayWith({"/"_ns, "a"_ns, "b"_ns});
    const qb::Value values[] = {"x"_ns, 5};
    for (Class *asked : {NSString::cls(), NSMutableString::cls()}) {
        for (const std::string maker : {"stringWith", "initWith"}) {
            EXPECT_EQ(made(asked, (maker + "UTF8String:").c_str(), {"x"}), "x");
            EXPECT_EQ(made(asked, (maker + "Format:").c_str(), {"%@-%d"_ns, qb::ArgList(values, 2)}), "x-5");
            EXPECT_EQ(made(asked, (maker + "String:").c_str(), {"x"_ns}), "x");
            EXPECT_EQ(made(asked, (maker + "CString:").c_str(), {"xyz"}), "xyz");
            EXPECT_EQ(made(asked, (maker + "CString:length:").c_str(), {"xyz", 2}), "xy");
            EXPECT_EQ(made(asked, (maker + "Characters:length:").c_str(), {&units[0], 1}), "a");
        }
        EXPECT_EQ(made(asked, "pathWithComponents:", {names}), "/a/b");
        EXPECT_EQ(made(asked, "string") + made(asked, "init"), "");
        EXPECT_EQ(made(asked, "initWithData:", {NSData::dataWithBytes("x", 1)}), "x");
    }
    EXPECT_REASON(NSString::stringWithUTF8String(nullptr),
                  "NSString stringWithUTF8String: must have a C string that is not NULL.");
}

TEST_F(NSStringTest, CStringsAreCutBetweenCharacters) {
    NSString *const text = "a€b"_ns;
    const std::string_view cut[] = {"", "a", "a", "a", "a€", "a€b", "a€b"};
    char buffer[8];
    for (std::uint32_t most = 0; most < 7; ++most) {
        std::memset(buffer, '#', sizeof buffer);
        text->getCString(buffer, most);
        EXPECT_EQ(std::string_view(buffer), cut[most]);
        EXPECT_EQ(buffer[cut[most].size() + 1], '#');
    }
    NSRange rest;
    text->getCString(buffer, 3, {1, 2}, &rest);
    EXPECT_STREQ(buffer, "€");
    EXPECT_EQ(rest, NSMakeRange(2, 1));
}

TEST_F(NSStringTest, ComparisonWithAndWithoutCase) {
    const std::tuple<const char *, const char *, int, int> rows[] = {
        {"a", "B", 1, -1},           {"É", "é", -1, 0},       {"ς", "Σ", 1, 0},
        {"\xE2\x84\xAA", "k", 1, 0}, {"ab", "AB\xFF", 1, -1}, {"\xC9", "é", 1, 1},
    };
    for (const auto &[one, other, order, orderWithoutCase] : rows) {
        NSString *const left = NSString::stringWith(one);
        NSString *const right = NSString::stringWith(other);
        EXPECT_EQ(left->compare(right), order) << one;
        EXPECT_EQ(left->caseInsensitiveCompare(right), orderWithoutCase) << one;
        EXPECT_EQ(left->isCaseEqualTo(right), orderWithoutCase == 0) << one;
    }
    EXPECT_EQ("xaby"_ns->compare("AB"_ns, NSCaseInsensitiveSearch, {1, 2}), NSOrderedSame);
}

TEST_F(NSStringTest, CaseChangesCharacterByCharacter) {
    const std::tuple<const char *, const char *, const char *, const char *> rows[] = {
        {"straße éÀ", "STRAßE ÉÀ", "straße éà", "Straße Éà"},
        {"σίσυφος ЖИЗНЬ", "ΣΊΣΥΦΟΣ ЖИЗНЬ", "σίσυφος жизнь", "Σίσυφος Жизнь"},
        {"ı\xC9 \xE9x", "I\xC9 \xE9X", "ı\xC9 \xE9x", "I\xC9 \xE9x"}, // malformed bytes stay
        {"a\tb\nc-d", "A\tB\nC-D", "a\tb\nc-d", "A\tB\nC-d"},
    };
    for (const auto &[content, upper, lower, capitalized] : rows) {
        NSString *const text = NSString::stringWith(content);
        EXPECT_EQ(text->uppercaseString()->view(), upper);
        EXPECT_EQ(text->lowercaseString()->view(), lower);
        EXPECT_EQ(text->capitalizedString()->view(), capitalized);
    }
    NSString *const lower = NSString::stringWith("abc");
    EXPECT_EQ(lower->lowercaseString(), lower); // nothing changes: the receiver
}

TEST_F(NSStringTest, NumbersAreReadLenientlyAndStopAtTheEndsOfTheirTypes) {
    // The int, unsigned int, long long, unsigned long long, double and bool, and the number's class.
    static const char *const kRows[][2] = {
        {" -7 apples", "-7 0 -7 0 -7 1 nil"},
        {"4294967296", "2147483647 4294967295 4294967296 4294967296 4294967296 1 NSLongLongNumber"},
        {"18446744073709551615", "2147483647 4294967295 9223372036854775807 18446744073709551615 "
                                 "18446744073709551616 1 NSLongLongNumber"},
        {" +18446744073709551616 ", "2147483647 4294967295 9223372036854775807 18446744073709551615 "
                                    "18446744073709551616 1 NSNumber"},
        {"-9223372036854775809", "-2147483648 0 -9223372036854775808 0 -9223372036854775808 1 NSNumber"},
        {"1.5e3x", "1 1 1 1 1500 1 nil"},
        {"\t1.5\n", "1 1 1 1 1.5 1 NSNumber"},
        {"", "0 0 0 0 0 0 nil"},
        {"nan", "0 0 0 0 nan 0 nil"},
        {"-Infinity, 1", "0 0 0 0 -inf 0 nil"},
        {"nan(1)", "0 0 0 0 0 0 nil"},
        {"Nancy", "0 0 0 0 0 0 nil"},
        {"inf1", "0 0 0 0 0 0 nil"},
        {"true", "0 0 0 0 0 1 nil"},
        {" +00Y", "0 0 0 0 0 1 nil"},
    };
    for (const auto &[text, wanted] : kRows) {
        NSString *const string = NSString::stringWith(text);
        NSNumber *const number = string->asNumber();
        std::ostringstream told;
        told << string->intValue() << ' ' << string->unsignedIntValue() << ' ' << string->longLongValue()
             << ' ' << string->unsignedLongLongValue() << ' ' << std::setprecision(20)
             << string->doubleValue() << ' ' << int{string->boolValue()} << ' '
             << (number ? describe(number->classObject()->name()) : "nil");
        EXPECT_EQ(told.str(), wanted) << text;
    }
    EXPECT_EQ(describe("18446744073709551615"_ns->asNumber()), "18446744073709551615");
    EXPECT_EQ("7"_ns->asNumber()->type(), NSNumber::Type::int32);
    EXPECT_EQ(NSString::stringWith(std::string_view("1\0", 2))->asNumber(), nullptr);
}

TEST_F(NSStringTest, ValuesAreGoodValuesInCpp) {
    const Ref<NSString> a = NSString::initWith("a");
    NSString *const b = "b"_ns;
    EXPECT_TRUE(*a == *NSMutableString::stringWith("a"));
    EXPECT_TRUE(*a < *b && *b >= *a && *a != *b);
    EXPECT_EQ((std::ostringstream() << *a << *b).str(), "ab");
    EXPECT_EQ(std::hash<NSMutableString>()(*NSMutableString::stringWith("a")), a->hash());
    EXPECT_TRUE(*NSArray::arrayWith({a}) == *NSArray::arrayWith({a}) && *NSArray::array() != *a->asArray());
    static_assert(!std::equality_comparable<NSEnumerator>); // no value
    EXPECT_TRUE(*NSNumber::numberWithInt(2) > *NSNumber::numberWithDouble(1.5));
    EXPECT_TRUE(*NSDate::distantPast() < *NSCalendarDate::calendarDate());
}

TEST_F(NSStringTest, RepresentationsAreThoseOfPropertyListsAndLegalNamesHaveLowLines) {
    EXPECT_EQ("a \"b\"\n"_ns->stringRepresentation()->view(), "\"a \\\"b\\\"\\n\"");
    EXPECT_EQ("A-b.9ß_"_ns->asLegalNameString()->view(), "A_b_9___");
}

TEST_F(NSStringTest, RangesAreJoinedWithoutWrappingAndStandAsTexts) {
    const std::tuple<NSRange, NSRange, NSRange, NSRange> rows[] = {
        {{5, 0}, {1, 2}, {1, 4}, {0, 0}},
        {{2, 3}, {4, 4}, {2, 6}, {4, 1}},
        {{0, UINT32_MAX}, {UINT32_MAX, 5}, {0, UINT32_MAX}, {0, 0}}};
    for (const auto &[a, b, both, common] : rows) {
        EXPECT_TRUE(NSEqualRanges(NSUnionRange(a, b), both) && !NSEqualRanges(a, b)) << both.length;
        EXPECT_EQ(NSIntersectionRange(a, b), common);
    }
    EXPECT_EQ(NSStringFromRange({3, UINT32_MAX})->view(), "{3, 4294967295}");
    static const std::pair<const char *, NSRange> kRows[] = {{"{3, 4}", {3, 4}},
                                                             {"7", {7, 0}},
                                                             {"", {0, 0}},
                                                             {"{99999999999,1}", {UINT32_MAX, 1}},
                                                             {"a5b6c7", {5, 6}}};
    for (const auto &[text, range] : kRows)
        EXPECT_EQ(NSRangeFromString(NSString::stringWith(text)), range) << text;
}
