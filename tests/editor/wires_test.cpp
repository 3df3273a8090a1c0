#include "CommaLocale.h"
#include "EditorTest.h"

#include <QzBase.h>

#include <clocale>

using ::testing::ElementsAre;
using ::testing::Pair;

namespace {

class Wires : public EditorTest {
protected:
    /// Moves a Number and an Adder so that their ports are at the given points.
    void place(double outputX, double outputY, double inputX, double inputY) {
        add("Number");
        add("Adder");
        move(node("Number").outputTexts[0], outputX, outputY);
        move(node("Adder").inputTexts[0], inputX, inputY);
    }

    static void move(const Glib::RefPtr<Goocanvas::Item>& item, double x, double y) {
        item->set_property("x", x);
        item->set_property("y", y);
    }

    void wire() { window->connect({"Number", "value"}, {"Adder", "a"}); }
};

}  // namespace

TEST_F(Wires, leaveTheOutputAndEnterTheInputHorizontally) {
    place(100, 50, 300, 120);
    wire();
    EXPECT_EQ(pathInto("Adder", "a"), "M 103 50 C 203 50 197 120 297 120");
}

TEST_F(Wires, toAnInputOnTheLeftCrossTheirControlPoints) {
    place(300, 50, 100, 120);
    wire();
    EXPECT_EQ(pathInto("Adder", "a"), "M 303 50 C 203 50 197 120 97 120");
}

TEST_F(Wires, cutFractionsOffTheirEndsAndKeepHalvesBetween) {
    place(100.9, 50.7, 301.2, -3.6);
    wire();
    EXPECT_EQ(pathInto("Adder", "a"), "M 103 50 C 203.5 50 197.5 -3 298 -3");
}

TEST_F(Wires, haveTheirLook) {
    place(100, 50, 300, 120);
    wire();
    const auto path = window->pathMap.at({"Adder", "a"});
    EXPECT_EQ(propertyOf<double>(path, "line_width"), 4);
    EXPECT_FALSE(propertyOf<bool>(path, "can_focus"));
    EXPECT_EQ(propertyOf<guint>(path, "stroke_color_rgba"), 0xb22222ffU);
}

TEST_F(Wires, lieBelowEverythingElse) {
    place(100, 50, 300, 120);
    wire();
    window->connect({"Number", "value"}, {"Adder", "b"});
    const auto root = window->canvas.get_root_item();
    EXPECT_EQ(root->find_child(window->pathMap.at({"Adder", "b"})), 0);
    EXPECT_EQ(root->find_child(window->pathMap.at({"Adder", "a"})), 1);
}

TEST_F(Wires, tellTheLibraryAndMarkTheDocument) {
    place(100, 50, 300, 120);
    window->modified = false;
    recording::forgetCalls();
    wire();
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.Connect(a, Number, value)"));
    EXPECT_THAT(recording::calls(),
                ElementsAre("Adder.InputIndex(a)", "Adder.Inputs()", "Adder.Connect(a, Number, value)"));
    EXPECT_TRUE(window->modified);
}

TEST_F(Wires, aSecondOutputReplacesTheFirst) {
    place(100, 50, 300, 120);
    add("Splitter");
    wire();
    window->connect({"Splitter", "high"}, {"Adder", "a"});
    EXPECT_EQ(pathsOnCanvas(), 1);
    EXPECT_THAT(window->connectionMap, ElementsAre(Pair(PortRef{"Adder", "a"}, PortRef{"Splitter", "high"})));
    EXPECT_THAT(recording::callsOf("Connect"),
                ElementsAre("Adder.Connect(a, Number, value)", "Adder.Connect(a, Splitter, high)"));
}

TEST_F(Wires, anotherOutputOfTheSameSenderIsBoundAnew) {
    add("Splitter");
    add("Adder");
    window->connect({"Splitter", "low"}, {"Adder", "a"});
    recording::forgetCalls();
    window->connect({"Splitter", "high"}, {"Adder", "a"});
    EXPECT_THAT(recording::callsOf("Connect"), ElementsAre("Adder.Connect(a, Splitter, high)"));
}

TEST_F(Wires, drawnAgainAreNewPathsWithTheSameTextAndNotBoundAgain) {
    place(100, 50, 300, 120);
    wire();
    const auto former = window->pathMap.at({"Adder", "a"});
    window->modified = false;
    recording::forgetCalls();
    wire();
    EXPECT_NE(window->pathMap.at({"Adder", "a"}), former);
    EXPECT_EQ(pathInto("Adder", "a"), "M 103 50 C 203 50 197 120 297 120");
    EXPECT_EQ(pathsOnCanvas(), 1);
    EXPECT_THAT(recording::edits(), ElementsAre());
    EXPECT_TRUE(window->modified);
}

TEST_F(Wires, oneOutputFeedsThreeInputsAndAllFollowIt) {
    add("Number");
    add("Adder");
    add("Splitter");
    const std::vector<PortRef> inputs = {{"Adder", "a"}, {"Adder", "b"}, {"Splitter", "x"}};
    for (const PortRef& input : inputs) {
        window->connect({"Number", "value"}, input);
    }
    EXPECT_EQ(pathsOnCanvas(), 3);
    node("Number").translate(500, 0);
    Glib::ustring name = "Number";
    window->reconnect(name);
    for (const PortRef& input : inputs) {
        EXPECT_EQ(pathInto(input[0], input[1]).substr(0, 6), "M 758 ");  // 100 + 160 - 5 + 500 + 3
    }
}

TEST_F(Wires, mayLeadFromAPlugInToItself) {
    add("Adder");
    window->connect({"Adder", "sum"}, {"Adder", "a"});
    EXPECT_EQ(pathsOnCanvas(), 1);
    EXPECT_THAT(recording::callsOf("Connect"), ElementsAre("Adder.Connect(a, Adder, sum)"));
}

TEST_F(Wires, aPortThatIsNotShownCountsAsTheFirst) {
    place(100, 50, 300, 120);
    window->connect({"Number", "unheard"}, {"Adder", "unknown"});
    EXPECT_EQ(pathInto("Adder", "unknown"), "M 103 50 C 203 50 197 120 297 120");
    EXPECT_EQ(node("Number").outputIndex.at("unheard"), 0);
}

TEST_F(Wires, aSideWithoutPortsIsReplacedByItsCorner) {
    add("Note");
    add("Adder");
    move(node("Adder").inputTexts[0], 300, 120);
    window->connect({"Note", "gone"}, {"Adder", "a"});
    EXPECT_EQ(pathInto("Adder", "a").substr(0, 11), "M 258 1100 ");  // 100 + 160 - 5 + 3, 1070 + 30
}

TEST_F(Wires, toAPlugInThatIsGoneAreNotDrawn) {
    place(100, 50, 300, 120);
    window->pldelete("Number");
    wire();
    EXPECT_EQ(pathsOnCanvas(), 0);
    EXPECT_TRUE(window->connectionMap.empty());
}

TEST_F(Wires, areDrawnAlikeWhereTheCommaIsTheDecimalPoint) {
    const CommaLocale german;
    ASSERT_STREQ(localeconv()->decimal_point, ",");
    place(100, 50, 1301, 120);
    wire();
    EXPECT_EQ(pathInto("Adder", "a"), "M 103 50 C 703.5 50 697.5 120 1298 120");
}

TEST_F(Wires, reconnectDrawsBothDirectionsAndNoOthers) {
    window->open("chain.zedra");
    const auto paths = window->pathMap;
    Glib::ustring name = "Parts";
    window->reconnect(name);
    EXPECT_NE(window->pathMap.at({"Parts", "x"}), paths.at({"Parts", "x"}));
    EXPECT_EQ(window->pathMap.at({"Sum", "a"}), paths.at({"Sum", "a"}));
    name = "Sum";
    window->reconnect(name);
    EXPECT_NE(window->pathMap.at({"Sum", "a"}), paths.at({"Sum", "a"}));
    EXPECT_EQ(pathsOnCanvas(), 3);
    EXPECT_TRUE(window->modified);
}

TEST_F(Wires, reconnectGivesTheRebuiltNodeItsSelectedColour) {
    window->open("chain.zedra");
    for (const auto& [name, colour] : std::map<std::string, guint>{{"First", 0xb2ff99e6}, {"Sum", 0xffff99e6}}) {
        select(name);
        node(name).draw();
        Glib::ustring title = name;
        window->reconnect(title);
        EXPECT_EQ(propertyOf<guint>(node(name).box, "fill_color_rgba"), colour);
    }
}

TEST_F(Wires, reconnectLeavesTheColourOfOthersAlone) {
    window->open("chain.zedra");
    select("First");
    node("Sum").draw();
    Glib::ustring name = "Sum";
    window->reconnect(name);
    EXPECT_EQ(propertyOf<guint>(node("Sum").box, "fill_color_rgba"), 0xe6e666e6U);
}
