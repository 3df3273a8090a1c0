#include "HandsTest.h"
#include "colours.h"

#include <QzManager.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A number, which is the start, and two adders.
class Selecting : public HandsTest {
protected:
    Selecting() {
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
        addAt("Adder", 550, 700);
    }

    std::vector<std::uint32_t> colours() { return {colourOf("Number"), colourOf("Adder"), colourOf("Adder1")}; }
};

using NodeDrag = Selecting;
using NodeActions = Selecting;

TEST_F(Selecting, aClickedBoxTakesTheSelectedColourAndTheFormerGivesItBack) {
    clickOn(headOf("Number"));
    EXPECT_THAT(colours(), ElementsAre(colours::startSelected, colours::other, colours::other));
    clickOn(headOf("Adder"));
    EXPECT_THAT(colours(), ElementsAre(colours::start, colours::otherSelected, colours::other));
    EXPECT_TRUE(window->selectedItem == Glib::RefPtr<Goocanvas::Item>(node("Adder").box));
    clickOn(headOf("Adder1"));
    EXPECT_THAT(colours(), ElementsAre(colours::start, colours::other, colours::otherSelected));
}

TEST_F(Selecting, aSecondClickLeavesTheColours) {
    clickOn(headOf("Adder"));
    press(headOf("Adder"));
    EXPECT_THAT(colours(), ElementsAre(colours::start, colours::otherSelected, colours::other));
    EXPECT_TRUE(window->dragging);
    release();
}

TEST_F(Selecting, aClickedNodeComesToTheTopWithItsTextsAboveItsBox) {
    clickOn(headOf("Number"));
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder", "Adder1", "Number"));
    const auto root = window->canvas.get_root_item();
    const int box = root->find_child(node("Number").box);
    EXPECT_GT(root->find_child(node("Number").inputTexts[0]), box);
    EXPECT_GT(root->find_child(node("Number").outputTexts[0]), box);
}

TEST_F(Selecting, aClickTakesTheKeyboardFocus) {
    clickOn(headOf("Adder"));
    EXPECT_TRUE(window->canvas.has_focus());
}

TEST_F(Selecting, theMiddleButtonSelectsWithoutADrag) {
    press(headOf("Adder"), 2);
    EXPECT_EQ(colourOf("Adder"), colours::otherSelected);
    EXPECT_FALSE(window->dragging);
    release(2);
}

TEST_F(Selecting, theRightButtonSelectsAndOpensTheMenu) {
    press(headOf("Adder"), 3);
    EXPECT_EQ(colourOf("Adder"), colours::otherSelected);
    EXPECT_TRUE(pumpUntil([this] { return window->nodeMenu.get_visible(); }));
    EXPECT_FALSE(window->dragging);
    window->nodeMenu.popdown();
}

TEST_F(NodeDrag, aBoxFollowsThePointer) {
    const CanvasPoint head = headOf("Number");
    drag(head, {head.x + 130, head.y - 70});
    EXPECT_EQ(cornerOf("Number").x, 180);
    EXPECT_EQ(cornerOf("Number").y, 630);
    EXPECT_THAT(recording::edits(), ElementsAre("Number.SetPosition(180, 520)"));
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(NodeDrag, theTextsFollowTheirBox) {
    const CanvasPoint head = headOf("Adder");
    const CanvasPoint input = inputOf("Adder", "b");
    const CanvasPoint output = outputOf("Adder", "sum");
    drag(head, {head.x + 7, head.y + 11});
    EXPECT_EQ(inputOf("Adder", "b").x, input.x + 7);
    EXPECT_EQ(inputOf("Adder", "b").y, input.y + 11);
    EXPECT_EQ(outputOf("Adder", "sum").x, output.x + 7);
    EXPECT_EQ(outputOf("Adder", "sum").y, output.y + 11);
}

TEST_F(NodeDrag, aClickWithoutMotionStillTellsTheLibrary) {
    clickOn(headOf("Adder"));
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.SetPosition(300, 430)"));
    EXPECT_TRUE(window->modified);
}

TEST_F(NodeDrag, theLibraryHearsNothingBeforeTheRelease) {
    press(headOf("Adder"));
    moveTo({400, 900});
    EXPECT_THAT(recording::edits(), IsEmpty());
    release();
    EXPECT_THAT(recording::edits(), testing::SizeIs(1));
}

TEST_F(NodeDrag, followsThePointersTravelScrolledAndZoomed) {
    for (const double scale : {0.5, 1.0, 2.0}) {
        window->canvas.set_scale(scale);
        scrollTo({100, 620});
        const CanvasPoint corner = cornerOf("Adder");
        const CanvasPoint head = headOf("Adder");
        drag(head, {head.x + 20, head.y + 10});
        EXPECT_EQ(cornerOf("Adder").x, corner.x + 20) << scale;
        EXPECT_EQ(cornerOf("Adder").y, corner.y + 10) << scale;
    }
}

TEST_F(NodeDrag, aRedrawKeepsTheNodeWhereItWasDropped) {
    const CanvasPoint head = headOf("Adder");
    drag(head, {head.x + 33, head.y + 44});
    const CanvasPoint dropped = cornerOf("Adder");
    node("Adder").draw();
    EXPECT_EQ(cornerOf("Adder").x, dropped.x);
    EXPECT_EQ(cornerOf("Adder").y, dropped.y);
}

TEST_F(NodeDrag, aMotionWithoutAPressDoesNothing) {
    moveTo(headOf("Adder"));
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_FALSE(window->modified);
    EXPECT_EQ(cornerOf("Adder").x, 300);
}

TEST_F(NodeActions, nothingHappensWithoutASelection) {
    window->on_del();
    window->on_collapse();
    window->on_setstart();
    EXPECT_THAT(recording::calls(), IsEmpty());
    EXPECT_FALSE(window->modified);
}

TEST_F(NodeActions, deletingTakesThePlugInAndForgetsTheSelection) {
    clickOn(headOf("Adder"));
    recording::forgetCalls();
    window->on_del();
    EXPECT_THAT(recording::edits(), ElementsAre("DeletePlugin(1)"));
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Number", "Adder1"));
    EXPECT_FALSE(window->selectedItem);
    EXPECT_TRUE(window->modified);
    EXPECT_EQ(window->pluginMap.count("Adder"), 1);
    expectNothingLeftBehind();
}

TEST_F(NodeActions, deletingInAChainTakesTheWiresOnBothSides) {
    window->connect({"Number", "value"}, {"Adder", "a"});
    window->connect({"Adder", "sum"}, {"Adder1", "a"});
    window->connect({"Adder", "sum"}, {"Adder1", "b"});
    window->connect({"Number", "value"}, {"Number", "value"});
    clickOn(headOf("Adder"));
    window->on_del();
    EXPECT_EQ(window->connectionMap.size(), 1);
    EXPECT_EQ(pathsOnCanvas(), 1);
    expectNothingLeftBehind();
}

TEST_F(NodeActions, collapsingTwiceShowsAllPortsAtTheSamePlace) {
    clickOn(headOf("Adder"));
    const CanvasPoint corner = cornerOf("Adder");
    recording::forgetCalls();
    window->on_collapse();
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.SetExpanded(false)"));
    EXPECT_THAT(node("Adder").inputTexts, IsEmpty());
    EXPECT_EQ(propertyOf<double>(node("Adder").box, "height"), 30);
    window->on_collapse();
    EXPECT_EQ(node("Adder").inputTexts.size(), 2);
    EXPECT_EQ(cornerOf("Adder").x, corner.x);
    EXPECT_EQ(cornerOf("Adder").y, corner.y);
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(NodeActions, aCollapsedBoxLooksUnselectedUntilItIsClicked) {
    clickOn(headOf("Adder"));
    window->on_collapse();
    EXPECT_EQ(colourOf("Adder"), colours::other);
    EXPECT_TRUE(window->selectedItem != Glib::RefPtr<Goocanvas::Item>(node("Adder").box));
    clickOn(headOf("Adder"));
    EXPECT_EQ(colourOf("Adder"), colours::otherSelected);
    clickOn(headOf("Number"));
    EXPECT_EQ(colourOf("Adder"), colours::other);
}

TEST_F(NodeActions, aCollapsedNodeStillAnswersTheHand) {
    window->connect({"Number", "value"}, {"Adder", "b"});
    clickOn(headOf("Adder"));
    window->on_collapse();
    const CanvasPoint head = headOf("Adder");
    drag(head, {head.x, head.y + 50});
    EXPECT_EQ(cornerOf("Adder").y, 750);
    drag(inputOf("Adder", "b"), nowhere());
    EXPECT_TRUE(window->connectionMap.empty());
    expectNothingLeftBehind();
}

TEST_F(NodeActions, theStartTakesItsColourAndTheFormerGivesItBack) {
    clickOn(headOf("Adder1"));
    recording::forgetCalls();
    window->modified = false;
    window->on_setstart();
    EXPECT_THAT(recording::edits(), ElementsAre("SetStart(2)"));
    EXPECT_THAT(colours(), ElementsAre(colours::other, colours::other, colours::startSelected));
    EXPECT_TRUE(window->modified);
    clickOn(headOf("Number"));
    EXPECT_THAT(colours(), ElementsAre(colours::otherSelected, colours::other, colours::start));
}

TEST_F(NodeActions, settingTheStartWhereItIsChangesNothing) {
    clickOn(headOf("Number"));
    recording::forgetCalls();
    window->modified = false;
    window->on_setstart();
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_THAT(colours(), ElementsAre(colours::startSelected, colours::other, colours::other));
    EXPECT_FALSE(window->modified);
}

TEST_F(NodeActions, theStartOfACollapsedNodeIsShownOnItsNewBox) {
    clickOn(headOf("Adder"));
    window->on_collapse();
    window->on_setstart();
    EXPECT_THAT(colours(), ElementsAre(colours::other, colours::startSelected, colours::other));
}

TEST_F(NodeActions, deletingTheStartRecoloursNoBox) {
    clickOn(headOf("Number"));
    window->on_del();
    EXPECT_EQ(colourOf("Adder"), colours::other);
    EXPECT_EQ(colourOf("Adder1"), colours::other);
    clickOn(headOf("Adder"));
    EXPECT_EQ(colourOf("Adder"), colours::startSelected);
}

}  // namespace
