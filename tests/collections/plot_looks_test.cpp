#include "KindHarness.h"
#include "PlotScripts.h"

#include <gtest/gtest.h>

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <algorithm>
#include <cstdlib>

namespace {

using namespace velmorak;
using test::countOf;
using test::counts;
using test::fitted;
using test::hasText;
using test::KindHarness;
using test::lineOf;
using test::quick;
using test::script;
using test::textIn;

namespace fs = std::filesystem;

DataObjectPtr hill() {
    auto histogram = std::make_shared<Histogram2D>(Grid<2>({Axis(5, 0, 5), Axis(5, 0, 5)}));
    for (int i = 0; i < 5; ++i) {
        for (int j = 0; j < 5; ++j) {
            const double height = 40.0 / (1.0 + (i - 2) * (i - 2) + (j - 2) * (j - 2));
            histogram->fill({i + 0.5, j + 0.5}, height);
        }
    }
    histogram->title = "Hill";
    return histogram;
}

/// Names of the inputs of a Plot with these values.
std::vector<std::string> inputsWith(const ValueTexts& values) {
    std::vector<std::string> names;
    for (const InputSpec& input : test::shippedKind("Plot").ports(values).inputs) {
        names.push_back(input.name);
    }
    return names;
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

TEST(PlotLooks, inputsForMoreThanAPlainPictureAreShownWhenTheyAreAskedFor) {
    const std::vector<std::string> plain = inputsWith({});
    EXPECT_EQ(plain.size(), 16U);
    const std::vector<std::string> all = inputsWith({{"advanced", "yes"}, {"objects", "2"}});
    for (const std::string name : {"zlabel", "zrange", "logz", "groups", "panel", "panelrange", "lines", "regions",
                                   "text", "statisticsplace", "size", "dpi", "look", "look2"}) {
        EXPECT_FALSE(contains(plain, name)) << name;
        EXPECT_TRUE(contains(all, name)) << name;
    }
}

TEST(PlotLooks, anInputWithAValueOfItsOwnIsAlwaysShown) {
    const std::vector<std::string> names = inputsWith(
        {{"objects", "3"}, {"advanced", "no"}, {"size", "16 10"}, {"dpi", "300"}, {"look3", "red"}, {"lines", ""}});
    EXPECT_TRUE(contains(names, "dpi"));
    EXPECT_TRUE(contains(names, "look3"));
    EXPECT_FALSE(contains(names, "size"));
    EXPECT_FALSE(contains(names, "look2"));
    EXPECT_FALSE(contains(names, "text"));
    // The value of an input that is wired is empty.
    EXPECT_TRUE(contains(names, "lines"));
    EXPECT_EQ(names.back(), "look3");
}

TEST(PlotLooks, eachObjectHasItsOwnStyleColourAndLegend) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "4");
    bench.set("look", "points red \"Data 2024\"").set("look2", "filled #123456").set("look3", "dashed thick line");
    bench.set("look4", "band green");
    bench.wire("object", counts({3, 4})).wire("object2", counts({2, 3})).wire("object3", counts({1, 2}));
    bench.wire("object4", counts({5, 6})).run();
    const std::string text = script(bench);
    EXPECT_TRUE(hasText(text, "with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#D55E00'"));
    EXPECT_TRUE(hasText(text, "title 'Data 2024'"));
    EXPECT_TRUE(hasText(text, "fillcolor rgb '#123456' fillstyle transparent solid 0.4"));
    EXPECT_TRUE(hasText(text, "with lines linewidth 6.3 dashtype 2"));
    EXPECT_TRUE(hasText(text, "using 1:2:3 with filledcurves fillcolor rgb '#009E73'"));
}

TEST(PlotLooks, wordsWithoutMeaningAreRefused) {
    const Kind& plot = test::shippedKind("Plot");
    for (const std::string look : {"", "points", "stacked orange", "line dotted \"a; b\"", "colour=blue style=steps",
                                   "contours gray", "reference", "\"\""}) {
        EXPECT_EQ(plot.refusal("look3", look), "") << look;
    }
    for (const std::string look : {"blu", "points line", "red blue", "\"open", "a;b", "#12345", "solid dashed", "2"}) {
        EXPECT_NE(plot.refusal("look", look), "") << look;
    }
    EXPECT_TRUE(hasText(plot.refusal("look", "blu"), "\"blu\""));
    EXPECT_TRUE(hasText(plot.refusal("look", "blu"), "lightblue"));
}

TEST(PlotLooks, aStyleThatAnObjectCannotHaveIsRefusedByName) {
    KindHarness bench("Plot");
    quick(bench).set("look", "contours").wire("object", counts({1}));
    EXPECT_EQ(bench.failure(), "look: a histogram of one quantity cannot be drawn as contours");
    bench.set("look", "stacked").wire("object", fitted(0, 1));
    EXPECT_EQ(bench.failure(), "look: a function cannot be drawn as stacked");
    bench.set("look", "points").wire("object", hill());
    EXPECT_TRUE(bench.failure().starts_with("look: ")) << bench.failure();
}

TEST(PlotLooks, stackedHistogramsLieOnEachOtherAndDataArePoints) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "3").set("look2", "stacked").set("look3", "stacked");
    bench.wire("object", counts({9, 4}, "Data")).wire("object2", counts({4, 1}, "Lower"));
    bench.wire("object3", counts({5, 3}, "Upper")).run();
    const std::string text = script(bench);
    EXPECT_EQ(countOf(text, "with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000'"), 1);
    // The sum is drawn first, so that the lower one covers its part.
    EXPECT_LT(text.find("data index 4 using 1:2 with filledcurves"), text.find("data index 2 using 1:2 with filled"));
    EXPECT_LT(text.find("title 'Upper'"), text.find("title 'Lower'"));
    EXPECT_LT(text.find("title 'Data'"), text.find("title 'Upper'"));
    EXPECT_TRUE(hasText(text, "title 'Statistical error'"));
    // The sum of 9 entries with an error of 3.
    EXPECT_EQ(lineOf(bench, "0 6 12"), "0 6 12");
}

TEST(PlotLooks, stackedHistogramsNeedTheSameBins) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").set("style", "stacked").wire("object", counts({1, 2}));
    bench.wire("object2", counts({1, 2, 3}));
    EXPECT_EQ(bench.failure(), "object2: stacked histograms must have the same bins as the first of them");
}

TEST(PlotPanel, showsTheRatioToTheStackWithItsErrors) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "3").set("look2", "stacked").set("look3", "stacked").set("panel", "ratio");
    bench.wire("object", counts({4, 8}, "Data")).wire("object2", counts({4, 1})).wire("object3", counts({12, 3})).run();
    const std::string text = script(bench);
    EXPECT_TRUE(hasText(text, "set multiplot"));
    EXPECT_TRUE(hasText(text, "'Ratio'"));
    // The band of 16 +- 4, and 4 +- 2 compared with 16.
    EXPECT_EQ(lineOf(bench, "0 0.75"), "0 0.75 1.25");
    EXPECT_EQ(lineOf(bench, "0.5 0.25"), "0.5 0.25 0 1 0.125 0.375");
}

TEST(PlotPanel, showsPullsAndDifferencesToAFunction) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").set("panel", "pull").wire("object", counts({4, 0, 9}));
    bench.wire("object2", fitted(0, 3)).run();
    // (4 - 2.25) / 2; an empty bin is not compared; (9 - 3.25) / 3.
    EXPECT_EQ(lineOf(bench, "0.5 0.875"), "0.5 0.875 0 1 0.875 0.875");
    EXPECT_EQ(lineOf(bench, "1.5 -"), "");
    EXPECT_TRUE(hasText(script(bench), "'Pull'"));
    bench.set("panel", "difference").run();
    EXPECT_EQ(lineOf(bench, "0.5 1.75"), "0.5 1.75 0 1 -0.25 3.75");
}

TEST(PlotPanel, comparesWithTheObjectThatTheUserNames) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").set("panel", "ratio").set("look", "reference");
    bench.wire("object", counts({4})).wire("object2", counts({1})).run();
    EXPECT_TRUE(lineOf(bench, "0.5 0.25").starts_with("0.5 0.25 0 1 0 0.5")) << textIn(bench.folder() / "bench.dat");
    bench.set("look", "").run();
    EXPECT_TRUE(hasText(textIn(bench.folder() / "bench.dat"), "\n0.5 ")) << "4 in units of 1";
}

TEST(PlotPanel, refusesWhatCannotBeCompared) {
    KindHarness bench("Plot");
    quick(bench).set("panel", "ratio").wire("object", counts({1}));
    EXPECT_TRUE(bench.failure().starts_with("panel: there is nothing to compare")) << bench.failure();
    bench.wire("object", hill());
    EXPECT_TRUE(bench.failure().starts_with("panel: ")) << bench.failure();
    bench.set("objects", "2").wire("object", counts({1})).wire("object2", counts({1, 2}));
    EXPECT_TRUE(hasText(bench.failure(), "other bins")) << bench.failure();
}

TEST(PlotPanel, comparisonsOutsideOfThePanelAreMarked) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").set("panel", "ratio").set("panelrange", "0.5 1.5");
    bench.wire("object", counts({4, 1, 9})).wire("object2", counts({4, 4, 4})).run();
    EXPECT_EQ(lineOf(bench, "1.5 0.56"), "1.5 0.56 -1");
    EXPECT_EQ(lineOf(bench, "2.5 1.44"), "2.5 1.44 1");
}

TEST(PlotCurves, fittedOnesAreDottedBeyondTheirRange) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").wire("object", counts({2, 3, 4, 5})).wire("object2", fitted(1, 3)).run();
    EXPECT_TRUE(hasText(script(bench), "data index 3 using 1:2 with lines linewidth 3.5 dashtype 3"));
    EXPECT_EQ(lineOf(bench, "4 4"), "4 4");
    bench.wire("object2", fitted(0, 4)).run();
    EXPECT_FALSE(hasText(script(bench), "data index 3"));
}

TEST(PlotGuides, areLinesRegionsAndTexts) {
    KindHarness bench("Plot");
    quick(bench).set("lines", "x 1.5 red dotted \"m_{Z}\"; y 2").set("regions", "x 0.5 1 orange \"signal\"");
    bench.set("text", "Simulation; bottom right \\sqrt{s} = 13 TeV; at 0.4 0.7 \"here\"");
    bench.wire("object", counts({1, 4})).run();
    const std::string text = script(bench);
    EXPECT_TRUE(hasText(text,
                        "set arrow from first 1.5, graph 0 to first 1.5, graph 1 nohead front linewidth 3 "
                        "dashtype 3 linecolor rgb '#D55E00'"));
    EXPECT_TRUE(hasText(text, "set arrow from graph 0, first 2 to graph 1, first 2"));
    EXPECT_TRUE(hasText(text, "set object rectangle from first 0.5, graph 0 to first 1, graph 1 behind"));
    for (const std::string part : {"title 'm_{Z}'", "title 'signal'", "'Simulation'", "'√s = 13 TeV'",
                                   "set label 'here' at graph 0.4, graph 0.7 left"}) {
        EXPECT_TRUE(hasText(text, part)) << part;
    }
    const Kind& plot = test::shippedKind("Plot");
    for (const std::string lines : {"z 1", "x", "x a", "x 1 2", "x nan", "x 1 points", "x 1 reference", "x 1 \"a"}) {
        EXPECT_NE(plot.refusal("lines", lines), "") << lines;
    }
    for (const std::string regions : {"x 1", "x 2 1", "y 1 1", "x 1 inf"}) {
        EXPECT_NE(plot.refusal("regions", regions), "") << regions;
    }
    EXPECT_EQ(plot.refusal("lines", " ; x -1e3 ;"), "");
}

TEST(PlotGuides, thatNobodyCanSeeAreReported) {
    KindHarness bench("Plot");
    bench.expectWarnings();
    quick(bench).set("lines", "x 7").set("regions", "y 50 60").wire("object", counts({1, 4})).run();
    ASSERT_EQ(bench.warnings().size(), 2U);
    EXPECT_EQ(bench.warnings()[1], "lines: x 7 lies outside of the picture");
    EXPECT_EQ(bench.warnings()[0], "regions: y 50 lies outside of the picture");
}

TEST(PlotLabels, areTheSameInEveryFormat) {
    KindHarness bench("Plot");
    bench.set("formats", "png svg pdf").set("xlabel", "p_{T}(\\mu^{+}) [GeV]").wire("object", counts({1, 4})).run();
    const std::string text = script(bench);
    EXPECT_TRUE(hasText(text, "'p_{T}(μ^{+}) [GeV]'"));
    EXPECT_EQ(countOf(text, " enhanced size "), 3);
    EXPECT_FALSE(hasText(text, "noenhanced"));
    EXPECT_TRUE(hasText(textIn(bench.folder() / "bench.svg"), "μ"));
    EXPECT_FALSE(hasText(textIn(bench.folder() / "bench.svg"), "_{T}"));
}

TEST(PlotLabels, hostileMarkupIsDrawnAndNothingElseHappens) {
    const fs::path mark = fs::temp_directory_path() / "velmorak-plot-label-was-here";
    fs::remove(mark);
    const std::string touch = "touch " + mark.string();
    for (const std::string& text :
         {std::string("p_{T"), std::string("x^{'; !") + touch + " #}", "\\mu`" + touch + "`", "_{`" + touch + "`}",
          "$x_{\" . system('" + touch + "') . \"}$", std::string("\\U+2212 \\\\U+2212"), std::string("}{}}{"),
          std::string("%s%n%d %"), std::string("@x &{y} ~a{b}"), std::string("x_{\xff}"), std::string("^{'}")}) {
        KindHarness bench("Plot");
        bench.set("objects", "2").set("formats", "png svg pdf").set("title", text).set("xlabel", text);
        bench.set("text", text.find('"') == std::string::npos ? text : "").set("panel", "ratio");
        bench.set("labels", text + ";" + text);
        bench.wire("object", counts({1, 2}, text)).wire("object2", counts({3, 2}, text)).run();
        EXPECT_FALSE(fs::exists(mark)) << text;
        EXPECT_TRUE(textIn(bench.folder() / "bench.pdf").starts_with("%PDF")) << text;
    }
}

TEST(PlotLabels, percentSignsOfCategoriesStay) {
    auto histogram = std::make_shared<Histogram1D>(Axis::ofCategories({"100%", "%g", "a_b"}));
    histogram->fill(1.0);
    KindHarness bench("Plot");
    bench.set("formats", "svg").wire("object", DataObjectPtr(histogram)).run();
    for (const std::string label : {"100%", "%g", "a_b"}) {
        EXPECT_TRUE(hasText(textIn(bench.folder() / "bench.svg"), label)) << label;
    }
}

TEST(PlotSize, isInCentimetresAndDotsPerInch) {
    KindHarness bench("Plot");
    bench.set("formats", "png svg pdf").set("size", "12.7 10.16").set("dpi", "100").wire("object", counts({1})).run();
    EXPECT_TRUE(hasText(script(bench), "pngcairo enhanced size 500,400"));
    EXPECT_TRUE(hasText(script(bench), "pdfcairo enhanced size 12.7cm,10.16cm"));
    EXPECT_TRUE(hasText(textIn(bench.folder() / "bench.svg"), "width=\"480\" height=\"384\""));
    const Kind& plot = test::shippedKind("Plot");
    for (const std::string size : {"", "16", "2 10", "16 200", "a b", "16 10 3", "nan 10"}) {
        EXPECT_NE(plot.refusal("size", size), "") << size;
    }
    EXPECT_NE(plot.refusal("dpi", "10"), "");
    bench.set("size", "100 100").set("dpi", "1200");
    EXPECT_TRUE(bench.failure().starts_with("dpi: ")) << bench.failure();
}

TEST(PlotContours, areLinesOfEqualHeightOverColours) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").set("look2", "contours white \"levels\"");
    bench.wire("object", hill()).wire("object2", hill()).run();
    EXPECT_TRUE(hasText(script(bench),
                        "data index 1 using 1:2:3 with lines linewidth 3.5 dashtype 1 linecolor rgb "
                        "'#FFFFFF'"));
    // Half of the way from the centre to its neighbours, whose heights are 40 and 20.
    EXPECT_NE(lineOf(bench, "2.5 3 30"), "");
    bench.set("objects", "1").set("look", "contours").run();
    EXPECT_TRUE(hasText(script(bench), "linecolor palette"));
}

TEST(PlotData, aGapInACurveSeparatesNoBlocks) {
    auto root = std::make_shared<FunctionObject>();
    root->codelet = "codelet:root:verbatim:jel : 1 : sqrt(x[0]-2)+a : a : null";
    root->arguments = {{.name = "x", .ranges = {{.low = 0, .high = 4}}}};
    root->parameters = {{.name = "a", .value = 1.0}};
    KindHarness bench("Plot");
    quick(bench).set("objects", "3").wire("object", counts({2, 3, 4, 5})).wire("object2", DataObjectPtr(root));
    bench.wire("object3", fitted(0, 4)).run();
    const std::string data = textIn(bench.folder() / "bench.dat");
    EXPECT_EQ(countOf(data, "\n\n\n"), 6) << "two blocks for each of three objects";
}

}  // namespace
