#include "KindHarness.h"
#include "PlotScripts.h"

#include <gtest/gtest.h>

#include <velmorak/FunctionObject.h>
#include <velmorak/FunctionValues.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <cstdlib>
#include <limits>
#include <sstream>

namespace {

using namespace velmorak;
using test::hasText;
using test::KindHarness;
using test::script;
using test::textIn;

namespace fs = std::filesystem;

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

DataObjectPtr counts(const std::vector<double>& heights, const std::string& title = "Counts") {
    auto histogram = std::make_shared<Histogram1D>(Axis(heights.size(), 0, static_cast<double>(heights.size())));
    for (std::size_t i = 0; i < heights.size(); ++i) {
        if (heights[i] != 0.0) {
            histogram->fill(static_cast<double>(i) + 0.5, heights[i]);
        }
    }
    histogram->title = title;
    histogram->setAxisTitle("x [cm]");
    return histogram;
}

std::shared_ptr<FunctionObject> line() {
    auto function = std::make_shared<FunctionObject>();
    function->name = "line";
    function->codelet = "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null";
    function->arguments = {{.name = "x", .ranges = {{.low = 1.0, .high = 3.0}}}};
    function->parameters = {{.name = "a", .value = 2.0}, {.name = "b", .value = 0.5}};
    return function;
}

DataObjectPtr efficiency() {
    const std::vector<Measurement> all = {{10, 5, 5}, {0.25, 0.125, 0.0625}, {20, 5, 2}, {0.5, 0.25, 0.125}};
    auto points = std::make_shared<Points>(2, all);
    points->title = "Efficiency";
    points->axisTitles = {"momentum [GeV]", "efficiency"};
    return points;
}

std::shared_ptr<Histogram2D> grid() {
    auto histogram = std::make_shared<Histogram2D>(Grid<2>({Axis(2, 0, 2), Axis(2, 0, 4)}));
    histogram->fill({0.5, 1.0});
    histogram->fill({0.5, 1.0});
    histogram->fill({1.5, 3.0});
    histogram->title = "Two quantities";
    histogram->setAxisTitle(0, "x [cm]");
    histogram->setAxisTitle(1, "y [cm]");
    return histogram;
}

DataObjectPtr profile() {
    auto made = std::make_shared<Profile1D>(Grid<1>({Axis(3, 0, 3)}));
    for (const double value : {1.0, 2.0, 3.0}) {
        made->fill({0.5}, value);
    }
    made->fill({2.5}, 8.0);
    made->setAxisTitle(0, "angle [rad]");
    return made;
}

/// The numbers of one block of the data file, without the line that keeps it from being empty.
std::vector<std::vector<double>> block(const KindHarness& bench, std::size_t index) {
    std::istringstream lines(textIn(bench.folder() / "bench.dat"));
    std::vector<std::vector<double>> rows;
    std::size_t at = 0;
    std::size_t empty = 0;
    for (std::string text; std::getline(lines, text);) {
        empty = text.empty() ? empty + 1 : 0;
        at += empty == 2 ? 1 : 0;
        if (text.empty() || text.starts_with('#') || text.starts_with("NaN") || at != index) {
            continue;
        }
        rows.emplace_back();
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            EXPECT_TRUE(readNumber(word, rows.back().emplace_back())) << word;
        }
    }
    return rows;
}

using Rows = std::vector<std::vector<double>>;

TEST(PlotObjects, pointsKeepTheirAsymmetricErrors) {
    KindHarness bench("Plot");
    bench.wire("object", efficiency()).run();
    EXPECT_EQ(block(bench, 0), (Rows{{10, 0.25, 5, 15, 0.1875, 0.375}, {20, 0.5, 18, 25, 0.375, 0.75}}));
    EXPECT_TRUE(hasText(script(bench), "'momentum [GeV]'"));
    EXPECT_TRUE(hasText(script(bench), "'efficiency'"));
}

TEST(PlotObjects, pointsOfOneDimensionStandSideBySide) {
    KindHarness bench("Plot");
    const std::vector<Measurement> all = {{4, 1, 2}, {6, 0, 0}};
    bench.wire("object", DataObjectPtr(std::make_shared<Points>(1, all))).run();
    EXPECT_EQ(block(bench, 0), (Rows{{1, 4, 1, 1, 2, 5}, {2, 6, 2, 2, 6, 6}}));
}

TEST(PlotObjects, aProfileShowsTheMeanOfEachBinThatHasEntries) {
    KindHarness bench("Plot");
    bench.wire("object", profile()).run();
    const Rows rows = block(bench, 0);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0][0], 0.5);
    EXPECT_EQ(rows[0][1], 2.0);
    EXPECT_EQ(rows[0][2], 0.0);
    EXPECT_EQ(rows[0][3], 1.0);
    EXPECT_NEAR(rows[0][5] - 2.0, 2.0 - rows[0][4], 1e-15);
    EXPECT_EQ(rows[1][1], 8.0);
}

TEST(PlotObjects, aCurveHasTheValuesOfItsFunctionWhereItHolds) {
    KindHarness bench("Plot");
    bench.set("objects", "2").wire("object", counts({2, 3, 4, 5})).wire("object2", DataObjectPtr(line())).run();
    const Rows curve = block(bench, 2);
    ASSERT_EQ(curve.size(), 601U);
    EXPECT_EQ(curve.front()[0], 1.0);
    EXPECT_EQ(curve.back()[0], 3.0);
    const FunctionValues values(*line());
    for (const auto& row : curve) {
        EXPECT_EQ(row[1], values(row[0]));
    }
}

TEST(PlotObjects, dataUnderACurveArePointsUnlessStepsAreAskedFor) {
    KindHarness bench("Plot");
    bench.wire("object", counts({2, 3})).run();
    EXPECT_TRUE(hasText(script(bench), "with filledcurves"));
    EXPECT_FALSE(hasText(script(bench), "with points"));
    bench.set("objects", "2").wire("object2", DataObjectPtr(line())).run();
    EXPECT_TRUE(hasText(script(bench), "with points"));
    bench.set("style", "steps").run();
    EXPECT_FALSE(hasText(script(bench), "with points"));
    bench.set("objects", "1").set("style", "points").run();
    EXPECT_TRUE(hasText(script(bench), "with points"));
}

TEST(PlotObjects, aFunctionAloneIsDrawnOverItsRange) {
    KindHarness bench("Plot");
    bench.wire("object", DataObjectPtr(line())).run();
    EXPECT_TRUE(hasText(script(bench), "set xrange [1:3]"));
    EXPECT_EQ(block(bench, 0).size(), 601U);
}

TEST(PlotObjects, binsOfTwoQuantitiesAreColoursAndEmptyOnesWhite) {
    KindHarness bench("Plot");
    bench.wire("object", DataObjectPtr(grid())).run();
    EXPECT_EQ(block(bench, 0), (Rows{{0, 1, 0, 2, 2}, {1, 2, 2, 4, 1}}));
    for (const std::string part : {"'x [cm]'", "'y [cm]'", "'Entries / bin'", "#440154", "#FDE725", "3 entries"}) {
        EXPECT_TRUE(hasText(script(bench), part)) << part;
    }
    bench.set("logz", "yes").set("zlabel", "events").run();
    for (const std::string part : {"set logscale cb", "'events'"}) {
        EXPECT_TRUE(hasText(script(bench), part)) << part;
    }
}

TEST(PlotObjects, oneQuantityAndTwoAreNotDrawnTogether) {
    KindHarness bench("Plot");
    bench.set("objects", "2").wire("object", counts({1})).wire("object2", DataObjectPtr(grid()));
    EXPECT_TRUE(bench.failure().starts_with("object2: ")) << bench.failure();
    EXPECT_TRUE(hasText(bench.failure(), "use another Plot")) << bench.failure();
    bench.wire("object", DataObjectPtr(grid()));
    EXPECT_TRUE(bench.failure().starts_with("object2: ")) << bench.failure();
    EXPECT_TRUE(fs::is_empty(bench.folder()));
}

TEST(PlotObjects, refusesWhatCannotBeDrawnByName) {
    KindHarness bench("Plot");
    EXPECT_TRUE(bench.failure().starts_with("object: ")) << bench.failure();
    bench.wire("object", 3.0);
    EXPECT_TRUE(hasText(bench.failure(), "number or text")) << bench.failure();
    const Grid<3> cube({Axis(1, 0, 1), Axis(1, 0, 1), Axis(1, 0, 1)});
    bench.wire("object", DataObjectPtr(std::make_shared<Histogram3D>(cube)));
    EXPECT_TRUE(hasText(bench.failure(), "three-dimensional")) << bench.failure();
    bench.wire("object", DataObjectPtr(std::make_shared<Points>(3, std::vector<Measurement>(3))));
    EXPECT_TRUE(hasText(bench.failure(), "two dimensions")) << bench.failure();
    auto unknown = line();
    unknown->codelet = "codelet:who:knows";
    bench.wire("object", DataObjectPtr(unknown));
    EXPECT_NE(bench.failure(), "");
}

TEST(PlotObjects, theBoxShowsWhatAFitHasFound) {
    auto function = line();
    function->annotation = {{.key = "chi2", .value = "3.5"},
                            {.key = "ndf", .value = "4"},
                            {.key = "p_value", .value = "0.25"},
                            {.key = "a_error", .value = "0.123"}};
    KindHarness bench("Plot");
    bench.set("objects", "2").wire("object", counts({2, 3, 4})).wire("object2", DataObjectPtr(function)).run();
    for (const std::string part : {"'χ²/ndf'", "'3.5 / 4'", "'0.25'", "'2.00 ± 0.12'", "'0.5'", "'Entries'"}) {
        EXPECT_TRUE(hasText(script(bench), part)) << part;
    }
    bench.set("statistics", "no").run();
    EXPECT_FALSE(hasText(script(bench), "Entries'"));
}

TEST(PlotObjects, theBoxCountsWhatLiesOutside) {
    auto histogram = std::make_shared<Histogram1D>(Axis(2, 0, 2));
    for (const double x : {-1.0, 0.5, 5.0, 6.0, noNumber}) {
        histogram->fill(x);
    }
    KindHarness bench("Plot");
    bench.wire("object", DataObjectPtr(histogram)).run();
    for (const std::string part : {"'Underflow'", "'Overflow'", "'NaN'", "set label '2' "}) {
        EXPECT_TRUE(hasText(script(bench), part)) << part;
    }
}

TEST(PlotObjects, theLegendHasTheNamesThatTheUserGives) {
    KindHarness bench("Plot");
    bench.set("objects", "2").set("labels", "; second one").set("legend", "bottom left");
    bench.wire("object", counts({1, 2}, "first one")).wire("object2", counts({2, 1}, "hidden")).run();
    EXPECT_TRUE(hasText(script(bench), "title 'first one'"));
    EXPECT_TRUE(hasText(script(bench), "title 'second one'"));
    EXPECT_FALSE(hasText(script(bench), "hidden"));
    EXPECT_TRUE(hasText(script(bench), " left bottom Left reverse"));
    bench.set("legend", "no").run();
    EXPECT_TRUE(hasText(script(bench), "set key off"));
    bench.set("legend", "automatic").set("statistics", "yes").run();
    EXPECT_TRUE(hasText(script(bench), "title 'first one  (Entries 2, Sum of weights 3, Mean"));
}

TEST(PlotObjects, theUserChoosesRangesAndFormats) {
    KindHarness bench("Plot");
    bench.set("xrange", "1 3")
        .set("yrange", "*, 40")
        .set("formats", "pdf, png")
        .wire("object", counts({1, 2, 3, 4}))
        .run();
    EXPECT_TRUE(hasText(script(bench), "set xrange [1:3]"));
    EXPECT_TRUE(hasText(script(bench), "set yrange [0:40]"));
    EXPECT_FALSE(fs::exists(bench.folder() / "bench.svg"));
    EXPECT_TRUE(textIn(bench.folder() / "bench.pdf").starts_with("%PDF"));
    EXPECT_TRUE(hasText(textIn(bench.folder() / "bench.pdf"), "(D:20000101000000"));
    const Kind& plot = test::shippedKind("Plot");
    for (const std::string range : {"", "1 2", "* *", "-1e3, *"}) {
        EXPECT_EQ(plot.refusal("xrange", range), "") << range;
    }
    for (const std::string range : {"1", "2 1", "1 1", "a b", "1 2 3", "nan 2", "0 inf"}) {
        EXPECT_NE(plot.refusal("zrange", range), "") << range;
    }
    for (const std::string formats : {"", "gif", "png eps"}) {
        EXPECT_NE(plot.refusal("formats", formats), "") << formats;
    }
    bench.set("logy", "yes").set("yrange", "-1 5");
    EXPECT_TRUE(bench.failure().starts_with("yrange: ")) << bench.failure();
    bench.set("logy", "no").set("yrange", "").set("xrange", "9 *");
    EXPECT_TRUE(bench.failure().starts_with("xrange: ")) << bench.failure();
}

TEST(PlotObjects, saysWhatIsNotDrawn) {
    const auto warningOf = [](const std::vector<double>& heights, const std::string& log) {
        KindHarness bench("Plot");
        bench.expectWarnings().set("logy", log).wire("object", counts(heights)).run();
        EXPECT_TRUE(fs::exists(bench.folder() / "bench.png"));
        return bench.warnings().empty() ? std::string() : bench.warnings().front();
    };
    EXPECT_EQ(warningOf({1, 0, 2}, "yes"), "");
    EXPECT_EQ(warningOf({0, 0}, "no"), "there is nothing to draw: no object has entries or points");
    EXPECT_TRUE(hasText(warningOf({0, 0}, "yes"), "no value is above 0"));
    EXPECT_TRUE(hasText(warningOf({1, -2}, "yes"), "1 values are not drawn"));
    EXPECT_TRUE(hasText(warningOf({1, infinite}, "no"), "object: 1 bins"));
    auto weighted = grid();
    weighted->fill({0.5, 3.0}, -infinite);
    KindHarness bench("Plot");
    bench.expectWarnings().wire("object", DataObjectPtr(weighted)).run();
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_EQ(block(bench, 0).size(), 2U);
}

TEST(PlotObjects, drawsTheStrangestObjectsStill) {
    const std::vector<Measurement> strange = {
        {1, noNumber, infinite}, {1e308, 1e308, 1e308}, {noNumber, 0, 0}, {0, 0, 0},
        {-infinite, 1, 1},       {infinite, 1, 1},      {2, 0, 0},        {-1e308, 0, 1e308}};
    const std::vector<DataObjectPtr> objects = {
        std::make_shared<Points>(2, strange),
        std::make_shared<Points>(2, std::vector<Measurement>()),
        std::make_shared<Points>(2, std::vector<Measurement>{{3, 0, 0}, {4, 0, 0}}),
        std::make_shared<Histogram2D>(Grid<2>({Axis(1, 1, 2), Axis(1, 1, 2)})),
        std::make_shared<Profile1D>(Grid<1>({Axis(2, 1, 3)})),
        std::make_shared<Profile2D>(Grid<2>({Axis(1, 1, 2), Axis(1, 1, 2)})),
        counts({5}),
    };
    for (const DataObjectPtr& object : objects) {
        for (const std::string log : {"no", "yes"}) {
            KindHarness bench("Plot");
            bench.expectWarnings().set("logy", log).set("logz", log).wire("object", object).run();
            EXPECT_TRUE(textIn(bench.folder() / "bench.svg").ends_with("</svg>\n\n"));
        }
    }
}

TEST(PlotObjects, noTextOfAnObjectBecomesACommand) {
    const fs::path mark = fs::temp_directory_path() / "velmorak-plot-object-was-here";
    fs::remove(mark);
    const std::string touch = "touch " + mark.string();
    const std::vector<std::string> nasty = {"`" + touch + "`",
                                            "'\n!" + touch + "\n'",
                                            "'; system('" + touch + "') #",
                                            "\\\"@data$1 {/Bold x}_2^3 %s",
                                            "\" . system(\"" + touch + "\")",
                                            std::string("nul\0end", 7),
                                            "<script>&amp;]]>" + touch};
    for (const std::string& text : nasty) {
        auto function = line();
        function->title = text;
        function->parameters.push_back({.name = text, .value = 1.0});
        function->annotation = {{.key = text + "_error", .value = "1"}, {.key = "chi2", .value = text}};
        auto colours = grid();
        colours->setAxisTitle(0, text);
        KindHarness bench("Plot");
        bench.set("objects", "2").set("formats", "png svg pdf").set("labels", text + ";").set("zlabel", text);
        bench.wire("object", counts({1, 2}, text)).wire("object2", DataObjectPtr(function)).run();
        bench.set("objects", "1").wire("object", DataObjectPtr(colours)).run();
        EXPECT_FALSE(fs::exists(mark)) << text;
        EXPECT_EQ(std::distance(fs::directory_iterator(bench.folder()), fs::directory_iterator()), 5);
    }
}

TEST(PlotObjects, theScriptOfEveryObjectGivesTheSamePictureByHand) {
    for (const DataObjectPtr& object :
         {efficiency(), profile(), DataObjectPtr(grid()), DataObjectPtr(line()), counts({1, 5, 2})}) {
        KindHarness bench("Plot");
        bench.wire("object", object).run();
        const fs::path hand = bench.folder() / "hand";
        fs::create_directory(hand);
        for (const std::string file : {"bench.gp", "bench.dat"}) {
            fs::copy_file(bench.folder() / file, hand / file);
        }
        ASSERT_EQ(std::system(("cd '" + hand.string() + "' && gnuplot bench.gp").c_str()), 0);
        for (const std::string file : {"bench.svg", "bench.png"}) {
            EXPECT_EQ(textIn(hand / file), textIn(bench.folder() / file));
        }
    }
}

TEST(PlotObjects, theFrameLeavesTheBoxFree) {
    KindHarness bench("Plot");
    bench.set("statistics", "top right").wire("object", counts({1, 1, 1, 1, 100})).run();
    // The box is at the right, where the highest bin is: 100 with an error of 100.
    const std::string text = script(bench);
    const std::size_t at = text.find("set yrange [0:") + 14;
    double high = 0.0;
    ASSERT_TRUE(readNumber(text.substr(at, text.find(']', at) - at), high));
    EXPECT_GT(high, 240.0);
    bench.set("statistics", "no").run();
    EXPECT_TRUE(hasText(script(bench), "set yrange [0:216]"));
}

}  // namespace
