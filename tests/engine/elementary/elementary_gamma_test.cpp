#include <velmorak/ElementaryFunctions.h>

#include <gsl/gsl_sf_psi.h>
#include <gtest/gtest.h>
#include <boost/math/special_functions/gamma.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace velmorak::elementary {
namespace {

TEST(Digamma, agreesWithGsl) {
    std::mt19937_64 random(4711);
    for (int i = 0; i < 100'000; ++i) {
        const double x = i % 2 == 0 ? std::uniform_real_distribution<double>(-20.0, 40.0)(random)
                                    : std::exp(std::uniform_real_distribution<double>(-30.0, 60.0)(random));
        gsl_sf_result expected;
        gsl_sf_psi_e(x, &expected);
        ASSERT_NEAR(digamma(x), expected.val, 3.0 * expected.err + 4e-15 * std::max(1.0, std::fabs(expected.val))) << x;
    }
}

// The values were computed with mpmath at 40 digits.
TEST(Digamma, hasItsKnownValues) {
    EXPECT_NEAR(digamma(1.0), -0.57721566490153286061, 1e-15);
    EXPECT_NEAR(digamma(0.5), -1.9635100260214234794, 2e-15);
    EXPECT_NEAR(digamma(-0.5), 0.036489973978576520559, 2e-15);
    EXPECT_NEAR(digamma(-99.75), 1.4660785584358958087, 4e-15);
    EXPECT_NEAR(digamma(1e10), 23.025850929890456840, 2.4e-14);
    EXPECT_TRUE(std::isnan(digamma(0.0)));
    EXPECT_TRUE(std::isnan(digamma(-3.0)));
    EXPECT_TRUE(std::isnan(digamma(-std::numeric_limits<double>::infinity())));
    EXPECT_EQ(digamma(std::numeric_limits<double>::infinity()), std::numeric_limits<double>::infinity());
}

TEST(GammaQ, agreesWithBoostInLongDouble) {
    std::mt19937_64 random(4711);
    for (int i = 0; i < 20'000; ++i) {
        const double a = std::exp(std::uniform_real_distribution<double>(-2.0, 12.0)(random));
        const double x = i % 2 == 0 ? a * std::exp(std::uniform_real_distribution<double>(-3.0, 3.0)(random))
                                    : std::fabs(a + std::sqrt(a) * std::normal_distribution<double>(0.0, 4.0)(random));
        const long double expected = boost::math::gamma_q(static_cast<long double>(a), static_cast<long double>(x));
        if (expected > 1e-280L) {
            ASSERT_NEAR(static_cast<double>(gammaQ(a, x) / expected), 1.0, 4e-13) << a << ", " << x;
        }
    }
}

// The values were computed with mpmath at 40 digits.
TEST(GammaQ, hasTheStatedAccuracy) {
    constexpr struct {
        double a, x, expected;
    } rows[] = {{0.5, 0.3, 0.43857802608099986352},
                {0.5, 1.0, 0.15729920705028513066},
                {0.5, 8.0, 0.000063342483666239842508},
                {0.5, 500.0, 1.7958327848007261946e-219},
                {1.0, 1.5, 0.22313016014842982893},
                {2.5, 0.25, 0.99212329323262959221},
                {5.0, 350.0, 6.2801466992359498821e-144},
                {5.5, 6.0, 0.36364322051682681202},
                {11.5, 11.75, 0.43191134000533151206},
                {12.0, 12.0, 0.46159733306361820064},
                {12.5, 3.0, 0.99996573231382972376},
                {12.5, 30.0, 0.00010455486131526472677},
                {30.0, 70.0, 2.4328201698573226387e-8},
                {30.0, 75.0, 1.1612157500765536288e-9},
                {50.0, 51.0, 0.42560514048314035547},
                {99.5, 650.0, 7.588265134844104202e-161},
                {100.0, 40.0, 0.99999999999999879375},
                {100.0, 250.0, 1.1737017704487874221e-27},
                {300.0, 900.0, 4.1668251244249271699e-120},
                {500.0, 495.0, 0.5829461463551487032},
                {5000.0, 5150.0, 0.017638117447345399638},
                {6000.0, 6172.75, 0.013433842268980949321},
                {500000.0, 501000.0, 0.078718661386129633385},
                {5000000.0, 5000000.0, 0.49994052919606216232},
                {0.25, 0.125, 0.359842793916915889},
                {3.25, 1.0625, 0.93342401071480350675}};
    for (const auto& row : rows) {
        const double allowed = row.x < 2.0 * row.a ? 1e-14 : 2e-13;
        EXPECT_NEAR(gammaQ(row.a, row.x) / row.expected, 1.0, allowed) << row.a << ", " << row.x;
    }
}

TEST(GammaQ, hasNoStepWhereItsMethodsMeet) {
    for (const double a : {0.5, 1.0, 5.5, 11.5, 12.0, 30.0, 100.0, 5000.0}) {
        for (const double border : {1.1, a, 0.3 * a, 2.35 * a}) {
            const double below = gammaQ(a, border * (1.0 - 1e-15));
            const double above = gammaQ(a, border * (1.0 + 1e-15));
            EXPECT_NEAR(below, above, 4e-13 * above + 1e-15) << a << ", " << border;
        }
    }
}

TEST(GammaQ, reachesItsLimits) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(gammaQ(2.0, 0.0), 1.0);
    EXPECT_EQ(gammaQ(2.0, infinity), 0.0);
    EXPECT_EQ(gammaQ(2.0, 1e308), 0.0);
    EXPECT_EQ(gammaQ(0.5, 1e-320), 1.0);
    EXPECT_EQ(gammaQ(1e300, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(gammaQ(0.0, 1.0)));
    EXPECT_TRUE(std::isnan(gammaQ(infinity, 1.0)));
    EXPECT_TRUE(std::isnan(gammaQ(1.0, -1.0)));
    EXPECT_TRUE(std::isnan(gammaQ(1.0, std::numeric_limits<double>::quiet_NaN())));
}

}  // namespace
}  // namespace velmorak::elementary
