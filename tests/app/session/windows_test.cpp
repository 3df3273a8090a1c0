#include "Session.h"

#include <QzManager.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

const fs::path example = fs::path(VELMORAK_EXAMPLES) / "Particle_physics" / "Dimuon_mass.zedra";

class DesktopWindows : public testing::Test {
protected:
    // Tests run side by side, and each keeps its pictures.
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    Session session{name, {}};
};

TEST_F(DesktopWindows, theCollectionPlacesAPluginAndTheAboutBoxAnswers) {
    const fs::path document = session.folder() / "empty.zedra";
    std::ofstream(document) << QzManager("QzAnalysisFactory").DocumentText();
    ASSERT_TRUE(session.start({document.string()}));
    ASSERT_TRUE(session.choose(2, 1, "Plugin collection"));
    session.chooseInGroup(0);
    session.picture("Plugin collection", "collection");
    session.confirm();
    ASSERT_TRUE(session.seesPipeline());
    ASSERT_TRUE(session.closeByManager("Plugin collection"));
    fs::remove(document);
    ASSERT_TRUE(session.makes("ctrl+s", document));
    EXPECT_EQ(SavedPipeline::read(document).names(), std::vector{QzManager::GetPlugins().front().name});

    ASSERT_TRUE(session.choose(-1, 1, "About Velmorak.Gtk."));
    session.picture("About Velmorak.Gtk.", "about");
    session.cancel();
    ASSERT_TRUE(session.isGone("About Velmorak.Gtk."));
    EXPECT_TRUE(session.quit());
}

TEST_F(DesktopWindows, pointingAtABoxShowsWhatItIs) {
    ASSERT_TRUE(session.start({example.string()}));
    ASSERT_TRUE(session.seesPipeline());
    EXPECT_TRUE(session.pointAtStart());
    session.screenPicture("tooltip");
    EXPECT_EQ(session.errors(), "");
    EXPECT_TRUE(session.quit());
}

TEST_F(DesktopWindows, theQuestionStandsInFrontOfAVariablesDialogAndReturnSaves) {
    const fs::path document = session.folder() / "own.zedra";
    fs::copy_file(example, document);
    fs::copy(example.parent_path(), session.folder(), fs::copy_options::recursive | fs::copy_options::skip_existing);
    ASSERT_TRUE(session.start({document.string()}));
    ASSERT_TRUE(session.seesPipeline());
    ASSERT_TRUE(session.select(SavedPipeline::read(document), "Peak"));
    ASSERT_TRUE(session.openVariables("Peak"));
    session.type(4, "31");
    session.pressButton("Peak Variables", 1);
    session.picture("Peak Variables", "variables");
    const std::string question = session.askToQuit();
    ASSERT_FALSE(question.empty());
    const ScreenArea place = session.areaOf(question);
    session.move("Peak Variables", place.x - 20, place.y - 20);
    session.click(place.x - 10, place.y - 10);
    const std::vector<std::string> stack = session.stack();
    const auto positionOf = [&stack](const std::string& window) { return std::ranges::find(stack, window); };
    ASSERT_NE(positionOf(question), stack.end());
    EXPECT_LT(positionOf(session.windowOf("Peak Variables")), positionOf(question));
    session.screenPicture("behind");
    EXPECT_TRUE(session.quitByReturn(question));
    std::ostringstream text;
    text << std::ifstream(document).rdbuf();
    EXPECT_NE(text.str().find("\"31\""), std::string::npos);
}

TEST_F(DesktopWindows, anExpressionThatLosesAVariableLosesItsWire) {
    const fs::path document = session.folder() / "sum.zedra";
    std::ofstream(document) << R"({
  "zedra": 1,
  "plugins": [
    {"name": "One", "kind": "Number", "position": [40, 200], "inputs": [{"name": "value", "value": "1"}],
     "outputs": [{"name": "number", "type": "number"}]},
    {"name": "Sum", "kind": "Function", "position": [240, 200],
     "inputs": [{"name": "expression", "value": "a + b"}, {"name": "a", "value": "", "from": ["One", "number"]},
                {"name": "b", "value": "", "from": ["One", "number"]}],
     "outputs": [{"name": "value", "type": "number"}]}
  ]
})";
    ASSERT_TRUE(session.start({document.string()}));
    ASSERT_TRUE(session.seesPipeline());
    ASSERT_TRUE(session.select(SavedPipeline::read(document), "Sum"));
    session.picture("both");
    ASSERT_TRUE(session.openVariables("Sum"));
    session.type(1, "b");
    session.pressButton("Sum Variables", 0);
    ASSERT_TRUE(session.isGone("Sum Variables"));
    fs::remove(document);
    ASSERT_TRUE(session.makes("ctrl+s", document));
    session.picture("one");
    const std::map<std::string, std::string> sources{{"b", "One.number"}};
    EXPECT_EQ(SavedPipeline::read(document).node("Sum").sources, sources);
    EXPECT_TRUE(session.quit());
}

/// The example with every plug-in moved to the upper end of the canvas, where an exported image begins.
std::string exampleAtTheTop() {
    constexpr float canvasHeight = 1200;
    QzManager manager("QzAnalysisFactory");
    manager.SetFontSize(9, 11);
    manager.ReadDocument(example.string());
    float highest = 0;
    for (QzBase* object : manager.plugins) {
        float x = 0;
        float y = 0;
        float width = 0;
        float height = 0;
        object->GetPosition(x, y);
        object->GetOuterExtent(width, height);
        highest = std::max(highest, y + height);
    }
    for (QzBase* object : manager.plugins) {
        float x = 0;
        float y = 0;
        object->GetPosition(x, y);
        object->SetPosition(x, y + canvasHeight - highest);
    }
    return manager.DocumentText();
}

/// The picture on the canvas's background, which an exported image does not contain, blurred so that the antialiasing
/// of single letters does not matter: the X server rasterises text with its own subpixel positions and hinting, and an
/// 8-bit transparent image rounds colours differently. ExportedImage checks exact pixels in one process.
fs::path fromAfar(const fs::path& picture) {
    fs::path file = picture.parent_path() / (picture.stem().string() + "-afar.png");
    Process({"convert", picture.string(), "-background", "#ABBAC9", "-flatten", "-blur", "0x2", file.string()}).wait();
    return file;
}

/// Number of pixels in which two pictures differ; -1 if they cannot be compared.
long differences(const fs::path& first, const fs::path& second) {
    Process compare(
        {"compare", "-metric", "AE", "-fuzz", "8%", fromAfar(first).string(), fromAfar(second).string(), "null:"});
    compare.wait();
    char* end = nullptr;
    const std::string said = compare.errors();
    const long count = std::strtol(said.c_str(), &end, 10);
    return end == said.c_str() || *end != '\0' ? -1 : count;
}

TEST_F(DesktopWindows, theExportedImageIsWhatTheCanvasShows) {
    const fs::path document = session.folder() / "top.zedra";
    std::ofstream(document) << exampleAtTheTop();
    ASSERT_TRUE(session.start({document.string()}));
    ASSERT_TRUE(session.scrollToTop(SavedPipeline::read(document).nodes.front()));
    session.picture("image-canvas");
    const fs::path image = session.folder() / "test.png";
    ASSERT_TRUE(session.makes("alt+i", image));
    const fs::path shown = fs::path(VELMORAK_PICTURES) / (name + "-shown.png");
    session.takeCanvas(image, shown);
    EXPECT_EQ(differences(image, shown), 0);
    EXPECT_TRUE(session.quit());
}

}  // namespace
