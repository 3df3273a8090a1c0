#include "KindHarness.h"

#include <velmorak/Histogram.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Reals = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(QuantileEdges, giveBinsOfEqualContent) {
    Reals values(1000);
    std::iota(values.begin(), values.end(), 1.0);
    std::shuffle(values.begin(), values.end(), std::mt19937_64(3));
    KindHarness bench("QuantileEdges");
    bench.set("expression", "x * x").set("bins", "8").wire("table", tableOf({{"x", values}}, 70)).run();
    EXPECT_EQ(bench.number("bins"), 8.0);
    KindHarness histogram("Histogram1D");
    histogram.set("expression", "x * x").set("edges", bench.text("edges"));
    histogram.wire("table", tableOf({{"x", values}}, 70)).run();
    Reals entries;
    for (const BinSums& cell : histogram.histogram("histogram")->cells()) {
        entries.push_back(static_cast<double>(cell.entries));
    }
    EXPECT_THAT(entries, ElementsAre(0, 125, 125, 125, 125, 125, 125, 125, 125, 0));
}

TEST(QuantileEdges, areFewerWhereManyValuesAreEqual) {
    KindHarness bench("QuantileEdges");
    bench.set("expression", "x").set("bins", "4").expectWarnings();
    bench.wire("table", tableOf({{"x", {1, 1, 1, 1, 1, 1, 2, 3}}}, 3)).run();
    EXPECT_LT(bench.number("bins"), 4.0);
    EXPECT_THAT(bench.warnings().at(0), HasSubstr("several edges are equal"));
    EXPECT_THAT(bench.text("edges"), HasSubstr("1 "));
}

TEST(QuantileEdges, leaveOutWhatIsNotFinite) {
    KindHarness bench("QuantileEdges");
    bench.set("expression", "x").set("bins", "1");
    bench.wire("table", tableOf({{"x", {nan, 4, infinity, 2, -infinity}}}, 2)).run();
    EXPECT_EQ(bench.text("edges"), "2 " + textOf(std::nextafter(4.0, 5.0)));
}

TEST(QuantileEdges, needValues) {
    KindHarness bench("QuantileEdges");
    bench.set("expression", "x").wire("table", tableOf({{"x", {nan}}}, 2));
    EXPECT_THAT(bench.failure(), HasSubstr("table: there are no values whose weights have a positive sum"));
    KindHarness none("QuantileEdges");
    none.set("expression", "x").wire("table", tableOf({{"x", {}}}, 2));
    EXPECT_THAT(none.failure(), HasSubstr("there are no values"));
}

}  // namespace
