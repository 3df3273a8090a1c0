#include "KindHarness.h"

#include <velmorak/Aida.h>
#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

/// Kinds that read several files.
namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FileLists : public testing::Test {
protected:
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(bench.folder() / name, std::ios::binary) << content;
    }
    std::string path(const std::string& name) const { return (bench.folder() / name).string(); }

    KindHarness bench{"CsvTable"};
};

std::set<std::string> inputsOf(const Kind& kind) {
    std::set<std::string> names;
    for (const InputSpec& input : kind.ports({}).inputs) {
        names.insert(input.name);
    }
    return names;
}

TEST_F(FileLists, areTakenByEverySourceOfFiles) {
    std::size_t sources = 0;
    for (const ShippedGroup& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            const std::set<std::string> inputs = inputsOf(*kind);
            if (!dynamic_cast<const Source*>(kind.get()) || !inputs.contains("file")) {
                continue;
            }
            ++sources;
            for (const char* const name : {"file_columns", "differing_files", "damaged_files"}) {
                EXPECT_TRUE(inputs.contains(name)) << kind->name() << " has no " << name;
            }
            KindHarness source(kind->name());
            EXPECT_THAT(source.set("file", "none_*.x").failure(), HasSubstr("no file matches \"none_*.x\""));
            std::ofstream(source.folder() / "list.txt") << "# nothing\nin_the_list.x\n";
            const std::string list = (source.folder() / "list.txt").string();
            EXPECT_THAT(source.set("file", "@" + list).failure(), HasSubstr("in_the_list.x")) << kind->name();
        }
    }
    EXPECT_GE(sources, 11U);
}

TEST_F(FileLists, aTypeHoldsForEachCsvFileThatHasTheColumn) {
    write("1.csv", "x,run\n1,5\n");
    write("2.csv", "x,more\n2,abc\n");
    bench.expectWarnings().set("file", path("*.csv")).set("differing_files", "common columns");
    bench.set("types", "x: text, more: text").run();
    EXPECT_EQ(bench.table().schema[0].type, ColumnType::Text);
    EXPECT_EQ(bench.table().chunks[1].columns[0]->texts(), (Column::Texts{"2"}));
    bench.set("types", "y: real");
    EXPECT_EQ(bench.failure(), "types: there is no column \"y\"; the columns are \"x\", \"run\", \"more\"");
    bench.set("differing_files", "fail").set("types", "");
    EXPECT_THAT(bench.failure(), HasSubstr("2.csv\" has a column \"more\""));
}

TEST_F(FileLists, laterCsvFilesFollowTheTypesOfAll) {
    std::string integers = "x\n";
    for (int i = 0; i < 200; ++i) {
        integers += "1\n";
    }
    write("1.csv", integers);
    write("2.csv", "x\n0.5\n");
    write("3.csv", integers + "1.5\n");
    bench.set("file", path("[12].csv")).run();
    EXPECT_EQ(bench.table().column("x").back(), 0.5);
    bench.set("file", path("[13].csv")).run();
    EXPECT_EQ(bench.table().column("x").back(), 1.5);
    bench.set("types", "x: integer");
    EXPECT_THAT(bench.failure(), HasSubstr("3.csv\", line 202, column 1 (x): \"1.5\" is not a value of type integer"));
}

TEST_F(FileLists, rowsKnowTheirFile) {
    write("1.csv", "x\n1\n");
    write("2.csv", "x\n2\n");
    bench.set("file", path("2.csv") + "," + path("1.csv")).set("file_columns", "yes").run();
    EXPECT_EQ(bench.table().chunks[0].columns[1]->texts(), (Column::Texts{path("2.csv")}));
    EXPECT_EQ(bench.table().chunks[1].columns[2]->integers(), (Column::Integers{1}));
}

std::string tupleOf(const std::string& name, const std::string& values) {
    return "<aida><tuple name='" + name + "' path='/'><columns><column name='x' type='double'/></columns><rows>" +
           values + "</rows></tuple></aida>";
}

TEST_F(FileLists, theOnlyTupleOfEachAidaFileIsRead) {
    write("1.aida", tupleOf("first", "<row><entry value='1'/></row>"));
    write("2.aida", tupleOf("second", "<row><entry value='2'/></row>"));
    KindHarness reader("AidaTable");
    reader.set("file", path("*.aida")).run();
    EXPECT_THAT(reader.table().column("x"), ElementsAre(1, 2));
    reader.set("object", "/first");
    EXPECT_THAT(reader.failure(), HasSubstr("contains no object /first"));
}

TEST_F(FileLists, rootFilesAreReadOneAfterTheOther) {
    const std::string muons = VELMORAK_TEST_SOURCE "/examples/Particle_physics/muons.root";
    std::filesystem::create_symlink(muons, bench.folder() / "2.root");
    KindHarness reader("RootTable");
    reader.set("file", muons + ", " + path("*.root")).set("columns", "nMuon").set("file_columns", "yes").run();
    std::size_t rows = 0;
    for (const Chunk& chunk : reader.table().chunks) {
        rows += chunk.rows;
    }
    EXPECT_EQ(rows, 2000U);
    EXPECT_EQ(reader.table().chunks.back().columns[2]->integers().back(), 1);
}

void writeHistogram(const std::filesystem::path& file, double x, double high = 10) {
    auto histogram = std::make_shared<Histogram1D>(Axis(5, 0, high));
    histogram->fill(x, 2.0);
    auto profile = std::make_shared<Profile1D>(Grid<1>({Axis(5, 0, high)}));
    profile->fill({x}, x);
    AidaFileWriter writer(file);
    histogram->name = "bars";
    profile->name = "means";
    writer.write(*histogram, "/");
    writer.write(*profile, "/");
    writer.close();
}

TEST_F(FileLists, histogramsOfSeveralFilesAreAdded) {
    writeHistogram(path("1.aida"), 1);
    writeHistogram(path("2.aida"), 1.5);
    writeHistogram(path("3.aida"), 9);
    KindHarness reader("AidaHistogram");
    reader.set("file", path("*.aida")).run();
    const HistogramPtr sum = reader.histogram("histogram");
    EXPECT_EQ(sum->name, "bars");
    EXPECT_EQ(sum->cells()[1].w, 4.0);
    EXPECT_EQ(sum->cells()[1].ww, 8.0);
    EXPECT_EQ(sum->cells()[5].w, 2.0);
    KindHarness means("AidaProfile");
    means.set("file", path("*.aida")).run();
    EXPECT_EQ(means.object<Profile1D>("profile")->height(1), 1.25);
}

TEST_F(FileLists, objectsThatCannotBeAddedAreRefused) {
    writeHistogram(path("1.aida"), 1);
    writeHistogram(path("2.aida"), 1, 20);
    KindHarness reader("AidaHistogram");
    reader.set("file", path("*.aida"));
    EXPECT_EQ(reader.failure(), "file: the object in \"" + path("2.aida") + "\" has other bins than the one in \"" +
                                    path("1.aida") + "\"");
    write("samples.csv", "file,weight\n1.aida,1\n");
    reader.set("file", "@" + path("samples.csv"));
    EXPECT_THAT(reader.failure(), HasSubstr("the properties of files are for tables"));
    const std::string profile =
        "<aida><profile1d name='p'><axis min='0' max='1' numberOfBins='1'/><statistics entries='1'/>"
        "<data1d><bin1d binNum='0' entries='1' height='2' error='1'/></data1d></profile1d></aida>";
    write("a.aida", profile);
    write("b.aida", profile);
    KindHarness means("AidaProfile");
    means.set("file", path("[ab].aida"));
    EXPECT_THAT(means.failure(), HasSubstr("a.aida\" cannot be added to others: the file has no sums of weights"));
}

}  // namespace
}  // namespace velmorak::test
