#include "Text/PatternCheck.h"

#include "support/ServicesFixture.h"

#include <iostream>
#include <regex.h>

using qb::text::checkPattern;

namespace {

std::string nested(std::size_t depth, const std::string &inner, const std::string &behind) {
    return times(depth, "(") + inner + times(depth, ")" + behind);
}

std::string faultOf(const std::string &pattern) {
    const qb::text::PatternLimits limits = checkPattern(pattern.c_str());
    const char *const fault = limits.fault ? limits.fault : limits.groupFault;
    return fault ? fault : "";
}

/// Makes patterns of the parts that hostile ones are made of.
class PatternMaker {
public:
    explicit PatternMaker(std::uint32_t seed) : random_(seed) {}

    std::string pattern() {
        std::string result;
        for (unsigned parts = upTo(3) + 1; parts > 0; --parts)
            result += times(upTo(5) == 0 ? upTo(100) : 1, part(3));
        return result;
    }

private:
    unsigned upTo(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit)(random_); }

    std::string part(unsigned depth) {
        // Without back references, which take the matcher as long as they like.
        constexpr std::array kSimple = {"a",   ".",   "[ab]",  "[]b]", "^",    "$",          "\u00E9",
                                        "\\b", "\\w", "(a|b)", "",     "(|a)", "[[:alpha:]]"};
        constexpr std::array kRepeats = {"*", "+", "?", "{2}", "{0,3}", "{1,}", "{20}", "{,9}"};
        const unsigned kind = depth == 0 ? 0 : upTo(5);
        if (kind < 2)
            return kSimple[upTo(kSimple.size() - 1)];
        const std::string inner = part(depth - 1) + part(depth - 1);
        if (kind < 5)
            return "(" + inner + ")" + (kind == 2 ? "" : kRepeats[upTo(kRepeats.size() - 1)]);
        return "(" + inner + "|" + part(depth - 1) + ")";
    }

    std::mt19937 random_;
};

/// Whether a search came to an answer. Whether it is the right one is the C library's business: with back
/// references it may depend on whether the groups are wanted.
bool isAnswer(int result) {
    return result == 0 || result == REG_NOMATCH || result == REG_ESPACE;
}

/// Searches with all groups, if they can be found, and with none.
void searchWith(const std::string &pattern, bool hasGroups) {
    regex_t expression;
    if (regcomp(&expression, pattern.c_str(), REG_EXTENDED) != 0)
        return;
    std::array<regmatch_t, qb::text::kMostPatternGroups + 1> places;
    for (const char *subject : {"abaab", "b", "bb", "a\u00E9b"})
        if (!isAnswer(regexec(&expression, subject, 0, nullptr, 0)) ||
            (hasGroups && !isAnswer(regexec(&expression, subject, expression.re_nsub + 1, places.data(), 0))))
            std::abort();
    regfree(&expression);
}

} // namespace

TEST(PatternCheckTest, PatternsThatPeopleWritePass) {
    const std::string patterns[] = {
        "", "^[0-9]{14}$", "([a-z]+) \\1", "(^|[^a-z])word($|[^a-z])", "((25[0-5]|[01]?[0-9]?[0-9])\\.){3}",
        "^([a-z0-9._%+-]+)@([a-z0-9.-]+)\\.([a-z]{2,})$", "(a*)*", "((a*)*b)+", "[]*(){9}[:alpha:][.*.][^]]",
        "\\b[A-Z]\\w*\\b", "^(([\"'])[a-z]\\2)?", "^([\"']).*\\1$", "^(.+)-\\1$", "([a-z])\\1",
        "^([a-z]+)\\1{11}", "\\b(-?)a\\1\\b", "([^:]*):([a-z]+)/\\2", "([^-]+)-\\1", "([^a-z-]+)-\\1",
        "^([a-z]+)=\\1;[a-z]*;", "^a?([a-z]+) \\1", "\\b(\\w+)\\s\\1\\b", "([[:alpha:]0-9]+)-\\1",
        "[\\0-9]+(a*)(b*)[]\\1]", "(.{0,25})\\1", "a{0,12}([a-z])\\1", "\\0*.*", "a{32767}", "(ab){1000}",
        "x{0,999}", "((a{9,40}){1,10}.){10}", "(\\b[a-z]{2,30}-){1,8}", "a)b", "(|)\\1",
        times(2000, "[a-z]x"), "word" + times(999, "|word"), nested(200, "a", ""), times(100, "(a?)"),
        "([^,]*,?)*", "(^|,)([^,]*)", "(\\<a)*", "a***",
        // Malformed, which is the compiler's to say.
        "(", "a{", "a{2,1}", "a{40000}", "[[:alpha:]", "*", "a\\", "a{x}" + times(9, "*"), "[[.x",
        times(500, "|" + times(8, "{32767}"))}; // in no time
    for (const std::string &pattern : patterns)
        EXPECT_EQ(faultOf(pattern), "") << pattern.substr(0, 40);
}

TEST(PatternCheckTest, HostilePatternsAreRefusedWithTheReason) {
    const char *const kRepeats = "it is too large when its repeats are multiplied";
    const char *const kOpen = "too much of it may vary when its repeats are multiplied";
    const char *const kEmpty = "too many of its parts in a row may match nothing";
    const char *const kEndless = "a back reference is repeated without end";
    const char *const kVaries = "too much of it may vary beside back references";
    const char *const kGroup = "a group that is referred to is repeated, or stands behind an endless repeat";
    const char *const kSkipped = "a group that is referred to may match nothing or not be there";
    const char *const kLost =
        "a group that is referred to may match nothing, and is referred to twice or beside "
        "an anchor that may be left out";
    const char *const kWays = "it can be read in too many ways beside back references";
    const char *const kMany = "it has too many choices beside back references";
    const char *const kIdle = "its groups can't be found where an endless repeat may match nothing in "
                              "several ways or beside an anchor";
    const std::pair<std::string, const char *> rows[] = {
        {times(32769, "a"), "it is too long"},
        {nested(201, "a", ""), "its groups are nested too deeply"},
        {times(1001, "(a)"), "it has too many groups"},
        {"((^|$)(\\b|^))*", "too many anchors stand in a repeat that may match nothing"},
        {"a" + times(9, "*"), "too many repeat operators follow one another"},
        {"((a{100}){100}){100}", kRepeats},
        {nested(17, "a", "+"), kEmpty}, // the groups' ends are many before the copies are
        {"((a{200}){200}){0}", kRepeats},
        {"((a{9,40}){0,15}.){10}", kOpen},
        {"((a{9,40}){0,9}\\ba){0,5}", kOpen}, // what is kept is kept for each side of an anchor
        {"([a-z]*\\<.){1400}Z", kOpen},
        {times(200, "(a{200}"), kRepeats}, // before it is seen that the ends are missing
        {times(1001, "a*"), kEmpty},
        {times(14, "(a*)?") + "(a*)*", kEmpty}, // 2 to the power of 14 ways into the loop
        {"(|)(\\1\\1)*", kEndless},
        {"(.+)-\\1", kVaries},
        {"([a-z:]+):\\1", kVaries},
        {"(\\w+)_\\1", kVaries},
        {"(\\w+)\\s?\\1", kVaries},
        {"([[:punct:]]+)-\\1", kVaries},
        {"([^a-z]+)-\\1", kVaries},
        {"^(.?){2}\\1", kGroup}, // of which the matcher finds less when groups are wanted
        {"^(a?)(.?)?\\2\\1", kGroup},
        {"^((a?)-)?\\2b", kSkipped}, // finds "b" without groups, nothing with them
        {".((-?)a|b)\\2", kSkipped},
        {"^(a)\\1(^b){2}", "an anchor is repeated beside back references"},
        {"^(a|$)\\1", "a group that is referred to has an anchor"},
        {"(.{0,26})\\1", kMany},
        {"a{0,13}([a-z])\\1", kMany},
        {"(\\w).{66}\\1", "it is too large beside back references"},
        {"^(a+)\\1?b", kVaries},
        {"(a)\\1{13}b?", kMany},
        {"^(a{1,28})([a-z]|a)*\\1$", kWays}, // each way is gone for the groups
        {"^(a{14}|a)" + times(13, "a?") + "\\1", kWays},
        {"^a?([a-z]+)\\1", kVaries},        // each begin with each end
        {"^(a{0,3}).*\\1[a-z]*-", kVaries}, // where the matcher comes from behind
        {"^.?([^-])\\w+\\1{2}[^-]", kVaries},
        {"a?([a-z]{2,}) \\1", kVaries},
        {"(a?)(a?)a?b{0,2}\\2\\2", kLost}, // finds "aba" without groups, nothing with them
        {"(\\b|)()\\2$", kLost},
        {"(a)\\1{65}", "it has too many back references"},
        {"^(a).(())*\\1$", "an endless repeat may match nothing beside back references"},
        {"x{\\,}" + times(1001, "()"), "an interval has an escaped character"},
        {"x{1\\0}", "an interval has an escaped character"},
        {"^(a*|b|)*$", kIdle},
        {"(^b|)+", kIdle},
        {"(()*^a)+", kIdle},
        {"(()*^a){0,2}", kIdle},
    };
    for (const auto &[pattern, fault] : rows)
        EXPECT_EQ(faultOf(pattern), fault) << pattern.substr(0, 40);
    EXPECT_STREQ(checkPattern("^(.+)-\\1", /*isByLines=*/true).fault, kVaries);
}

TEST(PatternCheckTest, CharacterOfSeveralBytesIsOnePart) {
    const std::pair<std::string, bool> rows[] = {{times(1001, "\u00E9*"), true},
                                                 {"(\\b\\b\\b\u00E9?)*", true},
                                                 {"(\u00E9?){3000}", true},
                                                 {"\\\u20AC{14000}", true},
                                                 {"\u20AC{13000}", false},
                                                 {"([^:\u00E9]*):\\1", false},
                                                 {"[\u00E9](a*)(b*)\xC3[\\1]", false},
                                                 {"\xC3" + times(999, "a?"), false}};
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    for (const auto &[pattern, isRefused] : rows)
        EXPECT_EQ(checkPattern(pattern.c_str()).fault != nullptr, isRefused) << pattern.substr(0, 40);
    std::setlocale(LC_CTYPE, "C");
}

TEST(PatternCheckTest, WhatPassesIsCompiledAndSearchedOnASmallStack) {
    constexpr std::uint32_t seed = 18; // what takes long with one seed takes long each time
    PatternMaker maker(seed);
    const std::string limits[] = {nested(200, "a", ""),      times(166, "(a|)"), "a" + times(999, "|a"),
                                  times(999, "a*"),          "a{0,999}",         "(a)\\1{64}",
                                  times(49, "(b?)*a") + "c", "(^a*)*(a*)*$"};
    std::string pattern;
    const auto work = [&] {
        std::size_t passed = 0;
        for (std::size_t round = 0; round < 4000; ++round) {
            if (round == 2000)
                std::setlocale(LC_CTYPE, "C.UTF-8");
            pattern = round < std::size(limits) ? limits[round] : maker.pattern();
            const qb::text::PatternLimits found = checkPattern(pattern.c_str());
            if (found.fault)
                continue;
            ++passed;
            std::cerr << pattern << std::endl; // the last one is to blame if the process ends here
            searchWith(pattern, !found.groupFault);
        }
        if (passed < 1000)
            std::abort();
    };
    const ChildEnd end = runInChild([&] {
        ::alarm(300);
        if (!runOnSmallStack(work))
            std::abort();
    });
    EXPECT_EQ(end.status, 0) << "seed " << seed << ": "
                             << end.standardError.substr(
                                    end.standardError.rfind('\n', end.standardError.size() - 2));
}
