#include "KindHarness.h"

#include <velmorak/Profile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

using Numbers = std::vector<double>;

Numbers normal(std::size_t count, double mean, double width, unsigned seed) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> number(mean, width);
    Numbers all(count);
    for (double& x : all) {
        x = number(random);
    }
    return all;
}

HistogramPtr automatic(const Numbers& x, std::size_t chunkLength, const std::string& bins = "50") {
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("range", "automatic").set("bins", bins);
    bench.wire("table", tableOf({{"x", x}}, chunkLength)).expectWarnings().run();
    return bench.histogram("histogram");
}

std::vector<std::int64_t> entriesOf(const Histogram1D& histogram) {
    std::vector<std::int64_t> entries;
    for (const BinSums& cell : histogram.cells()) {
        entries.push_back(cell.entries);
    }
    return entries;
}

Histogram1D filledDirectly(const Axis& axis, const Numbers& x) {
    Histogram1D histogram(axis);
    histogram.fill(x.data(), nullptr, x.size());
    return histogram;
}

TEST(AutomaticRange, goesFromOneRoundNumberToAnother) {
    const HistogramPtr few = automatic({0.31, 4.2, 9.9}, 2, "10");
    EXPECT_EQ(few->axis().edges(), (Numbers{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(automatic({-0.07, 0.04}, 2, "4")->axis().edges(), (Numbers{-0.1, -0.05, 0, 0.05, 0.1}));
    EXPECT_EQ(automatic({1e6, 1.04e6}, 2, "2")->axis().edges(), (Numbers{1e6, 1.025e6, 1.05e6}));
}

TEST(AutomaticRange, holdsEveryFiniteValueInTheBinThatItsEdgesSay) {
    for (const std::string bins : {"1", "7", "50", "300"}) {
        for (const double width : {1e-9, 0.3, 1e12}) {
            const Numbers x = normal(20000, 5 * width, width, 3);
            const HistogramPtr found = automatic(x, 3000, bins);
            EXPECT_EQ(entriesOf(*found), entriesOf(filledDirectly(found->axis(), x))) << bins << " " << width;
            EXPECT_EQ(found->underflow().entries + found->overflow().entries, 0);
            const auto [low, high] = std::minmax_element(x.begin(), x.end());
            EXPECT_LT(found->axis().high() - found->axis().low(), 6 * (*high - *low)) << bins;
            EXPECT_NEAR(found->inRange().sum(0), 5 * width * 20000, 1e4 * width);
        }
    }
}

TEST(AutomaticRange, keepsValuesThatStandOnItsEdgesInTheUpperBin) {
    Numbers x;
    for (int i = 0; i < 30000; ++i) {
        x.push_back((i % 1000) / 100.0);
    }
    const HistogramPtr found = automatic(x, 1000, "100");
    EXPECT_EQ(found->axis().high(), 10.0);
    for (std::size_t bin = 0; bin < 100; ++bin) {
        EXPECT_EQ(found->bin(bin).entries, 300) << bin;
    }
}

TEST(AutomaticRange, doesNotDependOnTheOrderOrTheChunks) {
    Numbers x = normal(50000, -3, 20, 4);
    const HistogramPtr found = automatic(x, 32768);
    for (const std::size_t length : {99U, 5000U, 50000U}) {
        std::reverse(x.begin(), x.end());
        const HistogramPtr other = automatic(x, length);
        EXPECT_TRUE(found->axis() == other->axis());
        EXPECT_EQ(entriesOf(*found), entriesOf(*other));
    }
}

TEST(AutomaticRange, growsWhenALaterChunkLiesFarAway) {
    Numbers x = normal(20000, 0, 1, 5);
    x.push_back(1e7);
    const HistogramPtr found = automatic(x, 10000, "20");
    EXPECT_EQ(entriesOf(*found), entriesOf(filledDirectly(found->axis(), x)));
    EXPECT_GT(found->axis().high(), 1e7);
}

TEST(AutomaticRange, leavesInfinitiesAndNotANumberOut) {
    const HistogramPtr found = automatic({1, nan, infinity, 2, -infinity, 9.5}, 2, "10");
    EXPECT_EQ(found->axis().low(), 1.0);
    EXPECT_EQ(found->axis().high(), 11.0);
    EXPECT_EQ(found->nanEntries(), 1);
    EXPECT_EQ(found->underflow().entries, 1);
    EXPECT_EQ(found->overflow().entries, 1);
}

TEST(AutomaticRange, hasBinsAlsoWithoutASpread) {
    for (const double x : {0.0, 1.0, -1e-200, 7e20, 1e300}) {
        const HistogramPtr found = automatic(Numbers(6000, x), 6000, "50");
        EXPECT_EQ(found->inRange().entries, 6000) << x;
        EXPECT_EQ(entriesOf(*found), entriesOf(filledDirectly(found->axis(), Numbers(6000, x)))) << x;
    }
    EXPECT_EQ(automatic({}, 2)->inRange().entries, 0);
    EXPECT_EQ(automatic({nan}, 2)->nanEntries(), 1);
}

TEST(AutomaticRange, refusesWhatItCannotHold) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("range", "automatic").wire("table", tableOf({{"x", {1.5e300}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("range: a value of 1.5e+300")) << bench.failure();
    bench.set("bins", "10001");
    EXPECT_TRUE(bench.failure().starts_with("bins: ")) << bench.failure();
}

TEST(AutomaticRange, yieldsToGivenEdges) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("range", "automatic").set("edges", "0 2 4");
    bench.wire("table", tableOf({{"x", {1, 9}}}, 2)).run();
    EXPECT_EQ(bench.histogram("histogram")->axis().edges(), (Numbers{0, 2, 4}));
}

TEST(AutomaticRange, keepsWeights) {
    Numbers x = normal(3000, 0, 1, 8);
    Numbers w = normal(3000, 1, 0.2, 9);
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("weight", "w").set("range", "automatic").set("bins", "10");
    bench.wire("table", tableOf({{"x", x}, {"w", w}}, 700)).run();
    const HistogramPtr found = bench.histogram("histogram");
    Histogram1D direct(found->axis());
    direct.fill(x.data(), w.data(), x.size());
    for (std::size_t bin = 0; bin < 10; ++bin) {
        EXPECT_NEAR(found->bin(bin).w, direct.bin(bin).w, 1e-10);
        EXPECT_NEAR(found->bin(bin).ww, direct.bin(bin).ww, 1e-10);
        EXPECT_NEAR(found->bin(bin).squareSum(0, 0), direct.bin(bin).squareSum(0, 0), 1e-10);
    }
}

KindHarness& twoByTwo(KindHarness& bench) {
    return bench.set("x", "a").set("y", "b").set("xbins", "2").set("xhigh", "2").set("yedges", "0 1 10");
}

TEST(Histogram2DKind, fillsCellsInsideAndOutside) {
    KindHarness bench("Histogram2D", "plane");
    twoByTwo(bench).set("weight", "w").set("yaxis", "height [m]");
    bench
        .wire(
            "table",
            tableOf({{"a", {0.5, 1.5, 1.5, -1, 1, nan}}, {"b", {0.5, 5, 5, 0.5, 10, 1}}, {"w", {1, 2, 3, 4, 5, 6}}}, 4))
        .run();
    const auto histogram = bench.object<Histogram2D>("histogram");
    const auto cell = [&](std::size_t x, std::size_t y) { return histogram->cells()[histogram->grid().cell({x, y})]; };
    EXPECT_EQ(cell(1, 1).w, 1);
    EXPECT_EQ(cell(2, 2).entries, 2);
    EXPECT_EQ(cell(2, 2).w, 5);
    EXPECT_EQ(cell(2, 2).ww, 13);
    EXPECT_EQ(cell(2, 2).sum(0), 7.5);
    EXPECT_EQ(cell(2, 2).sum(1), 25);
    EXPECT_EQ(cell(2, 2).squareSum(0, 0), 11.25);
    EXPECT_EQ(cell(2, 2).squareSum(0, 1), 37.5);
    EXPECT_EQ(cell(2, 2).squareSum(1, 1), 125);
    EXPECT_EQ(cell(0, 1).w, 4);
    EXPECT_EQ(cell(2, 3).w, 5);
    EXPECT_EQ(histogram->nanEntries(), 1);
    EXPECT_EQ(histogram->title, "plane");
    EXPECT_EQ(histogram->grid().axis(0).title, "a");
    EXPECT_EQ(histogram->grid().axis(1).title, "height [m]");
}

TEST(Histogram2DKind, takesAListBesideANumberForEachRow) {
    test::SmallTable table;
    table.schema = Schema({{.name = "a", .type = ColumnType::Real, .isList = true, .unit = ""},
                           {.name = "b", .type = ColumnType::Real, .isList = false, .unit = ""}});
    Chunk chunk{.number = 0, .firstRow = 0, .rows = 2, .columns = {}};
    chunk.columns = {
        std::make_shared<const Column>(Column{.values = Column::Reals{0.5, 1.5, 1.5}, .offsets = {0, 2, 3}}),
        std::make_shared<const Column>(Column{.values = Column::Reals{0.5, 5}, .offsets = {}})};
    table.chunks = {chunk};
    KindHarness bench("Histogram2D");
    twoByTwo(bench).wire("table", table).run();
    const auto histogram = bench.object<Histogram2D>("histogram");
    EXPECT_EQ(histogram->inRange().entries, 3);
    EXPECT_EQ(histogram->cells()[histogram->grid().cell({2, 1})].entries, 1);
    EXPECT_EQ(histogram->cells()[histogram->grid().cell({2, 2})].entries, 1);
}

TEST(Histogram2DKind, saysWhichInputIsWrong) {
    KindHarness bench("Histogram2D");
    EXPECT_EQ(bench.failure(), "table: nothing is wired");
    bench.wire("table", tableOf({{"a", {1}}, {"b", {1}}}, 2)).set("x", "a");
    EXPECT_TRUE(bench.failure().starts_with("y: ")) << bench.failure();
    bench.set("y", "b").set("yhigh", "-1");
    EXPECT_TRUE(bench.failure().starts_with("yhigh: ")) << bench.failure();
    bench.set("yhigh", "1").set("xedges", "2 1");
    EXPECT_TRUE(bench.failure().starts_with("xedges: ")) << bench.failure();
    bench.set("xedges", "").set("xbins", "1000000").set("ybins", "1000");
    EXPECT_TRUE(bench.failure().starts_with("ybins: ")) << bench.failure();
}

TEST(Histogram2DKind, aTableWithoutRowsGivesEmptyCells) {
    KindHarness bench("Histogram2D");
    twoByTwo(bench).wire("table", tableOf({{"a", {}}, {"b", {}}}, 2)).expectWarnings().run();
    EXPECT_EQ(bench.object<Histogram2D>("histogram")->inRange(), CellSums<2>{});
}

TEST(Histogram2DKind, ofManyCellsHasTheBitsOfOneFillAfterTheOther) {
    const Numbers x = normal(20000, 0.5, 0.3, 1);
    const Numbers y = normal(20000, 0.5, 0.3, 2);
    const Numbers weights = normal(20000, 1, 0.1, 3);
    Histogram2D expected(Grid<2>({Axis(300, 0, 1), Axis(300, 0, 1)}));
    expected.fill({x.data(), y.data()}, weights.data(), x.size());
    for (const std::size_t chunkLength : {20000U, 1000U, 7U}) {
        KindHarness bench("Histogram2D");
        bench.set("x", "x").set("y", "y").set("weight", "w");
        bench.set("xbins", "300").set("xhigh", "1").set("ybins", "300").set("yhigh", "1");
        bench.wire("table", tableOf({{"x", x}, {"y", y}, {"w", weights}}, chunkLength)).run();
        EXPECT_EQ(bench.object<Histogram2D>("histogram")->cells(), expected.cells()) << chunkLength;
    }
}

TEST(Histogram2DKind, ofManyCellsIsEmptyWithoutRows) {
    KindHarness bench("Histogram2D");
    bench.set("x", "a").set("y", "b").set("xbins", "300").set("ybins", "300");
    bench.wire("table", tableOf({{"a", {}}, {"b", {}}}, 2)).expectWarnings().run();
    EXPECT_EQ(bench.object<Histogram2D>("histogram")->inRange(), CellSums<2>{});
}

TEST(Histogram1DKind, ofManyBinsHasTheBitsOfOneFillAfterTheOther) {
    const Numbers x = normal(20000, 0.5, 0.3, 1);
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("bins", "40000").set("high", "1");
    bench.wire("table", tableOf({{"x", x}}, 1000)).run();
    EXPECT_EQ(bench.histogram("histogram")->cells(), filledDirectly(Axis(40000, 0, 1), x).cells());
}

TEST(Profile1DKind, averagesInBins) {
    KindHarness bench("Profile1D", "mean");
    bench.set("x", "a").set("y", "b").set("weight", "w").set("bins", "2").set("high", "2");
    bench.wire("table", tableOf({{"a", {0.5, 0.5, 0.25, nan}}, {"b", {1, 3, 8, 1}}, {"w", {1, 2, 1, 1}}}, 2)).run();
    const auto profile = bench.object<Profile1D>("profile");
    EXPECT_EQ(profile->height(1), 15.0 / 4);
    const double variance = (1 + 2 * 9 + 64) / 4.0 - 225.0 / 16;
    EXPECT_DOUBLE_EQ(profile->rms(1), std::sqrt(variance));
    EXPECT_DOUBLE_EQ(profile->error(1), std::sqrt(variance) * std::sqrt(6.0) / 4);
    EXPECT_TRUE(std::isnan(profile->height(2)));
    EXPECT_EQ(profile->nanEntries(), 1);
    EXPECT_EQ(profile->name, "mean");
    EXPECT_EQ(profile->grid().axis(0).title, "a");
}

TEST(Profile1DKind, findsItsRange) {
    const Numbers x = normal(9000, 10, 2, 6);
    const Numbers y = normal(9000, -1, 1, 7);
    KindHarness bench("Profile1D");
    bench.set("x", "x").set("y", "y").set("bins", "40").set("range", "automatic");
    bench.wire("table", tableOf({{"x", x}, {"y", y}}, 1000)).run();
    const auto found = bench.object<Profile1D>("profile");
    Profile1D direct(found->grid());
    direct.fill({x.data()}, y.data(), nullptr, x.size());
    for (std::size_t cell = 0; cell < 42; ++cell) {
        EXPECT_EQ(found->cells()[cell].entries, direct.cells()[cell].entries);
        EXPECT_NEAR(found->cells()[cell].sum(1), direct.cells()[cell].sum(1), 1e-9);
        EXPECT_NEAR(found->cells()[cell].squareSum(1, 1), direct.cells()[cell].squareSum(1, 1), 1e-9);
        EXPECT_NEAR(found->cells()[cell].sum(0), direct.cells()[cell].sum(0), 1e-7);
    }
}

TEST(Profile1DKind, refusesMistakesInItsExpressions) {
    const Kind& kind = test::shippedKind("Profile1D");
    EXPECT_NE(kind.refusal("x", "x +"), "");
    EXPECT_NE(kind.refusal("y", "*"), "");
    EXPECT_NE(kind.refusal("edges", "1 0"), "");
    EXPECT_EQ(kind.refusal("title", "x +"), "");
}

}  // namespace
