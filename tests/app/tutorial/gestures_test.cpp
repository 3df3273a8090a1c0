#include "PipelineRobot.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>

namespace {

namespace fs = std::filesystem;

/// A small pipeline, and every gesture on the canvas that docs/window.md describes, with a picture before and after.
class CanvasGestures : public testing::Test {
protected:
    void SetUp() override {
        std::ofstream(document) << QzManager("QzAnalysisFactory").DocumentText();
        ASSERT_TRUE(session.start({document.string()}));
        robot = std::make_unique<PipelineRobot>(session);
    }

    /// Of the part of the canvas where the boxes are, with the pointer.
    void picture(const std::string& step) { robot->canvasPicture(step, {0, 830}, 300, 150); }
    std::function<void()> keep(const std::string& step) {
        return [this, step] { picture(step); };
    }

    /// Whether the document, written once more, holds what was done.
    void expectSaved() {
        fs::remove(document);
        ASSERT_TRUE(session.makes("ctrl+s", document));
        EXPECT_EQ(contentOf(document), robot->copy().DocumentText());
    }

    void placed() {
        ASSERT_TRUE(robot->findKind("Number"));
        const ScreenArea list = session.areaOf(session.openList());
        robot->screenPicture("place-1", {list.x, list.y, list.width, 150});
        ASSERT_TRUE(robot->placeFound());
        robot->canvasPicture("place-2", {0, 1020}, 300, 150);
        ASSERT_TRUE(robot->drag("Number", {30, 850}));
        ASSERT_TRUE(robot->place("Number"));
        ASSERT_TRUE(robot->drag("Number1", {30, 915}));
        ASSERT_TRUE(robot->place("Adder"));
        ASSERT_TRUE(robot->drag("Adder", {150, 900}));
        ASSERT_NO_FATAL_FAILURE(expectSaved());
    }

    void selectedAndMoved() {
        ASSERT_TRUE(robot->select("Number"));
        picture("select-2");
        ASSERT_TRUE(robot->select("Number1"));
        robot->pointAtHandle("Number");
        picture("select-1");
        ASSERT_TRUE(robot->select("Adder"));
        picture("move-1");
        ASSERT_TRUE(robot->drag("Adder", {190, 870}, keep("move-2")));
        ASSERT_NO_FATAL_FAILURE(expectSaved());
    }

    void wired() {
        const ScreenPoint output = robot->placeOf({"Number", "number"});
        ASSERT_TRUE(robot->pullFrom({"Number", "number"}, {output.x + 22, output.y + 6}));
        picture("wire-0");
        ASSERT_TRUE(robot->release());
        ASSERT_NO_FATAL_FAILURE(expectSaved());
        ASSERT_TRUE(robot->wire({"Number", "number"}, {"Adder", "a"}, keep("wire-1")));
        picture("wire-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
        ASSERT_TRUE(robot->unwire({"Adder", "a"}, {150, 960}, keep("unwire-1")));
        picture("unwire-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
        ASSERT_TRUE(robot->wire({"Number", "number"}, {"Adder", "a"}));
        ASSERT_TRUE(robot->wire({"Number1", "number"}, {"Adder", "a"}, keep("replace-1")));
        picture("replace-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
    }

    void collapsed() {
        ASSERT_TRUE(robot->select("Adder"));
        picture("collapse-1");
        ASSERT_TRUE(robot->collapse("Adder"));
        picture("collapse-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
        ASSERT_TRUE(robot->collapse("Adder"));
        ASSERT_NO_FATAL_FAILURE(expectSaved());
    }

    void deletedAndStarted() {
        ASSERT_TRUE(robot->select("Number1"));
        picture("delete-1");
        ASSERT_TRUE(robot->remove("Number1"));
        picture("delete-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
        ASSERT_TRUE(robot->select("Adder"));
        picture("start-1");
        ASSERT_TRUE(robot->setStart("Adder"));
        picture("start-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
    }

    void chosenFromTheContextMenu() {
        ASSERT_TRUE(robot->openMenu("Number"));
        picture("menu-1");
        ASSERT_TRUE(robot->removeByMenu("Number"));
        picture("menu-2");
        ASSERT_NO_FATAL_FAILURE(expectSaved());
    }

    Session session{"gesture", {}};
    const fs::path document = session.folder() / "gestures.zedra";
    std::unique_ptr<PipelineRobot> robot;
};

TEST_F(CanvasGestures, doWhatThePageOfTheWindowSays) {
    ASSERT_NO_FATAL_FAILURE(placed());
    ASSERT_NO_FATAL_FAILURE(selectedAndMoved());
    ASSERT_NO_FATAL_FAILURE(wired());
    ASSERT_NO_FATAL_FAILURE(collapsed());
    ASSERT_NO_FATAL_FAILURE(deletedAndStarted());
    ASSERT_NO_FATAL_FAILURE(chosenFromTheContextMenu());
    EXPECT_EQ(robot->copy().plugins.size(), 1U);
    EXPECT_TRUE(session.quit());
}

}  // namespace
