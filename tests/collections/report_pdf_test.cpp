#include "KindHarness.h"
#include "PlotScripts.h"
#include "ReportRecords.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace velmorak;
using test::countOf;
using test::fitted;
using test::FixedDate;
using test::KindHarness;
using test::peak;
using test::record;
using test::textIn;

namespace fs = std::filesystem;

TEST(ReportPdf, hasAllPicturesOfTheReport) {
    KindHarness bench("Report");
    bench.remember(record()).set("objects", "3").set("pdf", "yes").set("file", "all.html");
    bench.wire("object", peak("One")).wire("object2", fitted(0, 10)).wire("object3", peak("Two")).run();
    const std::string pdf = textIn(bench.folder() / "all.pdf");
    EXPECT_TRUE(pdf.starts_with("%PDF"));
    EXPECT_NE(pdf.find("/Count 2"), std::string::npos);
    bench.expectWarnings().set("objects", "1").wire("object", 3.0).run();
    EXPECT_EQ(bench.warnings(), std::vector<std::string>{"pdf: the report has no pictures, so there is no PDF"});
}

/// A Plot of the run, which draws into the folder of the report. @return how the run records it.
RecordedPlugin drawnPlot(const std::string& name, const std::string& size, const KindHarness& report) {
    KindHarness plot("Plot", name);
    plot.set("file", name + ".png").set("size", size).set("formats", "png svg").set("objects", "2");
    plot.set("panel", "ratio").wire("object", peak(name)).wire("object2", peak("Other")).run();
    for (const auto& file : fs::directory_iterator(plot.folder())) {
        fs::copy(file, report.folder());
    }
    return {.name = name,
            .kind = "Plot",
            .version = 1,
            .inputs = {{.name = "object", .value = "", .plugin = "source", .output = name},
                       {.name = "file", .value = name + ".png", .plugin = "", .output = ""},
                       {.name = "formats", .value = "png svg", .plugin = "", .output = ""},
                       {.name = "size", .value = size, .plugin = "", .output = ""}},
            .state = RecordedState::Done};
}

/// A report of a run with two Plots, and with one that failed.
void reportOnPlots(KindHarness& bench) {
    RunRecord given = record();
    given.plugins.push_back(drawnPlot("First", "16 10", bench));
    given.plugins.push_back(drawnPlot("Second", "10 10", bench));
    given.plugins.push_back(
        {.name = "Failed", .kind = "Plot", .version = 1, .inputs = {}, .state = RecordedState::Failed});
    given.plugins[2].inputs = {{.name = "object", .value = "", .plugin = "source", .output = "Second"},
                               {.name = "object2", .value = "", .plugin = "source", .output = "histogram"}};
    bench.remember(given).set("objects", "2").set("pdf", "run");
    bench.wire("object", peak("Drawn by the second")).wire("object2", peak("Drawn by none"));
}

TEST(ReportPdf, hasThePicturesOfAllPlotsOfTheRun) {
    const FixedDate date;
    KindHarness bench("Report");
    reportOnPlots(bench);
    bench.run();
    const std::string pdf = textIn(bench.folder() / "bench.pdf");
    EXPECT_NE(pdf.find("/Count 3"), std::string::npos) << "two Plots, and what none of them draws";
    EXPECT_EQ(countOf(pdf, "/MediaBox [ 0 0 453 283 ]"), 3) << "all as large as the first";
    EXPECT_NE(pdf.find("(D:20000101000000"), std::string::npos);
    KindHarness again("Report");
    reportOnPlots(again);
    again.run();
    EXPECT_EQ(textIn(again.folder() / "bench.pdf"), pdf);
}

TEST(ReportPdf, isWrittenWithoutPicturesThatCannotBeRead) {
    KindHarness bench("Report");
    reportOnPlots(bench);
    fs::remove(bench.folder() / "First.gp");
    std::ofstream(bench.folder() / "Second.gp") << "plot x\n";
    bench.expectWarnings().run();
    ASSERT_EQ(bench.warnings().size(), 2U);
    EXPECT_TRUE(bench.warnings()[0].starts_with("pdf: the picture of \"First\" is left out: ")) << bench.warnings()[0];
    EXPECT_TRUE(bench.warnings()[0].ends_with("First.gp cannot be read: No such file or directory"))
        << bench.warnings()[0];
    EXPECT_TRUE(bench.warnings()[1].ends_with("Second.gp cannot be drawn: it is not the script of a picture"));
    EXPECT_NE(textIn(bench.folder() / "bench.pdf").find("/Count 1"), std::string::npos);
    bench.set("objects", "1");
    EXPECT_EQ(bench.failure(), "pdf: no picture of the run can be read, so there is no PDF");
    bench.remember(record()).set("pdf", "run").wire("object", 3.0).run();
    EXPECT_EQ(bench.warnings().back(), "pdf: the run has no pictures, so there is no PDF");
}

}  // namespace
