#include "KindHarness.h"

#include <Histogram/Moments.h>
#include <Histogram/Quantiles.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

Moments momentsOf(const std::vector<double>& x, const std::vector<double>& w = {}) {
    Moments moments;
    moments.fill(x.data(), w.empty() ? nullptr : w.data(), x.size());
    return moments;
}

Quantiles quantilesOf(const std::vector<double>& x, const std::vector<double>& w = {}) {
    Quantiles quantiles;
    quantiles.fill(x.data(), w.empty() ? nullptr : w.data(), x.size());
    return quantiles;
}

double median(const std::vector<double>& x, const std::vector<double>& w = {}) {
    return quantileOf(quantilesOf(x, w).ascending(), 0.5);
}

/// Parts of the given length, merged from first to last or from last to first.
template <typename Sums>
Sums joined(const std::vector<double>& x, std::size_t length, bool backwards) {
    std::vector<Sums> parts;
    for (std::size_t begin = 0; begin < x.size(); begin += length) {
        parts.emplace_back();
        parts.back().fill(x.data() + begin, nullptr, std::min(length, x.size() - begin));
    }
    if (backwards) {
        std::reverse(parts.begin(), parts.end());
    }
    Sums all;
    for (const Sums& part : parts) {
        all.merge(part);
    }
    return all;
}

std::vector<double> manyNumbers() {
    std::mt19937_64 random(7);
    std::vector<double> x(50000);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = -std::log(static_cast<double>(random() % 1000000 + 1) / 1000001.0) * (i < 30000 ? 1.0 : 40.0);
    }
    return x;
}

TEST(Skewness, isThatOfExactFractions) {
    EXPECT_NEAR(momentsOf({2, 8, 0, 4, 1, 9, 9, 0}).skewness(), 0.26505541226985731, 1e-14);
    EXPECT_NEAR(momentsOf({1, 2, 4}, {1, 1, 2}).skewness(), -0.21383343303319473, 1e-14);
    EXPECT_NEAR(momentsOf({1, 2, 10}, {1, -0.25, 2}).skewness(), -0.99956564896275521, 1e-14);
    EXPECT_NEAR(momentsOf({1, 2, 3}).skewness(), 0.0, 1e-15);
}

TEST(Skewness, isNotLostFarFromZero) {
    EXPECT_NEAR(momentsOf({1e9 + 2, 1e9 + 8, 1e9, 1e9 + 4, 1e9 + 1, 1e9 + 9, 1e9 + 9, 1e9}).skewness(),
                0.26505541226985731, 1e-12);
}

TEST(Skewness, isThatOfTheWholeInWhateverOrderPartsAreJoined) {
    const std::vector<double> x = manyNumbers();
    const double whole = momentsOf(x).skewness();
    EXPECT_GT(whole, 2.0);
    for (const std::size_t length : {1U, 7U, 1000U}) {
        for (const bool backwards : {false, true}) {
            EXPECT_NEAR(joined<Moments>(x, length, backwards).skewness(), whole, 1e-11 * whole);
        }
    }
}

TEST(Skewness, needsASpread) {
    EXPECT_TRUE(std::isnan(Moments().skewness()));
    EXPECT_TRUE(std::isnan(momentsOf({3}).skewness()));
    EXPECT_TRUE(std::isnan(momentsOf({0.1, 0.1, 0.1}).skewness()));
    EXPECT_TRUE(std::isnan(momentsOf({1, 2, 3}, {1, -3, 1}).skewness()));
    EXPECT_TRUE(std::isnan(momentsOf({1, 2, infinite}).skewness()));
    EXPECT_EQ(momentsOf({1, nan, 2, 4}).skewness(), momentsOf({1, 2, 4}).skewness());
}

TEST(Quantiles, ofFewNumbersAreExact) {
    EXPECT_EQ(median({5, 1, 3}), 3);
    EXPECT_EQ(median({4, 1, 3, 2}), 2.5);
    EXPECT_EQ(median({7}), 7);
    const std::vector<WeightedInterval> ten = quantilesOf({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}).ascending();
    EXPECT_EQ(quantileOf(ten, 0.16), 2);
    EXPECT_EQ(quantileOf(ten, 0.84), 9);
    EXPECT_EQ(quantileOf(ten, 0.1), 1.5);
    EXPECT_EQ(quantileOf(ten, 0.0), 1);
    EXPECT_EQ(quantileOf(ten, 1.0), 10);
}

TEST(Quantiles, countWeights) {
    EXPECT_EQ(median({1, 2, 3}, {1, 1, 5}), 3);
    EXPECT_EQ(median({1, 2, 3, 3}, {0.1, 0.2, 0.1, 0.2}), 2.5);
    EXPECT_EQ(median({1, 2, 99}, {1, 1, 0}), 1.5);
}

TEST(Quantiles, ofNegativeWeightsAreWhereTheRunningSumGetsThere) {
    EXPECT_EQ(median({1, 2, 3, 4}, {1, -1, 2, 1}), 3);
    EXPECT_EQ(median({1, 2, 3}, {3, -2, 1}), 1);
    EXPECT_TRUE(std::isnan(median({1, 2}, {1, -1})));
    EXPECT_TRUE(std::isnan(median({1, 2}, {-1, -1})));
}

TEST(Quantiles, leaveNanOutAndPutInfinityOutside) {
    EXPECT_EQ(median({nan, 1, 2, 3}), 2);
    EXPECT_EQ(median({1, 2, 3, 50}, {1, 1, 1, nan}), 2);
    EXPECT_TRUE(std::isnan(median({})));
    EXPECT_TRUE(std::isnan(median({nan})));
    EXPECT_EQ(median({-infinite, 4, infinite}), 4);
    EXPECT_EQ(median({4, infinite, infinite}), infinite);
    EXPECT_TRUE(std::isnan(median({1, 2}, {1, infinite})));
}

TEST(Quantiles, ofManyNumbersAreThoseOfTheSortedOnesToACell) {
    std::vector<double> x = manyNumbers();
    const std::vector<WeightedInterval> portions = quantilesOf(x).ascending();
    EXPECT_LE(portions.size(), Quantiles::maxCells + 2);
    std::sort(x.begin(), x.end());
    const double cell = (x.back() - x.front()) / 900;
    for (const double share : {0.001, 0.158, 0.5, 0.842, 0.999}) {
        EXPECT_NEAR(quantileOf(portions, share), x[static_cast<std::size_t>(share * 50000)], cell);
    }
}

TEST(Quantiles, haveTheSameBitsHoweverTheStreamIsCutAndJoined) {
    const std::vector<double> x = manyNumbers();
    const std::vector<WeightedInterval> whole = quantilesOf(x).ascending();
    for (const std::size_t length : {999U, 10000U, 10001U, 32768U}) {
        for (const bool backwards : {false, true}) {
            const std::vector<WeightedInterval> parts = joined<Quantiles>(x, length, backwards).ascending();
            for (const double share : {0.01, 0.16, 0.5, 0.84, 0.99}) {
                EXPECT_EQ(quantileOf(parts, share), quantileOf(whole, share)) << length;
            }
        }
    }
}

TEST(Quantiles, ofManyCountsAreCounts) {
    std::vector<double> x;
    for (int i = 0; i < 60000; ++i) {
        x.push_back(i % 6);
    }
    x.push_back(2);
    EXPECT_EQ(median(x), 2);
    EXPECT_EQ(median(std::vector<double>(20000, 0.1)), 0.1);
    EXPECT_EQ(median(std::vector<double>(20000, infinite)), infinite);
}

TEST(Quantiles, beyondTheLargestCellsStayOutside) {
    std::vector<double> x(20001);
    std::iota(x.begin(), x.end(), -10000.0);
    x.insert(x.end(), {-infinite, infinite, 1.5e300, -1.7e308});
    EXPECT_NEAR(median(x), 0, 20000.0 / 900);
    EXPECT_EQ(quantileOf(quantilesOf(x).ascending(), 1.0), infinite);
}

TEST(StatisticsKind, givesSkewnessAndQuantilesOfATable) {
    for (const std::size_t length : {1U, 3U, 8U}) {
        KindHarness bench("Statistics");
        bench.set("expression", "x").wire("data", tableOf({{"x", {2, 8, 0, 4, 1, 9, 9, 0, nan}}}, length)).run();
        EXPECT_NEAR(bench.number("skewness"), 0.26505541226985731, 1e-14);
        EXPECT_EQ(bench.number("median"), 3);
        EXPECT_EQ(bench.number("lower"), 0);
        EXPECT_EQ(bench.number("upper"), 9);
    }
}

TEST(StatisticsKind, givesSkewnessAndQuantilesOfAHistogram) {
    auto histogram = std::make_shared<Histogram1D>(Axis(10, 0, 10));
    for (const double x : {2.0, 8.0, 0.0, 4.0, 1.0, 9.0, 9.0, 0.0, 10.0, -1.0, nan}) {
        histogram->fill(x);
    }
    KindHarness bench("Statistics");
    bench.wire("data", DataObjectPtr(histogram)).run();
    EXPECT_NEAR(bench.number("skewness"), 0.26505541226985731, 1e-14);
    EXPECT_EQ(bench.number("median"), 3.5);
    EXPECT_NEAR(bench.number("lower"), 4 * 0.15865525393145705, 1e-14);
    EXPECT_NEAR(bench.number("upper"), 9 + (8 * 0.84134474606854293 - 6) / 2, 1e-14);
}

TEST(StatisticsKind, theSkewnessOfAHistogramKnowsTheSpreadInItsBins) {
    const std::vector<double> x = {0.25, 1, 1.75, 2.5, 3.5, 5};
    auto histogram = std::make_shared<Histogram1D>(Axis(3, 0, 6));
    histogram->fill(x.data(), nullptr, x.size());
    KindHarness bench("Statistics");
    bench.wire("data", DataObjectPtr(histogram)).run();
    EXPECT_NEAR(bench.number("skewness"), momentsOf(x).skewness(), 1e-14);
}

TEST(StatisticsKind, nothingHasNoQuantiles) {
    KindHarness ofTable("Statistics");
    ofTable.set("expression", "x").wire("data", tableOf({{"x", {}}}, 2)).run();
    KindHarness ofHistogram("Statistics");
    ofHistogram.wire("data", DataObjectPtr(std::make_shared<Histogram1D>(Axis(2, 0, 1)))).run();
    for (const std::string output : {"skewness", "median", "lower", "upper"}) {
        EXPECT_TRUE(std::isnan(ofTable.number(output))) << output;
        EXPECT_TRUE(std::isnan(ofHistogram.number(output))) << output;
    }
}

}  // namespace
