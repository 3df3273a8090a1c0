#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
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

    static Ended runAndSend(int signal, const std::string& file) {
        bool isSent = false;
        return run({file}, [&](pid_t id, const std::string& errors) {
            if (!isSent && errors.find("it waits") != std::string::npos) {
                isSent = true;
                kill(id, signal);
            }
        });
    }

    /// All files below a folder with their contents.
    static std::map<std::string, std::string> contentsOf(const fs::path& results) {
        std::map<std::string, std::string> contents;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(results)) {
            std::ostringstream text;
            text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            contents[fs::relative(entry.path(), results)] = text.str();
        }
        return contents;
    }

    /// What an example leaves when it runs in a folder of its own.
    std::map<std::string, std::string> resultsOf(const fs::path& example, const std::string& threads) const {
        setenv("VELMORAK_THREADS", threads.c_str(), 1);
        const fs::path place = folder / (example.stem().string() + threads);
        fs::copy(example.parent_path(), place);
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

TEST_F(VelmorakRun, endsWithOneWhenCalledWrongly) {
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

TEST_F(VelmorakRun, saysThatAnAidaFileIsMissingAndGoesOn) {
    const Ended ended = run({"-a", (folder / "none.aida").string(), document(plugin("one", "Number"))});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.errors, HasSubstr("none.aida"));
    EXPECT_THAT(ended.errors, HasSubstr("Number \"one\": "));
}

TEST_F(VelmorakRun, writesOnStandardOutputWhatIsAskedFor) {
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
