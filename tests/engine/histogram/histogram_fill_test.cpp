#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include "PlainSums.h"

#include "histogram/fill/Fill.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
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
    for (int i = 0; i < 100; ++i) {
        edges.push_back(edges.back() + step(random));
    }
    return {Axis(100, -3.0, 3.0),
            Axis(1, 0.0, 1.0),
            Axis(10, 0.1, 0.7),
            Axis(7, -most, most),
            Axis(2, -most, -most + 6e307),
            Axis(2, most - 6e307, most),
            Axis(edges),
            Axis(std::vector<double>{-1.0, 0.0, 1e-9, 2e-9, 3e-9, 4e-9, 5e-9, 6e-9, 1.0}),
            Axis(1000, 1.0, 1.0 + 1e-12)};
}

/// Values around all edges, outside, far away and not numbers; more than one block.
std::vector<double> valuesFor(const Axis& axis) {
    std::vector<double> values{infinity, -infinity, notANumber, 0.0, -0.0, most, -most};
    for (const double edge : axis.edges()) {
        for (const double x : {edge, std::nextafter(edge, -infinity), std::nextafter(edge, infinity)}) {
            values.push_back(x);
        }
    }
    std::mt19937_64 random(6);
    std::uniform_real_distribution<double> part(-0.1, 1.1);
    for (int i = 0; i < 3000; ++i) {
        values.push_back(axis.low() + part(random) * (axis.high() - axis.low()));
    }
    return values;
}

std::vector<double> weightsFor(std::size_t count) {
    std::vector<double> weights(count);
    for (std::size_t i = 0; i < count; ++i) {
        weights[i] = i % 97 == 5 ? notANumber : std::sin(static_cast<double>(i)) + 0.5;
    }
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
            for (std::size_t i = 0; i < values.size(); ++i) {
                oneByOne.fill(values[i], !given ? 1.0 : given[i]);
            }
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
        for (std::size_t i = 0; i < x.size(); ++i) {
            oneByOne.fill({x[i], y[i]}, weights[i]);
        }
        EXPECT_EQ(atOnce.toBytes(), oneByOne.toBytes());
    }
}

TEST(HistogramFill, ofMoreCellsThanACacheHoldsLeavesTheBitsOfOneByOne) {
    const Axis axis(1000, 0, 1);
    const std::vector<double> x = valuesFor(axis);
    std::vector<double> y(x.rbegin(), x.rend());
    const std::vector<double> weights = weightsFor(x.size());
    Histogram2D atOnce(Grid<2>({axis, axis}));
    atOnce.fill({x.data(), y.data()}, weights.data(), x.size());
    Histogram2D oneByOne(Grid<2>({axis, axis}));
    for (std::size_t i = 0; i < x.size(); ++i) {
        oneByOne.fill({x[i], y[i]}, weights[i]);
    }
    EXPECT_EQ(atOnce.toBytes(), oneByOne.toBytes());
    EXPECT_EQ(atOnce.nanEntries(), oneByOne.nanEntries());
}

/// Fills at once, in parts of any lengths, what another is filled with one by one.
void expectSameBits(const Axis& axis, const std::vector<double>& values, std::mt19937_64& random) {
    const std::vector<double> weights = weightsFor(values.size());
    Histogram1D atOnce(axis);
    for (std::size_t begin = 0; begin < values.size();) {
        const std::size_t part = std::min<std::size_t>(random() % 3000, values.size() - begin);
        atOnce.fill(values.data() + begin, weights.data() + begin, part);
        begin += part;
    }
    Histogram1D oneByOne(axis);
    for (std::size_t i = 0; i < values.size(); ++i) {
        oneByOne.fill(values[i], weights[i]);
    }
    EXPECT_EQ(atOnce.toBytes(), oneByOne.toBytes())
        << axis.bins() << " bins from " << axis.low() << " to " << axis.high();
}

/// Near edges a value must not fall into the neighbour, however the axis lies.
TEST(HistogramFill, leavesTheBitsOfOneByOneOnRandomAxes) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> exponent(-300.0, 300.0);
    std::uniform_real_distribution<double> part(-0.2, 1.2);
    std::uniform_real_distribution<double> fraction(-14.0, 3.0);
    for (int i = 0; i < 400; ++i) {
        const double span = std::pow(10.0, i % 4 == 0 ? exponent(random) : fraction(random) / 4);
        const double low = span * std::pow(10.0, fraction(random)) * (i % 2 == 0 ? 1 : -1);
        const std::size_t bins = 1 + random() % (i % 10 == 0 ? 100000 : 200);
        std::optional<Axis> axis;
        try {
            axis.emplace(bins, low, low + span);
        } catch (const std::invalid_argument&) {
            continue;  // The edges would be the same double.
        }
        std::vector<double> values;
        for (int k = 0; k < 1500; ++k) {
            double x = axis->edges()[random() % (bins + 1)];
            for (auto steps = random() % 4; steps > 0; --steps) {
                x = std::nextafter(x, random() % 2 == 0 ? infinity : -infinity);
            }
            values.push_back(random() % 3 == 0 ? x : axis->low() + part(random) * span);
        }
        expectSameBits(*axis, values, random);
    }
}

TEST(HistogramFill, leavesTheBitsOfOneByOneForWholeNumbersOnEdges) {
    std::mt19937_64 random(12);
    std::vector<double> values(10000);
    for (double& value : values) {
        value = static_cast<double>(static_cast<int>(random() % 14) - 2);
    }
    expectSameBits(Axis(10, 0.0, 10.0), values, random);
    expectSameBits(Axis(20, -0.5, 9.5), values, random);
}

/// Cells of which the number of entries passes several multiples of the interval, within groups of the kernels.
TEST(HistogramFill, leavesTheBitsOfOneByOneWhereACellChoosesItsPivotAgain) {
    std::mt19937_64 random(13);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    const std::size_t count = 5 * filling::pivotInterval + 3;
    std::vector<double> x(count);
    std::vector<double> y(count);
    for (std::size_t i = 0; i < count; ++i) {
        x[i] = part(random);
        y[i] = 1e6 + part(random);
    }
    const std::vector<double> weights = weightsFor(count);
    for (const std::size_t bins : {1U, 2U, 7U}) {
        const Axis axis(bins, 0.0, 1.0);
        expectSameBits(axis, x, random);
        Histogram2D plane(Grid<2>({axis, Axis(1, 1e6, 1e6 + 1)}));
        Histogram2D planeOneByOne = plane;
        Profile1D profile(Grid<1>({axis}));
        Profile1D profileOneByOne = profile;
        plane.fill({x.data(), y.data()}, weights.data(), count);
        profile.fill({x.data()}, y.data(), weights.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            planeOneByOne.fill({x[i], y[i]}, weights[i]);
            profileOneByOne.fill({x[i]}, y[i], weights[i]);
        }
        EXPECT_EQ(plane.toBytes(), planeOneByOne.toBytes()) << bins;
        EXPECT_EQ(profile.toBytes(), profileOneByOne.toBytes()) << bins;
    }
}

TEST(HistogramFill, findsNoStepsWhereRoundingErrorsAreOfTheirSize) {
    EXPECT_TRUE(filling::stepsOf(Axis(100, -3.0, 3.0)));
    EXPECT_TRUE(filling::stepsOf(Axis(1, -1e300, 1e300)));
    EXPECT_FALSE(filling::stepsOf(Axis(1000, 1.0, 1.0 + 1e-12)));
    EXPECT_FALSE(filling::stepsOf(Axis(7, -most, most)));
    EXPECT_FALSE(filling::stepsOf(Axis(2, -most, -most + 6e307)));
    EXPECT_FALSE(filling::stepsOf(Axis(std::vector<double>{0.0, 1.0, 3.0})));
    EXPECT_FALSE(filling::stepsOf(Axis(1, 0.0, std::numeric_limits<double>::denorm_min())));
}

PlainSums equalFills(std::size_t count, double weight, double x) {
    const auto n = static_cast<double>(count);
    return {static_cast<std::int64_t>(count), n * weight, n * weight * weight, n * weight * x, n * weight * x * x};
}

TEST(FillKernels, endOnALineBeforeTheGroupThatItCannotFill) {
    if (filling::runnableKernels().empty()) {
        GTEST_SKIP() << "no AVX2";
    }
    const Axis axis(10, 0.0, 10.0);
    const filling::Steps steps = filling::stepsOf(axis).value();
    for (const filling::Kernels& wide : filling::runnableKernels()) {
        for (const double special : {notANumber, infinity, -infinity, 3.0, std::nextafter(3.0, 0.0)}) {
            std::vector<double> values(42, 2.5);
            values[21] = special;
            CellVector<BinSums> cells(12);
            const std::size_t filled = 21 / wide.group * wide.group;
            EXPECT_EQ(wide.fill1D(steps, filling::bytesOf(cells), {.x = values.data(), .count = 42}), filled)
                << special;
            EXPECT_EQ(plain(cells[3]), equalFills(filled, 1.0, 2.5));
        }
        std::vector<double> values(42, 2.5);
        std::vector<double> weights(42, 2.0);
        CellVector<BinSums> cells(12);
        const filling::Entries entries{.x = values.data(), .weights = weights.data(), .count = 42};
        EXPECT_EQ(wide.fill1D(steps, filling::bytesOf(cells), entries), 40U);
        EXPECT_EQ(plain(cells[3]), equalFills(40, 2.0, 2.5));
        weights[9] = notANumber;
        EXPECT_EQ(wide.fill1D(steps, filling::bytesOf(cells), entries), 8U);
        const std::vector<std::uint32_t> known(42, 7);
        weights[9] = infinity;
        EXPECT_EQ(wide.fillFromIndices1D({.x = known.data()}, filling::bytesOf(cells), entries), 40U);
        EXPECT_EQ(cells[8].entries, 0);
        EXPECT_EQ(cells[7].entries, 40);
        EXPECT_EQ(cells[7].w, infinity);
    }
}

/// Edges that lie so far apart that no slice holds two.
std::vector<double> edgesFarApart(std::mt19937_64& random, std::size_t bins) {
    std::uniform_real_distribution<double> exponent(-100.0, 100.0);
    std::uniform_real_distribution<double> step(0.3, 2.0);
    const double unit = std::pow(10.0, exponent(random));
    std::vector<double> edges{unit * 100.0 * (step(random) - 1.15)};
    for (std::size_t bin = 0; bin < bins; ++bin) {
        edges.push_back(edges.back() + unit * step(random));
    }
    return edges;
}

/// Finite values at the edges, beside them, and anywhere.
std::vector<double> finiteValuesFor(const Axis& axis, std::mt19937_64& random) {
    std::uniform_real_distribution<double> part(-0.2, 1.2);
    std::vector<double> values;
    for (int k = 0; k < 1600; ++k) {
        double x = axis.edges()[random() % axis.edges().size()];
        for (auto steps = random() % 3; steps > 0; --steps) {
            x = std::nextafter(x, random() % 2 == 0 ? infinity : -infinity);
        }
        values.push_back(random() % 3 > 0 ? x : axis.low() + part(random) * (axis.high() - axis.low()));
    }
    values[7] = axis.low() - 1e9 * (axis.high() - axis.low());
    values[8] = axis.high() + 1e9 * (axis.high() - axis.low());
    return values;
}

TEST(FillKernels, findTheCellsOfBinsOfDifferentWidthsByTheirSlices) {
    if (filling::runnableKernels().empty()) {
        GTEST_SKIP() << "no AVX2";
    }
    std::mt19937_64 random(12);
    for (int round = 0; round < 60; ++round) {
        const Axis axis(edgesFarApart(random, 2 + random() % 300));
        const AxisSlices* const slices = slicesOf(axis);
        ASSERT_TRUE(slices);
        const std::vector<double> values = finiteValuesFor(axis, random);
        Histogram1D oneByOne(axis);
        for (const double x : values) {
            oneByOne.fill(x, 0.75);
        }
        const std::vector<double> weights(values.size(), 0.75);
        for (const filling::Kernels& wide : filling::runnableKernels()) {
            CellVector<BinSums> cells(axis.bins() + 2);
            EXPECT_EQ(wide.fillBySlice1D(*slices, filling::bytesOf(cells),
                                         {.x = values.data(), .weights = weights.data(), .count = values.size()}),
                      values.size());
            for (std::size_t cell = 0; cell < cells.size(); ++cell) {
                ASSERT_EQ(plain(cells[cell]), plain(oneByOne.cells()[cell])) << cell << " of " << axis.bins();
            }
        }
        expectSameBits(axis, values, random);
    }
}

TEST(HistogramFill, findsNoSlicesForEqualBinsOrEdgesThatAreCloseTogether) {
    EXPECT_FALSE(slicesOf(Axis(100, -3.0, 3.0)));
    EXPECT_FALSE(slicesOf(Axis(std::vector<double>{-1.0, 0.0, 1e-9, 2e-9, 1.0})));
    EXPECT_TRUE(slicesOf(Axis(std::vector<double>{0.0, 1.0, 3.0})));
    EXPECT_FALSE(slicesOf(Axis(std::vector<double>{-most, 0.0, 0.5 * most, most})));
}

TEST(FillKernels, endInAPlaneBeforeTheGroupThatItCannotFill) {
    if (filling::runnableKernels().empty()) {
        GTEST_SKIP() << "no AVX2";
    }
    const filling::Steps axes[2] = {filling::stepsOf(Axis(10, 0.0, 10.0)).value(),
                                    filling::stepsOf(Axis(5, 0.0, 5.0)).value()};
    for (const filling::Kernels& wide : filling::runnableKernels()) {
        for (const double special : {notANumber, infinity, 3.0}) {
            const std::vector<double> x(42, 2.5);
            std::vector<double> y(42, 1.5);
            y[13] = special;
            CellVector<CellSums<2>> cells(12U * 7U);
            const filling::Entries entries{.x = x.data(), .y = y.data(), .count = 42};
            const std::size_t filled = 13 / wide.group * wide.group;
            EXPECT_EQ(wide.fill2D(axes, 12, filling::bytesOf(cells), entries), filled) << special;
            const CellSums<2>& sums = cells[2 * 12 + 3];
            EXPECT_EQ(plain(sums.of<1>({0})), equalFills(filled, 1.0, 2.5));
            EXPECT_EQ(plain(sums.of<1>({1})), equalFills(filled, 1.0, 1.5));
            EXPECT_EQ(sums.squareSum(0, 1), static_cast<double>(filled) * 2.5 * 1.5);
        }
    }
}

}  // namespace
}  // namespace velmorak
