#include "KindHarness.h"

#include "PlainSums.h"

#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

// Figures with many digits come from SciPy 1.10: chi2_contingency without correction, chi2.sf, kstwobign.sf, and
// binomtest(3, 10).proportion_ci(method="wilson") at the level of one standard deviation.
namespace {

using namespace velmorak;
using test::KindHarness;

using Numbers = std::vector<double>;

/// A histogram over unit bins from 0 with so many fills in the middle of each, of a weight.
std::shared_ptr<Histogram1D> counts(const std::vector<int>& fills, double weight = 1.0) {
    auto histogram = std::make_shared<Histogram1D>(Axis(fills.size(), 0, static_cast<double>(fills.size())));
    for (std::size_t bin = 0; bin < fills.size(); ++bin) {
        for (int i = 0; i < fills[bin]; ++i) {
            histogram->fill(static_cast<double>(bin) + 0.5, weight);
        }
    }
    histogram->title = "counts";
    histogram->setAxisTitle("x [cm]");
    return histogram;
}

std::shared_ptr<Histogram2D> plane() {
    auto histogram = std::make_shared<Histogram2D>(Grid<2>({Axis(2, 0, 2), Axis(2, 0, 4)}));
    histogram->fill({0.5, 1.0}, 2);
    histogram->fill({0.5, 3.0}, 3);
    histogram->fill({1.5, 3.0}, 4);
    histogram->fill({0.5, 9.0}, 5);
    histogram->fill({-1.0, 1.0}, 6);
    histogram->setAxisTitle(0, "across");
    return histogram;
}

Numbers heights(const Histogram1D& histogram) {
    Numbers all;
    for (const BinSums& cell : histogram.cells()) {
        all.push_back(cell.w);
    }
    return all;
}

KindHarness& with(KindHarness& bench, const std::string& input, DataObjectPtr object) {
    return bench.wire(input, std::move(object));
}

TEST(RebinKind, joinsNeighboursByAFactor) {
    auto given = counts({1, 2, 3, 4});
    given->fill(-1);
    given->fill(9);
    KindHarness bench("Rebin", "wide");
    with(bench, "histogram", given).run();
    const HistogramPtr made = bench.histogram("histogram");
    EXPECT_EQ(heights(*made), (Numbers{1, 3, 7, 1}));
    EXPECT_EQ(made->axis().edges(), (Numbers{0, 2, 4}));
    EXPECT_EQ(made->bin(1).sum(0), 3 * 2.5 + 4 * 3.5);
    EXPECT_EQ(made->bin(1).squareSum(0, 0), 3 * 6.25 + 4 * 12.25);
    EXPECT_EQ(made->axis().title, "x [cm]");
    EXPECT_EQ(made->name, "wide");
    EXPECT_EQ(made->title, "counts");
}

TEST(RebinKind, takesEdgesThatAreThere) {
    KindHarness bench("Rebin");
    with(bench, "histogram", counts({1, 2, 3, 4})).set("edges", "1 3").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{1, 5, 4}));
    EXPECT_EQ(bench.set("edges", "0 1.5").failure(), "edges: no bin of the histogram has an edge at 1.5");
}

TEST(RebinKind, knowsAnEdgeByTheDigitsThatOneWrites) {
    auto given = std::make_shared<Histogram1D>(Axis(10, 0, 1));
    KindHarness bench("Rebin");
    with(bench, "histogram", given).set("edges", "0.3 0.6 0.7").run();
    EXPECT_EQ(bench.histogram("histogram")->axis().edges(),
              (Numbers{given->axis().edges()[3], given->axis().edges()[6], given->axis().edges()[7]}));
}

TEST(RebinKind, refusesAFactorThatLeavesARest) {
    KindHarness bench("Rebin");
    EXPECT_EQ(bench.failure(), "histogram: nothing is wired");
    with(bench, "histogram", counts({1, 2, 3}));
    EXPECT_EQ(bench.failure(), "factor: 3 bins cannot be joined in groups of 2");
    EXPECT_NE(bench.kind().refusal("yedges", "2 1"), "");
}

TEST(RebinKind, joinsAPlaneAlongEachAxis) {
    KindHarness bench("Rebin");
    with(bench, "histogram", plane()).set("factor", "1").set("yfactor", "2").run();
    const auto made = bench.object<Histogram2D>("histogram");
    EXPECT_EQ(made->cells()[made->grid().cell({1, 1})].w, 5);
    EXPECT_EQ(made->cells()[made->grid().cell({1, 2})].w, 5);
    EXPECT_EQ(made->cells()[made->grid().cell({0, 1})].w, 6);
    EXPECT_EQ(made->grid().axis(0).title, "across");
}

TEST(ScaleKind, multipliesAllSums) {
    KindHarness bench("Scale");
    with(bench, "histogram", counts({4})).set("factor", "-0.5").run();
    EXPECT_EQ(plain(bench.histogram("histogram")->bin(0)), (PlainSums{4, -2, 1, -1, -0.5}));
}

TEST(ScaleKind, bringsSumAndAreaToANumber) {
    auto given = std::make_shared<Histogram1D>(Axis(Numbers{0, 1, 5}));
    given->fill(0.5, 2);
    given->fill(2, 6);
    given->fill(7, 6);
    KindHarness bench("Scale");
    with(bench, "histogram", given).set("mode", "sum").set("factor", "4").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 1, 3, 3}));
    bench.set("mode", "area").set("factor", "13").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 1, 3, 3}));
    bench.set("mode", "width").set("factor", "1").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 2, 1.5, 6}));
    EXPECT_EQ(bench.histogram("histogram")->error(1), 1.5);
}

TEST(ScaleKind, refusesWhatHasNoSum) {
    KindHarness bench("Scale");
    with(bench, "histogram", counts({0, 0})).set("mode", "sum");
    EXPECT_EQ(bench.failure(), "histogram: its sum is 0, which cannot be scaled to 1");
    EXPECT_TRUE(bench.set("factor", "NaN").failure().starts_with("factor: "));
}

TEST(ScaleKind, dividesAPlaneByBothWidths) {
    KindHarness bench("Scale");
    with(bench, "histogram", plane()).set("mode", "width").run();
    const auto made = bench.object<Histogram2D>("histogram");
    EXPECT_EQ(made->cells()[made->grid().cell({2, 2})].w, 2);
    EXPECT_EQ(made->cells()[made->grid().cell({0, 1})].w, 6);
}

struct Combining {
    Combining(const std::string& operation, DataObjectPtr first, DataObjectPtr second) : bench("Combine") {
        bench.wire("first", std::move(first)).wire("second", std::move(second)).set("operation", operation);
    }
    HistogramPtr made() {
        bench.run();
        return bench.histogram("histogram");
    }
    KindHarness bench;
};

TEST(CombineKind, addsAndSubtractsAllSums) {
    Combining add("add", counts({1, 2}), counts({3, 4}, 0.5));
    EXPECT_EQ(heights(*add.made()), (Numbers{0, 2.5, 4, 0}));
    EXPECT_EQ(plain(add.made()->bin(1)), (PlainSums{6, 4, 3, 6, 9}));
    Combining subtract("subtract", counts({1, 2}), counts({3, 4}));
    subtract.bench.set("factor", "0.5");
    EXPECT_EQ(plain(subtract.made()->bin(1)), (PlainSums{6, 0, 3, 0, 0}));
    EXPECT_EQ(subtract.made()->height(0), -0.5);
}

TEST(CombineKind, multipliesAndDividesWithIndependentErrors) {
    Combining multiply("multiply", counts({4}), counts({9}));
    EXPECT_EQ(multiply.made()->height(0), 36);
    EXPECT_DOUBLE_EQ(multiply.made()->error(0), 36 * std::sqrt(1.0 / 4 + 1.0 / 9));
    EXPECT_EQ(multiply.made()->mean(), 0.5);
    Combining divide("divide", counts({4, 1}), counts({9, 0}));
    EXPECT_DOUBLE_EQ(divide.made()->error(0), 4.0 / 9 * std::sqrt(1.0 / 4 + 1.0 / 9));
    EXPECT_EQ(divide.made()->height(1), 0);
    EXPECT_EQ(divide.bench.object<Points>("points")->size(), 1U);
}

TEST(CombineKind, givesEfficienciesTheirIntervals) {
    Combining wilson("wilson", counts({3, 0, 10, 0}), counts({10, 10, 10, 0}));
    wilson.made();
    const auto points = wilson.bench.object<Points>("points");
    ASSERT_EQ(points->size(), 3U);
    EXPECT_EQ(points->measurement(0, 0), (Measurement{0.5, 0.5, 0.5}));
    EXPECT_DOUBLE_EQ(points->measurement(0, 1).value - points->measurement(0, 1).errorMinus, 0.17882082075676461);
    EXPECT_DOUBLE_EQ(points->measurement(0, 1).value + points->measurement(0, 1).errorPlus, 0.4575428156068717);
    EXPECT_EQ(points->measurement(1, 1).errorMinus, 0);
    EXPECT_DOUBLE_EQ(points->measurement(1, 1).errorPlus, 1.0 / 11);
    EXPECT_NEAR(points->measurement(2, 1).errorPlus, 0, 1e-15);
    Combining binomial("binomial", counts({3}), counts({10}));
    EXPECT_DOUBLE_EQ(binomial.made()->error(0), std::sqrt(0.3 * 0.7 / 10));
    binomial.bench.set("deviations", "2").run();
    EXPECT_DOUBLE_EQ(binomial.bench.object<Points>("points")->measurement(0, 1).errorPlus,
                     2 * std::sqrt(0.3 * 0.7 / 10));
}

TEST(CombineKind, anEfficiencyDoesNotChangeWithACommonWeight) {
    for (const std::string method : {"binomial", "wilson"}) {
        Combining plain(method, counts({3}), counts({10}));
        Combining weighted(method, counts({3}, 0.25), counts({10}, 0.25));
        EXPECT_DOUBLE_EQ(plain.made()->error(0), weighted.made()->error(0));
        EXPECT_DOUBLE_EQ(plain.bench.object<Points>("points")->measurement(0, 1).errorPlus,
                         weighted.bench.object<Points>("points")->measurement(0, 1).errorPlus);
    }
}

TEST(CombineKind, refusesWhatDoesNotFit) {
    EXPECT_EQ(Combining("add", counts({1, 2}), counts({1})).bench.failure(),
              "second: \"source\" has 2 bins from 0 to 2 and \"source\" has 1 bins from 0 to 1; they must be equal");
    EXPECT_TRUE(Combining("add", counts({1}), plane()).bench.failure().ends_with("different numbers of axes"));
    EXPECT_TRUE(Combining("wilson", counts({3}), counts({2})).bench.failure().starts_with("first: a bin has"));
    auto points = std::make_shared<Points>(1, std::vector<Measurement>{});
    EXPECT_EQ(Combining("add", points, counts({1})).bench.failure(), "first: expected a histogram");
}

TEST(CombineKind, combinesPlanes) {
    Combining combining("divide", plane(), plane());
    combining.bench.run();
    const auto made = combining.bench.object<Histogram2D>("histogram");
    EXPECT_EQ(made->cells()[made->grid().cell({1, 2})].w, 1);
    EXPECT_EQ(made->cells()[made->grid().cell({0, 1})].w, 0);
    EXPECT_EQ(combining.bench.object<Points>("points")->dimension(), 3U);
    EXPECT_EQ(combining.bench.object<Points>("points")->size(), 3U);
}

TEST(ProjectKind, addsUpEverythingAcross) {
    KindHarness bench("Project");
    with(bench, "histogram", plane()).run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{6, 10, 4, 0}));
    EXPECT_EQ(bench.histogram("histogram")->axis().title, "across");
    EXPECT_EQ(bench.object<Profile1D>("profile")->height(1), (2 * 1.0 + 3 * 3.0 + 5 * 9.0) / 10);
}

TEST(ProjectKind, takesARangeOfTheOtherAxis) {
    KindHarness bench("Project");
    with(bench, "histogram", plane()).set("low", "2").set("high", "4").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 3, 4, 0}));
    bench.set("axis", "y").set("low", "0").set("high", "1").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 2, 3, 5}));
    EXPECT_TRUE(bench.set("high", "0").failure().starts_with("high: "));
}

TEST(ProjectKind, takesPlanesOnly) {
    KindHarness bench("Project");
    EXPECT_EQ(with(bench, "histogram", counts({1})).failure(),
              "histogram: a one-dimensional histogram cannot be projected");
}

TEST(CumulativeKind, sumsUpFromEitherEnd) {
    auto given = counts({1, 2, 3});
    given->fill(-1);
    given->fill(7, 2);
    KindHarness bench("Cumulative");
    with(bench, "histogram", given).run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 1, 3, 6, 0}));
    EXPECT_EQ(plain(bench.histogram("histogram")->bin(2)), (PlainSums{6, 6, 6, 15, 37.5}));
    bench.set("direction", "backward").set("outside", "yes").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 8, 7, 5, 0}));
    bench.set("direction", "forward").run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 2, 4, 7, 0}));
}

TEST(CumulativeKind, takesOneDimensionOnly) {
    KindHarness bench("Cumulative");
    EXPECT_TRUE(with(bench, "histogram", plane()).failure().starts_with("histogram: "));
}

TEST(CompareKind, givesThePublishedTestsOfCounts) {
    KindHarness bench("Compare");
    with(bench, "first", counts({10, 20, 30}));
    with(bench, "second", counts({15, 15, 40})).run();
    EXPECT_DOUBLE_EQ(bench.number("chisquare"), 2.3877551020408165);
    EXPECT_EQ(bench.number("ndf"), 2);
    EXPECT_DOUBLE_EQ(bench.number("probability"), 0.30304391468510006);
    EXPECT_DOUBLE_EQ(bench.number("distance"), 0.07142857142857145);
    EXPECT_NEAR(bench.number("ksprobability"), 0.9965317558379061, 1e-14);
    bench.set("test", "heights").run();
    EXPECT_DOUBLE_EQ(bench.number("chisquare"), 3.1428571428571432);
    EXPECT_EQ(bench.number("ndf"), 3);
    EXPECT_NEAR(bench.number("probability"), 0.37011953457983743, 1e-14);
}

TEST(CompareKind, takesWeightsByTheirErrors) {
    KindHarness bench("Compare");
    with(bench, "first", counts({10, 20, 30}, 0.5));
    with(bench, "second", counts({15, 15, 40})).run();
    EXPECT_DOUBLE_EQ(bench.number("chisquare"), 2.342364707183834);
    EXPECT_DOUBLE_EQ(bench.number("probability"), 0.3100001946524798);
    EXPECT_NEAR(bench.number("ksprobability"), 0.9965317558379061, 1e-14);
}

TEST(CompareKind, givesTheKolmogorovDistributionOnBothSidesOfItsSeries) {
    // With 2 m fills in each, t = D root of m; the fills lie in two bins, m (1 +- D) in the first.
    for (const auto& [difference, m, expected] :
         {std::tuple{3, 100, 0.9999906941988655}, {15, 100, 0.022217962616525127}, {10, 100, 0.26999967167735456}}) {
        KindHarness bench("Compare");
        with(bench, "first", counts({m + difference, m - difference}));
        with(bench, "second", counts({m - difference, m + difference})).run();
        EXPECT_NEAR(bench.number("ksprobability"), expected, 1e-12) << difference;
    }
}

TEST(CompareKind, likesAHistogramWithItself) {
    KindHarness bench("Compare");
    with(bench, "first", counts({5, 6, 0}));
    with(bench, "second", counts({5, 6, 0})).run();
    EXPECT_EQ(bench.number("chisquare"), 0);
    EXPECT_EQ(bench.number("ndf"), 1);
    EXPECT_EQ(bench.number("probability"), 1);
    EXPECT_EQ(bench.number("ksprobability"), 1);
}

TEST(CompareKind, refusesWhatCannotBeCompared) {
    KindHarness bench("Compare");
    with(bench, "first", counts({1, 2}));
    EXPECT_EQ(bench.failure(), "second: nothing is wired");
    EXPECT_TRUE(with(bench, "second", counts({1})).failure().starts_with("second: \"source\" has 2 bins"));
    EXPECT_EQ(with(bench, "second", counts({0, 0})).failure(),
              "second: it cannot be compared: its heights add up to 0");
}

}  // namespace
