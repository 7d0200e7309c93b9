#include "support/ServicesFixture.h"

using QBDatabaseDateTest = ServicesFixture;
using namespace std::string_literals;

static std::string now(NSString *format) {
    return std::string(NSCalendarDate::calendarDate()->descriptionWithCalendarFormat(format)->view());
}

static std::string dateOf(std::string_view text) {
    NSCalendarDate *const date = NSDate::obsolete_dateWithString(NSString::stringWith(text));
    return date ? std::string(date->descriptionWithCalendarFormat("%Y-%m-%d %H:%M:%S"_ns)->view()) : "nil";
}

static std::string completed(std::string_view text) {
    return describe(NSDate::_completeDateArray(string(text)->componentsSeparatedByString("."_ns)));
}

TEST_F(QBDatabaseDateTest, DatesAreReadDayFirst) {
    const std::string withoutYear = dateOf("01.01");
    const std::pair<const char *, const char *> rows[] = {{"24/12/99", "1999-12-24 00:00:00"},
                                                          {"24122019", "2019-12-24 00:00:00"},
                                                          {"1.2.3", "2003-02-01 00:00:00"},
                                                          {"31.02.2003", "2003-03-03 00:00:00"},
                                                          {"01.01.1971", "1971-01-01 00:00:00"},
                                                          {"01.01.70", "nil"},
                                                          {"01.01.", withoutYear.c_str()},
                                                          {"0.1.2000", "nil"},
                                                          {"1.13.2000", "nil"},
                                                          {"1.1-2.2000", "nil"},
                                                          {"1.1.99999999999999999999", "nil"},
                                                          {"24129", "nil"}};
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(dateOf(text), expected) << text;
}

TEST_F(QBDatabaseDateTest, MissingPartsAreTheCurrentOnes) {
    const std::string month = now("%m"_ns), year = now("%Y"_ns);
    EXPECT_EQ(completed("24.12."), "(24, 12, " + year + ", 0)");
    EXPECT_EQ(completed("24.."), "(24, " + month + ", " + year + ", 0)");
    EXPECT_EQ(completed("1.2.3."), "(1, 2, 3, , 0)");
    EXPECT_EQ(NSDate::_dateWithArray(NSArray::arrayWith({"1"_ns, "2"_ns, ""_ns, "5"_ns})), nullptr);
}

TEST_F(QBDatabaseDateTest, ArraysAreTracedFromTheLevels2And7On) {
    const std::string input = "input array==\n", result = input + "completed date array==\n";
    for (const auto &[level, wanted] : {std::pair(1, ""s), {2, input}, {6, input}, {7, result}}) {
        const std::string traces = traced("misc", level, [] { completed("1.2.2003"); });
        EXPECT_EQ(replaced(traces, "src/.* -> |\\([^)]*\\)", ""), wanted) << level;
    }
}
