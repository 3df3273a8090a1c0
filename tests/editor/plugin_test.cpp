#include "EditorTest.h"

#include <QzBase.h>

#include <cmath>

using ::testing::ElementsAre;

namespace {

struct Box {
    double x, y, width, height;
    bool operator==(const Box&) const = default;
};

class Node : public EditorTest {
protected:
    static Box boxOf(const plugin& node) {
        return {propertyOf<double>(node.box, "x"), propertyOf<double>(node.box, "y"),
                propertyOf<double>(node.box, "width"), propertyOf<double>(node.box, "height")};
    }

    static std::vector<double> placeOf(const Glib::RefPtr<Goocanvas::Item>& item) {
        return {propertyOf<double>(item, "x"), propertyOf<double>(item, "y")};
    }

    static unsigned colourOf(const plugin& node) { return propertyOf<guint>(node.box, "fill_color_rgba"); }

    static std::vector<std::string> textsOf(const std::vector<plugin::TextItem>& items) {
        std::vector<std::string> texts;
        for (const auto& item : items) {
            texts.push_back(propertyOf<Glib::ustring>(item, "text"));
        }
        return texts;
    }

    /// Texts of the two title lines, which follow the box on the canvas.
    Glib::RefPtr<Goocanvas::Item> afterBox(const plugin& node, int steps) {
        const auto root = window->canvas.get_root_item();
        return root->get_child(root->find_child(node.box) + steps);
    }

    int itemsOnCanvas() { return window->canvas.get_root_item()->get_n_children(); }
};

}  // namespace

TEST_F(Node, isPlacedByTheLibrarysFrameTurnedUpsideDown) {
    window->open("chain.zedra");
    // Two rows of ports: 40 units, and 30 of header; y grows upwards in the library.
    EXPECT_EQ(boxOf(node("Sum")), (Box{300, 1200 - 600 - 40 - 30, 160, 70}));
}

TEST_F(Node, aNewOneStandsAtOneHundredOneHundredOfTheLibrary) {
    const plugin& made = add("Number");
    EXPECT_THAT(recording::callsOf("SetPosition"), ElementsAre("Number.SetPosition(100, 100)"));
    EXPECT_EQ(boxOf(made), (Box{100, 1200 - 100 - 20 - 30, 160, 50}));
}

TEST_F(Node, theBoxCarriesNameAndDescription) {
    const plugin& made = add("Adder");
    EXPECT_EQ(propertyOf<Glib::ustring>(made.box, "title"), "Adder");
    EXPECT_EQ(propertyOf<Glib::ustring>(made.box, "tooltip"), "Adds two numbers.");
    EXPECT_FALSE(propertyOf<bool>(made.box, "can_focus"));
    EXPECT_EQ(propertyOf<double>(made.box, "radius_x"), 10);
    EXPECT_EQ(propertyOf<double>(made.box, "radius_y"), 10);
}

TEST_F(Node, theTitleLinesShowNameAndKindAndLetClicksThrough) {
    add("Adder");
    const plugin& made = add("Adder");
    const auto title = afterBox(made, 1);
    const auto kind = afterBox(made, 2);
    EXPECT_EQ(propertyOf<Glib::ustring>(title, "text"), "Adder1");
    EXPECT_EQ(propertyOf<Glib::ustring>(title, "font"), "Sans 8");
    EXPECT_THAT(placeOf(title), ElementsAre(100 + 80, boxOf(made).y + 2));
    EXPECT_EQ(propertyOf<Glib::ustring>(kind, "text"), "Adder");
    EXPECT_EQ(propertyOf<Glib::ustring>(kind, "font"), "Sans 5");
    EXPECT_THAT(placeOf(kind), ElementsAre(100 + 80, boxOf(made).y + 12));
    for (const auto& line : {title, kind}) {
        EXPECT_EQ(propertyOf<Goocanvas::PointerEvents>(line, "pointer_events"), Goocanvas::EVENTS_NONE);
        EXPECT_EQ(propertyOf<Goocanvas::AnchorType>(line, "anchor"), Goocanvas::ANCHOR_NORTH);
    }
}

TEST_F(Node, inputsStandAtTheLeftEdgeOneBelowTheOther) {
    const plugin& made = add("Adder");
    const Box box = boxOf(made);
    EXPECT_THAT(textsOf(made.inputTexts), ElementsAre("a", "b"));
    EXPECT_THAT(placeOf(made.inputTexts[0]), ElementsAre(box.x + 5, box.y + 30));
    EXPECT_THAT(placeOf(made.inputTexts[1]), ElementsAre(box.x + 5, box.y + 50));
    EXPECT_EQ(propertyOf<Glib::ustring>(made.inputTexts[1], "title"), "input");
    EXPECT_EQ(propertyOf<Glib::ustring>(made.inputTexts[1], "tooltip"), "second number");
    EXPECT_EQ(propertyOf<Glib::ustring>(made.inputTexts[1], "font"), "Sans 8");
    EXPECT_EQ(propertyOf<Goocanvas::AnchorType>(made.inputTexts[1], "anchor"), Goocanvas::ANCHOR_WEST);
    EXPECT_FALSE(propertyOf<bool>(made.inputTexts[1], "can_focus"));
    EXPECT_EQ(made.inputIndex.at("b"), 1);
}

TEST_F(Node, outputsStandAtTheRightEdgeAndHaveNoTitle) {
    const plugin& made = add("Splitter");
    const Box box = boxOf(made);
    EXPECT_THAT(textsOf(made.outputTexts), ElementsAre("low", "high"));
    EXPECT_THAT(placeOf(made.outputTexts[1]), ElementsAre(box.x + 200 - 5, box.y + 50));
    EXPECT_EQ(propertyOf<Glib::ustring>(made.outputTexts[1], "title"), "");
    EXPECT_EQ(propertyOf<Glib::ustring>(made.outputTexts[1], "tooltip"), "above the limit");
    EXPECT_EQ(propertyOf<Goocanvas::AnchorType>(made.outputTexts[1], "anchor"), Goocanvas::ANCHOR_EAST);
    EXPECT_FALSE(propertyOf<bool>(made.outputTexts[1], "can_focus"));
    EXPECT_EQ(made.outputIndex.at("high"), 1);
}

TEST_F(Node, portsReceiveClicks) {
    const plugin& made = add("Adder");
    for (const auto& text : {made.inputTexts[0], made.outputTexts[0]}) {
        EXPECT_NE(propertyOf<Goocanvas::PointerEvents>(text, "pointer_events"), Goocanvas::EVENTS_NONE);
    }
}

TEST_F(Node, withoutPortsIsItsHeaderAndTwoTitleLines) {
    const plugin& made = add("Note");
    EXPECT_EQ(boxOf(made).height, 30);
    EXPECT_EQ(itemsOnCanvas(), 3);
}

TEST_F(Node, twoPortsOfOneNameAreDrawnBothAndTheLaterIsFound) {
    restart("kind Twin Odd\n in p\n in q\n in p\n");
    const plugin& made = add("Twin");
    EXPECT_THAT(textsOf(made.inputTexts), ElementsAre("p", "q", "p"));
    EXPECT_EQ(made.inputIndex.at("p"), 2);
}

TEST_F(Node, onlyTheFirstOfTheListIsGreen) {
    window->open("chain.zedra");
    EXPECT_EQ(colourOf(node("First")), 0x80e666e6U);
    EXPECT_EQ(colourOf(node("Sum")), 0xe6e666e6U);
    EXPECT_EQ(colourOf(node("Parts")), 0xe6e666e6U);
}

TEST_F(Node, aCollapsedOneShowsTheReducedPortsAndKeepsItsTop) {
    window->open("collapsed.zedra");
    const plugin& sum = node("Sum");
    EXPECT_THAT(textsOf(sum.inputTexts), ElementsAre("b"));
    EXPECT_TRUE(sum.outputTexts.empty());
    EXPECT_EQ(sum.inputIndex.at("b"), 0);
    EXPECT_EQ(boxOf(sum), (Box{300, 1200 - 600 - 40 - 30, 160, 50}));
}

TEST_F(Node, aRedrawTakesXFromTheLibraryAndYFromTheBox) {
    plugin& made = add("Adder");
    const double y = boxOf(made).y;
    made.GetPlugin()->SetPosition(250, 900);
    made.draw();
    EXPECT_EQ(boxOf(made).x, 250);
    EXPECT_EQ(boxOf(made).y, y);
}

TEST_F(Node, aRedrawReplacesEveryItem) {
    plugin& made = add("Adder");
    const int before = itemsOnCanvas();
    made.draw();
    EXPECT_EQ(itemsOnCanvas(), before);
    EXPECT_EQ(made.inputTexts.size(), 2U);
    EXPECT_EQ(made.outputTexts.size(), 1U);
}

TEST_F(Node, aRedrawShowsTheObjectsNewNameAndKeepsItsOwnCopy) {
    plugin& made = add("Adder");
    made.GetPlugin()->SetName("Sum");
    made.draw();
    EXPECT_EQ(propertyOf<Glib::ustring>(made.box, "title"), "Sum");
    EXPECT_EQ(made.uniqueName, "Adder");
}

TEST_F(Node, movingSnapsEveryItemToWholeUnits) {
    plugin& made = add("Splitter");
    made.box->set_property("x", 100.9);
    made.translate(10.5F, -0.25F);
    EXPECT_THAT(placeOf(made.box), ElementsAre(110.5, 1029.75));
    made.translate(1, 1);
    EXPECT_THAT(placeOf(made.box), ElementsAre(111, 1030));
    EXPECT_THAT(placeOf(made.inputTexts[0]), ElementsAre(105 + 11, 1060));
    EXPECT_THAT(placeOf(made.outputTexts[1]), ElementsAre(295 + 11, 1080));
    EXPECT_THAT(placeOf(afterBox(made, 1)), ElementsAre(200 + 11, 1032));
    EXPECT_THAT(placeOf(afterBox(made, 2)), ElementsAre(200 + 11, 1042));
}

TEST_F(Node, raisingPutsItAboveAllOthersWithItsTextsOnTop) {
    plugin& lower = add("Adder");
    add("Splitter");
    lower.raise_to_top();
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Splitter", "Adder"));
    const auto root = window->canvas.get_root_item();
    // Two title lines, two inputs and an output lie above the box.
    EXPECT_EQ(root->find_child(lower.box), root->get_n_children() - 6);
}

TEST_F(Node, itsEndTakesItsItemsAwayThenDeletesTheObject) {
    add("Number");
    add("Adder");
    const int before = itemsOnCanvas();
    window->pldelete("Adder");
    EXPECT_EQ(itemsOnCanvas(), before - 6);
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(1)"));
    EXPECT_EQ(manager->plugins.size(), 1U);
}

TEST_F(Node, aNameThatLeavesRoomForItsNumberIsNumbered) {
    const std::string name(62, 'n');
    restart("kind " + name + " Odd\n");
    add(name);
    EXPECT_EQ(add(name).uniqueName.raw(), name + "1");
}

TEST_F(Node, aNameTooLongForANumberStopsTheProgram) {
    const std::string name(63, 'n');
    restart("kind " + name + " Odd\n");
    add(name);
    EXPECT_DEATH(add(name), "is too long to append a number");
}
