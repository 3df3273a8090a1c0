#include "Walk.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

/// A whole session with mouse and keyboard, in several views.
class InputRobot : public testing::TestWithParam<View> {
protected:
    void SetUp() override { ASSERT_TRUE(walk.isOpen()); }

    void threeApart() {
        for (int i = 0; i < 3; ++i) {
            walk.create();
        }
        ASSERT_EQ(walk.saved().names(), (std::vector<std::string>{first, second, third}));
        walk.picture("created");
        // The last one is on top.
        const int step = static_cast<int>(160 * walk.scale());
        ASSERT_TRUE(walk.dragBy(third, step, -step / 3));
        ASSERT_TRUE(walk.dragBy(second, step, step / 3));
        walk.picture("apart");
    }

    void wired() {
        ASSERT_TRUE(walk.wire(first, second, input));
        ASSERT_TRUE(walk.wire(first, third, input));
        walk.picture("wired");
        ASSERT_TRUE(walk.pullOff(third, input, otherInput));
        walk.picture("pulled-off");
    }

    void collapsedAndStarted() {
        ASSERT_TRUE(walk.select(second));
        ASSERT_TRUE(walk.key("alt+c", [this](const SavedPipeline& now) { return !now.node(second).isExpanded; }));
        walk.picture("collapsed");
        ASSERT_TRUE(walk.select(third));
        ASSERT_TRUE(walk.key("alt+s", [this](const SavedPipeline& now) { return now.nodes.front().name == third; }));
        walk.picture("start-set");
    }

    /// Drags the third box by that many canvas units.
    bool moved(double dx, double dy) {
        return walk.dragBy(third, static_cast<int>(dx * walk.scale()), static_cast<int>(dy * walk.scale()));
    }

    void zoomedAndScrolled() {
        walk.zoomBy(2);
        ASSERT_TRUE(moved(-24, -12));
        walk.picture("dragged-closer");
        walk.scroll(1);
        ASSERT_TRUE(moved(30, -9));
        walk.picture("dragged-scrolled");
        walk.zoomBy(-2);
        ASSERT_TRUE(moved(10, 10));
        walk.picture("dragged-again");
    }

    void secondDeleted() {
        ASSERT_TRUE(walk.select(second));
        ASSERT_TRUE(walk.key("Delete", [](const SavedPipeline& now) { return now.nodes.size() == 2; }));
        walk.picture("deleted");
    }

    std::string documentText() const {
        std::ifstream in(walk.document(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    Walk walk{GetParam()};
    const std::string first = walk.kind().name;
    const std::string second = first + "1";
    const std::string third = first + "2";
    const std::string input = walk.kind().inputs[0];
    const std::string otherInput = walk.kind().inputs[1];
    const std::string source = first + "." + walk.kind().output;
};

TEST_P(InputRobot, theDocumentHoldsWhatWasDone) {
    ASSERT_NO_FATAL_FAILURE(threeApart());
    ASSERT_NO_FATAL_FAILURE(wired());
    ASSERT_NO_FATAL_FAILURE(collapsedAndStarted());
    ASSERT_NO_FATAL_FAILURE(zoomedAndScrolled());
    ASSERT_NO_FATAL_FAILURE(secondDeleted());

    const SavedPipeline& saved = walk.saved();
    EXPECT_EQ(saved.names(), (std::vector<std::string>{third, first}));
    EXPECT_EQ(saved.node(third).sources, (std::map<std::string, std::string>{{otherInput, source}}));
    EXPECT_TRUE(saved.node(first).sources.empty());
    EXPECT_TRUE(saved.node(third).isExpanded);
    EXPECT_EQ(documentText(), saved.textAgain);
    EXPECT_TRUE(walk.quit());
}

/// A box that is being dragged while its window disappears.
using LostWindow = InputRobot;

TEST_P(LostWindow, noBoxFollowsThePointerAfterTheWindowWasAway) {
    walk.create();
    walk.create();
    const int step = static_cast<int>(80 * walk.scale());
    EXPECT_TRUE(walk.loseWhileDragging(second, {step, -step}, {"windowminimize", walk.windowNumber()}));
    EXPECT_TRUE(walk.loseWhileDragging(second, {step, step}, {"set_desktop", "1"}));
    ASSERT_TRUE(walk.select(first));
    EXPECT_TRUE(walk.dragBy(first, step, step));
    EXPECT_TRUE(walk.quit());
}

std::string nameOfView(const testing::TestParamInfo<View>& view) {
    return view.param.name;
}

INSTANTIATE_TEST_SUITE_P(Views, InputRobot,
                         testing::Values(View{"plain", 0, 0, 0}, View{"closer", 5, 0, 0}, View{"farther", -5, 0, 0},
                                         View{"large", 0, 1000, 800}),
                         nameOfView);
INSTANTIATE_TEST_SUITE_P(Views, LostWindow, testing::Values(View{"plain", 0, 0, 0}, View{"closer", 3, 0, 0}),
                         nameOfView);

}  // namespace
