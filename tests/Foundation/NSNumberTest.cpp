#include "support/PoolFixture.h"

using NSNumberTest = PoolFixture;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Wide : ClientClass<Wide, NSLongLongNumber, "Wide"> {};
struct OwnNumber : ClientClass<OwnNumber, NSNumber, "OwnNumber"> {};

TEST_F(NSNumberTest, MakersOf64BitsMakeObjectsOfTheClassAsked) {
    for (Class *asked : {Wide::cls(), OwnNumber::cls()})
        for (const char *type : {"Long:", "LongLong:", "UnsignedLong:", "UnsignedLongLong:"})
            for (const char *maker : {"numberWith", "initWith"})
                EXPECT_EQ(made(asked, (std::string(maker) + type).c_str(), {7}), "7");
    for (const char *type : {"Bool", "Char", "UnsignedChar", "Short", "UnsignedShort", "Int", "UnsignedInt",
                             "Long", "LongLong", "Float", "Double"})
        EXPECT_EQ(answer(NSNumber::cls(), ("initWith" + std::string(type) + ":").c_str(), {1}), "1") << type;
}

TEST_F(NSNumberTest, TextsAndTypesTellWhatWasPutIn) {
    const std::tuple<NSNumber *, const char *, const char *> rows[] = {
        {NSNumber::numberWithBool(7), "1", "c"},
        {NSNumber::numberWithChar('a'), "97", "i"},
        {NSNumber::numberWithUnsignedChar(200), "200", "i"},
        {NSNumber::numberWithUnsignedShort(65535), "65535", "i"},
        {NSNumber::numberWithShort(-30000), "-30000", "i"},
        {NSNumber::numberWithUnsignedInt(UINT32_MAX), "4294967295", "I"},
        {NSNumber::numberWithLong(INT64_MIN), "-9223372036854775808", "q"},
        {NSNumber::numberWithUnsignedLong(UINT64_MAX), "18446744073709551615", "Q"},
        {NSNumber::numberWithFloat(0.1f), "0.1", "f"},
        {NSNumber::numberWithDouble(static_cast<double>(0.1f)), "0.10000000149011612", "d"},
    };
    for (const auto &[number, text, type] : rows) {
        EXPECT_EQ(number->stringValue()->view(), text);
        EXPECT_STREQ(number->objCType(), type) << text;
        EXPECT_EQ(send<NSString *>(number, "descriptionWithLocale:"_sel, nullptr)->view(), text);
        EXPECT_EQ(send<NSNumber *>(number, "asNumber"_sel), number);
    }
}

TEST_F(NSNumberTest, ConversionsCutAsTheyAreStated) {
    NSNumber *const wide = NSNumber::numberWithLongLong(0x1'8000'FF85);
    EXPECT_EQ(wide->charValue(), static_cast<char>(0x85));
    EXPECT_EQ(wide->unsignedCharValue(), 0x85);
    EXPECT_TRUE(wide->shortValue() == -123 && wide->unsignedShortValue() == 0xFF85);
    EXPECT_TRUE(wide->longValue() == 0x1'8000'FF85 && wide->unsignedLongValue() == 0x1'8000'FF85);
    EXPECT_TRUE(wide->intValue() == -0x7FFF'007B && wide->unsignedIntValue() == 0x8000'FF85);
    NSNumber *const real = NSNumber::numberWithDouble(-2.9);
    EXPECT_EQ(real->intValue(), -2);
    EXPECT_EQ(real->floatValue(), -2.9f);
    EXPECT_EQ(real->unsignedLongLongValue(), 0u);
    NSNumber *const many = NSNumber::numberWithDouble(3e9);
    EXPECT_TRUE(many->intValue() == INT32_MAX && many->unsignedIntValue() == 3'000'000'000u &&
                many->shortValue() == INT16_MAX && real->unsignedIntValue() == 0);
    EXPECT_EQ(NSNumber::numberWithDouble(1e30)->unsignedLongLongValue(), UINT64_MAX);
    EXPECT_EQ(NSNumber::numberWithDouble(kNan)->intValue(), 0);
    EXPECT_TRUE(NSNumber::numberWithDouble(0.5)->boolValue());
    EXPECT_EQ(NSNumber::numberWithUnsignedLongLong(UINT64_MAX)->doubleValue(), 0x1p64);
    EXPECT_EQ(NSNumber::numberWithInt(5), NSNumber::numberWithUnsignedInt(5)); // small ones are shared
}

TEST_F(NSNumberTest, OrderAndEqualityGoByValueWhateverTheType) {
    // Ascending; the numbers of one row are equal.
    const std::vector<std::vector<NSNumber *>> rows = {
        {NSNumber::numberWithDouble(kNan), NSNumber::numberWithFloat(NAN), NSNumber::numberWithDouble(-kNan)},
        {NSNumber::numberWithDouble(-kInfinity)},
        {NSNumber::numberWithLongLong(INT64_MIN), NSNumber::numberWithDouble(-0x1p63)},
        {NSNumber::numberWithInt(0), NSNumber::numberWithBool(NO), NSNumber::numberWithDouble(-0.0)},
        {NSNumber::numberWithDouble(0.1)},
        {NSNumber::numberWithFloat(0.1f), NSNumber::numberWithDouble(static_cast<double>(0.1f))},
        {NSNumber::numberWithDouble(0x1p53), NSNumber::numberWithLongLong(1LL << 53)},
        {NSNumber::numberWithLongLong((1LL << 53) + 1)},
        {NSNumber::numberWithLongLong(INT64_MAX), NSNumber::numberWithUnsignedLongLong(INT64_MAX)},
        {NSNumber::numberWithDouble(0x1p63), NSNumber::numberWithUnsignedLongLong(1ULL << 63)},
        {NSNumber::numberWithUnsignedLongLong(UINT64_MAX)},
        {NSNumber::numberWithDouble(kInfinity)},
    };
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = 0; j < rows.size(); ++j)
            for (NSNumber *a : rows[i])
                for (NSNumber *b : rows[j]) {
                    EXPECT_EQ(a->compare(b), static_cast<NSComparisonResult>((i > j) - (i < j)))
                        << *a << " " << *b;
                    EXPECT_EQ(a->isEqual(b), i == j) << *a << " " << *b;
                    if (i == j) {
                        EXPECT_EQ(a->hash(), b->hash()) << *a;
                    }
                }
    EXPECT_THROW(rows[0][0]->compare("nan"_ns), InvalidArgumentException);
}
