#include "RunFixture.h"

namespace velmorak::test {
namespace {

/// rows -> total -> double -> last, run from "last", so that all but the last may be kept.
class Reuse : public RunTest {
protected:
    Reuse() {
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

TEST_F(Reuse, theFirstRunExecutesWhatTheStartNeedsAndNothingElse) {
    for (const char* name : {"rows", "total", "middle", "last"}) {
        EXPECT_EQ(outcome(name), Outcome::Done) << name;
    }
    EXPECT_EQ(outcome("apart"), Outcome::NotAsked);
    EXPECT_EQ(messages.str().find("apart"), std::string::npos);
}

TEST_F(Reuse, theSecondRunTakesWhatIsUpstreamFromTheStore) {
    const double before = number("last");
    run();
    EXPECT_EQ(outcome("last"), Outcome::Done) << "the start plug-in is always executed";
    EXPECT_EQ(outcome("middle"), Outcome::Reused);
    EXPECT_EQ(outcome("total"), Outcome::NotAsked) << "nothing needs it any more";
    EXPECT_EQ(rows.opened, 1);
    EXPECT_EQ(number("last"), before);
    EXPECT_TRUE(wasSaid("Pass \"middle\": kept from a former run"));
}

TEST_F(Reuse, whatIsDownstreamOfTheStartIsExecuted) {
    start("total");
    run();
    for (const char* name : {"rows", "total", "middle", "last"}) {
        EXPECT_EQ(outcome(name), Outcome::Done) << name;
    }
    EXPECT_EQ(rows.opened, 2) << "a table is not kept";
}

TEST_F(Reuse, aChangedValueUpstreamIsSeen) {
    set("rows", "rows", "60000");
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Done);
    EXPECT_EQ(of("rows").rowsOut, 60000U);
}

TEST_F(Reuse, aValueThatComesBackFindsItsResult) {
    set("rows", "rows", "60000");
    run();
    set("rows", "rows", "70000");
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Reused);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(Reuse, aFileThatIsOnlyTouchedChangesNothing) {
    std::filesystem::last_write_time(folder / "data.txt", std::filesystem::file_time_type::clock::now());
    write("data.txt", "one");
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Reused);
}

TEST_F(Reuse, aFileWithOtherContentIsSeenThoughItsDateIsTheSame) {
    const auto date = std::filesystem::last_write_time(folder / "data.txt");
    write("data.txt", "two");
    std::filesystem::last_write_time(folder / "data.txt", date);
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Done);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(Reuse, aFileThatIsGoneIsSeen) {
    std::filesystem::remove(folder / "data.txt");
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Done);
}

TEST_F(Reuse, aFileThatAFunctionAskedForCountsForAllThatFollows) {
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
    EXPECT_EQ(outcome("middle"), Outcome::Reused);
    write("number.txt", "6");
    run();
    EXPECT_EQ(number("last"), 6.0);
}

TEST_F(Reuse, anotherVersionOfAKindIsExecuted) {
    pass.kindVersion = 2;
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Done);
    EXPECT_EQ(outcome("total"), Outcome::Reused) << "it is of another kind";
}

TEST_F(Reuse, anotherNameMayStandInTheResult) {
    pipeline.nodes[positionOf("middle")].name = "renamed";
    run();
    EXPECT_EQ(outcome("renamed"), Outcome::Done);
    EXPECT_EQ(outcome("total"), Outcome::Reused);
}

TEST_F(Reuse, resetForgets) {
    runner.reset();
    run();
    EXPECT_EQ(outcome("middle"), Outcome::Done);
    EXPECT_EQ(rows.opened, 2);
}

TEST_F(Reuse, aFailureIsNotKept) {
    set("apart", "value", "13");
    wire("apart", "number", "last", "value");
    run();
    EXPECT_EQ(outcome("apart"), Outcome::Failed);
    run();
    EXPECT_EQ(outcome("apart"), Outcome::Failed);
    EXPECT_EQ(sentence("last"), "not run because of \"apart\"");
}

TEST_F(Reuse, whatLeavesAFileIsDoneAgain) {
    const FreeFunction writing(
        "Write", {{}, {output("number", ValueType::Number)}},
        [](const Arguments&, Results& results, RunContext& context) {
            context.writeResult("note.txt", [](const std::filesystem::path& path) { std::ofstream(path) << "note"; });
            results.set("number", 1.0);
        });
    add(writing, "write");
    wire("write", "number", "last", "value");
    run();
    std::filesystem::remove(pipeline.resultsFolder / "note.txt");
    run();
    EXPECT_EQ(outcome("write"), Outcome::Done);
    EXPECT_EQ(content(pipeline.resultsFolder / "note.txt"), "note");
}

}  // namespace
}  // namespace velmorak::test
