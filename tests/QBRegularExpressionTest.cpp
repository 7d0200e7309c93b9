#include "support/Locales.h"
#include "support/PoolFixture.h"

using QBRegularExpressionTest = PoolFixture;

static QBRegularExpression *expressionOf(std::string_view pattern, std::int32_t flags = 0) {
    return static_cast<QBRegularExpression *>(
        QBRegularExpression::regularExpressionWithPattern(NSString::stringWith(pattern), flags));
}

/// The groups of the first match from that place on, as "(whole, first group)"; "nil" without one.
static std::string searched(std::string_view pattern, std::string_view text, std::int32_t fromIndex = 0) {
    auto *const found = expressionOf(pattern)->search(NSString::stringWith(text), fromIndex);
    return found ? describe(found->groups()) : "nil";
}

TEST_F(QBRegularExpressionTest, SearchesFindTheFirstMatchAndItsGroups) {
    QBRegularExpressionMatchObject *match = expressionOf("(a)(b)")->search("xxab"_ns, 2);
    ASSERT_NE(match, nullptr);
    EXPECT_EQ(describe(match->groups()), "(ab, a, b)");
    EXPECT_EQ(describe(match->subGroups()),
              "({startOffset = 2; endOffset = 4; }, {startOffset = 2; endOffset = 3; }, "
              "{startOffset = 3; endOffset = 4; })");
    EXPECT_EQ(match->rangeOfGroup(2), (NSRange{3, 1}));
    EXPECT_THROW(match->startOfGroup(3), NSRangeException);
    EXPECT_EQ(searched("^b", "ab", 1), "(b)"); // the rest begins there
    EXPECT_THROW(searched("b", "ab", 3), NSRangeException);
    EXPECT_EQ(searched("(x)|(a)", "ba", 1), "(a, , a)"); // x took no part
    EXPECT_EQ(expressionOf("(x)|(a)")->search("ba"_ns, 1)->startOfGroup(1), 0);
    EXPECT_EQ(searched("^(.+)-\\1$", "ab-c-ab-c"), "(ab-c-ab-c, ab-c)");
    EXPECT_EQ(searched("c", "\u00e4bc"), "()"); // bytes are counted, but characters are taken
}

TEST_F(QBRegularExpressionTest, MatchWantsTheWholeStringAndMatchesAnyPart) {
    EXPECT_EQ(describe(expressionOf("a+")->match("aaa"_ns)->groups()), "(aaa)");
    EXPECT_EQ(describe(expressionOf("a+")->match("aaa"_ns)->string()), "aaa");
    EXPECT_EQ(expressionOf("a+")->match("aaab"_ns), nullptr);
    EXPECT_TRUE(expressionOf("^B", REG_ICASE)->matches("b"_ns));
    EXPECT_EQ(expressionOf("(b)", REG_NOSUB)->search("ab"_ns)->startOfGroup(1), -1);
    // What stands behind a NUL is not seen.
    EXPECT_FALSE(NSString::stringWith({"a\0b", 3})->matches("b"_ns));
    EXPECT_EQ(searched("b", {"a\0b", 3}, 2), "(b)");
}

TEST_F(QBRegularExpressionTest, ExpressionsAreKeptByClassPatternAndFlags) {
    QBRegularExpression *const expression = expressionOf("k");
    EXPECT_EQ(expressionOf("k"), expression);
    EXPECT_NE(expressionOf("k", REG_ICASE), expression);
    EXPECT_EQ(expressionOf("k1", 0), expressionOf("k", 10)); // told apart by their common text alone
    NSMutableString *const changing = NSMutableString::stringWith("k");
    EXPECT_EQ(QBRegularExpression::regularExpressionWithPattern(changing), expression);
    changing->setString("l"_ns);
    EXPECT_NE(QBRegularExpression::regularExpressionWithPattern(changing), expression);
    struct Traced : ClientClass<Traced, QBRegularExpression, "Traced"> {};
    const auto ask = [](NSString *pattern) {
        return send<id>(Traced::cls(), "regularExpressionWithPattern:"_sel, pattern);
    };
    const id traced = ask("kept"_ns);
    EXPECT_TRUE(dynamic_cast<Traced *>(traced) && traced == ask("kept"_ns));
    EXPECT_NE(expressionOf("kept"), traced);
    EXPECT_ERROR(qb::kErrorMalformedPattern, "(k Unmatched ( or \\(", EXPECT_EQ(ask("(k"_ns), nullptr));
    EXPECT_EQ(ask("(k"_ns), QBNil::value());
}

TEST_F(QBRegularExpressionTest, WhatDoesNotCompileIsAnErrorOnceAndTheNullObjectThen) {
    EXPECT_ERROR_AT("src/QBRegularExpression:191", qb::kErrorMalformedPattern, "( Unmatched ( or \\(",
                    EXPECT_EQ(expressionOf("("), nullptr));
    EXPECT_EQ(QBRegularExpression::regularExpressionWithPattern("("_ns), QBNil::value());
    EXPECT_FALSE("("_ns->matches("("_ns));
    for (const auto &[pattern, reason] :
         {std::pair("(|)(\\1\\1)*", "a back reference is repeated without end"),
          {"^(.+)-\\1$", "too much of it may vary beside back references"}}) // fine without the flag
        expectError(qb::kErrorMalformedPattern, std::string(pattern) + " " + reason,
                    [pattern = pattern] { EXPECT_EQ(expressionOf(pattern, REG_NEWLINE), nullptr); });
    EXPECT_ERROR(qb::kErrorMalformedPattern,
                 "^(a*|b|)*$ its groups can't be found where an endless repeat may match nothing in several "
                 "ways or beside an anchor",
                 EXPECT_EQ(searched("^(a*|b|)*$", "b"), "nil"));
    EXPECT_TRUE("b"_ns->matches("^(a*|b|)*$"_ns)); // for which no groups are needed
    EXPECT_REASON(
        "a"_ns->matches(nullptr),
        "QBRegularExpression regularExpressionWithPattern:flags: must have a string that is not nil.");
}

TEST_F(QBRegularExpressionTest, HostilePatternsAndLongTextsNeedASmallStack) {
    EXPECT_TRUE(runOnSmallStack([] {
        for (const std::string &pattern :
             {std::string(15000, '(') + "a" + std::string(15000, ')'), "a" + std::string(100'000, '*')}) {
            ErrorExpectation error(qb::kErrorMalformedPattern);
            EXPECT_FALSE("0"_ns->matches(NSString::stringWith(pattern)));
        }
        NSString *const text = NSString::stringWith(std::string(300'000, 'a') + "b");
        EXPECT_TRUE(text->matches("^(a|x)*b$"_ns));
        EXPECT_EQ(expressionOf("(a*)(a|b)*$")->search(text)->endOfGroup(1), 300'000);
        EXPECT_FALSE(text->matches("(.)\\1x"_ns));
    }));
}

TEST_F(QBRegularExpressionTest, MissingMemoryIsAnErrorAndNoMatch) {
    for (const auto &[pattern, longest] :
         {std::pair("^(.+)-\\1", 4096), std::pair("([a-z]+) \\1", 1024), std::pair("^(.+)-\\1.\\1", 1024),
          std::pair("([a-z]{1,9})[a-z]* \\1", 1024), std::pair("^(a*)a{0,47}\\1a{0,40}", 1024)}) {
        const std::string text = "a-a a" + std::string(static_cast<std::size_t>(longest) - 5, ' ');
        NSString *const string = NSString::stringWith(pattern);
        EXPECT_TRUE(NSString::stringWith(text)->matches(string));
        EXPECT_ERROR(qb::kErrorOutOfMemory, "", // another one would take seconds, or hundreds of MiB
                     EXPECT_FALSE(NSString::stringWith(text + " ")->matches(string)));
    }
    const Fault notCompiled(Call::regcomp, 0, 1, ENOMEM);
    EXPECT_ERROR(qb::kErrorMalformedPattern, "memory Memory exhausted",
                 EXPECT_EQ(expressionOf("memory"), nullptr));
    const Fault notSearched(Call::regexec, 0, 1, ENOMEM);
    EXPECT_ERROR(qb::kErrorOutOfMemory, "", EXPECT_EQ(expressionOf("a")->search("a"_ns), nullptr));
    const Ref<QBRegularExpression> expression = expressionOf("(x+) id=[0-9]+$");
    for (unsigned skip = 0, hits = 1; hits != 0; ++skip) { // what the C library itself lacks
        const AllocationFault fault(skip, /*times=*/1);
        const bool isFound = expression->matches("xxxx id=42"_ns);
        hits = fault.hits();
        EXPECT_EQ(takenErrors(), isFound ? "()" : "(100156)") << skip;
    }
    for (unsigned skip = 0, hits = 1; hits != 0; ++skip) { // later searches know nothing of it
        const Ref<QBRegularExpression> spoilt = expressionOf("(a+)(b)?");
        {
            const AllocationFault fault(skip, /*times=*/1);
            spoilt->search("xxaaby"_ns);
            hits = fault.hits();
        }
        takenErrors();
        const QBRegularExpressionMatchObject *const found = spoilt->search("xxaaby"_ns);
        EXPECT_EQ(found ? describe(found->group(0)) : "none", "aab") << skip;
    }
}

TEST_F(QBRegularExpressionTest, CachedPatternsNeitherGrowNorChangeWithTheTextsThatTheySee) {
    NSString *const twice = "(.)\\1\\>"_ns;
    EXPECT_TRUE("aa"_ns->matches(twice));
    EXPECT_FALSE("--"_ns->matches(twice)); // whatever the matcher has learnt from letters

    NSString *const pattern = "^.*(ab|cd).{20,60}$"_ns; // each byte may lead to a state of its own
    std::mt19937 random(7);
    const auto search = [&] {
        std::string text(500, 'a');
        for (char &letter : text)
            letter = "abcd"[random() % 4];
        NSString *const string = NSString::stringWith(text);
        EXPECT_EQ(string->matches(pattern),
                  QBRegularExpression::initWithPattern(pattern, 0)->matches(string));
    };
    search();
    const std::int64_t before = blocksInUse();
    for (int i = 0; i < 26; ++i)
        search();
    EXPECT_LT(blocksInUse() - before, 180'000);
}

TEST_F(QBRegularExpressionTest, CachedPatternsOutliveTheLocaleThatTheyWereCompiledIn) {
    NEED_LOCALE("de_DE.UTF-8");
    const locale_t german = ::newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
    const locale_t before = ::uselocale(german);
    NSString *const pattern = "^[[:alpha:]][^[:alpha:]]$"_ns;
    EXPECT_TRUE("ä1"_ns->matches(pattern));
    ::uselocale(before);
    ::freelocale(german);
    EXPECT_TRUE("a2"_ns->matches(pattern));
    EXPECT_FALSE("22"_ns->matches(pattern));
}

TEST_F(QBRegularExpressionTest, MatchObjectsAreMadeChangedAndMayBeEmpty) {
    const regmatch_t places[] = {{0, 3}, {-1, -1}, {1, 9}};
    auto *const match = QBRegularExpressionMatchObject::matchObjectWithMatches(places, 3, "abcd"_ns, 1);
    EXPECT_EQ(describe(match->groups()), "(bcd, , )"); // the last one is not in the string
    match->setString("wxyz"_ns);
    EXPECT_EQ(match->group(0)->view(), "xyz");
    match->setSubGroups(NSMutableArray::arrayWithObject("no dictionary"_ns));
    EXPECT_EQ(describe(match->groups()), "()");
    Ref<QBRegularExpression> blank = send<Ref<QBRegularExpression>>(QBRegularExpression::cls(), "init"_sel);
    EXPECT_FALSE(blank->matches("a"_ns)); // it has no pattern
}
