#include "RunFixture.h"

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

/// A plug-in that writes its text into the file that it names.
class ResultFolders : public RunTest {
protected:
    ResultFolders() { add(writing, "writer", {{"file", "note.txt"}, {"text", "hello"}}); }

    void runWith(const std::string& fileName) {
        set("writer", "file", fileName);
        run();
    }

    FreeFunction writing{"Writer",
                         {{textInput("file"), textInput("text")}, {}},
                         [](const Arguments& arguments, Results&, RunContext& context) {
                             context.writeResult(arguments.text("file"), [&](const fs::path& path) {
                                 std::ofstream(path) << arguments.text("text");
                                 if (arguments.text("text") == "bad") {
                                     throw Failure("the disk is full");
                                 }
                             });
                         }};
};

TEST_F(ResultFolders, landInTheResultsFolder) {
    run();
    EXPECT_EQ(status("writer"), NodeStatus::Done) << sentence("writer");
    EXPECT_EQ(content(folder / "test.results/note.txt"), "hello");
}

TEST_F(ResultFolders, landInFoldersOfTheirOwn) {
    runWith("plots/mass/a.txt");
    EXPECT_EQ(content(folder / "test.results/plots/mass/a.txt"), "hello");
}

TEST_F(ResultFolders, takeThePlaceOfOlderOnes) {
    run();
    set("writer", "text", "again");
    run();
    EXPECT_EQ(content(folder / "test.results/note.txt"), "again");
}

TEST_F(ResultFolders, showNoOlderOneWhenTheWriterFails) {
    run();
    set("writer", "text", "bad");
    run();
    EXPECT_EQ(sentence("writer"), "the disk is full");
    EXPECT_EQ(content(folder / "test.results/former/note.txt"), "hello");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "test.results"), {}), 1) << "no temporary file stays";
}

TEST_F(ResultFolders, keepTheEndingWhileTheyAreWritten) {
    std::string ending;
    const FreeFunction asking("Ask", {}, [&](const Arguments&, Results&, RunContext& context) {
        context.writeResult("plot.svg", [&](const fs::path& path) {
            ending = path.extension();
            std::ofstream(path) << "x";
        });
    });
    pipeline.nodes.clear();
    add(asking, "ask");
    run();
    EXPECT_EQ(ending, ".svg");
}

TEST_F(ResultFolders, mayNotClimbOutOfTheFolder) {
    for (const char* name : {"../note.txt", "a/../../note.txt", "a/../note.txt", "/tmp/velmorak-note.txt"}) {
        runWith(name);
        EXPECT_EQ(sentence("writer"),
                  "the file \"" + std::string(name) +
                      "\" is outside the results folder; set VELMORAK_WRITE_ANYWHERE=1 to allow that");
    }
    EXPECT_FALSE(fs::exists(folder / "note.txt"));
    EXPECT_FALSE(fs::exists(folder / "test.results")) << "a refused name makes no folder";
}

TEST_F(ResultFolders, mayClimbWhereTheSettingAllowsIt) {
    pipeline.mayWriteAnywhere = true;
    runWith("../note.txt");
    EXPECT_EQ(content(folder / "note.txt"), "hello");
    runWith((folder / "absolute.txt").string());
    EXPECT_EQ(content(folder / "absolute.txt"), "hello");
}

TEST_F(ResultFolders, mayNotLeaveByALink) {
    fs::create_directories(folder / "test.results");
    fs::create_directories(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", folder / "test.results/link");
    runWith("link/note.txt");
    EXPECT_EQ(status("writer"), NodeStatus::Failed);
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
}

TEST_F(ResultFolders, aLinkUnderTheirNameIsReplacedAndNotFollowed) {
    fs::create_directories(folder / "test.results");
    write("precious.txt", "keep me");
    fs::create_symlink(folder / "precious.txt", folder / "test.results/note.txt");
    run();
    EXPECT_EQ(content(folder / "precious.txt"), "keep me");
    EXPECT_EQ(content(folder / "test.results/note.txt"), "hello");
}

TEST_F(ResultFolders, theFolderItselfMayBeALinkWhereItWasChosen) {
    pipeline.isResultsFolderChosen = true;
    fs::create_directories(folder / "scratch");
    fs::create_directory_symlink(folder / "scratch", folder / "test.results");
    run();
    EXPECT_EQ(content(folder / "scratch/note.txt"), "hello");
}

TEST_F(ResultFolders, ofTwoPlugInsUnderOneNameNamesTheFirst) {
    add(writing, "second", {{"file", "./note.txt"}, {"text", "mine"}});
    const FreeFunction both("Both", {{numberInput("a")}, {output("number", ValueType::Number)}},
                            [](const Arguments&, Results& results, RunContext&) { results.set("number", 1.0); });
    add(both, "both");
    wire("both", "number", "writer", "text");
    wire("both", "number", "second", "text");
    start("both");
    run();
    EXPECT_EQ(status("writer"), NodeStatus::Done);
    EXPECT_EQ(sentence("second"), "the file \"./note.txt\" is already written by \"writer\"");
    EXPECT_EQ(content(folder / "test.results/note.txt"), "1");
}

TEST_F(ResultFolders, needAName) {
    runWith("");
    EXPECT_EQ(sentence("writer"), "the name of the result file is empty");
    for (const char* name : {".", "..", "a/"}) {
        runWith(name);
        EXPECT_EQ(sentence("writer"),
                  "the file \"" + std::string(name) + "\" cannot be written: this is not a file name");
    }
}

TEST_F(ResultFolders, doNotReplaceAFolder) {
    fs::create_directories(folder / "test.results/note.txt");
    run();
    EXPECT_EQ(sentence("writer"), "the file \"note.txt\" cannot be written: a folder has that name");
}

TEST_F(ResultFolders, areMissedWhenTheFolderCannotBeMade) {
    write("test.results", "in the way");
    run();
    EXPECT_EQ(sentence("writer").find("the file \"note.txt\" cannot be written: the folder "), 0U)
        << sentence("writer");
}

TEST_F(ResultFolders, thatAreWrittenPieceByPieceAreThereWhenKept) {
    const FreeFunction pieces("Pieces", {{numberInput("kept")}, {}},
                              [](const Arguments& arguments, Results&, RunContext& context) {
                                  const auto file = context.beginResult("pieces.txt");
                                  std::ofstream(file->path()) << "one";
                                  std::ofstream(file->path(), std::ios::app) << "two";
                                  if (arguments.number("kept") == 1.0) {
                                      file->keep();
                                  }
                              });
    pipeline.nodes.clear();
    add(pieces, "pieces");
    run();
    EXPECT_TRUE(fs::is_empty(folder / "test.results"));
    set("pieces", "kept", "1");
    run();
    EXPECT_EQ(content(folder / "test.results/pieces.txt"), "onetwo");
}

TEST_F(ResultFolders, inputFilesAreLookedForBesideTheDocumentFirst) {
    fs::path found;
    const FreeFunction asking(
        "Ask", {}, [&](const Arguments&, Results&, RunContext& context) { found = context.inputFile("data.txt"); });
    pipeline.nodes.clear();
    add(asking, "ask");
    run();
    EXPECT_EQ(found, folder / "data.txt") << "where it would be looked for, when it is nowhere";
    fs::create_directories(folder / "current");
    const fs::path before = fs::current_path();
    fs::current_path(folder / "current");
    std::ofstream("data.txt") << "current";
    run();
    EXPECT_EQ(content(found), "current");
    write("data.txt", "beside");
    run();
    EXPECT_EQ(content(found), "beside");
    fs::current_path(before);
}

}  // namespace
}  // namespace velmorak::test
