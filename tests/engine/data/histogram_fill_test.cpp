#include "velmorak/HistogramGrid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace velmorak {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double most = std::numeric_limits<double>::max();

std::vector<Axis> axes() {
    std::mt19937_64 random(5);
    std::lognormal_distribution<double> step(0.0, 2.0);
    std::vector<double> edges{-3.0};
    for (int i = 0; i < 100; ++i)
        edges.push_back(edges.back() + step(random));
    return {Axis(100, -3.0, 3.0),
            Axis(1, 0.0, 1.0),
            Axis(10, 0.1, 0.7),
            Axis(7, -most, most),
            Axis(edges),
            Axis(std::vector<double>{-1.0, 0.0, 1e-9, 2e-9, 3e-9, 4e-9, 5e-9, 6e-9, 1.0}),
            Axis(1000, 1.0, 1.0 + 1e-12)};
}

/// Values around all edges, outside, far away and not numbers; more than one block.
std::vector<double> valuesFor(const Axis& axis) {
    std::vector<double> values{infinity, -infinity, notANumber, 0.0, -0.0, most, -most};
    for (const double edge : axis.edges())
        for (const double x : {edge, std::nextafter(edge, -infinity), std::nextafter(edge, infinity)})
            values.push_back(x);
    std::mt19937_64 random(6);
    std::uniform_real_distribution<double> part(-0.1, 1.1);
    for (int i = 0; i < 3000; ++i)
        values.push_back(axis.low() + part(random) * (axis.high() - axis.low()));
    return values;
}

std::vector<double> weightsFor(std::size_t count) {
    std::vector<double> weights(count);
    for (std::size_t i = 0; i < count; ++i)
        weights[i] = i % 97 == 5 ? notANumber : std::sin(static_cast<double>(i)) + 0.5;
    return weights;
}

TEST(HistogramFill, findsTheSameCellsAtOnceAsOneByOne) {
    for (const Axis& axis : axes()) {
        const std::vector<double> values = valuesFor(axis);
        std::vector<std::uint32_t> cells(values.size());
        axis.cells(values.data(), values.size(), cells.data());
        for (std::size_t i = 0; i < values.size(); ++i) {
            ASSERT_LT(cells[i], axis.bins() + 2);
            if (!std::isnan(values[i])) {
                ASSERT_EQ(cells[i], axis.cell(values[i])) << values[i] << " on " << axis.bins() << " bins";
            }
        }
    }
}

TEST(HistogramFill, atOnceLeavesTheBitsOfOneByOne) {
    for (const Axis& axis : axes()) {
        const std::vector<double> values = valuesFor(axis);
        const std::vector<double> weights = weightsFor(values.size());
        for (const double* given : {weights.data(), static_cast<const double*>(nullptr)}) {
            Histogram1D atOnce(axis);
            atOnce.fill(values.data(), given, values.size());
            Histogram1D oneByOne(axis);
            for (std::size_t i = 0; i < values.size(); ++i)
                oneByOne.fill(values[i], given == nullptr ? 1.0 : given[i]);
            EXPECT_EQ(atOnce.toBytes(), oneByOne.toBytes());
        }
    }
}

TEST(HistogramFill, ofAPlaneAtOnceLeavesTheBitsOfOneByOne) {
    const std::vector<Axis> all = axes();
    for (std::size_t pair = 0; pair + 1 < all.size(); ++pair) {
        const std::vector<double> x = valuesFor(all[pair]);
        std::vector<double> y = valuesFor(all[pair + 1]);
        y.resize(x.size(), 0.25);
        const std::vector<double> weights = weightsFor(x.size());
        const Grid<2> grid({all[pair], all[pair + 1]});
        Histogram2D atOnce(grid);
        atOnce.fill({x.data(), y.data()}, weights.data(), x.size());
        Histogram2D oneByOne(grid);
        for (std::size_t i = 0; i < x.size(); ++i)
            oneByOne.fill({x[i], y[i]}, weights[i]);
        EXPECT_EQ(atOnce.toBytes(), oneByOne.toBytes());
    }
}

}  // namespace
}  // namespace velmorak
