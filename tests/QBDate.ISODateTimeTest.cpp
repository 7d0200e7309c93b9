#include "Calendar/Stamp.h"
#include "support/PoolFixture.h"

using QBDateISODateTimeTest = PoolFixture;
using namespace std::string_view_literals;

TEST_F(QBDateISODateTimeTest, TextIsInGmtWithFourDigitsOfTheYear) {
    NSTimeZone *const berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
    const auto textIn = [berlin](int year) {
        return describe(NSCalendarDate::dateWithYear(year, 7, 1, 0, 0, 0, berlin)->asISODateTimeString());
    };
    EXPECT_EQ(textIn(2024), "20240630220000");
    EXPECT_EQ(textIn(12345), "123450630220000");
    EXPECT_EQ(textIn(-5).substr(0, 7), "000-506");
    EXPECT_EQ(textIn(9).substr(0, 6), "000906");
}

TEST_F(QBDateISODateTimeTest, DigitsAreClampedToTheirRanges) {
    const std::string thisYear = std::string(NSDate::date()->description()->view().substr(0, 4));
    const std::pair<std::string, std::string> rows[] = {
        {"20030231000000", "2003-03-01 00:00:00 +0000"}, // 29 February there
        {"20040431246099", "2004-04-30 23:59:59 +0000"},
        {"20040000000000", "2004-01-01 00:00:00 +0000"},
        {"00000304120000", thisYear + "-03-04 12:00:00 +0000"},
        {"-9990304 1+2x ", thisYear + "-03-04 01:02:00 +0000"}, // each field is a number of its own
        {"2004\u00e4\u00e4121212 \u00e4", "2004-01-12 12:12:00 +0000"},
        {"2004123123595", "nil"},
    };
    for (const auto &[digits, expected] : rows)
        EXPECT_EQ(describe(string(digits)->asDateFromISODateTimeString()), expected) << digits;
    EXPECT_EQ(
        "20041231235959987"_ns->asDateFromISODateTimeStringWithMilliseconds()->asISODateTimeString()->view(),
        "20041231235959");
}

TEST_F(QBDateISODateTimeTest, ABadDigitIsSeenWhereverItStands) {
    for (std::size_t place = 0; place < qb::calendar::kStampLength; ++place)
        for (int byte = 0; byte < 256; ++byte) {
            std::string digits = "20041211121212";
            digits[place] = static_cast<char>(byte);
            EXPECT_TRUE(std::isdigit(byte) ||
                        qb::calendar::secondsOfStamp(digits.c_str()) == qb::calendar::kNoSeconds)
                << digits;
        }
}

TEST_F(QBDateISODateTimeTest, RecognisedAsByTheirPatterns) {
    for (const std::string_view row :
         {"20041231235959"sv, "20041231235959987"sv, "20041231235959\n"sv, "20041231235959\0x"sv,
          "\u0662004123123595"sv, "2004123123595998:"sv}) {
        NSString *const text = NSString::stringWith(row);
        EXPECT_EQ(text->isIsoDateTimeString(), text->matches("^[0-9]{14}$"_ns)) << row;
        EXPECT_EQ(text->isIsoDateTimeStringWithMilliseconds(), text->matches("^[0-9]{17}$"_ns)) << row;
    }
    EXPECT_FALSE(NSNumber::numberWithLongLong(20041231235959)->isIsoDateTimeString());
    EXPECT_TRUE(
        NSString::currentDateAsISODateTimeStringWithMilliSeconds()->isIsoDateTimeStringWithMilliseconds());
}

TEST_F(QBDateISODateTimeTest, ShortTextsAreFilledUp) {
    const std::pair<const char *, const char *> rows[] = {
        {"2004", "20040101000000"},
        {"20041231235959999", "20041231235959"},
        {"2004121212121\U0001F600", "20041212121210"}, // half of the character is none
        {"", "nil"}};
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(describe(NSString::stringWith(text)->standardizedISODateTimeString()), expected);
    EXPECT_EQ(send<id>(QBNil::value(), "standardizedISODateTimeString"_sel), QBNil::value());
}
