#include "KindHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

/// The kind Table, and how kinds recognise the formats of files.
namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

const std::string data = VELMORAK_TEST_SOURCE "/tests/data";
const std::string examples = VELMORAK_TEST_SOURCE "/examples";

class AnyTable : public testing::Test {
protected:
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(bench.folder() / name, std::ios::binary) << content;
        return (bench.folder() / name).string();
    }
    std::vector<std::string> columns() const {
        std::vector<std::string> names;
        for (const ColumnInfo& column : bench.table().schema.columns()) {
            names.push_back(column.name);
        }
        return names;
    }

    KindHarness bench{"Table"};
};

TEST_F(AnyTable, readsValuesSeparatedByCommas) {
    bench.set("file", write("a.csv", "x,n\n0.5,1\n1.5,2\n")).run();
    EXPECT_THAT(columns(), ElementsAre("x", "n"));
    EXPECT_THAT(bench.table().column("x"), ElementsAre(0.5, 1.5));
}

TEST_F(AnyTable, recognisesTheFormatByContentNotByName) {
    const std::string aida = write("rows.txt",
                                   "<?xml version=\"1.0\"?><aida><tuple name=\"t\"><columns><column name=\"x\" "
                                   "type=\"double\"/></columns><rows><row><entry value=\"3\"/></row></rows>"
                                   "</tuple></aida>");
    bench.set("file", aida).run();
    EXPECT_THAT(bench.table().column("x"), ElementsAre(3.0));
}

TEST_F(AnyTable, readsTheSameRowsAsTheKindOfTheFormat) {
    const std::string file = data + "/root/uproot-sample-6.20.04-lz4.root";
    bench.expectWarnings().set("file", file).set("columns", "n, ai4").run();
    KindHarness root("RootTable");
    root.expectWarnings().set("file", file).set("columns", "n, ai4").run();
    EXPECT_THAT(columns(), ElementsAre("n", "ai4"));
    EXPECT_EQ(bench.table().schema, root.table().schema);
    EXPECT_EQ(bench.table().column("n"), root.table().column("n"));
}

TEST_F(AnyTable, restrictsTheColumnsOfEveryFormat) {
    bench.set("file", write("a.csv", "x,y,z\n1,2,3\n4,5,6\n")).set("columns", "z, x").run();
    EXPECT_THAT(columns(), ElementsAre("z", "x"));
    EXPECT_THAT(bench.table().column("z"), ElementsAre(3.0, 6.0));
    bench.set("columns", "z, w");
    EXPECT_THAT(bench.failure(), HasSubstr("there is no column \"w\""));
}

TEST_F(AnyTable, readsManyFilesOfOneFormat) {
    write("1.csv", "x\n1\n");
    write("2.csv", "x\n2\n");
    bench.set("file", (bench.folder() / "*.csv").string()).run();
    EXPECT_THAT(bench.table().column("x"), ElementsAre(1.0, 2.0));
}

TEST_F(AnyTable, refusesFilesOfDifferentFormats) {
    const std::string text = write("a.csv", "x\n1\n");
    bench.set("file", text + ", " + data + "/root/uproot-issue38a.root");
    EXPECT_THAT(bench.failure(), HasSubstr("uproot-issue38a.root is a ROOT file, but another file of the list is a "
                                           "text file; read the files of each format with a Table of their own"));
}

TEST_F(AnyTable, readsEventsOfGeneratorsAndNtuplesOfGeant4) {
    bench.set("file", examples + "/Particle_physics/generated.hepmc").set("columns", "scale, event").run();
    EXPECT_THAT(columns(), ElementsAre("scale", "event"));
    EXPECT_EQ(bench.table().column("event").size(), 400U);
    KindHarness ntuple("Table");
    ntuple.set("file", examples + "/Detectors/geant4/run_nt_hits_t*.csv").set("columns", "layer").run();
    EXPECT_EQ(ntuple.table().column("layer").size(), 3000U);
}

TEST_F(AnyTable, namesTheKindForAFileWithoutTables) {
    bench.set("file", examples + "/Particle_physics/reference.yoda");
    EXPECT_THAT(bench.failure(), EndsWith("reference.yoda is a YODA file, which has no tables; use YodaObjects"));
    bench.set("file", examples + "/Detectors/geant4/run_h1_edep.csv");
    EXPECT_THAT(bench.failure(), EndsWith("run_h1_edep.csv is a histogram or profile of Geant4, which has no tables; "
                                          "use Geant4Histogram"));
}

TEST_F(AnyTable, saysThatAFormatIsUnknown) {
    bench.set("file", write("a.bin", std::string("\x7f"
                                                 "ELF\0\0\0\1",
                                                 8)));
    EXPECT_THAT(bench.failure(), EndsWith("a.bin has no known format"));
}

TEST_F(AnyTable, skipsADamagedFirstFile) {
    write("1.bin", std::string("\0\1\2\3", 4));
    write("2.csv", "x\n2\n");
    bench.expectWarnings().set("file", (bench.folder() / "*.???").string()).set("damaged_files", "skip").run();
    EXPECT_THAT(bench.table().column("x"), ElementsAre(2.0));
}

TEST(FormatOfFile, csvRefusesFilesOfOtherFormatsByName) {
    KindHarness csv("CsvTable");
    csv.set("file", data + "/root/uproot-issue38a.root");
    EXPECT_THAT(csv.failure(), EndsWith("uproot-issue38a.root is a ROOT file; use RootTable or Table"));
    csv.set("file", examples + "/Particle_physics/reference.yoda");
    EXPECT_THAT(csv.failure(), EndsWith("reference.yoda is a YODA file; use YodaObjects"));
    csv.set("file", examples + "/Particle_physics/generated.hepmc");
    EXPECT_THAT(csv.failure(), EndsWith("generated.hepmc is a file of HepMC 3 events; use HepMcTable or Table"));
}

}  // namespace
}  // namespace velmorak::test
