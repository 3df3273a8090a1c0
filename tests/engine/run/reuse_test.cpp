#include "RunFixture.h"

namespace velmorak::test {
namespace {

/// rows -> total -> double -> last, run from "last", so that all but the last may be kept.
class ResultReuse : public RunTest {
protected:
    ResultReuse() {
        write("data.txt", "one");
        add(rows, "rows", {{"rows", "70000"}, {"file", "data.txt"}});
        add(sum, "total");
        add(pass, "middle");
        add(pass, "last");
        add(pass, "apart");
        wire("rows", "table", "total", "table");
        wire("total", "sum", "middle", "value");
        wire("middle", "number", "last", "value");
        start("last");
        run();
    }

    RowSource rows;
    SumKind sum;
    PassKind pass;
};

TEST_F(ResultReuse, theFirstRunExecutesWhatTheStartNeedsAndNothingElse) {
    for (const char* name : {"rows", "total", "middle", "last"}) {
        EXPECT_EQ(status(name), NodeStatus::Done) << name;
    }
    EXPECT_EQ(status("apart"), NodeStatus::NotRequested);
    EXPECT_TRUE(wasSaid("Not run, because nothing leads to it from \"last\": \"apart\"")) << messages.str();
}

TEST_F(ResultReuse, theSecondRunOfAnUnchangedPipelineExecutesNothing) {
    const double before = number("last");
    run();
    EXPECT_EQ(status("last"), NodeStatus::Reused);
    EXPECT_EQ(status("middle"), NodeStatus::NotRequested) << "nothing needs it any more";
    EXPECT_EQ(rows.opened, 1);
    EXPECT_EQ(number("last"), before);
    EXPECT_TRUE(wasSaid("Pass \"last\": kept from a former run"));
}

TEST_F(ResultReuse, nothingIsExecutedForAStartWhoseWholeBranchIsRight) {
    start("rows");
    run();
    for (const char* name : {"rows", "total", "middle", "last"}) {
        EXPECT_EQ(status(name), NodeStatus::Reused) << name;
    }
    EXPECT_EQ(rows.opened, 1);
}

TEST_F(ResultReuse, aChangedValueIsExecutedWithWhatLiesDownstreamAndNothingElse) {
    start("rows");
    set("total", "scale", "3");
    add(sum, "beside");
    wire("rows", "table", "beside", "table");
    run();
    set("beside", "scale", "2");
    run();
    EXPECT_EQ(status("beside"), NodeStatus::Done);
    EXPECT_EQ(status("rows"), NodeStatus::Done) << "its rows are needed";
    for (const char* name : {"total", "middle", "last"}) {
        EXPECT_EQ(status(name), NodeStatus::Reused) << name;
    }
}

TEST_F(ResultReuse, aTableThatNothingTakesIsNotPassedAgain) {
    add(rows, "alone", {{"rows", "10"}});
    start("alone");
    run();
    EXPECT_EQ(rows.opened, 2);
    run();
    EXPECT_EQ(status("alone"), NodeStatus::Reused);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(ResultReuse, whatWasCompleteBeforeAStopIsKept) {
    std::filesystem::remove(folder / "data.txt");
    set("rows", "file", "");
    set("total", "scale", "7");
    const FreeFunction stopping("Stop", {{numberInput("value")}, {output("number", ValueType::Number)}},
                                [this](const Arguments&, Results&, RunContext&) {
                                    runner.stop();
                                    throw Stopped();
                                });
    add(stopping, "stop");
    wire("total", "sum", "stop", "value");
    start("stop");
    run();
    EXPECT_TRUE(report.wasStopped);
    start("last");
    run();
    EXPECT_EQ(status("last"), NodeStatus::Done);
    EXPECT_EQ(status("total"), NodeStatus::Reused);
}

TEST_F(ResultReuse, theReasonNamesTheValueThatChanged) {
    runner.explain(true);
    set("total", "scale", "25");
    run();
    EXPECT_TRUE(wasSaid("Sum \"total\": executed, scale changed from 1 to 25")) << messages.str();
    EXPECT_TRUE(wasSaid("Pass \"middle\": executed, \"total\" changed"));
    EXPECT_TRUE(wasSaid("Rows \"rows\": executed, its rows are needed by \"total\""));
    run();
    EXPECT_TRUE(wasSaid("Pass \"last\": reused, nothing changed"));
}

TEST_F(ResultReuse, theReasonNamesTheFileThatChanged) {
    runner.explain(true);
    write("data.txt", "two");
    run();
    EXPECT_TRUE(wasSaid("Rows \"rows\": executed, file data.txt changed")) << messages.str();
    std::filesystem::remove(folder / "data.txt");
    run();
    EXPECT_TRUE(wasSaid("Rows \"rows\": executed, file data.txt is gone")) << messages.str();
}

TEST_F(ResultReuse, theReasonOfANewOneIsThatItNeverRan) {
    runner.explain(true);
    start("apart");
    run();
    EXPECT_TRUE(wasSaid("Pass \"apart\": executed, never run"));
    set("apart", "value", "13");
    run();
    EXPECT_TRUE(wasSaid("Pass \"apart\": executed, value changed from 0 to 13"));
    run();
    EXPECT_TRUE(wasSaid("Pass \"apart\": executed, it failed in the run before"));
    runner.reset();
    set("apart", "value", "0");
    run();
    runner.reset();
    run();
    EXPECT_TRUE(wasSaid("Pass \"apart\": executed, its result is not kept any more"));
}

TEST_F(ResultReuse, withoutBeingAskedNoReasonIsSaid) {
    EXPECT_EQ(messages.str().find("never run"), std::string::npos);
}

TEST_F(ResultReuse, aChangedValueUpstreamIsSeen) {
    set("rows", "rows", "60000");
    run();
    EXPECT_EQ(status("middle"), NodeStatus::Done);
    EXPECT_EQ(of("rows").rowsOut, 60000U);
}

TEST_F(ResultReuse, aValueThatComesBackFindsItsResult) {
    set("rows", "rows", "60000");
    run();
    set("rows", "rows", "70000");
    run();
    EXPECT_EQ(status("last"), NodeStatus::Reused);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(ResultReuse, aFileThatIsOnlyTouchedChangesNothing) {
    std::filesystem::last_write_time(folder / "data.txt", std::filesystem::file_time_type::clock::now());
    write("data.txt", "one");
    run();
    EXPECT_EQ(status("last"), NodeStatus::Reused);
}

TEST_F(ResultReuse, aFileWithOtherContentIsSeenThoughItsDateIsTheSame) {
    const auto date = std::filesystem::last_write_time(folder / "data.txt");
    write("data.txt", "two");
    std::filesystem::last_write_time(folder / "data.txt", date);
    run();
    EXPECT_EQ(status("middle"), NodeStatus::Done);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(ResultReuse, aFileThatIsGoneIsSeen) {
    std::filesystem::remove(folder / "data.txt");
    run();
    EXPECT_EQ(status("middle"), NodeStatus::Done);
}

TEST_F(ResultReuse, aFileThatAFunctionAskedForCountsForAllThatFollows) {
    const FreeFunction reading("Read", {{}, {output("number", ValueType::Number)}},
                               [](const Arguments&, Results& results, RunContext& context) {
                                   double number = 0.0;
                                   std::ifstream(context.inputFile("number.txt")) >> number;
                                   results.set("number", number);
                               });
    write("number.txt", "5");
    add(reading, "read");
    wire("read", "number", "middle", "value");
    run();
    EXPECT_EQ(number("last"), 5.0);
    run();
    EXPECT_EQ(status("last"), NodeStatus::Reused);
    write("number.txt", "6");
    run();
    EXPECT_EQ(number("last"), 6.0);
}

TEST_F(ResultReuse, anotherVersionOfAKindIsExecuted) {
    pass.kindVersion = 2;
    run();
    EXPECT_EQ(status("middle"), NodeStatus::Done);
    EXPECT_EQ(status("total"), NodeStatus::Reused) << "it is of another kind";
}

TEST_F(ResultReuse, anotherNameMayStandInTheResult) {
    pipeline.nodes[positionOf("middle")].name = "renamed";
    run();
    EXPECT_EQ(status("renamed"), NodeStatus::Done);
    EXPECT_EQ(status("total"), NodeStatus::Reused);
}

TEST_F(ResultReuse, resetForgets) {
    runner.reset();
    run();
    EXPECT_EQ(status("middle"), NodeStatus::Done);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(ResultReuse, aFailureIsNotKept) {
    set("apart", "value", "13");
    wire("apart", "number", "last", "value");
    run();
    EXPECT_EQ(status("apart"), NodeStatus::Failed);
    run();
    EXPECT_EQ(status("apart"), NodeStatus::Failed);
    EXPECT_EQ(sentence("last"), "not run because of \"apart\"");
}

/// "write" leaves note.txt, and "last" takes its number.
class ResultReuseOfFiles : public ResultReuse {
protected:
    ResultReuseOfFiles() {
        add(writing, "write");
        wire("write", "number", "last", "value");
        start("write");
        runner.explain(true);
        run();
    }
    std::filesystem::path note() const { return pipeline.resultsFolder / "note.txt"; }

    FreeFunction writing{"Write",
                         {{textInput("text", "note")}, {output("number", ValueType::Number)}},
                         [](const Arguments& arguments, Results& results, RunContext& context) {
                             context.writeResult("note.txt", [&](const std::filesystem::path& path) {
                                 std::ofstream(path) << arguments.text("text");
                             });
                             results.set("number", 1.0);
                         }};
};

TEST_F(ResultReuseOfFiles, aFileThatIsStillThereIsNotWrittenAgain) {
    run();
    EXPECT_EQ(status("write"), NodeStatus::Reused);
    EXPECT_EQ(writing.evaluated, 1);
}

TEST_F(ResultReuseOfFiles, aFileThatIsGoneIsWrittenAgain) {
    std::filesystem::remove(note());
    run();
    EXPECT_EQ(status("write"), NodeStatus::Done);
    EXPECT_EQ(status("last"), NodeStatus::Reused);
    EXPECT_EQ(content(note()), "note");
    EXPECT_TRUE(wasSaid("Write \"write\": executed, file note.txt is gone")) << messages.str();
}

TEST_F(ResultReuseOfFiles, aFileThatSomebodyChangedIsWrittenAgain) {
    std::ofstream(note()) << "none";
    run();
    EXPECT_EQ(content(note()), "note");
    EXPECT_TRUE(wasSaid("Write \"write\": executed, file note.txt changed")) << messages.str();
}

TEST_F(ResultReuseOfFiles, theReasonIsTheChangeBeforeTheFile) {
    add(pass, "source");
    wire("source", "number", "write", "text");
    run();
    set("source", "value", "5");
    std::filesystem::remove(note());
    run();
    EXPECT_TRUE(wasSaid("Write \"write\": executed, \"source\" changed")) << messages.str();
}

TEST_F(ResultReuseOfFiles, anotherResultsFolderGetsItsOwn) {
    pipeline.resultsFolder = folder / "other.results";
    run();
    EXPECT_EQ(content(note()), "note");
}

TEST_F(ResultReuseOfFiles, aFileOfOneThatIsReusedIsStillItsOwn) {
    add(writing, "thief", {{"text", "mine"}});
    wire("write", "number", "thief", "text");
    run();
    EXPECT_EQ(status("write"), NodeStatus::Reused);
    EXPECT_EQ(status("thief"), NodeStatus::Failed);
    EXPECT_EQ(sentence("thief"), "the file \"note.txt\" is already written by \"write\"");
}

}  // namespace
}  // namespace velmorak::test
