#include "HandsTest.h"

#include <QzManager.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>

namespace {

/// A number and two adders.
class DragLimits : public HandsTest {
protected:
    DragLimits() {
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
        addAt("Adder", 550, 700);
    }

    /// Positions of all texts of a node, relative to the corner of its box.
    std::vector<std::array<double, 2>> textsOf(const std::string& name) {
        std::vector<std::array<double, 2>> places;
        const CanvasPoint corner = cornerOf(name);
        const auto root = window->canvas.get_root_item();
        const int box = root->find_child(node(name).box);
        for (int i = box + 1; i <= box + 5; ++i) {
            const auto item = root->get_child(i);
            places.push_back({propertyOf<double>(item, "x") - corner.x, propertyOf<double>(item, "y") - corner.y});
        }
        return places;
    }

    /// Presses at that point of a box and moves the pointer.
    void pullBy(const std::string& name, CanvasPoint grip, CanvasPoint to) {
        const CanvasPoint corner = cornerOf(name);
        press({corner.x + grip.x, corner.y + grip.y});
        moveTo(to);
    }
};

/// A zoom, in hundredths.
class AtZoom : public DragLimits, public testing::WithParamInterface<int> {
protected:
    double scale() const { return GetParam() / 100.0; }

    void expectTravel(CanvasPoint from, double pixelsX, double pixelsY) {
        EXPECT_NEAR(cornerOf("Adder").x - from.x, pixelsX / scale(), 1);
        EXPECT_NEAR(cornerOf("Adder").y - from.y, pixelsY / scale(), 1);
    }

    void moveInSteps(int count, int dx, int dy) {
        for (int i = 0; i < count; ++i) {
            moveBy(dx, dy);
        }
    }
};

TEST_P(AtZoom, aBoxGoesAsFarAsThePointerAndItsTextsWithIt) {
    window->canvas.set_scale(scale());
    scrollTo({100, 620});
    clickOn(headOf("Adder"));
    const auto texts = textsOf("Adder");
    const CanvasPoint start = cornerOf("Adder");
    press(headOf("Adder"));
    moveInSteps(60, 1, 0);
    expectTravel(start, 60, 0);
    moveInSteps(60, 0, 1);
    expectTravel(start, 60, 60);
    moveInSteps(90, -1, -1);
    expectTravel(start, -30, -30);
    moveInSteps(10, 7, 3);
    expectTravel(start, 40, 0);
    release();
    EXPECT_EQ(textsOf("Adder"), texts);
    expectNothingLeftBehind();
}

TEST_P(AtZoom, theTextsStayInTheBoxAtTheUpperLeftCorner) {
    addAt("Splitter", 40, 60);
    window->canvas.set_scale(scale());
    scrollTo({0, 0});
    clickOn(headOf("Splitter"));
    const auto texts = textsOf("Splitter");
    const CanvasPoint head = headOf("Splitter");
    press(head);
    for (int step = 1; step <= 13; ++step) {
        moveTo({head.x - 6 * step, head.y - 5 * step});
    }
    EXPECT_EQ(cornerOf("Splitter").x, 0);
    EXPECT_EQ(cornerOf("Splitter").y, 0);
    EXPECT_EQ(textsOf("Splitter"), texts);
    moveTo(head);
    const double pixel = 1 / scale();
    EXPECT_NEAR(cornerOf("Splitter").x, 40, 1 + pixel);
    EXPECT_NEAR(cornerOf("Splitter").y, 60, 1 + pixel);
    release();
    EXPECT_EQ(textsOf("Splitter"), texts);
    expectNothingLeftBehind();
}

INSTANTIATE_TEST_SUITE_P(Zooms, AtZoom, testing::Values(30, 50, 70, 90, 100, 110, 130, 190, 200, 310));

TEST_F(DragLimits, theTitleBarStaysOnTheCanvas) {
    window->canvas.set_scale(0.5);
    const CanvasPoint start = cornerOf("Adder1");
    pullBy("Adder1", {150, 10}, {40, 900});
    EXPECT_EQ(cornerOf("Adder1").x, 0);
    moveTo({1495, 900});
    EXPECT_EQ(cornerOf("Adder1").x, 1500 - 160);
    moveTo({start.x + 150, start.y + 10});
    EXPECT_EQ(cornerOf("Adder1").x, start.x);
    EXPECT_EQ(cornerOf("Adder1").y, start.y);
    release();
    pullBy("Adder1", {20, 10}, {1498, 1198});
    EXPECT_EQ(cornerOf("Adder1").x, 1500 - 160);
    EXPECT_EQ(cornerOf("Adder1").y, 1200 - 30);
    release();
    pullBy("Adder1", {80, 29}, {800, 4});
    EXPECT_EQ(cornerOf("Adder1").y, 0);
    release();
    expectNothingLeftBehind();
}

TEST_F(DragLimits, aTextIsNotPressedAgainstTheCanvassEdge) {
    window->canvas.set_scale(0.5);
    clickOn(headOf("Adder1"));
    const auto texts = textsOf("Adder1");
    for (const CanvasPoint corner : {CanvasPoint{10, 10}, {1490, 10}, {1490, 1190}, {10, 1190}}) {
        drag(headOf("Adder1"), corner);
        EXPECT_EQ(textsOf("Adder1"), texts);
    }
}

TEST_F(DragLimits, aBoxThatSticksOutGoesNoFartherAndDoesNotJump) {
    addAt("Splitter", 1400, 700);
    window->canvas.set_scale(0.5);
    const CanvasPoint head = headOf("Splitter");
    drag(head, {head.x + 40, head.y + 50});
    EXPECT_EQ(cornerOf("Splitter").x, 1400);
    EXPECT_EQ(cornerOf("Splitter").y, 750);
    const CanvasPoint below = headOf("Splitter");
    drag(below, {below.x - 40, below.y});
    EXPECT_EQ(cornerOf("Splitter").x, 1360);
}

TEST_F(DragLimits, theWheelTakesABoxAlong) {
    const CanvasPoint start = cornerOf("Adder");
    press(headOf("Adder"));
    const double scrolled = window->scroller.get_vadjustment()->get_value();
    turnWheel(GDK_SCROLL_UP);
    const double travel = window->scroller.get_vadjustment()->get_value() - scrolled;
    EXPECT_LT(travel, -10);
    moveBy(0, 0);
    EXPECT_NEAR(cornerOf("Adder").y - start.y, travel, 1);
    release();
    expectNothingLeftBehind();
}

TEST_F(DragLimits, theWheelTakesAWireAlong) {
    press(outputOf("Number", "value"));
    moveTo({220, 760});
    const double scrolled = window->scroller.get_vadjustment()->get_value();
    turnWheel(GDK_SCROLL_UP);
    const double travel = window->scroller.get_vadjustment()->get_value() - scrolled;
    EXPECT_LT(travel, -10);
    moveBy(0, 0);
    EXPECT_NEAR(std::stod(topPath().substr(topPath().rfind(' '))), 760 + travel, 1);
    moveTo(inputOf("Adder", "a"));
    release();
    EXPECT_TRUE(isBound("Adder", "a", "Number", "value"));
    expectNothingLeftBehind();
}

/// A position that cannot be drawn, and the position where the box is drawn instead.
struct Damage {
    float x, y;
    double shownX, shownY;
};

class DamagedPosition : public DragLimits, public testing::WithParamInterface<Damage> {
protected:
    /// Adds a node at that position of the library, like a document.
    void show() {
        QzBase& damaged = object("Adder1");
        damaged.SetPosition(GetParam().x, GetParam().y);
        window->addPlugin(&damaged, "");
        window->connect({"Adder1", "sum"}, {"Adder", "a"});
        window->canvas.update();
        recording::forgetCalls();
    }

    std::array<float, 2> stored() {
        std::array<float, 2> place{};
        object("Adder1").GetPosition(place[0], place[1]);
        return place;
    }

    void expectStoredAsItWas() {
        const auto [x, y] = stored();
        EXPECT_TRUE(x == GetParam().x || std::isnan(GetParam().x));
        EXPECT_TRUE(y == GetParam().y || std::isnan(GetParam().y));
        EXPECT_THAT(recording::callsOf("SetPosition"), testing::IsEmpty());
    }
};

TEST_P(DamagedPosition, isShownAtTheNearestPlaceAndKeptUntilTheBoxMoves) {
    window->canvas.set_scale(0.5);
    show();
    EXPECT_EQ(cornerOf("Adder1").x, GetParam().shownX);
    EXPECT_EQ(cornerOf("Adder1").y, GetParam().shownY);
    clickOn(headOf("Adder1"));
    expectStoredAsItWas();
    node("Adder1").draw();
    EXPECT_EQ(cornerOf("Adder1").x, GetParam().shownX);
    expectStoredAsItWas();
    Glib::ustring name = "Adder1";
    window->reconnect(name);
    drag(headOf("Adder1"), {700, 600});
    EXPECT_EQ(stored()[0], cornerOf("Adder1").x);
    EXPECT_EQ(stored()[1], 1200 - cornerOf("Adder1").y - 70);
    expectNothingLeftBehind();
}

constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(Positions, DamagedPosition,
                         testing::Values(Damage{1e30F, 500, 1500 - 160, 630}, Damage{-1e30F, 500, 0, 630},
                                         Damage{300, 1e30F, 300, 0}, Damage{300, -2e6F, 300, 1130},
                                         Damage{infinite, infinite, 1500 - 160, 0},
                                         Damage{-infinite, -infinite, 0, 1130}, Damage{nan, nan, 0, 1130}));

TEST_F(DragLimits, aPositionOfAMillionUnitsIsDrawnWhereItIs) {
    QzBase& far = object("Adder1");
    far.SetPosition(1e6F, -1e6F);
    window->addPlugin(&far, "");
    window->connect({"Adder", "sum"}, {"Adder1", "a"});
    EXPECT_EQ(cornerOf("Adder1").x, 1e6);
    EXPECT_EQ(cornerOf("Adder1").y, 1e6 + 1130);
}

}  // namespace
