#include "support/PoolFixture.h"

using QBBoolTest = PoolFixture;

TEST_F(QBBoolTest, ValuesStayWhatTheyAre) {
    const struct {
        BOOL value;
        int integer;
        const char *text;
        const char *description;
    } rows[] = {{NO, 0, "false", "<QBBool false>"},
                {YES, 1, "true", "<QBBool true>"},
                {2, 1, "true", "<QBBool true>"}};
    for (const auto &row : rows) {
        QBBool *const boolean = QBBool::booleanWithValue(row.value);
        EXPECT_EQ(boolean->value(), row.value);
        EXPECT_EQ(boolean->intValue(), row.integer);
        EXPECT_EQ(boolean->stringValue()->view(), row.text);
        EXPECT_EQ(boolean->description()->view(), row.description);
    }
}

TEST_F(QBBoolTest, OneTrueAndOneFalseAreKept) {
    EXPECT_EQ(QBBool::trueBoolean(), QBBool::trueBoolean());
    EXPECT_NE(QBBool::booleanWithValue(YES), QBBool::trueBoolean());
}
