#include "HandsTest.h"

#include <QzManager.h>

#include <iterator>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A number, an adder and a splitter, side by side.
class Wiring : public HandsTest {
protected:
    Wiring() {
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
        addAt("Splitter", 550, 700);
    }

    /// Draws a wire with the mouse and clears the recorded calls.
    void wire(const std::string& sender, const std::string& output, const std::string& receiver,
              const std::string& input) {
        drag(outputOf(sender, output), inputOf(receiver, input));
        recording::forgetCalls();
        window->modified = false;
    }

    std::size_t connections() const { return window->connectionMap.size(); }
};

TEST_F(Wiring, aDragFromAnOutputToAnInputConnects) {
    drag(outputOf("Number", "value"), inputOf("Adder", "b"));
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.Connect(b, Number, value)"));
    EXPECT_EQ(window->connectionMap.at({"Adder", "b"}), (PortRef{"Number", "value"}));
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(Wiring, theBandFollowsThePointerAboveAllOtherItems) {
    const CanvasPoint start = outputOf("Number", "value");
    press(start);
    EXPECT_TRUE(window->rubberBand.isShown());
    EXPECT_EQ(window->wiringSource, (PortRef{"Number", "value"}));
    moveTo({400, 900});
    EXPECT_EQ(topPath(), "M 208 730 C 305.5 730 302.5 900 400 900");
    moveTo({205, 731});
    EXPECT_EQ(topPath(), "M 208 730 C 208 730 205 731 205 731");
    EXPECT_EQ(pathsOnCanvas(), 1);
    release();
}

TEST_F(Wiring, theBandLooksLikeAWire) {
    press(outputOf("Number", "value"));
    const auto band = topItem();
    EXPECT_EQ(propertyOf<double>(band, "line_width"), 4);
    EXPECT_FALSE(propertyOf<bool>(band, "can_focus"));
    EXPECT_EQ(propertyOf<guint>(band, "stroke_color_rgba"), 0xB22222FFU);
    release();
}

TEST_F(Wiring, theWireLiesBelowAllOtherItems) {
    wire("Number", "value", "Adder", "a");
    const Glib::RefPtr<Goocanvas::Item> lowest = window->canvas.get_root_item()->get_child(0);
    const Glib::RefPtr<Goocanvas::Item> path = window->pathMap.at({"Adder", "a"});
    EXPECT_TRUE(lowest == path);
}

TEST_F(Wiring, aReleaseOverEmptyCanvasConnectsNothing) {
    drag(outputOf("Number", "value"), nowhere());
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_EQ(connections(), 0);
    EXPECT_FALSE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(Wiring, aReleaseOverABoxOrAnOutputConnectsNothing) {
    drag(outputOf("Number", "value"), headOf("Adder"));
    drag(outputOf("Number", "value"), outputOf("Adder", "sum"));
    EXPECT_THAT(recording::edits(), IsEmpty());
    expectNothingLeftBehind();
}

TEST_F(Wiring, anyButtonOnAnOutputStartsABand) {
    for (const unsigned button : {1U, 2U, 3U}) {
        press(outputOf("Number", "value"), button);
        EXPECT_TRUE(window->rubberBand.isShown()) << button;
        release(button);
        expectNothingLeftBehind();
    }
}

TEST_F(Wiring, otherButtonsOnAnInputDoNothing) {
    wire("Number", "value", "Adder", "a");
    clickOn(inputOf("Adder", "a"), 2);
    clickOn(inputOf("Adder", "a"), 3);
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_FALSE(window->modified);
    EXPECT_EQ(connections(), 1);
    expectNothingLeftBehind();
}

TEST_F(Wiring, aClickOnAFreeInputDrawsNothing) {
    press(inputOf("Adder", "a"));
    EXPECT_FALSE(window->wiring);
    EXPECT_EQ(pathsOnCanvas(), 0);
    release();
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_FALSE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(Wiring, aClickOnAFedInputDetachesAndConnectsAgain) {
    wire("Number", "value", "Adder", "a");
    const auto former = window->pathMap.at({"Adder", "a"});
    clickOn(inputOf("Adder", "a"));
    EXPECT_THAT(recording::edits(),
                ElementsAre("Number.Disconnect(value, Adder, a)", "Adder.Connect(a, Number, value)"));
    EXPECT_NE(window->pathMap.at({"Adder", "a"}), former);
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(Wiring, aWireThatIsPulledOffHangsOnItsOutput) {
    wire("Number", "value", "Adder", "a");
    press(inputOf("Adder", "a"));
    EXPECT_TRUE(window->wiring);
    EXPECT_EQ(window->wiringSource, (PortRef{"Number", "value"}));
    EXPECT_EQ(connections(), 0);
    EXPECT_FALSE(isBound("Adder", "a", "Number", "value"));
    moveTo({400, 900});
    EXPECT_EQ(topPath(), "M 208 730 C 305.5 730 302.5 900 400 900");
    release();
    EXPECT_EQ(connections(), 0);
    EXPECT_THAT(recording::edits(), ElementsAre("Number.Disconnect(value, Adder, a)"));
    expectNothingLeftBehind();
}

TEST_F(Wiring, aWireThatIsPulledOffCanBeDroppedElsewhere) {
    wire("Number", "value", "Adder", "a");
    drag(inputOf("Adder", "a"), inputOf("Splitter", "x"));
    EXPECT_THAT(recording::edits(),
                ElementsAre("Number.Disconnect(value, Adder, a)", "Splitter.Connect(x, Number, value)"));
    EXPECT_EQ(connections(), 1);
    expectNothingLeftBehind();
}

TEST_F(Wiring, aFedInputChangesItsSource) {
    wire("Number", "value", "Adder", "a");
    drag(outputOf("Splitter", "high"), inputOf("Adder", "a"));
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.Connect(a, Splitter, high)"));
    EXPECT_EQ(window->connectionMap.at({"Adder", "a"}), (PortRef{"Splitter", "high"}));
    EXPECT_EQ(pathsOnCanvas(), 1);
    expectNothingLeftBehind();
}

TEST_F(Wiring, aPlugInMayFeedItself) {
    drag(outputOf("Adder", "sum"), inputOf("Adder", "a"));
    EXPECT_TRUE(isBound("Adder", "a", "Adder", "sum"));
    expectNothingLeftBehind();
}

TEST_F(Wiring, oneOutputFeedsAnyNumberOfInputsAndAllFollowIt) {
    wire("Number", "value", "Adder", "a");
    wire("Number", "value", "Adder", "b");
    wire("Number", "value", "Splitter", "x");
    EXPECT_EQ(connections(), 3);
    const std::vector<std::string> before{pathInto("Adder", "a"), pathInto("Adder", "b"), pathInto("Splitter", "x")};
    const CanvasPoint head = headOf("Number");
    drag(head, {head.x + 10, head.y + 20});
    EXPECT_EQ(pathInto("Adder", "a"), "M 218 750 C 263 750 257 730 302 730");
    EXPECT_NE(pathInto("Adder", "b"), before[1]);
    EXPECT_NE(pathInto("Splitter", "x"), before[2]);
    EXPECT_THAT(recording::callsOf("Connect"), IsEmpty());
    expectNothingLeftBehind();
}

TEST_F(Wiring, wiresOfACollapsedNodeLeadToTheirOwnPorts) {
    wire("Splitter", "high", "Adder", "b");
    clickOn(headOf("Splitter"));
    window->on_collapse();
    clickOn(headOf("Adder"));
    window->on_collapse();
    ASSERT_EQ(node("Splitter").outputTexts.size(), 1);
    ASSERT_EQ(node("Adder").inputTexts.size(), 1);
    const CanvasPoint start = outputOf("Splitter", "high");
    const CanvasPoint end = inputOf("Adder", "b");
    EXPECT_EQ(pathInto("Adder", "b").substr(0, 9), "M " + std::to_string(static_cast<int>(start.x) + 6) + " 730");
    EXPECT_TRUE(pathInto("Adder", "b").ends_with(" " + std::to_string(static_cast<int>(end.x) - 6) + " 730"));
    // The text now at that point belongs to the same port: the wire is pulled off and dropped where it was.
    drag(inputOf("Adder", "b"), inputOf("Adder", "b"));
    EXPECT_TRUE(isBound("Adder", "b", "Splitter", "high"));
    expectNothingLeftBehind();
}

TEST_F(Wiring, aNodeWithoutPortsOnASideTakesAWireToWhereTheFirstWouldStand) {
    addAt("Note", 300, 850);
    window->connect({"Note", "nothing"}, {"Adder", "a"});
    EXPECT_EQ(pathInto("Adder", "a").substr(0, 9), "M 458 880");
    EXPECT_EQ(pathsOnCanvas(), 1);
}

TEST_F(Wiring, pressingAnOutputWhosePlugInIsNotFoundDrawsNothing) {
    const auto stray = Goocanvas::Text::create("stray", 900, 1100, 0, Goocanvas::ANCHOR_EAST);
    window->canvas.get_root_item()->add_child(stray);
    GdkEventButton event{};
    window->start_draw(stray, &event);
    EXPECT_FALSE(window->wiring);
    EXPECT_FALSE(window->rubberBand.isShown());
    stray->remove();
}

TEST_F(Wiring, pullingOffWhereNothingIsOnlyMarksTheDocument) {
    wire("Number", "value", "Adder", "a");
    moveTo(nowhere());
    window->pull_off("a");
    EXPECT_TRUE(window->modified);
    EXPECT_EQ(connections(), 1);
    expectNothingLeftBehind();
}

TEST_F(Wiring, worksScrolledAndZoomed) {
    for (const double scale : {0.5, 1.0, 1.5}) {
        window->canvas.set_scale(scale);
        scrollTo({0, 600});
        drag(outputOf("Number", "value"), inputOf("Adder", "b"));
        EXPECT_TRUE(isBound("Adder", "b", "Number", "value")) << scale;
        drag(inputOf("Adder", "b"), nowhere());
        EXPECT_EQ(connections(), 0) << scale;
        expectNothingLeftBehind();
    }
}

}  // namespace
