#include "elementary/Loops.h"
#include "elementary/simd/Pow.h"

#include <velmorak/ElementaryFunctions.h>

#include <gtest/gtest.h>
#include <quadmath.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace velmorak::elementary {
namespace {

using Quad = __float128;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct Row {
    double x, y, expected;
};

/// pow of every form: of single numbers, and in the middle of an array for every kind of vector.
std::vector<double> powersOf(double x, double y) {
    std::vector<double> powers{pow(x, y)};
    for (const Loops* const loops : runnableLoops()) {
        std::vector<double> xs(37, 1.5);
        std::vector<double> ys(37, 2.0);
        std::vector<double> out(37);
        xs[20] = x;
        ys[20] = y;
        loops->pow(xs.data(), ys.data(), xs.size(), out.data());
        EXPECT_EQ(out[19], 2.25);
        EXPECT_EQ(out[21], 2.25);
        powers.push_back(out[20]);
    }
    return powers;
}

void expectPower(const Row& row) {
    for (const double power : powersOf(row.x, row.y)) {
        if (std::isnan(row.expected)) {
            EXPECT_TRUE(std::isnan(power)) << row.x << ", " << row.y << ": " << power;
        } else {
            EXPECT_EQ(power, row.expected) << row.x << ", " << row.y;
            EXPECT_EQ(std::signbit(power), std::signbit(row.expected)) << row.x << ", " << row.y;
        }
    }
}

// ISO C99, F.9.4.4, sentence by sentence.
TEST(Pow, hasTheSpecialValuesOfTheStandard) {
    constexpr Row rows[] = {
        {0.0, -3.0, infinity},
        {-0.0, -3.0, -infinity},
        {0.0, -2.0, infinity},
        {-0.0, -2.0, infinity},
        {0.0, -2.5, infinity},
        {-0.0, -2.5, infinity},
        {0.0, -infinity, infinity},
        {-0.0, -infinity, infinity},
        {0.0, 3.0, 0.0},
        {-0.0, 3.0, -0.0},
        {0.0, 2.0, 0.0},
        {-0.0, 2.0, 0.0},
        {0.0, 0.5, 0.0},
        {-0.0, 0.5, 0.0},
        {-1.0, infinity, 1.0},
        {-1.0, -infinity, 1.0},
        {1.0, nan, 1.0},
        {1.0, infinity, 1.0},
        {1.0, -infinity, 1.0},
        {1.0, 1e300, 1.0},
        {nan, 0.0, 1.0},
        {nan, -0.0, 1.0},
        {infinity, 0.0, 1.0},
        {0.0, -0.0, 1.0},
        {-2.0, 0.5, nan},
        {-2.0, -1e-300, nan},
        {0.5, -infinity, infinity},
        {-0.5, -infinity, infinity},
        {2.0, -infinity, 0.0},
        {-2.0, -infinity, 0.0},
        {0.5, infinity, 0.0},
        {-0.5, infinity, 0.0},
        {2.0, infinity, infinity},
        {-2.0, infinity, infinity},
        {-infinity, -3.0, -0.0},
        {-infinity, -2.0, 0.0},
        {-infinity, -0.5, 0.0},
        {-infinity, 3.0, -infinity},
        {-infinity, 2.0, infinity},
        {-infinity, 0.5, infinity},
        {infinity, -0.5, 0.0},
        {infinity, 0.5, infinity},
        {nan, 1.0, nan},
        {2.0, nan, nan},
        {-infinity, infinity, infinity},
        {-infinity, -infinity, 0.0},
        {nan, infinity, nan},
        {0.0, nan, nan},
    };
    for (const Row& row : rows) {
        expectPower(row);
    }
}

TEST(Pow, tellsOddFromEvenExponentsUpToTheLargest) {
    const double above1 = -(1.0 + 0x1p-52);
    constexpr Row rows[] = {
        {-1.0, 0x1p51 - 1.0, -1.0},
        {-1.0, 0x1p51 - 0.5, nan},
        {-1.0, 0x1p51, 1.0},
        {-1.0, 0x1p51 + 1.0, -1.0},
        {-1.0, -(0x1p51 + 1.0), -1.0},
        {-1.0, 0x1p51 + 0.5, nan},
        {-1.0, 0x1p52 + 1.0, -1.0},
        {-1.0, -(0x1p52 + 1.0), -1.0},
        {-1.0, 0x1p53 - 1.0, -1.0},
        {-1.0, 0x1p53, 1.0},
        {-1.0, 1e300, 1.0},
        {-2.0, 1023.0, -0x1p1023},
        {-2.0, 1025.0, -infinity},
        {-2.0, -1074.0, 0x1p-1074},
        {-2.0, -1073.0, -0x1p-1073},
        {-2.0, -1077.0, -0.0},
        {-0x1p-1074, -1.0, -infinity},
        {-0x1p-1074, 1.0, -0x1p-1074},
    };
    for (const Row& row : rows) {
        expectPower(row);
    }
    EXPECT_LT(pow(above1, 0x1p51 + 1.0), 0.0);
    EXPECT_GT(pow(above1, 0x1p51), 0.0);
}

TEST(Pow, yieldsExactPowersExactly) {
    for (double base = 2.0; base < 100.0; ++base) {
        double power = 1.0;
        for (double exponent = 0.0; power < 0x1p53; ++exponent) {
            expectPower({base, exponent, power});
            expectPower({-base, exponent, std::fmod(exponent, 2.0) == 0.0 ? power : -power});
            power *= base;
        }
    }
    for (int exponent = -1074; exponent < 1024; ++exponent) {
        expectPower({2.0, static_cast<double>(exponent), std::ldexp(1.0, exponent)});
        expectPower({0.25, -0.5 * exponent, std::ldexp(1.0, exponent)});
    }
}

TEST(Pow, reachesTheLimitsOfTheRange) {
    constexpr double largest = std::numeric_limits<double>::max();
    constexpr Row rows[] = {
        {2.0, 1024.0, infinity},     {largest, 1.0, largest},        {largest, 1.0 + 0x1p-52, infinity},
        {0x1p-1074, 1.0, 0x1p-1074}, {0x1p-1074, -1.0, infinity},    {0x1p-1022, 1.0, 0x1p-1022},
        {2.0, -1075.5, 0.0},         {2.0, -1074.5, 0x1p-1074},      {1.0 + 0x1p-52, 1e300, infinity},
        {1.0 - 0x1p-53, 1e300, 0.0}, {1.0 + 0x1p-52, -largest, 0.0}, {largest, largest, infinity},
        {largest, -largest, 0.0},    {0x1p-1074, 0x1p-1074, 1.0},    {largest, 0x1p-1074, 1.0},
        {1e10, 1e-300, 1.0},         {1.0 + 0x1p-52, 1e-300, 1.0},   {largest, 0.0, 1.0},
    };
    for (const Row& row : rows) {
        expectPower(row);
    }
}

/// Distance from the true value in units in the last place of its size, at least those of the smallest numbers.
double ulpsFrom(Quad truth, double value) {
    const int exponent = std::max(std::ilogb(static_cast<double>(truth)), -1022);
    return std::fabs(static_cast<double>((value - truth) / ldexpq(1, exponent - 52)));
}

/// A base and an exponent where the logarithm needs all of its bits: the power is anywhere in the range of numbers.
std::pair<double, double> hardArguments(std::mt19937_64& random) {
    const auto uniform = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    double x = 1.0;
    switch (random() % 4) {
        case 0:  // Near 1, where the logarithm cancels.
            x = 1.0 + std::ldexp(uniform(-1.0, 1.0), -1 - static_cast<int>(random() % 50));
            break;
        case 1:  // Of every size, subnormal ones included.
            x = std::ldexp(uniform(0.5, 1.0), static_cast<int>(random() % 2098) - 1073);
            break;
        case 2:  // Where the intervals of the table meet.
            x = __builtin_bit_cast(double, minBits + (random() % 64 << 46U) + random() % 5 - 2);
            break;
        default:
            x = std::exp(uniform(-5.0, 5.0));
    }
    const double logarithm = static_cast<double>(logq(x));
    const double whole = random() % 4 == 0 ? uniform(-745.0, -707.0) : uniform(-745.0, 709.7);
    return {x, logarithm == 0.0 ? 1.0 : whole / logarithm};
}

TEST(Pow, isAccurateWhereItIsHard) {
    std::mt19937_64 random(4711);
    double most = 0.0;
    double maxOfNormal = 0.0;
    for (int i = 0; i < 200'000; ++i) {
        const auto [x, y] = hardArguments(random);
        const Quad truth = powq(x, y);
        const double ulps = ulpsFrom(truth, pow(x, y));
        ASSERT_LE(ulps, 0.8) << std::hexfloat << x << ", " << y;
        most = std::max(most, ulps);
        maxOfNormal = truth >= 0x1p-1022 ? std::max(maxOfNormal, ulps) : maxOfNormal;
    }
    EXPECT_LE(maxOfNormal, 0.6);
    std::cout << "pow: at most " << most << " ulp, " << maxOfNormal << " where the power is normal\n";
}

TEST(Pow, hasTheSameBitsInAllFormsWhereTheyChangeTheirMethod) {
    std::mt19937_64 random(4711);
    constexpr std::size_t count = 20'000;
    std::vector<double> x(count);
    std::vector<double> y(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto [base, exponent] = hardArguments(random);
        const double logarithm = static_cast<double>(logq(base));
        x[i] = i % 5 == 0 ? -base : base;
        y[i] = i % 5 == 0 ? std::nearbyint(exponent)
               : i % 5 == 1
                   ? std::copysign(700.0, exponent) / logarithm * (1.0 + static_cast<double>(i % 9 - 4) * 0x1p-52)
                   : exponent;
    }
    for (const Loops* const loops : runnableLoops()) {
        std::vector<double> out(count);
        loops->pow(x.data(), y.data(), count, out.data());
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(out[i] == pow(x[i], y[i]) || std::isnan(out[i])) << std::hexfloat << x[i] << ", " << y[i];
            ASSERT_EQ(std::isnan(out[i]), std::isnan(pow(x[i], y[i]))) << std::hexfloat << x[i] << ", " << y[i];
            const Usual unfusedPower = usualPower<unfused>(x[i], y[i]);
            ASSERT_TRUE(unfusedPower.unusual != 0 || unfusedPower.value == out[i])
                << std::hexfloat << x[i] << ", " << y[i];
        }
    }
}

TEST(PowerTables, holdLogarithmsAndRoots) {
    for (int i = 0; i < 64; ++i) {
        const Quad logarithm = -logq(inverses[i]);
        EXPECT_LE(fabsq(logarithm - logarithmHeads[i]), 0x1p-43) << i;
        EXPECT_LE(fabsq(logarithm - logarithmHeads[i] - static_cast<Quad>(logarithmRests[i])), 0x1p-96) << i;
        EXPECT_EQ(std::fmod(logarithmHeads[i], 0x1p-42), 0.0) << i;
        // Both ends of the interval are exact when reduced: multiples of 2^-59 below 2^-6.
        for (const std::uint64_t offset : {std::uint64_t{0}, std::uint64_t{0x00003fffffffffff}}) {
            const double m = __builtin_bit_cast(double, minBits + (static_cast<std::uint64_t>(i) << 46U) + offset);
            const double r = std::fma(m, inverses[i], -1.0);
            EXPECT_EQ(r, static_cast<Quad>(m) * inverses[i] - 1) << i;
            EXPECT_EQ(unfused(m, inverses[i], -1.0), r) << i;
            EXPECT_LE(std::fabs(r), 0x1p-6) << i;
        }
    }
    for (std::uint64_t j = 0; j < 32; ++j) {
        const Quad root = exp2q(static_cast<Quad>(j) / 32);
        const double head = __builtin_bit_cast(double, rootBits[j] + (j << 47U));
        EXPECT_EQ(head, static_cast<double>(root)) << j;
        EXPECT_LE(fabsq(root / head - 1 - rootRests[j]), 0x1p-105) << j;
    }
}

}  // namespace
}  // namespace velmorak::elementary
