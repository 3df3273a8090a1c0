#include "HistogramLists.h"
#include "KindHarness.h"

#include <velmorak/Aida.h>

#include <gmock/gmock.h>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::runs;
using test::textIn;
using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

DataObjectPtr threeRuns() {
    return runs({{2, {1, 0, 4}}, {9, {0, 0, 0}}, {10, {2, 2, 0}}});
}

/// A histogram whose name one of the list has, too.
DataObjectPtr rival() {
    auto histogram = std::make_shared<Histogram1D>(Axis(3, 0.0, 3.0));
    histogram->name = "Spectrum_9";
    return histogram;
}

TEST(ListOfHistograms, isWrittenToAnAidaFileOneByOne) {
    KindHarness bench("AidaWriter", "out");
    bench.set("objects", "2").set("folder", "/spectra").wire("object", rival()).wire("object2", threeRuns()).run();
    std::vector<std::string> paths;
    for (const AidaEntry& entry : listAida(bench.folder() / "out.aida", bench)) {
        paths.push_back(entry.path);
    }
    EXPECT_THAT(paths, ElementsAre("/spectra/Spectrum_9", "/spectra/Spectrum_2", "/spectra/Spectrum_9_2",
                                   "/spectra/Spectrum_10"));
    KindHarness reader("AidaHistogram");
    reader.set("file", (bench.folder() / "out.aida").string()).set("object", "/spectra/Spectrum_2").run();
    EXPECT_EQ(reader.histogram("histogram")->height(2), 4.0);
    EXPECT_EQ(reader.histogram("histogram")->title, "Runs, run = 2");
}

TEST(ListOfHistograms, isWrittenToARootFileOneByOne) {
    KindHarness bench("RootWriter", "out");
    bench.wire("object", threeRuns()).run();
    for (const auto& [name, sum] : std::map<std::string, double>{{"Spectrum_2", 5}, {"Spectrum_10", 4}}) {
        KindHarness reader("RootHistogram");
        reader.set("file", (bench.folder() / "out.root").string()).set("object", name).run();
        EXPECT_EQ(reader.histogram("histogram")->inRange().w, sum) << name;
    }
}

TEST(ListOfHistograms, isWrittenToAYodaFileOneByOne) {
    KindHarness bench("YodaWriter", "out");
    bench.set("folder", "/A").wire("object", threeRuns()).run();
    const std::string text = textIn(bench.folder() / "out.yoda");
    EXPECT_THAT(text, HasSubstr("/A/Spectrum_2\n"));
    EXPECT_THAT(text, HasSubstr("/A/Spectrum_9\n"));
    EXPECT_THAT(text, HasSubstr("/A/Spectrum_10\n"));
}

TEST(ListOfHistograms, withoutNamesGetsThemFromThePlugInAndTheKeys) {
    std::vector<HistogramList::Group> groups = {
        {.key = "10 to 20", .label = {}, .histogram = std::make_shared<Histogram1D>(Axis(3, 0.0, 3.0))}};
    KindHarness bench("AidaWriter", "out");
    bench.wire("object", DataObjectPtr(std::make_shared<HistogramList>("pt", groups))).run();
    const std::vector<AidaEntry> entries = listAida(bench.folder() / "out.aida", bench);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_TRUE(entries[0].path.ends_with("_10_to_20")) << entries[0].path;
}

TEST(ListOfHistograms, isOneTableOfTextWithItsKeys) {
    KindHarness bench("CsvWriter", "out");
    bench.wire("object", threeRuns()).run();
    const std::string text = textIn(bench.folder() / "out.csv");
    EXPECT_TRUE(text.starts_with("run,low,high,entries,height,error,sumww,sumwx,sumwxx\n2,-Infinity,0.0,0,0.0,"))
        << text;
    EXPECT_THAT(text, HasSubstr("\n2,2.0,3.0,4,4.0,2.0,4.0,10.0,25.0\n"));
    EXPECT_THAT(text, HasSubstr("\n10,0.0,1.0,2,2.0,"));
    KindHarness reader("CsvTable");
    reader.set("file", (bench.folder() / "out.csv").string()).run();
    EXPECT_EQ(reader.table().column("run"), (std::vector<double>{2, 2, 2, 2, 2, 9, 9, 9, 9, 9, 10, 10, 10, 10, 10}));
}

TEST(ListOfHistograms, keysThatAreNotAllNumbersAreTexts) {
    const auto empty = std::make_shared<Histogram1D>(Axis(1, 0.0, 1.0));
    const std::vector<HistogramList::Group> groups = {{.key = "007", .label = {}, .histogram = empty},
                                                      {.key = "8", .label = {}, .histogram = empty}};
    KindHarness bench("CsvWriter", "out");
    bench.wire("object", DataObjectPtr(std::make_shared<HistogramList>("agent", groups))).run();
    const std::string text = textIn(bench.folder() / "out.csv");
    EXPECT_THAT(text, HasSubstr("\n\"007\",0.0,1.0,0,"));
    EXPECT_THAT(text, HasSubstr("\n\"8\",0.0,1.0,0,"));
}

TEST(ListOfHistograms, isPrintedAsALineForEach) {
    KindHarness bench("Print");
    bench.set("rows", "2").wire("object", threeRuns()).run();
    EXPECT_THAT(bench.printed(), HasSubstr("Runs\nHistograms: 3\n"
                                           "run  entries  height  mean  rms  underflow  overflow  NaN\n"
                                           "  2        5       5   2.1  0.8          0         0    0\n"));
    EXPECT_THAT(bench.printed(), HasSubstr("(the first 2 of 3)"));
}

TEST(ListOfHistograms, isNoHistogramForKindsThatNeedOne) {
    KindHarness bench("Rebin");
    bench.wire("histogram", threeRuns());
    EXPECT_THAT(bench.failure(), HasSubstr("expected a histogram"));
    KindHarness fit("Fit");
    fit.wire("data", threeRuns());
    EXPECT_NE(fit.failure(), "");
}

TEST(ListOfHistograms, hasOneAxis) {
    const std::vector<HistogramList::Group> groups = {
        {.key = "1", .label = {}, .histogram = std::make_shared<Histogram1D>(Axis(1, 0.0, 1.0))},
        {.key = "2", .label = {}, .histogram = std::make_shared<Histogram1D>(Axis(2, 0.0, 1.0))}};
    EXPECT_THROW(HistogramList("run", groups), std::invalid_argument);
    EXPECT_THROW(HistogramList("run", {{.key = "1", .label = {}, .histogram = {}}}), std::invalid_argument);
}

}  // namespace
