#include "KindHarness.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Profile.h>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;

using Numbers = std::vector<double>;

/// Two bins from 0 to 2 along each axis.
KindHarness& twoBins(KindHarness& bench, const std::string& letters) {
    for (const char letter : letters) {
        const std::string prefix(1, letter);
        bench.set(prefix + "bins", "2").set(prefix + "low", "0").set(prefix + "high", "2");
    }
    return bench.set("x", "a").set("y", "b").set("z", "c");
}

test::SmallTable points(std::size_t chunkLength) {
    return tableOf({{"a", {0.5, 1.5, 1.75, -1.0, 0.5}},
                    {"b", {0.5, 0.5, 0.25, 0.5, 1.5}},
                    {"c", {1.5, 1.0, 1.5, 0.5, std::nan("")}},
                    {"w", {1, 2, 3, 4, 5}}},
                   chunkLength);
}

TEST(Histogram3DKind, fillsCellsInsideAndOutside) {
    KindHarness bench("Histogram3D", "space");
    twoBins(bench, "xyz").set("weight", "w").set("zaxis", "depth [m]").wire("table", points(2)).run();
    const auto histogram = bench.object<Histogram3D>("histogram");
    const auto cell = [&](std::size_t x, std::size_t y, std::size_t z) {
        return histogram->cells()[histogram->grid().cell({x, y, z})];
    };
    EXPECT_EQ(cell(1, 1, 2).w, 1);
    EXPECT_EQ(cell(2, 1, 2).entries, 2);
    EXPECT_EQ(cell(2, 1, 2).sum(0), 2 * 1.5 + 3 * 1.75);
    EXPECT_EQ(cell(2, 1, 2).squareSum(1, 2), 2 * 0.5 * 1.0 + 3 * 0.25 * 1.5);
    EXPECT_EQ(cell(0, 1, 1).w, 4);
    EXPECT_EQ(histogram->nanEntries(), 1);
    EXPECT_EQ(histogram->title, "space");
    EXPECT_EQ(histogram->grid().axis(2).title, "depth [m]");
}

TEST(Histogram3DKind, saysThatItsBinsNeedTooMuchMemory) {
    KindHarness bench("Histogram3D");
    twoBins(bench, "xyz").set("ybins", "100000").set("zbins", "100000").wire("table", points(2));
    EXPECT_EQ(bench.failure(), "zbins: 2 x 100000 x 100000 bins need too much memory");
}

TEST(Histogram3DKind, ofManyCellsHasTheBitsOfOneFillAfterTheOther) {
    std::mt19937_64 random(1);
    std::normal_distribution<double> number(0.5, 0.3);
    Numbers x(3000);
    Numbers y(3000);
    Numbers z(3000);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = number(random);
        y[i] = number(random);
        z[i] = number(random);
    }
    const Axis axis(50, 0, 1);
    Histogram3D expected(Grid<3>({axis, axis, axis}));
    expected.fill({x.data(), y.data(), z.data()}, nullptr, x.size());
    KindHarness bench("Histogram3D");
    bench.set("x", "x").set("y", "y").set("z", "z").set("xhigh", "1").set("yhigh", "1").set("zhigh", "1");
    bench.wire("table", tableOf({{"x", x}, {"y", y}, {"z", z}}, 700)).run();
    EXPECT_EQ(bench.object<Histogram3D>("histogram")->cells(), expected.cells());
}

TEST(Profile2DKind, averagesTheThirdQuantity) {
    KindHarness bench("Profile2D");
    twoBins(bench, "xy").set("weight", "w").wire("table", points(2)).run();
    const auto profile = bench.object<Profile2D>("profile");
    const std::size_t cell = profile->grid().cell({2, 1});
    EXPECT_DOUBLE_EQ(profile->height(cell), (2 * 1.0 + 3 * 1.5) / 5);
    EXPECT_DOUBLE_EQ(profile->rms(cell), std::sqrt(0.25 * 6.0 / 25.0));
    EXPECT_DOUBLE_EQ(profile->error(cell), profile->rms(cell) * std::sqrt(13.0) / 5);
    EXPECT_EQ(profile->nanEntries(), 1);
}

TEST(ProjectKind, projectsSpaceOntoAPlane) {
    KindHarness filling("Histogram3D");
    twoBins(filling, "xyz").set("weight", "w").wire("table", points(5)).run();
    KindHarness bench("Project");
    bench.wire("histogram", filling.value("histogram")).set("axis", "yz").run();
    const auto plane = bench.object<Histogram2D>("histogram");
    EXPECT_EQ(plane->grid().axis(0).title, "b");
    EXPECT_EQ(plane->cells()[plane->grid().cell({1, 2})].w, 6);
    EXPECT_EQ(plane->cells()[plane->grid().cell({1, 2})].squareSum(0, 1), 0.5 * 1.5 + 2 * 0.5 * 1.0 + 3 * 0.25 * 1.5);
    const auto profile = bench.object<Profile2D>("profile");
    EXPECT_DOUBLE_EQ(profile->height(profile->grid().cell({1, 2})), (0.5 + 2 * 1.5 + 3 * 1.75) / 6);
    bench.set("low", "1").run();
    EXPECT_EQ(bench.object<Histogram2D>("histogram")->inRange().w, 5);
    EXPECT_EQ(bench.set("axis", "x").failure(),
              "axis: a three-dimensional histogram is projected onto xy, xz or yz; project the result again for one "
              "axis");
}

TEST(ProjectKind, saysThatAPlaneHasNoPlanes) {
    KindHarness bench("Project");
    Histogram2D plane(Grid<2>({Axis(2, 0, 2), Axis(2, 0, 2)}));
    bench.wire("histogram", DataObjectPtr(std::make_shared<Histogram2D>(plane))).set("axis", "xy");
    EXPECT_EQ(bench.failure(), "axis: a two-dimensional histogram is projected onto x or y");
}

TEST(CombineKind, addsAndDividesInThreeDimensions) {
    KindHarness filling("Histogram3D");
    twoBins(filling, "xyz").wire("table", points(5)).run();
    KindHarness bench("Combine");
    bench.wire("first", filling.value("histogram")).wire("second", filling.value("histogram")).run();
    EXPECT_EQ(bench.object<Histogram3D>("histogram")->inRange().entries, 6);
    bench.set("operation", "divide").run();
    EXPECT_EQ(bench.object<Histogram3D>("histogram")->inRange().w, 2);
}

TEST(RebinKind, joinsBinsInThreeDimensions) {
    KindHarness filling("Histogram3D");
    twoBins(filling, "xyz").wire("table", points(5)).run();
    KindHarness bench("Rebin");
    bench.set("factor", "1").set("zfactor", "2").wire("histogram", filling.value("histogram")).run();
    const auto histogram = bench.object<Histogram3D>("histogram");
    EXPECT_EQ(histogram->grid().axis(2).bins(), 1U);
    EXPECT_EQ(histogram->cells()[histogram->grid().cell({2, 1, 1})].entries, 2);
}

TEST(PrintKind, showsTheCorrelationInAPlane) {
    KindHarness filling("Histogram2D");
    twoBins(filling, "xy");
    filling.wire("table", tableOf({{"a", {0.5, 1.0, 1.5}}, {"b", {1.5, 1.0, 0.5}}}, 2)).run();
    KindHarness bench("Print");
    bench.wire("object", filling.value("histogram")).run();
    EXPECT_THAT(bench.printed(), testing::HasSubstr("correlation -1"));
}

/// A point without an error would silently be left out of the fit.
TEST(FitKind, keepsThePointsOfAProfileOfLargeValues) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> position(0.0, 10.0);
    std::normal_distribution<double> noise(0.0, 1.0);
    for (const double offset : {1e7, 1e8, 1e9}) {
        Numbers x;
        Numbers y;
        for (int i = 0; i < 5000; ++i) {
            x.push_back(position(random));
            y.push_back(offset + noise(random));
        }
        KindHarness filling("Profile1D");
        filling.set("x", "x").set("y", "y").set("bins", "10").set("high", "10");
        filling.wire("table", tableOf({{"x", x}, {"y", y}}, 300)).run();
        KindHarness fit("Fit");
        fit.set("model", "a + 0*x").wire("data", filling.value("profile")).run();
        EXPECT_EQ(fit.number("ndf"), 9) << offset;
        EXPECT_LT(fit.number("chi2"), 30.0) << offset;
    }
}

}  // namespace
