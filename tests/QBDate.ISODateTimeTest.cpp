#include "support/PoolFixture.h"

using QBDateISODateTimeTest = PoolFixture;
using namespace std::string_view_literals;

namespace {

NSCalendarDate *gmtDate(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return NSCalendarDate::dateWithYear(year, month, day, hour, minute, second, NSTimeZone::gmt());
}

/// The text of the date that the digits are; "nil" when they are none.
std::string dateOf(std::string_view digits) {
    NSCalendarDate *const date = NSString::stringWith(digits)->asDateFromISODateTimeString();
    return date ? std::string(date->description()->view()) : "nil";
}

} // namespace

TEST_F(QBDateISODateTimeTest, TextIsInGmtWithFourDigitsOfTheYear) {
    const struct {
        int year;
        const char *text;
    } rows[] = {{9, "00090304120509"}, {12345, "123450304120509"}, {-5, "000-50304120509"}};
    for (const auto &row : rows)
        EXPECT_EQ(gmtDate(row.year, 3, 4, 12, 5, 9)->asISODateTimeString()->view(), row.text);
    NSTimeZone *const berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
    NSCalendarDate *const date = NSCalendarDate::dateWithYear(2024, 1, 1, 0, 0, 0, berlin);
    EXPECT_EQ(send<NSString *>(date, "asISODateTimeString"_sel)->view(), "20231231230000");
}

TEST_F(QBDateISODateTimeTest, DigitsAreClampedToTheirRanges) {
    const std::string thisYear = std::string(NSDate::date()->description()->view().substr(0, 4));
    const struct {
        std::string digits, expected;
    } rows[] = {
        {"20041231235959", "2004-12-31 23:59:59 +0000"},
        {"20030231000000", "2003-03-01 00:00:00 +0000"}, // 29 February there
        {"20040431246099", "2004-04-30 23:59:59 +0000"},
        {"20040000000000", "2004-01-01 00:00:00 +0000"},
        {"00000304120000", thisYear + "-03-04 12:00:00 +0000"},
        {"-9990304 1+2x ", thisYear + "-03-04 01:02:00 +0000"}, // each field is a number of its own
        {"2004\u00e4\u00e4121212 \u00e4", "2004-01-12 12:12:00 +0000"},
        {"2004123123595", "nil"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(dateOf(row.digits), row.expected) << row.digits;
    EXPECT_EQ(
        "20041231235959987"_ns->asDateFromISODateTimeStringWithMilliseconds()->asISODateTimeString()->view(),
        "20041231235959");
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
        {"20041331", "20041231000000"},
        {"20041231235959999", "20041231235959"},
        {"2004121212121\U0001F600", "20041212121210"}, // half of the character is none
        {"", "nil"}};
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(describe(NSString::stringWith(text)->standardizedISODateTimeString()), expected);
    EXPECT_EQ(send<id>(QBNil::value(), "standardizedISODateTimeString"_sel), QBNil::value());
}
