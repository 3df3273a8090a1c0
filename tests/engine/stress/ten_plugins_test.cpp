#include "graph/ManagerExtensions.h"

#include <velmorak/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

/// Pipelines of the shipped kinds in which something is wrong.
class WrongPipeline : public testing::Test {
protected:
    WrongPipeline() : former(std::cerr.rdbuf(said.rdbuf())) { std::ofstream(folder / "short.csv") << "x,y\n1,2\n3\n"; }
    ~WrongPipeline() override { std::cerr.rdbuf(former); }

    /// @param plugins of the document, the first being the start.
    void run(const std::string& plugins) {
        std::ofstream(folder / "wrong.zedra") << R"({"zedra": 1, "plugins": [)" << plugins << "]}";
        manager.ReadDocument((folder / "wrong.zedra").string());
        ASSERT_EQ(lastReadError(manager), "");
        manager.Run();
    }

    const NodeReport& of(const std::string& name) {
        return lastReport(manager).nodes.at(static_cast<std::size_t>(manager.IndexOf(name)));
    }
    std::string sentence(const std::string& name) { return of(name).sentence; }
    NodeStatus status(const std::string& name) { return of(name).status; }

    static std::string random(const std::string& name) {
        return R"({"name": ")" + name + R"(", "kind": "RandomTable"})";
    }
    static std::string histogram(const std::string& name, const std::string& source, const std::string& expression) {
        return R"({"name": ")" + name + R"(", "kind": "Histogram1D", "inputs": [{"name": "table", "from": [")" +
               source + R"(", "table"]}, {"name": "expression", "value": ")" + expression + R"("}]})";
    }
    static std::string reader(const std::string& name, const std::string& kind, const std::string& file) {
        return R"({"name": ")" + name + R"(", "kind": ")" + kind + R"(", "inputs": [{"name": "file", "value": ")" +
               file + R"("}]})";
    }
    static std::string writer(const std::string& name, const std::string& source, const std::string& output) {
        return R"({"name": ")" + name + R"(", "kind": "AidaWriter", "inputs": [{"name": "object", "from": [")" +
               source + R"(", ")" + output + R"("]}]})";
    }

    TemporaryFolder ownFolder{"wrong"};
    const fs::path& folder = ownFolder.path();
    std::ostringstream said;
    std::streambuf* former;
    QzManager manager{"QzAnalysisFactory"};
};

TEST_F(WrongPipeline, ofTenPluginsFinishesAllButThreeThatFailAndWhatIsBehindThem) {
    run(random("Make") + "," + histogram("Good", "Make", "x") + "," + histogram("Bad", "Make", "nowhere") + "," +
        writer("Keep", "Good", "histogram") + "," + writer("Lost", "Bad", "histogram") + "," +
        R"({"name": "Cut", "kind": "Filter", "inputs": [{"name": "table", "from": ["Make", "table"]},
            {"name": "condition", "value": "x > missing"}]},)" +
        histogram("Behind", "Cut", "x") + "," +
        R"({"name": "Odd", "kind": "Formula", "inputs": [{"name": "table", "from": ["Make", "table"]},
            {"name": "expression", "value": "sqrt(-1 - x * x) "}]},
           {"name": "Numbers", "kind": "Statistics", "inputs": [{"name": "data", "from": ["Odd", "table"]},
            {"name": "expression", "value": "result"}]},
           {"name": "Sum", "kind": "Adder", "inputs": [{"name": "a", "from": ["Make", "table"]}]})");
    EXPECT_EQ(status("Keep"), NodeStatus::Done);
    EXPECT_TRUE(fs::exists(folder / "wrong.results" / "Keep.aida"));
    EXPECT_EQ(status("Numbers"), NodeStatus::Done) << "NaN is a number like others";
    EXPECT_EQ(std::get<double>(of("Numbers").outputs.at(7)), 1000.0) << "and counted apart";
    EXPECT_THAT(sentence("Bad"), HasSubstr("nowhere"));
    EXPECT_EQ(sentence("Lost"), "not run because of \"Bad\"");
    EXPECT_FALSE(fs::exists(folder / "wrong.results" / "Lost.aida"));
    EXPECT_THAT(sentence("Cut"), HasSubstr("missing"));
    EXPECT_EQ(sentence("Behind"), "not run because of \"Cut\"");
    EXPECT_EQ(sentence("Sum"), "input \"a\": output \"table\" of \"Make\" is a table, where a number is needed");
    EXPECT_THAT(said.str(), HasSubstr("Histogram1D \"Bad\" failed: "));
    EXPECT_THAT(said.str(), HasSubstr("AidaWriter \"Lost\": not run because of \"Bad\""));
}

TEST_F(WrongPipeline, namesAFileThatIsMissing) {
    run(reader("Read", "AidaTable", "gone.aida") + "," + histogram("Fill", "Read", "x"));
    EXPECT_EQ(status("Read"), NodeStatus::Failed);
    EXPECT_THAT(sentence("Read"), HasSubstr("gone.aida"));
    EXPECT_EQ(sentence("Fill"), "not run because of \"Read\"");
}

/// Nobody may go there, not even the system's administrator.
TEST_F(WrongPipeline, namesAFileInAPlaceThatCannotBeEntered) {
    run(reader("Read", "CsvTable", "short.csv/inside.csv") + "," + histogram("Fill", "Read", "x"));
    EXPECT_EQ(status("Read"), NodeStatus::Failed);
    EXPECT_THAT(sentence("Read"), HasSubstr("short.csv/inside.csv"));
    EXPECT_EQ(sentence("Fill"), "not run because of \"Read\"");
}

TEST_F(WrongPipeline, namesTheRowThatIsWrongInAFile) {
    run(reader("Read", "CsvTable", "short.csv") + "," + histogram("Fill", "Read", "x"));
    EXPECT_EQ(status("Read"), NodeStatus::Failed);
    EXPECT_THAT(sentence("Read"), AllOf(HasSubstr("short.csv"), HasSubstr("3")));
    EXPECT_EQ(sentence("Fill"), "not run because of \"Read\"");
}

TEST_F(WrongPipeline, namesAFolderThatCannotBeWritten) {
    setResultsFolder(manager, folder / "short.csv" / "results");
    run(random("Make") + "," + histogram("Fill", "Make", "x") + "," + writer("Write", "Fill", "histogram"));
    EXPECT_EQ(status("Fill"), NodeStatus::Done);
    EXPECT_EQ(status("Write"), NodeStatus::Failed);
    EXPECT_THAT(sentence("Write"), AllOf(HasSubstr("Write.aida"), HasSubstr("short.csv/results")));
}

TEST_F(WrongPipeline, namesTheWayOfACycle) {
    run(R"({"name": "A", "kind": "Adder", "inputs": [{"name": "a", "from": ["B", "sum"]}]},
           {"name": "B", "kind": "Adder", "inputs": [{"name": "a", "from": ["A", "sum"]}]},
           {"name": "C", "kind": "Adder", "inputs": [{"name": "a", "from": ["B", "sum"]}]})");
    EXPECT_EQ(sentence("A"), "input \"a\": dependency cycle: \"A\" -> \"B\" -> \"A\"");
    EXPECT_EQ(sentence("C"), "not run because of \"B\"");
}

TEST_F(WrongPipeline, doesNotKeepTheNextRunFromWorking) {
    run(random("Make") + "," + histogram("Fill", "Make", "nowhere"));
    EXPECT_EQ(status("Fill"), NodeStatus::Failed);
    manager.SetInputValue(1, manager.plugins[1]->InputIndex("expression"), "x");
    manager.Run();
    EXPECT_EQ(status("Fill"), NodeStatus::Done);
}

}  // namespace
}  // namespace velmorak::test
