#include "Page.h"
#include "PipelineRobot.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

namespace fs = std::filesystem;

constexpr const char* lastToRun = "Plot \"Plot\"";
const std::array<std::string, 4> plotFiles{"Plot.dat", "Plot.gp", "Plot.png", "Plot.svg"};

/// Whether the record of a run is complete.
bool isComplete(const fs::path& record) {
    return nlohmann::json::parse(contentOf(record)).at("complete").get<bool>();
}

/// A fitted value in the record of a run.
double recordedOutput(const fs::path& record, const std::string& plugin, const std::string& output) {
    const auto run = nlohmann::json::parse(contentOf(record));
    for (const auto& node : run.at("plugins")) {
        for (const auto& made : node.at("outputs")) {
            if (node.at("name") == plugin && made.at("name") == output) {
                return std::strtod(made.at("value").get<std::string>().c_str(), nullptr);
            }
        }
    }
    throw std::out_of_range("no value of " + plugin + "." + output + " in " + record.string());
}

/// Masses around 91.2, the same ones each time.
void writeMasses(const fs::path& file, const std::string& header) {
    std::ofstream out(file);
    out << header << '\n';
    for (int i = 0; i < 2000; ++i) {
        // The sum of three uniform variates has a bell-shaped distribution.
        const double bell = (i * 7 % 20 + 0.5) / 20 + (i * 11 % 37 + 0.5) / 37 + (i * 13 % 101 + 0.5) / 101;
        out << 91.2 + 5 * (bell - 1.5) << ",0.5\n";
    }
}

/// A reader of the tutorial, who follows it and types the content of its tables and code blocks.
class Tutorial : public testing::Test {
protected:
    void started() {
        ASSERT_TRUE(session.start({}));
        session.picture("empty");
        ASSERT_TRUE(session.resize(800, 620));
        robot = std::make_unique<PipelineRobot>(session);
    }

    void placed(const std::string& kind, CanvasPlace place) {
        ASSERT_TRUE(robot->findKind(kind));
        session.screenPicture("kinds-" + kind);
        ASSERT_TRUE(robot->placeFound());
        ASSERT_TRUE(robot->drag(kind, place));
    }

    void valuesSet(const std::string& plugin, const Values& values) {
        ASSERT_FALSE(values.empty());
        ASSERT_TRUE(robot->typeValues(plugin, values));
        session.picture(plugin + " Variables", "variables-" + plugin);
        ASSERT_TRUE(robot->acceptValues());
    }

    bool ran() {
        return session.run(lastToRun) && waitFor([this] { return isComplete(results / "run.json"); });
    }

    void sourcePlaced() {
        ASSERT_NO_FATAL_FAILURE(placed("RandomTable", {15, 690}));
        robot->canvasPicture("source", {0, 655}, 380, 160);
        ASSERT_TRUE(robot->select("RandomTable"));
        ASSERT_NO_FATAL_FAILURE(valuesSet("RandomTable", page.values("1. ")));
    }

    void histogramWired() {
        ASSERT_NO_FATAL_FAILURE(placed("Histogram1D", {185, 690}));
        ASSERT_NO_FATAL_FAILURE(valuesSet("Histogram1D", page.values("2. ")));
        const ScreenPoint input = robot->placeOf({"Histogram1D", "table"});
        ASSERT_TRUE(robot->pullFrom({"RandomTable", "table"}, {input.x - 18, input.y + 22}));
        robot->canvasPicture("wiring", {0, 675}, 360, 170);
        ASSERT_TRUE(robot->release());
        ASSERT_TRUE(robot->wire({"RandomTable", "table"}, {"Histogram1D", "table"}));
        robot->leaveWindow();
        robot->canvasPicture("wired", {0, 675}, 360, 170);
    }

    void fitAndPlotPlaced() {
        ASSERT_NO_FATAL_FAILURE(placed("Fit", {395, 765}));
        ASSERT_TRUE(robot->wire({"Histogram1D", "histogram"}, {"Fit", "data"}));
        ASSERT_TRUE(robot->select("Fit"));
        ASSERT_NO_FATAL_FAILURE(valuesSet("Fit", page.values("4. ")));
        ASSERT_NO_FATAL_FAILURE(placed("Plot", {640, 690}));
        ASSERT_NO_FATAL_FAILURE(valuesSet("Plot", page.values("5. ")));
        ASSERT_TRUE(robot->wire({"Histogram1D", "histogram"}, {"Plot", "object"}));
        ASSERT_TRUE(robot->wire({"Fit", "function"}, {"Plot", "object2"}));
        robot->leaveWindow();
        session.picture("pipeline");
    }

    void savedAndRun() {
        ASSERT_TRUE(session.saveAs(document, "ctrl+s"));
        EXPECT_EQ(contentOf(document), robot->copy().DocumentText());
        fs::copy_file(document, withoutWindow.path() / "peak.zedra");
        ASSERT_TRUE(ran());
        fs::copy(results, withoutWindow.path() / "window");
        fs::copy_file(results / "Plot.png", session.pictureFile("plot"), fs::copy_options::overwrite_existing);
    }

    void peakIsAsThePageSays() const {
        EXPECT_NEAR(recordedOutput(results / "run.json", "Fit", "mean"), 91.202, 0.0005);
        EXPECT_NEAR(recordedOutput(results / "run.json", "Fit", "sigma"), 2.531, 0.0005);
        const std::string drawn = contentOf(results / "Plot.gp");
        for (const std::string value : {"91.20 ± 0.04", "2.53 ± 0.04"}) {
            EXPECT_NE(page.prose("6. ").find(" is " + value), std::string::npos) << value;
            EXPECT_NE(drawn.find(value), std::string::npos) << value;
        }
    }

    void lowEndChanged() {
        ASSERT_TRUE(robot->select("Fit"));
        ASSERT_NE(page.prose("6. ").find("`low` of the fit to `80`"), std::string::npos);
        ASSERT_NO_FATAL_FAILURE(valuesSet("Fit", {{"low", "80"}}));
        const std::size_t before = session.errors().size();
        ASSERT_TRUE(ran());
        const std::string messages = session.errors().substr(before);
        for (const std::string& line : page.code("6. ")) {
            EXPECT_NE(messages.find(line), std::string::npos) << messages;
        }
        EXPECT_EQ(messages.find("RandomTable\": executed"), std::string::npos) << messages;
    }

    /// Runs a command of the page beside the saved document, without results of the run in the window.
    void executed(const std::string& command) const {
        const fs::path& folder = withoutWindow.path();
        const std::string programs = fs::path(VELMORAK_RUNNER).parent_path().string() + ":" + std::getenv("PATH");
        Process shell(
            {"sh", "-ec", command},
            {.environment = {{"PATH", programs}, {"XDG_CACHE_HOME", (folder / "cache").string()}}, .folder = folder});
        EXPECT_EQ(shell.wait(), 0) << command << '\n' << shell.errors();
    }

    void ranWithoutAWindow() const {
        const fs::path& folder = withoutWindow.path();
        const std::string text = contentOf(folder / "peak.zedra");
        for (const std::string& command : page.code("without a window")) {
            executed(command);
        }
        for (const std::string& file : plotFiles) {
            EXPECT_TRUE(contentOf(folder / "peak.results" / file) == contentOf(folder / "window" / file)) << file;
        }
        EXPECT_LT(recordedOutput(folder / "big" / "run.json", "Fit", "mean_error"), 0.02);
        EXPECT_EQ(contentOf(folder / "peak.zedra"), text);
        for (const std::string bins : {"20", "40", "80"}) {
            EXPECT_TRUE(fs::exists(folder / "peak.results" / ("Histogram1D.bins=" + bins) / "Plot.png")) << bins;
        }
    }

    void ownFileWired() {
        const std::string section = "file of your own";
        std::ofstream file(masses);
        for (const std::string& line : page.code(section, 0)) {
            file << line << '\n';
        }
        file.close();
        ASSERT_NO_FATAL_FAILURE(placed("CsvTable", {15, 830}));
        ASSERT_NO_FATAL_FAILURE(valuesSet("CsvTable", {page.values(section).at(0)}));
        ASSERT_TRUE(robot->unwire({"Histogram1D", "table"}, {160, 1000}));
        ASSERT_TRUE(robot->wire({"CsvTable", "table"}, {"Histogram1D", "table"}));
        ASSERT_TRUE(robot->select("Histogram1D"));
        ASSERT_NO_FATAL_FAILURE(valuesSet("Histogram1D", {page.values(section).at(1)}));
        ASSERT_TRUE(robot->setStart("CsvTable"));
        ASSERT_TRUE(robot->remove("RandomTable"));
        robot->leaveWindow();
        session.picture("own-file");
    }

    void ownFileFitted() {
        fs::remove(document);
        ASSERT_TRUE(session.makes("ctrl+s", document));
        EXPECT_EQ(contentOf(document), robot->copy().DocumentText());
        session.clickStart();
        EXPECT_TRUE(session.hears(page.code("file of your own", 1).at(0))) << session.errors();
        // A click before the end of this run would stop it, and begin none.
        ASSERT_TRUE(waitFor([this] { return isComplete(results / "run.json"); }));
        writeMasses(masses, page.code("file of your own", 0).at(0));
        ASSERT_TRUE(ran());
        EXPECT_NEAR(recordedOutput(results / "run.json", "Fit", "mean"), 91.2, 0.1);
        EXPECT_TRUE(robot->pointAt({"CsvTable", "table"}));
        robot->canvasPicture("columns", {0, 665}, 380, 340);
    }

    const Page page{fs::path(VELMORAK_DOCS) / "tutorial.md"};
    Session session{"tutorial", {}};
    std::unique_ptr<PipelineRobot> robot;
    TemporaryFolder withoutWindow;
    const fs::path document = session.folder() / "peak.zedra";
    const fs::path results = session.folder() / "peak.results";
    const fs::path masses = session.folder() / "masses.csv";
};

TEST_F(Tutorial, leadsToTheResultsThatItPromises) {
    ASSERT_NO_FATAL_FAILURE(started());
    ASSERT_NO_FATAL_FAILURE(sourcePlaced());
    ASSERT_NO_FATAL_FAILURE(histogramWired());
    ASSERT_NO_FATAL_FAILURE(fitAndPlotPlaced());
    ASSERT_NO_FATAL_FAILURE(savedAndRun());
    peakIsAsThePageSays();
    ASSERT_NO_FATAL_FAILURE(lowEndChanged());
    ranWithoutAWindow();
    ASSERT_NO_FATAL_FAILURE(ownFileWired());
    ASSERT_NO_FATAL_FAILURE(ownFileFitted());
    EXPECT_TRUE(session.quit());
}

}  // namespace
