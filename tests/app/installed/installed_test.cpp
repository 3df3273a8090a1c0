#include "Desktop.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

// Where the tree was installed and then moved to; where screenshots are kept.
const fs::path prefix = VELMORAK_INSTALLED;
const fs::path pictures = VELMORAK_PICTURES;

fs::path example() {
    return prefix / VELMORAK_DATADIR / "examples" / "Particle_physics" / "Dimuon_mass.zedra";
}
std::string program(const std::string& name) {
    return (prefix / VELMORAK_BINDIR / name).string();
}

std::set<std::string> filesIn(const fs::path& folder) {
    std::set<std::string> names;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            // The record of a run contains its time.
            if (entry.is_regular_file() && entry.path().filename() != "run.json") {
                names.insert(fs::relative(entry.path(), folder).string());
            }
        }
    }
    return names;
}

bool holds(const fs::path& folder, const std::string& ending) {
    for (const std::string& name : filesIn(folder)) {
        if (name.ends_with(ending)) {
            return true;
        }
    }
    return false;
}

void expectSameFiles(const fs::path& first, const fs::path& second) {
    ASSERT_EQ(filesIn(first), filesIn(second));
    ASSERT_FALSE(filesIn(first).empty());
    for (const std::string& name : filesIn(first)) {
        EXPECT_EQ(contentOf(first / name), contentOf(second / name)) << name;
    }
}

/// The program on a private screen, in a temporary folder, which receives the results of an example.
class Installed : public testing::Test {
protected:
    void start(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), program("velmorak"));
        editor = std::make_unique<Process>(arguments, desktop.setting(folder.path()));
        window = desktop.windowOf(*editor);
        ASSERT_FALSE(window.empty()) << editor->errors();
        ASSERT_TRUE(desktop.activate(window));
    }

    void quit() {
        ASSERT_TRUE(desktop.activate(window));
        // The last entry of the first menu.
        desktop.pressKeys({"F10", "Up", "Return"});
        const auto status = editor->wait(20000);
        ASSERT_TRUE(status) << "still running";
        EXPECT_EQ(*status, 0) << editor->errors();
    }

    void runWithoutWindow(const fs::path& where) {
        Process::Setting setting{.environment = {{"DISPLAY", ""}, {"VELMORAK_CACHE_LIMIT", "0"}}, .folder = where};
        Process runner({program("velmorak-run"), example().string()}, setting);
        ASSERT_EQ(runner.wait(), 0) << runner.errors();
    }

    fs::path results() const { return folder.path() / "Dimuon_mass.results"; }

    /// The library reports the result of each plug-in at the end of a run.
    void waitForResults() {
        const std::regex line("AidaWriter \"Results\": [0-9.]+ s\n");
        ASSERT_TRUE(waitFor([&] { return std::regex_search(editor->errors(), line); })) << editor->errors();
        EXPECT_TRUE(holds(results(), ".png") && holds(results(), ".svg") && holds(results(), ".aida"));
    }

    TemporaryFolder folder;
    Desktop desktop;
    std::unique_ptr<Process> editor;
    std::string window;
};

TEST_F(Installed, theRunnerLeavesAPictureAndAnAidaFile) {
    runWithoutWindow(folder.path());
    EXPECT_TRUE(holds(results(), ".png"));
    EXPECT_TRUE(holds(results(), ".svg"));
    EXPECT_TRUE(holds(results(), ".aida"));
}

TEST_F(Installed, theEditorRunsTheExampleAtStartWithTheRunnersResults) {
    start({"-run", example().string()});
    waitForResults();
    desktop.screenshot(pictures / "run-at-start.png");
    quit();
    TemporaryFolder other;
    runWithoutWindow(other.path());
    expectSameFiles(results(), other.path() / "Dimuon_mass.results");
}

TEST_F(Installed, aClickOnStartRunsTheAnalysis) {
    start({example().string()});
    EXPECT_FALSE(fs::exists(results()));
    const ScreenArea area = desktop.areaOf(window);
    desktop.click(area.x + area.width / 6, area.y + area.height - 12);
    waitForResults();
    desktop.screenshot(pictures / "run-by-click.png");
    quit();
}

TEST_F(Installed, theWindowShows600By400OfCanvas) {
    start({});
    const ScreenArea area = desktop.areaOf(window);
    EXPECT_GE(area.width, 600);
    EXPECT_LE(area.width, 640);
    EXPECT_GE(area.height, 400);
    EXPECT_LE(area.height, 500);
    desktop.screenshot(pictures / "empty.png");
    quit();
}

TEST_F(Installed, theWindowManagersCloseRequestDoesNothing) {
    start({});
    desktop.pressKeys({"alt+F4", "alt+F4"});
    EXPECT_TRUE(desktop.activate(window));
    EXPECT_TRUE(editor->isRunning());
    EXPECT_EQ(desktop.windowOf(*editor), window);
    quit();
}

TEST_F(Installed, aDocumentThatIsMissingIsReportedAndTheWindowOpens) {
    start({"no-such-document.zedra"});
    EXPECT_NE(editor->errors().find("no-such-document.zedra"), std::string::npos) << editor->errors();
    quit();
}

TEST_F(Installed, anAidaFileThatIsBrokenIsReportedAndTheWindowOpens) {
    std::ofstream(folder.path() / "broken.aida") << "this is no AIDA file";
    start({"-a", "broken.aida"});
    EXPECT_NE(editor->errors().find("broken.aida"), std::string::npos) << editor->errors();
    quit();
}

TEST_F(Installed, helpIsInstalled) {
    EXPECT_TRUE(fs::exists(prefix / VELMORAK_DOCDIR / "index.html"));
    EXPECT_TRUE(fs::exists(prefix / VELMORAK_DOCDIR / "kinds.html"));
}

TEST_F(Installed, theRunnerLinksNoToolkit) {
    Process ldd({"ldd", program("velmorak-run")});
    ASSERT_EQ(ldd.wait(), 0);
    EXPECT_NE(ldd.output().find("QzManager.so"), std::string::npos);
    EXPECT_EQ(ldd.output().find("libgtk"), std::string::npos);
    EXPECT_EQ(ldd.output().find("libX11"), std::string::npos);
}

}  // namespace
