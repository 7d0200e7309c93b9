#include "support/ServicesFixture.h"

using QBDatabaseDateTest = ServicesFixture;

namespace {

std::string now(NSString *format) {
    return std::string(NSCalendarDate::calendarDate()->descriptionWithCalendarFormat(format)->view());
}

std::string dateOf(std::string_view text) {
    NSCalendarDate *const date = NSDate::obsolete_dateWithString(NSString::stringWith(text));
    return date ? std::string(date->descriptionWithCalendarFormat("%Y-%m-%d %H:%M:%S"_ns)->view()) : "nil";
}

std::string completed(NSArray *array) {
    return describe(NSDate::_completeDateArray(array));
}

} // namespace

TEST_F(QBDatabaseDateTest, DatesAreReadDayFirst) {
    const std::string withoutYear = dateOf("01.01");
    const struct {
        const char *text, *expected;
    } rows[] = {
        {"24.12.1999", "1999-12-24 00:00:00"},
        {"24/12/99", "1999-12-24 00:00:00"},
        {"24-12-00", "2000-12-24 00:00:00"},
        {"241299", "1999-12-24 00:00:00"},
        {"24122019", "2019-12-24 00:00:00"},
        {"1.2.3", "2003-02-01 00:00:00"},
        {"31.02.2003", "2003-03-03 00:00:00"},
        {"01.01.71", "1971-01-01 00:00:00"},
        {"01.01.1971", "1971-01-01 00:00:00"},
        {"31.12.2020", "nil"},
        {"31.12.1970", "nil"},
        {"01.01.70", "nil"},
        {"01.01.35", "nil"},
        {"01.01.36", "nil"},
        {"01.01.", withoutYear.c_str()},
        {"0.1.2000", "nil"},
        {"32.1.2000", "nil"},
        {"1.0.2000", "nil"},
        {"1.13.2000", "nil"},
        {"1.1.2000.", "nil"},
        {"1.1.2000.5", "nil"},
        {"1.x.2000", "nil"},
        {"1. 1.2000", "nil"},
        {"+1.1.2000", "nil"},
        {"1.1-2.2000", "nil"},
        {"1/1.1.2000", "nil"},
        {"..2000", "nil"},
        {"1.1.99999999999999999999", "nil"},
        {"123", "nil"},
        {"24129", "nil"},
        {"\u0661\u0662", "nil"},
        {"", "nil"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(dateOf(row.text), row.expected) << row.text;
    EXPECT_EQ(NSDate::obsolete_dateWithString(nullptr), nullptr);
    EXPECT_EQ(send<id>(NSDate::cls(), "obsolete_dateWithString:"_sel, QBNil::value()), nullptr);
}

TEST_F(QBDatabaseDateTest, MissingPartsAreTheCurrentOnes) {
    const std::string month = now("%m"_ns), year = now("%Y"_ns);
    EXPECT_EQ(completed(NSArray::arrayWithObject("24"_ns)), "(24, " + month + ", " + year + ", 0)");
    EXPECT_EQ(completed("24.12"_ns->componentsSeparatedByString("."_ns)), "(24, 12, " + year + ", 0)");
    EXPECT_EQ(completed("24.12."_ns->componentsSeparatedByString("."_ns)), "(24, 12, " + year + ", 0)");
    EXPECT_EQ(completed("24.."_ns->componentsSeparatedByString("."_ns)),
              "(24, " + month + ", " + year + ", 0)");
    EXPECT_EQ(completed("24."_ns->componentsSeparatedByString("."_ns)),
              "(24, " + month + ", " + year + ", 0)");
    EXPECT_EQ(completed("1.2.3."_ns->componentsSeparatedByString("."_ns)), "(1, 2, 3, , 0)");
    EXPECT_EQ(completed(nullptr), "(0)");
    NSArray *const given = NSArray::arrayWithObject("24"_ns);
    EXPECT_EQ(NSDate::_dateWithArray(nullptr), nullptr);
    EXPECT_EQ(NSDate::_dateWithArray(given) == nullptr, std::stoi(year) > 2019);
    EXPECT_EQ(given->count(), 1u); // the argument stays as it was
    EXPECT_EQ(NSDate::_dateWithArray(NSArray::arrayWith({"1"_ns, "2"_ns, ""_ns, "5"_ns})), nullptr);
}

TEST_F(QBDatabaseDateTest, ArraysAreTracedByTheDebugLevel) {
    activateChannel("misc");
    CapturedOutput output;
    NSArray *const array = "1.2.2003"_ns->componentsSeparatedByString("."_ns);
    std::string lines[3];
    const int levels[] = {1, 2, 7};
    for (std::size_t i = 0; i < 3; ++i) {
        debug = levels[i];
        NSDate::_completeDateArray(array);
        lines[i] = output.text();
    }
    output.end();
    EXPECT_EQ(lines[0], "");
    EXPECT_NE(lines[1].find("+_completeDateArray: -> input array==("), std::string::npos) << lines[1];
    EXPECT_EQ(lines[1].find("completed date array"), std::string::npos);
    EXPECT_NE(lines[2].find("+_completeDateArray: -> completed date array==("), std::string::npos)
        << lines[2];
}
