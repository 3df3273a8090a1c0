#include "RunFixture.h"

#include "run/record/RunRecordFile.h"

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

/// Two plug-ins that write files, of which "writer" fails before it writes when its text is "bad", and waits to be
/// stopped when it is "wait". "other" hangs on the writer's start.
class FormerFiles : public RunTest {
protected:
    FormerFiles() {
        runner.leaveRecords();
        add(writing, "writer", {{"file", "note.txt"}, {"text", "one"}});
        add(writing, "other", {{"file", "plots/other.txt"}, {"text", "one"}});
        add(begin, "begin");
        start("begin");
        wire("begin", "number", "writer", "begin");
        wire("begin", "number", "other", "begin");
    }

    void runWith(const std::string& text) {
        set("writer", "text", text);
        run();
    }

    bool isThere(const std::string& name) const { return fs::exists(folder / "test.results" / name); }
    std::string contentOf(const std::string& name) const { return content(folder / "test.results" / name); }
    std::vector<FormerFile> recorded() const {
        return readRunRecord(folder / "test.results" / runRecordFileName).files;
    }

    PassKind begin;
    FreeFunction writing{"Writer",
                         {{textInput("file"), textInput("text"), numberInput("begin")}, {}},
                         [this](const Arguments& arguments, Results&, RunContext& context) {
                             if (arguments.text("text") == "bad") {
                                 throw Failure("it is bad");
                             }
                             if (arguments.text("text") == "wait") {
                                 runner.stop();
                                 waitForStop(context);
                             }
                             context.writeResult(arguments.text("file"), [&](const fs::path& path) {
                                 std::ofstream(path) << arguments.text("text");
                             });
                         }};
};

TEST_F(FormerFiles, ofAPlugInThatFailsMoveAwayBeforeItBegins) {
    run();
    runWith("bad");
    EXPECT_FALSE(isThere("note.txt"));
    EXPECT_EQ(contentOf("former/note.txt"), "one");
    EXPECT_EQ(contentOf("plots/other.txt"), "one") << "a result that is reused is confirmed";
    EXPECT_TRUE(wasSaid("Not made again, and moved to " + (folder / "test.results/former").string() +
                        ": note.txt of \"writer\""))
        << messages.str();
    EXPECT_EQ(report.former, (std::vector<FormerFile>{{"writer", "note.txt"}}));
}

TEST_F(FormerFiles, ofAPlugInThatIsStoppedMoveAway) {
    run();
    runWith("wait");
    EXPECT_TRUE(report.wasStopped);
    EXPECT_FALSE(isThere("note.txt"));
    EXPECT_EQ(contentOf("former/note.txt"), "one");
}

TEST_F(FormerFiles, ofASkippedPlugInMoveAway) {
    run();
    set("begin", "value", "13");
    run();
    EXPECT_FALSE(isThere("note.txt"));
    EXPECT_FALSE(isThere("plots/other.txt"));
    EXPECT_EQ(contentOf("former/plots/other.txt"), "one");
}

TEST_F(FormerFiles, stayUntilTheNextGoodRun) {
    run();
    runWith("bad");
    set("other", "text", "two");
    runWith("bad");
    EXPECT_EQ(contentOf("former/note.txt"), "one");
    EXPECT_EQ(contentOf("former/plots/other.txt"), "one");
    EXPECT_EQ(contentOf("plots/other.txt"), "two");
    runWith("three");
    EXPECT_EQ(contentOf("note.txt"), "three");
    EXPECT_FALSE(isThere("former"));
    EXPECT_TRUE(report.former.empty());
}

TEST_F(FormerFiles, ofADeletedPlugInMoveAwayAndGoWithTheSecondGoodRun) {
    run();
    pipeline.nodes.pop_back();
    run();
    EXPECT_FALSE(isThere("plots/other.txt"));
    EXPECT_EQ(contentOf("former/plots/other.txt"), "one");
    runWith("two");
    EXPECT_FALSE(isThere("former"));
}

TEST_F(FormerFiles, ofAPlugInThatIsNotAskedStayWhileTheyAreRight) {
    run();
    inputOf("other", "begin").wire.reset();
    run();
    EXPECT_FALSE(isThere("plots/other.txt")) << "its inputs have changed since";
    wire("begin", "number", "other", "begin");
    run();
    start("writer");
    run();
    EXPECT_EQ(status("other"), NodeStatus::NotRequested);
    EXPECT_EQ(contentOf("plots/other.txt"), "one");
    EXPECT_EQ(recorded().size(), 2U) << "the record names the confirmed file as well";
}

TEST_F(FormerFiles, areFoundAgainAfterAKilledRun) {
    run();
    // What a program leaves that is killed after it has moved the files away.
    const std::atomic<bool> isStopping = false;
    RunReport atBegin;
    atBegin.former = recorded();
    writeRunRecord(pipeline.resultsFolder, runRecordText(pipeline, atBegin, false, isStopping));
    runWith("bad");
    EXPECT_FALSE(isThere("note.txt"));
    EXPECT_EQ(contentOf("former/note.txt"), "one");
}

TEST_F(FormerFiles, thatNoRecordNamesAreNotTouched) {
    run();
    write("test.results/mine.txt", "mine");
    write("test.results/former.txt", "mine");
    runWith("bad");
    EXPECT_EQ(contentOf("mine.txt"), "mine");
    EXPECT_EQ(contentOf("former.txt"), "mine");
}

TEST_F(FormerFiles, ofAnotherDocumentInAChosenFolderAreNotTouched) {
    pipeline.isResultsFolderChosen = true;
    pipeline.document = folder / "one.zedra";
    run();
    pipeline.document = folder / "two.zedra";
    pipeline.nodes.pop_back();
    run();
    EXPECT_EQ(contentOf("plots/other.txt"), "one");
}

TEST_F(FormerFiles, namedByADamagedRecordStayInsideTheFolder) {
    run();
    write("outside.txt", "mine");
    fs::create_directory_symlink(folder, folder / "test.results/link");
    const std::atomic<bool> isStopping = false;
    RunReport bad;
    bad.former = {{"writer", "../outside.txt"},
                  {"writer", (folder / "outside.txt").string()},
                  {"writer", "link/outside.txt"},
                  {"writer", "former/../../outside.txt"},
                  {"writer", ""},
                  {"writer", "run.json"},
                  {"writer", "plots"}};
    writeRunRecord(pipeline.resultsFolder, runRecordText(pipeline, bad, false, isStopping));
    runWith("bad");
    EXPECT_EQ(content(folder / "outside.txt"), "mine");
    EXPECT_TRUE(isThere("run.json"));
    EXPECT_TRUE(isThere("plots"));
}

TEST_F(FormerFiles, doNotLeaveByALinkInPlaceOfTheirFolder) {
    run();
    fs::create_directory(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", folder / "test.results/former");
    runWith("two");
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
    EXPECT_EQ(status("writer"), NodeStatus::Failed);
    EXPECT_NE(sentence("writer").find("is not a folder; remove or rename it"), std::string::npos) << sentence("writer");
}

TEST_F(FormerFiles, haveAFolderThatNoPlugInMayWriteTo) {
    set("writer", "file", "former/note.txt");
    run();
    EXPECT_EQ(sentence("writer"),
              "the file \"former/note.txt\" is in the folder of files of earlier runs; choose another one");
}

TEST_F(FormerFiles, areNamedInTheRecordOfTheRun) {
    run();
    runWith("bad");
    const std::vector<FormerFile> expected{{"other", "plots/other.txt"}, {"writer", "note.txt"}};
    std::vector<FormerFile> files = recorded();
    std::sort(files.begin(), files.end(), [](const auto& one, const auto& two) { return one.plugin < two.plugin; });
    EXPECT_EQ(files, expected);
    EXPECT_NE(contentOf("run.json").find("\"former\": [\n    {\n      \"plugin\": \"writer\""), std::string::npos);
}

}  // namespace
}  // namespace velmorak::test
