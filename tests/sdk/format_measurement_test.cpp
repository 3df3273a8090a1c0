#include <velmorak/FormatMeasurement.h>
#include <velmorak/Value.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace velmorak {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
const double nan = std::nan("");

struct Case {
    double value;
    double error;
    std::string text;
};

void expectTexts(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        EXPECT_EQ(formatMeasurement(each.value, each.error), each.text) << textOf(each.value) << ", " << each.error;
    }
}

TEST(FormatMeasurement, roundsTheErrorByTheRuleOfTheParticleDataGroup) {
    expectTexts({
        {0.827, 0.119, "0.83 ± 0.12"},
        {0.827, 0.367, "0.8 ± 0.4"},
        {91.21234, 0.01437, "91.212 ± 0.014"},
        {1.0, 0.100, "1.00 ± 0.10"},
        {1.0, 0.354, "1.00 ± 0.35"},
        {1.0, 0.3549, "1.00 ± 0.35"},
        {1.0, 0.355, "1.0 ± 0.4"},
        {1.0, 0.949, "1.0 ± 0.9"},
        {1.0, 0.9499, "1.0 ± 0.9"},
        {1.0, 0.950, "1.0 ± 1.0"},
        {1.23, 0.999, "1.2 ± 1.0"},
        {1.2345, 0.0967, "1.23 ± 0.10"},
    });
}

TEST(FormatMeasurement, roundsTheValueToTheLastDigitOfTheError) {
    expectTexts({
        {2.0, 0.12, "2.00 ± 0.12"},
        {9.9996, 0.0012, "9.9996 ± 0.0012"},
        {9.9996, 0.012, "10.000 ± 0.012"},
        {99.95, 4.0, "100 ± 4"},
        {1.25, 0.5, "1.3 ± 0.5"},
        {-2.675, 0.15, "-2.68 ± 0.15"},
        {12345.0, 234.0, "12350 ± 230"},
        {123456.0, 1234.0, "123500 ± 1200"},
        {1234567.8, 0.4, "1234567.8 ± 0.4"},
        {1e6, 3.0, "1000000.0 ± 3.0"},
        {1e6, 4.0, "1000000 ± 4"},
    });
}

TEST(FormatMeasurement, keepsTheSignOfTheValueAndDropsThatOfTheError) {
    expectTexts({
        {-11.54, 0.3, "-11.54 ± 0.30"},
        {-11.54, -0.3, "-11.54 ± 0.30"},
        {-0.001, 1.2, "0.0 ± 1.2"},
        {-0.0, 1.2, "0.0 ± 1.2"},
        {-0.06, 1.2, "-0.1 ± 1.2"},
    });
}

TEST(FormatMeasurement, writesAnErrorLargerThanTheValue) {
    expectTexts({
        {0.0, 0.25, "0.00 ± 0.25"},
        {0.0012, 123.0, "0 ± 120"},
        {3.0, 1.2e8, "(0.0 ± 1.2)e+08"},
        {4.0, 70.0, "0 ± 70"},
        {6.0, 70.0, "10 ± 70"},
        {1e-7, 0.5, "0.0 ± 0.5"},
    });
}

TEST(FormatMeasurement, factorsOutPowersOfTenOfLargeAndSmallNumbers) {
    expectTexts({
        {1234000.0, 12000.0, "(1.234 ± 0.012)e+06"},
        {-1234567.0, 12345.0, "(-1.235 ± 0.012)e+06"},
        {999999.0, 12.0, "999999 ± 12"},
        {999999.0, 123.0, "(1.00000 ± 0.00012)e+06"},
        {1.23e-5, 1.2e-6, "(1.23 ± 0.12)e-05"},
        {0.000123, 0.000012, "0.000123 ± 0.000012"},
        {6.62607015e-34, 3.3e-41, "(6.62607015 ± 0.00000033)e-34"},
        {1.5e300, 2e298, "(1.500 ± 0.020)e+300"},
        {1.7976931348623157e308, 1e307, "(1.80 ± 0.10)e+308"},
        {5e-324, 5e-324, "(5 ± 5)e-324"},
    });
}

TEST(FormatMeasurement, keepsTheDigitsOfAValueWhoseErrorIsBelowItsPrecision) {
    expectTexts({
        {1e300, 1e-10, "1e+300 ± 1.0e-10"},
        {0.1, 4e-20, "0.1 ± 4e-20"},
        {123456789.0, 1e-12, "123456789 ± 1.0e-12"},
    });
}

TEST(FormatMeasurement, showsNoErrorOfZero) {
    expectTexts({{5.0, 0.0, "5"}, {0.1, 0.0, "0.1"}, {1e6, -0.0, "1000000"}, {0.0, 0.0, "0"}});
}

TEST(FormatMeasurement, saysNaNAndInfinity) {
    expectTexts({
        {5.25, nan, "5.25 ± NaN"},
        {5.25, inf, "5.25 ± Infinity"},
        {5.25, -inf, "5.25 ± Infinity"},
        {nan, 0.1, "NaN"},
        {nan, nan, "NaN"},
        {-inf, 0.1, "-Infinity"},
        {1e6, nan, "1000000 ± NaN"},
    });
}

TEST(FormatMeasurement, writesAsymmetricErrorsToTheLastDigitOfTheSmallerOne) {
    EXPECT_EQ(formatMeasurement(1.2345, 0.12, 0.10), "1.23 +0.12 -0.10");
    EXPECT_EQ(formatMeasurement(1.2345, 0.12, 0.9), "1.23 +0.12 -0.90");
    EXPECT_EQ(formatMeasurement(1.2345, 0.96, 2.34), "1.2 +1.0 -2.3");
    EXPECT_EQ(formatMeasurement(1.2345, 2.34, 0.96), "1.2 +2.3 -1.0");
    EXPECT_EQ(formatMeasurement(0.5, 0.25, 0.25), "0.50 ± 0.25");
    EXPECT_EQ(formatMeasurement(0.98, 0.02, 0.12), "0.980 +0.020 -0.120");
    EXPECT_EQ(formatMeasurement(1.0, 0.0, 0.12), "1.00 +0.00 -0.12");
    EXPECT_EQ(formatMeasurement(1.0, 0.0, 0.0), "1");
    EXPECT_EQ(formatMeasurement(2e7, 1.2e6, 1.3e6), "(2.00 +0.12 -0.13)e+07");
    EXPECT_EQ(formatMeasurement(5.25, inf, 0.1), "5.25 +Infinity -0.1");
    EXPECT_EQ(formatMeasurement(5.25, nan, 0.1), "5.25 +NaN -0.1");
    EXPECT_EQ(formatMeasurement(5.25, nan, nan), "5.25 ± NaN");
}

TEST(FormatNumber, writesWholeNumbersWithoutAnExponent) {
    EXPECT_EQ(formatNumber(1e6), "1000000");
    EXPECT_EQ(formatNumber(-1e5), "-100000");
    EXPECT_EQ(formatNumber(999999999999999.0), "999999999999999");
    EXPECT_EQ(formatNumber(1e15), "1e+15");
    EXPECT_EQ(formatNumber(0.0), "0");
    EXPECT_EQ(formatNumber(-0.0), "0");
}

TEST(FormatNumber, keepsAllDigitsOfOtherNumbers) {
    for (const double value : {0.1, 1.0 / 3.0, 1e20, 1.5e-7, 123456.789, 5e-324, inf, -inf}) {
        EXPECT_EQ(formatNumber(value), textOf(value));
    }
    EXPECT_EQ(formatNumber(nan), "NaN");
}

}  // namespace
}  // namespace velmorak
