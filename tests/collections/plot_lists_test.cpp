#include "HistogramLists.h"
#include "KindHarness.h"
#include "PlotScripts.h"

#include <gtest/gtest.h>

#include <velmorak/FunctionObject.h>

namespace {

using namespace velmorak;
using test::countOf;
using test::hasText;
using test::KindHarness;
using test::lineOf;
using test::runs;
using test::script;
using test::textIn;

DataObjectPtr threeRuns(const std::string& title = "Runs") {
    return runs({{2, {1, 0, 4}}, {9, {3, 0, 0}}, {10, {2, 2, 0}}}, title);
}

DataObjectPtr manyRuns(int count) {
    std::map<int, std::vector<int>> heights;
    for (int run = 1; run <= count; ++run) {
        heights[run] = {1, run % 3, 2};
    }
    return runs(heights);
}

DataObjectPtr line() {
    auto function = std::make_shared<FunctionObject>();
    function->title = "Line";
    function->codelet = "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null";
    function->arguments = {{.name = "x", .ranges = {{.low = 0.0, .high = 3.0}}}};
    function->parameters = {{.name = "a", .value = 2.0}, {.name = "b", .value = 0.5}};
    return function;
}

TEST(PlotOfLists, isAGridOfFramesWithTheirKeysAsTitles) {
    KindHarness bench("Plot");
    quick(bench).wire("object", threeRuns()).run();
    const std::string text = script(bench);
    EXPECT_EQ(countOf(text, "\nplot "), 3);
    EXPECT_EQ(countOf(text, "\nset multiplot\n"), 1);
    EXPECT_LT(text.find("'run = 2'"), text.find("'run = 9'"));
    EXPECT_LT(text.find("'run = 9'"), text.find("'run = 10'"));
    EXPECT_EQ(countOf(text, "set label 'Runs'"), 1);
    EXPECT_EQ(countOf(text, "set label 'x [cm]'"), 1) << "the titles of axes are common";
    EXPECT_EQ(countOf(text, "set label 'Entries / cm'"), 1);
    EXPECT_TRUE(std::filesystem::file_size(bench.folder() / "bench.png") > 1000);
}

TEST(PlotOfLists, framesOfAGridDoNotOverlap) {
    KindHarness bench("Plot");
    quick(bench).wire("object", threeRuns()).run();
    const std::string text = script(bench);
    // Two above, one below: the second frame is to the right of the first, the third one below it.
    std::vector<double> left;
    std::vector<double> right;
    std::vector<double> bottom;
    std::vector<double> top;
    for (const auto& [name, ends] : std::map<std::string, std::vector<double>*>{
             {"lmargin", &left}, {"rmargin", &right}, {"bmargin", &bottom}, {"tmargin", &top}}) {
        const std::string command = "set " + name + " at screen ";
        for (std::size_t at = text.find(command); at != std::string::npos; at = text.find(command, at + 1)) {
            ends->push_back(std::stod(text.substr(at + command.size())));
        }
        ASSERT_EQ(ends->size(), 3U) << name;
    }
    EXPECT_LT(right[0], left[1]);
    EXPECT_LT(top[2], bottom[0]);
    EXPECT_EQ(left[2], left[0]);
    EXPECT_EQ(bottom[1], bottom[0]);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_GT(left[i], 0.0);
        EXPECT_LT(left[i], right[i]);
        EXPECT_LT(bottom[i], top[i]);
        EXPECT_LT(top[i], 1.0);
    }
}

TEST(PlotOfLists, everyFrameDrawsBlocksOfItsOwn) {
    KindHarness bench("Plot");
    quick(bench).wire("object", threeRuns()).run();
    const std::string text = script(bench);
    EXPECT_TRUE(hasText(text, "plot data index 0 using"));
    EXPECT_TRUE(hasText(text, "plot data index 2 using"));
    EXPECT_TRUE(hasText(text, "plot data index 4 using"));
    const std::string data = textIn(bench.folder() / "bench.dat");
    EXPECT_EQ(countOf(data, "\n\n\n"), 6) << "two blocks for each of three histograms";
    EXPECT_EQ(countOf(data, "# For each histogram"), 1);
    EXPECT_EQ(lineOf(bench, "2.5 4 "), "2.5 4 2 6");
}

TEST(PlotOfLists, canBeOverlaidInOneFrame) {
    KindHarness bench("Plot");
    quick(bench).set("groups", "overlaid").wire("object", threeRuns()).run();
    const std::string text = script(bench);
    EXPECT_EQ(countOf(text, "\nplot "), 1);
    EXPECT_FALSE(hasText(text, "multiplot"));
    EXPECT_TRUE(hasText(text, "title 'run = 2'"));
    EXPECT_TRUE(hasText(text, "title 'run = 10'"));
    EXPECT_TRUE(hasText(text, "set label 'Runs'"));
}

TEST(PlotOfLists, listsShareFramesOfEqualKeysAndOtherObjectsAreInEach) {
    KindHarness bench("Plot");
    quick(bench).set("objects", "3").wire("object", threeRuns("Data"));
    bench.wire("object2", runs({{2, {1, 1, 1}}, {7, {0, 5, 0}}, {10, {1, 0, 0}}}, "Model"))
        .wire("object3", line())
        .run();
    const std::string text = script(bench);
    EXPECT_EQ(countOf(text, "\nplot "), 4);
    EXPECT_LT(text.find("'run = 2'"), text.find("'run = 7'"));
    EXPECT_LT(text.find("'run = 7'"), text.find("'run = 9'"));
    EXPECT_EQ(countOf(text, "title 'Data'"), 3);
    EXPECT_EQ(countOf(text, "title 'Model'"), 3);
    EXPECT_EQ(countOf(text, "title 'Line'"), 4);
    EXPECT_TRUE(bench.warnings().empty());
}

TEST(PlotOfLists, overlaidListsAreToldApartInTheLegend) {
    KindHarness bench("Plot");
    quick(bench).set("groups", "overlaid").set("objects", "2").set("labels", "data; model");
    bench.wire("object", threeRuns()).wire("object2", runs({{2, {1, 1, 1}}})).run();
    EXPECT_TRUE(hasText(script(bench), "title 'data, run = 9'"));
    EXPECT_TRUE(hasText(script(bench), "title 'model, run = 2'"));
}

TEST(PlotOfLists, aPanelIsDrawnInFramesWithSomethingToCompare) {
    KindHarness bench("Plot");
    quick(bench).set("panel", "ratio").set("objects", "2").wire("object", threeRuns("Data"));
    bench.wire("object2", runs({{2, {1, 1, 1}}}, "Model")).run();
    const std::string text = script(bench);
    EXPECT_EQ(countOf(text, "\nplot "), 4) << "three frames, one with a panel";
    EXPECT_EQ(countOf(text, "\nset multiplot"), 1);
}

TEST(PlotOfLists, framesThatHaveNoRoomAreToldOf) {
    KindHarness bench("Plot");
    quick(bench).expectWarnings().wire("object", manyRuns(100)).run();
    ASSERT_EQ(bench.warnings().size(), 1U);
    const std::string text = script(bench);
    const int drawn = countOf(text, "\nplot ");
    EXPECT_GE(drawn, 12);
    EXPECT_LT(drawn, 100);
    const std::string sentence =
        "the first " + std::to_string(drawn) + " of 100 histograms are drawn; the others need a larger size";
    EXPECT_TRUE(hasText(bench.warnings()[0], sentence)) << bench.warnings()[0];
    EXPECT_TRUE(hasText(text, sentence));
    KindHarness large("Plot");
    quick(large).set("size", "60 40").set("dpi", "100").wire("object", manyRuns(100)).run();
    EXPECT_EQ(countOf(script(large), "\nplot "), 100);
}

TEST(PlotOfLists, aLegendOfVeryManyNamesIsLeftOut) {
    KindHarness bench("Plot");
    quick(bench).expectWarnings().set("groups", "overlaid").wire("object", manyRuns(25)).run();
    EXPECT_FALSE(hasText(script(bench), "title 'run"));
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_TRUE(hasText(bench.warnings()[0], "legend: 25 names have no room")) << bench.warnings()[0];
}

TEST(PlotOfLists, withoutHistogramsAreAnEmptyPicture) {
    KindHarness bench("Plot");
    quick(bench).expectWarnings().wire("object", runs({})).run();
    EXPECT_EQ(countOf(script(bench), "\nplot "), 1);
    ASSERT_FALSE(bench.warnings().empty());
    EXPECT_TRUE(hasText(bench.warnings()[0], "there is nothing to draw"));
}

TEST(PlotOfLists, theReportDrawsThemToo) {
    KindHarness bench("Report");
    bench.set("objects", "1").set("pdf", "yes").wire("object", threeRuns("Spectra of all runs")).run();
    const std::string html = textIn(bench.folder() / "bench.html");
    EXPECT_TRUE(hasText(html, "<figcaption>Spectra of all runs</figcaption>"));
    EXPECT_TRUE(hasText(html, "run = 10"));
    EXPECT_TRUE(std::filesystem::file_size(bench.folder() / "bench.pdf") > 1000);
}

TEST(PlotOfLists, everyFormatHasAllFrames) {
    KindHarness bench("Plot");
    bench.set("formats", "png svg pdf").wire("object", threeRuns()).run();
    EXPECT_EQ(countOf(script(bench), "\nplot "), 9);
    const std::string svg = textIn(bench.folder() / "bench.svg");
    for (const std::string label : {"run = 2", "run = 9", "run = 10"}) {
        EXPECT_EQ(countOf(svg, label), 1) << label;
    }
}

}  // namespace
