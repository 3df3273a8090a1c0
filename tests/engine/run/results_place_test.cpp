#include "RunFixture.h"

#include <sys/wait.h>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

/// A plug-in that writes files of the names that the test says.
class ResultsPlace : public RunTest {
protected:
    ResultsPlace() { add(writer, "writer"); }

    void runWriting(const std::vector<std::string>& names) {
        fileNames = names;
        runner.reset();
        run();
    }

    /// @return the number of a program that is no more.
    static pid_t deadProgram() {
        const pid_t child = fork();
        if (child == 0) {
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        return child;
    }

    std::vector<std::string> fileNames{"note.txt"};
    FreeFunction writer{"Writer", {}, [this](const Arguments&, Results&, RunContext& context) {
                            for (const std::string& name : fileNames) {
                                context.writeResult(name,
                                                    [](const fs::path& path) { std::ofstream(path) << "a note"; });
                            }
                        }};
};

TEST_F(ResultsPlace, refusesTheNameOfTheRunsRecord) {
    for (const char* name : {"run.json", "./run.json", "a/../run.json"}) {
        runWriting({name});
        EXPECT_EQ(status("writer"), NodeStatus::Failed) << name;
        EXPECT_NE(sentence("writer").find("run.json"), std::string::npos);
    }
    runWriting({"run.json"});
    EXPECT_EQ(sentence("writer"), "the file \"run.json\" is the name of the record of the run; choose another one");
    runWriting({"plots/run.json"});
    EXPECT_EQ(status("writer"), NodeStatus::Done) << "a folder has a name of its own";
}

TEST_F(ResultsPlace, refusesNamesWithControlCharacters) {
    runWriting({"a\nb\x1B.txt"});
    EXPECT_EQ(sentence("writer"), "the file \"a\\nb\\x1B.txt\" cannot be written: its name has a control character");
    runWriting({"χ².txt"});
    EXPECT_EQ(status("writer"), NodeStatus::Done);
}

TEST_F(ResultsPlace, isNoLinkUnlessItWasChosen) {
    fs::create_directory(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", pipeline.resultsFolder);
    runner.leaveRecords();
    runWriting({"note.txt"});
    const std::string complaint = "the results folder " + pipeline.resultsFolder.string() +
                                  " is a link; name the folder with --results to use it";
    EXPECT_EQ(sentence("writer"), "the file \"note.txt\" cannot be written: " + complaint);
    EXPECT_TRUE(wasSaid("The record of the run cannot be written: " + complaint));
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
    pipeline.isResultsFolderChosen = true;
    runWriting({"note.txt"});
    EXPECT_EQ(status("writer"), NodeStatus::Done);
    EXPECT_TRUE(fs::exists(folder / "elsewhere" / "note.txt"));
    EXPECT_TRUE(fs::exists(folder / "elsewhere" / "run.json"));
}

TEST_F(ResultsPlace, losesWhatCrashedProgramsLeftInIt) {
    const std::string dead = std::to_string(deadProgram());
    const fs::path deeper = pipeline.resultsFolder / "plots";
    fs::create_directories(deeper);
    const fs::path ours = pipeline.resultsFolder / (".velmorak-" + std::to_string(getppid()) + "-0.svg");
    const fs::path notOurs = pipeline.resultsFolder / (".velmorak-" + dead + ".svg");
    for (const fs::path& file :
         {pipeline.resultsFolder / (".velmorak-" + dead + "-0.svg"), deeper / (".velmorak-" + dead + "-3-1.aida"),
          pipeline.resultsFolder / (".velmorak-" + dead + "-run.json"), ours, notOurs}) {
        std::ofstream(file) << "half";
    }
    runWriting({"note.txt"});
    std::vector<fs::path> left;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(pipeline.resultsFolder)) {
        if (entry.is_regular_file()) {
            left.push_back(entry.path());
        }
    }
    std::sort(left.begin(), left.end());
    std::vector<fs::path> expected{ours, notOurs, pipeline.resultsFolder / "note.txt"};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(left, expected) << "what a program that is still there is writing stays";
}

TEST_F(ResultsPlace, messagesShowWhatAKindSaysInOneLine) {
    FreeFunction loud("Loud", {}, [](const Arguments&, Results&, RunContext& context) {
        context.warn("all is well\nNumber \"one\" failed: \x1B[31mnot true");
        context.tell("a table\nof two lines\x07\n");
        throw Failure("no\ngood");
    });
    add(loud, "a\nb");
    start("a\nb");
    run();
    EXPECT_TRUE(wasSaid("Loud \"a\\nb\": warning: all is well\\nNumber \"one\" failed: \\x1B[31mnot true"));
    EXPECT_TRUE(wasSaid("Loud \"a\\nb\":\na table\nof two lines\\x07"));
    EXPECT_TRUE(wasSaid("Loud \"a\\nb\" failed: no\\ngood"));
}

}  // namespace
}  // namespace velmorak::test
