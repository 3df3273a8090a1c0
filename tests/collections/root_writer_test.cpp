#include "KindHarness.h"
#include "Npm.h"

#include <root/RootFile.h>

#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;
using testing::HasSubstr;

namespace fs = std::filesystem;
using Json = nlohmann::json;

const fs::path script = fs::path(VELMORAK_TEST_SOURCE) / "tests/formats/root/read.mjs";

std::vector<std::string> namesIn(const fs::path& file) {
    std::vector<std::string> names;
    for (const RootEntry& entry : listRoot(file)) {
        names.push_back(entry.className + " " + entry.path);
    }
    return names;
}

/// What jsroot reads from the file.
Json readByJsroot(const fs::path& file) {
    return Json::parse(npm::run(script, {file.string()}));
}

/// A real as the script prints it.
std::string bitsOf(double value) {
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
    return digits.data();
}

template <typename Cells, typename Part>
Json ofCells(const Cells& cells, const Part& part) {
    Json values = Json::array();
    for (const auto& cell : cells) {
        values.push_back(bitsOf(part(cell)));
    }
    return values;
}

/// Fills with weights below, within and above the axes.
template <typename Filled, typename Fill>
void fillMany(Filled& filled, const Fill& fill) {
    for (int i = 0; i < 500; ++i) {
        fill(filled, std::sin(i) * 3, std::cos(1.7 * i) * 3, std::sin(0.3 * i) * 3, 0.1 + i % 7);
    }
    filled.name = "h";
    filled.title = "Größe; und mehr";
    filled.setAxisTitle(0, "x [GeV]");
}

const Axis regular(5, -2, 2);
const Axis variable({-2, -0.1, 0.3, 2.5});

template <typename Histogram>
void expectHistogram(const Json& found, const Histogram& histogram) {
    EXPECT_EQ(found["fTitle"], histogram.title);
    EXPECT_EQ(found["fXaxis"]["fTitle"], "x [GeV]");
    EXPECT_EQ(found["fArray"], ofCells(histogram.cells(), [](const auto& cell) { return cell.w; }));
    EXPECT_EQ(found["fSumw2"], ofCells(histogram.cells(), [](const auto& cell) { return cell.ww; }));
    EXPECT_EQ(found["fEntries"], bitsOf(500));
    EXPECT_EQ(found["fTsumw"], bitsOf(histogram.inRange().w));
    EXPECT_EQ(found["fTsumwx2"], bitsOf(histogram.inRange().squareSum(0, 0)));
}

class JsrootReads : public testing::Test {
protected:
    void SetUp() override {
        if (const std::string reason = npm::missing({"jsroot"}); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }

    template <typename Object>
    Json written(const Object& object) {
        writer.wire("object", DataObjectPtr(std::make_shared<Object>(object))).run();
        return readByJsroot(writer.folder() / "out.root")["h"];
    }

    KindHarness writer{"RootWriter", "out"};
};

TEST_F(JsrootReads, aHistogramWithUnequalBins) {
    Histogram1D histogram(variable);
    fillMany(histogram, [](auto& filled, double x, double, double, double w) { filled.fill(x, w); });
    const Json found = written(histogram);
    EXPECT_EQ(found["_typename"], "TH1D");
    EXPECT_EQ(found["fXaxis"]["fNbins"], bitsOf(3));
    EXPECT_EQ(found["fXaxis"]["fXbins"], (Json{bitsOf(-2), bitsOf(-0.1), bitsOf(0.3), bitsOf(2.5)}));
    expectHistogram(found, histogram);
}

TEST_F(JsrootReads, histogramsOverTwoAndThree) {
    Histogram2D plane(Grid<2>({regular, variable}));
    fillMany(plane, [](auto& filled, double x, double y, double, double w) { filled.fill({x, y}, w); });
    plane.setAxisTitle(1, "y [cm]");
    const Json found = written(plane);
    EXPECT_EQ(found["_typename"], "TH2D");
    EXPECT_EQ(found["fYaxis"]["fTitle"], "y [cm]");
    EXPECT_EQ(found["fXaxis"]["fXbins"], Json::array());
    EXPECT_EQ(found["fTsumwxy"], bitsOf(plane.inRange().squareSum(0, 1)));
    expectHistogram(found, plane);

    Histogram3D space(Grid<3>({regular, variable, regular}));
    fillMany(space, [](auto& filled, double x, double y, double z, double w) { filled.fill({x, y, z}, w); });
    const Json spaceFound = written(space);
    EXPECT_EQ(spaceFound["_typename"], "TH3D");
    EXPECT_EQ(spaceFound["fTsumwyz"], bitsOf(space.inRange().squareSum(1, 2)));
    expectHistogram(spaceFound, space);
}

TEST_F(JsrootReads, profiles) {
    Profile1D profile(Grid<1>({regular}));
    fillMany(profile, [](auto& filled, double x, double y, double, double w) { filled.fill({x}, y, w); });
    const Json found = written(profile);
    EXPECT_EQ(found["_typename"], "TProfile");
    EXPECT_EQ(found["fArray"], ofCells(profile.cells(), [](const auto& cell) { return cell.sum(1); }));
    EXPECT_EQ(found["fSumw2"], ofCells(profile.cells(), [](const auto& cell) { return cell.squareSum(1, 1); }));
    EXPECT_EQ(found["fBinEntries"], ofCells(profile.cells(), [](const auto& cell) { return cell.w; }));
    EXPECT_EQ(found["fBinSumw2"], ofCells(profile.cells(), [](const auto& cell) { return cell.ww; }));
    EXPECT_EQ(found["fTsumwy"], bitsOf(profile.inRange().sum(1)));

    Profile2D surface(Grid<2>({regular, variable}));
    fillMany(surface, [](auto& filled, double x, double y, double z, double w) { filled.fill({x, y}, z, w); });
    const Json surfaceFound = written(surface);
    EXPECT_EQ(surfaceFound["_typename"], "TProfile2D");
    EXPECT_EQ(surfaceFound["fArray"], ofCells(surface.cells(), [](const auto& cell) { return cell.sum(2); }));
    EXPECT_EQ(surfaceFound["fTsumwz2"], bitsOf(surface.inRange().squareSum(2, 2)));
}

TEST_F(JsrootReads, points) {
    Points points(2, {{1, 0.5, 0.5}, {-0.0, 2, 2}, {3, 0.25, 0.25}, {1e-310, 1, 1}});
    points.name = "h";
    points.title = "curve";
    points.axisTitles = {"t [s]", "v"};
    const Json found = written(points);
    EXPECT_EQ(found["_typename"], "TGraphErrors");
    EXPECT_EQ(found["fTitle"], "curve;t [s];v");
    EXPECT_EQ(found["fX"], (Json{bitsOf(1), bitsOf(3)}));
    EXPECT_EQ(found["fEY"], (Json{bitsOf(2), bitsOf(1)}));

    Points uneven(2, {{1, 0.5, 0.25}, {2, 4, 8}});
    uneven.name = "h";
    const Json unevenFound = written(uneven);
    EXPECT_EQ(unevenFound["_typename"], "TGraphAsymmErrors");
    EXPECT_EQ(unevenFound["fEXlow"], (Json{bitsOf(0.25)}));
    EXPECT_EQ(unevenFound["fEYhigh"], (Json{bitsOf(4)}));
}

TEST_F(JsrootReads, namesOfCategories) {
    Histogram1D histogram(Axis::ofCategories({"muon", "electron"}));
    histogram.fill(1.0);
    histogram.name = "h";
    EXPECT_EQ(written(histogram)["fXaxis"]["fLabels"], (Json{"muon", "electron"}));
}

TEST_F(JsrootReads, aFolderWithATableAmongObjects) {
    Histogram1D histogram(regular);
    histogram.name = "a";
    writer.set("objects", "2").set("folder", "/run1/muons").set("compression", "zlib");
    writer.wire("object", DataObjectPtr(std::make_shared<Histogram1D>(histogram)));
    writer.wire("object2", tableOf({{"x.y", {1, 2, -0.0}}}, 2)).run();
    const Json found = readByJsroot(writer.folder() / "out.root");
    EXPECT_EQ(found["run1/muons/source"]["columns"]["x.y"], (Json{bitsOf(1), bitsOf(2), bitsOf(-0.0)}));
    EXPECT_EQ(found["run1/muons/a"]["_typename"], "TH1D");
    EXPECT_EQ(found.size(), 2U);
}

TEST(RootWriterKind, aTableReadsBackToTheLastBit) {
    const std::vector<double> x = {0.1, -0.0, 1e-310, std::numeric_limits<double>::infinity(), 1.0 / 3.0};
    for (const char* compression : {"zstd", "lz4", "zlib", "none"}) {
        KindHarness writer("RootWriter", "out");
        writer.set("compression", compression).wire("object", tableOf({{"x", x}}, 2)).run();
        KindHarness reader("RootTable");
        reader.set("file", (writer.folder() / "out.root").string()).run();
        EXPECT_EQ(reader.table().column("x"), x);
        EXPECT_TRUE(std::signbit(reader.table().column("x")[1]));
    }
}

TEST(RootWriterKind, objectsAreInTheirFolderInTheirOrder) {
    auto histogram = std::make_shared<Histogram1D>(regular);
    histogram->name = "a/b";
    KindHarness bench("RootWriter", "out");
    bench.expectWarnings().set("objects", "3").set("folder", "/run1").wire("object2", tableOf({{"x", {1, 2, 3}}}, 2));
    bench.wire("object", DataObjectPtr(histogram)).wire("object3", DataObjectPtr(histogram)).run();
    EXPECT_EQ(namesIn(bench.folder() / "out.root"),
              (std::vector<std::string>{"TH1D run1/a_b", "TTree run1/source", "TH1D run1/a_b_2"}));
    EXPECT_THAT(bench.warnings(), testing::Contains(HasSubstr("\"a/b\" as \"a_b\"")));
}

TEST(RootWriterKind, aTableWithoutRowsIsWrittenToo) {
    KindHarness bench("RootWriter", "out");
    bench.wire("object", tableOf({{"x", {}}}, 2)).run();
    EXPECT_EQ(namesIn(bench.folder() / "out.root"), (std::vector<std::string>{"TTree source"}));
}

TEST(RootWriterKind, whatARootFileCannotHoldIsAFailure) {
    KindHarness bench("RootWriter", "out");
    EXPECT_THAT(bench.failure(), HasSubstr("object: nothing is wired"));
    bench.wire("object", 3.0);
    EXPECT_THAT(bench.failure(), HasSubstr("object: a number or text cannot be written to a ROOT file"));
    auto points = std::make_shared<Points>(3, std::vector<Measurement>(3));
    points->name = "space";
    bench.wire("object", DataObjectPtr(points));
    EXPECT_THAT(bench.failure(), HasSubstr("object: \"space\" are points of 3 dimensions"));
    bench.set("objects", "2").wire("object", tableOf({{"x", {1}}}, 2)).wire("object2", tableOf({{"x", {1}}}, 2));
    EXPECT_THAT(bench.failure(), HasSubstr("object2: a file can hold only one table; use another RootWriter"));
    EXPECT_TRUE(fs::is_empty(bench.folder()));
}

TEST(RootWriterKind, refusesAFolderThatDoesNotBeginAtTheRoot) {
    const Kind& writer = test::shippedKind("RootWriter");
    EXPECT_EQ(writer.refusal("folder", "/run1/muons"), "");
    EXPECT_NE(writer.refusal("folder", "run1"), "");
}

TEST(RootWriterKind, theSameInputGivesTheSameBytes) {
    std::vector<std::string> contents;
    for (int i = 0; i < 2; ++i) {
        KindHarness writer("RootWriter", "out");
        writer.wire("object", tableOf({{"x", std::vector<double>(20000, 0.5)}}, 9000)).run();
        contents.push_back(test::textIn(writer.folder() / "out.root"));
    }
    EXPECT_EQ(contents[0], contents[1]);
}

}  // namespace
