#include "HandsTest.h"

#include <QzManager.h>
#include <gtkmm/messagedialog.h>

namespace {

/// A number that feeds an adder, and gestures that end without the usual events.
class InterruptedGestures : public HandsTest {
protected:
    InterruptedGestures() {
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
        window->connect({"Number", "value"}, {"Adder", "a"});
    }
    ~InterruptedGestures() override { expectNothingLeftBehind(); }

    std::size_t connections() const { return window->connectionMap.size(); }
};

TEST_F(InterruptedGestures, byADoubleClickOnAnOutput) {
    doubleClick(outputOf("Number", "value"));
    EXPECT_EQ(connections(), 1);
    press(outputOf("Number", "value"));
    press(outputOf("Number", "value"), 1, GDK_2BUTTON_PRESS);
    EXPECT_EQ(pathsOnCanvas(), 2);
    release();
}

TEST_F(InterruptedGestures, byADoubleClickOnAFedInput) {
    doubleClick(inputOf("Adder", "a"));
    EXPECT_EQ(connections(), 1);
    EXPECT_TRUE(isBound("Adder", "a", "Number", "value"));
}

TEST_F(InterruptedGestures, byADoubleClickOnABox) {
    doubleClick(headOf("Adder"));
    moveTo({500, 900});
    EXPECT_EQ(cornerOf("Adder").x, 300);
}

TEST_F(InterruptedGestures, byATripleClickOnAFedInput) {
    const CanvasPoint place = inputOf("Adder", "a");
    doubleClick(place);
    press(place);
    press(place, 1, GDK_3BUTTON_PRESS);
    release();
    EXPECT_EQ(connections(), 1);
}

TEST_F(InterruptedGestures, byAPressOutside) {
    press(nowhere());
    moveTo(headOf("Adder"));
    release();
    EXPECT_EQ(cornerOf("Adder").x, 300);
    EXPECT_EQ(connections(), 1);
}

TEST_F(InterruptedGestures, byAReleaseOutsideTheWindow) {
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

TEST_F(InterruptedGestures, byAWirePulledOffAndReleasedOutsideTheWindow) {
    press(inputOf("Adder", "a"));
    moveOutside();
    release();
    EXPECT_EQ(connections(), 0);
}

TEST_F(InterruptedGestures, byASecondButtonWhileAWireIsDrawn) {
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

TEST_F(InterruptedGestures, byASecondButtonWhileABoxIsDragged) {
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

TEST_F(InterruptedGestures, byTheMenuThatOpensWhileABoxIsDragged) {
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

TEST_F(InterruptedGestures, byADeletionInTheMiddleOfADrag) {
    press(headOf("Adder"));
    moveTo({400, 900});
    window->on_del();
    expectNothingLeftBehind();
    moveTo({450, 950});
    release();
    EXPECT_THAT(boxesOnCanvas(), testing::ElementsAre("Number"));
}

TEST_F(InterruptedGestures, byADeletionInTheMiddleOfWiring) {
    clickOn(headOf("Number"));
    press(outputOf("Number", "value"));
    moveTo(inputOf("Adder", "b"));
    window->on_del();
    expectNothingLeftBehind();
    moveTo(nowhere());
    release();
    EXPECT_EQ(connections(), 0);
}

TEST_F(InterruptedGestures, byADeletionWhileItsWireIsPulledOff) {
    clickOn(headOf("Adder"));
    press(inputOf("Adder", "a"));
    window->on_del();
    moveTo(nowhere());
    release();
    EXPECT_EQ(connections(), 0);
}

TEST_F(InterruptedGestures, byACollapseInTheMiddleOfADrag) {
    press(headOf("Adder"));
    moveTo({400, 900});
    const CanvasPoint corner = cornerOf("Adder");
    window->on_collapse();
    EXPECT_EQ(cornerOf("Adder").x, corner.x);
    EXPECT_EQ(cornerOf("Adder").y, corner.y);
    expectNothingLeftBehind();
    release();
}

TEST_F(InterruptedGestures, byADocumentOpenedInTheMiddleOfADrag) {
    press(headOf("Adder"));
    moveTo({400, 900});
    window->open("other.zedra");
    expectNothingLeftBehind();
    moveTo({450, 950});
    release();
    EXPECT_THAT(boxesOnCanvas(), testing::SizeIs(3));
}

TEST_F(InterruptedGestures, byADocumentOpenedInTheMiddleOfWiring) {
    press(outputOf("Number", "value"));
    moveTo({400, 900});
    window->deleteAll();
    window->open("chain.zedra");
    expectNothingLeftBehind();
    release();
    EXPECT_EQ(connections(), 3);
}

TEST_F(InterruptedGestures, byADragWhoseReleaseWentElsewhere) {
    press(headOf("Adder"));
    moveTo({400, 900});
    const CanvasPoint dropped = cornerOf("Adder");
    releaseElsewhere();
    moveTo({450, 950});
    expectNothingLeftBehind();
    EXPECT_EQ(cornerOf("Adder").x, dropped.x);
    float x = 0;
    float y = 0;
    object("Adder").GetPosition(x, y);
    EXPECT_EQ(x, dropped.x);
    // The next press applies to the item that it hits.
    drag(headOf("Number"), {100, 1000});
    EXPECT_EQ(cornerOf("Adder").x, dropped.x);
    EXPECT_EQ(cornerOf("Number").y, 990);
}

TEST_F(InterruptedGestures, byAWireWhoseReleaseWentElsewhere) {
    press(outputOf("Number", "value"), 2);
    moveTo({400, 900});
    EXPECT_TRUE(window->rubberBand.isShown());
    releaseElsewhere();
    moveTo({410, 900});
    expectNothingLeftBehind();
    press(inputOf("Adder", "a"));
    releaseElsewhere();
    moveTo({410, 900});
    EXPECT_EQ(connections(), 0);
}

TEST_F(InterruptedGestures, byAWireDrawnWithAButtonOfWhichMotionsDoNotTell) {
    press(outputOf("Number", "value"), 8);
    moveTo(inputOf("Adder", "b"));
    EXPECT_TRUE(window->rubberBand.isShown());
    release(8);
    EXPECT_TRUE(isBound("Adder", "b", "Number", "value"));
}

TEST_F(InterruptedGestures, byAWindowThatIsHidden) {
    for (const CanvasPoint place : {headOf("Adder"), outputOf("Number", "value")}) {
        press(place);
        moveTo({400, 900});
        window->hide();
        expectNothingLeftBehind();
        showWindow();
        const CanvasPoint corner = cornerOf("Adder");
        moveTo({450, 950});
        release();
        EXPECT_EQ(cornerOf("Adder").x, corner.x);
    }
}

TEST_F(InterruptedGestures, byAWindowThatIsMinimised) {
    press(headOf("Adder"));
    moveTo({400, 900});
    GdkEvent event{};
    event.window_state.type = GDK_WINDOW_STATE;
    event.window_state.window = window->get_window()->gobj();
    event.window_state.changed_mask = GDK_WINDOW_STATE_FOCUSED;
    event.window_state.new_window_state = GDK_WINDOW_STATE_FOCUSED;
    gtk_main_do_event(&event);
    EXPECT_TRUE(window->dragging);
    event.window_state.changed_mask = GDK_WINDOW_STATE_ICONIFIED;
    event.window_state.new_window_state = GDK_WINDOW_STATE_ICONIFIED;
    gtk_main_do_event(&event);
    expectNothingLeftBehind();
    moveTo({450, 950});
    release();
    EXPECT_EQ(cornerOf("Adder").x, 360);
}

TEST_F(InterruptedGestures, byAWindowThatIsTakenOffTheScreen) {
    press(outputOf("Number", "value"));
    moveTo({400, 900});
    GdkEvent event{};
    event.any.type = GDK_UNMAP;
    event.any.window = window->get_window()->gobj();
    gtk_main_do_event(&event);
    expectNothingLeftBehind();
    release();
}

TEST_F(InterruptedGestures, byAQuestionThatIsAskedInTheMiddleOfAGesture) {
    press(headOf("Adder"));
    moveTo({400, 900});
    answerNext(Gtk::RESPONSE_NO);
    Gtk::MessageDialog("Shall it be?", false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO).run();
    expectNothingLeftBehind();
    press(outputOf("Number", "value"));
    answerNext(Gtk::RESPONSE_NO);
    Gtk::MessageDialog("Shall it be?", false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO).run();
}

/// The window in a right-to-left language.
class RightToLeft : public HandsTest {
protected:
    RightToLeft() {
        Gtk::Widget::set_default_direction(Gtk::TEXT_DIR_RTL);
        restart(script());
        showWindow();
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
    }
    ~RightToLeft() override { Gtk::Widget::set_default_direction(Gtk::TEXT_DIR_LTR); }
};

TEST_F(RightToLeft, theCanvasStandsBesideItsScrollbarAndTheHandMeetsWhatItSees) {
    int left = 0;
    int top = 0;
    ASSERT_TRUE(window->canvas.translate_coordinates(*window, 0, 0, left, top));
    EXPECT_GT(left, 0);
    moveTo({321, 765});
    EXPECT_EQ(window->pointerOnCanvas().x, 321);
    EXPECT_EQ(window->pointerOnCanvas().y, 765);
    drag(outputOf("Number", "value"), inputOf("Adder", "a"));
    EXPECT_TRUE(isBound("Adder", "a", "Number", "value"));
    drag(headOf("Adder"), {500, 900});
    EXPECT_EQ(cornerOf("Adder").x, 460);
    expectNothingLeftBehind();
}

}  // namespace
