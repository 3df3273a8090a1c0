#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <memory>

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

/// What the independent reader prints of a file; empty where there is no Python.
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
        HasSubstr("key=\"ExactSums\" value=\"0 1 1 1 -1 1; 1 2 4 8 2.5 1.625; 3 2 0 2 0 0; 4 1 0.5 0.25 4.5 40.5\""));
    EXPECT_THAT(text, Not(HasSubstr("binNum=\"1\"")));
    EXPECT_EQ(listAida(file, run)[0].path, "/run1/mass");
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
