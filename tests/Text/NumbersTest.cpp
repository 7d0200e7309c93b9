#include "Text/Numbers.h"

#include "RandomText.h"

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace text = qb::text;

static std::string formattedDouble(double value) {
    char target[text::kLongestDouble];
    return {target, text::formatDouble(value, target)};
}

static std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

static text::ParsedDouble parseReal(std::string_view source) {
    return text::parseDouble(source.data(), source.data() + source.size());
}

template <class Integer>
static void expectStandardText() {
    using Limits = std::numeric_limits<Integer>;
    Random random;
    std::vector<Integer> values = {Limits::min(), Limits::max(), static_cast<Integer>(Limits::max() - 1)};
    Integer power = 1;
    for (int digits = 0; digits < Limits::digits10; ++digits, power = static_cast<Integer>(power * 10))
        for (const Integer near : {power - 1, power, power + 1})
            values.insert(values.end(), {near, static_cast<Integer>(0 - near)});
    for (int i = 0; i < 2000; ++i)
        values.push_back(static_cast<Integer>(random.bits() >> random.below(64)));
    char target[text::kLongestInteger];
    for (const Integer value : values)
        ASSERT_EQ(std::string(target, text::formatInteger(value, target)), std::to_string(value));
}

TEST(NumbersTest, IntegersOfEachWidthAreWrittenAsTheStandardWritesThem) {
    expectStandardText<std::int32_t>();
    expectStandardText<std::uint32_t>();
    expectStandardText<std::int64_t>();
    expectStandardText<std::uint64_t>();
}

TEST(NumbersTest, DoublesHaveTheShortestDigitsInTheLayoutOfPrintf) {
    const std::pair<double, std::string_view> rows[] = {
        {-0.0, "-0"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1e15, "1000000000000000"},
        {1e16, "1e+16"},
        {std::numeric_limits<double>::denorm_min(), "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (const auto &[value, expected] : rows)
        EXPECT_EQ(formattedDouble(value), expected);
}

TEST(NumbersTest, NumbersAreReadAsTheCLibraryReadsThem) {
    Random random;
    const std::string pieces[] = {
        "0", "1", "25", "9223372036854775807", ".", "-", "+", "e", ",", "E-", "e30", " ", "inf,", "\n\v"};
    for (int i = 0; i < 50000; ++i) {
        const std::string source = randomText(random, random.below(25), pieces);
        const char *const text = source.c_str();
        char *end = nullptr;
        const double real = std::strtod(text, &end);
        const text::ParsedDouble parsedReal = parseReal(source);
        ASSERT_EQ(bitsOf(parsedReal.value), bitsOf(real)) << source;
        ASSERT_EQ(parsedReal.next - source.data(), end - text) << source;
        errno = 0;
        const std::int64_t integer = std::strtoll(text, &end, 10);
        const text::ParsedInteger parsed = text::parseInteger(source.data(), source.data() + source.size());
        ASSERT_EQ(parsed.value, integer) << source;
        ASSERT_EQ(parsed.next - source.data(), end - text) << source;
        ASSERT_EQ(parsed.isOutOfRange, errno == ERANGE) << source;
    }
    EXPECT_EQ(parseReal("0x10").value, 0); // no digits but decimal ones
    EXPECT_EQ(bitsOf(parseReal("5464073570941524e22").value), 0x47C48DB621DE8F19u); // close to a half
}

TEST(NumbersTest, EveryDoubleReadsBackBitByBit) {
    Random random;
    for (int i = 0; i < 20000; ++i) {
        // Any bits, or few digits, which have forms of their own.
        const double value = i % 2 ? std::bit_cast<double>(random.bits())
                                   : double(random.below(100000)) / std::pow(10.0, double(random.below(9)));
        const std::string source = formattedDouble(value);
        const double read = parseReal(source).value;
        ASSERT_TRUE(std::isnan(value) ? std::isnan(read) : bitsOf(read) == bitsOf(value)) << source;
    }
}
