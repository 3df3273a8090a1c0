#include <velmorak/Value.h>

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace velmorak {
namespace {

double numberIn(std::string_view text) {
    double number = 0.0;
    EXPECT_TRUE(readNumber(text, number)) << text;
    return number;
}

TEST(NumberText, isTheShortestThatReadsBack) {
    EXPECT_EQ(textOf(0.1), "0.1");
    EXPECT_EQ(textOf(3.0), "3");
    EXPECT_EQ(textOf(-0.0), "-0");
    EXPECT_EQ(textOf(1e300), "1e+300");
}

TEST(NumberText, namesWhatIsNoNumberAsOtherProgramsDo) {
    EXPECT_EQ(textOf(std::numeric_limits<double>::quiet_NaN()), "NaN");
    EXPECT_EQ(textOf(std::numeric_limits<double>::infinity()), "Infinity");
    EXPECT_EQ(textOf(-std::numeric_limits<double>::infinity()), "-Infinity");
}

TEST(NumberText, readsBackToTheLastBit) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 200'000; ++round) {
        const auto number = std::bit_cast<double>(random());
        if (std::isnan(number)) {
            continue;
        }
        ASSERT_EQ(std::bit_cast<std::uint64_t>(numberIn(textOf(number))), std::bit_cast<std::uint64_t>(number));
    }
    EXPECT_TRUE(std::isnan(numberIn("NaN")));
}

TEST(NumberText, mayHaveASignAndBlanks) {
    EXPECT_EQ(numberIn(" +1.5 "), 1.5);
    EXPECT_EQ(numberIn("\t-2\r\n"), -2.0);
    EXPECT_EQ(numberIn(".5"), 0.5);
    EXPECT_EQ(numberIn("5."), 5.0);
    EXPECT_EQ(numberIn("1.0E-9"), 1.0e-9);
}

TEST(NumberText, readsNotANumberAndInfinityInEveryDialect) {
    for (const char* text : {"nan", "NaN", "NAN", "-nan"}) {
        EXPECT_TRUE(std::isnan(numberIn(text))) << text;
    }
    for (const char* text : {"inf", "Infinity", "+inf", "INF", "infinity"}) {
        EXPECT_EQ(numberIn(text), std::numeric_limits<double>::infinity()) << text;
    }
    EXPECT_EQ(numberIn("-inf"), -std::numeric_limits<double>::infinity());
}

TEST(NumberText, beyondTheRangeIsRounded) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(numberIn("1e999"), infinity);
    EXPECT_EQ(numberIn("-1e999"), -infinity);
    EXPECT_EQ(numberIn("12345e310"), infinity);
    EXPECT_EQ(numberIn("1e99999999999999999999"), infinity);
    EXPECT_EQ(numberIn(std::string(400, '9')), infinity);
    EXPECT_EQ(numberIn("1e-999"), 0.0);
    EXPECT_TRUE(std::signbit(numberIn("-1e-999")));
    EXPECT_EQ(numberIn("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(numberIn("0e999"), 0.0);
}

TEST(NumberText, leavesTheNumberAloneWhenItIsNone) {
    for (const char* text :
         {"", " ", "+", "-", "+-1", "--1", "-+1", "0x10", "1,5", "1 2", "e5", "1e", "nan(1)", "abc", "1f"}) {
        double number = 42.0;
        EXPECT_FALSE(readNumber(text, number)) << text;
        EXPECT_EQ(number, 42.0) << text;
    }
}

TEST(ValueTypeName, isWhatTheUserSees) {
    EXPECT_EQ(nameOf(ValueType::Number), "number");
    EXPECT_EQ(nameOf(ValueType::Histogram), "histogram");
    EXPECT_EQ(nameOf(ValueType::Any), "any");
}

}  // namespace
}  // namespace velmorak
