#include "NamedFunctions.h"

#include "elementary/simd/Fma.h"
#include "elementary/simd/Hypot.h"

#include <gtest/gtest.h>
#include <quadmath.h>

#include <vector>

namespace velmorak::elementary {
namespace {

/// Sides of which the squares nearly overflow or underflow, in part or whole, or that are nearly equal.
std::vector<double> sides(std::mt19937_64& random, std::size_t count, const std::vector<double>& others) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        constexpr int exponents[] = {-1074, -600, -538, -451, -450, -449, 0, 499, 500, 501, 600, 1023};
        const double mantissa = std::uniform_real_distribution<double>(0.5, 1.0)(random);
        const double near = others.empty() ? 1.0 : others[i];
        values[i] = i % 3 == 0 ? near * (1.0 + 0x1p-10 * mantissa)
                               : std::ldexp(mantissa, exponents[random() % std::size(exponents)]);
    }
    return values;
}

TEST(Hypot, isAccurateAndHasTheSameBitsInAllForms) {
    std::mt19937_64 random(4711);
    constexpr std::size_t count = 200'000;
    const std::vector<double> x = sides(random, count, {});
    const std::vector<double> y = sides(random, count, x);
    std::vector<double> expected(count);
    for (std::size_t i = 0; i < count; ++i) {
        expected[i] = hypot(x[i], y[i]);
        const __float128 truth = hypotq(x[i], y[i]);
        if (static_cast<double>(truth) < INFINITY) {
            const int exponent = std::max(std::ilogb(static_cast<double>(truth)), -1022);
            ASSERT_LE(fabsq((expected[i] - truth) / ldexpq(1, exponent - 52)), 0.95)
                << std::hexfloat << x[i] << ", " << y[i];
        } else {
            ASSERT_EQ(expected[i], INFINITY) << std::hexfloat << x[i] << ", " << y[i];
        }
        const Usual usual = usualHypotenuse<unfused>(x[i], y[i]);
        ASSERT_TRUE(usual.unusual != 0 || usual.value == expected[i]) << std::hexfloat << x[i] << ", " << y[i];
    }
    for (const Loops* const loops : runnableLoops()) {
        std::vector<double> out(count);
        loops->hypot(x.data(), y.data(), count, out.data());
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(out[i], expected[i]) << std::hexfloat << x[i] << ", " << y[i];
        }
    }
}

TEST(Hypot, isExactForPythagoreanTriples) {
    for (double m = 2.0; m < 60.0; ++m) {
        for (double n = 1.0; n < m; ++n) {
            EXPECT_EQ(hypot(m * m - n * n, 2.0 * m * n), m * m + n * n);
        }
    }
}

}  // namespace
}  // namespace velmorak::elementary
