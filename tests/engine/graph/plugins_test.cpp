#include "GraphFixture.h"

#include <cmath>
#include <limits>

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Plugins : public Graph {};

TEST_F(Plugins, aNameInUseGetsTheFirstFreeNumber) {
    add("Pair", "Pair");
    add("Pair", "Pair");
    add("Pair", "Pair");
    EXPECT_THAT(names(), ElementsAre("Pair", "Pair1", "Pair2"));
    manager.DeletePlugin(1);
    add("Pair", "Pair");
    EXPECT_THAT(names(), ElementsAre("Pair", "Pair2", "Pair1"));
}

TEST_F(Plugins, anEmptyNameBecomesThatOfTheKind) {
    EXPECT_EQ(add("Pair", "").GetName(), "Pair");
}

TEST_F(Plugins, bytesThatAreNotUtf8AreReplacedInANewName) {
    EXPECT_EQ(add("Pair", "a\xFF").name, "a\xEF\xBF\xBD");
}

TEST_F(Plugins, aKindNumberThatDoesNotExistMakesNothing) {
    const Errors errors;
    EXPECT_EQ(manager.CreatePlugin(static_cast<std::uint16_t>(QzManager::GetPlugins().size()), "x"), nullptr);
    EXPECT_EQ(manager.CreatePlugin(65535, "x"), nullptr);
    EXPECT_EQ(errors.lines(), 2);
    EXPECT_TRUE(manager.plugins.empty());
}

TEST_F(Plugins, aNewOneKnowsItsKindItsManagerAndItsPorts) {
    QzBase& made = add("Pair", "P");
    EXPECT_EQ(made.GetKind(), &QzManager::GetPlugins()[kindNumber("Pair")]);
    EXPECT_EQ(made.GetManager(), &manager);
    EXPECT_EQ(made.description, "Adds two numbers.");
    ASSERT_EQ(made.Inputs().size(), 5U);
    EXPECT_EQ(made.Inputs()[1].name, "b");
    EXPECT_EQ(made.Inputs()[1].description, "Second number.\nType: number from -10 to 10");
    EXPECT_EQ(made.Inputs()[2].value, "1");
    EXPECT_EQ(made.Inputs()[2].source, nullptr);
    ASSERT_EQ(made.Outputs().size(), 2U);
    EXPECT_EQ(made.Outputs()[0].type, "number");
    EXPECT_EQ(made.Outputs()[1].type, "text");
    EXPECT_TRUE(made.Outputs()[0].consumers.empty());
}

TEST_F(Plugins, findAndIndexKnowOnlyPresentNames) {
    QzBase& first = add("Pair", "A");
    QzBase& second = add("Pair", "B");
    EXPECT_EQ(manager.FindPlugin("A"), &first);
    EXPECT_EQ(manager.FindPlugin("B"), &second);
    EXPECT_EQ(manager.FindPlugin("b"), nullptr);
    EXPECT_EQ(manager.FindPlugin(""), nullptr);
    EXPECT_EQ(manager.IndexOf("B"), 1);
    EXPECT_EQ(manager.IndexOf("C"), -1);
}

TEST_F(Plugins, aNewNameIsFoundAndTheOldOneIsNot) {
    QzBase& made = add("Pair", "A");
    made.SetName("Z");
    EXPECT_EQ(made.name, "Z");
    EXPECT_EQ(made.GetName(), "Z");
    EXPECT_EQ(manager.FindPlugin("Z"), &made);
    EXPECT_EQ(manager.FindPlugin("A"), nullptr);
}

TEST_F(Plugins, anEmptyOrTakenOrUnreadableNewNameIsRefusedWithOneSentence) {
    QzBase& made = add("Pair", "A");
    add("Pair", "B");
    const Errors errors;
    made.SetName("");
    made.SetName("B");
    made.SetName("\xC0");
    EXPECT_EQ(made.GetName(), "A");
    EXPECT_EQ(errors.lines(), 3);
    EXPECT_THAT(errors.text(), HasSubstr("A cannot be renamed to \"B\": another plug-in has that name."));
}

TEST_F(Plugins, itsOwnNameIsNoChange) {
    QzBase& made = add("Pair", "A");
    const Errors errors;
    made.SetName("A");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Plugins, theStartMovesToTheFrontAndTheOthersKeepTheirOrder) {
    for (const char* name : {"A", "B", "C", "D"}) {
        add("Pair", name);
    }
    manager.SetStart(2);
    EXPECT_THAT(names(), ElementsAre("C", "A", "B", "D"));
    manager.SetStart(0);
    manager.SetStart(-1);
    manager.SetStart(4);
    EXPECT_THAT(names(), ElementsAre("C", "A", "B", "D"));
}

TEST_F(Plugins, theNextOneIsTheStartWhenTheStartIsDeleted) {
    for (const char* name : {"A", "B", "C"}) {
        add("Pair", name);
    }
    manager.DeletePlugin(0);
    EXPECT_THAT(names(), ElementsAre("B", "C"));
}

TEST_F(Plugins, deletingOutOfRangeDoesNothing) {
    add("Pair", "A");
    manager.DeletePlugin(-1);
    manager.DeletePlugin(1);
    EXPECT_THAT(names(), ElementsAre("A"));
}

TEST_F(Plugins, aPositionIsStoredUnlessItIsNotANumber) {
    QzBase& made = add("Pair", "A");
    made.SetPosition(12.5F, -3.0F);
    made.SetPosition(std::numeric_limits<float>::infinity(), 1.0F);
    made.SetPosition(1.0F, std::nanf(""));
    float x = 0.0F;
    float y = 0.0F;
    made.GetPosition(x, y);
    EXPECT_EQ(x, 12.5F);
    EXPECT_EQ(y, -3.0F);
}

TEST_F(Plugins, aCollapsedOneShowsTheWiredPortsOnly) {
    add("Pair", "A");
    QzBase& receiver = add("Pair", "B");
    wire("A", "sum", "B", "b");
    EXPECT_TRUE(receiver.IsExpanded());
    receiver.SetExpanded(false);
    EXPECT_FALSE(receiver.IsExpanded());
    EXPECT_THAT(receiver.ReducedInputs(), ElementsAre(&receiver.Inputs()[1]));
    EXPECT_THAT(receiver.ReducedOutputs(), ElementsAre());
    EXPECT_THAT(node("A").ReducedOutputs(), ElementsAre(&node("A").Outputs()[0]));
    EXPECT_EQ(receiver.FullInputs().size(), 5U);
    EXPECT_EQ(receiver.FullOutputs()[1], &receiver.Outputs()[1]);
}

TEST_F(Plugins, anInputIsFoundByItsName) {
    const QzBase& made = add("Pair", "A");
    EXPECT_EQ(made.InputIndex("a"), 0);
    EXPECT_EQ(made.InputIndex("label"), 4);
    EXPECT_EQ(made.InputIndex("sum"), -1);
    EXPECT_EQ(made.InputIndex(""), -1);
}

TEST_F(Plugins, aListOfNamesChangesNothing) {
    add("Pair", "A");
    QzManager::GetListOfPlugins({});
    QzManager::GetListOfPlugins({"B"});
    EXPECT_THAT(names(), ElementsAre("A"));
}

}  // namespace
}  // namespace velmorak::test
