#include "RunFixture.h"

#include <cstring>

namespace velmorak::test {
namespace {

class Concatenations : public RunTest {
protected:
    /// Runs with several numbers of threads, all of which must give the same sum.
    double sumForAnyThreads(const std::string& name) {
        std::vector<double> sums;
        for (const std::size_t threads : {1U, 2U, 3U, 16U}) {
            runner.setThreads(threads);
            runner.reset();  // Else the result of the run before is still right.
            run();
            EXPECT_EQ(status(name), NodeStatus::Done) << sentence(name);
            sums.push_back(number(name));
            EXPECT_EQ(std::memcmp(&sums.back(), sums.data(), sizeof(double)), 0) << threads << " threads";
        }
        return sums.front();
    }

    std::uint64_t rowsInto(const std::string& name) { return of(name).rowsIn; }

    RowSource rows;
    CutKind cut;
    SumKind sum;
    PassKind pass;
    JoinKind join;
    HeadKind head;
};

TEST_F(Concatenations, tablesOfTwoSourcesFollowEachOther) {
    add(rows, "a", {{"rows", std::to_string(2 * chunkRows + 5)}});
    add(rows, "b", {{"rows", std::to_string(chunkRows + 7)}});
    add(join, "join");
    add(sum, "sum");
    wire("a", "table", "join", "first");
    wire("b", "table", "join", "second");
    wire("join", "table", "sum", "table");
    start("a");
    sumForAnyThreads("sum");
    EXPECT_EQ(rowsInto("sum"), 3 * chunkRows + 12);
    EXPECT_EQ(text("sum", 1), "(((0 + 1 ) + 2 ) + (0 + 1 ) ) ") << "each table is merged on its own";
    EXPECT_EQ(of("a").rowsOut, 2 * chunkRows + 5);
    EXPECT_EQ(of("b").rowsOut, chunkRows + 7);
    EXPECT_EQ(of("join").rowsOut, 3 * chunkRows + 12);
}

TEST_F(Concatenations, eachTableGoesThroughItsOwnPlugIns) {
    add(rows, "a", {{"rows", "1000"}});
    add(rows, "b", {{"rows", "2000"}});
    add(cut, "none", {{"cut", "1e300"}});
    add(join, "join");
    add(sum, "sum");
    add(sum, "ofB");
    wire("a", "table", "none", "table");
    wire("none", "table", "join", "first");
    wire("b", "table", "join", "second");
    wire("join", "table", "sum", "table");
    wire("b", "table", "ofB", "table");
    start("b");
    const double joined = sumForAnyThreads("sum");
    EXPECT_EQ(joined, number("ofB"));
    EXPECT_EQ(rowsInto("sum"), 2000U);
}

TEST_F(Concatenations, oneTableCanBeBothHalves) {
    add(rows, "a", {{"rows", "1000"}});
    add(cut, "cut", {{"cut", "0"}});
    add(join, "join");
    add(sum, "sum");
    wire("a", "table", "cut", "table");
    wire("cut", "table", "join", "first");
    wire("cut", "table", "join", "second");
    wire("join", "table", "sum", "table");
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done) << sentence("sum");
    EXPECT_EQ(of("a").rowsOut, 1000U);
    EXPECT_EQ(rowsInto("cut"), 2000U);
    EXPECT_EQ(rowsInto("sum"), of("cut").rowsOut);
}

TEST_F(Concatenations, joinedTablesCanBeJoinedAgain) {
    add(rows, "a", {{"rows", "10"}});
    add(rows, "b", {{"rows", "20"}});
    add(rows, "c", {{"rows", "40"}});
    add(join, "ab");
    add(join, "all");
    add(sum, "sum");
    wire("a", "table", "ab", "first");
    wire("b", "table", "ab", "second");
    wire("c", "table", "all", "first");
    wire("ab", "table", "all", "second");
    wire("all", "table", "sum", "table");
    start("c");
    sumForAnyThreads("sum");
    EXPECT_EQ(rowsInto("sum"), 70U);
    EXPECT_EQ(text("sum", 1), "((0 + 0 ) + 0 ) ");
}

TEST_F(Concatenations, anyNumberOfDifferentTablesCanFollowEachOther) {
    std::vector<std::string> open;
    for (int i = 0; i < 1100; ++i) {
        open.push_back("t" + std::to_string(i));
        add(rows, open.back(), {{"rows", "3"}});
    }
    for (std::size_t i = 0; i + 1 < open.size(); i += 2) {
        const std::string name = "j" + std::to_string(i);
        add(join, name);
        wire(open[i], "table", name, "first");
        wire(open[i + 1], "table", name, "second");
        open.push_back(name);
    }
    add(sum, "sum");
    wire(open.back(), "table", "sum", "table");
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done) << sentence("sum");
    EXPECT_EQ(rowsInto("sum"), 3300U);
}

TEST_F(Concatenations, aTableThatDoublesWithoutEndIsRefused) {
    add(rows, "j0", {{"rows", "1"}});
    for (int i = 1; i <= 40; ++i) {
        add(join, "j" + std::to_string(i));
        for (const char* input : {"first", "second"}) {
            wire("j" + std::to_string(i - 1), "table", "j" + std::to_string(i), input);
        }
    }
    run();
    EXPECT_EQ(sentence("j10"), "it would read more than 1000 tables one after the other");
}

TEST_F(Concatenations, aSourceThatFailsEndsWhatItWasJoinedInto) {
    RowSource failing;
    failing.beforeChunk = [](std::uint64_t, RunContext&) { throw Failure("no good"); };
    add(rows, "a", {{"rows", "10"}});
    add(failing, "b", {{"rows", "20"}});
    add(join, "join");
    add(sum, "sum");
    add(sum, "ofA");
    wire("a", "table", "join", "first");
    wire("b", "table", "join", "second");
    wire("join", "table", "sum", "table");
    wire("a", "table", "ofA", "table");
    run();
    EXPECT_EQ(sentence("b"), "no good");
    EXPECT_EQ(sentence("sum"), "not run because of \"b\"");
    EXPECT_EQ(status("ofA"), NodeStatus::Done);
}

TEST_F(Concatenations, anInputOfAJoinThatNothingFeedsIsNamed) {
    add(rows, "a", {{"rows", "10"}});
    add(join, "join");
    wire("a", "table", "join", "second");
    run();
    EXPECT_EQ(sentence("join"), "input \"first\": nothing is wired where a table is needed");
}

TEST_F(Concatenations, rowsAreCountedAfterACut) {
    add(rows, "a", {{"rows", std::to_string(20 * chunkRows)}});
    add(cut, "cut", {{"cut", "0"}});
    add(head, "head", {{"count", std::to_string(3 * chunkRows)}});
    add(sum, "sum");
    wire("a", "table", "cut", "table");
    wire("cut", "table", "head", "table");
    wire("head", "table", "sum", "table");
    sumForAnyThreads("sum");
    EXPECT_EQ(rowsInto("sum"), 3 * chunkRows);
}

TEST_F(Concatenations, rowsAreCountedInAJoinedTable) {
    add(rows, "a", {{"rows", "100"}});
    add(rows, "b", {{"rows", "100"}});
    add(join, "join");
    add(head, "head", {{"count", "150"}});
    add(head, "again", {{"count", "120"}});
    add(sum, "sum");
    wire("a", "table", "join", "first");
    wire("b", "table", "join", "second");
    wire("join", "table", "head", "table");
    wire("head", "table", "again", "table");
    wire("again", "table", "sum", "table");
    sumForAnyThreads("sum");
    EXPECT_EQ(rowsInto("again"), 150U);
    EXPECT_EQ(rowsInto("sum"), 120U);
}

TEST_F(Concatenations, aSourceIsNotReadForRowsThatNothingWants) {
    add(rows, "a", {{"rows", std::to_string(1000 * chunkRows)}});
    add(head, "head", {{"count", "5"}});
    add(sum, "sum");
    wire("a", "table", "head", "table");
    wire("head", "table", "sum", "table");
    sumForAnyThreads("sum");
    EXPECT_EQ(rowsInto("sum"), 5U);
    EXPECT_LT(of("a").rowsOut, 100 * chunkRows);
    EXPECT_EQ(status("a"), NodeStatus::Done);
    EXPECT_EQ(text("sum", 1), "0 ") << "what comes after does not decide how states meet";
}

TEST_F(Concatenations, aSourceIsReadOnForTheOthers) {
    add(rows, "a", {{"rows", std::to_string(50 * chunkRows)}});
    add(head, "head", {{"count", "5"}});
    add(sum, "few");
    add(sum, "all");
    wire("a", "table", "head", "table");
    wire("head", "table", "few", "table");
    wire("a", "table", "all", "table");
    sumForAnyThreads("few");
    EXPECT_EQ(rowsInto("few"), 5U);
    EXPECT_EQ(rowsInto("all"), 50 * chunkRows);
}

TEST_F(Concatenations, theSecondTableComesWhenEnoughOfTheFirstIsRead) {
    add(rows, "a", {{"rows", std::to_string(1000 * chunkRows)}});
    add(rows, "b", {{"rows", "7"}});
    add(head, "head", {{"count", "5"}});
    add(join, "join");
    add(sum, "sum");
    wire("a", "table", "head", "table");
    wire("head", "table", "join", "first");
    wire("b", "table", "join", "second");
    wire("join", "table", "sum", "table");
    sumForAnyThreads("sum");
    EXPECT_EQ(rowsInto("sum"), 12U);
    EXPECT_LT(of("a").rowsOut, 100 * chunkRows);
}

TEST_F(Concatenations, whatWasMadeOfAJoinIsReusedUntilOneOfItsTablesChanges) {
    add(rows, "a", {{"rows", "1000"}});
    add(rows, "b", {{"rows", "2000"}});
    add(join, "join");
    add(sum, "sum");
    wire("a", "table", "join", "first");
    wire("b", "table", "join", "second");
    wire("join", "table", "sum", "table");
    run();
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Reused);
    EXPECT_EQ(rows.opened, 2);
    set("b", "rows", "2001");
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done);
    EXPECT_EQ(rowsInto("sum"), 3001U);
    set("b", "rows", "2000");
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Reused) << "a result that was right before";
    inputOf("join", "first").wire = PipelineWire{positionOf("b"), "table"};
    inputOf("join", "second").wire = PipelineWire{positionOf("a"), "table"};
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done) << "the order of the tables counts";
}

TEST_F(Concatenations, whatWasMadeOfTheFirstRowsIsReusedAndNotTakenForTheWhole) {
    add(rows, "a", {{"rows", std::to_string(200 * chunkRows)}});
    add(head, "head", {{"count", "5"}});
    add(sum, "few");
    wire("a", "table", "head", "table");
    wire("head", "table", "few", "table");
    run();
    const double few = number("few");
    EXPECT_LT(of("a").rowsOut, 100 * chunkRows);
    run();
    EXPECT_EQ(status("few"), NodeStatus::Reused);
    EXPECT_EQ(number("few"), few);
    add(sum, "all");
    wire("a", "table", "all", "table");
    run();
    EXPECT_EQ(status("few"), NodeStatus::Reused);
    EXPECT_EQ(status("all"), NodeStatus::Done);
    EXPECT_EQ(rowsInto("all"), 200 * chunkRows) << "though fewer were read before";
    set("head", "count", "6");
    run();
    EXPECT_EQ(status("few"), NodeStatus::Done);
    EXPECT_EQ(status("all"), NodeStatus::Reused);
    EXPECT_EQ(rowsInto("few"), 6U);
}

}  // namespace
}  // namespace velmorak::test
