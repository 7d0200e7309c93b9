#include "Calendar/HttpDate.h"

#include <gtest/gtest.h>

using namespace qb::calendar;

TEST(HttpDateTest, AllFormsAreReadAndAllFieldsChecked) {
    constexpr std::int64_t kNone = -1;
    const std::pair<const char *, std::int64_t> rows[] = {
        {"Sun, 06 Nov 1994 08:49:37 GMT", 784111777}, {"Sunday, 06-Nov-94 08:49:37 GMT", 784111777},
        {"Sun Nov  6 08:49:37 1994", 784111777},      {" \t\r\nx 06 Nov 1994 08:49:37 whatever", 784111777},
        {"Sun, 06 nov 1994 08:49:37 GMT", kNone},     {"Sun, 06 Nov 1994 08:49:37", kNone}, // no zone
        {"Sun, 06 Nux 1994 08:49:37 GMT", kNone},     {"Sun Nov  0 08:49:37 1994", kNone},
        {"x 29 Feb 2000 00:00:00 GMT", 951782400},    {"x 29 Feb 1900 00:00:00 GMT", kNone},
        {"x 01 Jan 2001 23:59:61 GMT", 978393601},    {"x 01 Jan 2001 23:59:62 GMT", kNone},
        {"x 01 Jan 2001 24:00:00 GMT", kNone},        {"x 01 Jan 1970 00:00:00 GMT", 0},
        {"x 31 Dec 1969 23:59:59 GMT", kNone},        {"x 01 Jan 2038 00:00:00 GMT", kNone},
        {"x 31-Dec-37 23:59:59 GMT", 2145916799},     {"x 01-Jan-69 00:00:00 GMT", kNone}, // 2069
    };
    for (const auto &[text, seconds] : rows)
        EXPECT_EQ(parseHttpDate(text).value_or(kNone), seconds) << text;
}
