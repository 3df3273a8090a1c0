#include "EditorTest.h"

#include <QzBase.h>

using ::testing::ElementsAre;
using ::testing::Pair;

namespace {

class Document : public EditorTest {};

class Deleting : public EditorTest {
protected:
    Deleting() {
        window->open("chain.zedra");
        recording::forgetCalls();
    }
};

}  // namespace

TEST_F(Document, isReadByTheLibraryUnderTheNameGiven) {
    window->open("/some where/ünder/chain.zedra");
    EXPECT_THAT(recording::edits(), ElementsAre("ReadDocument(/some where/ünder/chain.zedra)"));
}

TEST_F(Document, isDrawnInTheManagersOrder) {
    window->open("chain.zedra");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Sum", "Parts"));
}

TEST_F(Document, showsOnePathForEachBoundInputAndNoneForOthers) {
    window->open("chain.zedra");
    EXPECT_THAT(window->connectionMap, ElementsAre(Pair(PortRef{"Parts", "x"}, PortRef{"Sum", "sum"}),
                                                   Pair(PortRef{"Sum", "a"}, PortRef{"First", "value"}),
                                                   Pair(PortRef{"Sum", "b"}, PortRef{"First", "value"})));
    EXPECT_EQ(pathsOnCanvas(), 3);
}

TEST_F(Document, hasItsWiresBelowAllBoxesTheLastOneLowest) {
    window->open("other.zedra");
    window->open("chain.zedra");
    const auto isChild = [&](int position, const Glib::RefPtr<Goocanvas::Item>& item) {
        return window->canvas.get_root_item()->get_child(position) == item;
    };
    EXPECT_TRUE(isChild(0, window->pathMap.at({"Parts", "x"})));
    EXPECT_TRUE(isChild(1, window->pathMap.at({"Sum", "b"})));
    EXPECT_TRUE(isChild(2, window->pathMap.at({"Sum", "a"})));
    EXPECT_TRUE(isChild(3, node("Alone").box));
}

TEST_F(Document, isNotBoundAgainByDrawingIt) {
    window->open("chain.zedra");
    EXPECT_THAT(recording::callsOf("Connect"), ElementsAre());
}

TEST_F(Document, isUnmodifiedOnceItIsOpen) {
    add("Adder");
    window->open("chain.zedra");
    EXPECT_FALSE(window->modified);
}

TEST_F(Document, thatCannotBeReadAddsNothing) {
    window->open("missing.zedra");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre());
    EXPECT_FALSE(window->modified);
}

TEST_F(Document, openedBesideAnotherShowsEachPlugInOnce) {
    window->open("chain.zedra");
    window->open("other.zedra");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Sum", "Parts", "Alone"));
    EXPECT_EQ(window->liveNodes().size(), 4U);
    EXPECT_EQ(pathsOnCanvas(), 3);
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre());
    EXPECT_EQ(manager->plugins.size(), 4U);
}

TEST_F(Document, openedBesideItselfIsThereTwiceUnderNewNames) {
    window->open("other.zedra");
    window->open("other.zedra");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Alone", "Alone1"));
}

TEST_F(Document, openedBesideARenamedPlugInShowsItOnce) {
    window->open("other.zedra");
    object("Alone").SetName("Renamed");
    window->renamePlugin("Alone", "Renamed");
    window->open("collapsed.zedra");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Renamed", "First", "Sum"));
    EXPECT_EQ(&node("Alone"), &node("Renamed"));
}

TEST_F(Document, openedBesideKeepsWhatANodeHasUnsaved) {
    window->open("chain.zedra");
    node("Sum").changed = true;
    window->open("other.zedra");
    EXPECT_TRUE(node("Sum").changed);
}

TEST_F(Document, openedAfterEverythingWasDeletedStandsAlone) {
    window->open("chain.zedra");
    window->deleteAll();
    window->open("other.zedra");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Alone"));
    EXPECT_EQ(pathsOnCanvas(), 0);
    EXPECT_EQ(manager->plugins.size(), 1U);
}

TEST_F(Deleting, aLonelyPlugInRemovesOnlyItsNode) {
    add("Note");
    window->pldelete("Note");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Sum", "Parts"));
    EXPECT_EQ(pathsOnCanvas(), 3);
}

TEST_F(Deleting, theMiddleOfAChainRemovesWhatComesInAndWhatGoesOut) {
    window->pldelete("Sum");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Parts"));
    EXPECT_EQ(pathsOnCanvas(), 0);
    EXPECT_TRUE(window->connectionMap.empty());
    EXPECT_TRUE(window->pathMap.empty());
    EXPECT_THAT(recording::edits(), ElementsAre("DeletePlugin(1)"));
}

TEST_F(Deleting, aSourceRemovesEveryWireThatLeavesIt) {
    window->pldelete("First");
    EXPECT_THAT(window->connectionMap, ElementsAre(Pair(PortRef{"Parts", "x"}, PortRef{"Sum", "sum"})));
    EXPECT_EQ(pathsOnCanvas(), 1);
}

TEST_F(Deleting, aPlugInThatFeedsItself) {
    window->connect({"Sum", "sum"}, {"Sum", "a"});
    window->pldelete("Sum");
    EXPECT_TRUE(window->pathMap.empty());
    EXPECT_EQ(pathsOnCanvas(), 0);
}

TEST_F(Deleting, twiceDeletesOnce) {
    window->pldelete("Sum");
    window->pldelete("Sum");
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(1)"));
}

TEST_F(Deleting, theSelectedNodeReleasesItAndMarksTheDocument) {
    select("Sum");
    activate("Del");
    EXPECT_FALSE(window->selectedItem);
    EXPECT_TRUE(window->modified);
    EXPECT_EQ(window->nodeOf("Sum"), nullptr);
}

TEST_F(Deleting, everythingLeavesAnEmptyCanvas) {
    window->deleteAll();
    EXPECT_EQ(window->canvas.get_root_item()->get_n_children(), 0);
    EXPECT_TRUE(manager->plugins.empty());
}
