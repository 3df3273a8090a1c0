#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "support.h"

namespace velmorak {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using AidaWriting = AidaFiles;

Histogram1D mass() {
    Histogram1D histogram(Axis(std::vector<double>{0.0, 1.0, 2.0, 4.0}));
    histogram.name = "mass";
    histogram.title = "m < 4 & \"more\"";
    histogram.setAxisTitle("m [GeV]");
    histogram.fill(0.5, 2.0);
    histogram.fill(0.75, 2.0);
    histogram.fill(3.0, 1.0);
    histogram.fill(3.0, -1.0);
    histogram.fill(-1.0);
    histogram.fill(9.0, 0.5);
    histogram.fill(std::nan(""));
    return histogram;
}

/// Output of the independent reader for a file; empty without Python.
std::string seenByPython(const std::filesystem::path& file) {
    const std::string command = std::string(PYTHON) + " '" + AIDA_CHECK + "' '" + file.string() + "'";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe.get())) {
        text.append(part.data(), count);
    }
    return text;
}

TEST_F(AidaWriting, putsAHistogramDownAsItIs) {
    const auto file = folder / "mass.aida";
    AidaFileWriter writer(file);
    writer.write(mass(), "run1/");
    writer.close();
    const std::string text = contentOf(file);
    EXPECT_THAT(text,
                HasSubstr("<histogram1d name=\"mass\" title=\"m &lt; 4 &amp; &quot;more&quot;\" path=\"/run1\">"));
    EXPECT_THAT(text, HasSubstr("<aida version=\"3.2.1\">"));
    EXPECT_THAT(text, HasSubstr("<statistics entries=\"4\""));
    EXPECT_THAT(text, HasSubstr("<item key=\"XLabel\" value=\"m [GeV]\" sticky=\"true\"/>"));
    EXPECT_THAT(text, HasSubstr("<bin1d binNum=\"0\" entries=\"2\" height=\"4\" error=\"2.8284271247461903\" "
                                "weightedMean=\"0.625\" weightedRms=\"0.125\"/>"));
    EXPECT_THAT(text, HasSubstr("<bin1d binNum=\"2\" entries=\"2\" height=\"0\" error=\"1.4142135623730951\"/>"));
    EXPECT_THAT(text, HasSubstr("binNum=\"OVERFLOW\" entries=\"1\" height=\"0.5\""));
    EXPECT_THAT(text, HasSubstr("key=\"NaNEntries\" value=\"1\""));
    EXPECT_THAT(
        text,
        HasSubstr(
            "key=\"ExactMoments\" value=\"0 1 1 1 -1 0 0; 1 2 4 8 0.5 0.5 0.125; 3 2 0 2 3 0 0; 4 1 0.5 0.25 9 0 0\""));
    EXPECT_THAT(text, Not(HasSubstr("binNum=\"1\"")));
    EXPECT_EQ(listAida(file, run)[0].path, "/run1/mass");
}

/// The text that is written for the object of a file.
std::string rewritten(const std::filesystem::path& file, RunContext& run) {
    const DataObjectPtr object = readAidaObject(file, "", ValueType::Histogram, run);
    const auto copy = file.parent_path() / "copy.aida";
    AidaFileWriter writer(copy);
    writer.write(*object, "/");
    writer.close();
    return contentOf(copy);
}

TEST_F(AidaWriting, repeatsAFileThatWasWritten) {
    const auto file = folder / "mass.aida";
    AidaFileWriter writer(file);
    Histogram1D far(Axis(3, 1e9, 1e9 + 3));
    for (int i = 0; i < 1000; ++i) {
        far.fill(1e9 + 0.003 * i, 0.1);
    }
    writer.write(far, "/");
    writer.close();
    EXPECT_EQ(rewritten(file, run), contentOf(file));
}

TEST_F(AidaWriting, repeatsTheSumsOfAFileOfAnEarlierVersion) {
    const auto file = folder / "old.aida";
    AidaFileWriter writer(file);
    CellVector<BinSums> cells(4);
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        const auto w = 0.1 * static_cast<double>(cell + 1);
        cells[cell].entries = 3;
        cells[cell].w = w;
        cells[cell].ww = w / 3;
        cells[cell].first = {w * 0.7};
        cells[cell].second = {w * 0.5};
    }
    writer.write(Histogram1D(Axis(2, 0, 2), cells, 0), "/");
    writer.close();
    EXPECT_THAT(contentOf(file), HasSubstr("key=\"ExactSums\" value=\"0 3 0.1 0.0"));
    EXPECT_EQ(rewritten(file, run), contentOf(file));
}

TEST_F(AidaWriting, repeatsMeansAndSpreadsOfAnotherProgram) {
    const auto file = folder / "foreign.aida";
    std::vector<std::string> numbers;
    std::string bins;
    for (int bin = 0; bin < 1000; ++bin) {
        const double mean = 1e9 + bin + 0.5 + 0.3 * std::sin(bin);
        const double spread = 0.2 + 0.1 * std::cos(bin);
        numbers.push_back(" height=\"" + textOf(1.0 + std::abs(std::sin(3.0 * bin))) + "\" error=\"" +
                          textOf(std::abs(std::cos(2.0 * bin))) + "\" weightedMean=\"" + textOf(mean) +
                          "\" weightedRms=\"" + textOf(spread) + "\"/>");
        bins += "<bin1d binNum=\"" + std::to_string(bin) + "\" entries=\"3\"" + numbers.back() + "\n";
    }
    std::ofstream(file) << "<aida><histogram1d name=\"h\"><axis min=\"1e9\" max=\"1000001000\" numberOfBins=\"1000\"/>"
                           "<data1d>" +
                               bins + "</data1d></histogram1d></aida>";
    const std::string text = rewritten(file, run);
    std::size_t kept = 0;
    std::size_t keptMeans = 0;
    for (const std::string& number : numbers) {
        kept += text.find(number) != std::string::npos ? 1 : 0;
        keptMeans += text.find(number.substr(0, number.find(" weightedRms"))) != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(keptMeans, numbers.size());
    EXPECT_EQ(kept, numbers.size());
}

TEST_F(AidaWriting, isUnderstoodByAnotherReader) {
    const auto file = folder / "mass.aida";
    AidaFileWriter writer(file);
    writer.write(mass(), "/");
    writer.beginTable("t", "", "/", Schema({{"x"}, {"y"}}));
    Chunk chunk;
    chunk.rows = 2;
    chunk.columns = {std::make_shared<Column>(Column{Column::Reals{0.1, 1e300}, {}}),
                     std::make_shared<Column>(Column{Column::Reals{-5e-324, std::nan("")}, {}})};
    writer.writeRows(chunk);
    writer.endTable();
    writer.close();
    if (std::string_view(PYTHON).empty()) {
        std::puts("there is no Python here to read the file independently");
        return;
    }
    const std::string seen = seenByPython(file);
    EXPECT_THAT(seen, HasSubstr("aida 3.2.1\nhistogram1d / mass | m < 4 & \"more\"\n"));
    EXPECT_THAT(seen, HasSubstr("  axis 0 4 3 1 2\n"));
    EXPECT_THAT(seen, HasSubstr("  bin 0 2 4 2.8284271247461903 0.625 0.125\n"));
    EXPECT_THAT(seen, HasSubstr("  row 0.1 -5e-324\n  row 1e+300 nan\n"));
}

TEST_F(AidaWriting, leavesEqualBinsToTheirFormula) {
    Histogram1D histogram(Axis(4, 0.0, 1.0));
    histogram.name = "h";
    AidaFileWriter writer(folder / "h.aida");
    writer.write(histogram, "/");
    writer.close();
    EXPECT_THAT(contentOf(folder / "h.aida"),
                HasSubstr("<axis direction=\"x\" min=\"0\" max=\"1\" numberOfBins=\"4\"/>"));
    EXPECT_THAT(contentOf(folder / "h.aida"), HasSubstr("mean=\"NaN\" rms=\"NaN\""));
}

TEST_F(AidaWriting, declaresTheVersionThatNestedRowsNeed) {
    AidaFileWriter writer(folder / "lists.aida");
    writer.beginTable("t", "", "/", Schema({{"v", ColumnType::Real, true}}));
    writer.endTable();
    writer.close();
    const std::string text = contentOf(folder / "lists.aida");
    EXPECT_THAT(text, HasSubstr("schemas/3.3/aida.dtd\"  >"));
    EXPECT_THAT(text, HasSubstr("<aida version=\"3.3\"  >"));
    EXPECT_EQ(readRows(folder / "lists.aida", "", run).schema, Schema({{"v", ColumnType::Real, true}}));
}

TEST_F(AidaWriting, refusesColumnsThatNoFileCanName) {
    for (const char* name : {"a=b", "", " a", "a\n"}) {
        AidaFileWriter writer(folder / "odd.aida");
        EXPECT_THAT(failureOf([&] { writer.beginTable("t", "", "/", Schema({{name}})); }),
                    HasSubstr("cannot have a column named"));
    }
}

TEST_F(AidaWriting, failsOnAFullDisk) {
    const std::string failure = failureOf([] {
        AidaFileWriter writer("/dev/full");
        writer.write(mass(), "/");
        writer.close();
    });
    EXPECT_THAT(failure, HasSubstr("/dev/full cannot be written: No space left"));
    EXPECT_THAT(failureOf([&] { AidaFileWriter(folder / "no" / "folder"); }), HasSubstr("cannot be written"));
}

TEST_F(AidaWriting, ofATableIsNotInterrupted) {
    AidaFileWriter writer(folder / "t.aida");
    EXPECT_THROW(writer.endTable(), std::logic_error);
    writer.beginTable("t", "", "/", Schema({{"x"}}));
    EXPECT_THROW(writer.write(mass(), "/"), std::logic_error);
    EXPECT_THROW(writer.close(), std::logic_error);
}

TEST_F(AidaWriting, keepsASlashInANameAsItWasWritten) {
    const auto first = aidaWith(
        "<dataPointSet name='a\\/b\\c' path='/d' dimension='1'/>"
        "<dataPointSet name='e\\\\/' path='/d' dimension='1'/>");
    const std::vector<AidaObject> objects = readAidaObjects(first, run);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0].object->name, "a/b\\c");
    EXPECT_EQ(objects[1].object->name, "e\\/");
    const auto second = folder / "second.aida";
    AidaFileWriter writer(second);
    for (const AidaObject& object : objects) {
        writer.write(*object.object, "/d");
    }
    writer.close();
    EXPECT_NE(contentOf(second).find("name=\"a\\/b\\c\""), std::string::npos);
    EXPECT_NE(contentOf(second).find("name=\"e\\\\/\""), std::string::npos);
    EXPECT_EQ(readAidaObjects(second, run)[1].path, objects[1].path);
}

}  // namespace
}  // namespace velmorak
