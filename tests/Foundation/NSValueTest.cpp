#include "support/PoolFixture.h"

using NSValueTest = PoolFixture;

TEST_F(NSValueTest, HoldsRangesAddressesAndObjects) {
    int place = 0;
    const Ref<NSString> object = NSString::initWith("x");
    NSValue *const range = NSValue::valueWithRange(NSMakeRange(3, 4));
    NSValue *const pointer = NSValue::valueWithPointer(&place);
    EXPECT_EQ(range->rangeValue(), NSMakeRange(3, 4));
    EXPECT_EQ(pointer->pointerValue(), &place);
    EXPECT_EQ(NSValue::valueWithNonretainedObject(object)->nonretainedObjectValue(), object.get());
    EXPECT_EQ(object->retainCount(), 1u);
    EXPECT_REASON(pointer->rangeValue(), "NSValue rangeValue must have a receiver that holds such a value.");
    EXPECT_TRUE(range->isEqual(NSValue::valueWithRange(NSMakeRange(3, 4))));
    EXPECT_EQ(range->hash(), NSValue::valueWithRange(NSMakeRange(3, 4))->hash());
    EXPECT_FALSE(range->isEqualToValue(NSValue::valueWithRange(NSMakeRange(3, 5))));
    EXPECT_FALSE(NSValue::valueWithPointer(nullptr)->isEqual(number(0)));
    struct OtherValue : ClientClass<OtherValue, NSValue, "OtherValue"> {};
    EXPECT_EQ(send(OtherValue::cls(), "valueWithPointer:"_sel, &place)->classObject(), OtherValue::cls());
    EXPECT_EQ(send(NSNumber::cls(), "valueWithPointer:"_sel, &place)->classObject(), NSValue::cls());
}

TEST_F(NSValueTest, ValuesOfEveryTypeGoInAndOut) {
    const auto goesRound = [](auto value, const char *type, const char *held) {
        NSValue *const made = NSValue::value(&value, type);
        EXPECT_STREQ(made->objCType(), held) << type;
        decltype(value) out{};
        if (std::string_view(type) == held) {
            made->getValue(&out);
            EXPECT_TRUE(out == value) << type;
        }
        return made;
    };
    goesRound(std::int32_t{-5}, "i", "i");
    goesRound(0.1f, "f", "f");
    goesRound(NSMakeRange(1, 2), "{_NSRange=II}", "{_NSRange=II}");
    goesRound(static_cast<id>("x"_ns), "@", "@");
    EXPECT_EQ(describe(goesRound(std::int16_t{-300}, "s", "i")), "-300");
    EXPECT_EQ(describe(goesRound(true, "B", "c")), "1");
    int value = 0;
    EXPECT_THROW(NSValue::valueWithBytes(&value, "*"), InvalidArgumentException);
    EXPECT_THROW(number(1)->getValue(nullptr), InvalidArgumentException);
}
