#include "Session.h"

#include <QzManager.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

namespace fs = std::filesystem;

constexpr const char* pipeline = R"({
  "zedra": 1,
  "plugins": [
    {"name": "Both", "kind": "Combine", "position": [40, 200],
     "inputs": [{"name": "operation", "value": "add"}], "outputs": [{"name": "histogram", "type": "histogram"}]}
  ]
})";
// The row of the operation in the dialog, below the name and the two histograms, and its place among the inputs.
constexpr int operationRow = 3;
constexpr std::size_t operationInput = 2;

// Between the heights of a list of one choice and of all six, in pixels, whatever the theme.
constexpr int heightOfFour = 100;

/// The lists that open below an entry or at the kind selector.
class OpenLists : public testing::Test {
protected:
    void SetUp() override {
        std::ofstream(document) << pipeline;
        ASSERT_TRUE(session.start({document.string()}));
        ASSERT_TRUE(session.seesPipeline());
    }

    void variablesOpened() {
        ASSERT_TRUE(session.select(SavedPipeline::read(document), "Both"));
        ASSERT_TRUE(session.openVariables("Both"));
    }

    /// Selects the first choice of the open list and saves the document.
    std::string operationAfterTheFirstChoice() {
        session.pressKeys({"Down", "Return"});
        EXPECT_TRUE(session.listIsClosed());
        session.pressButton("Both Variables", 0);
        EXPECT_TRUE(session.isGone("Both Variables"));
        fs::remove(document);
        EXPECT_TRUE(session.makes("ctrl+s", document));
        QzManager manager("QzAnalysisFactory");
        manager.ReadDocument(document.string());
        return manager.plugins.at(0)->Inputs().at(operationInput).value;
    }

    int heightOfList() { return session.areaOf(session.openList()).height; }

    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    Session session{name, {}};
    const fs::path document = session.folder() / "both.zedra";
};

TEST_F(OpenLists, ofAChoiceShowThoseThatGoOnAsWhatIsTyped) {
    ASSERT_NO_FATAL_FAILURE(variablesOpened());
    session.type(operationRow, "w");
    const std::string narrowed = session.openList();
    ASSERT_FALSE(narrowed.empty());
    session.screenPicture("narrowed");
    session.pressKeys({"BackSpace"});
    // One of the six choices, and all of them: a list that is being laid out has any height for a moment.
    EXPECT_TRUE(waitFor([&] { return heightOfList() > heightOfFour; }));
    session.pressKeys({"w"});
    EXPECT_TRUE(waitFor([&] { return heightOfList() > 0 && heightOfList() < heightOfFour / 2; }));
    EXPECT_EQ(operationAfterTheFirstChoice(), "wilson");
    EXPECT_TRUE(session.quit());
}

TEST_F(OpenLists, ofAChoicePassAClickOnToTheButton) {
    ASSERT_NO_FATAL_FAILURE(variablesOpened());
    session.type(operationRow, "w");
    ASSERT_FALSE(session.openList().empty());
    session.pressButton("Both Variables", 0);
    EXPECT_TRUE(session.isGone("Both Variables"));
    EXPECT_TRUE(session.listIsClosed());
}

TEST_F(OpenLists, ofAChoiceCloseWhenAWholeChoiceWasTyped) {
    ASSERT_NO_FATAL_FAILURE(variablesOpened());
    session.type(operationRow, "wilso");
    ASSERT_FALSE(session.openList().empty());
    session.pressKeys({"n"});
    EXPECT_TRUE(session.listIsClosed());
    session.pressKeys({"Down"});
    EXPECT_TRUE(waitFor([&] { return heightOfList() > heightOfFour; }));
    session.pressKeys({"Escape"});
    EXPECT_TRUE(session.listIsClosed());
    session.pressButton("Both Variables", 0);
    EXPECT_TRUE(session.isGone("Both Variables"));
}

TEST_F(OpenLists, ofAMaximisedWindowsSelectorStandAtTheButton) {
    ASSERT_TRUE(session.maximise());
    const ScreenArea window = session.area();
    session.click(window.x + window.width * 5 / 6, window.y + window.height - 12);
    const std::string list = session.openList();
    ASSERT_FALSE(list.empty());
    session.screenPicture("list");
    const ScreenArea place = session.areaOf(list);
    EXPECT_NEAR(place.x + place.width, window.x + window.width, 8);
    EXPECT_NEAR(place.y + place.height, window.y + window.height - 24, 12);
    session.pressKeys({"Escape"});
    EXPECT_TRUE(session.listIsClosed());
    EXPECT_TRUE(session.quit());
}

}  // namespace
