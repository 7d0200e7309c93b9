#include "Text/Numbers.h"

#include "RandomText.h"

#include <bit>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

using namespace std::string_view_literals;
namespace text = qb::text;

namespace {

template <class Integer>
std::string formatted(Integer value) {
    char target[text::kLongestInteger];
    return {target, text::formatInteger(value, target)};
}

std::string formattedDouble(double value) {
    char target[text::kLongestDouble];
    return {target, text::formatDouble(value, target)};
}

text::ParsedInteger parse(std::string_view source) {
    return text::parseInteger(source.data(), source.data() + source.size());
}

text::ParsedDouble parseReal(std::string_view source) {
    return text::parseDouble(source.data(), source.data() + source.size());
}

template <class Integer>
void expectStandardText() {
    using Limits = std::numeric_limits<Integer>;
    Random random;
    std::vector<Integer> values = {Limits::min(), Limits::max(), static_cast<Integer>(Limits::max() - 1)};
    Integer power = 1;
    for (int digits = 0; digits < Limits::digits10; ++digits, power = static_cast<Integer>(power * 10))
        for (const Integer near : {power - 1, power, power + 1})
            values.insert(values.end(), {near, static_cast<Integer>(0 - near)});
    for (int i = 0; i < 2000; ++i)
        values.push_back(static_cast<Integer>(random.bits() >> random.below(64)));
    for (const Integer value : values)
        ASSERT_EQ(formatted(value), std::to_string(value));
}

} // namespace

TEST(NumbersTest, IntegersOfEachWidthAreWrittenAsTheStandardWritesThem) {
    expectStandardText<std::int32_t>();
    expectStandardText<std::uint32_t>();
    expectStandardText<std::int64_t>();
    expectStandardText<std::uint64_t>();
}

TEST(NumbersTest, LenientIntegersStopAtTheFirstOtherByte) {
    const struct {
        std::string_view source;
        std::int64_t value;
        std::size_t next;
        bool isOutOfRange;
    } rows[] = {
        {"", 0, 0, false},
        {"-", 0, 0, false},
        {"+ 1", 0, 0, false},
        {" \t\n\v\f\r-0042x", -42, 11, false},
        {"1\0002"sv, 1, 1, false},
        {"9223372036854775807", INT64_MAX, 19, false},
        {"9223372036854775808", INT64_MAX, 19, true},
        {"-9223372036854775808", INT64_MIN, 20, false},
        {"-9223372036854775809", INT64_MIN, 20, true},
        {"99999999999999999999999999 ", INT64_MAX, 26, true},
    };
    for (const auto &row : rows) {
        const text::ParsedInteger parsed = parse(row.source);
        EXPECT_EQ(parsed.value, row.value) << row.source;
        EXPECT_EQ(parsed.next, row.source.data() + row.next) << row.source;
        EXPECT_EQ(parsed.isOutOfRange, row.isOutOfRange) << row.source;
    }
}

TEST(NumbersTest, DoublesHaveTheShortestDigitsInTheLayoutOfPrintf) {
    const struct {
        double value;
        std::string_view expected;
    } rows[] = {
        {-0.0, "-0"},
        {1e5, "100000"},
        {123456.75, "123456.75"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1e15, "1000000000000000"},
        {1e16, "1e+16"},
        {-0.00012345678901234567, "-0.00012345678901234567"},
        {std::numeric_limits<double>::denorm_min(), "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(formattedDouble(row.value), row.expected);
}

TEST(NumbersTest, EveryDoubleReadsBackBitByBit) {
    Random random;
    for (int i = 0; i < 20000; ++i) {
        // Any bits, or few digits, which have forms of their own.
        const double value = i % 2 ? std::bit_cast<double>(random.bits())
                                   : double(random.below(100000)) / std::pow(10.0, double(random.below(9)));
        const std::string source = formattedDouble(value);
        const text::ParsedDouble parsed = parseReal(source);
        EXPECT_EQ(parsed.next, source.data() + source.size()) << source;
        if (std::isnan(value))
            EXPECT_TRUE(std::isnan(parsed.value));
        else
            ASSERT_EQ(std::bit_cast<std::uint64_t>(parsed.value), std::bit_cast<std::uint64_t>(value))
                << source;
    }
}

TEST(NumbersTest, LenientDoublesStopAtTheFirstOtherByte) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        std::string_view source;
        double value;
        std::size_t next;
    } rows[] = {
        {"", 0, 0},
        {"-", 0, 0},
        {"+-1", 0, 0},
        {".", 0, 0},
        {" \n+1.5x", 1.5, 6},
        {"-.5", -0.5, 3},
        {"5.", 5, 2},
        {"1e+", 1, 1},
        {"1E3", 1000, 3},
        {"0x10", 0, 1},
        {"-Infinity", -infinity, 9},
        {"1e999", infinity, 5},
        {"1e-999", 0, 6},
        {"0.0001e999999999999999999999", infinity, 28},
        {"1000e-99999999999999999999999", 0, 29},
    };
    for (const auto &row : rows) {
        const text::ParsedDouble parsed = parseReal(row.source);
        EXPECT_EQ(parsed.value, row.value) << row.source;
        EXPECT_EQ(parsed.next, row.source.data() + row.next) << row.source;
    }
    EXPECT_EQ(parseReal(std::string(400, '9')).value, infinity);
    EXPECT_EQ(parseReal("." + std::string(400, '0') + "1").value, 0);
    EXPECT_TRUE(std::signbit(parseReal("-1e-999").value));
}
