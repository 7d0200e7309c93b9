#include "support/PoolFixture.h"

using QBBoolTest = PoolFixture;

TEST_F(QBBoolTest, ValuesStayWhatTheyAreAndOneTrueAndOneFalseAreKept) {
    QBBool *const two = QBBool::booleanWithValue(2);
    EXPECT_EQ(two->value(), 2);
    EXPECT_EQ(two->intValue(), 1);
    EXPECT_EQ(two->stringValue()->view(), "true");
    EXPECT_EQ(two->description()->view(), "<QBBool true>");
    EXPECT_EQ(QBBool::booleanWithValue(NO)->intValue(), 0);
    EXPECT_EQ(QBBool::falseBoolean()->description()->view(), "<QBBool false>");
    EXPECT_EQ(QBBool::trueBoolean(), QBBool::trueBoolean());
    EXPECT_NE(QBBool::booleanWithValue(YES), QBBool::trueBoolean());
}
