#include "EditorTest.h"

#include <QzBase.h>

using ::testing::ElementsAre;
using ::testing::Pair;

namespace {

constexpr unsigned int refused = 0xFFFFFFFF;

class Nodes : public EditorTest {
protected:
    /// As the variables dialog does it: the object first.
    unsigned int rename(const std::string& former, const std::string& name) {
        object(former).SetName(name);
        return window->renamePlugin(former, name);
    }

    std::vector<std::string> keys() {
        std::vector<std::string> names;
        for (const auto& [name, held] : window->pluginMap) {
            names.push_back(name);
        }
        return names;
    }
};

}  // namespace

TEST_F(Nodes, ofOneKindAreNumberedAndStackedAtOnePlace) {
    add("Adder");
    add("Adder");
    add("Adder");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder", "Adder1", "Adder2"));
    for (const char* name : {"Adder", "Adder1", "Adder2"}) {
        EXPECT_EQ(propertyOf<double>(node(name).box, "x"), 100);
        EXPECT_EQ(propertyOf<double>(node(name).box, "y"), 1030);
    }
}

TEST_F(Nodes, chosenInTheSelectorAllAppearAtOnePlace) {
    for (const int entry : {2, 3, 2, 1}) {
        window->kindSelector.set_active(entry);
    }
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder", "Splitter", "Adder1", "Number"));
    for (QzBase* object : manager->plugins) {
        float x = 0;
        float y = 0;
        object->GetPosition(x, y);
        EXPECT_EQ(x, 100);
        EXPECT_EQ(y, 100);
        float width = 0;
        float height = 0;
        object->GetExtent(width, height);
        EXPECT_EQ(propertyOf<double>(node(object->name).box, "x"), 100);
        EXPECT_EQ(propertyOf<double>(node(object->name).box, "y"), 1200 - 100 - height - 30);
    }
}

TEST_F(Nodes, aGapInTheNumbersIsFilledAgain) {
    add("Adder");
    add("Adder");
    add("Adder");
    window->pldelete("Adder1");
    add("Adder");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder", "Adder2", "Adder1"));
    EXPECT_EQ(node("Adder1").GetPlugin(), manager->plugins.back());
}

TEST_F(Nodes, placingMarksTheDocumentAsModified) {
    add("Adder");
    EXPECT_TRUE(window->modified);
}

TEST_F(Nodes, placingAsksForTheKindByItsNumber) {
    add("Splitter");
    EXPECT_THAT(recording::callsOf("CreatePlugin"), ElementsAre("CreatePlugin(2, Splitter)"));
}

TEST_F(Nodes, aKindThatNobodyKnowsIsTakenForTheFirst) {
    window->addPlugin(nullptr, "Unheard");
    EXPECT_THAT(recording::callsOf("CreatePlugin"), ElementsAre("CreatePlugin(0, Unheard)"));
    EXPECT_EQ(window->kindMap.at("Unheard"), 0);
    EXPECT_EQ(node("Unheard").kindName, "Unheard");
}

TEST_F(Nodes, anObjectOfTheLibraryKeepsNameAndPlace) {
    window->open("other.zedra");
    const plugin& placed = node("Alone");
    EXPECT_EQ(placed.uniqueName, "Alone");
    EXPECT_EQ(placed.kindName, "Number");
    EXPECT_EQ(propertyOf<double>(placed.box, "x"), 10);
    EXPECT_THAT(recording::callsOf("CreatePlugin"), ElementsAre());
    EXPECT_THAT(recording::callsOf("SetPosition"), ElementsAre());
}

TEST_F(Nodes, renamingLeavesTheFormerNameAsAKey) {
    add("Adder");
    const unsigned int answer = rename("Adder", "Total");
    EXPECT_NE(answer, refused);
    EXPECT_NE(answer, 0U);
    EXPECT_THAT(keys(), ElementsAre("Adder", "Total"));
    EXPECT_EQ(&node("Adder"), &node("Total"));
}

TEST_F(Nodes, renamingTouchesNeitherNodeNorLibrary) {
    add("Adder");
    recording::forgetCalls();
    window->renamePlugin("Adder", "Total");
    EXPECT_THAT(recording::calls(), ElementsAre());
    EXPECT_EQ(node("Total").uniqueName, "Adder");
    EXPECT_EQ(propertyOf<Glib::ustring>(node("Total").box, "title"), "Adder");
}

TEST_F(Nodes, renamingToANameInUseIsRefusedAndChangesNothing) {
    window->open("chain.zedra");
    const auto nodes = window->pluginMap;
    const auto connections = window->connectionMap;
    EXPECT_EQ(window->renamePlugin("First", "Sum"), refused);
    EXPECT_EQ(window->pluginMap, nodes);
    EXPECT_EQ(window->connectionMap, connections);
}

TEST_F(Nodes, renamingToTheSameNameIsRefused) {
    add("Adder");
    EXPECT_EQ(window->renamePlugin("Adder", "Adder"), refused);
}

TEST_F(Nodes, renamingWhatNobodyKnowsChangesNothing) {
    EXPECT_EQ(window->renamePlugin("Nobody", "Somebody"), 0U);
    EXPECT_THAT(keys(), ElementsAre());
}

TEST_F(Nodes, renamingMovesConnectionsInBothDirections) {
    window->open("chain.zedra");
    const auto path = window->pathMap.at({"Sum", "a"});
    rename("Sum", "Total");
    EXPECT_THAT(window->connectionMap, ElementsAre(Pair(PortRef{"Parts", "x"}, PortRef{"Total", "sum"}),
                                                   Pair(PortRef{"Total", "a"}, PortRef{"First", "value"}),
                                                   Pair(PortRef{"Total", "b"}, PortRef{"First", "value"})));
    EXPECT_EQ(window->pathMap.size(), 3U);
    EXPECT_EQ(window->pathMap.at({"Total", "a"}), path);
}

TEST_F(Nodes, aSelfConnectionKeepsTheOldSourceWhereTheNewNameSortsBefore) {
    add("Adder");
    rename("Adder", "M");
    window->connect({"M", "sum"}, {"M", "a"});
    rename("M", "A");
    EXPECT_THAT(window->connectionMap, ElementsAre(Pair(PortRef{"A", "a"}, PortRef{"M", "sum"})));
}

TEST_F(Nodes, aSelfConnectionFollowsWhereTheNewNameSortsAfter) {
    add("Adder");
    rename("Adder", "M");
    window->connect({"M", "sum"}, {"M", "a"});
    rename("M", "Z");
    EXPECT_THAT(window->connectionMap, ElementsAre(Pair(PortRef{"Z", "a"}, PortRef{"Z", "sum"})));
}

TEST_F(Nodes, theKeyOfADeletedOneStaysAndLeadsNowhere) {
    add("Adder");
    window->pldelete("Adder");
    EXPECT_THAT(keys(), ElementsAre("Adder"));
    EXPECT_EQ(window->nodeOf("Adder"), nullptr);
    EXPECT_TRUE(window->liveNodes().empty());
}

TEST_F(Nodes, deletingARenamedOneLeavesNoKeyThatLeadsToIt) {
    add("Adder");
    rename("Adder", "Total");
    window->pldelete("Total");
    EXPECT_THAT(keys(), ElementsAre("Adder", "Total"));
    EXPECT_EQ(window->nodeOf("Adder"), nullptr);
    EXPECT_EQ(window->nodeOf("Total"), nullptr);
    window->pldelete("Adder");
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(0)"));
}

TEST_F(Nodes, aNewOneMayTakeTheFormerNameOfARenamedOne) {
    add("Adder");
    rename("Adder", "Total");
    add("Adder");
    EXPECT_NE(&node("Adder"), &node("Total"));
    EXPECT_EQ(window->liveNodes().size(), 2U);
    window->pldelete("Adder");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder"));  // the renamed one, not yet redrawn
    EXPECT_EQ(manager->plugins.front()->name, "Total");
}

TEST_F(Nodes, aNewOneMayTakeTheNameOfADeletedOne) {
    add("Adder");
    window->pldelete("Adder");
    const plugin& again = add("Adder");
    EXPECT_EQ(window->nodeOf("Adder"), &again);
    EXPECT_EQ(window->liveNodes().size(), 1U);
}

TEST_F(Nodes, oneRenamedToTheNameOfADeletedOneIsStillReached) {
    window->open("chain.zedra");
    window->pldelete("First");
    EXPECT_EQ(rename("Sum", "First"), refused);
    plugin* renamed = &node("Sum");
    renamed->draw();
    EXPECT_EQ(window->nodeOf("First"), renamed);
    window->pldelete("First");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Parts"));
    EXPECT_EQ(pathsOnCanvas(), 0);
    EXPECT_TRUE(window->connectionMap.empty());
}

TEST_F(Nodes, oneWhoseRefusedNameIsTakenOverStaysOnTheCanvas) {
    add("Adder");
    add("Number");
    window->pldelete("Number");
    rename("Adder", "Number");  // the object takes the name, the maps do not
    add("Adder");               // takes over the only key of the node
    EXPECT_EQ(window->liveNodes().size(), 2U);
    EXPECT_EQ(window->nodeOf("Number")->GetPlugin(), manager->plugins.front());
}

TEST_F(Nodes, deleteRenameAddAgainAndQuit) {
    window->open("chain.zedra");
    window->pldelete("First");
    rename("Sum", "Total");
    node("Total").draw();
    Glib::ustring name = "Total";
    window->reconnect(name);
    add("Number");
    window->connect({"Number", "value"}, {"Total", "a"});
    window->pldelete("Parts");
    window->open("chain.zedra");
    window->modified = false;
    window->quit();
    closeWindow();
    EXPECT_EQ(recording::calls().back(), "~QzManager()");
}
