#include "HandsTest.h"
#include "ShownPipeline.h"

#include <QzManager.h>

#include <cmath>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// Overlapping boxes, and boxes with misleading names.
class CoveredPorts : public HandsTest {
protected:
    /// A separate number, an adder, and a splitter at a chosen position on top of the adder.
    void stack(double splitterX, double splitterY) {
        addAt("Number", 50, 700);
        addAt("Adder", 400, 700);
        addAt("Splitter", splitterX, splitterY);
    }

    void rename(const std::string& oldName, const std::string& newName) {
        plugin& renamed = node(oldName);
        renamed.GetPlugin()->SetName(newName);
        window->renamePlugin(oldName, newName);
        renamed.draw();
        Glib::ustring name = newName;
        window->reconnect(name);
        recording::forgetCalls();
        window->modified = false;
    }

    void expectNothingWired() {
        EXPECT_THAT(recording::callsOf("Connect"), IsEmpty());
        EXPECT_EQ(pathsOnCanvas(), 0);
        EXPECT_EQ(differencesBetween(*window, *manager), "");
        expectNothingLeftBehind();
    }
};

TEST_F(CoveredPorts, aDropOnABoxThatCoversAnInputConnectsNothing) {
    stack(380, 715);  // Its title covers the inputs of the adder.
    const CanvasPoint covered = inputOf("Adder", "a");
    ASSERT_LT(covered.y, cornerOf("Splitter").y + 25);
    drag(outputOf("Number", "value"), covered);
    expectNothingWired();
}

TEST_F(CoveredPorts, aClickOnAnOutputAboveACoveredInputConnectsNothing) {
    // The outputs of the splitter end where the inputs of the adder begin.
    stack(216, 700);
    const CanvasPoint output = outputOf("Splitter", "low");
    EXPECT_LE(std::abs(output.x - inputOf("Adder", "a").x), 8);
    clickOn(output);
    expectNothingWired();
}

TEST_F(CoveredPorts, theTopmostOfTwoInputsTakesTheWire) {
    stack(400, 700);
    drag(outputOf("Number", "value"), inputOf("Adder", "a"));
    EXPECT_THAT(recording::edits(), ElementsAre("Splitter.Connect(x, Number, value)"));
    EXPECT_EQ(differencesBetween(*window, *manager), "");
}

TEST_F(CoveredPorts, theTopmostOfTwoInputsIsPulledOff) {
    stack(400, 700);
    window->connect({"Number", "value"}, {"Adder", "a"});
    window->connect({"Number", "value"}, {"Splitter", "x"});
    recording::forgetCalls();
    drag(inputOf("Adder", "a"), nowhere());
    EXPECT_THAT(recording::edits(), ElementsAre("Number.Disconnect(value, Splitter, x)"));
    EXPECT_EQ(differencesBetween(*window, *manager), "");
}

TEST_F(CoveredPorts, aWireBeginsAtThePlugInThatOwnsTheOutput) {
    // The splitter covers the right end of the adder's output and has no port there.
    stack(400 + 160 - 12, 690);
    const CanvasPoint end = outputOf("Adder", "sum");
    const CanvasPoint uncovered{cornerOf("Splitter").x - 4, end.y};
    press(uncovered);
    EXPECT_EQ(window->wiringSource, (PortRef{"Adder", "sum"}));
    release();
    expectNothingWired();
}

TEST_F(CoveredPorts, aPlugInCalledInputIsWiredAsAnyOther) {
    stack(650, 700);
    rename("Splitter", "input");
    drag(outputOf("Number", "value"), inputOf("Adder", "b"));
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.Connect(b, Number, value)"));
    drag(outputOf("input", "high"), inputOf("Adder", "a"));
    drag(outputOf("Adder", "sum"), inputOf("input", "x"));
    EXPECT_TRUE(isBound("Adder", "a", "input", "high"));
    EXPECT_TRUE(isBound("input", "x", "Adder", "sum"));
    EXPECT_EQ(differencesBetween(*window, *manager), "");
}

TEST_F(CoveredPorts, aPlugInThatWasCalledInputCapturesNothing) {
    stack(650, 700);
    rename("Splitter", "input");
    rename("input", "Split");
    drag(outputOf("Number", "value"), inputOf("Adder", "b"));
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.Connect(b, Number, value)"));
    drag(inputOf("Adder", "b"), inputOf("Split", "x"));
    EXPECT_TRUE(isBound("Split", "x", "Number", "value"));
    EXPECT_EQ(differencesBetween(*window, *manager), "");
}

TEST_F(CoveredPorts, aDropOnTheBodyOfAPlugInCalledInputConnectsNothing) {
    stack(650, 700);
    rename("Splitter", "input");
    drag(outputOf("Number", "value"), headOf("input"));
    drag(outputOf("Adder", "sum"), headOf("input"));
    expectNothingWired();
}

TEST_F(CoveredPorts, aPlugInCalledInputStaysWhereItIsWhileAnotherMoves) {
    stack(650, 700);
    rename("Splitter", "input");
    const CanvasPoint head = headOf("Adder");
    drag(head, {head.x + 30, head.y + 40});
    EXPECT_EQ(cornerOf("Adder").x, 430);
    EXPECT_EQ(cornerOf("input").x, 650);
    const CanvasPoint own = headOf("input");
    drag(own, {own.x - 20, own.y + 10});
    EXPECT_EQ(cornerOf("input").x, 630);
    EXPECT_EQ(cornerOf("input").y, 710);
}

}  // namespace
