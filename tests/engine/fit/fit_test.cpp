#include <velmorak/Fit.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include <velmorak/Failure.h>
#include <velmorak/FunctionValues.h>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Bins of equal width with what a function says at their centres.
template <typename Function>
FitData bins(std::size_t count, double low, double high, const Function& function) {
    FitData data;
    const double width = (high - low) / static_cast<double>(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double begin = low + width * static_cast<double>(i);
        const double y = function(begin + 0.5 * width);
        data.entries.push_back({begin, begin + width, y, std::sqrt(std::fabs(y))});
    }
    return data;
}

FitData points(const std::vector<std::array<double, 3>>& all) {
    FitData data;
    for (const auto& [x, y, error] : all) {
        data.entries.push_back({x, x, y, error});
    }
    return data;
}

/// A peak of counts on a falling line, with the spread of counts.
FitData countedPeak() {
    std::mt19937 engine(17);
    return bins(60, 60.0, 120.0, [&](double x) {
        const double expected = 200.0 * std::exp(-0.5 * std::pow((x - 91.0) / 3.0, 2)) + 60.0 - 0.4 * x;
        return static_cast<double>(std::poisson_distribution<int>(expected)(engine));
    });
}

FitResult fitted(const std::string& model, const FitData& data, const std::string& parameters = "",
                 FitOptions options = {}) {
    options.parameters = readFitParameters(parameters);
    return fit(FitModel(model), data, options);
}

template <typename Action>
std::string failureOf(const Action& action) {
    try {
        action();
        return "nothing failed";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

std::string failureOfFit(const std::string& model, const FitData& data, const std::string& parameters = "",
                         FitOptions options = {}) {
    return failureOf([&] { fitted(model, data, parameters, options); });
}

/// The normal equations of a straight line, in closed form.
TEST(Fit, ofALineEqualsTheClosedForm) {
    const FitData data = points({{{1.0, 1.1, 0.1}, {2.0, 1.9, 0.2}, {4.0, 4.2, 0.1}, {7.0, 6.7, 0.3}}});
    long double s = 0, sx = 0, sy = 0, sxx = 0, sxy = 0, syy = 0;
    for (const auto& entry : data.entries) {
        const long double w = 1.0L / (static_cast<long double>(entry.error) * entry.error);
        s += w;
        sx += w * entry.low;
        sy += w * entry.y;
        sxx += w * entry.low * entry.low;
        sxy += w * entry.low * entry.y;
        syy += w * entry.y * entry.y;
    }
    const long double determinant = s * sxx - sx * sx;
    const long double p0 = (sxx * sy - sx * sxy) / determinant;
    const long double p1 = (s * sxy - sx * sy) / determinant;
    const FitResult result = fitted("pol1", data);
    EXPECT_NEAR(result.values[0], static_cast<double>(p0), 1e-13);
    EXPECT_NEAR(result.values[1], static_cast<double>(p1), 1e-13);
    EXPECT_NEAR(result.errors[0], static_cast<double>(sqrtl(sxx / determinant)), 1e-9);
    EXPECT_NEAR(result.errors[1], static_cast<double>(sqrtl(s / determinant)), 1e-9);
    EXPECT_NEAR(result.covariance[0][1], static_cast<double>(-sx / determinant), 1e-9);
    EXPECT_EQ(result.covariance[0][1], result.covariance[1][0]);
    EXPECT_NEAR(result.chi2, static_cast<double>(syy - p0 * sy - p1 * sxy), 1e-11);
    EXPECT_EQ(result.ndf, 2.0);
    EXPECT_NEAR(result.pValue, std::exp(-0.5 * result.chi2), 1e-14);
    EXPECT_EQ(result.status, "converged");
}

/// For a constant the likelihood's maximum is the mean of the counts, with error root(mean / bins).
TEST(Fit, byLikelihoodOfAConstantIsTheMean) {
    FitData data = bins(4, 0.0, 4.0, [](double x) { return std::floor(x) + (x > 3 ? 2.0 : 0.0); });
    FitOptions options;
    options.method = FitOptions::Method::Likelihood;
    const FitResult result = fitted("pol0", data, "", options);
    EXPECT_NEAR(result.values[0], 2.0, 1e-12);
    EXPECT_NEAR(result.errors[0], std::sqrt(2.0 / 4.0), 1e-4);
    EXPECT_NEAR(result.chi2, 2.0 * (std::log(0.5) + 2.0 * std::log(1.0) + 5.0 * std::log(2.5)), 1e-12);
}

TEST(Fit, findsAPeakOnALineWithoutStartValues) {
    for (const auto method : {FitOptions::Method::ChiSquare, FitOptions::Method::Likelihood}) {
        FitOptions options;
        options.method = method;
        const FitResult result = fitted("gauss + pol1", countedPeak(), "", options);
        EXPECT_NEAR(result.values[1], 91.0, 4 * result.errors[1]);
        EXPECT_NEAR(result.values[2], 3.0, 4 * result.errors[2]);
        EXPECT_LT(result.errors[1], 0.3);
        EXPECT_GT(result.pValue, 1e-4);
    }
}

TEST(Fit, findsEveryShapeWithoutStartValues) {
    const auto peak = [](double x) { return 100.0 * std::exp(-0.5 * std::pow((x - 33.0) / 1.5, 2)); };
    const auto second = [](double x) { return 60.0 * std::exp(-0.5 * std::pow((x - 70.0) / 6.0, 2)); };
    const FitResult two =
        fitted("gauss+gauss+pol0", bins(200, 0, 100, [&](double x) { return peak(x) + second(x) + 9.0; }));
    EXPECT_NEAR(std::min(two.values[1], two.values[4]), 33.0, 1e-6);
    EXPECT_NEAR(std::max(two.values[1], two.values[4]), 70.0, 1e-6);
    const FitResult resonance =
        fitted("breitwigner + exponential", bins(100, 60, 120, [](double x) {
                   return 500.0 / (1.0 + std::pow((x - 91.2) / 1.25, 2)) + 400.0 * std::exp(-0.03 * x);
               }));
    EXPECT_NEAR(resonance.values[1], 91.2, 1e-6);
    EXPECT_NEAR(resonance.values[2], 2.5, 1e-6);
    EXPECT_NEAR(resonance.values[4], -0.03, 1e-6);
    const FitResult decay =
        fitted("n*exp(-x/tau)+b", bins(50, 0, 10, [](double x) { return 900 * std::exp(-x / 2.2) + 12; }));
    EXPECT_NEAR(decay.values[1], 2.2, 1e-6);
    const FitModel crystal("crystalball");
    const FitResult tail = fitted("crystalball", bins(100, 80, 100, [&](double x) {
                                      return FunctionValues(crystal.function({1000, 91, 1.5, 1.1, 2.5}))(x);
                                  }));
    EXPECT_NEAR(tail.values[3], 1.1, 1e-5);
    EXPECT_NEAR(tail.values[4], 2.5, 1e-4);
}

TEST(Fit, comparesTheCentreTheMeanOrTheIntegralOfABin) {
    FitData data;
    for (const double edge : {0.0, 1.0, 2.0, 4.0, 7.0}) {
        data.entries.push_back({edge,
                                edge == 0   ? 1.0
                                : edge == 1 ? 2.0
                                : edge == 2 ? 4.0
                                : edge == 4 ? 7.0
                                            : 9.0,
                                0, 0});
    }
    for (auto& entry : data.entries) {
        entry.y = (std::pow(entry.high, 3) - std::pow(entry.low, 3)) / 3.0;
        entry.error = 0.1;
    }
    FitOptions options;
    options.compare = FitOptions::Compare::Integral;
    EXPECT_NEAR(fitted("a*x^2", data, "", options).values[0], 1.0, 1e-14);
    for (auto& entry : data.entries) {
        entry.y /= entry.high - entry.low;
    }
    options.compare = FitOptions::Compare::Mean;
    EXPECT_NEAR(fitted("a*x^2", data, "", options).values[0], 1.0, 1e-14);
    EXPECT_LT(fitted("a*x^2 + b", data).values[1], 1.0);
    options.compare = FitOptions::Compare::Integral;
    EXPECT_THAT(failureOfFit("a", points({{{1, 2, 3}, {2, 2, 3}}}), "", options),
                HasSubstr("only bins have an integral"));
}

TEST(Fit, leavesOutWhatCannotBeUsedAndSaysSo) {
    FitData data =
        points({{{0, 1, 1}, {1, nan, 1}, {2, 3, 0}, {3, 4, 1}, {4, 5, nan}, {5, HUGE_VAL, 1}, {6, 7, 1}, {9, 0, 1}}});
    FitOptions options;
    options.high = 8.0;
    const FitResult result = fitted("pol1", data, "", options);
    EXPECT_NEAR(result.values[1], 1.0, 1e-14);
    EXPECT_EQ(result.entriesUsed, 3U);
    EXPECT_THAT(result.warnings, ElementsAre("3 entries that hold NaN or Infinity are left out",
                                             "1 entry without an error, such as empty bins, is left out"));
}

TEST(Fit, keepsFixedParametersAndLimits) {
    const FitResult fixed = fitted("gauss + pol1", countedPeak(), "sigma=2.5 fixed, mean=92 [91.5,95]");
    EXPECT_EQ(fixed.values[2], 2.5);
    EXPECT_EQ(fixed.errors[2], 0.0);
    EXPECT_EQ(fixed.values[1], 91.5);
    EXPECT_EQ(fixed.errors[1], 0.0);
    EXPECT_EQ(fixed.status, "converged; mean is at its limit 91.5");
    EXPECT_EQ(fixed.ndf, 56.0);
    EXPECT_GT(fixed.errors[0], 0.0);
    const FitResult wide = fitted("gauss + pol1", countedPeak(), "mean=80 [80,100]");
    EXPECT_NEAR(wide.values[1], fitted("gauss + pol1", countedPeak()).values[1], 1e-7);
}

TEST(Fit, ofNothingButFixedParametersGivesChiSquare) {
    const FitResult result = fitted("pol1", points({{{0, 1, 1}, {1, 3, 1}}}), "p0=0 fixed, p1=1 fixed");
    EXPECT_EQ(result.chi2, 5.0);
    EXPECT_EQ(result.ndf, 2.0);
    EXPECT_THAT(result.status, HasSubstr("every parameter is fixed"));
}

TEST(Fit, withoutDegreesOfFreedomHasNoProbability) {
    const FitResult result = fitted("pol1", points({{{0, 1, 1}, {1, 3, 1}}}));
    EXPECT_NEAR(result.values[1], 2.0, 1e-14);
    EXPECT_TRUE(std::isnan(result.pValue));
}

TEST(Fit, failsWithTheReason) {
    const FitData line = points({{{0, 1, 1}, {1, 3, 1}, {2, 5, 1}, {3, 6.5, 1}}});
    EXPECT_THAT(failureOfFit("pol5", line),
                HasSubstr("4 entries are too few to fit 6 parameters (p0, p1, p2, p3, p4, p5)"));
    EXPECT_THAT(failureOfFit("(a+b)*x", line), HasSubstr("cannot distinguish the parameters \"a\", \"b\""));
    EXPECT_THAT(failureOfFit("a*x + 0*b", line), HasSubstr("does not depend on \"b\""));
    EXPECT_THAT(failureOfFit("a*x", line, "aa=1"), HasSubstr("no parameter \"aa\"; did you mean \"a\"?"));
    EXPECT_THAT(failureOfFit("gauss", countedPeak(), "meen=1"), HasSubstr("did you mean \"mean\"?"));
    EXPECT_THAT(failureOfFit("log(a)*x", line, "a=-1"),
                HasSubstr("no usable value at x = 0 with the start values a=-1"));
    FitOptions range;
    range.low = 10.0;
    range.high = 20.0;
    EXPECT_THAT(failureOfFit("pol1", line, "", range), HasSubstr("no entry to fit between 10 and 20"));
    // The best value lies at infinity.
    const FitData steep = points({{{1, 10, 1}, {2, 20, 1}, {3, 30, 1}}});
    EXPECT_THAT(failureOfFit("x*atan(a)", steep), HasSubstr("do not determine \"a\", last at a="));
    // Between two minima.
    const FitData flat = points({{{1, 4, 1}, {2, 4, 1}, {3, 4, 1}}});
    EXPECT_THAT(failureOfFit("a^2", flat, "a=0"), HasSubstr("does not depend on \"a\""));
    EXPECT_THAT(failureOfFit("-1/(1+a^2)", flat, "a=1e-7"), HasSubstr("do not determine \"a\""));
    const FitData saddle = points({{{-1, 10, 1}, {1, 10, 1}}});
    EXPECT_THAT(failureOfFit("a*x + 5*a^2", saddle, "a=0"),
                HasSubstr("finds no minimum along \"a\", last at a=0 (the second derivatives are not positive)"));
}

TEST(Fit, byLikelihoodNeedsCounts) {
    FitOptions options;
    options.method = FitOptions::Method::Likelihood;
    FitData data = countedPeak();
    data.entries[5].y = -1.0;
    EXPECT_THAT(failureOfFit("gauss + pol1", data, "", options), HasSubstr("the bin at 65.5 holds -1"));
    EXPECT_THAT(failureOfFit("pol0", bins(5, 0, 1, [](double) { return 0.0; }), "", options),
                HasSubstr("all bins are empty"));
}

/// Weights of 3 are a third of the counts each.
TEST(Fit, byLikelihoodScalesWeightedBins) {
    FitOptions options;
    options.method = FitOptions::Method::Likelihood;
    const FitResult plain = fitted("gauss + pol1", countedPeak(), "", options);
    FitData weighted = countedPeak();
    for (auto& entry : weighted.entries) {
        entry.y *= 3.0;
        entry.error *= 3.0;
    }
    const FitResult scaled = fitted("gauss + pol1", weighted, "", options);
    for (const std::size_t i : {0U, 3U, 4U}) {
        EXPECT_NEAR(scaled.values[i], 3.0 * plain.values[i], 1e-7 * scaled.errors[i]);
        EXPECT_NEAR(scaled.errors[i], 3.0 * plain.errors[i], 1e-4 * scaled.errors[i]);
    }
    EXPECT_NEAR(scaled.values[1], plain.values[1], 1e-7 * plain.errors[1]);
    EXPECT_NEAR(scaled.chi2, plain.chi2, 1e-9 * plain.chi2);
}

TEST(Fit, holdsAtHugeAndSmallScales) {
    const FitResult plain = fitted("gauss + pol1", countedPeak());
    FitData scaled = countedPeak();
    for (auto& entry : scaled.entries) {
        entry.low *= 1e9;
        entry.high *= 1e9;
        entry.y *= 1e-12;
        entry.error *= 1e-12;
    }
    const FitResult result = fitted("gauss + pol1", scaled);
    const std::vector<double> units{1e-12, 1e9, 1e9, 1e-12, 1e-21};
    for (std::size_t i = 0; i < units.size(); ++i) {
        EXPECT_NEAR(result.values[i] / units[i], plain.values[i], 1e-7 * plain.errors[i]);
        EXPECT_NEAR(result.errors[i] / units[i], plain.errors[i], 1e-4 * plain.errors[i]);
    }
}

TEST(Fit, ofAPolynomialFarFromZeroIsExact) {
    const FitData data =
        bins(100, 80, 100, [](double x) { return 1e4 + std::pow(x - 90.0, 4) - 30 * std::pow(x - 90, 2); });
    const FitResult result = fitted("pol4", data);
    EXPECT_NEAR(result.values[4], 1.0, 1e-4 * result.errors[4]);
    EXPECT_NEAR(result.chi2, 0.0, 1e-6);
}

TEST(Fit, givesTheSameBitsAgain) {
    const FitResult one = fitted("gauss + pol1", countedPeak());
    const FitResult other = fitted("gauss + pol1", countedPeak());
    EXPECT_EQ(one.values, other.values);
    EXPECT_EQ(one.covariance, other.covariance);
}

TEST(Fit, ofManyEntriesGoesBlockByBlock) {
    std::mt19937 engine(5);
    const FitResult result = fitted("gauss + pol1", bins(10007, 0, 10, [&](double x) {
                                        const double mean =
                                            500 * std::exp(-0.5 * std::pow((x - 4) / 0.7, 2)) + 90 + 3 * x;
                                        return static_cast<double>(std::poisson_distribution<int>(mean)(engine));
                                    }));
    EXPECT_NEAR(result.values[1], 4.0, 4 * result.errors[1]);
    EXPECT_EQ(result.ndf, 10002.0);
}

TEST(Fit, endsWhenTheRunIsStopped) {
    FitOptions options;
    options.isStopping = [] { return true; };
    EXPECT_THROW(fitted("gauss + pol1", countedPeak(), "", options), Stopped);
}

// The values were computed with mpmath at 40 digits.
TEST(ChiSquareProbability, keepsItsPrecisionAtManyDegreesOfFreedom) {
    const auto expectNear = [](double chi2, double ndf, double expected) {
        EXPECT_NEAR(chiSquareProbability(chi2, ndf) / expected, 1.0, 1e-14) << chi2 << " / " << ndf;
    };
    expectNear(10300.0, 10000.0, 0.017638117447345399638);
    expectNear(12345.6, 12000.0, 0.013412044092198150621);
    expectNear(1002000.0, 1000000.0, 0.078718661386129633385);
    expectNear(1e7, 1e7, 0.49994052919606216232);
    expectNear(700.0, 10.0, 6.2801466992359498821e-144);
}

TEST(ChiSquareProbability, reachesItsLimits) {
    EXPECT_EQ(chiSquareProbability(1e308, 2.0), 0.0);
    EXPECT_EQ(chiSquareProbability(5000.0, 1.0), 0.0);
    EXPECT_EQ(chiSquareProbability(std::numeric_limits<double>::infinity(), 3.0), 0.0);
    EXPECT_EQ(chiSquareProbability(1e-320, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(chiSquareProbability(1.0, std::numeric_limits<double>::infinity())));
}

TEST(ChiSquareProbability, hasItsTextbookValues) {
    EXPECT_NEAR(chiSquareProbability(3.841458820694124, 1.0), 0.05, 1e-14);
    EXPECT_NEAR(chiSquareProbability(124.34211340400409, 100.0), 0.05, 1e-13);
    EXPECT_NEAR(chiSquareProbability(4.0, 2.0), std::exp(-2.0), 1e-15);
    EXPECT_NEAR(chiSquareProbability(1000.0, 2.0) / std::exp(-500.0), 1.0, 1e-11);
    EXPECT_EQ(chiSquareProbability(0.0, 3.0), 1.0);
    EXPECT_TRUE(std::isnan(chiSquareProbability(1.0, 0.0)));
    EXPECT_TRUE(std::isnan(chiSquareProbability(-1.0, 2.0)));
}

}  // namespace
}  // namespace velmorak
