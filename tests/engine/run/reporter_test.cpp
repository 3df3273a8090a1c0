#include "RunFixture.h"

namespace velmorak::test {
namespace {

class TellingFunction : public FreeFunction {
public:
    using FreeFunction::FreeFunction;
    bool isRunReporter() const override { return true; }
};

/// good -> reporter <- bad; apart is fed by bad, alone by nothing.
class RunReporters : public RunTest {
protected:
    RunReporters() {
        add(constant, "good");
        add(failing, "bad");
        add(failing, "after");
        add(telling, "reporter");
        wire("good", "number", "reporter", "good");
        wire("bad", "number", "reporter", "bad");
        wire("bad", "number", "reporter", "label");
        wire("bad", "number", "after", "value");
        set("reporter", "label", "own text");
        pipeline.document = folder / "test.zedra";
        pipeline.documentText = "abc";
    }

    static Ports reporterPorts() {
        return {{{.name = "good", .type = ValueType::Any, .isOptional = true},
                 {.name = "bad", .type = ValueType::Any, .isOptional = true},
                 {.name = "label", .type = ValueType::Text}},
                {}};
    }

    const RecordedPlugin& recorded(const std::string& name) const {
        for (const RecordedPlugin& plugin : asked.plugins) {
            if (plugin.name == name) {
                return plugin;
            }
        }
        throw std::out_of_range(name);
    }

    RowSource rows;
    CutKind cut;
    SumKind sum;
    FreeFunction constant{"Constant", {{}, {{.name = "number"}}}, [](const Arguments&, Results& results, RunContext&) {
                              results.set("number", 7.0);
                          }};
    FreeFunction failing{"Failing",
                         {{numberInput("value")}, {{.name = "number"}}},
                         [](const Arguments&, Results&, RunContext&) { throw Failure("no luck"); }};
    RunRecord asked;
    std::string label;
    bool hasGood = false;
    bool hasBad = false;
    bool isBadWired = false;
    TellingFunction telling{"Telling", reporterPorts(),
                            [this](const Arguments& arguments, Results&, RunContext& context) {
                                asked = context.record();
                                label = arguments.text("label");
                                hasGood = std::holds_alternative<double>(arguments.value("good"));
                                hasBad = !std::holds_alternative<std::monostate>(arguments.value("bad"));
                                isBadWired = arguments.isWired("bad");
                            }};
};

TEST_F(RunReporters, isExecutedThoughSomethingThatFeedsItFailed) {
    start("bad");
    run();
    EXPECT_EQ(status("bad"), NodeStatus::Failed);
    EXPECT_EQ(status("reporter"), NodeStatus::Done);
    EXPECT_TRUE(hasGood);
    EXPECT_FALSE(hasBad);
    EXPECT_TRUE(isBadWired);
    EXPECT_EQ(label, "own text");
}

TEST_F(RunReporters, knowsHowAllOthersEnded) {
    add(constant, "alone");
    start("bad");
    run();
    EXPECT_EQ(asked.plugins.size(), 5U);
    EXPECT_EQ(recorded("good").state, RecordedState::Done);
    EXPECT_EQ(recorded("bad").state, RecordedState::Failed);
    EXPECT_EQ(recorded("bad").sentence, "no luck");
    EXPECT_EQ(recorded("after").state, RecordedState::NotRun);
    EXPECT_EQ(recorded("reporter").state, RecordedState::Done);
    EXPECT_EQ(recorded("alone").state, RecordedState::NotRequested);
    EXPECT_EQ(recorded("good").outputs, std::vector<std::string>{"number"});
}

TEST_F(RunReporters, comesWhenAllElseHasEndedWhereverItStands) {
    start("reporter");
    start("good");
    run();
    EXPECT_EQ(status("reporter"), NodeStatus::Done);
    EXPECT_EQ(recorded("bad").state, RecordedState::Failed);
}

TEST_F(RunReporters, isToldOfTheDocumentAsItWasRun) {
    start("bad");
    run();
    EXPECT_EQ(asked.document, "test.zedra");
    EXPECT_EQ(asked.documentSha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_FALSE(asked.program.empty());
}

TEST_F(RunReporters, isExecutedInEveryRunAndSeesNoDifferenceBetweenExecutedAndReused) {
    start("good");
    run();
    const int before = telling.evaluated;
    run();
    EXPECT_EQ(status("good"), NodeStatus::Reused);
    EXPECT_EQ(status("reporter"), NodeStatus::Done);
    EXPECT_EQ(telling.evaluated, before + 1);
    EXPECT_EQ(recorded("good").state, RecordedState::Done);
}

TEST_F(RunReporters, takesAStreamWhoseResultsAreReusedForDone) {
    write("data.txt", "abc");
    add(rows, "rows", {{"rows", "10"}, {"file", "data.txt"}});
    add(sum, "total");
    wire("rows", "table", "total", "table");
    wire("total", "sum", "reporter", "good");
    start("reporter");
    run();
    EXPECT_EQ(recorded("rows").state, RecordedState::Done);
    const std::size_t files = asked.files.size();
    run();
    EXPECT_EQ(status("total"), NodeStatus::Reused);
    EXPECT_EQ(recorded("rows").state, RecordedState::Done);
    EXPECT_EQ(asked.files.size(), files);
}

/// The rows feed one result that can be reused and one that fails in every run.
class RunReportersOfStreams : public RunReporters {
protected:
    RunReportersOfStreams() {
        add(rows, "rows", {{"rows", "10"}});
        add(cut, "cut");
        add(sum, "total");
        add(pass, "next");
        add(sum, "before");
        wire("rows", "table", "cut", "table");
        wire("cut", "table", "total", "table");
        wire("total", "sum", "next", "value");
        wire("next", "number", "reporter", "good");
        wire("cut", "table", "before", "table");
        wire("bad", "number", "before", "scale");
    }

    void expectRowsAreDone() {
        run();
        for (const char* name : {"rows", "cut", "total"}) {
            EXPECT_EQ(recorded(name).state, RecordedState::Done) << name;
            EXPECT_EQ(recorded(name).sentence, "") << name;
        }
    }

    PassKind pass;
};

TEST_F(RunReportersOfStreams, takesThemForDoneInAResultThatIsReusedThoughNothingCouldRunThatNeedsThem) {
    start("bad");
    expectRowsAreDone();
    expectRowsAreDone();
    EXPECT_EQ(status("before"), NodeStatus::Skipped);
    EXPECT_EQ(status("next"), NodeStatus::Reused);
    EXPECT_EQ(status("total"), NodeStatus::NotRequested);
}

TEST_F(RunReportersOfStreams, takesThemForDoneInAResultThatIsReusedThoughAllElseThatNeedsThemFailed) {
    CutKind failingCut;
    failingCut.beforeApply = [](const Chunk&) { throw Failure("no good"); };
    add(failingCut, "while");
    add(sum, "behind");
    wire("rows", "table", "while", "table");
    wire("while", "table", "behind", "table");
    start("rows");
    expectRowsAreDone();
    expectRowsAreDone();
    EXPECT_EQ(status("while"), NodeStatus::Failed);
    EXPECT_EQ(status("total"), NodeStatus::Reused);
}

TEST_F(RunReporters, mustBeAFunctionWithoutOutputs) {
    const TellingFunction giving("Giving", {{}, {{.name = "number"}}},
                                 [](const Arguments&, Results& results, RunContext&) { results.set("number", 1.0); });
    add(giving, "giving");
    start("giving");
    run();
    EXPECT_EQ(status("giving"), NodeStatus::Failed);
    EXPECT_EQ(sentence("giving"), "its kind reports on the run and must therefore be a function without outputs");
}

}  // namespace
}  // namespace velmorak::test
