#include "GraphFixture.h"

#include <sys/stat.h>
#include "graph/ManagerExtensions.h"

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Documents : public Graph {
protected:
    void buildPipeline() {
        add("Pair", "First");
        add("Letters", "Port \"maker\" \xC2\xB5");
        add("Drain", "Last");
        setValue("First", "a", "1.50");
        setValue("First", "label", "tab\there");
        setValue("Port \"maker\" \xC2\xB5", "letters", "qz");
        wire("First", "sum", "Port \"maker\" \xC2\xB5", "z");
        wire("Port \"maker\" \xC2\xB5", "q", "Last", "other");
        node("First").SetPosition(100.0F, 0.1F);
        node("Last").SetPosition(-1234567.5F, 1e20F);
        node("Last").SetExpanded(false);
        manager.SetStart(1);
    }
    /// Reads it, which must fail for this reason and change nothing.
    void expectRefused(const std::string& document, const std::string& reason) {
        const std::string before = manager.DocumentText();
        const Errors errors;
        read(document);
        EXPECT_THAT(errors.text(), HasSubstr("read.zedra, line " + reason)) << document;
        EXPECT_EQ(errors.lines(), 1);
        EXPECT_EQ(manager.DocumentText(), before);
        EXPECT_EQ(manager.fileName, "");
        EXPECT_EQ(lastReadError(manager) + '\n', errors.text());
    }
    static std::string withPlugins(const std::string& plugins) {
        return "{\n\"zedra\": 1,\n\"plugins\": [\n" + plugins + "\n]}";
    }
};

TEST_F(Documents, anEmptyPipelineIsADocument) {
    EXPECT_EQ(manager.DocumentText(), "{\n  \"zedra\": 1,\n  \"plugins\": []\n}\n");
}

TEST_F(Documents, aPipelineHasOneWrittenForm) {
    buildPipeline();
    EXPECT_EQ(manager.DocumentText(), contentOf(TEST_DATA "/pipeline.zedra"));
}

TEST_F(Documents, aDocumentIsWrittenAsItWasRead) {
    manager.ReadDocument(TEST_DATA "/pipeline.zedra");
    EXPECT_EQ(lastReadError(manager), "");
    EXPECT_THAT(names(), ElementsAre("Port \"maker\" \xC2\xB5", "First", "Last"));
    EXPECT_EQ(sourceOf("Last", "other"), "Port \"maker\" \xC2\xB5.q");
    EXPECT_EQ(input("First", "label").value, "tab\there");
    EXPECT_FALSE(node("Last").IsExpanded());
    expectInStep(manager);
    EXPECT_EQ(manager.DocumentText(), contentOf(TEST_DATA "/pipeline.zedra"));
}

TEST_F(Documents, theOrderOfFieldsAndBlanksDoNotMatter) {
    read(
        "\xEF\xBB\xBF{\"plugins\":[{\"kind\":\"Pair\",\"inputs\":[{\"value\":\"3\",\"name\":\"b\"}],"
        "\"position\":[1e1,-0.50],\"name\":\"A\"}],\r\n\"zedra\":1.0}");
    float x = 0.0F;
    float y = 0.0F;
    node("A").GetPosition(x, y);
    EXPECT_EQ(x, 10.0F);
    EXPECT_EQ(y, -0.5F);
    EXPECT_EQ(input("A", "a").value, "0");
    EXPECT_EQ(input("A", "b").value, "3");
}

TEST_F(Documents, takenNamesGetANumberAndBindingsFollow) {
    const std::string two = withPlugins(R"({"name": "A", "kind": "Pair"}, {"name": "A1", "kind": "Pair", "inputs":
        [{"name": "a", "from": ["A", "sum"]}, {"name": "b", "from": ["A1", "sum"]}]})");
    read(two);
    read(two);
    EXPECT_THAT(names(), ElementsAre("A", "A1", "A2", "A11"));
    EXPECT_EQ(sourceOf("A1", "a"), "A.sum");
    EXPECT_EQ(sourceOf("A11", "a"), "A2.sum");
    EXPECT_EQ(sourceOf("A11", "b"), "A11.sum");
    expectInStep(manager);
}

TEST_F(Documents, aFreeNameInTheDocumentStaysFree) {
    add("Pair", "A");
    read(withPlugins(R"({"name": "A", "kind": "Pair"}, {"name": "A1", "kind": "Pair"})"));
    EXPECT_THAT(names(), ElementsAre("A", "A2", "A1"));
}

TEST_F(Documents, theFileNameOfADocumentThatIsReadBesideAnotherIsTakenOverOnlyWhereNoneIsSet) {
    const std::string second = folder.write("second.zedra", withPlugins(""));
    add("Pair", "A");
    manager.ReadDocument(second);
    EXPECT_EQ(manager.fileName, second);
    manager.ReadDocument(folder.write("third.zedra", withPlugins("")));
    EXPECT_EQ(manager.fileName, second);
}

TEST_F(Documents, theFileNameStaysWhenTheLastPluginGoesUntilAnotherDocumentIsRead) {
    const std::string first = folder.write("first.zedra", withPlugins(R"({"name": "A", "kind": "Pair"})"));
    const std::string second = folder.write("second.zedra", withPlugins(""));
    manager.ReadDocument(first);
    manager.DeletePlugin(0);
    EXPECT_EQ(manager.fileName, first);
    {
        const Errors errors;
        manager.ReadDocument("/nowhere/a.zedra");
    }
    EXPECT_EQ(manager.fileName, first);
    manager.ReadDocument(second);
    EXPECT_EQ(manager.fileName, second);
}

TEST_F(Documents, aFileThatIsNotRegularIsRefusedByName) {
    const std::string pipe = (folder.path / "pipe.zedra").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const Errors errors;
    manager.ReadDocument(pipe);
    EXPECT_EQ(errors.text(), pipe + ": is not a regular file (a FIFO).\n");
    manager.ReadDocument("/dev/tty");
    EXPECT_THAT(errors.text(), HasSubstr("/dev/tty: is not a regular file (a character device).\n"));
}

TEST_F(Documents, aMissingOrUnsuitableFileIsReported) {
    const Errors errors;
    manager.ReadDocument("/nowhere/a.zedra");
    EXPECT_THAT(errors.text(), HasSubstr("/nowhere/a.zedra: cannot be opened: No such file or directory."));
    manager.ReadDocument(folder.path.string());
    EXPECT_THAT(errors.text(), HasSubstr(": is a folder."));
    manager.ReadDocument("");
    EXPECT_EQ(errors.lines(), 3);
    EXPECT_THAT(manager.plugins, IsEmpty());
    EXPECT_EQ(manager.fileName, "");
}

TEST_F(Documents, aGoodOneForgetsTheFormerError) {
    const Errors errors;
    read("{");
    EXPECT_NE(lastReadError(manager), "");
    read(withPlugins(""));
    EXPECT_EQ(lastReadError(manager), "");
}

TEST_F(Documents, invalidJsonIsRefusedWithItsLine) {
    expectRefused("", "1: is not JSON");
    expectRefused("{\n\"zedra\": 1,\n\"plugins\": [}", "3: is not JSON: syntax error");
    expectRefused("{\"zedra\": 1, \"plugins\": []}\n\nmore", "3: is not JSON");
    expectRefused("{\"zedra\": 1,\n\"x\": 1e, \"plugins\": []}", "2: is not JSON");
    expectRefused("{\"zedra\": 1, \"plugins\": [],\n\"x\": 01}", "2: is not JSON");
    expectRefused("{\"zedra\": 1, \"plugins\": [], \"x\": \"\\ud800\"}", "1: is not JSON");
    expectRefused("{\"zedra\": 1, \"plugins\": [], \"x\": \"a\nb\"}", "1: is not JSON");
    expectRefused("{\"zedra\": 1, \"plugins\": [], \"x\": \"\xFF\"}", "1: is not JSON");
    const std::string whole = "{\"zedra\": 1, \"plugins\": []}\n";
    expectRefused(whole + std::string(1, '\0') + "more",
                  "2: is not JSON: syntax error: expected the end of the text, found the byte 0");
    expectRefused("\n" + std::string(100000, '['), "2: nests deeper than 64 levels");
}

TEST_F(Documents, anInvalidDocumentIsRefusedWithItsLine) {
    expectRefused("[1]", "1: a document must be an object.");
    expectRefused("{\n\"plugins\": []}", "1: the field \"zedra\" is missing.");
    expectRefused("{\"zedra\": 1\n}", "1: the field \"plugins\" is missing.");
    expectRefused("{\n\"zedra\": 2, \"plugins\": []}", "2: the document is of version 2 of the format");
    expectRefused("{\n\"zedra\": \"1\", \"plugins\": []}", "2: the field \"zedra\" must be a number.");
    expectRefused("{\"zedra\": 1,\n\"zedra\": 1, \"plugins\": []}",
                  "2: the field \"zedra\" appears twice in one object.");
    expectRefused("{\"zedra\": 1, \"plugins\": {}}", "1: the field \"plugins\" must be a list.");
    expectRefused("{\"zedra\": 1, \"plugins\": [], \"summary\": 5}", "1: the field \"summary\" must be a string.");
}

TEST_F(Documents, anInvalidPluginIsRefusedWithItsLine) {
    expectRefused(withPlugins("5"), "4: a plug-in must be an object.");
    expectRefused(withPlugins("{\"kind\": \"Pair\"}"), "4: the field \"name\" is missing.");
    expectRefused(withPlugins("{\"name\": \"\", \"kind\": \"Pair\"}"), "4: the field \"name\" must not be empty.");
    expectRefused(withPlugins("{\"name\": 7, \"kind\": \"Pair\"}"), "4: the field \"name\" must be a string.");
    expectRefused(withPlugins("{\"name\": \"A\"}"), "4: the field \"kind\" is missing.");
    expectRefused(withPlugins("{\"name\":\"A\",\"kind\":\"Pair\"},\n{\"name\":\"A\",\"kind\":\"Drain\"}"),
                  "5: two plug-ins are named \"A\".");
    const std::string begin = "{\"name\":\"A\",\"kind\":\"Pair\",\n";
    expectRefused(withPlugins(begin + "\"position\": [1]}"),
                  "5: the field \"position\" must be a list of two numbers.");
    expectRefused(withPlugins(begin + "\"position\": [1, \"2\"]}"), "5: the field \"position\" must hold two numbers.");
    expectRefused(withPlugins(begin + "\"position\": [1e39, 0]}"), "5: a coordinate is out of range.");
    expectRefused(withPlugins(begin + "\"position\": [0, -1e999]}"), "5: a coordinate is out of range.");
    expectRefused(withPlugins(begin + "\"position\": [1, 2, 3]}"),
                  "5: the field \"position\" must be a list of two numbers.");
    expectRefused(withPlugins(begin + "\"collapsed\": 1}"), "5: the field \"collapsed\" must be true or false.");
    expectRefused(withPlugins(begin + "\"inputs\": 1}"), "5: the field \"inputs\" must be a list.");
    expectRefused(withPlugins(begin + "\"inputs\": [1]}"), "5: an input must be an object.");
    expectRefused(withPlugins(begin + "\"inputs\": [{\"name\":\"a\"},\n{\"name\":\"a\"}]}"),
                  "6: two inputs of a plug-in are named \"a\".");
    expectRefused(withPlugins(begin + "\"inputs\": [{\"name\":\"a\", \"value\": 1}]}"),
                  "5: the field \"value\" must be a string.");
    expectRefused(withPlugins(begin + "\"inputs\": [{\"name\":\"a\", \"from\": [\"A\"]}]}"),
                  "5: the field \"from\" must be a list of two strings");
    expectRefused(withPlugins(begin + "\"outputs\": [{\"type\":\"a\"}]}"), "5: the field \"name\" is missing.");
}

TEST_F(Documents, aRefusedOneLeavesAFullPipelineAsItIs) {
    buildPipeline();
    expectRefused(withPlugins("{\"name\": \"New\", \"kind\": \"Pair\"}, 5"), "4: a plug-in must be an object.");
}

TEST_F(Documents, aBindingToAMissingPortIsDroppedAndReported) {
    const Errors errors;
    read(withPlugins(R"({"name": "A", "kind": "Pair", "inputs": [
        {"name": "a", "from": ["Ghost", "sum"]},
        {"name": "b", "from": ["A", "none"]},
        {"name": "c", "value": "4", "from": ["A", "sum"]}]})"));
    EXPECT_EQ(errors.lines(), 3);
    EXPECT_THAT(errors.text(),
                HasSubstr("read.zedra, line 5: A (Pair), input a: the binding to \"sum\" of \"Ghost\" is "
                          "dropped, because there is no such output."));
    EXPECT_THAT(errors.text(), HasSubstr("line 7: A (Pair), input c: the binding to \"sum\" of \"A\" is dropped, "
                                         "because there is no such input."));
    EXPECT_EQ(sourceOf("A", "a"), "");
    expectInStep(manager);
}

TEST_F(Documents, onlyTheFirstWarningsArePrinted) {
    std::string inputs;
    for (int i = 0; i < 1000; ++i) {
        inputs += (i == 0 ? "" : ",") + ("{\"name\": \"n" + std::to_string(i) + "\", \"from\": [\"A\", \"sum\"]}");
    }
    const Errors errors;
    read(withPlugins("{\"name\": \"A\", \"kind\": \"Pair\", \"inputs\": [" + inputs + "]}"));
    EXPECT_EQ(errors.lines(), 21);
    EXPECT_THAT(errors.text(), HasSubstr("980 more lines like these are left out."));
}

}  // namespace
}  // namespace velmorak::test
