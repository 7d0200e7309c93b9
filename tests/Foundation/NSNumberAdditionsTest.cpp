#include <QBFoundation/Foundation/NSNumber.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Send.h>

#include "support/PoolFixture.h"

using NSNumberAdditionsTest = PoolFixture;

TEST_F(NSNumberAdditionsTest, NumbersAreThemselvesAndAlwaysData) {
    for (NSNumber *number : {NSNumber::numberWithInt(0), NSNumber::numberWithDouble(0.5)}) {
        EXPECT_EQ(send<NSNumber *>(number, "asNumber"_sel), number);
        EXPECT_TRUE(send<BOOL>(number, "containsData"_sel));
    }
}

TEST_F(NSNumberAdditionsTest, WideNumbersPrintInFull) {
    const std::pair<NSNumber *, const char *> rows[] = {
        {NSNumber::numberWithLongLong(INT64_MIN), "-9223372036854775808"},
        {NSNumber::numberWithLongLong(INT64_MAX), "9223372036854775807"},
        {NSNumber::numberWithUnsignedLongLong(UINT64_MAX), "18446744073709551615"},
    };
    for (const auto &[number, text] : rows) {
        ASSERT_TRUE(number->isKindOfClass(NSLongLongNumber::cls()));
        EXPECT_EQ(send<NSString *>(number, "descriptionWithLocale:"_sel, nullptr)->view(), text);
    }
}
