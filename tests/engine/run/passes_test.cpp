#include "RunFixture.h"

#include <cstring>

namespace velmorak::test {
namespace {

class StreamPasses : public RunTest {
protected:
    RowSource rows;
    CutKind cut;
    SumKind sum;
    PassKind pass;
    SeeKind see;
};

TEST_F(StreamPasses, accumulatorsOnOneStreamShareOnePass) {
    add(rows, "rows", {{"rows", "100000"}});
    add(cut, "cut");
    for (const char* name : {"a", "b", "c"}) {
        add(sum, name);
        wire(name[0] == 'a' ? "rows" : "cut", "table", name, "table");
    }
    wire("rows", "table", "cut", "table");
    run();
    EXPECT_EQ(rows.opened, 1);
    EXPECT_EQ(cut.applied, 4) << "once for each chunk, however many take its table";
    EXPECT_EQ(of("rows").rowsOut, 100000U);
    EXPECT_EQ(of("cut").rowsIn, 100000U);
    EXPECT_EQ(of("b").rowsIn, of("cut").rowsOut);
    EXPECT_EQ(number("b"), number("c"));
    EXPECT_GT(number("b"), number("a"));
    EXPECT_FALSE(report.hasFailure());
}

TEST_F(StreamPasses, aNumberOfTheSameStreamNeedsASecondPass) {
    add(rows, "rows", {{"rows", "50000"}});
    add(sum, "first");
    add(cut, "cut");
    add(sum, "second");
    add(sum, "third");
    wire("rows", "table", "first", "table");
    wire("rows", "table", "cut", "table");
    wire("first", "sum", "cut", "cut");
    wire("cut", "table", "second", "table");
    wire("rows", "table", "third", "table");
    run();
    EXPECT_EQ(rows.opened, 2);
    EXPECT_EQ(status("second"), NodeStatus::Done);
    EXPECT_EQ(number("second"), 0.0) << "no row is above the sum of all";
    EXPECT_EQ(of("rows").rowsOut, 50000U) << "rows are not counted twice";
    EXPECT_EQ(number("third"), number("first"));
}

TEST_F(StreamPasses, aSourceWaitsForAnotherWhenThatSavesAPass) {
    add(rows, "early", {{"rows", "10"}});
    add(sum, "ready");
    add(sum, "waiting");
    add(rows, "late", {{"rows", "20"}});
    add(sum, "number");
    wire("early", "table", "ready", "table");
    wire("early", "table", "waiting", "table");
    wire("number", "sum", "waiting", "scale");
    wire("late", "table", "number", "table");
    run();
    EXPECT_EQ(status("waiting"), NodeStatus::Done);
    EXPECT_EQ(rows.opened, 2) << "one pass over each";
}

TEST_F(StreamPasses, aTableThatNothingTakesIsPassedToCountItsRows) {
    add(rows, "rows", {{"rows", "40000"}});
    add(cut, "cut");
    wire("rows", "table", "cut", "table");
    run();
    EXPECT_EQ(status("cut"), NodeStatus::Done);
    EXPECT_EQ(of("cut").rowsIn, 40000U);
    EXPECT_EQ(rows.opened, 1);
}

TEST_F(StreamPasses, aLoneSourceIsRead) {
    add(rows, "rows", {{"rows", "40000"}});
    run();
    EXPECT_EQ(of("rows").rowsOut, 40000U);
    EXPECT_EQ(status("rows"), NodeStatus::Done);
}

TEST_F(StreamPasses, anEmptyTableGivesAnEmptyState) {
    add(rows, "rows", {{"rows", "0"}});
    add(sum, "sum");
    wire("rows", "table", "sum", "table");
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done);
    EXPECT_EQ(number("sum"), 0.0);
    EXPECT_EQ(text("sum", 1), "");
}

TEST_F(StreamPasses, statesMeetInATreeThatTheChunkNumbersFix) {
    add(rows, "rows", {{"rows", std::to_string(6 * chunkRows + 5)}});
    add(sum, "sum");
    wire("rows", "table", "sum", "table");
    run();
    EXPECT_EQ(text("sum", 1), "(((0 + 1 ) + (2 + 3 ) ) + ((4 + 5 ) + 6 ) ) ");
}

TEST_F(StreamPasses, statesThatAreWrittenOutMeetFromFirstToLast) {
    const SumKind writing(Accumulator::MergeOrder::FirstToLast);
    add(rows, "rows", {{"rows", std::to_string(3 * chunkRows + 5)}});
    add(writing, "sum");
    wire("rows", "table", "sum", "table");
    run();
    EXPECT_EQ(text("sum", 1), "(((0 + 1 ) + 2 ) + 3 ) ");
}

TEST_F(StreamPasses, theBitsDoNotDependOnTheNumberOfThreads) {
    add(rows, "rows", {{"rows", std::to_string(37 * chunkRows + 11)}});
    add(cut, "cut");
    add(sum, "sum");
    add(sum, "ofCut");
    wire("rows", "table", "cut", "table");
    wire("rows", "table", "sum", "table");
    wire("cut", "table", "ofCut", "table");
    std::vector<std::pair<double, double>> results;
    for (const std::size_t threads : {1U, 2U, 3U, 16U}) {
        runner.setThreads(threads);
        runner.reset();  // or the first result would be used again
        run();
        EXPECT_EQ(status("sum"), NodeStatus::Done);
        results.emplace_back(number("sum"), number("ofCut"));
    }
    for (const auto& result : results) {
        EXPECT_EQ(std::memcmp(&result, &results.front(), sizeof result), 0);
    }
    double inOneGo = 0.0;
    for (std::uint64_t row = 0; row < 37 * chunkRows + 11; ++row) {
        inOneGo += valueOfRow(row);
    }
    EXPECT_NE(inOneGo, results.front().first) << "the sum must show the order of its terms, or this test shows nothing";
}

TEST_F(StreamPasses, warnOnceOfASettingThatCannotBeUsed) {
    RunConfig config;
    config.threads.warning = "VELMORAK_THREADS=many is not a number";
    add(rows, "rows");
    Runner warned(messages, false, config);
    warned.run(pipeline);
    EXPECT_TRUE(wasSaid(config.threads.warning));
    messages.str("");
    warned.run(pipeline);
    EXPECT_FALSE(wasSaid(config.threads.warning));
}

TEST_F(StreamPasses, anInputForAnythingTakesATable) {
    add(rows, "rows", {{"rows", "40000"}});
    add(see, "see");
    wire("rows", "table", "see", "object");
    run();
    EXPECT_EQ(text("see"), "a table of rows, 40000 rows");
}

TEST_F(StreamPasses, anInputForAnythingTakesANumberWithoutAPass) {
    add(pass, "pass", {{"value", "2.5"}});
    add(see, "see");
    wire("pass", "number", "see", "object");
    run();
    EXPECT_EQ(text("see"), "number 2.5, 0 rows");
}

TEST_F(StreamPasses, aTableAndANumberComeTogether) {
    add(pass, "pass", {{"value", "2.5"}});
    add(rows, "rows", {{"rows", "7"}});
    add(see, "see");
    wire("rows", "table", "see", "object");
    wire("pass", "number", "see", "other");
    run();
    EXPECT_EQ(text("see"), "a table of rows, 7 rows");
}

}  // namespace
}  // namespace velmorak::test
