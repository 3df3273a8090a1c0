#include "KindHarness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<double> heights(const Histogram1D& histogram) {
    std::vector<double> all;
    for (const BinSums& cell : histogram.cells()) {
        all.push_back(cell.w);
    }
    return all;
}

TEST(Histogram1DKind, fillsBinsUnderflowAndOverflow) {
    KindHarness bench("Histogram1D", "mass");
    bench.set("expression", "x").set("bins", "2").set("low", "0").set("high", "2");
    bench.wire("table", tableOf({{"x", {-1, 0, 0.5, 1, 1.5, 2, nan}}}, 3)).run();
    const HistogramPtr histogram = bench.histogram("histogram");
    EXPECT_EQ(heights(*histogram), (std::vector<double>{1, 2, 2, 1}));
    EXPECT_EQ(histogram->nanEntries(), 1);
    EXPECT_EQ(histogram->name, "mass");
    EXPECT_EQ(histogram->title, "mass");
    EXPECT_EQ(histogram->axis().title, "x");
}

TEST(Histogram1DKind, weightsAreSummedWithTheirSquares) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "2*x").set("weight", "w").set("bins", "1").set("high", "10");
    bench.wire("table", tableOf({{"x", {1, 2, 3}}, {"w", {0.5, -2, nan}}}, 2)).run();
    const BinSums& bin = bench.histogram("histogram")->bin(0);
    EXPECT_EQ(bin.entries, 2);
    EXPECT_EQ(bin.w, -1.5);
    EXPECT_EQ(bin.ww, 4.25);
    EXPECT_EQ(bin.sum(0), -7.0);
    EXPECT_EQ(bench.histogram("histogram")->nanEntries(), 1);
}

TEST(Histogram1DKind, edgesReplaceBinsLowAndHigh) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("edges", "0, 1 10\t100").set("low", "5").set("high", "4");
    bench.wire("table", tableOf({{"x", {0.5, 5, 50, 99}}}, 2)).run();
    const HistogramPtr histogram = bench.histogram("histogram");
    EXPECT_EQ(histogram->axis().edges(), (std::vector<double>{0, 1, 10, 100}));
    EXPECT_EQ(heights(*histogram), (std::vector<double>{0, 1, 1, 2, 0}));
}

TEST(Histogram1DKind, refusesEdgesThatDoNotAscend) {
    const Kind& kind = test::shippedKind("Histogram1D");
    EXPECT_EQ(kind.refusal("edges", ""), "");
    EXPECT_EQ(kind.refusal("edges", " "), "");
    EXPECT_EQ(kind.refusal("edges", "1,2,4"), "");
    for (const std::string edges : {"1", "1 1", "2 1", "1 two", "1 NaN", "1 Infinity"}) {
        EXPECT_NE(kind.refusal("edges", edges), "") << edges;
    }
}

TEST(Histogram1DKind, refusesMistakesInItsExpressions) {
    const Kind& kind = test::shippedKind("Histogram1D");
    EXPECT_NE(kind.refusal("expression", "x +"), "");
    EXPECT_NE(kind.refusal("weight", ")"), "");
    EXPECT_EQ(kind.refusal("weight", ""), "");
    EXPECT_EQ(kind.refusal("title", "a ) b"), "");
}

TEST(Histogram1DKind, saysWhichInputIsWrong) {
    KindHarness bench("Histogram1D");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("expression: ")) << bench.failure();
    bench.set("expression", "x").set("low", "3").set("high", "3");
    EXPECT_TRUE(bench.failure().starts_with("high: ")) << bench.failure();
    bench.set("high", "4").set("weight", "\"heavy\"");
    EXPECT_TRUE(bench.failure().starts_with("weight: ")) << bench.failure();
}

TEST(Histogram1DKind, theAxisShowsTheUnitOfTheColumn) {
    test::SmallTable table;
    table.schema = Schema({{.name = "pt", .type = ColumnType::Real, .isList = false, .unit = "GeV"}});
    KindHarness bench("Histogram1D");
    bench.set("expression", "pt").wire("table", table).expectWarnings().run();
    EXPECT_EQ(bench.histogram("histogram")->axis().title, "pt [GeV]");
    bench.set("expression", "2 * pt").run();
    EXPECT_EQ(bench.histogram("histogram")->axis().title, "2 * pt");
    bench.set("axis", "momentum [GeV]").set("title", "All muons").run();
    EXPECT_EQ(bench.histogram("histogram")->axis().title, "momentum [GeV]");
    EXPECT_EQ(bench.histogram("histogram")->title, "All muons");
}

TEST(Histogram1DKind, aTableWithoutRowsGivesAnEmptyHistogram) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("bins", "3").wire("table", tableOf({{"x", {}}}, 2)).expectWarnings().run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (std::vector<double>{0, 0, 0, 0, 0}));
    EXPECT_EQ(bench.warnings(), std::vector<std::string>{"it has no entries"});
}

TEST(Histogram1DKind, withoutEntriesInItsRangeWarnsOnce) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "x").set("bins", "3").set("low", "0").set("high", "1");
    bench.wire("table", tableOf({{"x", {2, -1, std::numeric_limits<double>::quiet_NaN()}}}, 2)).expectWarnings().run();
    EXPECT_EQ(bench.warnings(), std::vector<std::string>{"it has no entries in its range: 2 outside, 1 with NaN"});
}

test::SmallTable listTable() {
    test::SmallTable table;
    table.schema = Schema({{.name = "hits", .type = ColumnType::Real, .isList = true, .unit = ""},
                           {.name = "w", .type = ColumnType::Real, .isList = false, .unit = ""}});
    Chunk chunk{.number = 0, .firstRow = 0, .rows = 3, .columns = {}};
    chunk.columns.push_back(
        std::make_shared<const Column>(Column{.values = Column::Reals{0.5, 1.5, 1.25}, .offsets = {0, 2, 2, 3}}));
    chunk.columns.push_back(std::make_shared<const Column>(Column{.values = Column::Reals{2, 3, 4}, .offsets = {}}));
    table.chunks = {chunk};
    return table;
}

TEST(Histogram1DKind, aListGivesAllItsValuesWithTheWeightOfTheirRow) {
    KindHarness bench("Histogram1D");
    bench.set("expression", "hits").set("weight", "w").set("bins", "2").set("high", "2");
    bench.wire("table", listTable()).run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (std::vector<double>{0, 2, 6, 0}));
    EXPECT_TRUE(bench.set("expression", "w").set("weight", "hits").failure().starts_with("weight: "));
}

TEST(StatisticsKind, givesTheMomentsOfATable) {
    KindHarness bench("Statistics");
    bench.set("expression", "x").set("weight", "w");
    bench.wire("data", tableOf({{"x", {1, 2, 4, nan}}, {"w", {1, 1, 2, 1}}}, 2)).run();
    EXPECT_EQ(bench.number("entries"), 3);
    EXPECT_EQ(bench.number("weights"), 4);
    EXPECT_EQ(bench.number("sum"), 11);
    EXPECT_EQ(bench.number("mean"), 2.75);
    EXPECT_DOUBLE_EQ(bench.number("rms"), std::sqrt((1.75 * 1.75 + 0.75 * 0.75 + 2 * 1.25 * 1.25) / 4));
    EXPECT_EQ(bench.number("minimum"), 1);
    EXPECT_EQ(bench.number("maximum"), 4);
    EXPECT_EQ(bench.number("nan"), 1);
}

TEST(StatisticsKind, givesTheExactMomentsOfAHistogram) {
    auto histogram = std::make_shared<Histogram1D>(Axis(1, 0, 10));
    for (const double x : {1.0, 2.0, 4.0, 99.0, nan}) {
        histogram->fill(x, 0.5);
    }
    KindHarness bench("Statistics");
    bench.wire("data", DataObjectPtr(histogram)).run();
    EXPECT_EQ(bench.number("entries"), 3);
    EXPECT_EQ(bench.number("weights"), 1.5);
    EXPECT_EQ(bench.number("sum"), 3.5);
    EXPECT_DOUBLE_EQ(bench.number("mean"), 7.0 / 3.0);
    EXPECT_DOUBLE_EQ(bench.number("rms"), std::sqrt(7.0 - 49.0 / 9.0));
    EXPECT_EQ(bench.number("nan"), 1);
    EXPECT_TRUE(std::isnan(bench.number("minimum")));
}

TEST(StatisticsKind, nothingHasNoMean) {
    KindHarness bench("Statistics");
    bench.set("expression", "x").wire("data", tableOf({{"x", {}}}, 2)).run();
    EXPECT_EQ(bench.number("entries"), 0);
    EXPECT_TRUE(std::isnan(bench.number("mean")));
    EXPECT_TRUE(std::isnan(bench.number("rms")));
}

TEST(StatisticsKind, saysThatNothingIsWired) {
    KindHarness bench("Statistics");
    EXPECT_TRUE(bench.failure().starts_with("data: ")) << bench.failure();
}

}  // namespace
