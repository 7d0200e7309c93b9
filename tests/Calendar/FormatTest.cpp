#include "Calendar/Format.h"
#include "Calendar/FixedFormat.h"

#include "Text/RandomText.h"

#include <cstdint>
#include <ctime>

using namespace qb::calendar;

static Moment moment(const Fields &fields, int millisecond = 0, std::int32_t offset = 0) {
    return {fields, millisecond, offset, "GMT"};
}

TEST(FormatTest, ConversionsAgreeWithTheCLibrary) {
    const std::string pattern = "%a %A %b %B %c %d %e %H %I %j %m %M %p %S %w %u %V %G %x %X %y %Y %z %Z %%";
    for (std::int64_t seconds = -30'610'224'000; seconds < 20'000'000'000; seconds += 86400 * 5 + 4211) {
        const auto time = static_cast<std::time_t>(seconds);
        if (time != seconds)
            continue;
        std::tm parts;
        gmtime_r(&time, &parts);
        char expected[512];
        ASSERT_GT(std::strftime(expected, sizeof expected, pattern.c_str(), &parts), 0u);
        const Moment given = momentAt(seconds, 0, *utc());
        ASSERT_EQ(formatted(pattern, given), expected) << seconds;
        ASSERT_EQ(secondsFromFields(given.fields), seconds);
    }
}

TEST(FormatTest, PreparedPatternsWriteTheSame) {
    const std::string pieces[] = {"%a", "%b", "%d", "%e", "%H", "%m", "%M",
                                  "%S", "%y", "%Y", "%%", ", ", "%"};
    Random random;
    for (int round = 0; round < 2000; ++round) {
        const std::string pattern = randomText(random, random.below(24), pieces);
        const FixedFormat &fixed = fixedFormat(pattern);
        const auto seconds = static_cast<std::int64_t>(random.bits() % 284'012'524'800) - 30'610'224'000;
        const Moment given = momentAt(seconds, 0, *utc()); // of a year with four digits
        if (!fixed.suits(seconds))
            continue; // a lone per cent sign has made another conversion of what follows
        std::string text(fixed.length(), '?');
        fixed.write(seconds, text.data());
        ASSERT_EQ(text, formatted(pattern, given)) << pattern;
    }
    for (const char *pattern : {"%j", "%A", "%Q", "%Z", "%F"})
        EXPECT_FALSE(fixedFormat(pattern).suits(0)) << pattern;
    const std::int64_t first = secondsFromFields({1000, 1, 1, 0, 0, 0});
    const std::int64_t last = secondsFromFields({9999, 12, 31, 23, 59, 59});
    for (const std::int64_t seconds : {first, last})
        EXPECT_TRUE(fixedFormat("%Y").suits(seconds)) << seconds;
    for (const std::int64_t seconds : {first - 1, last + 1, INT64_MIN, INT64_MAX})
        EXPECT_FALSE(fixedFormat("%Y").suits(seconds)) << seconds;
    EXPECT_FALSE(fixedFormat(std::string(129, 'x')).suits(0));
}

TEST(FormatTest, OwnConversionsAndOddPatterns) {
    const Moment given = moment({2024, 2, 29, 0, 5, 9}, 7, -12600);
    EXPECT_EQ(formatted("%F|%z|%I %p|%s|%e", given), "007|-0330|12 AM|1709177709|29");
    EXPECT_EQ(formatted("%Q 100% %", given), "%Q 100% %");
    EXPECT_EQ(formatted("%y", moment({-5, 1, 1, 0, 0, 0})), "95");
    EXPECT_EQ(formatted("%F", moment({}, -4)) + formatted("%F", moment({}, 5000)), "000999");
    EXPECT_EQ(formatted("%d %b %Y %H", moment({2003, 14, 29, 25, 0, 0})), "01 Mar 2004 01");
}

TEST(FormatTest, ParsingReadsWhatFormattingWrites) {
    const Moment given = moment({2024, 11, 9, 13, 5, 7}, 42, 19800);
    for (const char *pattern : {"%Y%m%d%H%M%S%F", "%d.%m.%Y %H:%M:%S.%F", "%c %F", "%x %X %F",
                                "%A, %e %B %Y %I:%M:%S %p %F", "%j %Y %X %F", "%Y-%m-%d %H:%M:%S %F %z %Z",
                                "%b %d %y, %I.%M.%S.%F%p", "%G W%V %u %w %Y%j %H%M%S%F"}) {
        ParsedDate date;
        EXPECT_TRUE(parseDate(formatted(pattern, given), pattern, date)) << pattern;
        EXPECT_EQ(normalised(date.fields), given.fields) << pattern;
        EXPECT_EQ(date.millisecond, 42) << pattern;
    }
    ParsedDate date;
    ASSERT_TRUE(parseDate("-3600 +05:30 WET DST", "%s %z %Z", date));
    EXPECT_EQ(date.utcSeconds, -3600);
    EXPECT_EQ(date.offset, 19800);
    EXPECT_EQ(date.zoneName, "WET DST");
}

TEST(FormatTest, ParsingIsLenientOnBlanksNamesAndMissingDigits) {
    const std::tuple<const char *, const char *, Fields> rows[] = {
        {" 7. 3.  2024 ", "%d.%m.%Y", {2024, 3, 7, 0, 0, 0}},
        {"sunday may 5", "%a %B %d", {1970, 5, 5, 0, 0, 0}},
        {"69", "%y", {1969, 1, 1, 0, 0, 0}},
        {"68", "%y", {2068, 1, 1, 0, 0, 0}},
        {"12 am", "%I %p", {1970, 1, 1, 0, 0, 0}},
        {"12024-01", "%Y-%m", {12024, 1, 1, 0, 0, 0}},
        {"100 3", "%j %m", {1970, 3, 1, 0, 0, 0}},
    };
    for (const auto &[text, pattern, expected] : rows) {
        ParsedDate date;
        EXPECT_TRUE(parseDate(text, pattern, date)) << text;
        EXPECT_EQ(date.fields, expected) << text;
    }
}

TEST(FormatTest, MismatchLeavesTheDateAsItWas) {
    const std::pair<std::string, const char *> rows[] = {{"0", "%I"},
                                                         {"62", "%S"},
                                                         {"", "%Y"},
                                                         {"Mai", "%b"},
                                                         {"+2400", "%z"},
                                                         {"+0160", "%z"},
                                                         {"999999999999", "%Y"},
                                                         {"9999999999999999999", "%s"},
                                                         {"2024 5", "%Y %d %m"},
                                                         {std::string(300, 'a'), "%Z"},
                                                         {std::string(1, '5') + '\0', "%d"}};
    for (const auto &[text, pattern] : rows) {
        ParsedDate date;
        date.fields.year = 1;
        EXPECT_FALSE(parseDate(text, pattern, date)) << text << " by " << pattern;
        EXPECT_EQ(date.fields, (Fields{1, 1, 1, 0, 0, 0})) << text;
        EXPECT_TRUE(date.zoneName.empty() && !date.offset && !date.utcSeconds) << text;
    }
}
