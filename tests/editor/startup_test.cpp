#include "RecordedProgram.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

namespace {

constexpr const char* script = R"(
kind Number Arithmetic
  in value 0
  out value
document one.zedra
  plugin Number One 20 20
document two.zedra
  plugin Number Two 20 20
run returns
)";

using Calls = std::vector<std::string>;

class Startup : public ::testing::Test {
protected:
    /// Starts the program, waits until it has shown its window and called `last`, and quits.
    Calls callsWith(const Calls& arguments, const std::string& last = "GetExamples()") {
        RecordedProgram program(VELMORAK_PROGRAM, script);
        EXPECT_TRUE(program.start(arguments));
        EXPECT_TRUE(waitFor([&] { return program.hasCalled(last); }));
        EXPECT_EQ(program.quit(), 0);
        return program.calls();
    }

    /// The expected calls, from the construction of the manager to its destruction.
    static Calls expected(const Calls& atStart, const Calls& atEnd) {
        Calls calls{"QzManager(QzAnalysisFactory)"};
        calls.insert(calls.end(), atStart.begin(), atStart.end());
        // The window reads the list of kinds, then the plug-in collection does.
        for (const char* call :
             {"SetFontSize(9, 11)", "GetListOfPlugins(0)", "GetPlugins()", "GetPlugins()", "GetExamples()"}) {
            calls.emplace_back(call);
        }
        calls.insert(calls.end(), atEnd.begin(), atEnd.end());
        calls.emplace_back("~QzManager()");
        return calls;
    }

    const Calls theRun{"Run() [worker]", "Run has ended() [worker]", "Stop()"};
};

}  // namespace

TEST_F(Startup, withoutArgumentsLoadsOpensAndRunsNothing) {
    EXPECT_THAT(callsWith({}), ElementsAreArray(expected({}, {})));
}

TEST_F(Startup, loadsNoOpenGl) {
    RecordedProgram program(VELMORAK_PROGRAM, script);
    ASSERT_TRUE(program.start({}));
    std::ifstream maps("/proc/" + std::to_string(program.process->id()) + "/maps");
    const std::string loaded{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_NE(loaded.find("libgtk-3"), std::string::npos);
    EXPECT_EQ(loaded.find("libGL."), std::string::npos);
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Startup, loadsTheDataFileBeforeAnythingElse) {
    EXPECT_THAT(callsWith({"-a", "data.aida"}), ElementsAreArray(expected({"loadAIDA(data.aida)"}, {})));
}

TEST_F(Startup, ignoresTheDataOptionAtTheEnd) {
    EXPECT_THAT(callsWith({"-a"}), ElementsAreArray(expected({}, {})));
}

TEST_F(Startup, takesTheRunOptionForTheDataFileBehindTheDataOption) {
    EXPECT_THAT(callsWith({"-a", "-run", "one.zedra"}),
                ElementsAreArray(expected({"loadAIDA(-run)"}, {"ReadDocument(one.zedra)"})));
}

TEST_F(Startup, takesTheDataOptionForTheDataFileBehindItself) {
    EXPECT_THAT(callsWith({"-a", "-a", "one.zedra"}),
                ElementsAreArray(expected({"loadAIDA(-a)"}, {"ReadDocument(one.zedra)"})));
}

TEST_F(Startup, opensOnlyTheSecondOfTwoDocuments) {
    EXPECT_THAT(callsWith({"one.zedra", "two.zedra"}), ElementsAreArray(expected({}, {"ReadDocument(two.zedra)"})));
}

TEST_F(Startup, loadsOnlyTheSecondOfTwoDataFilesAndOnce) {
    EXPECT_THAT(callsWith({"-a", "first.aida", "-a", "second.aida"}),
                ElementsAreArray(expected({"loadAIDA(second.aida)"}, {})));
}

TEST_F(Startup, loadsNothingForAnEmptyNameOfADataFile) {
    EXPECT_THAT(callsWith({"-a", ""}), ElementsAreArray(expected({}, {})));
}

TEST_F(Startup, runsNothingWithoutADocument) {
    EXPECT_THAT(callsWith({"-run"}), ElementsAreArray(expected({}, {})));
    EXPECT_THAT(callsWith({"-run", "-a", "data.aida"}), ElementsAreArray(expected({"loadAIDA(data.aida)"}, {})));
}

TEST_F(Startup, runsTheDocumentWhereverTheOptionStands) {
    Calls atEnd{"ReadDocument(one.zedra)"};
    atEnd.insert(atEnd.end(), theRun.begin(), theRun.end());
    EXPECT_THAT(callsWith({"-run", "one.zedra"}, "Stop()"), ElementsAreArray(expected({}, atEnd)));
    EXPECT_THAT(callsWith({"one.zedra", "-run"}, "Stop()"), ElementsAreArray(expected({}, atEnd)));
}

TEST_F(Startup, takesWhatOnlyLooksLikeAnOptionForADocument) {
    for (const char* argument : {"-A", "--a", "-Run", "--run", "-r", "--", "-ax", "--help"}) {
        EXPECT_THAT(callsWith({argument}),
                    ElementsAreArray(expected({}, {std::string("ReadDocument(") + argument + ")"})));
    }
}

TEST_F(Startup, takesAnOptionOfTheToolkitForADocumentToo) {
    EXPECT_THAT(callsWith({"--name=other"}), ElementsAreArray(expected({}, {"ReadDocument(--name=other)"})));
}

TEST_F(Startup, quittingDuringARunStopsItBeforeTheManagerGoes) {
    RecordedProgram program(VELMORAK_PROGRAM, std::string(script) + "run blocks\n");
    ASSERT_TRUE(program.start({"-run", "one.zedra"}));
    ASSERT_TRUE(waitFor([&] { return program.hasCalled("Run() [worker]"); }));
    EXPECT_EQ(program.quit(), 0);
    EXPECT_THAT(program.calls(), ElementsAreArray(expected({}, {"ReadDocument(one.zedra)", "Run() [worker]", "Stop()",
                                                                "Run has ended() [worker]"})));
}

TEST_F(Startup, theProgramStaysWhenItsWindowIsAskedToClose) {
    RecordedProgram program(VELMORAK_PROGRAM, script);
    ASSERT_TRUE(program.start({}));
    program.desktop.act({"windowactivate", "--sync", program.window, "key", "alt+F4"});
    EXPECT_FALSE(program.process->wait(300).has_value());
    EXPECT_EQ(program.quit(), 0);
}
