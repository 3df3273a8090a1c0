#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

class VelmorakRun : public ::testing::Test {
protected:
    VelmorakRun() {
        folder = fs::temp_directory_path() / ("velmorak-run-tool-" + std::to_string(getpid()));
        fs::remove_all(folder);
        fs::create_directories(folder);
        setenv("VELMORAK_COLLECTIONS", VELMORAK_TEST_COLLECTIONS, 1);
    }
    ~VelmorakRun() override {
        unsetenv("VELMORAK_THREADS");
        unsetenv("VELMORAK_CACHE_LIMIT");
        unsetenv("VELMORAK_ISOLATE");
        unsetenv("SOURCE_DATE_EPOCH");
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    /// A document with one line for each plug-in.
    std::string document(const std::string& plugins) const {
        const fs::path file = folder / "test.zedra";
        std::ofstream(file) << R"({"zedra": 1, "plugins": [)" << plugins << "]}\n";
        return file.string();
    }

    static std::string plugin(const std::string& name, const std::string& kind, const std::string& inputs = "") {
        return R"({"name": ")" + name + R"(", "kind": ")" + kind + R"(", "inputs": [)" + inputs + "]}";
    }

    static Ended run(std::vector<std::string> arguments,
                     const std::function<void(pid_t, const std::string&)>& onError = nullptr) {
        arguments.insert(arguments.begin(), VELMORAK_RUN);
        return runProgram(arguments, onError);
    }

    static Ended runAndSend(int signal, const std::string& file, const std::string& when = "it waits") {
        bool isSent = false;
        return run({file}, [&](pid_t id, const std::string& errors) {
            if (!isSent && errors.find(when) != std::string::npos) {
                isSent = true;
                kill(id, signal);
            }
        });
    }

    /// All results below a folder with their contents, without the record of when they were made.
    static std::map<std::string, std::string> contentsOf(const fs::path& results) {
        std::map<std::string, std::string> contents;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(results)) {
            if (entry.path().filename() == "run.json") {
                continue;
            }
            std::ostringstream text;
            text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            contents[fs::relative(entry.path(), results)] = text.str();
        }
        return contents;
    }

    /// The results of an example, all of it computed in a new folder.
    std::map<std::string, std::string> resultsOf(const fs::path& example, const std::string& threads) const {
        setenv("VELMORAK_THREADS", threads.c_str(), 1);
        setenv("VELMORAK_CACHE_LIMIT", "0", 1);
        setenv("SOURCE_DATE_EPOCH", "1000000000", 1);
        const fs::path place = folder / (example.stem().string() + threads);
        fs::copy(example.parent_path(), place, fs::copy_options::recursive);
        const Ended ended = run({(place / example.filename()).string()});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return contentsOf(place / (example.stem().string() + ".results"));
    }

    fs::path folder;
};

TEST_F(VelmorakRun, endsWithZeroWhenAllIsDone) {
    const Ended ended = run({document(plugin("one", "Number") + "," +
                                      plugin("sum", "Adder", R"({"name": "a", "from": ["one", "number"]})"))});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("Number \"one\": "));
    EXPECT_THAT(ended.errors, HasSubstr("Adder \"sum\": "));
}

TEST_F(VelmorakRun, endsWithOneOnAWrongCommandLine) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{}, {"--bogus", "a"}, {"a", "b"}, {"a", "-a"}}) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_NE(ended.errors, "");
    }
}

TEST_F(VelmorakRun, endsWithOneWhenTheDocumentCannotBeRead) {
    const Ended missing = run({(folder / "missing.zedra").string()});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors, HasSubstr("missing.zedra"));
    const Ended broken = run({document("nonsense")});
    EXPECT_EQ(broken.status, 1);
    EXPECT_THAT(broken.errors, HasSubstr("test.zedra"));
    EXPECT_EQ(broken.output, "");
}

TEST_F(VelmorakRun, endsWithTwoWhenAPlugInFailsAndNamesIt) {
    const Ended ended = run({document(plugin("unlucky", "Fails") + "," +
                                      plugin("sum", "Adder", R"({"name": "a", "from": ["unlucky", "number"]})"))});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("Fails \"unlucky\" failed: it was made to fail\n"));
    EXPECT_THAT(ended.errors, HasSubstr("Adder \"sum\": not run because of \"unlucky\"\n"));
}

TEST_F(VelmorakRun, endsWithTwoWhenAKindIsUnknown) {
    const Ended ended = run({document(plugin("odd", "NoSuchKind"))});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("NoSuchKind \"odd\" failed: "));
}

TEST_F(VelmorakRun, endsWithThreeWhenItIsStopped) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const Ended ended = runAndSend(signal, document(plugin("w", "Waits")));
        EXPECT_EQ(ended.status, 3) << ended.errors;
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors, HasSubstr("Waits \"w\": not finished because the run was stopped\n"));
    }
}

TEST_F(VelmorakRun, reportsAMissingAidaFileAndContinues) {
    const Ended ended = run({"-a", (folder / "none.aida").string(), document(plugin("one", "Number"))});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.errors, HasSubstr("none.aida"));
    EXPECT_THAT(ended.errors, HasSubstr("Number \"one\": "));
}

TEST_F(VelmorakRun, printsListsToStandardOutput) {
    const Ended version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "velmorak-run " VELMORAK_VERSION "\n");
    EXPECT_EQ(version.errors, "");
    const Ended help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("DOCUMENT"));
    EXPECT_LE(std::count(help.output.begin(), help.output.end(), '\n'), 24) << "fits a screen";
    EXPECT_EQ(help.errors, "");
}

TEST_F(VelmorakRun, leavesTheSameFilesOfEachExampleOnAnyNumberOfThreads) {
    int examples = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(VELMORAK_EXAMPLES)) {
        if (entry.path().extension() != ".zedra") {
            continue;
        }
        ++examples;
        const auto results = resultsOf(entry.path(), "1");
        EXPECT_GE(results.size(), 2U) << entry.path() << " shows a picture and writes a file";
        for (const char* threads : {"2", "3", "16"}) {
            EXPECT_EQ(resultsOf(entry.path(), threads), results) << entry.path() << " on " << threads;
        }
    }
    EXPECT_GE(examples, 2);
}

/// The tool's options, on: Number "one" -> Adder "sum".
class VelmorakRunOptions : public VelmorakRun {
protected:
    std::string file =
        document(plugin("one", "Number") + "," + plugin("sum", "Adder", R"({"name": "a", "from": ["one", "number"]})"));

    void expectRefusal(const std::vector<std::string>& options, const std::string& sentence) const {
        std::vector<std::string> arguments = options;
        arguments.push_back(file);
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "velmorak-run: " + sentence + "\n");
    }
};

TEST_F(VelmorakRunOptions, nameTheNearestPlugInOrInputAndRunNothing) {
    expectRefusal({"--set", "som.b=2"}, R"(no plug-in is named "som"; did you mean "sum"?)");
    expectRefusal({"--set", "one.valu=2"}, R"(plug-in "one" has no input "valu"; did you mean "value"?)");
    expectRefusal({"--start", "on"}, R"(no plug-in is named "on"; did you mean "one"?)");
    expectRefusal({"--scan", "ome.value=1,2"}, R"(no plug-in is named "ome"; did you mean "one"?)");
}

TEST_F(VelmorakRunOptions, refuseMalformedSettings) {
    expectRefusal({"--set", "one"}, R"("one" does not have the form PLUGIN.INPUT=VALUE)");
    expectRefusal({"--scan", "one.value=1:2:0"}, R"("1:2:0" is not a range from:to:step with at most 10000 values)");
    expectRefusal({"--scan", "one.value=1:2:-1"}, R"("1:2:-1" is not a range from:to:step with at most 10000 values)");
    expectRefusal({"--scan", "one.value=1:x:1"}, R"("1:x:1" is not a range from:to:step with at most 10000 values)");
}

TEST_F(VelmorakRunOptions, refuseAValueForAnInputThatIsFed) {
    expectRefusal({"--set", "sum.a=2"}, R"(input "a" of "sum" is fed by "one"; a value would have no effect)");
}

TEST_F(VelmorakRunOptions, reportAValueThatTheInputRefuses) {
    const Ended ended = run({"--set", "one.value=many", file});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr(R"(input "value" of "one" does not take "many"; it is ")"));
}

TEST_F(VelmorakRunOptions, listPlugInsAfterWhatWasSet) {
    const Ended ended = run({"--list", "--set", "one.value=7", "--start", "sum", file});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    EXPECT_THAT(ended.output, testing::StartsWith("Adder \"sum\"\n  a (number): from \"one\" number\n"));
    EXPECT_THAT(ended.output, HasSubstr("Number \"one\"\n  value (number): 7\n"));
}

TEST_F(VelmorakRunOptions, checkWithoutRunning) {
    EXPECT_EQ(run({"--check", file}).status, 0);
    const Ended ended = run({"--check", document(plugin("unlucky", "Fails") + "," + plugin("odd", "NoSuchKind"))});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("NoSuchKind \"odd\": "));
    EXPECT_THAT(ended.errors, Not(HasSubstr("Fails \"unlucky\":")));
}

TEST_F(VelmorakRunOptions, printReasonsOnlyWithWhy) {
    const std::string why = "Number \"one\": executed, never run\n";
    EXPECT_THAT(run({"--why", file}).errors, HasSubstr(why));
    EXPECT_THAT(run({file}).errors, Not(HasSubstr(why)));
}

TEST_F(VelmorakRunOptions, aSecondProgramExecutesOnlyWhatChanged) {
    EXPECT_THAT(run({"--why", file}).errors, HasSubstr("Adder \"sum\": executed, never run\n"));
    const Ended same = run({"--why", file});
    EXPECT_THAT(same.errors, Not(HasSubstr("executed")));
    EXPECT_THAT(same.errors, HasSubstr("Number \"one\": reused, nothing changed\n"));
    const Ended changed = run({"--why", "--set", "sum.b=25", file});
    EXPECT_THAT(changed.errors, HasSubstr("Number \"one\": reused, nothing changed\n"));
    EXPECT_THAT(changed.errors, HasSubstr("Adder \"sum\": executed, b changed from 0 to 25\n"));
}

TEST_F(VelmorakRunOptions, scanRunsEachValueAndOnlyWhatDependsOnIt) {
    const std::string both = document(plugin("apart", "Number") + "," + plugin("one", "Number") + "," +
                                      plugin("sum", "Adder",
                                             R"({"name": "a", "from": ["one", "number"]},)"
                                             R"({"name": "b", "from": ["apart", "number"]})"));
    const Ended ended = run({"--why", "--start", "sum", "--scan", "one.value=1:2:0.5", both});
    EXPECT_EQ(ended.status, 0);
    for (const char* point : {"1", "1.5", "2"}) {
        EXPECT_THAT(ended.errors, HasSubstr(std::string("Scan: one.value=") + point + "\n"));
    }
    EXPECT_THAT(ended.errors, HasSubstr("Number \"one\": executed, value changed from 1.5 to 2\n"));
    EXPECT_THAT(ended.errors, HasSubstr("Number \"apart\": reused, nothing changed\n"));
}

TEST_F(VelmorakRunOptions, timeoutStopsWithThree) {
    // A slow machine may need a short limit for reading the document; a longer one ends within the run.
    Ended ended;
    double seconds = 0.2;
    do {
        ended = run({"--timeout", std::to_string(seconds), document(plugin("w", "Waits"))});
        ASSERT_EQ(ended.status, 3);
        seconds *= 2.0;
    } while (ended.errors.find("stopped before the run began") != std::string::npos);
    EXPECT_THAT(ended.errors, HasSubstr("Waits \"w\": not finished because the run was stopped\n"));
}

TEST_F(VelmorakRunOptions, resultsLieInTheFolderThatIsNamed) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(VELMORAK_EXAMPLES)) {
        if (entry.path().extension() != ".zedra") {
            continue;
        }
        const fs::path results = folder / "chosen" / entry.path().stem();
        EXPECT_EQ(run({"--results", results.string(), "-j", "2", entry.path().string()}).status, 0);
        EXPECT_FALSE(fs::is_empty(results));
    }
}

TEST_F(VelmorakRunOptions, aSecondSignalEndsAtOnce) {
    int sent = 0;
    const Ended ended = run({document(plugin("deaf", "IsDeaf"))}, [&](pid_t id, const std::string&) {
        for (; sent < 2; ++sent) {
            kill(id, sent == 0 ? SIGTERM : SIGINT);
        }
    });
    EXPECT_EQ(ended.status, 3);
    EXPECT_THAT(ended.errors, Not(HasSubstr("not finished")));
}

TEST_F(VelmorakRunOptions, refuseAnInvalidTimeLimit) {
    for (const char* seconds : {"nan", "-1", "0", "inf", "1e300", "soon"}) {
        const Ended ended = run({"--timeout", seconds, file});
        EXPECT_EQ(ended.status, 1) << seconds;
        EXPECT_THAT(ended.errors, HasSubstr("--timeout")) << seconds;
        EXPECT_THAT(ended.errors, Not(HasSubstr("Number"))) << "nothing was run";
    }
}

TEST_F(VelmorakRunOptions, eventsThatCannotBeWrittenFailTheProgram) {
    const Ended ended = run({"--events", "/dev/full", file});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("Adder \"sum\": ")) << "the run itself goes on";
    EXPECT_THAT(ended.errors, HasSubstr("velmorak-run: the events cannot be written: No space left on device\n"));
}

TEST_F(VelmorakRunOptions, listThatCannotBeWrittenFailsTheProgram) {
    const std::string command = std::string(VELMORAK_RUN) + " --list " + file + " > /dev/full";
    const Ended ended = runProgram({"sh", "-c", command});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "velmorak-run: standard output cannot be written\n");
}

TEST_F(VelmorakRunOptions, refuseAnInvalidRecord) {
    std::ofstream(folder / "cut.json") << R"({"run": 1, "plug)";
    std::ofstream(folder / "other.json") << "[1, 2]";
    for (const char* name : {"cut.json", "other.json", "missing.json"}) {
        const Ended ended = run({"--again", (folder / name).string()});
        EXPECT_EQ(ended.status, 1);
        EXPECT_THAT(ended.errors, HasSubstr(name));
        for (const char* internal : {"json.exception", "iostream", "basic_ios"}) {
            EXPECT_THAT(ended.errors, Not(HasSubstr(internal)));
        }
    }
}

/// A report says when it was written.
TEST_F(VelmorakRun, repeatsARunOfAnotherDay) {
    setenv("SOURCE_DATE_EPOCH", "1000000000", 1);
    const fs::path results = folder / "first";
    const Ended first = run({"--results", results.string(), document(plugin("page", "Report"))});
    unsetenv("SOURCE_DATE_EPOCH");
    ASSERT_EQ(first.status, 0) << first.errors;
    ASSERT_THAT(contentsOf(results).at("page.html"), HasSubstr("2001-09-09 01:46 UTC"));
    const Ended again = run({"--again", (results / "run.json").string()});
    EXPECT_EQ(again.status, 0) << again.errors;
    EXPECT_EQ(again.output, "identical: 1 result\n");
}

TEST_F(VelmorakRun, keepsItsStandardOutputForItself) {
    const Ended ended = run({"--events", "-", document(plugin("loud", "Prints"))});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, Not(HasSubstr("from a")));
    EXPECT_THAT(ended.output, HasSubstr(R"("event":"ended")"));
    EXPECT_THAT(ended.errors, HasSubstr("from a stream\n"));
    EXPECT_THAT(ended.errors, HasSubstr("from a function\n"));
}

TEST_F(VelmorakRun, explainsExceptionsOfTheStandardLibrary) {
    const Ended ended = run({document(plugin("far", "Overreaches"))});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("Overreaches \"far\" failed: internal error (basic_string::at"));
}

/// A pipe to which nobody writes takes the place of a document that is long in coming.
TEST_F(VelmorakRun, canBeStoppedBeforeTheRunBegins) {
    const fs::path events = folder / "events.fifo";
    ASSERT_EQ(mkfifo(events.c_str(), 0600), 0);
    const std::string file = document(plugin("w", "Fails"));
    const Ended ended = run({"--timeout", "0.1", "--events", events.string(), file});
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.errors, "velmorak-run: stopped before the run began\n");
}

TEST_F(VelmorakRun, refusesAPipeAsItsAidaFileWithoutWaiting) {
    const fs::path fifo = folder / "data.fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const Ended ended = run({"-a", fifo.string(), document(plugin("one", "Number"))});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.errors, HasSubstr("data.fifo is not a regular file (a FIFO)"));
}

TEST_F(VelmorakRun, endsWithThreeWhenAPlugInInsideItDoesNotStop) {
    setenv("VELMORAK_ISOLATE", "0", 1);
    const std::string deaf = document(plugin("deaf", "IsDeaf"));
    for (const Ended& ended : {run({"--timeout", "0.5", deaf}), runAndSend(SIGINT, deaf, "it goes on")}) {
        EXPECT_EQ(ended.status, 3);
        EXPECT_THAT(ended.errors, HasSubstr("IsDeaf \"deaf\" does not stop; its thread is left behind"));
        EXPECT_THAT(ended.errors, HasSubstr("The run was stopped.\n"));
    }
}

TEST_F(VelmorakRun, namesThePlugInThatCrashedInsideIt) {
    setenv("VELMORAK_ISOLATE", "0", 1);
    const Ended ended =
        runProgram({"sh", "-c", "ulimit -c 0; exec \"$0\" \"$1\"", VELMORAK_RUN, document(plugin("odd", "Crashes"))});
    EXPECT_EQ(ended.status, -1) << "ended by a signal";
    EXPECT_THAT(ended.errors, HasSubstr("Crashes \"odd\" crashed"));
}

TEST_F(VelmorakRun, needsNoToolkit) {
    unsetenv("DISPLAY");
    const Ended libraries = runProgram({"ldd", VELMORAK_RUN});
    EXPECT_EQ(libraries.status, 0);
    EXPECT_THAT(libraries.output, HasSubstr("QzManager.so"));
    EXPECT_THAT(libraries.output, Not(HasSubstr("not found")));
    for (const char* part : {"gtk", "gdk", "goocanvas", "cairo", "libX11", "glib"}) {
        EXPECT_THAT(libraries.output, Not(HasSubstr(part)));
    }
}

}  // namespace
