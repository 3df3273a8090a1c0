#include "GraphFixture.h"

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Bindings : public Graph {
protected:
    Bindings() {
        for (const char* name : {"A", "B", "C"}) {
            add("Pair", name);
        }
    }
};

TEST_F(Bindings, bothEndsKnowABinding) {
    EXPECT_TRUE(wire("A", "sum", "B", "b"));
    EXPECT_EQ(sourceOf("B", "b"), "A.sum");
    EXPECT_THAT(output("A", "sum").consumers, ElementsAre(&node("B")));
    EXPECT_THAT(output("A", "sum").consumerInputs, ElementsAre(1));
}

TEST_F(Bindings, aSecondOutputReplacesTheFirst) {
    wire("A", "sum", "B", "b");
    wire("C", "text", "B", "b");
    EXPECT_EQ(sourceOf("B", "b"), "C.text");
    EXPECT_THAT(output("A", "sum").consumers, IsEmpty());
    EXPECT_THAT(output("A", "sum").consumerInputs, IsEmpty());
    expectInStep(manager);
}

TEST_F(Bindings, oneOutputFeedsTwoInputsOfAPlugin) {
    wire("A", "sum", "B", "a");
    wire("A", "sum", "B", "b");
    EXPECT_THAT(output("A", "sum").consumers, ElementsAre(&node("B"), &node("B")));
    EXPECT_THAT(output("A", "sum").consumerInputs, ElementsAre(0, 1));
    node("A").Disconnect("sum", &node("B"), "a");
    EXPECT_THAT(output("A", "sum").consumerInputs, ElementsAre(1));
}

TEST_F(Bindings, theSameBindingTwiceIsOne) {
    wire("A", "sum", "B", "a");
    wire("A", "sum", "B", "a");
    EXPECT_THAT(output("A", "sum").consumers, ElementsAre(&node("B")));
    expectInStep(manager);
}

TEST_F(Bindings, aBindingThatARunCannotUseIsKept) {
    EXPECT_TRUE(wire("A", "sum", "A", "a"));
    EXPECT_TRUE(wire("B", "text", "C", "a"));
    EXPECT_TRUE(wire("C", "sum", "B", "a"));
    EXPECT_EQ(sourceOf("A", "a"), "A.sum");
    expectInStep(manager);
}

TEST_F(Bindings, missingPortsAndPluginsAreRefusedAndChangeNothing) {
    wire("A", "sum", "B", "b");
    QzManager other("QzAnalysisFactory");
    QzBase* const stranger = other.CreatePlugin(kindNumber("Pair"), "S");
    EXPECT_FALSE(node("B").Connect("b", nullptr, "sum"));
    EXPECT_FALSE(node("B").Connect("b", stranger, "sum"));
    EXPECT_FALSE(node("B").Connect("none", &node("C"), "sum"));
    EXPECT_FALSE(node("B").Connect("b", &node("C"), "none"));
    EXPECT_EQ(sourceOf("B", "b"), "A.sum");
}

TEST_F(Bindings, onlyTheFeedingOutputCanUndoABinding) {
    wire("A", "sum", "B", "b");
    QzManager other("QzAnalysisFactory");
    node("A").Disconnect("sum", nullptr, "b");
    node("A").Disconnect("sum", other.CreatePlugin(kindNumber("Pair"), "S"), "b");
    node("A").Disconnect("text", &node("B"), "b");
    node("A").Disconnect("none", &node("B"), "b");
    node("A").Disconnect("sum", &node("B"), "none");
    node("A").Disconnect("sum", &node("B"), "a");
    node("C").Disconnect("sum", &node("B"), "b");
    EXPECT_EQ(sourceOf("B", "b"), "A.sum");
    node("A").Disconnect("sum", &node("B"), "b");
    EXPECT_EQ(sourceOf("B", "b"), "");
    EXPECT_THAT(output("A", "sum").consumers, IsEmpty());
}

TEST_F(Bindings, aDeletedPluginLeavesNoBindingBehind) {
    wire("A", "sum", "B", "a");
    wire("B", "sum", "B", "b");
    wire("B", "sum", "C", "a");
    wire("B", "text", "C", "label");
    manager.DeletePlugin(manager.IndexOf("B"));
    EXPECT_THAT(output("A", "sum").consumers, IsEmpty());
    EXPECT_EQ(sourceOf("C", "a"), "");
    EXPECT_EQ(sourceOf("C", "label"), "");
    expectInStep(manager);
}

TEST_F(Bindings, aNewNameAndAnotherStartLeaveThemAsTheyAre) {
    wire("A", "sum", "B", "a");
    node("A").SetName("Z");
    manager.SetStart(1);
    EXPECT_EQ(sourceOf("B", "a"), "Z.sum");
    expectInStep(manager);
}

}  // namespace
}  // namespace velmorak::test
