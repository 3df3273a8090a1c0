#include "QuietContext.h"

#include "yoda/YodaFile.h"

#include <velmorak/DataObjects.h>
#include <velmorak/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <fstream>
#include <random>
#include <sstream>

namespace velmorak {
namespace {

class Yoda : public testing::Test {
protected:
    void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }
    std::vector<YodaEntry> read() { return readYoda(file, context); }

    template <typename Object>
    const Object& object(const YodaEntry& entry) {
        return dynamic_cast<const Object&>(*std::get<DataObjectPtr>(entry.value));
    }

    /// The only object after it was written and read again.
    template <typename Object>
    Object again(const Object& given, YodaVersion version, const std::string& name = "made.yoda") {
        writeYodaFile(folder.path() / name, name, {{"/a/" + given.name, std::make_shared<Object>(given)}}, version);
        const std::vector<YodaEntry> entries = readYoda(folder.path() / name, context);
        EXPECT_EQ(entries.size(), 1U);
        EXPECT_EQ(entries[0].problem, "");
        EXPECT_EQ(entries[0].path, "/a/" + given.name);
        return object<Object>(entries[0]);
    }

    TemporaryFolder folder{"yoda-test"};
    const std::filesystem::path file = folder.path() / "data.yoda";
    QuietContext context;
    std::mt19937_64 random{3};
};

constexpr const char* versionOne =
    "# BEGIN YODA_HISTO1D /MC/h\n"
    "Path=/MC/h\n"
    "ScaledBy=0.5\n"
    "Title=Mass\n"
    "Type=Histo1D\n"
    "# Mean: 1.5\n"
    "# ID\t ID\t sumw\t sumw2\t sumwx\t sumwx2\t numEntries\n"
    "Total   \tTotal   \t3.0\t5.0\t4.5\t7.25\t3\n"
    "Underflow\tUnderflow\t1.0\t1.0\t-1.0\t1.0\t1\n"
    "Overflow\tOverflow\t0.0\t0.0\t0.0\t0.0\t0\n"
    "# xlow\t xhigh\t sumw\t sumw2\t sumwx\t sumwx2\t numEntries\n"
    "0.0\t1.0\t2.0\t4.0\t1.0\t0.5\t1\n"
    "2.0\t3.0\t1.5\t2.25\t3.75\t9.375\t1\n"
    "# END YODA_HISTO1D\n\n";

constexpr const char* versionThree =
    "BEGIN YODA_COUNTER_V3 /MC/n\n"
    "Path: /MC/n\nTitle: \nType: Counter\n---\n"
    "# sumW\t sumW2\t numEntries\n"
    "4.000000e+00\t9.000000e+00\t3.000000e+00\n"
    "END YODA_COUNTER_V3\n\n"
    "BEGIN YODA_HISTO1D_V3 /MC/h\n"
    "Path: /MC/h\nScaledBy: 2.0\nTitle: Mass\nType: Histo1D\n---\n"
    "# Mean: 1.000000e+00\n# Integral: 3.000000e+00\n"
    "Edges(A1): [0.000000e+00, 1.000000e+00, 3.000000e+00]\n"
    "# sumW\t sumW2\t sumW(A1)\t sumW2(A1)\t numEntries\n"
    "1\t1\t-1\t1\t1\n2\t4\t1\t0.5\t1\n3\t9\t6\t12\t1\n0\t0\t0\t0\t0\n"
    "END YODA_HISTO1D_V3\n\n"
    "BEGIN YODA_ESTIMATE1D_V3 /MC/e\n"
    "Path: /MC/e\nTitle: Ratio\nType: Estimate1D\n---\n"
    "Edges(A1): [0, 2, 4]\nErrorLabels: [\"stats\", \"sys\"]\n"
    "# value\t errDn(1)\t errUp(1)\t errDn(2)\t errUp(2)\n"
    "nan\t---\t---\t---\t---\n1.5\t-0.3\t0.3\t-0.4\t0.4\n2.5\t-0.1\t0.2\t---\t---\nnan\t---\t---\t---\t---\n"
    "END YODA_ESTIMATE1D_V3\n\n"
    "BEGIN YODA_ESTIMATE0D_V3 /MC/x\nPath: /MC/x\nType: Estimate0D\n---\nErrorLabels: [\"\"]\n"
    "# value\t errDn(1)\t errUp(1)\n7\t-0.5\t0.5\nEND YODA_ESTIMATE0D_V3\n"
    "BEGIN YODA_BINNEDHISTO<S>_V3 /MC/s\nPath: /MC/s\nType: BinnedHisto<s>\n---\nEdges(A1): [\"mu\", \"e\"]\n"
    "0\t0\t0\t0\t0\n1\t1\t0\t0\t1\n2\t2\t2\t2\t2\nEND YODA_BINNEDHISTO<S>_V3\n"
    "BEGIN YODA_CUBE_V3 /MC/c\n---\n1 2 3\nEND YODA_CUBE_V3\n";

TEST_F(Yoda, versionOneIsReadWithGapsBetweenBins) {
    write(versionOne);
    const std::vector<YodaEntry> entries = read();
    const auto& histogram = object<Histogram1D>(entries.at(0));
    EXPECT_EQ(histogram.title, "Mass");
    EXPECT_EQ(histogram.name, "h");
    EXPECT_THAT(histogram.axis().edges(), testing::ElementsAre(0.0, 1.0, 2.0, 3.0));
    EXPECT_EQ(histogram.height(0), 2.0);
    EXPECT_EQ(histogram.height(1), 0.0);
    EXPECT_EQ(histogram.bin(2).ww, 2.25);
    EXPECT_EQ(histogram.bin(2).mean(0), 2.5);
    EXPECT_EQ(histogram.underflow().entries, 1);
    ASSERT_EQ(histogram.annotation.size(), 1U);
    EXPECT_EQ(histogram.annotation[0].key, "ScaledBy");
}

TEST_F(Yoda, versionThreeIsRead) {
    write(versionThree);
    const std::vector<YodaEntry> entries = read();
    ASSERT_EQ(entries.size(), 6U);
    EXPECT_EQ(std::get<NumberWithError>(entries[0].value).value(), 4.0);
    EXPECT_EQ(std::get<NumberWithError>(entries[0].value).error(), 3.0);
    const auto& histogram = object<Histogram1D>(entries[1]);
    EXPECT_EQ(histogram.underflow().w, 1.0);
    EXPECT_EQ(histogram.height(1), 3.0);
    EXPECT_EQ(histogram.overflow().w, 0.0);
    const auto& points = object<Points>(entries[2]);
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points.measurement(0, 0), (Measurement{1.0, 1.0, 1.0}));
    EXPECT_EQ(points.measurement(0, 1).value, 1.5);
    EXPECT_DOUBLE_EQ(points.measurement(0, 1).errorPlus, 0.5);
    EXPECT_EQ(points.measurement(1, 1), (Measurement{2.5, 0.2, 0.1}));
    EXPECT_EQ(std::get<NumberWithError>(entries[3].value).error(), 0.5);
    const auto& categories = object<Histogram1D>(entries[4]);
    EXPECT_THAT(categories.axis().labels, testing::ElementsAre("mu", "e"));
    EXPECT_EQ(categories.height(1), 2.0);
    EXPECT_EQ(entries[5].problem, "objects of type CUBE_V3 cannot be read");
}

template <std::size_t axes>
Histogram<axes> randomHistogram(std::mt19937_64& random) {
    std::normal_distribution<double> gauss(1e3, 1.7);
    Histogram<axes> histogram = [] {
        if constexpr (axes == 1) {
            return Histogram1D(Axis(20, 995.0, 1005.1));
        } else {
            return Histogram2D(Grid<2>({Axis(std::vector<double>{995.0, 999.9, 1001.3}), Axis(3, 996.0, 1003.0)}));
        }
    }();
    for (int i = 0; i < 5000; ++i) {
        typename Histogram<axes>::Point point{};
        for (double& x : point) {
            x = gauss(random);
        }
        histogram.fill(point, gauss(random) / 7.0);
    }
    histogram.name = "h";
    histogram.title = "A title: with = signs";
    histogram.annotation = {{.key = "ScaledBy", .value = "0.1"}};
    return histogram;
}

template <typename Object>
void expectSameNumbers(const Object& one, const Object& other, bool hasOutside) {
    ASSERT_EQ(one.cells().size(), other.cells().size());
    for (std::size_t cell = 0; cell < one.cells().size(); ++cell) {
        if (!hasOutside && !one.grid().isInside(cell)) {
            continue;
        }
        const auto& a = one.cells()[cell];
        const auto& b = other.cells()[cell];
        EXPECT_EQ(a.w, b.w);
        EXPECT_EQ(a.ww, b.ww);
        EXPECT_EQ(a.entries, b.entries);
        for (std::size_t i = 0; i < a.first.size(); ++i) {
            EXPECT_EQ(a.sum(i), b.sum(i));
            EXPECT_EQ(a.squareSum(i, i), b.squareSum(i, i));
        }
    }
    EXPECT_EQ(one.title, other.title);
    EXPECT_EQ(one.annotation, other.annotation);
}

TEST_F(Yoda, whatIsWrittenReadsBackToTheLastBit) {
    for (const YodaVersion version : {YodaVersion::V2, YodaVersion::V3}) {
        const bool isThree = version == YodaVersion::V3;
        const Histogram1D line = randomHistogram<1>(random);
        const Histogram1D lineAgain = again(line, version);
        EXPECT_EQ(lineAgain.axis().edges(), line.axis().edges());
        expectSameNumbers(line, lineAgain, true);
        expectSameNumbers(lineAgain, again(lineAgain, version, "packed.yoda.gz"), true);
        const Histogram2D plane = randomHistogram<2>(random);
        const Histogram2D planeAgain = again(plane, version);
        expectSameNumbers(plane, planeAgain, isThree);
        EXPECT_EQ(planeAgain.cells()[planeAgain.grid().cell({1, 2})].squareSum(0, 1),
                  plane.cells()[plane.grid().cell({1, 2})].squareSum(0, 1));
        Profile1D profile{Grid<1>({Axis(4, 0.0, 1.0)})};
        Profile2D profile2{Grid<2>({Axis(2, 0.0, 1.0), Axis(2, 0.0, 1.0)})};
        std::uniform_real_distribution<double> flat(-0.1, 1.1);
        for (int i = 0; i < 1000; ++i) {
            profile.fill({flat(random)}, flat(random), flat(random));
            profile2.fill({flat(random), flat(random)}, flat(random), flat(random));
        }
        profile.name = profile2.name = "p";
        expectSameNumbers(profile, again(profile, version), true);
        expectSameNumbers(profile2, again(profile2, version), isThree);
        for (const std::size_t dimension : {1U, 2U, 3U}) {
            std::vector<Measurement> all;
            for (std::size_t i = 0; i < 4 * dimension; ++i) {
                all.push_back({flat(random), flat(random), flat(random)});
            }
            Points points(dimension, all);
            points.name = "s";
            EXPECT_EQ(again(points, version).all(), all);
        }
    }
}

TEST_F(Yoda, aFileThatIsReadAndWrittenIsReadAlike) {
    write(versionThree);
    const Histogram1D first = object<Histogram1D>(read().at(1));
    for (const YodaVersion version : {YodaVersion::V2, YodaVersion::V3}) {
        const Histogram1D second = again(first, version);
        EXPECT_EQ(second.cells()[2], first.cells()[2]);
        EXPECT_EQ(second.axis(), first.axis());
    }
}

TEST_F(Yoda, damagedObjectsAreNamedAndTheOthersRead) {
    const std::string good = "BEGIN YODA_COUNTER_V2 /ok\n---\n1 1 1\nEND YODA_COUNTER_V2\n";
    const auto problemOf = [&](const std::string& text) {
        write(text + good);
        const std::vector<YodaEntry> entries = read();
        EXPECT_EQ(entries.back().problem, "");
        return entries.front().problem;
    };
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V2 /h\n---\n0 1 2\nEND YODA_HISTO1D_V2\n"), "a row has 3 numbers");
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V2 /h\n---\n0 1 x 1 1 1 1\nEND YODA_HISTO1D_V2\n"),
              "\"x\" is not a number");
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V2 /h\n---\n0 2 1 1 1 1 1\n1 3 1 1 1 1 1\nEND YODA_HISTO1D_V2\n"),
              "its bins overlap");
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V2 /h\n---\nEND YODA_HISTO1D_V2\n"), "it has no bins");
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V2 /h\n---\n"), "it has no line END");
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V3 /h\n---\nEdges(A1): [0, 1]\n1 1 1 1 1\nEND YODA_HISTO1D_V3\n"),
              "it has 1 rows for 3 bins");
    EXPECT_EQ(problemOf("BEGIN YODA_HISTO1D_V3 /h\n---\nEdges(A1): [0, \"a\"]\nEND YODA_HISTO1D_V3\n"),
              "its edges are partly numbers and partly names");
    EXPECT_NE(problemOf("BEGIN YODA_HISTO1D_V3 /h\n---\nEdges(A1): [1, 0]\n1 1 1 1 1\nEND YODA_HISTO1D_V3\n"), "");
    write("hello\n");
    EXPECT_THROW(read(), Failure);
    write("");
    EXPECT_THROW(read(), Failure);
}

TEST_F(Yoda, whatTheFormatCannotHoldIsRefused) {
    std::ostringstream out;
    const Histogram3D cube(Grid<3>({Axis(1, 0, 1), Axis(1, 0, 1), Axis(1, 0, 1)}));
    EXPECT_THROW(writeYoda(out, "/c", std::make_shared<Histogram3D>(cube), YodaVersion::V2), Failure);
    EXPECT_THROW(writeYoda(out, "/t", std::string("text"), YodaVersion::V2), Failure);
}

}  // namespace
}  // namespace velmorak
