#include "GraphFixture.h"

#include "graph/ManagerExtensions.h"

#include <cstdlib>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

class Snapshot : public Graph {
protected:
    std::string writeEmpty(const std::string& name) { return folder.write(name, R"({"zedra": 1, "plugins": []})"); }
};

TEST_F(Snapshot, holdsNodesValuesAndWiresInTheManagersOrder) {
    add("Pair", "A");
    add("Pair", "B");
    setValue("A", "a", "4");
    wire("A", "sum", "B", "b");
    manager.SetStart(1);
    const Pipeline pipeline = pipelineOf(manager);
    ASSERT_EQ(pipeline.nodes.size(), 2U);
    EXPECT_EQ(pipeline.nodes[0].name, "B");
    EXPECT_EQ(pipeline.nodes[0].kindName, "Pair");
    ASSERT_TRUE(pipeline.nodes[0].inputs[1].wire.has_value());
    EXPECT_EQ(pipeline.nodes[0].inputs[1].wire->node, 1U);
    EXPECT_EQ(pipeline.nodes[0].inputs[1].wire->output, "sum");
    EXPECT_FALSE(pipeline.nodes[0].inputs[0].wire.has_value());
    EXPECT_EQ(pipeline.nodes[1].inputs[0].value, "4");
    EXPECT_EQ(pipeline.nodes[1].inputs[1].spec.maximum, 10.0);
    EXPECT_EQ(pipeline.nodes[1].outputs[1].type, ValueType::Text);
    EXPECT_EQ(pipeline.nodes[1].kind->name(), "Pair");
}

TEST_F(Snapshot, isIndependentOfLaterEdits) {
    add("Pair", "A");
    const Pipeline pipeline = pipelineOf(manager);
    setValue("A", "a", "9");
    manager.DeletePlugin(0);
    EXPECT_EQ(pipeline.nodes[0].inputs[0].value, "0");
}

TEST_F(Snapshot, resultsOfAnUntitledPipelineLandInTheCurrentFolder) {
    EXPECT_EQ(pipelineOf(manager).resultsFolder, fs::current_path() / "untitled.results");
    EXPECT_EQ(pipelineOf(manager).documentFolder, "");
}

TEST_F(Snapshot, resultsOfADocumentLandBesideIt) {
    manager.ReadDocument(writeEmpty("a.b.zedra"));
    EXPECT_EQ(pipelineOf(manager).resultsFolder, folder.path / "a.b.results");
    EXPECT_EQ(pipelineOf(manager).documentFolder, folder.path);
    manager.SetFileName((folder.path / "sub/other.zedra").string());
    EXPECT_EQ(pipelineOf(manager).resultsFolder, folder.path / "sub/other.results");
}

TEST_F(Snapshot, aRelativeFileNameIsMadeAbsolute) {
    manager.SetFileName("here.zedra");
    EXPECT_EQ(manager.fileName, "here.zedra");
    EXPECT_EQ(pipelineOf(manager).resultsFolder, fs::current_path() / "here.results");
    EXPECT_EQ(pipelineOf(manager).documentFolder, fs::current_path());
}

TEST_F(Snapshot, aDocumentThatIsOpenedBesideAnotherDoesNotMoveItsFolder) {
    manager.ReadDocument(writeEmpty("one/first.zedra"));
    add("Pair", "A");
    manager.ReadDocument(writeEmpty("two/second.zedra"));
    EXPECT_EQ(pipelineOf(manager).documentFolder, folder.path / "one");
    manager.DeletePlugin(0);
    manager.ReadDocument(writeEmpty("two/second.zedra"));
    EXPECT_EQ(pipelineOf(manager).documentFolder, folder.path / "two");
}

TEST_F(Snapshot, anAidaFileThatCannotBeReadIsNamedNevertheless) {
    const Errors errors;
    EXPECT_FALSE(manager.loadAIDA("missing.aida"));
    EXPECT_EQ(errors.lines(), 1);
    EXPECT_THAT(errors.text(), testing::HasSubstr("The AIDA file missing.aida cannot be read: "));
    EXPECT_EQ(pipelineOf(manager).commandLineAida, fs::current_path() / "missing.aida");
    EXPECT_FALSE(manager.loadAIDA(""));
    EXPECT_FALSE(manager.loadAIDA(folder.path.string()));
    EXPECT_FALSE(manager.loadAIDA(folder.write("text.aida", "no xml")));
    EXPECT_EQ(errors.lines(), 4);
}

TEST_F(Snapshot, anAidaFileIsRemembered) {
    const std::string file = folder.write("empty.aida", "<?xml version=\"1.0\"?>\n<aida version=\"3.3\">\n</aida>\n");
    const Errors errors;
    EXPECT_TRUE(manager.loadAIDA(file)) << errors.text();
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(pipelineOf(manager).commandLineAida, file);
}

}  // namespace
}  // namespace velmorak::test
