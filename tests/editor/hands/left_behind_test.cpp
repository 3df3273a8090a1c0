#include "HandsTest.h"

#include <QzManager.h>
#include <gtkmm/messagedialog.h>

namespace {

/// A number that feeds an adder, and gestures that do not end as they should.
class LeftBehind : public HandsTest {
protected:
    LeftBehind() {
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
        window->connect({"Number", "value"}, {"Adder", "a"});
    }
    ~LeftBehind() override { expectNothingLeftBehind(); }

    std::size_t connections() const { return window->connectionMap.size(); }
};

TEST_F(LeftBehind, byADoubleClickOnAnOutput) {
    doubleClick(outputOf("Number", "value"));
    EXPECT_EQ(connections(), 1);
    press(outputOf("Number", "value"));
    press(outputOf("Number", "value"), 1, GDK_2BUTTON_PRESS);
    EXPECT_EQ(pathsOnCanvas(), 2);
    release();
}

TEST_F(LeftBehind, byADoubleClickOnAFedInput) {
    doubleClick(inputOf("Adder", "a"));
    EXPECT_EQ(connections(), 1);
    EXPECT_TRUE(isBound("Adder", "a", "Number", "value"));
}

TEST_F(LeftBehind, byADoubleClickOnABox) {
    doubleClick(headOf("Adder"));
    moveTo({500, 900});
    EXPECT_EQ(cornerOf("Adder").x, 300);
}

TEST_F(LeftBehind, byATripleClickOnAFedInput) {
    const CanvasPoint place = inputOf("Adder", "a");
    doubleClick(place);
    press(place);
    press(place, 1, GDK_3BUTTON_PRESS);
    release();
    EXPECT_EQ(connections(), 1);
}

TEST_F(LeftBehind, byAPressOutside) {
    press(nowhere());
    moveTo(headOf("Adder"));
    release();
    EXPECT_EQ(cornerOf("Adder").x, 300);
    EXPECT_EQ(connections(), 1);
}

TEST_F(LeftBehind, byAReleaseOutsideTheWindow) {
    press(outputOf("Number", "value"));
    moveOutside();
    release();
    EXPECT_EQ(connections(), 1);
    expectNothingLeftBehind();
    press(headOf("Adder"));
    moveOutside();
    release();
    expectNothingLeftBehind();
    EXPECT_GT(cornerOf("Adder").x, 800);
}

TEST_F(LeftBehind, byAWirePulledOffAndReleasedOutsideTheWindow) {
    press(inputOf("Adder", "a"));
    moveOutside();
    release();
    EXPECT_EQ(connections(), 0);
}

TEST_F(LeftBehind, byASecondButtonWhileAWireIsDrawn) {
    for (const unsigned second : {2U, 3U}) {
        press(outputOf("Number", "value"));
        moveTo(inputOf("Adder", "b"));
        press(inputOf("Adder", "b"), second);
        release(second);
        release(1);
        expectNothingLeftBehind();
    }
    press(inputOf("Adder", "a"));
    press(nowhere(), 2);
    release(2);
    release(1);
}

TEST_F(LeftBehind, byASecondButtonWhileABoxIsDragged) {
    press(headOf("Adder"));
    moveTo({400, 900});
    press({400, 900}, 2);
    release(2);
    expectNothingLeftBehind();
    const CanvasPoint dropped = cornerOf("Adder");
    moveTo({450, 950});
    release(1);
    EXPECT_EQ(cornerOf("Adder").x, dropped.x);
}

TEST_F(LeftBehind, byTheMenuThatOpensWhileABoxIsDragged) {
    press(headOf("Adder"));
    moveTo({400, 900});
    press({400, 900}, 3);
    expectNothingLeftBehind();
    EXPECT_TRUE(pumpUntil([this] { return window->nodeMenu.get_visible(); }));
    window->nodeMenu.popdown();
    float x = 0;
    float y = 0;
    object("Adder").GetPosition(x, y);
    EXPECT_EQ(x, cornerOf("Adder").x);
    pump();
    moveTo({450, 950});
    EXPECT_EQ(x, cornerOf("Adder").x);
}

TEST_F(LeftBehind, byADeletionInTheMiddleOfADrag) {
    press(headOf("Adder"));
    moveTo({400, 900});
    window->on_del();
    expectNothingLeftBehind();
    moveTo({450, 950});
    release();
    EXPECT_THAT(boxesOnCanvas(), testing::ElementsAre("Number"));
}

TEST_F(LeftBehind, byADeletionInTheMiddleOfWiring) {
    clickOn(headOf("Number"));
    press(outputOf("Number", "value"));
    moveTo(inputOf("Adder", "b"));
    window->on_del();
    expectNothingLeftBehind();
    moveTo(nowhere());
    release();
    EXPECT_EQ(connections(), 0);
}

TEST_F(LeftBehind, byADeletionWhileItsWireIsPulledOff) {
    clickOn(headOf("Adder"));
    press(inputOf("Adder", "a"));
    window->on_del();
    moveTo(nowhere());
    release();
    EXPECT_EQ(connections(), 0);
}

TEST_F(LeftBehind, byACollapseInTheMiddleOfADrag) {
    press(headOf("Adder"));
    moveTo({400, 900});
    const CanvasPoint corner = cornerOf("Adder");
    window->on_collapse();
    EXPECT_EQ(cornerOf("Adder").x, corner.x);
    EXPECT_EQ(cornerOf("Adder").y, corner.y);
    expectNothingLeftBehind();
    release();
}

TEST_F(LeftBehind, byADocumentOpenedInTheMiddleOfADrag) {
    press(headOf("Adder"));
    moveTo({400, 900});
    window->open("other.zedra");
    expectNothingLeftBehind();
    moveTo({450, 950});
    release();
    EXPECT_THAT(boxesOnCanvas(), testing::SizeIs(3));
}

TEST_F(LeftBehind, byADocumentOpenedInTheMiddleOfWiring) {
    press(outputOf("Number", "value"));
    moveTo({400, 900});
    window->deleteAll();
    window->open("chain.zedra");
    expectNothingLeftBehind();
    release();
    EXPECT_EQ(connections(), 3);
}

TEST_F(LeftBehind, byAQuestionThatIsAskedInTheMiddleOfAGesture) {
    press(headOf("Adder"));
    moveTo({400, 900});
    answerNext(Gtk::RESPONSE_NO);
    Gtk::MessageDialog("Shall it be?", false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO).run();
    expectNothingLeftBehind();
    press(outputOf("Number", "value"));
    answerNext(Gtk::RESPONSE_NO);
    Gtk::MessageDialog("Shall it be?", false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO).run();
}

}  // namespace
