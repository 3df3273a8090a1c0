#include "RunFixture.h"

#include "run/announce/RuntimeFolder.h"

#include <velmorak/Histogram.h>

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <optional>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

class Announcements : public RunTest {
protected:
    Announcements() {
        setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        add(pass, "begin");
        add(make, "mass");
        wire("begin", "number", "mass", "value");
    }
    ~Announcements() override { unsetenv("XDG_RUNTIME_DIR"); }

    std::vector<fs::path> files() const {
        std::vector<fs::path> found;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(folder / "velmorak", none)) {
            found.push_back(entry.path());
        }
        return found;
    }

    std::vector<Json> events() const {
        std::vector<Json> all;
        std::istringstream lines(content(files().at(0)));
        for (std::string line; std::getline(lines, line);) {
            all.push_back(Json::parse(line));
        }
        return all;
    }

    std::optional<Json> event(const std::string& kind, const std::string& name = "") const {
        for (const Json& each : events()) {
            if (each.at("event") == kind && (name.empty() || each.at("name") == name)) {
                return each;
            }
        }
        return std::nullopt;
    }

    PassKind pass;
    std::function<void()> during;
    FreeFunction make{
        "Make",
        {{numberInput("value")}, {output("histogram", ValueType::Histogram), output("number", ValueType::Number)}},
        [this](const Arguments&, Results& results, RunContext& context) {
            auto histogram = std::make_shared<Histogram1D>(Axis(2, 0.0, 2.0));
            histogram->title = "a <b>title</b>";
            histogram->fill(0.5, 2.0);
            results.set("histogram", DataObjectPtr(histogram));
            results.set("number", numbersWithErrors({91.2}, {"Make", {"number"}, {0.25}}).front());
            context.warn("look");
            if (during) {
                during();
            }
        }};
};

TEST_F(Announcements, haveEveryEventOfARun) {
    run();
    ASSERT_EQ(files().size(), 1U);
    const Json began = event("began").value();
    EXPECT_EQ(began.at("process"), getpid());
    EXPECT_EQ(began.at("pipeline").at(1).at("name"), "mass");
    EXPECT_EQ(began.at("pipeline").at(1).at("inputs").at(0).at("from").at(0), "begin");
    EXPECT_EQ(event("plugin", "mass")->at("outcome"), "done");
    EXPECT_EQ(event("message")->at("text"), "Make \"mass\": warning: look");
    EXPECT_EQ(events().back().at("event"), "ended");
    EXPECT_EQ(events().back().at("outcome"), "done");
}

TEST_F(Announcements, haveTheResults) {
    run();
    const Json outputs = event("plugin", "mass")->at("outputs");
    EXPECT_EQ(outputs.at(0).at("type"), "histogram");
    EXPECT_EQ(outputs.at(0).at("heights"), Json({2.0, 0.0}));
    EXPECT_EQ(outputs.at(0).at("title"), "a <b>title</b>");
    EXPECT_EQ(outputs.at(1).at("value"), 91.2);
    EXPECT_EQ(outputs.at(1).at("error"), 0.5);
}

TEST_F(Announcements, areLockedAsLongAsTheRunLives) {
    bool wasLocked = false;
    during = [&] { wasLocked = isLocked(files().at(0)); };
    run();
    EXPECT_TRUE(wasLocked);
    EXPECT_FALSE(isLocked(files().at(0)));
}

TEST_F(Announcements, areReadableByTheirUserOnly) {
    run();
    struct stat status {};
    ASSERT_EQ(stat(files().at(0).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat((folder / "velmorak").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(Announcements, areNotMadeInAFolderThatOthersMayWriteTo) {
    fs::create_directory(folder / "velmorak");
    chmod((folder / "velmorak").c_str(), 0777);
    run();
    EXPECT_TRUE(files().empty());
    EXPECT_EQ(status("mass"), NodeStatus::Done);
}

TEST_F(Announcements, areNotMadeBehindALink) {
    fs::create_directory(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", folder / "velmorak");
    run();
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
}

TEST_F(Announcements, areNotMadeWithoutARuntimeFolder) {
    unsetenv("XDG_RUNTIME_DIR");
    run();
    EXPECT_TRUE(files().empty());
    EXPECT_EQ(status("mass"), NodeStatus::Done);
}

TEST_F(Announcements, ofEndedRunsAreKeptUpToThirty) {
    for (int i = 0; i < 35; ++i) {
        run();
    }
    EXPECT_LE(files().size(), 31U);
}

TEST_F(Announcements, tellOfTheFailureAndTheFilesThatItCost) {
    runner.leaveRecords();
    const FreeFunction writing(
        "Write", {{numberInput("value")}, {}}, [](const Arguments& arguments, Results&, RunContext& context) {
            if (arguments.number("value") != 0.0) {
                throw Failure("no");
            }
            context.writeResult("a.txt", [](const fs::path& path) { std::ofstream(path) << "a"; });
        });
    add(writing, "write");
    wire("begin", "number", "write", "value");
    run();
    EXPECT_EQ(event("plugin", "write")->at("files"), Json({"a.txt"}));
    fs::remove_all(folder / "velmorak");
    set("begin", "value", "1");
    run();
    EXPECT_EQ(event("plugin", "write")->at("sentence"), "no");
    EXPECT_EQ(events().back().at("outcome"), "failed");
    EXPECT_EQ(events().back().at("former").at(0).at("file"), "a.txt");
}

TEST_F(Announcements, ofSentencesOutsideOfARunAreOneFileForEachProgram) {
    announceMessage("The value \"x\" was refused");
    announceMessage("two");
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(events().size(), 2U);
    EXPECT_EQ(events().at(0).at("text"), "The value \"x\" was refused");
}

}  // namespace
}  // namespace velmorak::test
