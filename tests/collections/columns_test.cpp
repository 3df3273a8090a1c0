#include "KindHarness.h"

#include "graph/ManagerImpl.h"

#include <QzManager.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// Descriptions of the columns at the outputs of table readers, before any run.
namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

/// That an optional may hold.
class OwnManager final : public QzManager {
public:
    using QzManager::QzManager;
};

class Columns : public testing::Test {
protected:
    Columns() {
        setenv("VELMORAK_COLLECTIONS", VELMORAK_TEST_COLLECTIONS, 1);
        manager.emplace("QzAnalysisFactory");
        // A preview always ends in time, however busy the machine is.
        QzManager::Part::of(*manager).previews.patience = std::chrono::hours(1);
    }
    ~Columns() override { manager.reset(); }

    void add(const std::string& kind, const std::string& name) {
        for (std::size_t i = 0; i < QzManager::GetPlugins().size(); ++i) {
            if (QzManager::GetPlugins()[i].name == kind) {
                manager->CreatePlugin(static_cast<std::uint16_t>(i), name);
            }
        }
    }
    void set(const std::string& name, const std::string& input, const std::string& value) {
        manager->SetInputValue(manager->IndexOf(name), manager->FindPlugin(name)->InputIndex(input), value);
    }
    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name) << text;
        return (folder / name).string();
    }
    /// The text of the output after the kind's own description and the type.
    std::string columnsOf(const std::string& name) {
        QzBase& node = *manager->FindPlugin(name);
        const std::string plain =
            shippedKind(node.GetKind()->name).ports({}).outputs.front().description + "\nType: table";
        const std::string& said = node.FullOutputs().front()->description;
        EXPECT_EQ(said.substr(0, plain.size()), plain);
        return said.substr(plain.size());
    }

    TemporaryFolder ownFolder{"columns"};
    const fs::path& folder = ownFolder.path();
    std::optional<OwnManager> manager;
};

const std::string tracks = std::string(VELMORAK_TEST_SOURCE) + "/tests/data/aida/tuple_nested.aida";

TEST_F(Columns, ofATextFileAreToldWithTheirTypes) {
    add("CsvTable", "csv");
    EXPECT_EQ(columnsOf("csv"), "");
    set("csv", "file", write("a.csv", "x,n,good,tag\n1.5,2,true,muon\n"));
    EXPECT_EQ(columnsOf("csv"), "\nColumns: x (real), n (integer), good (boolean), tag (text).");
    set("csv", "types", "n: text");
    EXPECT_EQ(columnsOf("csv"), "\nColumns: x (real), n (text), good (boolean), tag (text).");
    set("csv", "header", "no");
    EXPECT_EQ(columnsOf("csv"), "") << "the column whose type is given is no more";
}

TEST_F(Columns, areToldWithTheirUnits) {
    add("CsvTable", "csv");
    set("csv", "header", "names and units");
    set("csv", "file", write("a.csv", "E,n\nGeV,\n1.5,2\n"));
    EXPECT_EQ(columnsOf("csv"), "\nColumns: E (real, GeV), n (integer).");
}

TEST_F(Columns, ofATupleAreToldAlsoWhereTheyAreLists) {
    add("AidaTable", "events");
    set("events", "file", tracks);
    set("events", "object", "/data/tracks");
    EXPECT_EQ(columnsOf("events"), "\nColumns: event (integer), trk.px (list of real), trk.nHits (list of integer).");
    set("events", "object", "/data/nothing");
    EXPECT_EQ(columnsOf("events"), "");
}

TEST_F(Columns, ofRandomNumbersAreToldWithoutAFile) {
    add("RandomTable", "random");
    EXPECT_EQ(columnsOf("random"), "\nColumn: x (real).");
    set("random", "columns", "m: gauss(0, 1); n: poisson(3)");
    EXPECT_EQ(columnsOf("random"), "\nColumns: m (real), n (integer).");
}

TEST_F(Columns, areLookedForBesideTheDocument) {
    fs::create_directories(folder / "there");
    write("there/b.csv", "y\n1\n");
    add("CsvTable", "csv");
    set("csv", "file", "b.csv");
    EXPECT_EQ(columnsOf("csv"), "");
    manager->SetFileName((folder / "there/document.zedra").string());
    EXPECT_EQ(columnsOf("csv"), "\nColumn: y (integer).");
}

TEST_F(Columns, areToldWhenADocumentIsOpened) {
    write("b.csv", "y,z\n1,2\n");
    add("CsvTable", "csv");
    set("csv", "file", "b.csv");
    const std::string document = write("a.zedra", manager->DocumentText());
    EXPECT_EQ(manager->DocumentText().find("Columns"), std::string::npos);
    manager->DeletePlugin(0);
    manager->ReadDocument(document);
    EXPECT_EQ(columnsOf("csv"), "\nColumns: y (integer), z (integer).");
}

TEST_F(Columns, followTheFileAndComeBack) {
    const std::string file = write("a.csv", "x\n1\n");
    add("CsvTable", "csv");
    set("csv", "file", file);
    EXPECT_EQ(columnsOf("csv"), "\nColumn: x (integer).");
    fs::remove(file);
    set("csv", "file", file);
    EXPECT_EQ(columnsOf("csv"), "");
    write("a.csv", "longer,than\n0.5,before\n");
    set("csv", "file", file);
    EXPECT_EQ(columnsOf("csv"), "\nColumns: longer (real), than (text).");
    set("csv", "file", "");
    EXPECT_EQ(columnsOf("csv"), "");
    set("csv", "file", file);
    EXPECT_EQ(columnsOf("csv"), "\nColumns: longer (real), than (text).");
}

TEST_F(Columns, areLookedUpWhenAValueIsSetAndNotWhenTheOutputsAreListed) {
    const std::string file = write("a.csv", "x\n1\n");
    add("CsvTable", "csv");
    set("csv", "file", file);
    write("a.csv", "other,columns\n1,2\n");
    EXPECT_EQ(columnsOf("csv"), "\nColumn: x (integer).");
    set("csv", "file", file);
    EXPECT_EQ(columnsOf("csv"), "\nColumns: other (integer), columns (integer).");
}

TEST_F(Columns, areNotLookedUpWhereNobodyReadsThem) {
    configure(*manager, {.previewsColumns = false});
    add("RandomTable", "random");
    EXPECT_EQ(columnsOf("random"), "");
}

TEST_F(Columns, areNotToldWhereAWireBringsAValue) {
    add("RandomTable", "random");
    add("Number", "rows");
    QzBase& random = *manager->FindPlugin("random");
    ASSERT_TRUE(random.Connect("rows", manager->FindPlugin("rows"), "number"));
    EXPECT_EQ(columnsOf("random"), "");
    manager->FindPlugin("rows")->Disconnect("number", &random, "rows");
    EXPECT_EQ(columnsOf("random"), "\nColumn: x (real).");
}

TEST_F(Columns, areToldAsTheyAreCalledAndDoNotFillTheScreen) {
    std::string header = "a<b>&c\td";
    for (int i = 1; i < 50; ++i) {
        header += ",c" + std::to_string(i);
    }
    add("CsvTable", "csv");
    set("csv", "file", write("a.csv", header + "\n"));
    const std::string said = columnsOf("csv");
    EXPECT_TRUE(said.starts_with("\nColumns: a<b>&c d (real), c1 (real), ")) << said;
    EXPECT_NE(said.find("c39 (real) and 10 more."), std::string::npos) << said;
}

TEST_F(Columns, areGivenUpWhereTheyCannotBeFoundAtOnce) {
    const std::string pipe = (folder / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    add("CsvTable", "csv");
    set("csv", "file", pipe);
    EXPECT_EQ(columnsOf("csv"), "") << "nothing would ever come";
    std::string late = "<aida><tuple name=\"first\"><columns><column name=\"a\"/></columns><rows>";
    for (int i = 0; i < 400000; ++i) {
        late += "<row><entry value=\"1.5\"/></row>\n";
    }
    late += "</rows></tuple><tuple name=\"last\"><columns><column name=\"b\"/></columns><rows/></tuple></aida>";
    add("AidaTable", "events");
    set("events", "file", write("late.aida", late));
    set("events", "object", "/last");
    EXPECT_EQ(columnsOf("events"), "");
    set("events", "object", "/first");
    EXPECT_EQ(columnsOf("events"), "\nColumn: a (real).");
}

}  // namespace
}  // namespace velmorak::test
