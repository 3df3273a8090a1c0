#include <shared/Philox.h>

#include "StoppingBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::StoppingBench;

using Reals = std::vector<double>;

TEST(Philox, givesTheNumbersOfItsPaper) {
    // The known answers that the authors publish with their code.
    EXPECT_EQ(Philox::at({0, 0, 0, 0}, 0), (Philox::Block{0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}));
    EXPECT_EQ(Philox::at({0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff}, 0xffffffffffffffff),
              (Philox::Block{0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}));
}

Reals randomNumbers(const std::string& distribution, const std::string& seed = "1",
                    const std::string& rows = "200000") {
    KindHarness bench("RandomTable");
    bench.set("columns", "x: " + distribution).set("rows", rows).set("seed", seed).run();
    return bench.table().column("x");
}

double mean(const Reals& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double variance(const Reals& values) {
    const double m = mean(values);
    double sum = 0.0;
    for (const double value : values) {
        sum += (value - m) * (value - m);
    }
    return sum / static_cast<double>(values.size());
}

/// Largest distance between the distribution of the values and a function, times the root of their number. 1.95 is
/// passed once in a thousand seeds (Kolmogorov); these seeds do not change.
template <typename Distribution>
double distance(Reals values, Distribution cumulative) {
    std::sort(values.begin(), values.end());
    double largest = 0.0;
    const auto count = static_cast<double>(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double expected = cumulative(values[i]);
        largest = std::max({largest, std::fabs(expected - static_cast<double>(i) / count),
                            std::fabs(expected - static_cast<double>(i + 1) / count)});
    }
    return largest * std::sqrt(count);
}

TEST(RandomTable, continuousDistributionsAreAsTheyAreCalled) {
    EXPECT_LT(distance(randomNumbers("uniform(-1, 3)"), [](double x) { return (x + 1.0) / 4.0; }), 1.95);
    EXPECT_LT(
        distance(randomNumbers("gauss(5, 2)"), [](double x) { return 0.5 * std::erfc((5.0 - x) / std::sqrt(8.0)); }),
        1.95);
    EXPECT_LT(distance(randomNumbers("exponential(2.2)"), [](double x) { return -std::expm1(-x / 2.2); }), 1.95);
    EXPECT_LT(distance(randomNumbers("breitwigner(91.2, 2.5)"),
                       [](double x) { return 0.5 + std::atan((x - 91.2) / 1.25) / std::acos(-1.0); }),
              1.95);
}

TEST(RandomTable, poissonHasItsMeanAsItsVariance) {
    for (const double expected : {0.5, 4.0, 29.9, 30.1, 1000.0}) {
        const Reals values = randomNumbers("poisson(" + textOf(expected) + ")");
        const double error = std::sqrt(expected / static_cast<double>(values.size()));
        EXPECT_NEAR(mean(values), expected, 4.0 * error) << expected;
        EXPECT_NEAR(variance(values) / expected, 1.0, 0.02) << expected;
        EXPECT_GE(*std::min_element(values.begin(), values.end()), 0.0);
    }
    EXPECT_EQ(mean(randomNumbers("poisson(0)")), 0.0);
}

TEST(RandomTable, poissonProbabilitiesAreRight) {
    for (const double expected : {3.0, 40.0}) {
        const Reals values = randomNumbers("poisson(" + textOf(expected) + ")", "7");
        for (const double k : {expected - 2.0, expected, expected + 5.0}) {
            const double p = std::exp(k * std::log(expected) - expected - std::lgamma(k + 1.0));
            const auto found = static_cast<double>(std::count(values.begin(), values.end(), k));
            const auto count = static_cast<double>(values.size());
            EXPECT_NEAR(found / count, p, 4.0 * std::sqrt(p / count)) << expected << " " << k;
        }
    }
}

TEST(RandomTable, numbersAreFiniteUpToTheLargest) {
    for (const char* widest : {"uniform(-1e308, 1e308)", "uniform(-1.7976931348623157e308, 1.7976931348623157e308)",
                               "gauss(1e307, 1e307)", "exponential(4e306)", "breitwigner(1e308, 1e292)"}) {
        for (const double value : randomNumbers(widest)) {
            ASSERT_TRUE(std::isfinite(value)) << widest;
        }
    }
    EXPECT_LT(distance(randomNumbers("uniform(-1e308, 1e308)"), [](double x) { return x / 1e308 / 2.0 + 0.5; }), 1.95);
}

TEST(RandomTable, theSeedDecides) {
    EXPECT_EQ(randomNumbers("gauss(0, 1)", "5", "50000"), randomNumbers("gauss(0, 1)", "5", "50000"));
    EXPECT_NE(randomNumbers("gauss(0, 1)", "5", "50000"), randomNumbers("gauss(0, 1)", "6", "50000"));
    const Reals few = randomNumbers("poisson(50)", "5", "10");
    const Reals many = randomNumbers("poisson(50)", "5", "40000");
    EXPECT_TRUE(std::equal(few.begin(), few.end(), many.begin())) << "a row does not depend on how many there are";
}

TEST(RandomTable, columnsDoNotDependOnEachOther) {
    KindHarness bench("RandomTable");
    bench.set("columns", "x: uniform(0, 1)\ny: uniform(0, 1); n: poisson(3)").set("rows", "40000").run();
    EXPECT_EQ(bench.table().schema[2].type, ColumnType::Integer);
    const Reals x = bench.table().column("x");
    const Reals y = bench.table().column("y");
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        sum += (x[i] - 0.5) * (y[i] - 0.5);
    }
    EXPECT_LT(std::fabs(sum / static_cast<double>(x.size())), 4.0 / 12.0 / std::sqrt(40000.0));
    ASSERT_EQ(bench.table().chunks.size(), 2U);
    EXPECT_EQ(bench.table().chunks[0].rows, chunkRows);
}

TEST(RandomTable, mistakesAreRefused) {
    const Kind& random = test::shippedKind("RandomTable");
    for (const char* text : {"x", "x:", ": uniform(0, 1)", "x: normal(0, 1)", "x: uniform(0)", "x: uniform(0, 1, 2)",
                             "x: uniform(1, 0)", "x: gauss(0, 0)", "x: gauss(0, NaN)", "x: exponential(-1)",
                             "x: poisson(1e30)", "x: gauss(0, 1e308)", "x: exponential(1e307)",
                             "x: breitwigner(0, 1e300)", "x: uniform(0, 1); x: uniform(0, 1)", "x: uniform(a, b)"}) {
        EXPECT_NE(random.refusal("columns", text), "") << text;
    }
    KindHarness bench("RandomTable");
    EXPECT_EQ(bench.set("columns", " ; ").failure(), "columns: no column is given");
}

TEST(RandomTable, stopsInTheMidst) {
    KindHarness bench("RandomTable");
    bench.set("rows", "1e12").stop();
    EXPECT_THROW(bench.run(), Stopped);
}

}  // namespace
