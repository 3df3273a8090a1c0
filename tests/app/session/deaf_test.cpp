#include "Session.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

namespace fs = std::filesystem;

constexpr const char* pipeline = R"({
  "zedra": 1,
  "plugins": [
    {"name": "deaf", "kind": "IsDeaf", "position": [40, 300], "inputs": [], "outputs": []},
    {"name": "One", "kind": "Number", "position": [240, 300], "inputs": [{"name": "value", "value": "1"}],
     "outputs": [{"name": "number", "type": "number"}]}
  ]
})";

/// The program with a kind inside it that does not poll.
class DeafKind : public testing::Test {
protected:
    void opened() {
        std::ofstream(document) << pipeline;
        ASSERT_TRUE(session.start({document.string()}));
        ASSERT_TRUE(session.seesPipeline());
    }

    Session session{"deaf", {{"VELMORAK_COLLECTIONS", VELMORAK_TEST_COLLECTIONS}, {"VELMORAK_ISOLATE", "0"}}};
    const fs::path document = session.folder() / "deaf.zedra";
};

TEST_F(DeafKind, thatDoesNotStopLeavesAnEditorThatCanBeUsed) {
    ASSERT_NO_FATAL_FAILURE(opened());
    const SavedPipeline shown = SavedPipeline::read(document);
    ASSERT_TRUE(session.select(shown, "One"));
    const std::string start = session.lookOfStart();
    session.clickStart();
    ASSERT_TRUE(session.hears("it goes on")) << session.errors();
    ASSERT_TRUE(session.select(shown, "deaf"));
    session.picture("running");
    EXPECT_NE(session.lookOfStart(), start);

    session.clickStart();
    ASSERT_TRUE(session.hears("IsDeaf \"deaf\" does not stop; its thread is left behind")) << session.errors();
    ASSERT_TRUE(session.select(shown, "One"));
    session.picture("left-behind");
    EXPECT_EQ(session.lookOfStart(), start);
    fs::remove(document);
    ASSERT_TRUE(session.makes("ctrl+s", document));
    EXPECT_EQ(SavedPipeline::read(document).names(), shown.names());

    session.clickStart();
    ASSERT_TRUE(session.hears("IsDeaf \"deaf\" failed: its kind did not stop in an earlier run")) << session.errors();
    EXPECT_TRUE(session.quit()) << session.errors();
}

}  // namespace
