#include "support/PoolFixture.h"

using RestrictedFormatTest = PoolFixture;

// What the C library makes of the format, which has length letters of its own.
template <class T>
static std::string printed(const std::string &format, T value) {
    std::string text(2000, '\0');
    text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), format.c_str(), value)));
    return text;
}

template <class... V>
static std::string restricted(const std::string &format, const V &...values) {
    return describe(NSString::stringWithRestrictedFormat(NSString::stringWith(format), values...));
}

template <class... V>
static std::string formatted(const std::string &format, const V &...values) {
    return describe(NSString::stringWithFormat(NSString::stringWith(format), values...));
}

static std::string ofObjects(const std::string &format, std::initializer_list<id> objects) {
    NSArray *const array = NSArray::arrayWith(objects);
    return describe(NSString::stringWithRestrictedFormatAndObjects(NSString::stringWith(format), array));
}

// Random flags, width and precision.
static std::string randomModifiers(Random &random) {
    std::string modifiers;
    for (const char flag : {'-', '+', ' ', '#', '0'})
        if (random.below(3) == 0)
            modifiers += flag;
    if (random.below(2))
        modifiers += std::to_string(1 + random.below(40));
    if (random.below(2))
        modifiers += "." + (random.below(4) ? std::to_string(random.below(30)) : "");
    return modifiers;
}

static std::int64_t randomInteger(Random &random) {
    const auto bits = static_cast<std::int64_t>(random.bits());
    return random.below(6) == 0 ? static_cast<std::int64_t>(random.below(3)) - 1 : bits >> random.below(64);
}

TEST_F(RestrictedFormatTest, ConversionsPrintAsTheCLibraryPrintsThem) {
    Random random;
    for (int round = 0; round < 5000; ++round) {
        const std::string modifiers = randomModifiers(random);
        const std::int64_t wide = randomInteger(random);
        const auto narrow = static_cast<std::int32_t>(wide);
        const char letter = random.oneOf("diouxX");
        if (letter == '\0')
            continue;
        const std::string front = "a" + ("%" + modifiers);
        ASSERT_EQ(restricted(front + letter + "z", narrow), printed(front + letter + "z", narrow))
            << front << letter;
        ASSERT_EQ(restricted(front + letter, static_cast<std::uint32_t>(narrow)),
                  printed(front + "ll" + letter,
                          static_cast<unsigned long long>(static_cast<std::uint32_t>(narrow))));
        ASSERT_EQ(restricted(front + "q" + letter, wide),
                  printed(front + "ll" + letter, static_cast<long long>(wide)));
        const double real = random.below(2) ? static_cast<double>(wide) : static_cast<double>(narrow) / 1000;
        const std::string realLetter(1, "eEfg"[random.below(4)]);
        ASSERT_EQ(restricted(front + realLetter, real), printed(front + realLetter, real))
            << front << realLetter;
        const std::string text(random.below(20), 'x');
        ASSERT_EQ(restricted(front + "s", text.c_str()), printed(front + "s", text.c_str())) << front;
        ASSERT_EQ(restricted(front + "c", 'y'), printed(front + "c", 'y')) << front;
        ASSERT_EQ(formatted(front + "lld%%", wide), printed(front + "lld%%", static_cast<long long>(wide)));
        ASSERT_EQ(formatted(front + "s", NSString::stringWith(text)), printed(front + "s", text.c_str()));
    }
}

TEST_F(RestrictedFormatTest, LiteralTextFollowsTheScannersRules) {
    const std::pair<const char *, const char *> rows[] = {
        {"a%%b", "b"},                             // both signs and the text in front of them are dropped
        {"%d%5%x%d", "1x2"},    {"%l5d", "    1"}, // length letters anywhere
        {"%5-d|", "1    |"},                       // flags anywhere
        {"a%d%hd", "a%d%hd"},                      // unknown: the format's own text, nothing rendered
        {"%ld %*d", "%ld %*d"}, {"%1048577d", "%1048577d"},
    };
    for (const auto &[format, wanted] : rows)
        EXPECT_EQ(restricted(format, 1, 2), wanted) << format;
    EXPECT_EQ(restricted("%1048576d", 1).size(), 1048576u);
    EXPECT_EQ(restricted(std::string("a%d\0b%d", 7), 1, 2), "a1"); // a NUL ends a restricted format
}

TEST_F(RestrictedFormatTest, NumbersPrintInFullAndNegativeOnesInTheirOwnWidth) {
    EXPECT_EQ(restricted("%d", UINT64_MAX), "18446744073709551615");
    EXPECT_EQ(restricted("%u %x", -1, static_cast<signed char>(-1)), "4294967295 ffffffff");
    EXPECT_EQ(restricted("%u", std::int64_t{-1}), "18446744073709551615");
    EXPECT_EQ(restricted("0x%08x %d", reinterpret_cast<void *>(0x1f), true), "0x0000001f 1");
    expectAllOrBadAlloc([] { return formatted("%.60000f", 0.5); }); // never cut
}

TEST_F(RestrictedFormatTest, AValueOfAnotherKindOrNoneMakesTheFormatInvalid) {
    EXPECT_EQ(restricted("a%d%s", 1), "a%d%s");
    EXPECT_EQ(restricted("%d", 1.0), "%d");
    EXPECT_EQ(restricted("%f", 1), "%f");
    EXPECT_EQ(restricted("%c", 65), "A");
    EXPECT_EQ(restricted("%s", static_cast<const char *>(nullptr)), "%s");
    EXPECT_EQ(restricted("%s", number(1)), "%s");
    EXPECT_EQ(restricted("%s|%.1s", "é"_ns, NSMutableString::stringWith("ab")), "é|a");
    EXPECT_EQ(restricted("%d", 1, 2), "1"); // a value too many is left alone
    NSMutableString *const text = NSMutableString::stringWith("-");
    text->appendRestrictedFormat("a%d%q"_ns, 1);
    text->appendRestrictedFormat("b%d%d"_ns, 1);
    text->appendFormat("|%d%%"_ns, 5);
    EXPECT_EQ(text->view(), "-a1b%d%d|5%"); // the first ends inside a conversion
}

TEST_F(RestrictedFormatTest, ObjectsGiveTheirOwnValues) {
    EXPECT_EQ(ofObjects("%d %d", {NSNumber::numberWithLongLong(INT64_MIN),
                                  NSNumber::numberWithUnsignedLongLong(UINT64_MAX)}),
              "-9223372036854775808 18446744073709551615");
    EXPECT_EQ(ofObjects("%d|%.2f|%s", {"12abc"_ns, "1.5"_ns, number(7)}), "12|1.50|7");
    const id negative = number(-1);
    EXPECT_EQ(ofObjects("%x %u %o", {negative, negative, negative}), "ffffffff 4294967295 37777777777");
    EXPECT_EQ(ofObjects("%s", {NSString::stringWith({"x\0y", 3})}), std::string("x\0y", 3));
    EXPECT_EQ(ofObjects("a%db%fc%cd", {}), "abcd"); // run out: nothing for the conversion itself
}

TEST_F(RestrictedFormatTest, FormatsOfTheValueModelKnowObjectsStarsAndOnePerCentSign) {
    NSString *const nothing = nullptr;
    EXPECT_EQ(formatted("%@ %@ %5@|%-3@|%%", "a"_ns, nothing, number(42), "é"_ns), "a (null)    42|é |%");
    EXPECT_EQ(formatted("%*d|%-*d|%.*f|%*.*f|%.*s", 4, 1, 4, 2, 1, 2.55, -8, 2, 3.14159, -1, "all"),
              "   1|2   |2.5|3.14    |all");
    const auto unended = std::make_unique<char[]>(4); // only what the precision says is looked at
    std::memcpy(unended.get(), "abcd", 4);
    EXPECT_EQ(formatted("%.*s", 4, unended.get()) + restricted("%.4s", unended.get()), "abcdabcd");
    EXPECT_EQ(formatted("%hd %ld %lld %qu %zu %g %G %a", 1, 2L, 3LL, 4ULL, sizeof(int), 0.5, 1e-10, 1.0),
              "1 2 3 4 4 0.5 1E-10 0x1p+0");
    EXPECT_EQ(formatted("%p %p", static_cast<void *>(nullptr), reinterpret_cast<void *>(0x1f)), "(nil) 0x1f");
    EXPECT_EQ(formatted("%*", 1), ""); // ends inside a conversion
    EXPECT_EQ(formatted({"a\0%s", 4}, "b"), std::string("a\0b", 3));
}
