#include "HandsTest.h"
#include "colours.h"

#include <QzManager.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Selecting = HandsTest;
using Moving = HandsTest;

TEST_F(Selecting, aClickedBoxTakesTheSelectedColourAndTheFormerGivesItBack) {
    addAt("Number", 50, 700);
    addAt("Adder", 300, 700);
    clickOn(headOf("Number"));
    EXPECT_EQ(colourOf("Number"), colours::startSelected);
    EXPECT_EQ(colourOf("Adder"), colours::other);
    clickOn(headOf("Adder"));
    EXPECT_EQ(colourOf("Number"), colours::start);
    EXPECT_EQ(colourOf("Adder"), colours::otherSelected);
    EXPECT_EQ(window->selectedItem, node("Adder").box);
}

TEST_F(Moving, aBoxFollowsThePointer) {
    addAt("Number", 50, 700);
    const CanvasPoint head = headOf("Number");
    drag(head, {head.x + 130, head.y - 70});
    EXPECT_EQ(cornerOf("Number").x, 180);
    EXPECT_EQ(cornerOf("Number").y, 630);
    EXPECT_THAT(recording::edits(), ElementsAre("Number.SetPosition(180, 520)"));
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}
