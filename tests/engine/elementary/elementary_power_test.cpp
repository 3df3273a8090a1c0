#include <velmorak/ElementaryFunctions.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace velmorak::elementary {
namespace {

TEST(PowerOfTen, isTheNearestDouble) {
    for (int exponent = -330; exponent <= 308; ++exponent) {
        EXPECT_EQ(powerOfTen(exponent), std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr)) << exponent;
    }
    EXPECT_EQ(powerOfTen(309), std::numeric_limits<double>::infinity());
    EXPECT_EQ(powerOfTen(std::numeric_limits<int>::min()), 0.0);
}

// What people check by hand.
TEST(ElementaryFunctions, areExactWhereOneExpectsIt) {
    for (int n = -1074; n < 1024; ++n) {
        const double power = std::ldexp(1.0, n);
        EXPECT_EQ(exp2(n), power);
        EXPECT_EQ(log2(power), n);
        EXPECT_EQ(pow(2.0, n), power);
    }
    double factorial = 1.0;
    for (int n = 0; n <= 22; ++n) {
        EXPECT_EQ(log10(powerOfTen(n)), n);
        EXPECT_EQ(pow(10.0, n), powerOfTen(n));
        EXPECT_EQ(cbrt(std::ldexp(n * n * n, 3 * n)), std::ldexp(n, n));
        EXPECT_EQ(tgamma(n + 1.0), factorial);
        factorial *= n + 1.0;
    }
    EXPECT_EQ(hypot(3.0, 4.0), 5.0);
    EXPECT_EQ(exp(0.0), 1.0);
    EXPECT_EQ(log(1.0), 0.0);
    EXPECT_EQ(cos(0.0), 1.0);
    EXPECT_EQ(pow(3.0, 3.0), 27.0);
}

}  // namespace
}  // namespace velmorak::elementary
