#include "GraphFixture.h"

#include "graph/ManagerExtensions.h"

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Documents of another version or with collections that are not there.
class UnknownFields : public Graph {
protected:
    void readQuietly(const std::string& document) {
        const Errors errors;
        read(document);
        ASSERT_EQ(lastReadError(manager), "");
    }
};

TEST_F(UnknownFields, unknownFieldsSurviveByteForByte) {
    const std::string document = contentOf(TEST_DATA "/foreign.zedra");
    readQuietly(document);
    EXPECT_EQ(manager.DocumentText(), document);
}

TEST_F(UnknownFields, aPluginOfAnUnknownKindHasTheDocumentsPorts) {
    readQuietly(contentOf(TEST_DATA "/foreign.zedra"));
    QzBase& stranger = node("Stranger");
    ASSERT_NE(stranger.GetKind(), nullptr);
    EXPECT_EQ(stranger.GetKind()->name, "Teleporter");
    EXPECT_EQ(stranger.Inputs().size(), 4U);
    EXPECT_EQ(stranger.Outputs().size(), 2U);
    EXPECT_EQ(sourceOf("Stranger", "power"), "Known.sum");
    EXPECT_EQ(sourceOf("Known", "a"), "Stranger.beam");
    EXPECT_EQ(pipelineOf(manager).nodes[0].kind, nullptr);
    EXPECT_EQ(pipelineOf(manager).nodes[0].kindName, "Teleporter");
    expectInStep(manager);
}

TEST_F(UnknownFields, anUnknownKindIsReportedByName) {
    const Errors errors;
    read(contentOf(TEST_DATA "/foreign.zedra"));
    EXPECT_THAT(errors.text(), HasSubstr("Stranger is kept as it is: no collection offers its kind \"Teleporter\"."));
}

TEST_F(UnknownFields, anUnknownPluginCanBeEdited) {
    readQuietly(contentOf(TEST_DATA "/foreign.zedra"));
    setValue("Stranger", "mode", "new text");
    EXPECT_EQ(input("Stranger", "mode").value, "new text");
    EXPECT_TRUE(wire("Known", "text", "Stranger", "loose"));
    EXPECT_THAT(manager.DocumentText(), HasSubstr(R"("name": "loose", "value": "", "from": ["Known", "text"])"));
    manager.DeletePlugin(manager.IndexOf("Stranger"));
    EXPECT_EQ(sourceOf("Known", "a"), "");
}

TEST_F(UnknownFields, anOutputThatOnlyABindingNamesIsThere) {
    readQuietly(R"({"zedra": 1, "plugins": [{"name": "S", "kind": "Teleporter"},
        {"name": "K", "kind": "Pair", "inputs": [{"name": "a", "from": ["S", "ray"]}]}]})");
    EXPECT_EQ(sourceOf("K", "a"), "S.ray");
    EXPECT_EQ(output("S", "ray").type, "any");
}

TEST_F(UnknownFields, aValueThatTheKindRefusesIsKeptAndReported) {
    const Errors errors;
    read(
        R"({"zedra": 1, "plugins": [{"name": "K", "kind": "Pair", "inputs": [{"name": "mode", "value": "spline"}]}]})");
    EXPECT_EQ(input("K", "mode").value, "spline");
    EXPECT_THAT(errors.text(), HasSubstr("K (Pair), input mode: \"spline\" is not one of the choices: plain, weighted; "
                                         "the value is kept, but a run cannot use it."));
}

TEST_F(UnknownFields, anInputThatComesBackHasItsKeptValue) {
    readQuietly(R"({"zedra": 1, "plugins": [{"name": "L", "kind": "Letters", "inputs": [
        {"name": "letters", "value": "a"}, {"name": "b", "value": "6", "unit": "GeV"}]}]})");
    EXPECT_THAT(manager.DocumentText(), HasSubstr(R"({"name": "b", "value": "6", "unit": "GeV"})"));
    setValue("L", "letters", "ab");
    EXPECT_EQ(input("L", "b").value, "6");
    const std::string text = manager.DocumentText();
    EXPECT_EQ(text.find(R"("unit": "GeV")"), text.rfind(R"("unit": "GeV")"));
}

TEST_F(UnknownFields, valuesForWhichThereAreNoPortsAreKept) {
    const Errors errors;
    read(R"({"zedra": 1, "plugins": [{"name": "L", "kind": "Letters", "inputs": [
        {"name": "letters", "value": "p!"}, {"name": "p", "value": "6"}]}]})");
    EXPECT_THAT(errors.text(), HasSubstr("L (Letters): ! is no letter."));
    EXPECT_EQ(input("L", "letters").value, "p!");
    EXPECT_THAT(manager.DocumentText(), HasSubstr(R"({"name": "p", "value": "6"})"));
}

TEST_F(UnknownFields, fieldsOfTheDocumentGoWithItsPlugins) {
    readQuietly(R"({"zedra": 1, "summary": "One.", "plugins": [{"name": "K", "kind": "Pair"}], "author": "A"})");
    readQuietly(R"({"zedra": 1, "summary": "Two.", "plugins": [], "author": "B", "more": [ ]})");
    EXPECT_THAT(manager.DocumentText(), HasSubstr("\"summary\": \"One.\""));
    EXPECT_THAT(manager.DocumentText(), HasSubstr("\"author\": \"A\",\n  \"more\": [ ]"));
    manager.DeletePlugin(0);
    readQuietly(R"({"zedra": 1, "plugins": []})");
    EXPECT_EQ(manager.DocumentText(), "{\n  \"zedra\": 1,\n  \"plugins\": []\n}\n");
}

}  // namespace
}  // namespace velmorak::test
