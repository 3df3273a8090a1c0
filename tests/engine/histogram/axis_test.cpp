#include <velmorak/Histogram.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

namespace velmorak {
namespace {

using Edges = std::vector<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();

std::size_t cellByEdges(const Axis& axis, double x) {
    const auto& edges = axis.edges();
    return static_cast<std::size_t>(std::upper_bound(edges.begin(), edges.end(), x) - edges.begin());
}

void expectAgreement(const Axis& axis, double x) {
    ASSERT_EQ(axis.cell(x), cellByEdges(axis, x)) << "x = " << x << ", " << axis.bins() << " bins from " << axis.low();
}

void expectAgreementEverywhere(const Axis& axis, std::mt19937_64& random) {
    for (const double edge : axis.edges()) {
        for (const double x : {edge, std::nextafter(edge, -infinity), std::nextafter(edge, infinity)}) {
            expectAgreement(axis, x);
        }
    }
    for (const double x : {-infinity, infinity, 0.0, -0.0, std::numeric_limits<double>::max()}) {
        expectAgreement(axis, x);
    }
    std::uniform_real_distribution<double> part(-0.05, 1.05);
    for (int round = 0; round < 20'000; ++round) {
        expectAgreement(axis, axis.low() + part(random) * (axis.high() - axis.low()));
    }
}

std::vector<double> randomEdges(std::mt19937_64& random) {
    std::vector<double> edges(2 + random() % 300);
    std::lognormal_distribution<double> step(0.0, 4.0);
    double edge = -50.0;
    for (double& next : edges) {
        next = edge = std::max(edge + step(random), std::nextafter(edge, infinity));
    }
    return edges;
}

TEST(Axis, ofEqualBinsAlwaysAgreesWithItsEdges) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> edge(-1000.0, 1000.0);
    for (int round = 0; round < 60; ++round) {
        const double low = edge(random);
        expectAgreementEverywhere(Axis(1 + random() % 500, low, low + std::exp(edge(random) / 100)), random);
    }
    for (const std::size_t bins : {1U, 3U, 7U, 10U, 100U, 1000U, 100'000U}) {
        expectAgreementEverywhere(Axis(bins, 0.0, 1.0), random);
    }
}

TEST(Axis, ofGivenEdgesAlwaysAgreesWithThem) {
    std::mt19937_64 random(12);
    for (int round = 0; round < 60; ++round) {
        expectAgreementEverywhere(Axis(randomEdges(random)), random);
    }
}

TEST(Axis, agreesWithItsEdgesAtTheEndsOfTheNumbers) {
    std::mt19937_64 random(13);
    const double most = std::numeric_limits<double>::max();
    const double least = std::numeric_limits<double>::denorm_min();
    expectAgreementEverywhere(Axis(17, -most, most), random);
    expectAgreementEverywhere(Axis(100, 0.0, most), random);
    expectAgreementEverywhere(Axis(5, 0.0, 5 * least), random);
    expectAgreementEverywhere(Axis(Edges{-most, -1.0, 0.0, least, 1.0, most}), random);
}

TEST(Axis, hasTheEdgesOfTheFormula) {
    const Axis axis(3, -1.0, 0.1);
    EXPECT_EQ(axis.edges(), (std::vector<double>{-1.0, -1.0 + 1 * (0.1 - -1.0) / 3, -1.0 + 2 * (0.1 - -1.0) / 3, 0.1}));
    EXPECT_TRUE(axis.isRegular());
}

TEST(Axis, tellsTheLastEdgeFromTheLastBin) {
    const Axis axis(10, 0.0, 1.0);
    EXPECT_EQ(axis.cell(1.0), 11U);
    EXPECT_EQ(axis.cell(std::nextafter(1.0, 0.0)), 10U);
    EXPECT_EQ(axis.cell(0.0), 1U);
    EXPECT_EQ(axis.cell(-0.0), 1U);
    EXPECT_EQ(axis.cell(-infinity), 0U);
}

TEST(Axis, knowsEqualBinsAlsoWhenItIsGivenTheirEdges) {
    EXPECT_TRUE(Axis(Axis(7, 0.1, 2.3).edges()).isRegular());
    EXPECT_FALSE(Axis(Edges{0.0, 1.0, 3.0}).isRegular());
}

TEST(Axis, refusesWhatIsNoAxis) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(Axis(0, 0.0, 1.0), std::invalid_argument);
    EXPECT_THROW(Axis(1, 1.0, 1.0), std::invalid_argument);
    EXPECT_THROW(Axis(1, 0.0, nan), std::invalid_argument);
    EXPECT_THROW(Axis(1, -infinity, 0.0), std::invalid_argument);
    EXPECT_THROW(Axis(1'000'000'000, 0.0, 1.0), std::invalid_argument);
    EXPECT_THROW(Axis(3, 1.0, std::nextafter(1.0, 2.0)), std::invalid_argument);
    EXPECT_THROW(Axis(Edges{1.0}), std::invalid_argument);
    EXPECT_THROW(Axis(Edges{1.0, 1.0}), std::invalid_argument);
    EXPECT_THROW(Axis(Edges{0.0, nan, 1.0}), std::invalid_argument);
}

}  // namespace
}  // namespace velmorak
