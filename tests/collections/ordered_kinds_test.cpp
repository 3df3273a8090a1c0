#include "KindHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <set>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;

using Reals = std::vector<double>;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Equal numbers, or both NaN.
void expectSame(const Reals& found, const Reals& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_TRUE(found[i] == expected[i] || (std::isnan(found[i]) && std::isnan(expected[i])))
            << "row " << i << ": " << found[i] << ", expected " << expected[i];
    }
}

Reals windowOf(const SmallTable& table, const ValueTexts& values) {
    KindHarness bench("Window");
    for (const auto& [input, value] : values) {
        bench.set(input, value);
    }
    bench.wire("table", table).run();
    return bench.table().column("result");
}

TEST(Unique, keepsTheFirstRowOfEachKeyInAllChunks) {
    KindHarness bench("Unique");
    bench.set("by", "run; event")
        .wire("table",
              tableOf({{"run", {1, 1, 1, 2, 1, 2}}, {"event", {5, 6, 5, 5, 6, 5}}, {"x", {0, 1, 2, 3, 4, 5}}}, 2))
        .run();
    EXPECT_EQ(bench.table().column("x"), (Reals{0, 1, 3}));
}

TEST(Unique, comparesAllColumnsUnlessKeysAreGiven) {
    KindHarness bench("Unique");
    bench.wire("table", tableOf({{"x", {1, 1, nan, -0.0, nan, 0.0}}, {"y", {2, 3, 1, 1, 1, 1}}}, 4)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{2, 3, 1, 1}));  // NaN equals NaN, and -0 equals 0.
}

TEST(Unique, agreesWithASetOnManyRows) {
    std::mt19937_64 random(3);
    Reals x(30'000);
    std::generate(x.begin(), x.end(), [&] { return static_cast<double>(random() % 5000); });
    std::set<double> known;
    Reals expected;
    for (const double value : x) {
        if (known.insert(value).second) {
            expected.push_back(value);
        }
    }
    KindHarness bench("Unique");
    bench.set("by", "x").wire("table", tableOf({{"x", x}}, 1000)).run();
    EXPECT_EQ(bench.table().column("x"), expected);
}

TEST(Unique, saysWhenItsKeysDoNotFitIntoTheMemory) {
    KindHarness bench("Unique");
    bench.limitMemory(100).set("by", "x").wire("table", tableOf({{"x", {1, 2, 3, 4}}}, 2));
    EXPECT_EQ(bench.failure(),
              "by: there are more different keys than fit into the memory (3 so far); set VELMORAK_MEMORY_LIMIT to "
              "more, or use fewer or shorter keys");
}

TEST(Sample, keepsTheSameRowsForTheSameSeed) {
    Reals x(20'000);
    std::iota(x.begin(), x.end(), 0.0);
    const auto sample = [&](const std::string& fraction, const std::string& seed, std::size_t chunk) {
        KindHarness bench("Sample");
        bench.set("fraction", fraction).set("seed", seed).wire("table", tableOf({{"x", x}}, chunk)).run();
        return bench.table().column("x");
    };
    const Reals some = sample("0.25", "7", 1000);
    EXPECT_EQ(sample("0.25", "7", 333), some);
    EXPECT_NE(sample("0.25", "8", 1000), some);
    EXPECT_NEAR(static_cast<double>(some.size()), 5000, 5 * std::sqrt(20'000 * 0.25 * 0.75));
    const Reals fewer = sample("0.1", "7", 1000);
    EXPECT_TRUE(std::includes(some.begin(), some.end(), fewer.begin(), fewer.end()));
    EXPECT_EQ(sample("1", "7", 1000), x);
    EXPECT_EQ(sample("0", "7", 1000), Reals{});
}

TEST(Sample, keepsEveryNthRowAcrossChunks) {
    KindHarness bench("Sample");
    bench.set("mode", "every").set("every", "3").wire("table", tableOf({{"x", {0, 1, 2, 3, 4, 5, 6, 7}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{0, 3, 6}));
}

TEST(Rename, canExchangeNames) {
    KindHarness bench("Rename");
    bench.set("names", "x -> y; y -> x, `z 1` -> z").wire("table", tableOf({{"x", {1}}, {"y", {2}}, {"z 1", {3}}}, 2));
    bench.run();
    EXPECT_EQ(bench.table().column("y"), (Reals{1}));
    EXPECT_EQ(bench.table().column("x"), (Reals{2}));
    EXPECT_EQ(bench.table().column("z"), (Reals{3}));
}

TEST(Rename, saysWhatIsWrong) {
    KindHarness bench("Rename");
    bench.wire("table", tableOf({{"x", {1}}, {"y", {2}}}, 2));
    EXPECT_EQ(bench.set("names", "z -> w").failure(), "names: there is no column \"z\"; the columns are \"x\", \"y\"");
    EXPECT_EQ(bench.set("names", "x -> y").failure(), "names: there would be two columns \"y\"");
    EXPECT_EQ(bench.set("names", "x -> w; x -> v").failure(), "names: column \"x\" is listed twice");
    EXPECT_EQ(bench.set("names", "x").failure(), "names: \"x\" has no arrow; write: old -> new");
    EXPECT_EQ(bench.kind().refusal("names", "x ->"), "a name is missing in \"x ->\"; write: old -> new");
    EXPECT_EQ(bench.kind().refusal("names", "x -> 2x"),
              "\"2x\" is not a valid name for a column: expressions could not refer to it");
}

TEST(Tail, keepsTheLastRowsOfSeveralChunks) {
    const auto tail = [](const std::string& rows) {
        KindHarness bench("Tail");
        bench.set("rows", rows).wire("table", tableOf({{"x", {0, 1, 2, 3, 4, 5, 6}}}, 2)).run();
        return bench.table().column("x");
    };
    EXPECT_EQ(tail("3"), (Reals{4, 5, 6}));
    EXPECT_EQ(tail("1"), (Reals{6}));
    EXPECT_EQ(tail("0"), Reals{});
    EXPECT_EQ(tail("100"), (Reals{0, 1, 2, 3, 4, 5, 6}));
}

TEST(Tail, saysWhenItsRowsDoNotFitIntoTheMemory) {
    KindHarness bench("Tail");
    bench.limitMemory(100).set("rows", "5").wire("table", tableOf({{"x", {0, 1, 2, 3, 4, 5, 6}}}, 2));
    EXPECT_EQ(bench.failure().substr(0, 41), "rows: the last 4 rows do not fit into the");
}

TEST(Window, meansAndSumsAreOfTheLastRows) {
    const SmallTable table = tableOf({{"x", {1, 2, 3, 4, 5}}}, 2);
    EXPECT_EQ(windowOf(table, {{"expression", "x"}, {"rows", "3"}}), (Reals{1, 1.5, 2, 3, 4}));
    EXPECT_EQ(windowOf(table, {{"expression", "x"}, {"rows", "3"}, {"function", "sum"}}), (Reals{1, 3, 6, 9, 12}));
    EXPECT_EQ(windowOf(table, {{"expression", "2*x"}, {"function", "cumulative"}}), (Reals{2, 6, 12, 20, 30}));
    EXPECT_EQ(windowOf(table, {{"expression", "x"}, {"rows", "1"}}), (Reals{1, 2, 3, 4, 5}));
    expectSame(windowOf(table, {{"expression", "x*x"}, {"function", "difference"}}), {nan, 3, 5, 7, 9});
}

TEST(Window, eachKeyHasAWindowOfItsOwn) {
    const SmallTable table = tableOf({{"x", {1, 10, 2, 20, 3, 30}}, {"run", {1, 2, 1, 2, 1, 2}}}, 4);
    EXPECT_EQ(windowOf(table, {{"expression", "x"}, {"by", "run"}, {"function", "cumulative"}}),
              (Reals{1, 10, 3, 30, 6, 60}));
    expectSame(windowOf(table, {{"expression", "x"}, {"by", "run"}, {"function", "difference"}}),
               {nan, nan, 1, 10, 1, 10});
}

TEST(Window, leavesMissingValuesOut) {
    const SmallTable table = tableOf({{"x", {1, nan, 3, nan, nan, 5}}}, 2);
    expectSame(windowOf(table, {{"expression", "x"}, {"rows", "2"}}), {1, nan, 3, nan, nan, 5});
    expectSame(windowOf(table, {{"expression", "x"}, {"rows", "3"}}), {1, nan, 2, nan, nan, 5});
    expectSame(windowOf(table, {{"expression", "x"}, {"function", "cumulative"}}), {1, nan, 4, nan, nan, 9});
    expectSame(windowOf(table, {{"expression", "x"}, {"function", "difference"}}), {nan, nan, nan, nan, nan, nan});
}

TEST(Window, forgetsAnInfinityThatHasLeftIt) {
    const SmallTable table = tableOf({{"x", {1, infinity, 3, 4, 1e300, 1, 2}}}, 3);
    EXPECT_EQ(windowOf(table, {{"expression", "x"}, {"rows", "2"}, {"function", "sum"}}),
              (Reals{1, infinity, infinity, 7, 1e300, 1e300, 3}));
}

TEST(Window, agreesWithSumsOfEachWindowOnManyRows) {
    std::mt19937_64 random(11);
    std::normal_distribution<double> gauss;
    Reals x(5000);
    std::generate(x.begin(), x.end(), [&] { return gauss(random); });
    const Reals found = windowOf(tableOf({{"x", x}}, 100), {{"expression", "x"}, {"rows", "37"}, {"function", "sum"}});
    for (std::size_t row = 0; row < x.size(); ++row) {
        const std::size_t first = row < 36 ? 0 : row - 36;
        double sum = 0.0;
        for (std::size_t i = first; i <= row; ++i) {
            sum += x[i];
        }
        ASSERT_NEAR(found[row], sum, 1e-12) << row;
    }
}

TEST(Window, refusesTextsAndLists) {
    SmallTable table;
    table.schema = Schema({{"name", ColumnType::Text, false, ""}});
    KindHarness bench("Window");
    bench.wire("table", table).set("expression", "name");
    EXPECT_EQ(bench.failure(), "expression: \"name\" is a text in each row; expected a number");
    EXPECT_EQ(bench.set("expression", "").failure(), "expression: the expression is empty");
}

SmallTable resampled(KindHarness& bench, const Reals& times, const Reals& values) {
    bench.wire("table", tableOf({{"t", times}, {"v", values}}, 2)).set("time", "t").run();
    return bench.table();
}

TEST(Resample, meansAreOfTheRowsInEachStep) {
    KindHarness bench("Resample");
    const SmallTable made = resampled(bench.set("step", "10"), {1, 2, 35, 9.5, 10, nan}, {1, 3, 7, nan, 5, 100});
    EXPECT_EQ(made.column("t"), (Reals{5, 15, 25, 35}));
    expectSame(made.column("v"), {2, 5, nan, 7});
    EXPECT_EQ(made.column("rows"), (Reals{3, 1, 0, 1}));
    EXPECT_EQ(bench.number("missing"), 1);
}

TEST(Resample, interpolatesBetweenTheRows) {
    KindHarness bench("Resample");
    const SmallTable made =
        resampled(bench.set("step", "2").set("method", "interpolate"), {1, 3, 4, 5, 9}, {10, 30, nan, 50, 90});
    EXPECT_EQ(made.column("t"), (Reals{2, 4, 6, 8}));
    expectSame(made.column("v"), {20, 40, 60, 80});
}

TEST(Resample, goesThroughTheRowsThatLieOnItsGrid) {
    KindHarness bench("Resample");
    const SmallTable made = resampled(bench.set("step", "0.1").set("origin", "0.3").set("method", "interpolate"),
                                      {0.3, 0.4, 0.5}, {1, 5, 2});
    expectSame(made.column("v"), {1, 5, 2});
}

TEST(Resample, saysWhereTheTimesFall) {
    KindHarness bench("Resample");
    bench.set("method", "interpolate")
        .set("time", "t")
        .wire("table", tableOf({{"t", {1, 2, 1.5}}, {"v", {1, 2, 3}}}, 2));
    EXPECT_EQ(bench.failure(),
              "time: the times fall, from 2 to 1.5, in the part of the table that begins with row 2; sort the table by "
              "the time");
}

TEST(Resample, refusesSeriesWithoutEnd) {
    KindHarness bench("Resample");
    bench.set("step", "1e-9").set("time", "t").wire("table", tableOf({{"t", {0, 1e6}}, {"v", {1, 2}}}, 2));
    EXPECT_EQ(bench.failure(), "step: the series would have more than a thousand million steps; enter a longer step");
    EXPECT_EQ(bench.set("step", "0").failure(), "step: step and origin must be finite, and the step larger than 0");
    bench.set("step", "1").limitMemory(1000);
    EXPECT_EQ(bench.failure(),
              "step: the series has more steps than fit into the memory; enter a longer step, or set "
              "VELMORAK_MEMORY_LIMIT to more");
}

}  // namespace
